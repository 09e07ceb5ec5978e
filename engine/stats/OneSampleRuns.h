// One-sample runs test of randomness: the number of runs of a two-class
// sequence in case order, with its exact distribution for small samples and a
// normal approximation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/stats/OneSample.h"

// Samples up to this many cases get the exact significance as the one to report.
inline constexpr std::size_t kRunsExactMaxCases = 50;

// How a continuous field is cut into two classes.
enum class RunsCut { kMedian, kMean, kValue };

// The cut point of `values` for a cut kind (`value` is returned for kValue).
double RunsCutPoint(std::span<const double> values, RunsCut cut, double value = 0);

struct OneSampleRunsResult : TestOutcome {
    std::size_t fTotalN = 0;            // cases in the sequence
    std::size_t fFirstCount = 0;        // cases of the first class (at or below the cut point)
    std::size_t fSecondCount = 0;       // cases of the second class (above the cut point)
    std::size_t fExcluded = 0;          // cases in neither category list (category form only)
    std::vector<double> fValuesOutside; // distinct values of the excluded cases, ascending
    double fRuns = kNoValue;            // observed number of runs
    double fMean = kNoValue;            // 2 n1 n2 / N + 1
    double fStdDev = kNoValue;          // standard deviation (and standard error) of the runs
    // (runs - mean) over the standard deviation; below kRunsExactMaxCases cases the
    // difference is first moved 0.5 toward zero (not past it).
    double fStandardized = kNoValue;
    double fAsymptoticSig2Tailed = kNoValue; // two-sided normal tail of fStandardized
    double fExactSigLess = kNoValue;         // P(R <= runs), every N
    double fExactSigGreater = kNoValue;      // P(R >= runs), every N
    double fExactSig2Tailed = kNoValue;      // twice the smaller tail, at most 1
    bool fExactIsReported = false; // N <= kRunsExactMaxCases: report the exact significance
};

// Runs of a sequence of classes (0 = first class, anything else = second), in case order.
// Outcomes: kTooFewCases (fewer than two cases, or one case of each class: the number of runs
// cannot vary), kOneCategory (every case in one class).
OneSampleRunsResult RunsTest(std::span<const std::uint8_t> classes);
// Cases at or below `cut` form the first class, cases above it the second.
OneSampleRunsResult RunsTestByCutPoint(std::span<const double> values, double cut);
// Cases with a value in `first` form the first class, in `second` the second; other cases are
// left out (and counted in fExcluded). Lists must not share a value (else kBadParameter).
OneSampleRunsResult RunsTestByCategories(std::span<const double> values,
                                         std::span<const double> first,
                                         std::span<const double> second);
