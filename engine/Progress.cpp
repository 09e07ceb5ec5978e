// The engine's progress hook.
#include "engine/Progress.h"

#include <utility>

namespace {
ProgressHook& Hook() {
    static thread_local ProgressHook hook;
    return hook;
}
} // namespace

ProgressHook SetProgressHook(ProgressHook hook) {
    return std::exchange(Hook(), std::move(hook));
}

void ReportProgress(std::size_t done, std::size_t total) {
    if (Hook()) {
        Hook()(done, total);
    }
}
