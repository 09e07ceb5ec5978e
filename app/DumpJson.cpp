// A dump tree as JSON.
#include "app/DumpJson.h"

#include <cmath>

#include "host/cf/CFDump.h"
#include "host/cf/CFSysmis.h"

nlohmann::ordered_json DumpToJson(const CFDump& dump) {
    switch (dump.GetKind()) {
    case CFDump::kObject: {
        nlohmann::ordered_json object = nlohmann::ordered_json::object();
        for (const auto& [key, value] : dump.Members()) {
            object[key] = DumpToJson(value);
        }
        return object;
    }
    case CFDump::kArray: {
        nlohmann::ordered_json array = nlohmann::ordered_json::array();
        for (const CFDump& item : dump.Items()) {
            array.push_back(DumpToJson(item));
        }
        return array;
    }
    case CFDump::kScalar:
        break;
    }
    return std::visit(
        [](const auto& value) -> nlohmann::ordered_json {
            using T = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<T, double>) {
                // The system-missing value and non-finite numbers have no
                // JSON number; show them as null.
                if (CFIsSysmis(value) || !std::isfinite(value)) {
                    return nullptr;
                }
            }
            return value;
        },
        dump.GetScalar());
}
