// Tests of two related fields measured on the same cases: the sign test, the
// Wilcoxon signed-rank test, the Hodges-Lehmann median difference with its
// confidence interval, and the numbers of the paired-difference histogram.
// Every function takes the complete cases only (a case missing in either
// field is left out by the caller) and works on the differences
// second - first.
#pragma once

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include "engine/stats/Outcome.h"

// The check that opens every two-field test: both fields hold the same number
// of cases (sets `result.fTotalN`), at least two. False, with the outcome
// set, when not.
template <typename Result>
bool ArePairedCases(std::size_t firstSize, std::size_t secondSize, Result& result) {
    if (firstSize != secondSize) {
        result.fOutcome = Outcome::kUnequalLengths;
        return false;
    }
    result.fTotalN = firstSize;
    if (result.fTotalN < 2) {
        result.fOutcome = Outcome::kTooFewCases;
        return false;
    }
    return true;
}

// Counts of the signs of the differences second - first.
struct DifferenceCounts {
    std::size_t fNegative = 0;
    std::size_t fTies = 0; // zero differences
    std::size_t fPositive = 0;
};

// The differences second[i] - first[i], at the precision of the data
// (DecimalGrid); empty when the lengths differ.
std::vector<double> PairedDifferences(std::span<const double> first,
                                      std::span<const double> second);
DifferenceCounts CountDifferenceSigns(std::span<const double> differences);

// Sign test. The exact two-sided binomial significance (p = 1/2 over the
// nonzero differences) is reported when there are at most
// kSignTestExactMax nonzero differences; the normal approximation with a
// continuity correction of one half otherwise. Both are always computed.
inline constexpr std::size_t kSignTestExactMax = 25;
struct SignTestResult : TestOutcome {
    std::size_t fTotalN = 0; // complete cases
    DifferenceCounts fCounts;
    double fStatistic = kNoValue;     // number of positive differences
    double fStandardError = kNoValue; // sqrt(m) / 2 for m nonzero differences
    double fStandardized = kNoValue;  // (positives - m/2 -+ 1/2) / standard error
    double fAsymptoticSig = kNoValue; // two-sided, from the standardized statistic
    double fExactSig = kNoValue;      // two-sided binomial
    bool fExactReported = false;      // the exact significance is the one to report
};
SignTestResult SignTest(std::span<const double> first, std::span<const double> second);

// Wilcoxon signed-rank test of the differences at the precision of the data
// (SignedRanks and DecimalGrid in Differences.h): the exact significance up
// to kSignedRankExactMax nonzero differences.
struct WilcoxonResult : TestOutcome {
    std::size_t fTotalN = 0; // complete cases
    DifferenceCounts fCounts;
    double fStatistic = kNoValue;     // sum of the ranks of the positive differences
    double fExpected = kNoValue;      // m(m+1)/4 for m nonzero differences
    double fStandardError = kNoValue; // tie-corrected
    double fStandardized = kNoValue;  // (statistic - expected) / standard error
    double fAsymptoticSig = kNoValue; // two-sided
    double fExactSig = kNoValue;      // two-sided, when fHasExact
    bool fHasExact = false;
    double fTieSum = 0; // sum of t^3 - t over tied groups of absolute differences
};
WilcoxonResult WilcoxonSignedRank(std::span<const double> first, std::span<const double> second);

// Hodges-Lehmann estimate of the median difference: the median of the
// n(n+1)/2 Walsh averages (d_i + d_j)/2, i <= j, of all n differences (zero
// differences included). The confidence interval at `level` (0 < level < 1)
// runs from the c-th smallest to the c-th largest Walsh average, with
// c = round(n(n+1)/4 - z sqrt(n(n+1)(2n+1)/24)), z the normal quantile of
// (1 + level)/2. When c rounds below 1 the level cannot be reached by the
// sample and there are no bounds. Differences are taken at the precision of
// the data. Walsh averages are never all stored: the
// order statistics are selected in O(n log n) expected time.
struct PairedHodgesLehmannResult : TestOutcome {
    std::size_t fTotalN = 0;
    double fEstimate = kNoValue;
    double fLower = kNoValue;
    double fUpper = kNoValue;
    double fLevel = kNoValue;
    std::size_t fRankOfBound = 0;   // c above
    bool fIntervalReachable = true; // false: too few cases for an interval at the level
};
PairedHodgesLehmannResult HodgesLehmannPaired(std::span<const double> first,
                                              std::span<const double> second, double level);

// The k-th smallest (1-based) of the Walsh averages (d_i + d_j)/2, i <= j,
// of `values`; 1 <= k <= n(n+1)/2. NaN for another k or when a value is not
// finite.
double WalshAverageOrderStatistic(std::span<const double> values, std::size_t k);

// A bin width of 1, 2 or 5 times a power of ten that cuts the range of the
// values into about as many bins as Sturges' rule asks for (1 when the range
// is empty).
double HistogramBinWidth(std::span<const double> values);
