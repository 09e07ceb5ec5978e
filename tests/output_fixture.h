// Shared by the output tests: a model with fields backed by host variables, a
// procedure to write into, and a flat view of the tables written.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "backend/nonpar/NOPROutput.h"
#include "backend/nonpar/NOPROutputStats.h"
#include "host/bp/BpOutput.h"
#include "host/bp/BpTree.h"
#include "host/cf/CFAssert.h"
#include "host/cf/CFProcCustom.h"
#include "host/vexa/VEXA_DataSource.h"

// A table with every text resolved: rows and columns as label paths ("group/
// category", dimensions joined by " | "), cells by (row, column).
struct FlatCell {
    std::string fText;
    std::vector<std::string> fNotes; // footnote texts
};

struct FlatTable {
    const BpTableNode* fNode = nullptr;
    std::vector<std::string> fRows;    // in display order
    std::vector<std::string> fColumns; // in display order
    std::map<std::pair<std::string, std::string>, FlatCell> fCells;

    const FlatCell* Find(const std::string& row, const std::string& column = "") const {
        auto it = fCells.find({row, column});
        return it == fCells.end() ? nullptr : &it->second;
    }
    std::string At(const std::string& row, const std::string& column = "") const {
        const FlatCell* cell = Find(row, column);
        return cell ? cell->fText : "<none>";
    }
    std::vector<std::string> NotesAt(const std::string& row, const std::string& column = "") const {
        const FlatCell* cell = Find(row, column);
        return cell ? cell->fNotes : std::vector<std::string>{"<none>"};
    }
    // The footnote texts of the category or group at a label path
    // ("group/category") of any dimension.
    std::vector<std::string> LabelNotes(const std::string& path) const {
        for (const BpTableDimension& dim : fNode->fDimensions) {
            for (size_t node = 0; node < dim.fNodes.size(); ++node) {
                std::string labels;
                for (const BpTableCategory* category : dim.Path(static_cast<int>(node))) {
                    labels += labels.empty() ? category->fLabel : "/" + category->fLabel;
                }
                if (labels == path) {
                    return Texts(dim.fNodes[node].fNotes);
                }
            }
        }
        return {"<no label>"};
    }
    std::vector<std::string> Texts(const std::vector<int>& notes) const {
        std::vector<std::string> texts;
        for (int note : notes) {
            texts.push_back(fNode->fFootnotes.at(static_cast<size_t>(note)));
        }
        return texts;
    }
};

inline std::string TuplePath(const BpTableNode& table, const std::vector<int>& dims,
                             const std::vector<int>& tuple) {
    std::string path;
    for (size_t k = 0; k < dims.size(); ++k) {
        if (k > 0) {
            path += " | ";
        }
        const BpTableDimension& dim = table.fDimensions[static_cast<size_t>(dims[k])];
        std::string labels;
        for (const BpTableCategory* category : dim.Path(tuple[k])) {
            labels += labels.empty() ? category->fLabel : "/" + category->fLabel;
        }
        path += labels;
    }
    return path;
}

inline FlatTable Flatten(const BpTableNode& table) {
    FlatTable flat;
    flat.fNode = &table;
    const BpTableLayout layout = BpTableLayout::Of(table);
    for (const auto& row : layout.fRows) {
        flat.fRows.push_back(TuplePath(table, layout.fRowDimensions, row));
    }
    for (const auto& column : layout.fColumns) {
        flat.fColumns.push_back(TuplePath(table, layout.fColumnDimensions, column));
    }
    for (size_t r = 0; r < layout.fRows.size(); ++r) {
        for (size_t c = 0; c < layout.fColumns.size(); ++c) {
            if (const BpTableCell* cell = layout.Cell(table, r, c)) {
                flat.fCells[{flat.fRows[r], flat.fColumns[c]}] = {cell->fText.fText,
                                                                  flat.Texts(cell->fNotes)};
            }
        }
    }
    return flat;
}

// The output as an outline: "# heading" and "table: title", indented by depth.
inline void Outline(const BpHeadingNode& node, int depth, std::vector<std::string>& out) {
    for (const auto& item : node.fChildren) {
        const std::string indent(static_cast<size_t>(depth) * 2, ' ');
        if (item->fKind == BpItem::kHeading) {
            const auto& heading = static_cast<const BpHeadingNode&>(*item);
            out.push_back(indent + "# " + heading.fText);
            Outline(heading, depth + 1, out);
        } else if (item->fKind == BpItem::kTable) {
            out.push_back(indent + "table: " + static_cast<const BpTableNode&>(*item).fTitle);
        }
    }
}

inline void CollectTables(const BpHeadingNode& node, std::vector<const BpTableNode*>& out) {
    for (const auto& item : node.fChildren) {
        if (item->fKind == BpItem::kHeading) {
            CollectTables(static_cast<const BpHeadingNode&>(*item), out);
        } else if (item->fKind == BpItem::kTable) {
            out.push_back(static_cast<const BpTableNode*>(item.get()));
        }
    }
}

// Turns failed assertions into exceptions for the length of a test.
class ThrowingAsserts {
public:
    ThrowingAsserts() : fPrevious(CFSetAssertHandler(CFThrowingAssertHandler)) {}
    ~ThrowingAsserts() { CFSetAssertHandler(fPrevious); }

private:
    CFAssertHandler fPrevious;
};

inline std::string AssertionText(const std::function<void()>& run) {
    ThrowingAsserts guard;
    try {
        run();
    } catch (const CFAssertionFailure& failure) {
        return failure.fExpression + " @ " + failure.fSource;
    }
    return "<no assertion>";
}

// A model, a data source and a procedure to write into.
class OutputEnv {
public:
    using Stats = NOPROutputStats;
    using HTest = NOPROutputStats::BaseHypothesisTest;

    OutputEnv() {
        fStats.fSigLevel = 0.05;
        fStats.SetDataSource(&fSource);
    }

    // A field of the result model backed by a host variable of that name.
    VEXA_Variable& AddField(const std::string& name, int type = 0) {
        VEXA_Variable& variable = fSource.AddVariable(name, type);
        Stats::FieldInfoRecord* record = fStats.AppendFieldInfo();
        record->fFieldIndex = static_cast<int>(fStats.GetFieldInfos().size() - 1);
        record->fVariable = &variable;
        return variable;
    }
    // A category value of the field at `field`.
    void AddCategory(int field, double value) {
        Stats::FieldInfoRecord* record = fStats.GetFieldInfo(field);
        Stats::FieldValueEntry entry;
        entry.fIndex = static_cast<int>(record->fValues.size());
        entry.fValue.SetCompleteValue(CFDatum(value), record->fVariable);
        record->fValues.push_back(entry);
    }

    template <typename Record = HTest>
    Record* AddTest(Stats::Classification classification, Stats::Algorithm algorithm,
                    Stats::Decision decision, std::string key,
                    std::vector<std::vector<double>> parameters = {}) {
        HTest* test = fStats.CreateTest(classification, algorithm, decision);
        test->fConditionKey = std::move(key);
        int number = 1;
        for (auto& values : parameters) {
            test->fConditionParameters.push_back({number++, std::move(values)});
        }
        return dynamic_cast<Record*>(test);
    }
    static void AddStatistics(HTest* test, std::string group,
                              std::vector<std::pair<std::string, double>> rows) {
        Stats::StatisticsGroup statistics;
        statistics.fName = std::move(group);
        for (auto& [name, value] : rows) {
            statistics.fValues.push_back({name, value});
        }
        test->fStatistics.push_back(std::move(statistics));
    }
    static void AddMessage(HTest* test, int code, Stats::MessageType type = Stats::kMWarning,
                           std::string group = "", std::vector<double> parameter = {}) {
        Stats::ConditionMessage message;
        message.fCode = code;
        message.fType = type;
        message.fGroup = std::move(group);
        if (!parameter.empty()) {
            message.fParameters.push_back({1, std::move(parameter)});
        }
        test->fMessages.push_back(std::move(message));
    }

    std::unique_ptr<NOPROutput> Output() {
        auto output = std::make_unique<NOPROutput>(&fProcedure, nullptr, &fSource, &fStats);
        output->fMakeViews = false;
        return output;
    }
    void Write() {
        NOPROutput output(&fProcedure, nullptr, &fSource, &fStats);
        output.fMakeViews = false;
        output.MakeOutput();
    }
    std::vector<const BpTableNode*> Tables() const {
        std::vector<const BpTableNode*> tables;
        CollectTables(fProcedure.Root(), tables);
        return tables;
    }
    // The first table of that title; fails the test when there is none.
    FlatTable Table(const std::string& title) const {
        for (const BpTableNode* table : Tables()) {
            if (table->fTitle == title) {
                return Flatten(*table);
            }
        }
        ADD_FAILURE() << "no table titled " << title;
        static const BpTableNode empty;
        return Flatten(empty);
    }
    std::vector<std::string> OutlineOf() const {
        std::vector<std::string> out;
        Outline(fProcedure.Root(), 0, out);
        return out;
    }

    VEXA_DataSource fSource;
    Stats fStats;
    BpProcedure fProcedure{"Nonparametric Tests", nullptr, &fSource};
};

class OutputTest : public ::testing::Test, public OutputEnv {};
