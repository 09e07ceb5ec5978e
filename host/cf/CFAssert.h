// Assertions of the host: a programming error reports the failed expression,
// the source and the line, then stops the process.
#pragma once

#include <stdexcept>
#include <string>

// Raised instead of aborting while a handler that throws is installed (the
// fuzzer and the tests use it to observe an assertion without dying).
class CFAssertionFailure final : public std::logic_error {
public:
    CFAssertionFailure(std::string expression, std::string source, int line);
    const std::string fExpression;
    const std::string fSource;
    const int fLine;
};

// What happens on a failed assertion. The default prints
// "Assertion failed: EXPR, file SOURCE, line N" to standard error and aborts.
using CFAssertHandler = void (*)(const char* expression, const char* source, int line);

// Installs a handler and returns the previous one; null restores the default.
CFAssertHandler CFSetAssertHandler(CFAssertHandler handler);

// A handler that throws CFAssertionFailure.
void CFThrowingAssertHandler(const char* expression, const char* source, int line);

[[noreturn]] void CFAssertFailed(const char* expression, const char* source, int line);

// CF_ASSERT(expr) reports the expression as written; CF_ASSERT_TEXT reports the
// given text. Each source defines CF_ASSERT_SOURCE as its own name.
#define CF_ASSERT(expr)                                                                            \
    ((expr) ? static_cast<void>(0) : CFAssertFailed(#expr, CF_ASSERT_SOURCE, __LINE__))
#define CF_ASSERT_TEXT(expr, text)                                                                 \
    ((expr) ? static_cast<void>(0) : CFAssertFailed(text, CF_ASSERT_SOURCE, __LINE__))
