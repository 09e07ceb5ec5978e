// McNemar facet chart. The comparison table (host/cf/CFTableLayout.h) has
// one row per category of the first field and one column per category of
// the second, named by the categories' positions. "graphSource" holds, per
// cell, a row with "Category" 0 and the observed count as "CellValue", and
// (McNemar) a row with "Category" 1 and the hypothesized count: the observed
// count on the diagonal, the mean of the cell and its mirror cell elsewhere
// (square tables; other tables keep the observed count). "CellText" is the
// row's category value (graph variable "Row", relabelled with the
// category's text), "Column" the column's; both tooltips go on every row of
// the cell. The popup shows the observed ($[1]$) and the hypothesized ($[2]$)
// count.
#include "backend/nonpar/RSMcNemarChangeTestView.h"

#include <algorithm>
#include <cmath>

#include "host/chart/ChartTranscoder.h"
#include "host/chart/VarDataProcessor.h"
#include "host/chart/XDocument.h"
#include "host/chart/XUtility.h"
#include "host/vexa/VEXA_DataSource.h"

using Stats = NOPROutputStats;

namespace {

const std::string kSource = "graphSource";

} // namespace

RSMcNemarChangeTestView::RSMcNemarChangeTestView(FacSTDictionary* dictionary,
                                                 NOPROutputStats* stats,
                                                 const Stats::HTRMcNemar* test)
    : NOPRChartContext(dictionary, stats), fTest(test) {
    fTitle = Text("Related-Samples McNemar Change Test");
}

RSMcNemarChangeTestView::~RSMcNemarChangeTestView() = default;

void RSMcNemarChangeTestView::BindFacet(const XVariable& facet, const VEXA_Variable* field,
                                        const TableCategories& categories) {
    if (!field) {
        return;
    }
    facet.setVexaVariable(field);
    facet.setFormatBasedOnVexaVariable(field);
    for (size_t i = 0; i < categories.fValues.size(); ++i) {
        facet.addRelabel(categories.fValues[i], categories.fLabels[i]);
    }
}

bool RSMcNemarChangeTestView::FillFacetData(VarDataProcessor& data,
                                            const Stats::CategoryFieldsComparison& comparison,
                                            bool hypothesized, const TableCategories& rows,
                                            const TableCategories& columns) {
    const NumericTableData& table = comparison.fTable;
    data.AddDataSource(kSource, 0);
    for (const char* name : {"CellText", "Column", "Category", "CellValue", "ObservedTooltip"}) {
        data.AddVariable(kSource, name, nullptr);
    }
    if (hypothesized) {
        data.AddVariable(kSource, "HypothesizedTooltip", nullptr);
    }
    const size_t rowCount = std::min(table.fRows.size(), rows.fValues.size());
    const auto cell = [&](size_t r, size_t c) {
        return r < rowCount && c < table.fRows[r].size() ? table.fRows[r][c] : kCFSysmis;
    };
    int row = 0;
    for (size_t r = 0; r < rowCount; ++r) {
        const bool square = table.fRows[r].size() == table.fRows.size();
        const size_t columnCount = std::min(table.fRows[r].size(), columns.fValues.size());
        for (size_t c = 0; c < columnCount; ++c) {
            const double observed = cell(r, c);
            const double mirror = cell(c, r);
            double expected = observed;
            if (square && r != c && !CFIsSysmis(observed) && !CFIsSysmis(mirror)) {
                expected = (observed + mirror) / 2.0;
            }
            for (int type = 0; type < (hypothesized ? 2 : 1); ++type) {
                data.SetVariableValue(kSource, "CellText", row, rows.fValues[r]);
                data.SetVariableValue(kSource, "Column", row, columns.fValues[c]);
                data.SetVariableValue(kSource, "Category", row, type);
                data.SetVariableValue(kSource, "CellValue", row, type == 0 ? observed : expected);
                data.SetVariableValue(kSource, "ObservedTooltip", row, observed);
                if (hypothesized) {
                    data.SetVariableValue(kSource, "HypothesizedTooltip", row, expected);
                }
                ++row;
            }
        }
    }
    return row > 0;
}

bool RSMcNemarChangeTestView::MakeChart(const std::string& suffix, bool appendSuffix) {
    if (!fTest) {
        return false;
    }
    const Stats::CategoryFieldsComparison& comparison = fTest->fComparison;
    const TableCategories rows = CategoriesOfNames(
        comparison.fRowField, comparison.fTable.fRowNames, comparison.fTable.fRows.size());
    const TableCategories columns =
        CategoriesOfNames(comparison.fColumnField, comparison.fTable.fColumnNames,
                          comparison.fTable.fRows.empty() ? 0 : comparison.fTable.fRows[0].size());
    VarDataProcessor data;
    if (!FillFacetData(data, comparison, true, rows, columns)) {
        return false;
    }
    std::string text = XDocument::fetchTemplateFile("FacetBarChart.viztemplate");
    if (text.empty()) {
        return false;
    }
    const int first = fTest->fComparison.fRowField;
    const int second = fTest->fComparison.fColumnField;
    ReplaceFirst(text, "TitleText", TemplateText(fTitle));
    ReplaceFirst(text, "Facet1Text", TemplateText(FieldLabel(first)));
    ReplaceFirst(text, "Facet2Text", TemplateText(FieldLabel(second)));
    ReplaceFirst(text, "tooltipText",
                 TemplateText(Text("Observed")) + "=$[1]$&#10;" +
                     TemplateText(Text("Hypothesized")) + "=$[2]$");
    if (!XDocument::useColorsOnly()) {
        ReplaceFirst(text, "<color", "<pattern");
    }
    XDocument document(text);
    document.setEditor(2);
    document.setLanguage();
    document.SetChartData(&data);
    const XGraph graph = document.getExternalGraph();
    ChartString prefix = ChartTranscoder("CP1252").transcode(LookUp("ObservedFrequency"));
    prefix.replaceSubstring("\\n", "\n");
    prefix.append(" ");
    graph.getVariable("CellValue", 0).SetFormatPrefix(prefix);
    BindFacet(graph.getVariable("Row", 0), FieldVariable(first), rows);
    BindFacet(graph.getVariable("Column", 0), FieldVariable(second), columns);
    const XVariable category = graph.getVariable("category", 0);
    category.setLabel(Text("E62935"));
    category.addRelabel(0, Text("Observed"));
    category.addRelabel(1, Text("Hypothesized"));
    return Send(document, nullptr, suffix, appendSuffix, true);
}
