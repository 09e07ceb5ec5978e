// Field histograms, read as host/cf/CFTableLayout.h lays the distribution
// table out: one row per bin (continuous fields: the bin's midpoint and its
// count, drawn as the bins they are) or per category (categorical fields:
// the category's position and its count; "value" gets the category's value,
// so that the field's format and value labels name it).
#include "backend/nonpar/NOPRHistogramChart.h"

#include <algorithm>

#include "host/cf/CFTableLayout.h"
#include "host/chart/VarDataProcessor.h"
#include "host/chart/XDocument.h"
#include "host/xml/XMLText.h"

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
    const NumericTableData& table = fRecord->fDistribution;
    const bool categorical = fRecord->fIsCategorical == 1;
    using namespace CFTableLayout;
    const size_t valueColumn =
        categorical ? IndexOfName(table.fColumnNames, kCategoryColumnName, kCategoryColumn)
                    : IndexOfName(table.fColumnNames, kBinValueColumnName, kBinValueColumn);
    const size_t countColumn =
        categorical
            ? IndexOfName(table.fColumnNames, kCategoryCountColumnName, kCategoryCountColumn)
            : IndexOfName(table.fColumnNames, kBinCountColumnName, kBinCountColumn);
    int row = 0;
    for (const std::vector<double>& numbers : table.fRows) {
        if (numbers.size() <= std::max(valueColumn, countColumn) ||
            row + 1 >= VarDataProcessor::kMaxRows) {
            continue;
        }
        const double value = numbers[valueColumn];
        data.SetVariableValue(kSource, "value", row,
                              categorical && !CFIsSysmis(value)
                                  ? CategoryValue(fFieldIndex, TruncateToInt(value))
                                  : value);
        data.SetVariableValue(kSource, "count", row, numbers[countColumn]);
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
