// VarDataProcessor: sources are kept rectangular, so that a renderer can read
// row i of every variable.
#include "host/chart/VarDataProcessor.h"

#include <cmath>

#include "host/cf/CFSysmis.h"

BpChartNode::Source* VarDataProcessor::FindSource(std::string_view name) {
    for (BpChartNode::Source& source : fSources) {
        if (source.fName == name) {
            return &source;
        }
    }
    return nullptr;
}

bool VarDataProcessor::AddDataSource(const std::string& name, int) {
    if (FindSource(name)) {
        return false;
    }
    fSources.push_back({name, {}});
    return true;
}

bool VarDataProcessor::AddVariable(const std::string& source, const std::string& variable,
                                   const void*) {
    BpChartNode::Source* found = FindSource(source);
    if (!found) {
        return false;
    }
    for (const BpChartNode::Variable& existing : found->fVariables) {
        if (existing.fName == variable) {
            return false;
        }
    }
    const size_t rows = found->fVariables.empty() ? 0 : found->fVariables.front().fValues.size();
    found->fVariables.push_back({variable, std::vector<BpChartNode::Value>(rows)});
    return true;
}

bool VarDataProcessor::Set(const std::string& source, const std::string& variable, int row,
                           BpChartNode::Value value) {
    BpChartNode::Source* found = FindSource(source);
    if (!found || row < 0 || row >= kMaxRows) {
        return false;
    }
    BpChartNode::Variable* target = nullptr;
    for (BpChartNode::Variable& existing : found->fVariables) {
        if (existing.fName == variable) {
            target = &existing;
        }
    }
    if (!target) {
        return false;
    }
    const size_t needed = static_cast<size_t>(row) + 1;
    if (target->fValues.size() < needed) {
        for (BpChartNode::Variable& each : found->fVariables) {
            each.fValues.resize(needed);
        }
    }
    target->fValues[static_cast<size_t>(row)] = std::move(value);
    return true;
}

bool VarDataProcessor::SetVariableValue(const std::string& source, const std::string& variable,
                                        int row, double value) {
    if (!std::isfinite(value) || CFIsSysmis(value)) {
        return Set(source, variable, row, std::monostate{});
    }
    return Set(source, variable, row, value);
}

bool VarDataProcessor::SetStringVariableValue(const std::string& source,
                                              const std::string& variable, int row,
                                              const ChartString& value) {
    return Set(source, variable, row, value.toUTF8());
}

int VarDataProcessor::RowCount(std::string_view source) const {
    for (const BpChartNode::Source& each : fSources) {
        if (each.fName == source) {
            return each.fVariables.empty()
                       ? 0
                       : static_cast<int>(each.fVariables.front().fValues.size());
        }
    }
    return 0;
}
