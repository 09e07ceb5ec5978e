// Differences on the data's decimal grid, and signed-rank statistics.
#include "engine/stats/Differences.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <boost/math/special_functions/erf.hpp>

namespace {

// 10^k is a double exactly up to k = 22.
constexpr int kMostDecimals = 22;
// Keys below 2^52 in magnitude are whole numbers exactly, and so are their
// differences and sums.
constexpr double kKeyLimit = 4503599627370496.0;

double PowerOfTen(int k) {
    static const std::array<double, kMostDecimals + 1> powers = [] {
        std::array<double, kMostDecimals + 1> table{};
        double power = 1;
        for (double& entry : table) {
            entry = power;
            power *= 10;
        }
        return table;
    }();
    return powers[static_cast<std::size_t>(k)];
}

// Whether `x` is the double nearest to a decimal with the places of `scale`
// (division by an exact power of ten rounds correctly).
bool OnGrid(double x, double scale) {
    const double key = std::nearbyint(x * scale);
    return std::fabs(key) < kKeyLimit && key / scale == x;
}

// Exact two-sided significance of the positive rank sum `statistic` over the
// 2^n equally likely sign assignments of `doubledRanks` (mid-ranks doubled,
// so whole numbers).
double ExactSignedRankSig(const std::vector<std::size_t>& doubledRanks, double statistic) {
    std::size_t total = 0;
    for (std::size_t r : doubledRanks) {
        total += r;
    }
    // probability[s]: P(doubled positive sum = s), built one rank at a time;
    // halving at each step keeps every entry a probability (exact: counts
    // times powers of two).
    std::vector<double> probability(total + 1, 0.0);
    probability[0] = 1.0;
    std::size_t reach = 0;
    for (std::size_t r : doubledRanks) {
        reach += r;
        for (std::size_t s = reach + 1; s-- > 0;) {
            const double without = probability[s];
            const double with = s >= r ? probability[s - r] : 0.0;
            probability[s] = 0.5 * (without + with);
        }
    }
    const auto observed = static_cast<std::size_t>(std::llround(2 * statistic));
    double lower = 0; // P(T <= t)
    double upper = 0; // P(T >= t)
    for (std::size_t s = 0; s <= total; ++s) {
        if (s <= observed) {
            lower += probability[s];
        }
        if (s >= observed) {
            upper += probability[s];
        }
    }
    return std::min(1.0, 2 * std::min(lower, upper));
}

} // namespace

DecimalGrid DecimalGrid::Of(std::initializer_list<std::span<const double>> columns) {
    int decimals = 0;
    double largest = 0;
    for (std::span<const double> column : columns) {
        for (double x : column) {
            if (!std::isfinite(x)) {
                return {};
            }
            while (!OnGrid(x, PowerOfTen(decimals))) {
                if (++decimals > kMostDecimals) {
                    return {};
                }
            }
            largest = std::max(largest, std::fabs(x));
        }
    }
    // A value placed on the grid early is on every finer grid, but its key
    // grows with the grid: the largest must still be exact.
    if (!(largest * PowerOfTen(decimals) < kKeyLimit)) {
        return {};
    }
    DecimalGrid grid;
    grid.fDecimals = decimals;
    grid.fScale = PowerOfTen(decimals);
    return grid;
}

double DecimalGrid::Key(double x) const {
    return fDecimals < 0 ? x : std::nearbyint(x * fScale);
}

double DecimalGrid::Value(double key) const {
    return fDecimals < 0 ? key : key / fScale;
}

std::vector<double> GridDifferences(const DecimalGrid& grid, std::span<const double> first,
                                    std::span<const double> second) {
    std::vector<double> differences;
    if (first.size() != second.size()) {
        return differences;
    }
    differences.resize(first.size());
    if (grid.Decimals() < 0) {
        for (std::size_t i = 0; i < first.size(); ++i) {
            differences[i] = second[i] - first[i];
        }
    } else {
        for (std::size_t i = 0; i < first.size(); ++i) {
            differences[i] = grid.Key(second[i]) - grid.Key(first[i]);
        }
    }
    return differences;
}

SignedRankSums SignedRanks(std::span<double> differences) {
    SignedRankSums result;
    // The magnitudes of the positive differences gather at the front, those
    // of the negative ones at the back, zeros between; each part is sorted on
    // its own (plain sorts of doubles, cheaper than one sort of value and
    // sign), and one merge of the two gives the mid-ranks.
    const auto positiveEnd =
        std::partition(differences.begin(), differences.end(), [](double d) { return d > 0; });
    const auto negativeBegin =
        std::partition(positiveEnd, differences.end(), [](double d) { return !(d < 0); });
    for (auto it = negativeBegin; it != differences.end(); ++it) {
        *it = -*it;
    }
    result.fPositive = static_cast<std::size_t>(positiveEnd - differences.begin());
    result.fNegative = static_cast<std::size_t>(differences.end() - negativeBegin);
    result.fZero = differences.size() - result.fPositive - result.fNegative;
    const std::size_t count = result.NonZero();
    if (count == 0) {
        return result;
    }
    std::sort(differences.begin(), positiveEnd);
    std::sort(negativeBegin, differences.end());
    const bool exact = count <= kSignedRankExactMax;
    std::vector<std::size_t> doubledRanks; // every mid-rank doubled, for the exact distribution
    double plus = 0;
    double tieSum = 0;
    auto p = differences.begin();
    auto q = negativeBegin;
    std::size_t below = 0;
    while (p != positiveEnd || q != differences.end()) {
        // The next magnitude and how many positive (a) and negative (b)
        // differences share it.
        const double m = q == differences.end() || (p != positiveEnd && *p < *q) ? *p : *q;
        std::size_t a = 0;
        std::size_t b = 0;
        for (; p != positiveEnd && *p == m; ++p) {
            ++a;
        }
        for (; q != differences.end() && *q == m; ++q) {
            ++b;
        }
        const std::size_t t = a + b;
        // The group shares the mean of ranks below+1 .. below+t.
        const std::size_t doubled = 2 * below + t + 1;
        plus += 0.5 * static_cast<double>(doubled) * static_cast<double>(a);
        const double td = static_cast<double>(t);
        tieSum += td * td * td - td;
        if (exact) {
            doubledRanks.insert(doubledRanks.end(), t, doubled);
        }
        below += t;
    }
    const double n = static_cast<double>(count);
    result.fStatistic = plus;
    result.fTieSum = tieSum;
    result.fMean = n * (n + 1) / 4;
    result.fStandardError = std::sqrt(n * (n + 1) * (2 * n + 1) / 24 - tieSum / 48);
    result.fStandardized = (plus - result.fMean) / result.fStandardError;
    result.fAsymptoticSig =
        std::min(1.0, boost::math::erfc(std::fabs(result.fStandardized) / std::sqrt(2.0)));
    if (exact) {
        result.fExactSig = ExactSignedRankSig(doubledRanks, plus);
    }
    return result;
}
