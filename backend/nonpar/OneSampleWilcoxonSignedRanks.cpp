// One-sample Wilcoxon histogram. The graph's right edge moves to 80% of the
// chart (75% when the chart has a line under its title, which takes room
// from the legend's labels) and the legend frame stands beside it, aligned
// with its top. A median that is missing gets no line and no legend entry.
#include "backend/nonpar/OneSampleWilcoxonSignedRanks.h"

#include "host/chart/ViZVisualization.h"
#include "host/chart/XDocument.h"

using Stats = NOPROutputStats;

OneSampleWilcoxonSignedRanks::OneSampleWilcoxonSignedRanks(
    FacSTDictionary* dictionary, NOPROutputStats* stats, const Stats::HTOWilcoxonSignedRanks* test)
    : NOPRHistogramChart(dictionary, stats, test, true), fWilcoxon(test) {
    fTitle = Text("One-Sample Wilcoxon Signed Rank Test");
}

void OneSampleWilcoxonSignedRanks::CustomizeTemplate(std::string& text) {
    ReplaceFirst(text, "xAxisLabel", TemplateText(FieldLabel(fFieldIndex)));
    ReplaceFirst(text, "yAxisLabel", TemplateText(Text("Frequency")));
    ChartString legend = Text("TotalN");
    legend.append(" = ").appendInteger(fRecord->fTotal);
    ReplaceFirst(text, "labelText", TemplateText(legend));
}

void OneSampleWilcoxonSignedRanks::CustomizeDocument(XDocument& document) {
    const ViZVisualization visualization = document.getVisualization();
    const ViZGraph graph = visualization.getGraph(0);
    const ViZStyle green = visualization.addStyle();
    green.setColor("green");
    const ViZStyle blue = visualization.addStyle();
    blue.setColor("blue");
    struct Median {
        double fValue;
        const ViZStyle* fStyle;
        const char* fKey;
    };
    const Median medians[] = {
        {fWilcoxon->fHypotheticalMedian, &green, "OWilcoxonSignedRanksHypotheticalMedian"},
        {fWilcoxon->fObservedMedian, &blue, "OWilcoxonSignedRanksObservedMedian"},
    };
    for (const Median& median : medians) {
        ChartString x;
        x.assignDouble(median.fValue, 16);
        if (!CFIsSysmis(median.fValue) && !x.empty()) {
            graph.addLineGuide(ViZLineGuide::kX, x, median.fStyle->id());
        }
    }
    graph.addLocation(ViZLocation::kRight, ViZLocation::kFixed,
                      visualization.hasSubtitle() ? "75%" : "80%");
    const ViZLabelFrame frame = visualization.addLabelFrame("medianLegend");
    const std::string target = graph.id();
    frame.addLocation(ViZLocation::kTop, ViZLocation::kSame, {}, target);
    frame.addLocation(ViZLocation::kLeft, ViZLocation::kAttach, {}, target);
    frame.addLocation(ViZLocation::kHeight, ViZLocation::kSizeToContent);
    frame.addLocation(ViZLocation::kRight, ViZLocation::kFixed, "100%");
    for (const Median& median : medians) {
        if (CFIsSysmis(median.fValue)) {
            continue;
        }
        const ViZStyle bold = visualization.addStyle();
        bold.setColor(median.fStyle->node().attribute("color").value());
        bold.setFontWeight(ViZStyle::kBold);
        ChartString text = Text(median.fKey);
        text.replaceSubstring("\\n", "\n");
        frame.addLabel(text, bold.id());
    }
    const XVariable value = document.getExternalGraph().getVariable("value", 0);
    const VEXA_Variable* variable = FieldVariable(fFieldIndex);
    value.setVexaVariable(variable);
    value.setFormatBasedOnVexaVariable(variable);
}
