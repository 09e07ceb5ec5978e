// Text functions of the host: splitting a text into words and converting one
// word to a number.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// Appends the words of `text` to `out`; words are separated by blanks, tabs,
// line breaks, carriage returns, form feeds and vertical tabs.
void SplitToToken(std::string_view text, std::vector<std::string>& out);

// Calls `visit(word)` for each word of `text`, without allocating.
template <typename Visit> void ForEachToken(std::string_view text, Visit&& visit) {
    size_t i = 0;
    const size_t n = text.size();
    auto isSpace = [](char c) {
        return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
    };
    while (i < n) {
        while (i < n && isSpace(text[i])) {
            ++i;
        }
        size_t start = i;
        while (i < n && !isSpace(text[i])) {
            ++i;
        }
        if (i > start) {
            visit(text.substr(start, i - start));
        }
    }
}

// The number a word writes, by std::from_chars; surrounding blanks and a
// leading "+" are allowed. A word that is not a number gives the
// system-missing value as a double and 0 as an integer. A number too small
// for a double gives zero; one too large, the system-missing value, with a
// warning; an integer out of range saturates.
double String2Double(std::string_view word);
int String2Integer(std::string_view word);

// A double truncated toward zero to a 32-bit integer, saturating at the ends;
// NaN and the system-missing value give the smallest integer.
int TruncateToInt(double value);

// Appends `text` with the characters that XML and HTML give a meaning to
// written as references; with `lineBreaks`, line breaks become "&#10;" too
// (so that they survive inside an attribute value).
void AppendXmlEscaped(std::string& out, std::string_view text, bool lineBreaks = false);
