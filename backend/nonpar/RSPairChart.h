// The histogram of the paired differences of the related-samples sign and
// Wilcoxon signed-rank tests, positive and negative differences told apart.
#pragma once

#include <string>

#include "backend/nonpar/NOPRChartContext.h"

class RSPairChart final : public NOPRChartContext {
public:
    // `algorithm` is the test's code: 15 (sign) or 16 (Wilcoxon).
    RSPairChart(FacSTDictionary* dictionary, NOPROutputStats* stats,
                const NOPROutputStats::HTRDifferences* test, int algorithm);
    // True when a chart was sent.
    bool MakeChart(const std::string& suffix, bool appendSuffix);

private:
    const NOPROutputStats::HTRDifferences* fTest;
};
