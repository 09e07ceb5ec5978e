// The dump tree.
#include "host/cf/CFDump.h"

CFDump& CFDump::Set(std::string_view key, CFDump value) {
    fKind = kObject;
    fMembers.emplace_back(std::string(key), std::move(value));
    return fMembers.back().second;
}

CFDump& CFDump::Push(CFDump value) {
    fKind = kArray;
    fItems.push_back(std::move(value));
    return fItems.back();
}
