// The string dictionary (placeholder until the string tables are read).
#include "host/fac/FacSTDictionary.h"

FacSTDictionary::FacSTDictionary(const PathFactory& paths) : fFolder(paths.getPath()) {}
FacSTDictionary::FacSTDictionary(std::string folder) : fFolder(std::move(folder)) {}
bool FacSTDictionary::SetProcedure(std::string_view) {
    return false;
}
std::string FacSTDictionary::LookUp(std::string_view key) const {
    return std::string(key);
}
bool FacSTDictionary::Has(std::string_view) const {
    return false;
}

const PathFactory& PathFactory::getPathInstance(int) {
    static const PathFactory paths(NPTESTS_RESOURCE_DIR);
    return paths;
}
