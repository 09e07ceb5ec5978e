// The host's data source of a data set.
#include "engine/data/HostDataSource.h"

#include <algorithm>

#include "engine/data/Dataset.h"
#include "host/vexa/VEXA_DataSource.h"

std::unique_ptr<VEXA_DataSource> HostDataSource(const Dataset& data) {
    auto source = std::make_unique<VEXA_DataSource>();
    for (int i = 0; i < data.VariableCount(); ++i) {
        const Column& column = data.GetColumn(i);
        const Variable& variable = column.fVariable;
        int width = 0;
        if (variable.IsString()) {
            width = std::max(variable.fFormatWidth, 1);
            for (const std::string& text : column.fTexts) {
                width =
                    std::max(width, static_cast<int>(std::min<std::size_t>(text.size(), 32767)));
            }
        }
        VEXA_Variable& host = source->AddVariable(variable.fName, width);
        if (variable.fLabel != variable.fName) {
            host.SetLabel(variable.fLabel);
        }
        host.SetMeasure(variable.fLevel == MeasureLevel::kContinuous ? VEXA_Variable::kContinuous
                        : variable.fLevel == MeasureLevel::kOrdinal  ? VEXA_Variable::kOrdinal
                                                                     : VEXA_Variable::kCategorical);
        host.SetFormat(
            {variable.IsString() ? static_cast<int>(VEXA_Format::kString) : variable.fFormatType,
             variable.IsString() ? width : variable.fFormatWidth, variable.fFormatDecimals});
        for (const ValueLabel& label : variable.fValueLabels) {
            if (variable.IsString()) {
                host.ValueLabels().Add(label.fValue.fText, label.fLabel);
            } else {
                host.ValueLabels().Add(label.fValue.fNumber, label.fLabel);
            }
        }
    }
    return source;
}
