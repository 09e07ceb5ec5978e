// The procedure module as the host sees it: a shared library that exports
// GetCFProcCustom under its plain name.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include "host/cf/CFProcCustom.h"

TEST(Module, ExportsFactoryByPlainName) {
    void* handle = dlopen(NPTESTS_MODULE_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    void* symbol = dlsym(handle, "GetCFProcCustom");
    ASSERT_NE(symbol, nullptr) << dlerror();
    auto factory = reinterpret_cast<CFProcCustom* (*)()>(symbol);
    CFProcCustom* procedure = factory();
    ASSERT_NE(procedure, nullptr);
    // Unreadable input ends the run with false, not a crash.
    std::vector<std::string> models;
    std::vector<CFSplitDocument> splits(1);
    splits[0].fResultDocument = "<notStatXML/>";
    EXPECT_FALSE(procedure->ProduceOutput(models, splits));
    EXPECT_TRUE(splits[0].WasRead());
    delete procedure;
    dlclose(handle);
}
