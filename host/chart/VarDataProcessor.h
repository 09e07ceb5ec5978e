// The data of a chart: named data sources, each with named variables whose
// values are set cell by cell (by variable and row).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/bp/BpTree.h"
#include "host/chart/ChartString.h"

class VarDataProcessor final {
public:
    // Adds an empty data source; false when one of that name exists.
    bool AddDataSource(const std::string& name, int flags);
    // Adds a variable to a source; `info` (variable information of the host)
    // is not used. False for an unknown source or a repeated name.
    bool AddVariable(const std::string& source, const std::string& variable, const void* info);
    // Sets the value of a variable in a row (from 0); the source grows to hold
    // the row. A number that is not finite, or the system-missing value, is
    // stored as "no value". False for an unknown source or variable, a
    // negative row or a row beyond kMaxRows.
    bool SetVariableValue(const std::string& source, const std::string& variable, int row,
                          double value);
    bool SetStringVariableValue(const std::string& source, const std::string& variable, int row,
                                const ChartString& value);

    // The sources in the order they were added; every variable of a source
    // holds as many values as the source has rows.
    const std::vector<BpChartNode::Source>& Sources() const { return fSources; }
    // The number of rows of a source (0 for an unknown one).
    int RowCount(std::string_view source) const;

    static constexpr int kMaxRows = 1 << 20;

private:
    BpChartNode::Source* FindSource(std::string_view name);
    bool Set(const std::string& source, const std::string& variable, int row,
             BpChartNode::Value value);
    std::vector<BpChartNode::Source> fSources;
};
