// The host's data dictionary.
#include "host/vexa/VEXA_DataSource.h"

#include <algorithm>
#include <cctype>

bool VEXA_Format::IsDateTime(int type) {
    switch (type) {
    case 20:
    case 23:
    case 24:
    case 28:
    case 29:
    case 30:
    case 38:
    case 39:
        return true;
    default:
        return false;
    }
}

const std::string* VEXA_ValueLabelMap::Find(double value) const {
    auto it = fNumeric.find(value);
    return it == fNumeric.end() ? nullptr : &it->second;
}

const std::string* VEXA_ValueLabelMap::Find(std::string_view value) const {
    // String values compare without their trailing blanks.
    while (!value.empty() && value.back() == ' ') {
        value.remove_suffix(1);
    }
    auto it = fString.find(value);
    return it == fString.end() ? nullptr : &it->second;
}

VEXA_Variable& VEXA_DataSource::AddVariable(std::string name, int type) {
    fVariables.push_back(std::make_unique<VEXA_Variable>(std::move(name), type));
    return *fVariables.back();
}

int VEXA_DataSource::FindVarIndex(std::string_view name, int start) const {
    auto sameName = [&](const std::string& other) {
        return other.size() == name.size() &&
               std::equal(other.begin(), other.end(), name.begin(), [](char a, char b) {
                   return std::tolower(static_cast<unsigned char>(a)) ==
                          std::tolower(static_cast<unsigned char>(b));
               });
    };
    for (int i = std::max(start, 0); i < GetVariableCount(); ++i) {
        if (sameName(fVariables[static_cast<size_t>(i)]->GetName())) {
            return i;
        }
    }
    return -1;
}

VEXA_Variable* VEXA_DataSource::GetVariable(int index) const {
    if (index < 0 || index >= GetVariableCount()) {
        return nullptr;
    }
    return fVariables[static_cast<size_t>(index)].get();
}
