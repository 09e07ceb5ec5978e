// The cases of one split.
#include "engine/data/SplitData.h"

#include <algorithm>

int SplitData::CategoryPosition(int field, double value) const {
    const std::vector<Category>& categories = fFields[field].fCategories;
    auto at = std::lower_bound(categories.begin(), categories.end(), value,
                               [](const Category& c, double v) { return c.fValue < v; });
    return at != categories.end() && at->fValue == value ? static_cast<int>(at - categories.begin())
                                                         : -1;
}

std::vector<double> SplitData::ValidValues(int field) const {
    std::vector<double> values;
    values.reserve(fFields[field].fValues.size());
    for (double value : fFields[field].fValues) {
        if (value != kSysMis) {
            values.push_back(value);
        }
    }
    return values;
}

std::vector<std::size_t> SplitData::ValidCases(std::span<const int> fields) const {
    std::vector<std::size_t> cases;
    cases.reserve(CaseCount());
    for (std::size_t row = 0; row < CaseCount(); ++row) {
        bool valid = true;
        for (int field : fields) {
            valid = valid && fFields[field].fValues[row] != kSysMis;
        }
        if (valid) {
            cases.push_back(row);
        }
    }
    return cases;
}
