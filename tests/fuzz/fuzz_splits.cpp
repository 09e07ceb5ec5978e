// libFuzzer target: every input is a --splits file of nptests.
// Named assertions are expected; any crash, hang, leak or sanitizer report is
// a defect.
#include <cstddef>
#include <cstdint>

#include "tests/fuzz/InputEntries.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RunSplitsFile(data, size);
    return 0;
}
