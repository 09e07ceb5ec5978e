// Differences compared at the precision of the data, and the signed-rank
// statistics of a set of differences, shared by the one-sample and the
// paired tests.
//
// Values read from decimal text are the doubles nearest those decimals, and
// the binary difference of two of them is not always the double nearest to
// the decimal difference: 0.1 - 0.3 is -0.19999999999999998, 0.5 - 0.3 is
// 0.2. Two differences that the data hold equal would then rank apart. So
// differences are formed on the data's decimal grid: with k the fewest
// decimals that every value (and the test value) has, each value becomes the
// whole number round(x * 10^k), differences of whole numbers are exact in
// doubles, and equal decimal differences are equal numbers. Results that are
// differences (estimates, bounds) are scaled back by 10^-k. Values that are
// not decimals of at most 22 places, or too large for their scaled form to
// be exact (beyond 2^52), keep their binary differences.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <limits>
#include <span>
#include <vector>

class DecimalGrid final {
public:
    // The grid of every value of `columns`: the fewest decimals they all
    // have, or none (binary differences) when they are not such decimals.
    static DecimalGrid Of(std::initializer_list<std::span<const double>> columns);

    // A value on the grid: round(x * 10^k), or x itself without a grid.
    double Key(double x) const;
    // A key (or a difference or mean of keys) back in the data's units.
    double Value(double key) const;
    // The grid's decimals; -1 when the values have no decimal grid.
    int Decimals() const { return fDecimals; }

private:
    int fDecimals = -1;
    double fScale = 1;
};

// The differences second[i] - first[i] on the grid of both fields (keys:
// see DecimalGrid::Value for the data's units); empty when the lengths differ.
std::vector<double> GridDifferences(const DecimalGrid& grid, std::span<const double> first,
                                    std::span<const double> second);

// Up to this many non-zero differences the exact significance is reported.
inline constexpr std::size_t kSignedRankExactMax = 50;

// The signed-rank statistics of a set of differences (keys of one grid).
// Zero differences are dropped; the absolute non-zero differences get
// mid-ranks.
struct SignedRankSums {
    static constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    std::size_t fPositive = 0;
    std::size_t fNegative = 0;
    std::size_t fZero = 0;
    // Sum of the ranks of the positive differences (R's V); NaN without a
    // non-zero difference, as are the numbers below.
    double fStatistic = kNone;
    double fMean = kNone;          // n (n + 1) / 4 for n non-zero differences
    double fStandardError = kNone; // sqrt(n (n + 1) (2n + 1) / 24 - sum(t^3 - t) / 48)
    double fStandardized = kNone;  // (statistic - mean) / standard error, no continuity correction
    double fAsymptoticSig = kNone; // two-sided normal tail
    // Exact two-sided significance of the statistic given its mid-ranks (ties
    // included): twice the smaller tail over the 2^n equally likely sign
    // assignments, at most 1. NaN above kSignedRankExactMax differences.
    double fExactSig = kNone;
    double fTieSum = 0; // sum of t^3 - t over the groups of tied absolute differences

    std::size_t NonZero() const { return fPositive + fNegative; }
    bool HasExact() const { return fExactSig == fExactSig; }
};

// The signed-rank statistics of `differences`, which it reorders.
SignedRankSums SignedRanks(std::span<double> differences);
