// One-sample runs chart. The number of runs is drawn as a normal
// distribution with the record's expected number of runs and its standard
// deviation, over 0 to twice the expected number. The critical value is the
// lower two-sided critical value at the model's significance level (0.05
// when it has none), mean - z(1 - level/2) × deviation; the template mirrors
// it about the mean for the upper one. A record without mean or deviation
// gets no chart.
#include "backend/nonpar/OneSampleRunsChart.h"

#include <cmath>

#include "host/chart/XDocument.h"

OneSampleRunsChart::OneSampleRunsChart(FacSTDictionary* dictionary, NOPROutputStats* stats,
                                       const NOPROutputStats::HTORuns* test)
    : NOPRChartContext(dictionary, stats), fTest(test) {
    fTitle = Text("One-Sample Runs Test");
}

double OneSampleRunsChart::NormalQuantile(double p) {
    // Acklam's rational approximation (relative error below 1.2e-9).
    static const double a[] = {-3.969683028665376e+01, 2.209460984245205e+02,
                               -2.759285104469687e+02, 1.383577518672690e+02,
                               -3.066479806614716e+01, 2.506628277459239e+00};
    static const double b[] = {-5.447609879822406e+01, 1.615858368580409e+02,
                               -1.556989798598866e+02, 6.680131188771972e+01,
                               -1.328068155288572e+01};
    static const double c[] = {-7.784894002430293e-03, -3.223964580411365e-01,
                               -2.400758277161838e+00, -2.549732539343734e+00,
                               4.374664141464968e+00,  2.938163982698783e+00};
    static const double d[] = {7.784695709041462e-03, 3.224671290700398e-01, 2.445134137142996e+00,
                               3.754408661907416e+00};
    if (!(p > 0.0 && p < 1.0)) {
        return 0.0;
    }
    const double low = 0.02425;
    if (p < low || p > 1.0 - low) {
        const double q = std::sqrt(-2.0 * std::log(p < low ? p : 1.0 - p));
        const double x = (((((c[0] * q + c[1]) * q + c[2]) * q + c[3]) * q + c[4]) * q + c[5]) /
                         ((((d[0] * q + d[1]) * q + d[2]) * q + d[3]) * q + 1.0);
        return p < low ? x : -x;
    }
    const double q = p - 0.5;
    const double r = q * q;
    return (((((a[0] * r + a[1]) * r + a[2]) * r + a[3]) * r + a[4]) * r + a[5]) * q /
           (((((b[0] * r + b[1]) * r + b[2]) * r + b[3]) * r + b[4]) * r + 1.0);
}

bool OneSampleRunsChart::CustomizeTemplate(std::string& text, const std::string& suffix) const {
    const double mean = fTest->fMean;
    const double deviation = fTest->fStdDev;
    if (CFIsSysmis(mean) || CFIsSysmis(deviation) || !std::isfinite(mean) ||
        !std::isfinite(deviation)) {
        return false;
    }
    const double level =
        fStats && fStats->fSigLevel > 0.0 && fStats->fSigLevel < 1.0 ? fStats->fSigLevel : 0.05;
    const double critical = mean - NormalQuantile(1.0 - level / 2.0) * deviation;
    ChartString number;
    const auto replaceAfter = [&](std::string_view tag, size_t count, double value) {
        const size_t at = text.find(tag);
        number.assignDouble(value, 6);
        if (at != std::string::npos && at + tag.size() + count <= text.size()) {
            text.replace(at + tag.size(), count, number.str());
        }
    };
    const auto replaceValue = [&](std::string_view tag, double value) {
        const size_t at = text.find(tag);
        const size_t end = at == std::string::npos ? at : text.find('"', at + tag.size());
        number.assignDouble(value, 16);
        if (end != std::string::npos) {
            text.replace(at + tag.size(), end - at - tag.size(), number.str());
        }
    };
    replaceAfter("<range max=\"", 3, 2.0 * mean);
    replaceValue("parameter=\"", mean);
    replaceValue("secondaryParameter=\"", deviation);
    if (const size_t at = text.find("<lineGuide x=\"20"); at != std::string::npos) {
        text.replace(at + 14, 2, std::to_string(fTest->fObservedRunNumber));
    }
    ChartString observed = Text("Observed Number of Runs = ^1");
    ChartString runs;
    runs.assignInteger(fTest->fObservedRunNumber);
    observed.replaceSubstring("^1", runs.str());
    ReplaceFirst(text, "ObservedRunsText", TemplateText(observed));
    const size_t guide = text.find("<lineGuide x=\"500");
    if (guide != std::string::npos) {
        number.assignDouble(critical, 6);
        text.replace(guide + 14, 3, number.str());
    }
    ReplaceFirst(text, "TooFewRuns", TemplateText(Text("Too few runs")));
    ReplaceFirst(text, "TooManyRuns", TemplateText(Text("Too many runs")));
    if (!suffix.empty()) {
        ReplaceFirst(text, "10%", "15%");
    }
    return true;
}

bool OneSampleRunsChart::MakeChart(const std::string& suffix, bool appendSuffix) {
    if (!fTest) {
        return false;
    }
    std::string text = XDocument::fetchTemplateFile("NPAROneSampleRunsTest.viztemplate");
    if (text.empty() || !CustomizeTemplate(text, suffix)) {
        return false;
    }
    XDocument document(text);
    document.setEditor(2);
    document.setLanguage();
    return Send(document, nullptr, suffix, appendSuffix, true);
}
