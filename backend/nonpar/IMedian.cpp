// Median test box plot: the grand median is written with one decimal more
// than the test field shows (2 without a field), right-aligned in 40
// characters.
#include "backend/nonpar/IMedian.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "host/chart/XUtility.h"
#include "host/vexa/VEXA_DataSource.h"

IMedian::IMedian(FacSTDictionary* dictionary, NOPROutputStats* stats,
                 const NOPROutputStats::HTIMedian* test)
    : Boxplot(dictionary, stats, test, test ? &test->fBoxPlot : nullptr,
              "Independent-Samples Median Test") {}

void IMedian::CustomizeTemplate(std::string& text) {
    const double median = fBoxPlot->fGrandMedian;
    if (CFIsSysmis(median) || !std::isfinite(median)) {
        return;
    }
    const VEXA_Variable* variable = FieldVariable(fTestField);
    const int decimals = variable ? std::clamp(variable->GetFormat().fDecimals + 1, 1, 16) : 2;
    char buffer[400];
    std::snprintf(buffer, sizeof buffer, "%40.*f", decimals, median);
    const std::string formatted(buffer);
    InsertBefore(text, "</graph>", "<lineGuide y=\"" + formatted + "\"/>");
    InsertAfter(text, "</graph>",
                "<labelFrame><location method=\"sizeToContent\" part=\"width\"/><location "
                "method=\"fixed\" part=\"bottom\" value=\"35%\"/><location method=\"same\" "
                "part=\"right\" target=\"graph1\"/><label><text>" +
                    TemplateText(Text("Grand Median")) + " = " + formatted +
                    "</text></label></labelFrame>");
}
