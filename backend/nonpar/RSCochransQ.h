// The stacked bars of Cochran's Q test: successes and failures of each field.
#pragma once

#include "backend/nonpar/NOPRStackedChart.h"

class RSCochransQ final : public NOPRStackedChart {
public:
    RSCochransQ(FacSTDictionary* dictionary, NOPROutputStats* stats,
                const NOPROutputStats::HTRCochransQ* test);
    ChartString GetRowLabel(int row) override;
    ChartString GetColumnLabel(int column) override;
    std::string GetTitleKey() override;
    const NumericTableData* GetStackedTable(const std::string& suffix, bool appendSuffix) override;
    void CustomizeTemplate(std::string& text) override;

private:
    const NOPROutputStats::HTRCochransQ* fTest;
    NumericTableData fPercentages;
};
