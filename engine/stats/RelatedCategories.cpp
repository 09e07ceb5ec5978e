// McNemar and marginal homogeneity tests over two categorical fields.
#include "engine/stats/RelatedCategories.h"

#include <algorithm>
#include <cmath>

#include "engine/stats/Numerics.h"
#include "engine/stats/RelatedPairs.h"

namespace {

bool Contains(std::span<const double> list, double value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

void AddDistinct(std::vector<double>& values, double value) {
    const auto at = std::lower_bound(values.begin(), values.end(), value);
    if (at == values.end() || *at != value) {
        values.insert(at, value);
    }
}

} // namespace

CategoryCrosstab Crosstab(std::span<const double> first, std::span<const double> second) {
    CategoryCrosstab table;
    const auto isNaN = [](double v) { return std::isnan(v); };
    if (first.size() != second.size() || std::any_of(first.begin(), first.end(), isNaN) ||
        std::any_of(second.begin(), second.end(), isNaN)) {
        return table;
    }
    table.fCategories.assign(first.begin(), first.end());
    table.fCategories.insert(table.fCategories.end(), second.begin(), second.end());
    std::sort(table.fCategories.begin(), table.fCategories.end());
    table.fCategories.erase(std::unique(table.fCategories.begin(), table.fCategories.end()),
                            table.fCategories.end());
    const std::size_t k = table.fCategories.size();
    table.fCounts.assign(k * k, 0.0);
    const auto index = [&](double value) {
        return static_cast<std::size_t>(
            std::lower_bound(table.fCategories.begin(), table.fCategories.end(), value) -
            table.fCategories.begin());
    };
    for (std::size_t i = 0; i < first.size(); ++i) {
        table.fCounts[index(first[i]) * k + index(second[i])] += 1;
    }
    return table;
}

McNemarResult McNemar(std::span<const double> first, std::span<const double> second,
                      std::span<const double> success, std::span<const double> failure) {
    McNemarResult result;
    if (first.size() != second.size()) {
        result.fOutcome = Outcome::kUnequalLengths;
        return result;
    }
    // 1 success, 0 failure, -1 outside the categories.
    const auto classify = [&](double value) {
        if (Contains(success, value)) {
            return 1;
        }
        return failure.empty() || Contains(failure, value) ? 0 : -1;
    };
    for (std::size_t i = 0; i < first.size(); ++i) {
        const int a = classify(first[i]);
        const int b = classify(second[i]);
        if (a < 0) {
            AddDistinct(result.fFirstOutside, first[i]);
        }
        if (b < 0) {
            AddDistinct(result.fSecondOutside, second[i]);
        }
        if (a >= 0 && b >= 0) {
            result.fCounts[static_cast<std::size_t>(a)][static_cast<std::size_t>(b)] += 1;
            ++result.fTotalN;
        }
    }
    if (result.fTotalN < 2) {
        result.fOutcome = Outcome::kTooFewCases;
        return result;
    }
    const double b = result.fCounts[0][1];
    const double c = result.fCounts[1][0];
    if (b + c == 0) {
        result.fOutcome = Outcome::kAllPairsTied;
        return result;
    }
    const double excess = std::fabs(b - c) - 1.0;
    result.fStatistic = excess * excess / (b + c);
    result.fAsymptoticSig = ChiSquareUpper(result.fStatistic, 1);
    result.fExactSig = BinomialHalfTwoSided(b, b + c);
    result.fExactReported = b + c <= static_cast<double>(kMcNemarExactMax);
    return result;
}

MarginalHomogeneityResult MarginalHomogeneity(std::span<const double> first,
                                              std::span<const double> second) {
    MarginalHomogeneityResult result;
    if (!ArePairedCases(first.size(), second.size(), result)) {
        return result;
    }
    const auto finite = [](double v) { return std::isfinite(v); };
    if (!std::all_of(first.begin(), first.end(), finite) ||
        !std::all_of(second.begin(), second.end(), finite)) {
        result.fOutcome = Outcome::kNotFinite;
        return result;
    }
    result.fCrosstab = Crosstab(first, second);
    if (result.fCrosstab.fCategories.size() < 2) {
        result.fOutcome = Outcome::kOneCategory;
        return result;
    }
    // Sums over the off-diagonal cells of the table, so that the result does
    // not depend on the order of the cases.
    const std::vector<double>& categories = result.fCrosstab.fCategories;
    double observed = 0;
    double expected = 0;
    double variance = 0;
    double excess = 0; // observed - expected, summed without cancellation
    double offDiagonal = 0;
    for (std::size_t r = 0; r < categories.size(); ++r) {
        for (std::size_t c = 0; c < categories.size(); ++c) {
            const double count = result.fCrosstab.At(r, c);
            if (r == c || count == 0) {
                continue;
            }
            const double x = categories[r];
            const double y = categories[c];
            offDiagonal += count;
            observed += count * x;
            expected += count * 0.5 * (x + y);
            excess += count * 0.5 * (x - y);
            variance += count * 0.25 * (x - y) * (x - y);
        }
    }
    result.fOffDiagonalN = static_cast<std::size_t>(offDiagonal);
    if (offDiagonal == 0) {
        result.fOutcome = Outcome::kAllPairsTied;
        return result;
    }
    result.fStatistic = observed;
    result.fExpected = expected;
    result.fStandardError = std::sqrt(variance);
    result.fStandardized = excess / result.fStandardError;
    result.fAsymptoticSig = NormalTwoSided(result.fStandardized);
    return result;
}
