// Related-samples rank histograms. Each field's variable information holds
// one row per rank bin: the rank and its count. "graphSource" gets one row
// per field and bin: "COUNTS", "MEANS" (the rank), "LABELNAME" (the field's
// label) and "TYPES" (the field's position in the test). The panels follow
// the fields' order; the note under the title lists each field's mean rank.
#include "backend/nonpar/RSHistogram.h"

#include <algorithm>

#include "host/chart/VarDataProcessor.h"
#include "host/chart/XDocument.h"

using Stats = NOPROutputStats;

namespace {

const std::string kSource = "graphSource";

} // namespace

RSHistogram::RSHistogram(FacSTDictionary* dictionary, NOPROutputStats* stats,
                         const Stats::HTRFriedmansTwoWayByRanks* test)
    : NOPRChartContext(dictionary, stats), fTest(test) {
    fTitle = Text("Related-Samples Friedman's Two-Way Analysis of Variance by Ranks");
}

RSHistogram::RSHistogram(FacSTDictionary* dictionary, NOPROutputStats* stats,
                         const Stats::HTRKendallsCoefficient* test)
    : NOPRChartContext(dictionary, stats), fTest(test) {
    fTitle = Text("Related-Samples Kendall's Coefficient of Concordance");
}

RSHistogram::~RSHistogram() = default;

bool RSHistogram::FrameSize(int samples, double& width, double& height) {
    if (samples <= 3) {
        return false;
    }
    width = std::min(samples * 0.5, 3.0);
    height = 1.2;
    return true;
}

bool RSHistogram::MakeChart(const std::string& suffix, bool appendSuffix) {
    if (!fTest || fTest->fVariables.empty()) {
        return false;
    }
    VarDataProcessor data;
    data.AddDataSource(kSource, 0);
    for (const char* name : {"COUNTS", "MEANS", "LABELNAME", "TYPES"}) {
        data.AddVariable(kSource, name, nullptr);
    }
    int row = 0;
    std::string order;
    std::string note;
    const std::string meanRank = TemplateText(Text("Mean Rank"));
    for (size_t i = 0; i < fTest->fVariables.size(); ++i) {
        const Stats::VariableInformation& field = fTest->fVariables[i];
        ChartString label = FieldLabel(field.fGroupIndex);
        if (label.empty()) {
            label.assignInteger(field.fGroupIndex);
        }
        if (i > 0) {
            order += ' ';
            note += "&#10;";
        }
        order += std::to_string(i);
        note += TemplateText(label);
        note += ": ";
        note += meanRank;
        note += " = ";
        note += FixedText(field.fMeanOfRank, 2);
        for (const std::vector<double>& numbers : field.fTable.fRows) {
            if (numbers.size() < 2) {
                continue;
            }
            data.SetVariableValue(kSource, "COUNTS", row, numbers[1]);
            data.SetVariableValue(kSource, "MEANS", row, numbers[0]);
            data.SetStringVariableValue(kSource, "LABELNAME", row, label);
            data.SetVariableValue(kSource, "TYPES", row, static_cast<double>(i));
            ++row;
        }
    }
    if (row == 0) {
        return false;
    }
    std::string text = XDocument::fetchTemplateFile("NPARRelatedSamplesHistogram.viztemplate");
    if (text.empty()) {
        return false;
    }
    ReplaceFirst(text, "xTitle", TemplateText(Text("Frequency")));
    ReplaceFirst(text, "yTitle0", TemplateText(Text("Rank")));
    ReplaceFirst(text, "yTitle1", TemplateText(Text("Rank")));
    ReplaceFirst(text, "subTitle", "");
    InsertBefore(text, "</labelFrame>", "<label id=\"subLabel\">" + note + "</label>");
    ReplaceFirst(text, "categoryOrder1", order);
    XDocument document(text);
    document.setEditor(2);
    document.setLanguage();
    double width = 0.0;
    double height = 0.0;
    const int samples =
        static_cast<int>(std::max(TestFields(fTest).size(), fTest->fVariables.size()));
    if (FrameSize(samples, width, height)) {
        const XGraph graph = document.getExternalGraph();
        graph.setOuterFrameWidth(width);
        graph.setOuterFrameHeight(height);
    }
    return Send(document, &data, suffix, appendSuffix, true);
}
