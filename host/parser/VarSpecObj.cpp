// Checking the variables of one keyword.
#include "host/parser/VarSpecObj.h"

#include <algorithm>

#include "host/cf/CFErrorChannel.h"
#include "host/parser/CommandDescriptor.h"
#include "host/parser/ParamObj.h"
#include "host/parser/SubComObj.h"
#include "host/vexa/VEXA_DataSource.h"

VarSpecObj::VarSpecObj(const ParamObj* keyword, const SubComObj* subcommand,
                       const CommandDescriptor* descriptor, const VEXA_DataSource* dataSource,
                       bool numericOnly)
    : fKeyword(keyword ? keyword->getParamName() : std::string()),
      fSubCommand(subcommand ? subcommand->getName() : std::string()), fDataSource(dataSource),
      fNumericOnly(numericOnly) {
    const SubComDescriptor* subDesc =
        descriptor && subcommand ? descriptor->getSubComDesc(subcommand->getName()) : nullptr;
    const ParamDescriptor* paramDesc = subDesc ? subDesc->getParamDesc(fKeyword) : nullptr;
    if (paramDesc) {
        fRole = paramDesc->fRole;
    }
}

bool VarSpecObj::ValidateVariables(const std::vector<std::string>& names, int repeat) {
    fValid.clear();
    bool repeatFailed = false;
    std::vector<bool> seen(fDataSource ? static_cast<size_t>(fDataSource->GetVariableCount()) : 0);
    for (const std::string& name : names) {
        const int index = ValidateVariable(name); // appended when valid
        if (index < 0 || repeat == kRepeatKeep) {
            continue;
        }
        if (!seen[static_cast<size_t>(index)]) {
            seen[static_cast<size_t>(index)] = true;
            continue;
        }
        fValid.pop_back();
        const std::string text =
            "The variable " + name + " is named more than once on " + Where() + ".";
        if (repeat == kRepeatError) {
            repeatFailed = true;
            ReportError(text);
        } else if (repeat == kRepeatWarn && fReport) {
            CFErrorChannel::Warning(text);
        }
    }
    return !fValid.empty() && !repeatFailed;
}

int VarSpecObj::ValidateVariable(std::string_view name) {
    const int index = fDataSource ? fDataSource->FindVarIndex(name) : -1;
    if (index < 0) {
        ReportError("The variable " + std::string(name) + " named on " + Where() +
                    " is not in the data.");
        return -1;
    }
    if (fNumericOnly && !fDataSource->GetVariable(index)->IsNumeric()) {
        ReportError("The variable " + std::string(name) + " named on " + Where() +
                    " is a string variable; a numeric variable is expected.");
        return -1;
    }
    fValid.push_back(index);
    return index;
}

bool VarSpecObj::CheckCommonVars(const VarSpecObj& other) const {
    bool disjoint = true;
    for (int index : fValid) {
        if (std::find(other.fValid.begin(), other.fValid.end(), index) == other.fValid.end()) {
            continue;
        }
        disjoint = false;
        const VEXA_Variable* variable = fDataSource ? fDataSource->GetVariable(index) : nullptr;
        const std::string name = variable ? variable->GetName() : std::to_string(index);
        ReportError("The " + Role() + " " + name + " also appears in the " + other.Role() + ".");
    }
    return disjoint;
}

std::string VarSpecObj::Role() const {
    return fRole.empty() ? "variable list of " + Where() : fRole;
}

std::string VarSpecObj::Where() const {
    return fSubCommand.empty() ? fKeyword : fSubCommand + " " + fKeyword;
}

void VarSpecObj::ReportError(const std::string& text) const {
    if (fReport) {
        CFErrorChannel::Error(text);
    }
}
