// What every chart of the module shares: the string dictionary, the result
// model and the chart title; the edits made on template text; the lookups of
// fields and categories; and the closing steps of every chart sequence
// (title, line under it, description, data, sending).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "backend/nonpar/NOPROutputStats.h"
#include "host/chart/ChartString.h"

class FacSTDictionary;
class VarDataProcessor;
class XDocument;
class XGraph;

class NOPRChartContext {
public:
    NOPRChartContext(FacSTDictionary* dictionary, NOPROutputStats* stats);
    virtual ~NOPRChartContext();
    NOPRChartContext(const NOPRChartContext&) = delete;
    NOPRChartContext& operator=(const NOPRChartContext&) = delete;

    // Template text edits. Each changes only the first match and leaves the
    // text as it is when the search fails; true when the edit was made.
    static bool ReplaceFirst(std::string& text, std::string_view word, std::string_view by);
    static bool InsertBefore(std::string& text, std::string_view tag, std::string_view snippet);
    static bool InsertAfter(std::string& text, std::string_view tag, std::string_view snippet);
    // Removes from the first `from` up to and including the next `through`.
    static bool RemoveFirst(std::string& text, std::string_view from, std::string_view through);
    // A text as it may stand in template text: XML special characters escaped.
    static std::string TemplateText(const ChartString& text);

    // The title, then "; " and the suffix when `appendSuffix` is set.
    static ChartString Description(const ChartString& title, const std::string& suffix,
                                   bool appendSuffix);
    // The field indices of a test from its condition parameters: for one
    // sample the first value of parameter 0; for independent samples the
    // first values of parameters 0 and 1 (test field, grouping field); for
    // related samples every value of parameter 0, or the first values of
    // parameters 0 and 1 when parameter 0 names one field.
    static std::vector<int> TestFields(const NOPROutputStats::BaseHypothesisTest* test);
    // Whether a test carries a message of type error (such a test gets no chart).
    static bool HasErrorMessage(const NOPROutputStats::BaseHypothesisTest* test);
    // A number in fixed notation with `decimals` decimals ("." when missing).
    static std::string FixedText(double value, int decimals);

    const ChartString& Title() const { return fTitle; }
    // Says that the chart could not be drawn from its document (its tables
    // are not laid out as the chart reads them, or its template is missing),
    // so that it is not lost without a word.
    void ReportNotDrawn(const std::string& suffix) const;

protected:
    // The dictionary text of a key (the key itself without a dictionary).
    std::string LookUp(std::string_view key) const;
    ChartString Text(std::string_view key) const;
    const NOPROutputStats::FieldInfoRecord* FieldRecord(int fieldIndex) const;
    const VEXA_Variable* FieldVariable(int fieldIndex) const;
    // The preferred label of a field; empty when the field is unknown.
    ChartString FieldLabel(int fieldIndex) const;
    // The value of category `category` of a field as the host holds it (the
    // position itself for string fields and unknown categories).
    double CategoryValue(int fieldIndex, int category) const;
    // The text of category `category` of a field: its value label, else its
    // value as the field shows it.
    ChartString CategoryLabel(int fieldIndex, int category) const;
    // The categories that the rows or columns of a table stand for, by
    // their names (category positions, host/cf/CFTableLayout.h; a table
    // without names counts them 0, 1, ...): their values and their texts.
    struct TableCategories {
        std::vector<double> fValues;
        std::vector<ChartString> fLabels;
    };
    TableCategories CategoriesOfNames(int fieldIndex, const std::vector<std::string>& names,
                                      size_t count) const;
    // A value of a field (in the document's units, dates in days) as the
    // field shows it: dates and times by their format, other values as
    // fixed numbers with `decimals` decimals; as template text.
    std::string FieldValueText(int fieldIndex, double value, int decimals) const;
    // A value of a variable (in the host's units) as the output shows it: by
    // its value label or its format (`preference` as BpDataValue's).
    static ChartString ValueText(const VEXA_Variable* variable, double value, int preference = 2);

    // Sets the chart title on the graph and the suffix as the line under it.
    void SetTitles(const XGraph& graph, const std::string& suffix) const;
    // The closing steps: titles, description, data (when given), the host's
    // chart look (when `apply`), sending. True when sent.
    bool Send(XDocument& document, const VarDataProcessor* data, const std::string& suffix,
              bool appendSuffix, bool apply) const;

    FacSTDictionary* fDictionary;
    NOPROutputStats* fStats;
    ChartString fTitle;
};

// Makes `chart` with its member `make` and says so when it cannot be drawn.
template <typename Chart, typename Make>
void Draw(Chart&& chart, Make make, const std::string& suffix, bool appendSuffix) {
    if (!(chart.*make)(suffix, appendSuffix)) {
        chart.ReportNotDrawn(suffix);
    }
}
