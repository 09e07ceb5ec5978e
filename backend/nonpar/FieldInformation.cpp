// Field information charts. A field is drawn when its record carries a
// distribution binned by "Interval" and its kind (1 categorical, else
// continuous) is this chart's. The categorical chart draws the counts as
// they are and relabels the category values with their labels, unless the
// field is an ordinal field treated as continuous (its values then stand on a
// number axis). The continuous chart's note gives the mean (a date for a
// date field), the standard deviation (one decimal more than the field
// shows; days for a date field) and the total N.
#include "backend/nonpar/FieldInformation.h"

#include <algorithm>

#include "host/chart/XDocument.h"
#include "host/chart/XUtility.h"
#include "host/vexa/VEXA_DataSource.h"

using Stats = NOPROutputStats;

const Stats::FieldInfoRecord* FieldInformation::GetHistogramRecord() {
    const Stats::FieldInfoRecord* record = FieldRecord(fFieldIndex);
    if (!record || !record->fHasInfo || record->fBinning != "Interval" ||
        (record->fIsCategorical == 1) != fIsCategorical) {
        return nullptr;
    }
    fTitle =
        Text(fIsCategorical ? "Categorical Field Information" : "Continuous Field Information");
    return record;
}

void FieldInformation::CustomizeTemplate(std::string& text) {
    ReplaceFirst(text, "xAxisLabel", TemplateText(FieldLabel(fFieldIndex)));
    if (fIsCategorical) {
        ReplaceFirst(text, "<binStatistic/>", "");
        ReplaceFirst(text, "<summaryStatistic method=\"sum\"/>", "");
    }
    ReplaceFirst(text, "yAxisLabel", TemplateText(Text(fIsCategorical ? "E60352" : "Frequency")));
    ChartString legend;
    if (fIsCategorical) {
        legend = Text("TotalN");
        legend.append(" = ").appendInteger(fRecord->fTotal);
        ReplaceFirst(text, "labelText", TemplateText(legend));
        return;
    }
    const VEXA_Variable* variable = FieldVariable(fFieldIndex);
    const int decimals = variable ? variable->GetFormat().fDecimals : 2;
    std::string note;
    if (!CFIsSysmis(fRecord->fMean)) {
        note += TemplateText(Text("Mean")) + " = " +
                FieldValueText(fFieldIndex, fRecord->fMean, decimals + 1) + "&#10;";
    }
    if (!CFIsSysmis(fRecord->fStdDev)) {
        note += TemplateText(Text("Std. Deviation")) + " = " +
                FixedText(fRecord->fStdDev, decimals + 1) + "&#10;";
    }
    legend = Text("histoN");
    legend.append(" = ").appendInteger(fRecord->fTotal);
    ReplaceFirst(text, "labelText", note + TemplateText(legend));
}

void FieldInformation::CustomizeDocument(XDocument& document) {
    const XVariable value = document.getExternalGraph().getVariable("value", 0);
    const VEXA_Variable* variable = FieldVariable(fFieldIndex);
    value.setVexaVariable(variable);
    value.setFormatBasedOnVexaVariable(variable);
    if (!fIsCategorical) {
        return;
    }
    value.setCategorical(true);
    if (fRecord->fOrdinalAsContinuous) {
        return;
    }
    for (const Stats::FieldValueEntry& entry : fRecord->fValues) {
        if (entry.fLabel.empty()) {
            continue;
        }
        // A string field's distribution counts its categories by position.
        const double at = entry.fValue.IsString() ? entry.fIndex : entry.fValue.GetNumber();
        value.addRelabel(at, XUtility::ChartStringFromLocalCodePage(entry.fLabel));
    }
}
