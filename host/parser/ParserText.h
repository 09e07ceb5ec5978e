// Text helpers of the command layer: keywords and variable names compare
// without regard to case, and keywords are kept in upper case.
#pragma once

#include <string>
#include <string_view>

// True when the two texts are equal ignoring the case of ASCII letters.
bool EqualNoCase(std::string_view a, std::string_view b);

// The text with its ASCII letters in upper case.
std::string ToUpper(std::string_view text);
