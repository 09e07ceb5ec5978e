// Loading the procedure module with dlopen.
#include "app/ModuleLoader.h"

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>

#include "host/cf/CFProcCustom.h"

ModuleLoader::~ModuleLoader() {
    if (fHandle) {
        dlclose(fHandle);
    }
}

std::string ModuleLoader::DefaultPath() {
    if (const char* env = std::getenv("NPTESTS_MODULE"); env && *env) {
        return env;
    }
    std::error_code ec;
    std::filesystem::path exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (ec) {
        return "libnonpar.so";
    }
    return (exe.parent_path().parent_path() / "lib" / "libnonpar.so").string();
}

bool ModuleLoader::Load(const std::string& path) {
    fPath = path;
    dlerror();
    fHandle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!fHandle) {
        const char* why = dlerror();
        fError = "cannot load the procedure module " + path + ": " + (why ? why : "unknown error");
        return false;
    }
    dlerror();
    void* symbol = dlsym(fHandle, "GetCFProcCustom");
    if (const char* why = dlerror(); why || !symbol) {
        fError = "the procedure module " + path + " does not export GetCFProcCustom" +
                 (why ? std::string(": ") + why : std::string());
        return false;
    }
    fFactory = reinterpret_cast<Factory>(symbol);
    return true;
}

std::unique_ptr<CFProcCustom> ModuleLoader::Create() {
    if (!fFactory) {
        fError = "no procedure module loaded";
        return nullptr;
    }
    std::unique_ptr<CFProcCustom> procedure(fFactory());
    if (!procedure) {
        fError = "GetCFProcCustom of " + fPath + " returned no procedure object";
    }
    return procedure;
}
