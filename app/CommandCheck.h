// What a command yields, as JSON (nptests --check-command): whether the
// procedure accepted it, the variables the engine must read, the settings
// and the messages raised while reading it.
#pragma once

#include <vector>

#include <nlohmann/json.hpp>

class CFProcCustom;
class VEXA_DataSource;
struct CFMessage;

//   {"result": true,
//    "variablesToRead": [{"index": 0, "name": "score"}, ...],   // ascending
//    "settings": {"normalFromSample": false, ..., "seed": 2000000, "seedFromHost": false},
//    "messages": [{"kind": "warning", "text": "..."}, ...]}
nlohmann::ordered_json CommandCheckJson(bool result, const CFProcCustom& procedure,
                                        const VEXA_DataSource& dataSource,
                                        const std::vector<CFMessage>& messages);
