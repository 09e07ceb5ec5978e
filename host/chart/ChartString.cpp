// ChartString: number conversions through std::to_chars.
#include "host/chart/ChartString.h"

#include <algorithm>
#include <charconv>
#include <cmath>

ChartString& ChartString::append(const ChartString& text) {
    fText += text.fText;
    return *this;
}

ChartString& ChartString::append(std::string_view utf8) {
    fText += utf8;
    return *this;
}

ChartString& ChartString::appendInteger(long long value) {
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    fText.append(buffer, result.ptr);
    return *this;
}

ChartString& ChartString::assignDouble(double value, int digits) {
    fText.clear();
    if (!std::isfinite(value)) {
        return *this;
    }
    char buffer[64];
    const int precision = std::clamp(digits, 1, 17);
    // The shortest text that reads back as the value, unless that needs more
    // digits than asked for.
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    std::string_view shortest(buffer, static_cast<size_t>(result.ptr - buffer));
    size_t significant = 0;
    bool leading = true;
    for (char c : shortest) {
        if (c == 'e' || c == 'E') {
            break;
        }
        if (c >= '1' && c <= '9') {
            leading = false;
        }
        if (c >= '0' && c <= '9' && !leading) {
            ++significant;
        }
    }
    if (significant <= static_cast<size_t>(precision)) {
        fText.assign(shortest);
        return *this;
    }
    result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, precision);
    fText.assign(buffer, result.ptr);
    return *this;
}

ChartString& ChartString::assignInteger(long long value) {
    fText.clear();
    return appendInteger(value);
}

int ChartString::replaceSubstring(std::string_view from, std::string_view to) {
    if (from.empty()) {
        return 0;
    }
    int count = 0;
    size_t at = 0;
    while ((at = fText.find(from, at)) != std::string::npos) {
        fText.replace(at, from.size(), to);
        at += to.size();
        ++count;
    }
    return count;
}
