// Progress of the engine's long computations (Monte Carlo samples), reported
// by the test writers to whoever runs the engine. RunEngine installs the
// caller's hook for the duration of a run.
#pragma once

#include <cstddef>
#include <functional>

using ProgressHook = std::function<void(std::size_t done, std::size_t total)>;

// Installs `hook` (an empty one: nothing is reported) and returns the one before.
ProgressHook SetProgressHook(ProgressHook hook);
// Reports `done` of `total` steps of the computation in hand.
void ReportProgress(std::size_t done, std::size_t total);
