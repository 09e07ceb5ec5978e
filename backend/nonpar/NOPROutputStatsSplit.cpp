// The split of a result model as the charts name it.
#include "backend/nonpar/NOPROutputStats.h"

#include <charconv>

#include "host/cf/CFProcCustom.h"
#include "host/vexa/VEXA_DataSource.h"

namespace {
// A split value as text: its value label, else the shortest form of the number.
std::string SplitValueText(const VEXA_Variable& variable, double value) {
    if (const std::string* label = variable.GetValueLabels().Find(value)) {
        return *label;
    }
    if (CFIsSysmis(value)) {
        return ".";
    }
    char buffer[32];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return ec == std::errc() ? std::string(buffer, end) : std::string();
}
} // namespace

void NOPROutputStats::GetSplitViewTitle(std::string& suffix, bool& appendSuffix) const {
    suffix.clear();
    appendSuffix = false;
    if (!fDataSource || !fSplit) {
        return;
    }
    for (std::size_t k = 0; k < fSplit->fSplitVariables.size(); ++k) {
        const VEXA_Variable* variable = fDataSource->GetVariable(fSplit->fSplitVariables[k]);
        if (!variable) {
            continue;
        }
        const double value = k < fSplit->fSplitValues.size() ? fSplit->fSplitValues[k] : kCFSysmis;
        if (!suffix.empty()) {
            suffix += ", ";
        }
        suffix += variable->GetPreferredLabel();
        suffix += " = ";
        suffix += SplitValueText(*variable, value);
    }
    appendSuffix = !suffix.empty();
}
