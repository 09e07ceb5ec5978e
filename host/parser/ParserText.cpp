// Text helpers of the command layer.
#include "host/parser/ParserText.h"

#include <algorithm>

namespace {
char UpperAscii(char c) {
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}
} // namespace

bool EqualNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return UpperAscii(x) == UpperAscii(y);
           });
}

std::string ToUpper(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), UpperAscii);
    return upper;
}
