// Loads the procedure module (a shared library) and obtains its procedure
// object through the exported factory, checking each step.
#pragma once

#include <memory>
#include <string>

class CFProcCustom;

class ModuleLoader final {
public:
    ModuleLoader() = default;
    ~ModuleLoader();
    ModuleLoader(const ModuleLoader&) = delete;
    ModuleLoader& operator=(const ModuleLoader&) = delete;

    // The module next to this program: NPTESTS_MODULE when set, else
    // ../lib/libnonpar.so relative to the executable.
    static std::string DefaultPath();

    // Opens the library and finds "GetCFProcCustom". False with Error() set
    // when the file cannot be loaded or lacks the symbol.
    bool Load(const std::string& path);
    // A new procedure object from the factory; null (with Error()) on failure.
    std::unique_ptr<CFProcCustom> Create();

    const std::string& Path() const { return fPath; }
    const std::string& Error() const { return fError; }

private:
    using Factory = CFProcCustom* (*)();
    void* fHandle = nullptr;
    Factory fFactory = nullptr;
    std::string fPath;
    std::string fError;
};
