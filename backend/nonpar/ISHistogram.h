// Back-to-back histograms of the test field in two groups, for the
// Mann-Whitney, Wald-Wolfowitz and two-sample Kolmogorov-Smirnov tests.
#pragma once

#include <string>

#include "backend/nonpar/NOPRChartContext.h"

class ISHistogram : public NOPRChartContext {
public:
    ISHistogram(FacSTDictionary* dictionary, NOPROutputStats* stats,
                const NOPROutputStats::HTIMannWhitneyU* test);
    ISHistogram(FacSTDictionary* dictionary, NOPROutputStats* stats,
                const NOPROutputStats::HTIWaldWolfowitzRuns* test);
    ISHistogram(FacSTDictionary* dictionary, NOPROutputStats* stats,
                const NOPROutputStats::HTIKolmogorovSmirnov* test);
    ~ISHistogram() override;
    // True when a chart was sent.
    virtual bool MakeChart(const std::string& suffix, bool appendSuffix);

    enum Form { kMannWhitney, kWaldWolfowitz, kKolmogorovSmirnov };

private:
    const NOPROutputStats::HTIGroups* fTest;
    Form fForm;
};
