// Binomial stacked bars. The test's table has the observed row and the row
// named "Hypothesized", one column per category (success first); each row
// is drawn as percentages of its total. Categories are named by how the test
// defined success: the field's two values (condition parameters 1 and 2 hold
// their category positions), the listed categories (the same parameters hold
// the lists; a position past the field's categories stands for the next of
// the listed values outside them), or the two sides of the cut point
// (parameter 1), written with the field's format. The field's label titles the category axis; the
// legend of the categories has no title.
#include "backend/nonpar/Binomial.h"

#include "host/bp/BpCellText.h"
#include "host/chart/XUtility.h"
#include "host/vexa/VEXA_DataSource.h"
#include "host/xml/XMLText.h"

using Stats = NOPROutputStats;

Binomial::Binomial(FacSTDictionary* dictionary, NOPROutputStats* stats,
                   const Stats::HTOBinomial* test)
    : NOPRStackedChart(dictionary, stats), fTest(test) {
    const std::vector<int> fields = TestFields(test);
    fField = fields.empty() ? -1 : fields.front();
}

const NumericTableData* Binomial::GetStackedTable(const std::string&, bool) {
    if (!fTest || fTest->fTable.fRows.empty()) {
        return nullptr;
    }
    fPercentages = RowPercentages(fTest->fTable);
    return &fPercentages;
}

ChartString Binomial::GetRowLabel(int row) {
    const auto& names = fPercentages.fRowNames;
    const bool hypothesized =
        row >= 0 && static_cast<size_t>(row) < names.size() && names[row] == "Hypothesized";
    return Text(hypothesized ? "Hypothesized" : "E60564");
}

ChartString Binomial::GetColumnLabel(int column) {
    const std::string& key = fTest->fConditionKey;
    const auto& parameters = fTest->fConditionParameters;
    const size_t index = column == 0 ? 1 : 2;
    if (column < 0 || column > 1) {
        return ChartString();
    }
    if (key == "ABinaryTestVariableIsSpecified_O_Binomial_5" ||
        key == "CategoryListsAreSpecified_O_Binomial_5") {
        // Codes past the field's categories name the listed values outside
        // them, in order over both lists.
        const Stats::FieldInfoRecord* record = FieldRecord(fField);
        const int categories = record ? static_cast<int>(record->fValues.size()) : 0;
        const auto& outside = fTest->fValsNotInCategories;
        size_t taken = 0;
        ChartString text;
        for (size_t p = 1; p <= index && p < parameters.size(); ++p) {
            for (double value : parameters[p].fValues) {
                const int code = TruncateToInt(value);
                const bool isOutside = code >= categories && taken < outside.size();
                if (p < index) {
                    taken += isOutside ? 1 : 0;
                    continue;
                }
                if (!text.empty()) {
                    text.append(", ");
                }
                text.append(isOutside ? XUtility::ChartStringFromLocalCodePage(outside[taken++])
                                      : CategoryLabel(fField, code));
            }
        }
        return text;
    }
    ChartString text(column == 0 ? "<=" : ">");
    if (parameters.size() > 1 && !parameters[1].fValues.empty()) {
        const VEXA_Variable* variable = FieldVariable(fField);
        const double cut = parameters[1].fValues.front();
        text.append(variable ? ValueText(variable,
                                         NumericFormatCFToStat(cut, variable->GetFormat().fType),
                                         BpDataValue::kValue)
                             : ValueText(nullptr, cut));
    }
    return text;
}

void Binomial::CustomizeTemplate(std::string& text) {
    const VEXA_Variable* variable = FieldVariable(fField);
    const ChartString label =
        variable ? XUtility::ChartStringFromLocalCodePage(variable->GetPreferredLabel())
                 : ChartString();
    ReplaceFirst(text, "<axis dim=\"x\" variable=\"categories\"/>",
                 "<axis dim=\"x\" variable=\"categories\"><title><text>" + TemplateText(label) +
                     "</text></title></axis>");
    ReplaceFirst(text, "LegendLabel", "");
}
