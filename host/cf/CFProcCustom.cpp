// The host's custom-procedure base class.
#include "host/cf/CFProcCustom.h"

#include <random>

#include "host/cf/CFDump.h"

CFProcCustom::~CFProcCustom() = default;

bool CFProcCustom::ReadCommand(CommandSpec*, CommandDescriptor*) {
    return true;
}

bool CFProcCustom::ProduceOutput(std::vector<std::string>&, std::vector<CFSplitDocument>&) {
    return false;
}

bool CFProcCustom::ProduceSplitOutput(std::string&, CFSplitDocument&) {
    return false;
}

void CFProcCustom::SetStatJSON(const std::vector<std::string>& json) {
    fStatJSON = json;
}

bool CFProcCustom::ProcessOutputJSON() {
    return true;
}

CFDump CFProcCustom::DumpSettings() const {
    CFDump settings = CFDump::Object();
    settings.Set("seed", static_cast<int>(fSeed));
    settings.Set("seedFromHost", fSeedFromHost);
    return settings;
}

int CFProcCustom::GetNextSeed() {
    static thread_local std::mt19937 generator{std::random_device{}()};
    std::uniform_int_distribution<int> seeds(1, 2000000000);
    return seeds(generator);
}
