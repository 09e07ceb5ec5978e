// The cases of one split as the tests see them: every variable's values as
// numbers, with the missing values already decided.
//
// A value is kSysMis when the case is missing on the variable: an empty
// cell, or a user-missing value unless USERMISSING=INCLUDE. Cases that
// /MISSING SCOPE=LISTWISE leaves out are not in the split at all. A string
// variable's values are the positions of its texts in its category list; a
// numeric variable's values are the numbers themselves.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "engine/data/Variable.h"

// One category of a categorical variable: the value as the tests see it, the
// value as the document writes it, and its label.
struct Category {
    double fValue = 0;
    std::string fText;
    std::string fLabel;
};

class SplitData final {
public:
    struct Field {
        const Variable* fVariable = nullptr;
        std::vector<double> fValues;       // one per case of the split
        std::vector<Category> fCategories; // ascending; for every variable, of the whole data set
    };

    std::size_t CaseCount() const { return fCaseNumbers.size(); }
    int FieldCount() const { return static_cast<int>(fFields.size()); }
    // The variable's values in this split, one per case (kSysMis when missing).
    std::span<const double> Values(int field) const { return fFields[field].fValues; }
    const Variable& GetVariable(int field) const { return *fFields[field].fVariable; }
    // The categories of a variable in ascending order of value (texts for
    // string variables); the document's dictionary lists them in this order.
    const std::vector<Category>& Categories(int field) const { return fFields[field].fCategories; }
    // Position of `value` in the variable's categories, or -1.
    int CategoryPosition(int field, double value) const;
    // The case number (1-based row of the data) of each case of the split.
    std::span<const double> CaseNumbers() const { return fCaseNumbers; }
    // The field's index in the document's data dictionary.
    int DocumentIndex(int field) const { return field; }

    // The values of `field` that are not missing, in case order.
    std::vector<double> ValidValues(int field) const;
    // The cases (positions in this split) valid on every one of `fields`.
    std::vector<std::size_t> ValidCases(std::span<const int> fields) const;

    // Building (the engine's side).
    std::vector<Field> fFields;
    std::vector<double> fCaseNumbers;
};
