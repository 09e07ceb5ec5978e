// The chart layer's string: UTF-8 text with the few operations chart code
// needs to build titles, labels and numbers.
#pragma once

#include <string>
#include <string_view>

class ChartString final {
public:
    ChartString() = default;
    ChartString(const char* utf8) : fText(utf8 ? utf8 : "") {}
    ChartString(std::string utf8) : fText(std::move(utf8)) {}
    ChartString(std::string_view utf8) : fText(utf8) {}

    ChartString& append(const ChartString& text);
    ChartString& append(std::string_view utf8);
    ChartString& append(const char* utf8) { return append(std::string_view(utf8 ? utf8 : "")); }
    ChartString& append(const std::string& utf8) { return append(std::string_view(utf8)); }
    ChartString& appendInteger(long long value);
    // The shortest text of `value` with at most `digits` significant digits
    // (1-17); NaN and infinities give an empty text.
    ChartString& assignDouble(double value, int digits);
    ChartString& assignInteger(long long value);
    bool equals(const ChartString& other) const { return fText == other.fText; }
    bool equals(std::string_view utf8) const { return fText == utf8; }
    bool equals(const char* utf8) const { return utf8 && fText == utf8; }
    // Replaces every occurrence of `from` by `to`; the number of replacements.
    int replaceSubstring(std::string_view from, std::string_view to);

    const char* xc_str() const { return fText.c_str(); }
    std::string toUTF8() const { return fText; }
    const std::string& str() const { return fText; }
    bool empty() const { return fText.empty(); }
    size_t length() const { return fText.size(); }

private:
    std::string fText;
};
