// The bar chart of the one-sample chi-square test: observed and
// hypothesized frequency of each category side by side.
#pragma once

#include <string>

#include "backend/nonpar/NOPRChartContext.h"

class ChiSquare : public NOPRChartContext {
public:
    ChiSquare(FacSTDictionary* dictionary, NOPROutputStats* stats,
              const NOPROutputStats::HTOChiSquare* test);
    ~ChiSquare() override;
    // True when a chart was sent.
    virtual bool MakeChart(const std::string& suffix, bool appendSuffix);

private:
    const NOPROutputStats::HTOChiSquare* fTest;
    int fField = -1;
};
