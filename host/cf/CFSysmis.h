// The system-missing value: the most negative finite double. It stands for a
// missing number everywhere in the host and the module.
#pragma once

#include <limits>

inline constexpr double kCFSysmis = -std::numeric_limits<double>::max();

inline bool CFIsSysmis(double value) {
    return value == kCFSysmis;
}
