// Marginal homogeneity facet chart: the McNemar chart's data without the
// hypothesized series; the legend and the popup's second token go, and the
// one series is named "Observed".
#include "backend/nonpar/MarginalHomogeneity.h"

#include "backend/nonpar/RSMcNemarChangeTestView.h"
#include "host/chart/ChartTranscoder.h"
#include "host/chart/VarDataProcessor.h"
#include "host/chart/XDocument.h"

using Stats = NOPROutputStats;

MarginalHomogeneity::MarginalHomogeneity(FacSTDictionary* dictionary, NOPROutputStats* stats,
                                         const Stats::HTRMarginalHomogeneity* test)
    : NOPRChartContext(dictionary, stats), fTest(test) {
    fTitle = Text("Related-Samples Marginal Homogeneity Test");
}

MarginalHomogeneity::~MarginalHomogeneity() = default;

bool MarginalHomogeneity::MakeChart(const std::string& suffix, bool appendSuffix) {
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
    if (!RSMcNemarChangeTestView::FillFacetData(data, comparison, false, rows, columns)) {
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
    ReplaceFirst(text, "tooltipText", TemplateText(Text("Observed")) + "=$[1]$");
    RemoveFirst(text, "<legend", "</legend>");
    const size_t firstMapping = text.find("<tokenMapping");
    if (firstMapping != std::string::npos) {
        const size_t second = text.find("<tokenMapping", firstMapping + 1);
        const size_t end = second == std::string::npos ? second : text.find("/>", second);
        if (end != std::string::npos) {
            text.erase(second, end + 2 - second);
        }
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
    RSMcNemarChangeTestView::BindFacet(graph.getVariable("Row", 0), FieldVariable(first), rows);
    RSMcNemarChangeTestView::BindFacet(graph.getVariable("Column", 0), FieldVariable(second),
                                       columns);
    // The one series is named, so that no bar is labelled by its number.
    const XVariable category = graph.getVariable("category", 0);
    category.setLabel(Text("E62935"));
    category.addRelabel(0, Text("Observed"));
    return Send(document, nullptr, suffix, appendSuffix, true);
}
