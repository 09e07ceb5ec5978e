// Rank histograms of Friedman's two-way analysis of variance by ranks and of
// Kendall's coefficient of concordance: one panel per field.
#pragma once

#include <string>

#include "backend/nonpar/NOPRChartContext.h"

class RSHistogram : public NOPRChartContext {
public:
    RSHistogram(FacSTDictionary* dictionary, NOPROutputStats* stats,
                const NOPROutputStats::HTRFriedmansTwoWayByRanks* test);
    RSHistogram(FacSTDictionary* dictionary, NOPROutputStats* stats,
                const NOPROutputStats::HTRKendallsCoefficient* test);
    ~RSHistogram() override;
    // True when a chart was sent.
    virtual bool MakeChart(const std::string& suffix, bool appendSuffix);

    // The outer frame for n samples: none (the template's) up to 3, else n ×
    // 0.5 wide (at most 3.0) and 1.2 high.
    static bool FrameSize(int samples, double& width, double& height);

private:
    const NOPROutputStats::HTRRanks* fTest;
};
