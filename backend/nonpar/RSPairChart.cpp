// Related-samples pair chart. The record's distribution table holds one row
// per bin of the differences (second field minus first): the bin's value and
// its count. The template derives "type" from the sign of "value" (1
// positive, 2 negative); the differences take the first field's format.
#include "backend/nonpar/RSPairChart.h"

#include "host/chart/VarDataProcessor.h"
#include "host/chart/XDocument.h"

using Stats = NOPROutputStats;

namespace {

const std::string kSource = "graphSource";

} // namespace

RSPairChart::RSPairChart(FacSTDictionary* dictionary, NOPROutputStats* stats,
                         const Stats::HTRDifferences* test, int algorithm)
    : NOPRChartContext(dictionary, stats), fTest(test) {
    fTitle = Text(algorithm == Stats::kARWilcoxonSignedRanks
                      ? "Related-Samples Wilcoxon Signed Rank Test"
                      : "Related-Samples Sign Test");
}

bool RSPairChart::MakeChart(const std::string& suffix, bool appendSuffix) {
    if (!fTest) {
        return false;
    }
    VarDataProcessor data;
    data.AddDataSource(kSource, 0);
    data.AddVariable(kSource, "count", nullptr);
    data.AddVariable(kSource, "value", nullptr);
    int row = 0;
    for (const std::vector<double>& numbers : fTest->fDistribution.fRows) {
        if (numbers.size() < 2) {
            continue;
        }
        data.SetVariableValue(kSource, "value", row, numbers[0]);
        data.SetVariableValue(kSource, "count", row, numbers[1]);
        ++row;
    }
    if (row == 0) {
        return false;
    }
    std::string text = XDocument::fetchTemplateFile("NPARWilcoxonPairSignedRank.viztemplate");
    if (text.empty()) {
        return false;
    }
    const std::vector<int> fields = TestFields(fTest);
    const int first = fields.empty() ? -1 : fields[0];
    const int second = fields.size() > 1 ? fields[1] : -1;
    ChartString ties = Text("Number of Ties = ^1");
    ChartString count;
    ties.replaceSubstring("^1", count.assignInteger(fTest->fTies).str());
    ChartString difference = FieldLabel(second);
    difference.append(" - ").append(FieldLabel(first));
    ReplaceFirst(text, "LegendLabel", TemplateText(ties));
    ReplaceFirst(text, "XAxis Text", TemplateText(difference));
    ReplaceFirst(text, "YAxis Text", TemplateText(Text("Frequency")));
    XDocument document(text);
    document.setEditor(2);
    document.setLanguage();
    const XGraph graph = document.getExternalGraph();
    const auto relabel = [&](double value, const char* key, int n) {
        ChartString label = Text(key);
        label.append("\n(").appendInteger(n).append(")");
        graph.getVariable("type", 0).addRelabel(value, label);
    };
    relabel(1, "Positive Differences", fTest->fPositiveDifferences);
    relabel(2, "Negative Differences", fTest->fNegativeDifferences);
    graph.getVariable("value", 0).setFormatBasedOnVexaVariable(FieldVariable(first));
    return Send(document, &data, suffix, appendSuffix, true);
}
