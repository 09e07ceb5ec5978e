// A parsed command: its name, its text as written and its subcommands in
// command order. The command parser builds it; a procedure's ReadCommand
// reads it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/parser/SubComObj.h"

class CommandSpec final {
public:
    CommandSpec(std::string commandName, std::string text)
        : fCommandName(std::move(commandName)), fText(std::move(text)) {}

    const std::string& getCommandName() const { return fCommandName; }
    // The command as the user wrote it.
    const std::string& getText() const { return fText; }
    // The subcommand of that name (matched without regard to case), or null when absent.
    const SubComObj* getSubComObj(std::string_view name) const;
    const std::vector<SubComObj>& getSubComs() const { return fSubComs; }

    // Appends a subcommand (the parser's side).
    SubComObj& AddSubCom(SubComObj subcommand);

private:
    std::string fCommandName;
    std::string fText;
    std::vector<SubComObj> fSubComs;
};
