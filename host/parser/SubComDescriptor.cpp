// The grammar of one subcommand.
#include "host/parser/SubComDescriptor.h"

#include "host/parser/ParserText.h"

SubComDescriptor::SubComDescriptor(std::string name, std::vector<ParamDescriptor> params)
    : fName(ToUpper(name)), fParams(std::move(params)) {}

const ParamDescriptor* SubComDescriptor::getParamDesc(std::string_view name) const {
    for (const ParamDescriptor& param : fParams) {
        if (EqualNoCase(param.fName, name)) {
            return &param;
        }
    }
    return nullptr;
}

std::string SubComDescriptor::ListParams() const {
    std::string text;
    for (const ParamDescriptor& param : fParams) {
        text += (text.empty() ? "" : ", ") + param.fName;
    }
    return text;
}
