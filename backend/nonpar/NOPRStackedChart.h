// A stacked bar chart of a two-way table ("NPARStackedBar.viztemplate"):
// one bar per row of the table, stacked by its columns. Subclasses give the
// table, the row and column texts and the title key.
#pragma once

#include <string>

#include "backend/nonpar/NOPRChartContext.h"

class NOPRStackedChart : public NOPRChartContext {
public:
    using NOPRChartContext::NOPRChartContext;
    ~NOPRStackedChart() override;

    virtual ChartString GetRowLabel(int row) = 0;
    virtual ChartString GetColumnLabel(int column) = 0;
    virtual std::string GetTitleKey() = 0;
    // The table to draw (rows of numbers, one per row name), or null.
    virtual const NumericTableData* GetStackedTable(const std::string& suffix,
                                                    bool appendSuffix) = 0;
    virtual void CustomizeTemplate(std::string& text);
    virtual void CustomizeDocument(XDocument& document);

    // The stacked sequence; true when a chart was sent.
    bool MakeStackedChart(const std::string& suffix, bool appendSuffix);

    // A table whose rows are rescaled to percentages of their totals (rows
    // without a positive total become empty).
    static NumericTableData RowPercentages(const NumericTableData& table);
};
