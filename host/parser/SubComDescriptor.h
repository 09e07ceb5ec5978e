// The grammar of one subcommand: its name and the keywords it takes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/parser/ParamDescriptor.h"

class SubComDescriptor final {
public:
    SubComDescriptor(std::string name, std::vector<ParamDescriptor> params);

    const std::string& getName() const { return fName; }
    // The descriptor of a keyword (matched without regard to case), or null.
    const ParamDescriptor* getParamDesc(std::string_view name) const;
    const std::vector<ParamDescriptor>& getParams() const { return fParams; }
    // The keywords' names separated by ", ", for messages.
    std::string ListParams() const;

private:
    std::string fName;
    std::vector<ParamDescriptor> fParams;
};
