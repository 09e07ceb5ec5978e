// One subcommand of a parsed command.
#include "host/parser/SubComObj.h"

#include "host/parser/ParserText.h"

const ParamObj* SubComObj::getParamObj(std::string_view name) const {
    for (const ParamObj& param : fParams) {
        if (EqualNoCase(param.getParamName(), name)) {
            return &param;
        }
    }
    return nullptr;
}

ParamObj& SubComObj::AddParam(ParamObj param) {
    fParams.push_back(std::move(param));
    return fParams.back();
}
