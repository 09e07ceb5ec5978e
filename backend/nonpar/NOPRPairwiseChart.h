// The network chart of pairwise comparisons: one node per sample, one edge
// per compared pair, told apart by whether the pair differs significantly.
#pragma once

#include <string>

#include "backend/nonpar/NOPROutputStats.h"

class FacSTDictionary;

class NOPRPairwiseChart {
public:
    NOPRPairwiseChart(FacSTDictionary* dictionary, NOPROutputStats* stats,
                      const NOPROutputStats::BaseHypothesisTest* test,
                      const NOPROutputStats::MultipleComparison* comparison)
        : fDictionary(dictionary), fStats(stats), fTest(test), fComparison(comparison) {}
    // Sends the chart; true when sent.
    bool MakeChart(const std::string& suffix, bool appendSuffix);

protected:
    FacSTDictionary* fDictionary;
    NOPROutputStats* fStats;
    const NOPROutputStats::BaseHypothesisTest* fTest;
    const NOPROutputStats::MultipleComparison* fComparison;
};
