// One-sample binomial test of a success proportion and the confidence
// intervals of the success rate (Clopper-Pearson, Jeffreys, likelihood ratio).
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "engine/stats/OneSample.h"

// How the cases of a field split into successes and failures.
struct BinomialCounts {
    std::size_t fSuccesses = 0;
    std::size_t fFailures = 0;
    std::size_t fExcluded = 0;          // cases in neither class (category lists only)
    std::vector<double> fValuesOutside; // distinct values of the excluded cases, ascending
};

// Successes are the values at or below `cut`, failures the values above it.
BinomialCounts CountByCutPoint(std::span<const double> values, double cut);
// Successes are the values in `success`; failures the values in `failure`, or every other
// value when `failure` is empty. Values in neither list are excluded.
BinomialCounts CountByCategories(std::span<const double> values, std::span<const double> success,
                                 std::span<const double> failure = {});

struct BinomialResult : TestOutcome {
    std::size_t fTrials = 0;
    std::size_t fSuccesses = 0;
    double fTestProportion = kNoValue;     // hypothesized success proportion p0
    double fObservedProportion = kNoValue; // successes / trials
    double fStandardError = kNoValue;      // sqrt(n p0 (1 - p0)), of the success count
    // (successes - n p0) moved 0.5 toward zero (not past it), over the standard error; its
    // square is the continuity-corrected chi-square of a one-proportion test.
    double fStandardized = kNoValue;
    double fExactSigLess = kNoValue;    // P(X <= successes)
    double fExactSigGreater = kNoValue; // P(X >= successes)
    // Two-sided: twice the smaller tail, at most 1. This is the test that the Clopper-Pearson
    // interval inverts, so p0 lies outside the (1 - alpha) interval exactly when this is
    // below alpha. The significance the document reports.
    double fExactSig2Tailed = kNoValue;
    // Two-sided by the minimum-likelihood rule: the sum of the probabilities of all counts no
    // more likely than the observed one. Equals fExactSig2Tailed when p0 = 0.5.
    double fExactSigMinLikelihood = kNoValue;
};

// Outcomes: kNoCases (no trials), kBadParameter (p0 not strictly between 0 and 1, or more
// successes than trials).
BinomialResult BinomialTest(std::size_t successes, std::size_t trials, double testProportion);

struct ProportionInterval {
    double fEstimate = kNoValue; // successes / trials
    double fLower = kNoValue;
    double fUpper = kNoValue;
};

struct SuccessRateIntervals : TestOutcome {
    std::size_t fTrials = 0;
    std::size_t fSuccesses = 0;
    double fLevel = kNoValue;           // confidence level, a fraction
    ProportionInterval fClopperPearson; // exact: beta quantiles of the binomial tails
    // Equal-tailed interval of the Beta(x + 1/2, n - x + 1/2) posterior, with the lower bound
    // 0 when x = 0 and the upper bound 1 when x = n.
    ProportionInterval fJeffreys;
    // The proportions whose likelihood-ratio statistic against the estimate stays within the
    // chi-square(1) quantile of the level; 0 (or 1) when no success (or no failure).
    ProportionInterval fLikelihoodRatio;
};

// `level` is a fraction strictly between 0 and 1 (0.95). Outcomes: kNoCases (no trials),
// kBadParameter (level outside (0, 1), more successes than trials).
SuccessRateIntervals SuccessRateIntervalsOf(std::size_t successes, std::size_t trials,
                                            double level);
ProportionInterval ClopperPearsonInterval(std::size_t successes, std::size_t trials, double level);
ProportionInterval JeffreysInterval(std::size_t successes, std::size_t trials, double level);
ProportionInterval LikelihoodRatioInterval(std::size_t successes, std::size_t trials, double level);
