// Box plots. Data layout read from the box-plot information: a group's box
// table holds its five numbers in reading order (all rows, all columns);
// its outliers table holds one row per case: the value, then the case number.
// "Category" is the group's value of the grouping field; each group also
// gets its value label (or formatted value) as a relabel of "Category".
#include "backend/nonpar/Boxplot.h"

#include <cmath>
#include <map>

#include "host/chart/VarDataProcessor.h"
#include "host/chart/XDocument.h"
#include "host/chart/XUtility.h"

using Stats = NOPROutputStats;

namespace {

const std::string kSource = "boxplotSource";

} // namespace

Boxplot::Boxplot(FacSTDictionary* dictionary, NOPROutputStats* stats,
                 const Stats::BaseHypothesisTest* test, const Stats::BoxPlotInfo* boxPlot,
                 std::string_view titleKey)
    : NOPRChartContext(dictionary, stats), fTest(test), fBoxPlot(test ? boxPlot : nullptr) {
    fTitle = Text(titleKey);
}

Boxplot::~Boxplot() = default;

std::vector<Boxplot::BoxValue> Boxplot::BoxValues(const std::vector<double>& five,
                                                  const std::vector<Outlier>& outliers) {
    std::vector<BoxValue> out;
    if (five.size() < 5) {
        return out;
    }
    const double s0 = five[0], s1 = five[1], s2 = five[2], s3 = five[3], s4 = five[4];
    std::map<double, double> cases;
    std::vector<double> low;
    std::vector<double> high;
    for (const Outlier& outlier : outliers) {
        if (std::isnan(outlier.fValue)) {
            continue;
        }
        cases[outlier.fValue] = outlier.fCase;
        (outlier.fValue < s2 ? low : high).push_back(outlier.fValue);
    }
    low.push_back(s0);
    low.push_back(s1);
    for (size_t n = low.size(); n > 1; --n) {
        low.push_back(s1);
    }
    high.push_back(s4);
    high.push_back(s3);
    for (size_t m = high.size(); m > 1; --m) {
        high.push_back(s3);
    }
    while (low.size() != high.size()) {
        std::vector<double>& shorter = low.size() < high.size() ? low : high;
        shorter.push_back(shorter[shorter.size() / 2]);
    }
    low.push_back(s2);
    low.insert(low.end(), high.begin(), high.end());
    out.reserve(low.size());
    for (double value : low) {
        BoxValue entry;
        entry.fValue = value;
        if (!std::isnan(value)) {
            if (auto found = cases.find(value); found != cases.end()) {
                entry.fHasLabel = true;
                entry.fLabel = found->second;
            }
        }
        out.push_back(entry);
    }
    return out;
}

bool Boxplot::FillChartData(VarDataProcessor& data) {
    if (!fTest || !fBoxPlot) {
        return false;
    }
    const std::vector<int> fields = TestFields(fTest);
    if (fields.empty()) {
        return false;
    }
    fTestField = fields[0];
    fGroupField = fields.size() > 1 ? fields[1] : fBoxPlot->fGroupFieldIndex;
    if (fGroupField < 0 || fBoxPlot->fGroups.empty()) {
        return false;
    }
    data.AddDataSource(kSource, 0);
    for (const char* name : {"Value", "Label", "Category", "Tooltips"}) {
        data.AddVariable(kSource, name, nullptr);
    }
    int row = 0;
    for (const Stats::BoxPlotGroup& group : fBoxPlot->fGroups) {
        std::vector<double> five;
        for (const std::vector<double>& numbers : group.fBox.fRows) {
            five.insert(five.end(), numbers.begin(), numbers.end());
        }
        std::vector<Outlier> outliers;
        for (const std::vector<double>& numbers : group.fOutliers.fRows) {
            if (numbers.size() >= 2 && !CFIsSysmis(numbers[0])) {
                outliers.push_back({numbers[0], numbers[1]});
            }
        }
        const std::vector<BoxValue> values = BoxValues(five, outliers);
        const double category = CategoryValue(fGroupField, group.fGroupIndex);
        const std::string tooltip =
            ShowsMeanRank() ? FixedText(group.fMeanOfRank, 2) : std::string();
        for (const BoxValue& value : values) {
            data.SetVariableValue(kSource, "Value", row, value.fValue);
            if (value.fHasLabel) {
                data.SetVariableValue(kSource, "Label", row, value.fLabel);
            }
            data.SetVariableValue(kSource, "Category", row, category);
            if (!tooltip.empty()) {
                data.SetStringVariableValue(kSource, "Tooltips", row, tooltip);
            }
            if (row + 1 >= VarDataProcessor::kMaxRows) {
                return false;
            }
            ++row;
        }
    }
    return row > 0;
}

void Boxplot::CustomizeTemplate(std::string&) {}

void Boxplot::CustomizeDocument(XDocument&) {}

bool Boxplot::MakeChart(const std::string& suffix, bool appendSuffix) {
    if (!fTest || !fBoxPlot) {
        return false;
    }
    VarDataProcessor data;
    if (!FillChartData(data)) {
        return false;
    }
    std::string text = XDocument::fetchTemplateFile("NPARBoxplot.viztemplate");
    if (text.empty()) {
        return false;
    }
    const VEXA_Variable* testVariable = FieldVariable(fTestField);
    const VEXA_Variable* groupVariable = FieldVariable(fGroupField);
    if (testVariable) {
        ReplaceFirst(text, "yAxisText", TemplateText(FieldLabel(fTestField)));
    }
    if (groupVariable) {
        ReplaceFirst(text, "xAxisText", TemplateText(FieldLabel(fGroupField)));
    }
    CustomizeTemplate(text);
    XDocument document(text);
    document.setEditor(2);
    document.setLanguage();
    CustomizeDocument(document);
    const XGraph graph = document.getExternalGraph();
    const XVariable value = graph.getVariable("Value", 0);
    value.setVexaVariable(testVariable);
    value.setFormatBasedOnVexaVariable(testVariable);
    const XVariable category = graph.getVariable("Category", 0);
    category.setVexaVariable(groupVariable);
    category.setLabel(Text("E62935"));
    for (const Stats::BoxPlotGroup& group : fBoxPlot->fGroups) {
        category.addRelabel(CategoryValue(fGroupField, group.fGroupIndex),
                            CategoryLabel(fGroupField, group.fGroupIndex));
    }
    return Send(document, &data, suffix, appendSuffix, true);
}
