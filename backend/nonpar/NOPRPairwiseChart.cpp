// Pairwise network. Nodes ("nodeSource_1", one row per sample index from 0
// to the largest in the rank data): "node" is the sample's value from the
// rank data (average rank, number of successes or median), "label" its
// name. Edges ("edgeSource_1", one row per row of the comparison table):
// columns "Sample1", "Sample2" and "AdjSig" are found by name, else at the
// positions 0, 1 and 6 of the 7-column table. The significance level in the
// relabels is written as briefly as it reads back (0.05). The note names
// what the nodes show: medians for the median test, average ranks for the
// other tests of a known test field. Without a known test field, the note speaks of successes for
// Cochran's test and of average ranks for Friedman's and Kendall's.
#include "backend/nonpar/NOPRPairwiseChart.h"

#include <algorithm>
#include <cmath>

#include "host/chart/VarDataProcessor.h"
#include "host/chart/XDocument.h"
#include "host/xml/XMLText.h"

using Stats = NOPROutputStats;

namespace {

const std::string kNodes = "nodeSource_1";
const std::string kEdges = "edgeSource_1";
// More samples than a network can show; such an index is not a sample.
constexpr int kMaxSamples = 10000;

int ColumnOf(const NumericTableData& table, const char* name, size_t fallback) {
    for (size_t i = 0; i < table.fColumnNames.size(); ++i) {
        if (table.fColumnNames[i] == name) {
            return static_cast<int>(i);
        }
    }
    const bool positional = !table.fRows.empty() && table.fRows.front().size() >= 7;
    return positional ? static_cast<int>(fallback) : -1;
}

} // namespace

NOPRPairwiseChart::NOPRPairwiseChart(FacSTDictionary* dictionary, NOPROutputStats* stats,
                                     const Stats::BaseHypothesisTest* test,
                                     const Stats::MultipleComparison* comparison)
    : NOPRChartContext(dictionary, stats), fTest(test), fComparison(comparison) {
    const std::vector<int> fields = TestFields(test);
    if (test && test->fClassification == Stats::kCIndependentSamples) {
        fTestField = comparison && comparison->fFieldIndex >= 0 ? comparison->fFieldIndex
                                                                : (fields.empty() ? -1 : fields[0]);
        fGroupField = fields.size() > 1 ? fields[1] : -1;
    }
}

double NOPRPairwiseChart::EdgeType(double adjustedSignificance, double level) {
    return adjustedSignificance < level ? 1.0 : 2.0;
}

ChartString NOPRPairwiseChart::SampleName(int sample) const {
    if (fTest && fTest->fClassification == Stats::kCIndependentSamples) {
        return CategoryLabel(fGroupField, sample);
    }
    ChartString label = FieldLabel(sample);
    return label.empty() ? label.assignInteger(sample) : label;
}

bool NOPRPairwiseChart::MakeChart(const std::string& suffix, bool appendSuffix) {
    if (!fTest || !fComparison) {
        return false;
    }
    const NumericTableData& content = fComparison->fContent;
    const NumericTableData& info = fComparison->fInfo;
    const int from = ColumnOf(content, "Sample1", 0);
    const int to = ColumnOf(content, "Sample2", 1);
    const int adjusted = ColumnOf(content, "AdjSig", 6);
    if (content.fRows.empty() || from < 0 || to < 0 || adjusted < 0 || info.fRows.size() != 2 ||
        info.fRows[0].size() != info.fRows[1].size()) {
        return false;
    }
    VarDataProcessor data;
    data.AddDataSource(kNodes, 0);
    data.AddVariable(kNodes, "node", nullptr);
    data.AddVariable(kNodes, "label", nullptr);
    for (size_t k = 0; k < info.fRows[0].size(); ++k) {
        const int sample = TruncateToInt(info.fRows[0][k]);
        if (sample < 0 || sample >= kMaxSamples) {
            continue;
        }
        data.SetVariableValue(kNodes, "node", sample, info.fRows[1][k]);
        data.SetStringVariableValue(kNodes, "label", sample, SampleName(sample));
    }
    data.AddDataSource(kEdges, 0);
    for (const char* name : {"from", "to", "weight", "weightInPopup", "type", "tooltip"}) {
        data.AddVariable(kEdges, name, nullptr);
    }
    const double level = fStats ? fStats->fSigLevel : 0.0;
    int row = 0;
    for (const std::vector<double>& numbers : content.fRows) {
        const size_t needed = static_cast<size_t>(std::max({from, to, adjusted}));
        if (numbers.size() <= needed) {
            continue;
        }
        const double adjustedSig = numbers[static_cast<size_t>(adjusted)];
        data.SetVariableValue(kEdges, "from", row, numbers[static_cast<size_t>(from)]);
        data.SetVariableValue(kEdges, "to", row, numbers[static_cast<size_t>(to)]);
        data.SetVariableValue(kEdges, "weight", row, 1.0);
        data.SetVariableValue(kEdges, "weightInPopup", row, adjustedSig);
        data.SetVariableValue(kEdges, "type", row, EdgeType(adjustedSig, level));
        data.SetVariableValue(kEdges, "tooltip", row, adjustedSig);
        ++row;
    }
    if (row == 0) {
        return false;
    }
    std::string text = XDocument::fetchTemplateFile("GLMMPairwiseContrasts.viztemplate");
    if (text.empty()) {
        return false;
    }
    const VEXA_Variable* field = FieldVariable(fTestField);
    ChartString footnote;
    if (field) {
        fTitle = Text("Pairwise Comparisons of ^1");
        fTitle.replaceSubstring("^1", FieldLabel(fTestField).str());
        footnote = Text(fTest->fAlgorithm == Stats::kAIMedian
                            ? "Each node shows the\\nsample median of\\n^1."
                            : "Each node shows the\\nsample average rank of\\n^1.");
        footnote.replaceSubstring("^1", FieldLabel(fTestField).str());
    } else {
        fTitle = Text("Pairwise Comparisons");
        footnote = Text(fTest->fAlgorithm == Stats::kARCochransQ
                            ? "Each node shows the sample number of successes."
                            : "Each node shows the sample average rank.");
    }
    footnote.replaceSubstring("\\n", "\n");
    ReplaceFirst(text, "TitleText", TemplateText(fTitle));
    InsertBefore(text, "id=\"style7\"", " visible=\"false\" ");
    ReplaceFirst(text, "FootnoteText", TemplateText(footnote));
    InsertBefore(text, "</graphLayoutStatistic>", "<swap/>");
    InsertBefore(text, "$[1]$", TemplateText(Text("Adj. Sig.")) + " = ");
    XDocument document(text);
    document.setEditor(2);
    document.setLanguage();
    document.SetChartData(&data);
    const XGraph graph = document.getExternalGraph();
    if (field) {
        const XVariable node = graph.getVariable("node", 0);
        node.setVexaVariable(field);
        node.setFormatBasedOnVexaVariable(field);
        node.SetNumberFormat(XVariable::kGeneralNumber, false, nullptr, nullptr);
    }
    ChartString levelText;
    levelText.assignDouble(level, 15);
    const XVariable type = graph.getVariable("type", 0);
    ChartString below("< ");
    type.addRelabel(1, below.append(levelText));
    ChartString above(">= ");
    type.addRelabel(2, above.append(levelText));
    return Send(document, nullptr, suffix, appendSuffix, true);
}
