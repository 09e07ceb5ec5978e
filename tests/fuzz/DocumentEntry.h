// One result document through the reader and the whole output, as nptests
// does for one split: the entry point of the fuzzer and of the regression
// replay in the unit tests.
#pragma once

#include <cstddef>
#include <cstdint>

// What became of one document.
enum class DocumentOutcome {
    kShown,     // read and written
    kRejected,  // the reader refused it
    kAssertion, // a named assertion of the module fired
};

// Reads `size` bytes as one split's result document and writes its output.
// Named assertions are caught (they are expected outcomes); anything else
// that goes wrong is left to crash, so that the fuzzer sees it.
DocumentOutcome RunDocument(const std::uint8_t* data, std::size_t size);
