// One-sample chi-square goodness of fit: observed counts over given categories
// against equal or custom expected frequencies.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "engine/stats/OneSample.h"

struct OneSampleChiSquareResult : TestOutcome {
    std::vector<double> fCategories;     // the categories tested, in the order given
    std::vector<double> fObserved;       // count of cases per category
    std::vector<double> fExpected;       // expected count per category: N times its proportion
    std::vector<double> fProportions;    // hypothesized proportion per category (they add up to 1)
    std::size_t fTotalN = 0;             // cases in the categories; cases outside are not tested
    std::size_t fOutsideCount = 0;       // cases whose value is in no category
    std::vector<double> fValuesOutside;  // distinct values of those cases, ascending
    double fStatistic = kNoValue;        // sum of (observed - expected)^2 / expected
    double fDegreesOfFreedom = kNoValue; // categories - 1
    double fAsymptoticSig = kNoValue;    // upper tail of chi-square(df)
    std::size_t fExpectedBelowFive = 0;  // categories with an expected count below 5
    double fMinimumExpected = kNoValue;
};

// `categories` empty: the distinct values of the cases, ascending. `expectedFrequencies`
// empty: equal proportions; otherwise one positive relative frequency per category (any
// scale: they are divided by their sum). Outcomes: kNoCases (no case in the categories),
// kOneCategory (fewer than two categories), kBadParameter (a frequency not positive or
// finite, a count that differs from the categories', a category given twice).
OneSampleChiSquareResult ChiSquareGoodnessOfFit(std::span<const double> values,
                                                std::span<const double> categories = {},
                                                std::span<const double> expectedFrequencies = {});
