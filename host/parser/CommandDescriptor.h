// The grammar of one command: its name, the title of its procedure and the
// subcommands it takes. The command parser reads commands against it, and
// procedures look up the descriptions of the keywords they read.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/parser/SubComDescriptor.h"

class CommandDescriptor final {
public:
    CommandDescriptor(std::string commandName, std::string procedureTitle,
                      std::vector<SubComDescriptor> subcommands);

    const std::string& getCommandName() const { return fCommandName; }
    const std::string& getProcedureTitle() const { return fProcedureTitle; }
    // The descriptor of a subcommand (matched without regard to case), or null.
    const SubComDescriptor* getSubComDesc(std::string_view name) const;
    const std::vector<SubComDescriptor>& getSubComs() const { return fSubComs; }
    // The subcommands' names separated by ", ", for messages.
    std::string ListSubComs() const;

private:
    std::string fCommandName;
    std::string fProcedureTitle;
    std::vector<SubComDescriptor> fSubComs;
};
