// The model as a dump tree (a debugging aid).
#include "backend/nonpar/NOPROutputStats.h"

#include "host/cf/CFDump.h"

CFDump NOPROutputStats::Dump() const {
    return CFDump::Object();
}
