// The network chart of pairwise comparisons: one node per sample, one edge
// per compared pair, told apart by whether the pair differs significantly.
#pragma once

#include <string>

#include "backend/nonpar/NOPRChartContext.h"

class FacSTDictionary;

class NOPRPairwiseChart final : public NOPRChartContext {
public:
    NOPRPairwiseChart(FacSTDictionary* dictionary, NOPROutputStats* stats,
                      const NOPROutputStats::BaseHypothesisTest* test,
                      const NOPROutputStats::MultipleComparison* comparison);
    // Sends the chart; true when sent.
    bool MakeChart(const std::string& suffix, bool appendSuffix);

    // The edge type of a pair: 1 when its adjusted significance is below the
    // level, else 2.
    static double EdgeType(double adjustedSignificance, double level);

private:
    // The name of sample `sample` (a category of the grouping field for
    // independent samples, a field for related samples).
    ChartString SampleName(int sample) const;

    const NOPROutputStats::BaseHypothesisTest* fTest;
    const NOPROutputStats::MultipleComparison* fComparison;
    int fTestField = -1;
    int fGroupField = -1;
};
