// One subcommand of a parsed command: its name and its keywords in command order.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/parser/ParamObj.h"

class SubComObj final {
public:
    explicit SubComObj(std::string name) : fName(std::move(name)) {}

    // The subcommand's name, in upper case.
    const std::string& getName() const { return fName; }
    // The keyword of that name (matched without regard to case), or null.
    const ParamObj* getParamObj(std::string_view name) const;
    const std::vector<ParamObj>& getParams() const { return fParams; }

    // Appends a keyword (the parser's side).
    ParamObj& AddParam(ParamObj param);

private:
    std::string fName;
    std::vector<ParamObj> fParams;
};
