// A dump tree as JSON.
#pragma once

#include <nlohmann/json.hpp>

class CFDump;

nlohmann::ordered_json DumpToJson(const CFDump& dump);
