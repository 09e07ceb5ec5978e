// The field dictionary.
#include "host/cf/CFMetaData.h"

#include "host/cf/CFSysmis.h"
#include "host/vexa/VEXA_DataSource.h"

#include <cmath>

double NumericFormatCFToStat(double value, int formatType) {
    if (CFIsSysmis(value) || !VEXA_Format::IsDateTime(formatType)) {
        return value;
    }
    return value * 86400.0;
}

void CFStatVariableValue::SetCompleteValue(const CFDatum& datum, const VEXA_Variable* variable) {
    if (datum.IsString()) {
        fIsString = true;
        fText = datum.GetString();
        fNumber = 0.0;
        return;
    }
    fIsString = false;
    fText.clear();
    fNumber = variable ? NumericFormatCFToStat(datum.GetNumber(), variable->GetFormat().fType)
                       : datum.GetNumber();
}
