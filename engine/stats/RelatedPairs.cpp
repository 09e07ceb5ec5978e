// Sign, signed-rank and Hodges-Lehmann statistics of paired differences.
#include "engine/stats/RelatedPairs.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>

#include <boost/math/distributions/normal.hpp>

#include "engine/stats/Differences.h"
#include "engine/stats/Numerics.h"

std::vector<double> PairedDifferences(std::span<const double> first,
                                      std::span<const double> second) {
    const DecimalGrid grid = DecimalGrid::Of({first, second});
    std::vector<double> differences = GridDifferences(grid, first, second);
    for (double& d : differences) {
        d = grid.Value(d);
    }
    return differences;
}

namespace {
// Counts the signs of `n` differences, the i-th given by difference(i), so
// that a test can count without storing the differences.
template <typename Difference> DifferenceCounts CountSigns(std::size_t n, Difference difference) {
    DifferenceCounts counts;
    for (std::size_t i = 0; i < n; ++i) {
        const double d = difference(i);
        if (d < 0) {
            ++counts.fNegative;
        } else if (d > 0) {
            ++counts.fPositive;
        } else {
            ++counts.fTies;
        }
    }
    return counts;
}
} // namespace

DifferenceCounts CountDifferenceSigns(std::span<const double> differences) {
    return CountSigns(differences.size(), [&](std::size_t i) { return differences[i]; });
}

SignTestResult SignTest(std::span<const double> first, std::span<const double> second) {
    SignTestResult result;
    if (!ArePairedCases(first.size(), second.size(), result)) {
        return result;
    }
    result.fCounts = CountSigns(first.size(), [&](std::size_t i) { return second[i] - first[i]; });
    const std::size_t m = result.fCounts.fNegative + result.fCounts.fPositive;
    if (m == 0) {
        result.fOutcome = Outcome::kAllPairsTied;
        return result;
    }
    const double positives = static_cast<double>(result.fCounts.fPositive);
    const double half = 0.5 * static_cast<double>(m);
    result.fStatistic = positives;
    result.fStandardError = 0.5 * std::sqrt(static_cast<double>(m));
    const double excess = positives - half;
    const double corrected = excess > 0 ? excess - 0.5 : excess < 0 ? excess + 0.5 : 0.0;
    result.fStandardized = corrected / result.fStandardError;
    result.fAsymptoticSig = NormalTwoSided(result.fStandardized);
    result.fExactSig =
        BinomialHalfTwoSided(static_cast<double>(result.fCounts.fPositive), static_cast<double>(m));
    result.fExactReported = m <= kSignTestExactMax;
    return result;
}

WilcoxonResult WilcoxonSignedRank(std::span<const double> first, std::span<const double> second) {
    WilcoxonResult result;
    if (!ArePairedCases(first.size(), second.size(), result)) {
        return result;
    }
    std::vector<double> differences =
        GridDifferences(DecimalGrid::Of({first, second}), first, second);
    const SignedRankSums sums = SignedRanks(differences);
    result.fCounts = {sums.fNegative, sums.fZero, sums.fPositive};
    if (sums.NonZero() == 0) {
        result.fOutcome = Outcome::kAllPairsTied;
        return result;
    }
    result.fStatistic = sums.fStatistic;
    result.fTieSum = sums.fTieSum;
    result.fExpected = sums.fMean;
    result.fStandardError = sums.fStandardError;
    result.fStandardized = sums.fStandardized;
    result.fAsymptoticSig = sums.fAsymptoticSig;
    result.fHasExact = sums.HasExact();
    result.fExactSig = sums.fExactSig;
    return result;
}

namespace {

// The k-th smallest Walsh average of the ascending values `x`.
double SortedWalshOrderStatistic(const std::vector<double>& x, std::size_t k) {
    const std::size_t n = x.size();
    const std::size_t total = n * (n + 1) / 2;
    if (n == 0 || k < 1 || k > total) {
        return kNoValue;
    }
    // Row i holds the sums x[i] + x[j] for j = i..n-1, ascending in j. The
    // k-th smallest sum lies among the candidates lo[i] <= j < hi[i] of each
    // row; `below` sums lie left of every candidate range and are smaller.
    std::vector<std::size_t> lo(n);
    std::vector<std::size_t> hi(n, n);
    for (std::size_t i = 0; i < n; ++i) {
        lo[i] = i;
    }
    std::mt19937_64 random(20240611);
    constexpr std::size_t kCollectBelow = std::size_t{1} << 16;
    std::vector<double> candidates;
    for (;;) {
        std::size_t count = 0;
        std::size_t below = 0;
        for (std::size_t i = 0; i < n; ++i) {
            count += hi[i] - lo[i];
            below += lo[i] - i;
        }
        if (count <= std::max(kCollectBelow, n)) {
            candidates.clear();
            candidates.reserve(count);
            for (std::size_t i = 0; i < n; ++i) {
                for (std::size_t j = lo[i]; j < hi[i]; ++j) {
                    candidates.push_back(x[i] + x[j]);
                }
            }
            const std::size_t at = k - 1 - below;
            std::nth_element(candidates.begin(),
                             candidates.begin() + static_cast<std::ptrdiff_t>(at),
                             candidates.end());
            return candidates[at] / 2.0;
        }
        // A random candidate as the pivot.
        std::size_t pick = std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
        double pivot = 0;
        for (std::size_t i = 0; i < n; ++i) {
            const std::size_t width = hi[i] - lo[i];
            if (pick < width) {
                pivot = x[i] + x[lo[i] + pick];
                break;
            }
            pick -= width;
        }
        // Per row, the first j whose sum reaches the pivot (less[i]) and the
        // first whose sum exceeds it (more[i]); both fall as i grows.
        std::size_t smaller = 0;
        std::size_t notLarger = 0;
        std::vector<std::size_t> less(n);
        std::vector<std::size_t> more(n);
        std::size_t jLess = n;
        std::size_t jMore = n;
        for (std::size_t i = 0; i < n; ++i) {
            while (jLess > 0 && x[i] + x[jLess - 1] >= pivot) {
                --jLess;
            }
            while (jMore > 0 && x[i] + x[jMore - 1] > pivot) {
                --jMore;
            }
            less[i] = std::max(jLess, i);
            more[i] = std::max(jMore, i);
            smaller += less[i] - i;
            notLarger += more[i] - i;
        }
        if (k <= smaller) {
            for (std::size_t i = 0; i < n; ++i) {
                hi[i] = std::max(lo[i], std::min(hi[i], less[i]));
            }
        } else if (k <= notLarger) {
            return pivot / 2.0;
        } else {
            for (std::size_t i = 0; i < n; ++i) {
                lo[i] = std::min(hi[i], std::max(lo[i], more[i]));
            }
        }
    }
}

} // namespace

double WalshAverageOrderStatistic(std::span<const double> values, std::size_t k) {
    if (!std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); })) {
        return kNoValue;
    }
    std::vector<double> x(values.begin(), values.end());
    std::sort(x.begin(), x.end());
    return SortedWalshOrderStatistic(x, k);
}

PairedHodgesLehmannResult HodgesLehmannPaired(std::span<const double> first,
                                              std::span<const double> second, double level) {
    PairedHodgesLehmannResult result;
    result.fLevel = level;
    if (!ArePairedCases(first.size(), second.size(), result)) {
        return result;
    }
    if (!(level > 0 && level < 1)) {
        result.fOutcome = Outcome::kBadParameter;
        return result;
    }
    // The Walsh averages of the keys are exact (whole numbers or halves).
    const DecimalGrid grid = DecimalGrid::Of({first, second});
    std::vector<double> d = GridDifferences(grid, first, second);
    if (!std::all_of(d.begin(), d.end(), [](double v) { return std::isfinite(v); })) {
        result.fOutcome = Outcome::kNotFinite;
        return result;
    }
    std::sort(d.begin(), d.end());
    const std::size_t n = d.size();
    const std::size_t total = n * (n + 1) / 2;
    if (total % 2 == 1) {
        result.fEstimate = grid.Value(SortedWalshOrderStatistic(d, (total + 1) / 2));
    } else {
        result.fEstimate = grid.Value(0.5 * (SortedWalshOrderStatistic(d, total / 2) +
                                             SortedWalshOrderStatistic(d, total / 2 + 1)));
    }
    const double nd = static_cast<double>(n);
    const boost::math::normal standard;
    const double z = boost::math::quantile(standard, 0.5 * (1.0 + level));
    const double raw = nd * (nd + 1) / 4.0 - z * std::sqrt(nd * (nd + 1) * (2 * nd + 1) / 24.0);
    const double rounded = std::floor(raw + 0.5);
    if (rounded < 1) {
        // Even the extreme Walsh averages cover less than the level asks.
        result.fIntervalReachable = false;
        return result;
    }
    const std::size_t c = std::min(static_cast<std::size_t>(rounded), (total + 1) / 2);
    result.fRankOfBound = c;
    result.fLower = grid.Value(SortedWalshOrderStatistic(d, c));
    result.fUpper = grid.Value(SortedWalshOrderStatistic(d, total - c + 1));
    return result;
}

double HistogramBinWidth(std::span<const double> values) {
    if (values.empty()) {
        return 1.0;
    }
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    const double range = *high - *low;
    if (!(range > 0) || !std::isfinite(range)) {
        return 1.0;
    }
    const double bins = std::ceil(std::log2(static_cast<double>(values.size()))) + 1.0;
    constexpr double kSteps[] = {1.0, 2.0, 5.0};
    return NiceWidth(range / std::max(bins, 1.0), kSteps);
}
