// A parsed command.
#include "host/parser/ParsedCommand.h"

#include "host/parser/ParserText.h"

const SubComObj* CommandSpec::getSubComObj(std::string_view name) const {
    for (const SubComObj& subcommand : fSubComs) {
        if (EqualNoCase(subcommand.getName(), name)) {
            return &subcommand;
        }
    }
    return nullptr;
}

SubComObj& CommandSpec::AddSubCom(SubComObj subcommand) {
    fSubComs.push_back(std::move(subcommand));
    return fSubComs.back();
}
