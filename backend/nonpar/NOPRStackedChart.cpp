// The stacked sequence. "graphSource" holds one row per positive cell:
// "categories" (the row's text), "type" (the column's text), "value" and
// "tooltip" (every column of the row, one line each, value with one decimal
// and "%").
#include "backend/nonpar/NOPRStackedChart.h"

#include <algorithm>
#include <cmath>

#include "host/chart/VarDataProcessor.h"
#include "host/chart/XDocument.h"
#include "host/chart/XUtility.h"

namespace {

const std::string kSource = "graphSource";

} // namespace

NOPRStackedChart::~NOPRStackedChart() = default;

void NOPRStackedChart::CustomizeTemplate(std::string&) {}

void NOPRStackedChart::CustomizeDocument(XDocument&) {}

NumericTableData NOPRStackedChart::RowPercentages(const NumericTableData& table) {
    NumericTableData out = table;
    for (std::vector<double>& row : out.fRows) {
        double total = 0.0;
        for (double value : row) {
            if (!CFIsSysmis(value) && std::isfinite(value) && value > 0.0) {
                total += value;
            }
        }
        for (double& value : row) {
            value = total > 0.0 && !CFIsSysmis(value) ? 100.0 * value / total : 0.0;
        }
    }
    return out;
}

bool NOPRStackedChart::MakeStackedChart(const std::string& suffix, bool appendSuffix) {
    const NumericTableData* table = GetStackedTable(suffix, appendSuffix);
    if (!table) {
        return false;
    }
    VarDataProcessor data;
    data.AddDataSource(kSource, 0);
    for (const char* name : {"categories", "type", "value", "tooltip"}) {
        data.AddVariable(kSource, name, nullptr);
    }
    int row = 0;
    for (size_t r = 0; r < table->fRows.size(); ++r) {
        const std::vector<double>& values = table->fRows[r];
        ChartString tooltip;
        for (size_t c = 0; c < values.size(); ++c) {
            tooltip.append(GetColumnLabel(static_cast<int>(c)));
            tooltip.append(" ").append(FixedText(values[c], 1)).append("%\n");
        }
        const ChartString rowLabel = GetRowLabel(static_cast<int>(r));
        for (size_t c = 0; c < values.size(); ++c) {
            if (!(values[c] > 0.0) || CFIsSysmis(values[c])) {
                continue;
            }
            data.SetStringVariableValue(kSource, "categories", row, rowLabel);
            data.SetStringVariableValue(kSource, "type", row, GetColumnLabel(static_cast<int>(c)));
            data.SetVariableValue(kSource, "value", row, values[c]);
            data.SetStringVariableValue(kSource, "tooltip", row, tooltip);
            ++row;
        }
    }
    std::string text = XDocument::fetchTemplateFile("NPARStackedBar.viztemplate");
    if (text.empty()) {
        return false;
    }
    ReplaceFirst(text, "yAxisLabel", TemplateText(Text("E60703")));
    CustomizeTemplate(text);
    XDocument document(text);
    document.setEditor(2);
    document.setLanguage();
    fTitle = XUtility::ChartStringFromOLANG(LookUp(GetTitleKey()));
    SetTitles(document.getExternalGraph(), suffix);
    document.SetDescription(Description(fTitle, suffix, appendSuffix));
    document.SetChartData(&data);
    CustomizeDocument(document);
    return document.SendChart(true, false, false);
}
