// Conversions of host texts into chart strings.
#pragma once

#include <string_view>

#include "host/chart/ChartString.h"

class XUtility final {
public:
    // A text in the output language's encoding (the string dictionary's
    // texts; UTF-8 in this host).
    static ChartString ChartStringFromOLANG(std::string_view text);
    // A text in the local code page (labels and values from the data): UTF-8
    // when it is valid UTF-8, else read as Windows-1252.
    static ChartString ChartStringFromLocalCodePage(std::string_view text);
};
