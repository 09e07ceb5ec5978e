// Where nptests writes its output: standard output, or a file that is
// replaced only once the new content is complete.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

// Calls `write` with the stream to write to and completes the output. A
// regular file (or a new one) is written to a temporary file beside it and
// renamed into place only when all was written, so that a failure leaves an
// existing file as it was; a device or pipe named by path (/dev/stdout) is
// written directly; an empty path is standard output. False, after a
// message with the system's reason on standard error, when anything fails.
bool WriteOutput(const std::string& path, const std::function<bool(std::FILE*)>& write);

// Whether `output` names the file `input` (through links or another
// spelling of the path); false when either does not exist.
bool IsSameFile(const std::string& output, const std::string& input);
