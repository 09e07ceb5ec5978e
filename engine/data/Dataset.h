// A data set: named columns of values, one entry per case. Every source of
// data (a CSV file today) fills this one shape, and everything after reading
// works on it.
//
// Numeric columns (numbers and dates) hold doubles, the system-missing value
// kSysMis for an empty cell. String columns hold texts, "" for an empty cell
// (which is missing).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "engine/data/Variable.h"

struct Column {
    Variable fVariable;
    std::vector<double> fNumbers;    // numeric variables
    std::vector<std::string> fTexts; // string variables
};

class Dataset final {
public:
    std::size_t CaseCount() const { return fCaseCount; }
    int VariableCount() const { return static_cast<int>(fColumns.size()); }
    const Variable& GetVariable(int index) const { return fColumns[index].fVariable; }
    const Column& GetColumn(int index) const { return fColumns[index]; }
    // Index of the variable of that name (the exact name first, then without
    // regard to case, as commands name variables), or -1.
    int FindVariable(std::string_view name) const;

    // Building (the readers' side).
    Column& AddColumn(Variable variable);
    void SetCaseCount(std::size_t count) { fCaseCount = count; }

    // True when case `row` of variable `index` is user-missing (a value the
    // dictionary declares missing).
    bool IsUserMissing(int index, std::size_t row) const;
    // True when the cell is empty (system-missing).
    bool IsSysMissing(int index, std::size_t row) const;

private:
    std::vector<Column> fColumns;
    std::size_t fCaseCount = 0;
};
