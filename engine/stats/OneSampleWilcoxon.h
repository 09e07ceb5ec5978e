// One-sample Wilcoxon signed-rank test of a hypothesized median.
#pragma once

#include <cstddef>
#include <span>

#include "engine/stats/OneSample.h"

struct OneSampleWilcoxonResult : TestOutcome {
    std::size_t fTotalN = 0;   // every case, zero differences included
    std::size_t fNegative = 0; // values below the hypothesized median
    std::size_t fZero = 0;     // values equal to it: dropped before ranking
    std::size_t fPositive = 0; // values above it
    double fHypothesizedMedian = kNoValue;
    double fObservedMedian = kNoValue; // median of all values
    // Sum of the mid-ranks of |value - median| over the positive differences (R's V).
    double fStatistic = kNoValue;
    double fNegativeRankSum = kNoValue; // the same over the negative differences
    double fMean = kNoValue;            // n (n + 1) / 4 for n non-zero differences
    // sqrt(n (n + 1) (2n + 1) / 24 - sum(t^3 - t) / 48) over the groups of t tied |differences|
    double fStandardError = kNoValue;
    // (statistic - mean) / standard error, without continuity correction.
    double fStandardized = kNoValue;
    double fAsymptoticSig2Tailed = kNoValue; // two-sided normal tail
    // Exact two-sided significance of the statistic given its mid-ranks (ties included): twice
    // the smaller tail of the permutation distribution over the 2^n sign assignments, at most 1.
    // Computed, and the one to report, when 1 <= n <= kSignedRankExactMax (Differences.h); NaN
    // otherwise.
    double fExactSig2Tailed = kNoValue;

    bool HasExact() const { return fExactSig2Tailed == fExactSig2Tailed; }
};

// Differences are compared at the precision of the values and the median
// (DecimalGrid). Outcomes: kNoCases (no values), kAllDifferencesZero (every value equals the
// median; the counts and medians are still filled).
OneSampleWilcoxonResult OneSampleWilcoxon(std::span<const double> values,
                                          double hypothesizedMedian);
