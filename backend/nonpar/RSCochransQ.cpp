// Cochran's Q stacked bars. The test's table has one row per field (its row
// name is the field index) and one column per category (its column name is
// the category's text); each row is drawn as percentages of its total.
#include "backend/nonpar/RSCochransQ.h"

#include <charconv>

#include "host/chart/XUtility.h"

using Stats = NOPROutputStats;

RSCochransQ::RSCochransQ(FacSTDictionary* dictionary, NOPROutputStats* stats,
                         const Stats::HTRCochransQ* test)
    : NOPRStackedChart(dictionary, stats), fTest(test) {}

std::string RSCochransQ::GetTitleKey() {
    return Stats::AlgorithmTitle(Stats::kARCochransQ);
}

const NumericTableData* RSCochransQ::GetStackedTable(const std::string&, bool) {
    if (!fTest || fTest->fTable.fRows.empty()) {
        return nullptr;
    }
    fPercentages = RowPercentages(fTest->fTable);
    return &fPercentages;
}

ChartString RSCochransQ::GetRowLabel(int row) {
    const auto& names = fPercentages.fRowNames;
    if (row < 0 || static_cast<size_t>(row) >= names.size()) {
        return ChartString();
    }
    const std::string& name = names[static_cast<size_t>(row)];
    int index = -1;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), index);
    const int fields = fStats ? static_cast<int>(fStats->GetFieldInfos().size()) : 0;
    if (error == std::errc() && end == name.data() + name.size() && index >= 0 && index < fields) {
        const ChartString label = FieldLabel(index);
        if (!label.empty()) {
            return label;
        }
    }
    return XUtility::ChartStringFromLocalCodePage(name);
}

ChartString RSCochransQ::GetColumnLabel(int column) {
    const auto& names = fPercentages.fColumnNames;
    if (column < 0 || static_cast<size_t>(column) >= names.size()) {
        return ChartString();
    }
    return XUtility::ChartStringFromLocalCodePage(names[static_cast<size_t>(column)]);
}

void RSCochransQ::CustomizeTemplate(std::string& text) {
    if (text.size() >= 11) {
        ReplaceFirst(text, "LegendLabel", "");
    }
}
