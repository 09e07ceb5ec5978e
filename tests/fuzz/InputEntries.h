// The inputs of nptests besides the result documents, as entry points of the
// fuzzers and of the regression replay in the unit tests: the --splits file,
// the --dictionary file and the command text. Named assertions are caught
// (expected outcomes); anything else that goes wrong is left to crash.
#pragma once

#include <cstddef>
#include <cstdint>

// Reads the bytes as a --splits file; true when they are a plan.
bool RunSplitsFile(const std::uint8_t* data, std::size_t size);

// Builds the data source from the bytes as a --dictionary file and, when
// that succeeds, reads and writes the minimal example document with it; true
// when the dictionary was read.
bool RunDictionaryFile(const std::uint8_t* data, std::size_t size);

// Parses the bytes as the NPTESTS command against the variables of a fixed
// dictionary; the module reads a parsed command and, when it takes it,
// writes the minimal example document with its settings. True when the
// module took the command.
bool RunCommandText(const std::uint8_t* data, std::size_t size);
