// Assertion reporting of the host.
#include "host/cf/CFAssert.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace {
std::atomic<CFAssertHandler> gHandler{nullptr};
}

CFAssertionFailure::CFAssertionFailure(std::string expression, std::string source, int line)
    : std::logic_error("Assertion failed: " + expression + ", file " + source + ", line " +
                       std::to_string(line)),
      fExpression(std::move(expression)), fSource(std::move(source)), fLine(line) {}

CFAssertHandler CFSetAssertHandler(CFAssertHandler handler) {
    return gHandler.exchange(handler);
}

void CFThrowingAssertHandler(const char* expression, const char* source, int line) {
    throw CFAssertionFailure(expression, source, line);
}

void CFAssertFailed(const char* expression, const char* source, int line) {
    if (CFAssertHandler handler = gHandler.load()) {
        handler(expression, source, line);
    }
    std::fprintf(stderr, "Assertion failed: %s, file %s, line %d\n", expression, source, line);
    std::fflush(stderr);
    std::abort();
}
