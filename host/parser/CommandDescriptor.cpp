// The grammar of one command.
#include "host/parser/CommandDescriptor.h"

#include "host/parser/ParserText.h"

CommandDescriptor::CommandDescriptor(std::string commandName, std::string procedureTitle,
                                     std::vector<SubComDescriptor> subcommands)
    : fCommandName(ToUpper(commandName)), fProcedureTitle(std::move(procedureTitle)),
      fSubComs(std::move(subcommands)) {}

const SubComDescriptor* CommandDescriptor::getSubComDesc(std::string_view name) const {
    for (const SubComDescriptor& subcommand : fSubComs) {
        if (EqualNoCase(subcommand.getName(), name)) {
            return &subcommand;
        }
    }
    return nullptr;
}

std::string CommandDescriptor::ListSubComs() const {
    std::string text;
    for (const SubComDescriptor& subcommand : fSubComs) {
        text += (text.empty() ? "" : ", ") + subcommand.getName();
    }
    return text;
}
