// What a command yields, as JSON.
#include "app/CommandCheck.h"

#include "app/DumpJson.h"
#include "host/cf/CFDump.h"
#include "host/cf/CFErrorChannel.h"
#include "host/cf/CFProcCustom.h"
#include "host/vexa/VEXA_DataSource.h"

nlohmann::ordered_json CommandCheckJson(bool result, const CFProcCustom& procedure,
                                        const VEXA_DataSource& dataSource,
                                        const std::vector<CFMessage>& messages) {
    nlohmann::ordered_json out = nlohmann::ordered_json::object();
    out["result"] = result;
    nlohmann::ordered_json variables = nlohmann::ordered_json::array();
    for (int index : procedure.fVariablesToRead) {
        const VEXA_Variable* variable = dataSource.GetVariable(index);
        variables.push_back({{"index", index},
                             {"name", variable ? nlohmann::ordered_json(variable->GetName())
                                               : nlohmann::ordered_json(nullptr)}});
    }
    out["variablesToRead"] = std::move(variables);
    out["settings"] = DumpToJson(procedure.DumpSettings());
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const CFMessage& message : messages) {
        list.push_back(
            {{"kind", message.fKind == CFMessage::kWarning ? "warning" : "error"},
             {"text", message.fText},
             {"document", message.fDocument.empty() ? nlohmann::ordered_json(nullptr)
                                                    : nlohmann::ordered_json(message.fDocument)}});
    }
    out["messages"] = std::move(list);
    return out;
}
