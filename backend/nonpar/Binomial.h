// The stacked bars of the one-sample binomial test: observed and
// hypothesized proportions of the two categories.
#pragma once

#include "backend/nonpar/NOPRStackedChart.h"

class Binomial final : public NOPRStackedChart {
public:
    Binomial(FacSTDictionary* dictionary, NOPROutputStats* stats,
             const NOPROutputStats::HTOBinomial* test);
    ChartString GetRowLabel(int row) override;
    ChartString GetColumnLabel(int column) override;
    std::string GetTitleKey() override { return "One-Sample Binomial Test"; }
    const NumericTableData* GetStackedTable(const std::string& suffix, bool appendSuffix) override;
    void CustomizeTemplate(std::string& text) override;

private:
    const NOPROutputStats::HTOBinomial* fTest;
    NumericTableData fPercentages;
    int fField = -1;
};
