// Word splitting and number conversion.
#include "host/xml/XMLText.h"

#include "host/cf/CFErrorChannel.h"
#include "host/cf/CFSysmis.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace {
std::string_view Trim(std::string_view word) {
    auto isSpace = [](char c) {
        return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
    };
    while (!word.empty() && isSpace(word.front())) {
        word.remove_prefix(1);
    }
    while (!word.empty() && isSpace(word.back())) {
        word.remove_suffix(1);
    }
    if (word.size() > 1 && word.front() == '+' && word[1] != '-' && word[1] != '+') {
        word.remove_prefix(1);
    }
    return word;
}
} // namespace

void SplitToToken(std::string_view text, std::vector<std::string>& out) {
    ForEachToken(text, [&](std::string_view word) { out.emplace_back(word); });
}

namespace {
// The number a word writes; `ok` is false when the word is not a number.
double ParseDouble(std::string_view word, bool& ok) {
    ok = true;
    word = Trim(word);
    double value = 0.0;
    auto [end, ec] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (ec == std::errc::result_out_of_range) {
        // from_chars leaves the value untouched; pick the nearest one.
        bool negative = !word.empty() && word.front() == '-';
        size_t e = word.find_first_of("eE");
        bool tiny = e != std::string_view::npos && e + 1 < word.size() && word[e + 1] == '-';
        if (tiny) {
            return negative ? -0.0 : 0.0;
        }
        CFErrorChannel::ReportOnce(CFMessage::kWarning,
                                   "a number beyond the range of a double (such as 1e400) is "
                                   "read as the missing value");
        return kCFSysmis;
    }
    if (ec != std::errc() || end != word.data() + word.size()) {
        ok = false;
        return 0.0;
    }
    return value;
}
} // namespace

double String2Double(std::string_view word) {
    bool ok = true;
    const double value = ParseDouble(word, ok);
    return ok ? value : kCFSysmis;
}

int String2Integer(std::string_view word) {
    word = Trim(word);
    long long value = 0;
    auto [end, ec] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (ec == std::errc::result_out_of_range) {
        return !word.empty() && word.front() == '-' ? std::numeric_limits<int>::min()
                                                    : std::numeric_limits<int>::max();
    }
    if (ec != std::errc() || end != word.data() + word.size()) {
        // A number written with a fraction or exponent ("3.0", "1e2"): take
        // the double and truncate it.
        bool ok = true;
        const double d = ParseDouble(word, ok);
        return !ok || std::isnan(d) ? 0 : TruncateToInt(d);
    }
    if (value < std::numeric_limits<int>::min()) {
        return std::numeric_limits<int>::min();
    }
    if (value > std::numeric_limits<int>::max()) {
        return std::numeric_limits<int>::max();
    }
    return static_cast<int>(value);
}

int TruncateToInt(double value) {
    if (std::isnan(value) || value <= static_cast<double>(std::numeric_limits<int>::min())) {
        return std::numeric_limits<int>::min();
    }
    if (value >= static_cast<double>(std::numeric_limits<int>::max())) {
        return std::numeric_limits<int>::max();
    }
    return static_cast<int>(value);
}

void AppendXmlEscaped(std::string& out, std::string_view text, bool lineBreaks) {
    for (const char c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\'':
            out += "&#39;";
            break;
        case '\n':
            if (lineBreaks) {
                out += "&#10;";
                break;
            }
            [[fallthrough]];
        default:
            out += c;
        }
    }
}
