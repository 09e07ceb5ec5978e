// The two-sample tests of independent samples: Mann-Whitney U,
// Kolmogorov-Smirnov, Wald-Wolfowitz runs, Moses extreme reaction and the
// Hodges-Lehmann estimate of the difference of medians. Each takes the cases
// of a test field split into exactly two groups (GroupedValues) and fails with
// its reason when there are more or fewer groups with cases.
#pragma once

#include <cstddef>

#include "engine/stats/IndependentSamples.h"
#include "engine/stats/MultipleComparisons.h"

// The two groups of a two-sample test, first and second in category order.
struct TwoSamples : TestOutcome {
    std::size_t fFirst = 0;  // category position of the first group
    std::size_t fSecond = 0; // category position of the second group
    std::size_t fN1 = 0;
    std::size_t fN2 = 0;
};

struct MannWhitneyResult : TwoSamples {
    double fMeanRank1 = kNoValue;
    double fMeanRank2 = kNoValue;
    double fU = kNoValue;         // U of the second group: its rank sum less n2(n2+1)/2
    double fWilcoxonW = kNoValue; // rank sum of the second group
    double fStdError = kNoValue;  // of U, with the correction for ties
    double fStdStatistic = kNoValue;
    double fAsymptoticSig =
        kNoValue; // two-sided, normal approximation without continuity correction
    bool fHasExact = false;
    double fExactSig =
        kNoValue; // two-sided: P(|W - E W| >= |w - E w|) over all splits of the ranks
};

// The exact significance is computed when n1 + n2 <= exactUpTo (with or
// without ties; mid-ranks are taken as they are).
MannWhitneyResult MannWhitney(const GroupedValues& data, std::size_t exactUpTo = 50);

struct KolmogorovSmirnovResult : TwoSamples {
    double fAbsolute = kNoValue; // largest |F1 - F2| of the empirical distribution functions
    double fPositive = kNoValue; // largest F1 - F2 (at least 0)
    double fNegative = kNoValue; // smallest F1 - F2 (at most 0)
    double fZ = kNoValue;        // fAbsolute * sqrt(n1 n2 / (n1 + n2))
    double fAsymptoticSig =
        kNoValue; // Kolmogorov's limiting distribution at fZ (KolmogorovLimitSf)
};

KolmogorovSmirnovResult KolmogorovSmirnovTwoSample(const GroupedValues& data);

struct RunsBound {
    double fRuns = kNoValue;
    double fStdStatistic = kNoValue; // with a continuity correction of 1/2
    double fExactSig = kNoValue;     // one-sided, P(R <= runs)
};

struct WaldWolfowitzResult : TwoSamples {
    RunsBound fMinimum; // fewest runs over the orderings of values tied between groups
    RunsBound fMaximum; // most runs over those orderings; equals fMinimum without such ties
    bool fTiesBetweenGroups = false;
};

WaldWolfowitzResult WaldWolfowitz(const GroupedValues& data);

// P(R <= runs) for the number of runs R of n1 and n2 symbols in random order.
double RunsLowerTail(double runs, std::size_t n1, std::size_t n2);

// How many control cases Moses' test trims from each end.
struct MosesTrim {
    bool fFromSample = true; // 5% of the control cases, at least one
    std::size_t fCount = 0;  // otherwise this many
};

struct MosesResult : TwoSamples {
    std::size_t fControl = 0;        // category position of the control group
    std::size_t fExperimental = 0;   // category position of the experimental group
    std::size_t fControlCases = 0;   // cases of the control group
    std::size_t fTrimmed = 0;        // control cases trimmed from each end
    double fObservedSpan = kNoValue; // highest less lowest control rank, plus one
    double fObservedSig = kNoValue;  // one-sided exact, P(span <= observed)
    double fTrimmedSpan = kNoValue;
    double fTrimmedSig = kNoValue;
};

// Moses' test with the control group at category position `control` (the
// first group with cases when it is not one of the two). Not computed when
// the control group has fewer than two cases, or fewer than two remain
// after trimming.
MosesResult Moses(const GroupedValues& data, std::size_t control, const MosesTrim& trim);

// P(S <= span) for the span S of m control cases among m + n after trimming
// h from each end, without ties.
double MosesLowerTail(double span, std::size_t m, std::size_t n, std::size_t h);

struct HodgesLehmannResult : TwoSamples {
    double fEstimate = kNoValue; // median of the differences second - first
    bool fHasInterval = false;
    double fLower = kNoValue; // order statistics of the differences at the level
    double fUpper = kNoValue;
    std::string fIntervalReason; // why the interval is missing, when it is
};

// `level` is the confidence level as a fraction (0.95).
HodgesLehmannResult HodgesLehmann(const GroupedValues& data, double level);

// The k-th smallest (1-based) of the differences y[j] - x[i] of two ascending
// samples, without forming the differences.
double KthSmallestDifference(std::span<const double> xAscending, std::span<const double> yAscending,
                             std::size_t k);
