// Number formats of the output: how a number in a pivot-table cell is shown.
#pragma once

#include <string>

struct BpFormatSpec {
    enum Kind {
        kFixed,        // a fixed number of decimals
        kSignificance, // three decimals; below 0.001 shown as "<.001"
        kPercent,      // a percentage: the number and "%", at most `fDecimals` decimals
        kSignificant,  // as many digits as the value needs, up to 15 significant ones
    };
    Kind fKind = kFixed;
    int fDecimals = 0;

    // The text of a number in this format; the system-missing value and
    // numbers that are not finite give ".".
    std::string Format(double value) const;
};

// The text of the system-missing value in a cell.
inline constexpr const char* kBpMissingText = ".";
