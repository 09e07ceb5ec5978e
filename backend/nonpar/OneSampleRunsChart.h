// The chart of the one-sample runs test: the distribution of the number of
// runs under the null hypothesis, the observed number of runs, and the
// critical values beyond which there are too few or too many runs.
#pragma once

#include <string>

#include "backend/nonpar/NOPRChartContext.h"

class OneSampleRunsChart final : public NOPRChartContext {
public:
    OneSampleRunsChart(FacSTDictionary* dictionary, NOPROutputStats* stats,
                       const NOPROutputStats::HTORuns* test);
    // True when a chart was sent.
    bool MakeChart(const std::string& suffix, bool appendSuffix);
    // The template text with the runs test's values written in.
    bool CustomizeTemplate(std::string& text, const std::string& suffix) const;
    // The standard normal quantile of p (0 < p < 1).
    static double NormalQuantile(double p);

private:
    const NOPROutputStats::HTORuns* fTest;
};
