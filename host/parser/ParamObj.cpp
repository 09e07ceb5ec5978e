// One keyword or qualifier of a parsed command.
#include "host/parser/ParamObj.h"

#include "host/parser/ParamDescriptor.h"
#include "host/parser/ParserText.h"
#include "host/xml/XMLText.h"

int ParamObj::getIntegerValue() const {
    return fValueKind == kNumber ? TruncateToInt(fNumber) : 0;
}

bool ParamObj::getVarList(std::vector<std::string>& names) const {
    names.clear();
    if (fValueKind != kVarList) {
        return false;
    }
    names = fVars;
    return true;
}

std::string ParamObj::getVarName() const {
    return fValueKind == kVarList && !fVars.empty() ? fVars.front() : std::string();
}

bool ParamObj::getStringQualList(const ParamDescriptor* desc,
                                 std::vector<const ParamObj*>& list) const {
    list.clear();
    if (fValueKind == kNone) {
        return true;
    }
    if (fValueKind != kQualifiers) {
        return false;
    }
    if (desc && desc->fSingle && fQualifiers.size() > 1) {
        return false;
    }
    for (const ParamObj& qualifier : fQualifiers) {
        if (desc && (!desc->getParamDesc(qualifier.fName) ||
                     getParamObj(qualifier.fName, list) != nullptr)) {
            list.clear();
            return false;
        }
        list.push_back(&qualifier);
    }
    return true;
}

const ParamObj* ParamObj::getParamObj(std::string_view name,
                                      const std::vector<const ParamObj*>& list) const {
    for (const ParamObj* qualifier : list) {
        if (qualifier && EqualNoCase(qualifier->fName, name)) {
            return qualifier;
        }
    }
    return nullptr;
}

bool ParamObj::getStringAndQual(std::string& text, const ParamObj*& qualifier) const {
    text.clear();
    qualifier = nullptr;
    switch (fValueKind) {
    case kNone:
        return true;
    case kText:
    case kRaw:
        text = fText;
        return true;
    case kQualifiers:
        if (!fQualifiers.empty()) {
            qualifier = &fQualifiers.front();
            text = qualifier->fName;
        }
        return true;
    case kNumber:
    case kVarList:
    case kValueList:
        break;
    }
    return false;
}

void ParamObj::SetNumber(double value) {
    fValueKind = kNumber;
    fNumber = value;
}

void ParamObj::SetText(std::string text) {
    fValueKind = kText;
    fText = std::move(text);
}

void ParamObj::SetRaw(std::string text) {
    fValueKind = kRaw;
    fText = std::move(text);
}

void ParamObj::SetVarList(std::vector<std::string> names) {
    fValueKind = kVarList;
    fVars = std::move(names);
}

void ParamObj::SetValueList(std::vector<ListValue> values) {
    fValueKind = kValueList;
    fValues = std::move(values);
}

ParamObj& ParamObj::AddQualifier(ParamObj qualifier) {
    fValueKind = kQualifiers;
    fQualifiers.push_back(std::move(qualifier));
    return fQualifiers.back();
}
