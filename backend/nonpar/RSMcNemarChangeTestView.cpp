// McNemar facet chart. The comparison table has one row per category of the
// first field and one column per category of the second (row and column
// names: the category values). "graphSource" holds, per cell, a row with
// "Category" 0 and the observed count as "CellValue", and (McNemar) a row
// with "Category" 1 and the hypothesized count: the observed count on the
// diagonal, the mean of the cell and its mirror cell elsewhere (square
// tables; other tables keep the observed count). "CellText" is the row's
// category value (graph variable "Row", relabelled with the text the field
// shows for it), "Column" the column's; both tooltips go on every row of the
// cell. The popup shows the observed ($[1]$) and the hypothesized ($[2]$)
// count.
#include "backend/nonpar/RSMcNemarChangeTestView.h"

#include <algorithm>
#include <charconv>
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

double RSMcNemarChangeTestView::CategoryCode(const std::vector<std::string>& names,
                                             size_t position) {
    if (position < names.size()) {
        const std::string& name = names[position];
        double value = 0.0;
        const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), value);
        if (error == std::errc() && end == name.data() + name.size() && std::isfinite(value)) {
            return value;
        }
    }
    return static_cast<double>(position);
}

void RSMcNemarChangeTestView::BindFacet(const XVariable& facet, const VEXA_Variable* field,
                                        const std::vector<std::string>& names) {
    if (!field) {
        return;
    }
    facet.setVexaVariable(field);
    facet.setFormatBasedOnVexaVariable(field);
    for (size_t i = 0; i < names.size(); ++i) {
        const double code = CategoryCode(names, i);
        facet.addRelabel(code,
                         ValueText(field, NumericFormatCFToStat(code, field->GetFormat().fType)));
    }
}

bool RSMcNemarChangeTestView::FillFacetData(VarDataProcessor& data,
                                            const Stats::CategoryFieldsComparison& comparison,
                                            bool hypothesized) {
    const NumericTableData& table = comparison.fTable;
    data.AddDataSource(kSource, 0);
    for (const char* name : {"CellText", "Column", "Category", "CellValue", "ObservedTooltip"}) {
        data.AddVariable(kSource, name, nullptr);
    }
    if (hypothesized) {
        data.AddVariable(kSource, "HypothesizedTooltip", nullptr);
    }
    const size_t rows = table.fRows.size();
    const auto cell = [&](size_t r, size_t c) {
        return r < rows && c < table.fRows[r].size() ? table.fRows[r][c] : kCFSysmis;
    };
    int row = 0;
    for (size_t r = 0; r < rows; ++r) {
        const bool square = table.fRows[r].size() == rows;
        for (size_t c = 0; c < table.fRows[r].size(); ++c) {
            const double observed = cell(r, c);
            const double mirror = cell(c, r);
            double expected = observed;
            if (square && r != c && !CFIsSysmis(observed) && !CFIsSysmis(mirror)) {
                expected = (observed + mirror) / 2.0;
            }
            for (int type = 0; type < (hypothesized ? 2 : 1); ++type) {
                data.SetVariableValue(kSource, "CellText", row, CategoryCode(table.fRowNames, r));
                data.SetVariableValue(kSource, "Column", row, CategoryCode(table.fColumnNames, c));
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
    VarDataProcessor data;
    if (!FillFacetData(data, fTest->fComparison, true)) {
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
    const auto& table = fTest->fComparison.fTable;
    BindFacet(graph.getVariable("Row", 0), FieldVariable(first), table.fRowNames);
    BindFacet(graph.getVariable("Column", 0), FieldVariable(second), table.fColumnNames);
    const XVariable category = graph.getVariable("category", 0);
    category.setLabel(Text("E62935"));
    category.addRelabel(0, Text("Observed"));
    category.addRelabel(1, Text("Hypothesized"));
    return Send(document, nullptr, suffix, appendSuffix, true);
}
