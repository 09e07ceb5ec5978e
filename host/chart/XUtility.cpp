// XUtility: both conversions go through a transcoder, which also makes the
// text safe for XML.
#include "host/chart/XUtility.h"

#include "host/chart/ChartTranscoder.h"

ChartString XUtility::ChartStringFromOLANG(std::string_view text) {
    return ChartTranscoder("UTF-8").transcode(text);
}

ChartString XUtility::ChartStringFromLocalCodePage(std::string_view text) {
    return ChartTranscoder("CP1252").transcode(text);
}
