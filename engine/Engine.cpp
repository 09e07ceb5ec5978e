// The engine's driver: splits, missing values, the document's dictionary
// and field information, and the families' writers.
#include "engine/Engine.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <set>

#include "engine/Progress.h"
#include "engine/data/Dataset.h"
#include "engine/data/SplitData.h"
#include "engine/doc/Builders.h"
#include "engine/doc/StatXml.h"
#include "engine/plan/AnalysisPlan.h"
#include "engine/stats/OneSample.h"

namespace {
// The categories of a categorical variable over the whole data: its valid
// values and its labelled values, ascending. A string variable's categories
// are its texts in byte order, valued by position.
std::vector<Category> MakeCategories(const Dataset& data, int index, bool includeUserMissing) {
    const Column& column = data.GetColumn(index);
    const Variable& variable = column.fVariable;
    std::vector<Category> categories;
    auto labelOf = [&](const DataValue& value, const std::string& text) {
        for (const ValueLabel& label : variable.fValueLabels) {
            if (variable.IsString() ? label.fValue.fText == value.fText
                                    : label.fValue.fNumber == value.fNumber) {
                return label.fLabel;
            }
        }
        return text;
    };
    auto userMissing = [&](const DataValue& value) {
        if (includeUserMissing) {
            return false;
        }
        for (const DataValue& missing : variable.fMissingValues) {
            if (variable.IsString() ? missing.fText == value.fText
                                    : missing.fNumber == value.fNumber) {
                return true;
            }
        }
        return false;
    };
    if (variable.IsString()) {
        std::set<std::string> texts;
        for (const std::string& text : column.fTexts) {
            if (!text.empty()) {
                texts.insert(text);
            }
        }
        for (const ValueLabel& label : variable.fValueLabels) {
            texts.insert(label.fValue.fText);
        }
        for (const std::string& text : texts) {
            DataValue value;
            value.fText = text;
            if (!userMissing(value)) {
                categories.push_back(
                    {static_cast<double>(categories.size()), text, labelOf(value, text)});
            }
        }
        return categories;
    }
    std::set<double> numbers;
    if (variable.IsCategorical()) {
        for (double number : column.fNumbers) {
            if (number != kSysMis) {
                numbers.insert(number);
            }
        }
    }
    for (const ValueLabel& label : variable.fValueLabels) {
        numbers.insert(label.fValue.fNumber);
    }
    for (double number : numbers) {
        DataValue value;
        value.fNumber = number;
        if (!userMissing(value)) {
            const std::string text = FormatNumber(number);
            categories.push_back({number, text, labelOf(value, text)});
        }
    }
    return categories;
}

// The values of a variable for the given rows, as the tests see them.
std::vector<double> FieldValues(const Dataset& data, int index, const SplitData::Field& field,
                                const std::vector<std::size_t>& rows, bool includeUserMissing) {
    const Column& column = data.GetColumn(index);
    std::vector<double> values;
    values.reserve(rows.size());
    std::map<std::string, double, std::less<>> positions;
    if (column.fVariable.IsString()) {
        for (const Category& category : field.fCategories) {
            positions.emplace(category.fText, category.fValue);
        }
    }
    for (std::size_t row : rows) {
        if (data.IsSysMissing(index, row) ||
            (!includeUserMissing && data.IsUserMissing(index, row))) {
            values.push_back(kSysMis);
        } else if (column.fVariable.IsString()) {
            auto at = positions.find(column.fTexts[row]);
            values.push_back(at == positions.end() ? kSysMis : at->second);
        } else {
            values.push_back(column.fNumbers[row]);
        }
    }
    return values;
}

// The field information of a field: a categorical field's counts, unless a
// test treated the (ordinal) field as continuous, or a continuous field's
// descriptives and histogram.
void AddFieldInfo(const SplitData& split, int field, bool treatedAsContinuous, Document& doc) {
    const std::vector<double> valid = split.ValidValues(field);
    const Variable& variable = split.GetVariable(field);
    const double total = static_cast<double>(valid.size());
    if ((variable.IsCategorical() || variable.IsString()) && !treatedAsContinuous) {
        std::vector<double> counts(split.Categories(field).size(), 0.0);
        for (double value : valid) {
            const int at = split.CategoryPosition(field, value);
            if (at >= 0) {
                counts[static_cast<std::size_t>(at)] += 1;
            }
        }
        doc.AddCategoricalInfo(split.DocumentIndex(field), total, counts);
        return;
    }
    if (valid.empty()) {
        doc.AddContinuousInfo(split.DocumentIndex(field), 0, kSysMis, kSysMis, kSysMis, kSysMis,
                              ValueHistogram{});
        return;
    }
    const auto [lo, hi] = std::minmax_element(valid.begin(), valid.end());
    const double mean = std::accumulate(valid.begin(), valid.end(), 0.0) / total;
    double squares = 0;
    for (double value : valid) {
        squares += (value - mean) * (value - mean);
    }
    const double sd = valid.size() > 1 ? std::sqrt(squares / (total - 1)) : kSysMis;
    doc.AddContinuousInfo(split.DocumentIndex(field), total, *lo, *hi, mean, sd,
                          MakeHistogram(valid));
}

DocumentField MakeDocumentField(const Variable& variable, const std::vector<Category>& categories,
                                int decimals) {
    DocumentField field;
    field.fName = variable.fName;
    if (!variable.IsString() && variable.fType != StorageType::kDate) {
        field.fDecimals = decimals;
    }
    field.fLabel = variable.fLabel;
    field.fLevel = variable.IsString() && variable.fLevel == MeasureLevel::kContinuous
                       ? MeasureLevel::kNominal
                       : variable.fLevel;
    field.fType = variable.fType;
    if (variable.IsCategorical() || variable.IsString()) {
        for (const Category& category : categories) {
            field.fValues.emplace_back(category.fText, category.fLabel);
        }
    }
    return field;
}
} // namespace

bool ResolveSplitBy(const Dataset& data, const std::vector<std::string>& names,
                    std::vector<int>& indices, std::string& error) {
    indices.clear();
    for (const std::string& name : names) {
        const int index = data.FindVariable(name);
        if (index < 0) {
            error = "--split-by: the variable " + name + " is not in the data";
            return false;
        }
        if (data.GetVariable(index).IsString()) {
            error = "--split-by: " + name +
                    " is a string variable; split by a numeric variable (codes with value "
                    "labels)";
            return false;
        }
        if (std::find(indices.begin(), indices.end(), index) != indices.end()) {
            error = "--split-by: " + name + " is named twice";
            return false;
        }
        indices.push_back(index);
    }
    return true;
}

namespace {

// The rows of each split, in ascending order of the split values; cases
// with a missing split value belong to no split. Without split variables,
// one split of every case (an empty data set included).
using SplitRows = std::map<std::vector<double>, std::vector<std::size_t>>;
SplitRows RowsOfSplits(const Dataset& data, const std::vector<int>& splitBy, bool includeUser) {
    SplitRows splits;
    if (splitBy.empty()) {
        std::vector<std::size_t>& rows = splits[{}];
        rows.resize(data.CaseCount());
        std::iota(rows.begin(), rows.end(), std::size_t{0});
        return splits;
    }
    for (std::size_t row = 0; row < data.CaseCount(); ++row) {
        std::vector<double> key;
        bool missing = false;
        for (int index : splitBy) {
            missing = missing || data.IsSysMissing(index, row) ||
                      (!includeUser && data.IsUserMissing(index, row));
            key.push_back(data.GetColumn(index).fNumbers[row]);
        }
        if (!missing) {
            splits[key].push_back(row);
        }
    }
    return splits;
}

// What every split shares: the plan, the fields its tests read, the split
// variables, and each variable's categories and display decimals.
struct RunContext {
    const Dataset& fData;
    const AnalysisPlan& fPlan;
    const EngineOptions& fOptions;
    std::vector<int> fFields;
    std::vector<int> fSplitBy;
    std::vector<std::vector<Category>> fCategories;
    std::vector<int> fDisplayDecimals;
};

// The cases of one split as the tests see them; `dropped` counts the cases
// that listwise deletion leaves out of every test.
SplitData MakeSplit(const RunContext& run, const std::vector<std::size_t>& rows,
                    std::size_t& dropped) {
    const Dataset& data = run.fData;
    const bool includeUser = run.fPlan.fMissing.fIncludeUserMissing;
    SplitData split;
    split.fFields.resize(static_cast<std::size_t>(data.VariableCount()));
    for (int i = 0; i < data.VariableCount(); ++i) {
        split.fFields[static_cast<std::size_t>(i)].fVariable = &data.GetVariable(i);
        split.fFields[static_cast<std::size_t>(i)].fCategories =
            run.fCategories[static_cast<std::size_t>(i)];
    }
    for (int field : run.fFields) {
        SplitData::Field& entry = split.fFields[static_cast<std::size_t>(field)];
        entry.fValues = FieldValues(data, field, entry, rows, includeUser);
    }
    for (std::size_t row : rows) {
        split.fCaseNumbers.push_back(static_cast<double>(row + 1));
    }
    dropped = 0;
    if (!run.fPlan.fMissing.fListwise) {
        return split;
    }
    // Listwise: a case missing on any field of the command leaves every test.
    const std::vector<std::size_t> kept = split.ValidCases(run.fFields);
    dropped = rows.size() - kept.size();
    auto keep = [&](std::vector<double>& values) {
        std::vector<double> keptValues;
        keptValues.reserve(kept.size());
        for (std::size_t at : kept) {
            keptValues.push_back(values[at]);
        }
        values = std::move(keptValues);
    };
    for (int field : run.fFields) {
        keep(split.fFields[static_cast<std::size_t>(field)].fValues);
    }
    keep(split.fCaseNumbers);
    return split;
}

// The document of one split: its counts, settings and dictionary, the
// records of every test of the plan, and the fields' information.
std::string WriteDocument(const RunContext& run, const std::vector<double>& key,
                          const std::vector<std::size_t>& rows) {
    const Dataset& data = run.fData;
    const AnalysisPlan& plan = run.fPlan;
    std::size_t dropped = 0;
    const SplitData split = MakeSplit(run, rows, dropped);

    Document doc;
    std::string comment =
        "Nonparametric tests of " +
        (run.fOptions.fDataName.empty() ? std::string("the data") : run.fOptions.fDataName);
    for (std::size_t k = 0; k < run.fSplitBy.size(); ++k) {
        comment += (k == 0 ? "; split " : ", ") + data.GetVariable(run.fSplitBy[k]).fName + " = " +
                   FormatNumber(key[k]);
    }
    doc.SetComment(comment);
    doc.SetCounts({static_cast<long long>(rows.size()), static_cast<long long>(dropped)});
    doc.SetSettings(plan.fCriteria.fAlpha, plan.fCriteria.fCILevel / 100.0,
                    plan.fMissing.fListwise ? MissingTreatment::kListwise
                                            : MissingTreatment::kTestwise);
    // The dictionary: every variable, then a closing field that needs no
    // field information.
    for (int i = 0; i < data.VariableCount(); ++i) {
        const auto at = static_cast<std::size_t>(i);
        doc.AddField(
            MakeDocumentField(data.GetVariable(i), run.fCategories[at], run.fDisplayDecimals[at]));
    }
    DocumentField closing;
    closing.fName = "$CaseNumber";
    closing.fLabel = "Case number";
    doc.AddField(closing);

    std::vector<int> ordinalAsContinuous;
    if (plan.fOneSample) {
        ordinalAsContinuous = WriteOneSampleTests(split, *plan.fOneSample, plan.fCriteria, doc);
    }
    if (plan.fIndependent) {
        WriteIndependentTests(split, *plan.fIndependent, plan.fCriteria, doc);
    }
    if (plan.fRelated) {
        const std::vector<int> related =
            WriteRelatedTests(split, *plan.fRelated, plan.fCriteria, doc);
        ordinalAsContinuous.insert(ordinalAsContinuous.end(), related.begin(), related.end());
    }
    for (int field : run.fFields) {
        const bool continuous = std::find(ordinalAsContinuous.begin(), ordinalAsContinuous.end(),
                                          split.DocumentIndex(field)) != ordinalAsContinuous.end();
        AddFieldInfo(split, field, continuous, doc);
    }
    return doc.Write();
}

} // namespace

bool RunEngine(const Dataset& data, const CommandSpec& command, const EngineOptions& options,
               EngineResult& result, std::string& error) {
    std::optional<AnalysisPlan> plan = MakeAnalysisPlan(command, data, error);
    if (!plan) {
        return false;
    }
    plan->fCriteria.fSeed = options.fSeed;
    RunContext run{data, *plan, options, plan->Fields(), {}, {}, plan->DisplayDecimals(data)};
    if (!ResolveSplitBy(data, options.fSplitBy, run.fSplitBy, error)) {
        return false;
    }
    for (int field : run.fFields) {
        if (std::find(run.fSplitBy.begin(), run.fSplitBy.end(), field) != run.fSplitBy.end()) {
            error = "--split-by: " + data.GetVariable(field).fName +
                    " splits the data and cannot also be a field of a test";
            return false;
        }
    }
    const bool includeUser = plan->fMissing.fIncludeUserMissing;
    for (int i = 0; i < data.VariableCount(); ++i) {
        run.fCategories.push_back(MakeCategories(data, i, includeUser));
    }
    const SplitRows splits = RowsOfSplits(data, run.fSplitBy, includeUser);

    // The writers report Monte Carlo progress through the hook while this run lasts.
    struct HookGuard {
        ProgressHook fPrevious;
        ~HookGuard() { SetProgressHook(std::move(fPrevious)); }
    } guard{SetProgressHook(options.fMonteCarloProgress)};
    result.fDisplayDecimals = run.fDisplayDecimals;
    result.fDocuments.clear();
    for (const auto& [key, rows] : splits) {
        if (options.fProgress) {
            options.fProgress(result.fDocuments.size(), splits.size());
        }
        result.fDocuments.push_back({key, WriteDocument(run, key, rows)});
    }
    return true;
}
