// Tails, medians, quantiles and bins shared by every family of tests.
#include "engine/stats/Numerics.h"

#include <algorithm>
#include <cmath>

#include <boost/math/special_functions/erf.hpp>

#include "engine/stats/Distributions.h"

double NormalTwoSided(double z) {
    if (std::isnan(z)) {
        return kNoValue;
    }
    return std::min(1.0, boost::math::erfc(std::fabs(z) / std::sqrt(2.0), Policy()));
}

double NormalUpper(double z) {
    return boost::math::cdf(boost::math::complement(Normal(), z));
}

double BinomialHalfTwoSided(double x, double n) {
    const double smaller = std::min(x, n - x);
    if (2 * smaller == n) {
        return 1.0;
    }
    return std::min(1.0, 2.0 * boost::math::cdf(Binomial(n, 0.5), smaller));
}

double ChiSquareUpper(double x, double df) {
    if (!(df > 0) || std::isnan(x)) {
        return kNoValue;
    }
    return boost::math::cdf(boost::math::complement(ChiSquared(df), std::max(x, 0.0)));
}

double SortedMedian(std::span<const double> ascending) {
    const std::size_t n = ascending.size();
    if (n == 0) {
        return kNoValue;
    }
    return n % 2 ? ascending[n / 2] : 0.5 * (ascending[n / 2 - 1] + ascending[n / 2]);
}

double MedianInPlace(std::span<double> values) {
    if (values.empty()) {
        return kNoValue;
    }
    const std::size_t half = values.size() / 2;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(half);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2) {
        return *middle;
    }
    return 0.5 * (*std::max_element(values.begin(), middle) + *middle);
}

double Median(std::span<const double> values) {
    std::vector<double> copy(values.begin(), values.end());
    return MedianInPlace(copy);
}

double QuantileType6(std::span<const double> ascending, double p) {
    const std::size_t n = ascending.size();
    if (n == 0) {
        return kNoValue;
    }
    const double position = p * static_cast<double>(n + 1);
    if (position <= 1) {
        return ascending.front();
    }
    if (position >= static_cast<double>(n)) {
        return ascending.back();
    }
    const double whole = std::floor(position);
    const auto k = static_cast<std::size_t>(whole);
    return ascending[k - 1] + (position - whole) * (ascending[k] - ascending[k - 1]);
}

double NiceWidth(double raw, std::span<const double> steps) {
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    for (double step : steps) {
        if (step * power >= raw) {
            return step * power;
        }
    }
    return 10 * power;
}

namespace {

// At most this many bins; a finer width is made coarser (doubled) until the range fits.
constexpr double kMaxBins = 100000;

// One bin for values whose range exceeds the doubles (near -1e308 and 1e308 at once).
ValueHistogram WholeRange(std::span<const double> values, double low, double high) {
    ValueHistogram histogram;
    histogram.fOrigin = low;
    histogram.fWidth = kNoValue;
    histogram.fBins.push_back({0.5 * low + 0.5 * high, values.size()});
    return histogram;
}

} // namespace

ValueHistogram BinValues(std::span<const double> values, double width, double origin) {
    ValueHistogram histogram;
    histogram.fOrigin = origin;
    histogram.fWidth = width;
    if (values.empty() || !(width > 0) || !std::isfinite(width) || !std::isfinite(origin)) {
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
    return BinLike(values, histogram);
}

ValueHistogram BinLike(std::span<const double> values, const ValueHistogram& layout) {
    ValueHistogram histogram = layout;
    const std::size_t count = histogram.fBins.size();
    for (ValueBin& bin : histogram.fBins) {
        bin.fCount = 0;
    }
    for (double v : values) {
        if (count == 0) {
            break;
        }
        // One bin of no width (values beyond the doubles) holds them all.
        const double position = std::floor((v - layout.fOrigin) / layout.fWidth);
        const std::size_t index =
            !(position > 0)
                ? 0
                : std::min(static_cast<std::size_t>(std::min(position, 1e18)), count - 1);
        ++histogram.fBins[index].fCount;
    }
    return histogram;
}
