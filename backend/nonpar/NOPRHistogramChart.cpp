// Field histograms. Distribution table layout: one row per bin (continuous
// fields: the bin's value and its count, binned again by the chart) or per
// category (categorical fields: the category's value and its count).
#include "backend/nonpar/NOPRHistogramChart.h"

#include "host/chart/VarDataProcessor.h"
#include "host/chart/XDocument.h"

using Stats = NOPROutputStats;

namespace {

const std::string kSource = "graphSource";

} // namespace

NOPRHistogramChart::NOPRHistogramChart(FacSTDictionary* dictionary, NOPROutputStats* stats,
                                       const Stats::BaseHypothesisTest* test, bool needsTest)
    : NOPRChartContext(dictionary, stats), fTest(test), fNeedsTest(needsTest) {}

NOPRHistogramChart::~NOPRHistogramChart() = default;

const Stats::FieldInfoRecord* NOPRHistogramChart::GetHistogramRecord() {
    const Stats::FieldInfoRecord* record = FieldRecord(fFieldIndex);
    if (!record) {
        return nullptr;
    }
    if (record->fIsCategorical == 0 || (record->fIsCategorical == 1 && record->fHasInfo)) {
        return record;
    }
    return nullptr;
}

bool NOPRHistogramChart::FillChartData(VarDataProcessor& data) {
    if (!fRecord) {
        return false;
    }
    data.AddDataSource(kSource, 0);
    data.AddVariable(kSource, "value", nullptr);
    data.AddVariable(kSource, "count", nullptr);
    int row = 0;
    for (const std::vector<double>& numbers : fRecord->fDistribution.fRows) {
        if (numbers.size() < 2 || row + 1 >= VarDataProcessor::kMaxRows) {
            continue;
        }
        data.SetVariableValue(kSource, "value", row, numbers[0]);
        data.SetVariableValue(kSource, "count", row, numbers[1]);
        ++row;
    }
    return row > 0;
}

void NOPRHistogramChart::CustomizeTemplate(std::string&) {}

void NOPRHistogramChart::CustomizeDocument(XDocument&) {}

bool NOPRHistogramChart::MakeChart(const std::string& suffix, bool appendSuffix) {
    if (fNeedsTest && !fTest) {
        return false;
    }
    fRecord = GetHistogramRecord();
    if (!fRecord) {
        return false;
    }
    VarDataProcessor data;
    if (!FillChartData(data)) {
        return false;
    }
    std::string text = XDocument::fetchTemplateFile("NPARHistogram.viztemplate");
    if (text.empty()) {
        return false;
    }
    CustomizeTemplate(text);
    XDocument document(text);
    document.setEditor(2);
    document.setLanguage();
    SetTitles(document.getExternalGraph(), suffix);
    CustomizeDocument(document);
    return Send(document, &data, suffix, appendSuffix, true);
}
