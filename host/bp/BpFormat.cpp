// Number formats.
#include "host/bp/BpFormat.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "host/cf/CFSysmis.h"

namespace {
std::string Fixed(double value, int decimals) {
    decimals = std::clamp(decimals, 0, 15);
    char buffer[400];
    auto [end, ec] =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, decimals);
    if (ec != std::errc()) {
        return kBpMissingText;
    }
    std::string text(buffer, end);
    // A negative number that rounds to zero shows as zero.
    if (text.front() == '-' && text.find_first_not_of("-0.") == std::string::npos) {
        text.erase(0, 1);
    }
    return text;
}

void TrimZeros(std::string& text) {
    if (text.find('.') == std::string::npos) {
        return;
    }
    while (!text.empty() && text.back() == '0') {
        text.pop_back();
    }
    if (!text.empty() && text.back() == '.') {
        text.pop_back();
    }
}
} // namespace

std::string BpFormatSpec::Format(double value) const {
    if (CFIsSysmis(value) || !std::isfinite(value)) {
        return kBpMissingText;
    }
    switch (fKind) {
    case kFixed:
        return Fixed(value, fDecimals);
    case kSignificance:
        if (value >= 0.0 && value < 0.0005) {
            return "<0.001";
        }
        return Fixed(value, 3);
    case kPercent: {
        std::string text = Fixed(value, fDecimals);
        TrimZeros(text);
        return text + "%";
    }
    case kSignificant: {
        char buffer[64];
        auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
        return ec == std::errc() ? std::string(buffer, end) : std::string(kBpMissingText);
    }
    }
    return kBpMissingText;
}
