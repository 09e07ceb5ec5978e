// libFuzzer target: every input is one result document, read and written
// whole. Named assertions are expected; any crash, hang, leak or sanitizer
// report is a defect.
#include <cstddef>
#include <cstdint>

#include "tests/fuzz/DocumentEntry.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    RunDocument(data, size);
    return 0;
}
