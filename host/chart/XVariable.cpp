// XVariable: bindings and formats written onto the `<variable>` element.
#include "host/chart/XVariable.h"

#include "host/chart/XUtility.h"
#include "host/vexa/VEXA_DataSource.h"

namespace {

const char* MeasureName(int measure) {
    switch (measure) {
    case VEXA_Variable::kContinuous:
        return "continuous";
    case VEXA_Variable::kCategorical:
        return "categorical";
    case VEXA_Variable::kOrdinal:
        return "ordinal";
    default:
        return "unknown";
    }
}

} // namespace

bool XVariable::setVexaVariable(const VEXA_Variable* variable) const {
    if (!fNode || !variable) {
        return false;
    }
    setAttribute("field", XUtility::ChartStringFromLocalCodePage(variable->GetName()).str());
    setAttribute("measure", MeasureName(variable->GetMeasure()));
    return setLabel(XUtility::ChartStringFromLocalCodePage(variable->GetPreferredLabel()));
}

ViZFormat XVariable::resetFormat() const {
    if (!fNode) {
        return {};
    }
    if (pugi::xml_node old = fNode.child("format")) {
        fNode.remove_child(old);
    }
    return ViZFormat(fNode.prepend_child("format"));
}

bool XVariable::setFormatBasedOnVexaVariable(const VEXA_Variable* variable) const {
    if (!fNode || !variable) {
        return false;
    }
    const VEXA_Format& format = variable->GetFormat();
    const ViZFormat out = resetFormat();
    struct DatePattern {
        int fType;
        const char* fKind;
        const char* fPattern;
    };
    static const DatePattern kDates[] = {
        {VEXA_Format::kDate, "date", "dd-MMM-yyyy"},
        {VEXA_Format::kAmericanDate, "date", "MM/dd/yyyy"},
        {VEXA_Format::kJulianDate, "date", "yyyyDDD"},
        {VEXA_Format::kMonthYear, "date", "MMM yyyy"},
        {VEXA_Format::kQuarterYear, "date", "q Q yyyy"},
        {VEXA_Format::kWeekYear, "date", "ww WK yyyy"},
        {VEXA_Format::kEuropeanDate, "date", "dd.MM.yyyy"},
        {VEXA_Format::kSortableDate, "date", "yyyy/MM/dd"},
        {VEXA_Format::kTime, "time", "hh:mm:ss"},
        {VEXA_Format::kDateTime, "datetime", "dd-MMM-yyyy hh:mm:ss"},
        {VEXA_Format::kDayTime, "time", "ddd hh:mm"},
        {VEXA_Format::kWeekday, "weekday", "EEEE"},
        {VEXA_Format::kMonth, "month", "MMMM"},
    };
    if (!variable->IsNumeric() || format.fType == VEXA_Format::kString) {
        return out.setType("string");
    }
    for (const DatePattern& date : kDates) {
        if (date.fType == format.fType) {
            out.setType(date.fKind);
            out.setPattern(date.fPattern);
            return out.setUnit(VEXA_Format::IsDateTime(format.fType) ? "days" : "seconds");
        }
    }
    out.setType(format.fType == VEXA_Format::kScientific ? "scientific" : "number");
    out.setDecimals(format.fDecimals);
    out.setGrouping(format.fType == VEXA_Format::kComma || format.fType == VEXA_Format::kDollar);
    if (format.fType == VEXA_Format::kDollar) {
        out.setPrefix("$");
    }
    if (format.fType == VEXA_Format::kPercent) {
        out.setSuffix("%");
    }
    return true;
}

bool XVariable::SetNumberFormat(int kind, bool grouping, const ChartString* prefix,
                                const ChartString* suffix) const {
    if (!fNode) {
        return false;
    }
    const int decimals = getFormat().node().attribute("decimals").as_int(2);
    const ViZFormat out = resetFormat();
    if (kind == kFixedNumber) {
        out.setType("number");
        out.setDecimals(decimals);
    } else {
        out.setType("general");
    }
    out.setGrouping(grouping);
    if (prefix) {
        out.setPrefix(*prefix);
    }
    if (suffix) {
        out.setSuffix(*suffix);
    }
    return true;
}

bool XVariable::SetFormatPrefix(const ChartString& prefix) const {
    if (!fNode) {
        return false;
    }
    ViZFormat format = getFormat();
    if (!format) {
        format = ViZFormat(fNode.prepend_child("format"));
        format.setType("general");
    }
    return format.setPrefix(prefix);
}
