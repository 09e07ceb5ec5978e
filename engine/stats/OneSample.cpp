// Descriptive numbers and histograms of the one-sample tests.
#include "engine/stats/OneSample.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

// Mean by a second pass that corrects the rounding of the first.
double MeanOf(std::span<const double> values) {
    const double n = static_cast<double>(values.size());
    double mean = std::accumulate(values.begin(), values.end(), 0.0) / n;
    double correction = 0;
    for (double v : values) {
        correction += v - mean;
    }
    return mean + correction / n;
}

} // namespace

Descriptives Describe(std::span<const double> values) {
    Descriptives result;
    result.fN = values.size();
    if (values.empty()) {
        return result;
    }
    std::vector<double> sorted(values.begin(), values.end());
    std::sort(sorted.begin(), sorted.end());
    result.fMean = MeanOf(values);
    if (values.size() > 1) {
        double squares = 0;
        for (double v : values) {
            squares += (v - result.fMean) * (v - result.fMean);
        }
        result.fStdDev = std::sqrt(squares / static_cast<double>(values.size() - 1));
    }
    result.fMin = sorted.front();
    result.fMax = sorted.back();
    result.fMedian = SortedMedian(sorted);
    result.fLowerQuartile = QuantileType6(sorted, 0.25);
    result.fUpperQuartile = QuantileType6(sorted, 0.75);
    return result;
}

namespace {

bool IsWholeNumber(double v) {
    return std::floor(v) == v;
}

} // namespace

ValueHistogram MakeHistogram(std::span<const double> values) {
    if (values.empty()) {
        return {};
    }
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    const double range = *high - *low;
    if (!std::isfinite(range)) {
        return BinValues(values, 1.0, 0.0); // one bin for them all
    }
    const bool whole = std::all_of(values.begin(), values.end(), IsWholeNumber);
    if (range == 0 || (whole && range <= 40)) {
        return BinValues(values, 1.0, *low - 0.5);
    }
    const double n = static_cast<double>(values.size());
    const double bins = std::clamp(1 + std::ceil(std::log2(n)), 5.0, 40.0);
    constexpr double kSteps[] = {1.0, 2.0, 2.5, 5.0};
    return BinValues(values, NiceWidth(range / bins, kSteps), 0.0);
}
