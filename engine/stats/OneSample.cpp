// Reasons, descriptive numbers and histograms of the one-sample tests.
#include "engine/stats/OneSample.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include <boost/math/special_functions/erf.hpp>

#include "engine/stats/OneSampleMath.h"

namespace onesample {

double NormalTwoSided(double z) {
    if (std::isnan(z)) {
        return kNoValue;
    }
    return std::min(1.0, boost::math::erfc(std::fabs(z) / std::sqrt(2.0), Policy()));
}

} // namespace onesample

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

// Weighted average at position p (n + 1) of sorted values, clamped to the ends.
double QuantileType6(const std::vector<double>& sorted, double p) {
    const std::size_t n = sorted.size();
    const double position = p * static_cast<double>(n + 1);
    if (position <= 1) {
        return sorted.front();
    }
    if (position >= static_cast<double>(n)) {
        return sorted.back();
    }
    const double whole = std::floor(position);
    const std::size_t k = static_cast<std::size_t>(whole);
    const double fraction = position - whole;
    return sorted[k - 1] + fraction * (sorted[k] - sorted[k - 1]);
}

double SortedMedian(const std::vector<double>& sorted) {
    const std::size_t n = sorted.size();
    return n % 2 ? sorted[n / 2] : 0.5 * (sorted[n / 2 - 1] + sorted[n / 2]);
}

} // namespace

double Median(std::span<const double> values) {
    if (values.empty()) {
        return kNoValue;
    }
    std::vector<double> copy(values.begin(), values.end());
    const std::size_t half = copy.size() / 2;
    std::nth_element(copy.begin(), copy.begin() + half, copy.end());
    const double upper = copy[half];
    if (copy.size() % 2) {
        return upper;
    }
    const double lower = *std::max_element(copy.begin(), copy.begin() + half);
    return 0.5 * (lower + upper);
}

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

// At most this many bins; a finer width is made coarser (doubled) until the range fits.
constexpr double kMaxBins = 100000;

bool IsWholeNumber(double v) {
    return std::floor(v) == v;
}

// One bin for values whose range exceeds the doubles (near -1e308 and 1e308 at once).
ValueHistogram WholeRange(std::span<const double> values, double low, double high) {
    ValueHistogram histogram;
    histogram.fOrigin = low;
    histogram.fWidth = kNoValue;
    histogram.fBins.push_back({0.5 * low + 0.5 * high, values.size()});
    return histogram;
}

} // namespace

ValueHistogram MakeHistogram(std::span<const double> values, double width, double origin) {
    ValueHistogram histogram;
    if (!(width > 0) || !std::isfinite(width) || !std::isfinite(origin)) {
        return MakeHistogram(values);
    }
    if (values.empty()) {
        histogram.fOrigin = origin;
        histogram.fWidth = width;
        return histogram;
    }
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    if (!std::isfinite(*high - *low)) {
        return WholeRange(values, *low, *high);
    }
    while ((*high - *low) / width > kMaxBins) {
        width *= 2;
    }
    const double start = origin + std::floor((*low - origin) / width) * width;
    const double span = std::floor((*high - start) / width);
    const std::size_t count = static_cast<std::size_t>(std::min(std::max(span, 0.0), kMaxBins)) + 1;
    histogram.fOrigin = start;
    histogram.fWidth = width;
    histogram.fBins.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        histogram.fBins[i].fMidpoint = start + (static_cast<double>(i) + 0.5) * width;
    }
    for (double v : values) {
        const double position = std::floor((v - start) / width);
        const std::size_t index =
            position <= 0 ? 0 : std::min(static_cast<std::size_t>(position), count - 1);
        ++histogram.fBins[index].fCount;
    }
    return histogram;
}

ValueHistogram MakeHistogram(std::span<const double> values) {
    if (values.empty()) {
        return {};
    }
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    const double range = *high - *low;
    if (!std::isfinite(range)) {
        return WholeRange(values, *low, *high);
    }
    const bool whole = std::all_of(values.begin(), values.end(), IsWholeNumber);
    if (range == 0 || (whole && range <= 40)) {
        return MakeHistogram(values, 1.0, *low - 0.5);
    }
    const double n = static_cast<double>(values.size());
    const double bins = std::clamp(1 + std::ceil(std::log2(n)), 5.0, 40.0);
    const double raw = range / bins;
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    double width = 10 * power;
    for (double step : {1.0, 2.0, 2.5, 5.0}) {
        if (step * power >= raw) {
            width = step * power;
            break;
        }
    }
    return MakeHistogram(values, width, 0.0);
}
