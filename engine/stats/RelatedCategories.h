// Tests of two related categorical fields: McNemar's change test of a
// success/failure classification and the marginal homogeneity test of
// ordered categories, with the category-by-category tables their charts
// draw. Every function takes the complete cases only; categories are the
// fields' values (numeric codes).
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "engine/stats/Outcome.h"

// Counts of the cases by the category of the first field (rows) and of the
// second (columns). The categories are the distinct values of both fields
// together, ascending. Empty when the lengths differ or a value is NaN.
struct CategoryCrosstab {
    std::vector<double> fCategories;
    std::vector<double> fCounts; // row-major, fCategories.size() squared
    double At(std::size_t row, std::size_t column) const {
        return fCounts[row * fCategories.size() + column];
    }
};
CategoryCrosstab Crosstab(std::span<const double> first, std::span<const double> second);

// McNemar's test. A value listed in `success` is a success. With an empty
// `failure` list every other value is a failure; with a failure list, values
// in neither list are outside the categories and their cases are left out.
// The statistic is (|b - c| - 1)^2 / (b + c) with b = failure then success
// and c = success then failure, on 1 degree of freedom. The exact two-sided
// binomial significance of b in b + c trials (p = 1/2) is reported when
// b + c is at most kMcNemarExactMax; both are always computed.
inline constexpr std::size_t kMcNemarExactMax = 25;
struct McNemarResult : TestOutcome {
    std::size_t fTotalN = 0; // cases whose both values are in the categories
    // fCounts[first][second]; index 0 failure, 1 success.
    std::array<std::array<double, 2>, 2> fCounts{};
    double fStatistic = kNoValue;
    double fDegreesOfFreedom = 1;
    double fAsymptoticSig = kNoValue;
    double fExactSig = kNoValue;
    bool fExactReported = false;
    std::vector<double> fFirstOutside;  // distinct values of the first field outside the lists
    std::vector<double> fSecondOutside; // the same for the second field
};
McNemarResult McNemar(std::span<const double> first, std::span<const double> second,
                      std::span<const double> success, std::span<const double> failure = {});

// Marginal homogeneity test of two fields of ordered categories, scored by
// their values: over the cases whose two values differ, the sum of the
// first field's scores against its expectation (x + y)/2 per case, with
// variance (x - y)^2 / 4 per case; the standardized statistic is standard
// normal under homogeneity.
struct MarginalHomogeneityResult : TestOutcome {
    std::size_t fTotalN = 0;
    std::size_t fOffDiagonalN = 0; // cases whose two values differ
    CategoryCrosstab fCrosstab;
    double fStatistic = kNoValue; // sum of first-field scores, off-diagonal cases
    double fExpected = kNoValue;
    double fStandardError = kNoValue;
    double fStandardized = kNoValue;
    double fAsymptoticSig = kNoValue; // two-sided
};
MarginalHomogeneityResult MarginalHomogeneity(std::span<const double> first,
                                              std::span<const double> second);
