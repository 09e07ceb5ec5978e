// Independent-samples histograms. Each group record's table holds one row
// per bin: the bin's mid value and its count. "graphSource" gets one row per
// bin and group: "COUNTS", "MEANS" (the mid value), "LABELNAME" (the group's
// category text) and "TYPES" (the group's position, 0 or 1, in the record's
// order). Only the first two groups are drawn.
#include "backend/nonpar/ISHistogram.h"

#include "host/chart/VarDataProcessor.h"
#include "host/chart/XDocument.h"

using Stats = NOPROutputStats;

namespace {

const std::string kSource = "graphSource";

} // namespace

ISHistogram::ISHistogram(FacSTDictionary* dictionary, NOPROutputStats* stats,
                         const Stats::HTIMannWhitneyU* test)
    : NOPRChartContext(dictionary, stats), fTest(test), fForm(kMannWhitney) {
    fTitle = Text("Independent-Samples Mann-Whitney U Test");
}

ISHistogram::ISHistogram(FacSTDictionary* dictionary, NOPROutputStats* stats,
                         const Stats::HTIWaldWolfowitzRuns* test)
    : NOPRChartContext(dictionary, stats), fTest(test), fForm(kWaldWolfowitz) {
    fTitle = Text("Independent-Samples Wald-Wolfowitz Runs Test");
}

ISHistogram::ISHistogram(FacSTDictionary* dictionary, NOPROutputStats* stats,
                         const Stats::HTIKolmogorovSmirnov* test)
    : NOPRChartContext(dictionary, stats), fTest(test), fForm(kKolmogorovSmirnov) {
    fTitle = Text("Independent-Samples Kolmogorov-Smirnov Test");
}

ISHistogram::~ISHistogram() = default;

bool ISHistogram::MakeChart(const std::string& suffix, bool appendSuffix) {
    if (!fTest || fTest->fGroups.size() < 2) {
        return false;
    }
    const std::vector<int> fields = TestFields(fTest);
    const int testField = fields.empty() ? -1 : fields[0];
    const int groupField = fields.size() > 1 ? fields[1] : -1;
    VarDataProcessor data;
    data.AddDataSource(kSource, 0);
    for (const char* name : {"COUNTS", "MEANS", "LABELNAME", "TYPES"}) {
        data.AddVariable(kSource, name, nullptr);
    }
    ChartString labels[2];
    int row = 0;
    for (int g = 0; g < 2; ++g) {
        const Stats::GroupRecord& group = fTest->fGroups[static_cast<size_t>(g)];
        labels[g] = CategoryLabel(groupField, group.fGroupIndex);
        for (const std::vector<double>& numbers : group.fTable.fRows) {
            if (numbers.size() < 2) {
                continue;
            }
            data.SetVariableValue(kSource, "COUNTS", row, numbers[1]);
            data.SetVariableValue(kSource, "MEANS", row, numbers[0]);
            data.SetStringVariableValue(kSource, "LABELNAME", row, labels[g]);
            data.SetVariableValue(kSource, "TYPES", row, g);
            ++row;
        }
    }
    if (row == 0) {
        return false;
    }
    std::string text = XDocument::fetchTemplateFile(
        fForm == kKolmogorovSmirnov ? "NPARKolmogorovSmirnov.viztemplate"
                                    : "NPARRelatedSamplesHistogram.viztemplate");
    if (text.empty()) {
        return false;
    }
    ReplaceFirst(text, "xTitle", TemplateText(Text("Frequency")));
    ReplaceFirst(text, "subTitle", TemplateText(FieldLabel(groupField)));
    ReplaceFirst(text, "yTitle0", TemplateText(labels[0]));
    ReplaceFirst(text, "yTitle1", TemplateText(labels[1]));
    if (fForm != kKolmogorovSmirnov) {
        size_t at = text.find("alternating=");
        if (at != std::string::npos && at + 13 + 5 <= text.size()) {
            text.replace(at + 13, 5, "true");
            const size_t x = text.find('x', at + 13);
            if (x != std::string::npos) {
                text[x] = 'y';
            }
        }
        at = text.find("invert=\"");
        if (at != std::string::npos && at + 8 + 4 <= text.size()) {
            text.replace(at + 8, 4, "false");
        }
        at = text.find("3%");
        if (at != std::string::npos) {
            text.replace(at, 1, "18");
        }
    }
    XDocument document(text);
    document.setEditor(2);
    document.setLanguage();
    const XVariable means = document.getExternalGraph().getVariable("MEANS", 0);
    const VEXA_Variable* variable = FieldVariable(testField);
    means.setVexaVariable(variable);
    means.setFormatBasedOnVexaVariable(variable);
    return Send(document, &data, suffix, appendSuffix, true);
}
