// Chi-square goodness of fit over categories.
#include "engine/stats/OneSampleChiSquare.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "engine/stats/Distributions.h"

namespace {

std::vector<double> DistinctSorted(std::span<const double> values) {
    std::vector<double> distinct(values.begin(), values.end());
    std::sort(distinct.begin(), distinct.end());
    distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());
    return distinct;
}

} // namespace

OneSampleChiSquareResult ChiSquareGoodnessOfFit(std::span<const double> values,
                                                std::span<const double> categories,
                                                std::span<const double> expectedFrequencies) {
    OneSampleChiSquareResult result;
    result.fCategories = categories.empty()
                             ? DistinctSorted(values)
                             : std::vector<double>(categories.begin(), categories.end());
    const std::size_t k = result.fCategories.size();

    const auto finite = [](double x) { return std::isfinite(x); };
    if (!std::all_of(result.fCategories.begin(), result.fCategories.end(), finite)) {
        result.fOutcome = Outcome::kBadParameter;
        return result;
    }
    // Categories by value, to find each case's category by a binary search.
    std::vector<std::pair<double, std::size_t>> lookup(k);
    for (std::size_t i = 0; i < k; ++i) {
        lookup[i] = {result.fCategories[i], i};
    }
    std::sort(lookup.begin(), lookup.end());
    for (std::size_t i = 1; i < k; ++i) {
        if (lookup[i].first == lookup[i - 1].first) {
            result.fOutcome = Outcome::kBadParameter;
            return result;
        }
    }
    if (!expectedFrequencies.empty()) {
        const bool positive = std::all_of(expectedFrequencies.begin(), expectedFrequencies.end(),
                                          [](double f) { return f > 0 && std::isfinite(f); });
        if (expectedFrequencies.size() != k || !positive) {
            result.fOutcome = Outcome::kBadParameter;
            return result;
        }
    }

    result.fObserved.assign(k, 0.0);
    std::vector<double> outside;
    for (double v : values) {
        const auto found = std::lower_bound(
            lookup.begin(), lookup.end(), v,
            [](const std::pair<double, std::size_t>& entry, double x) { return entry.first < x; });
        if (found != lookup.end() && found->first == v) {
            result.fObserved[found->second] += 1;
            ++result.fTotalN;
        } else {
            outside.push_back(v);
        }
    }
    result.fOutsideCount = outside.size();
    result.fValuesOutside = DistinctSorted(outside);

    if (expectedFrequencies.empty()) {
        result.fProportions.assign(k, k ? 1.0 / static_cast<double>(k) : 0.0);
    } else {
        double sum = 0;
        for (double f : expectedFrequencies) {
            sum += f;
        }
        for (double f : expectedFrequencies) {
            result.fProportions.push_back(f / sum);
        }
    }
    if (k < 2) {
        result.fOutcome = Outcome::kOneCategory;
        return result;
    }
    if (result.fTotalN == 0) {
        result.fOutcome = Outcome::kNoCases;
        return result;
    }

    const double n = static_cast<double>(result.fTotalN);
    double statistic = 0;
    result.fMinimumExpected = n;
    for (std::size_t i = 0; i < k; ++i) {
        const double expected = n * result.fProportions[i];
        result.fExpected.push_back(expected);
        const double difference = result.fObserved[i] - expected;
        statistic += difference * difference / expected;
        result.fMinimumExpected = std::min(result.fMinimumExpected, expected);
        if (expected < 5) {
            ++result.fExpectedBelowFive;
        }
    }
    result.fStatistic = statistic;
    result.fDegreesOfFreedom = static_cast<double>(k - 1);
    result.fAsymptoticSig =
        boost::math::cdf(boost::math::complement(ChiSquared(result.fDegreesOfFreedom), statistic));
    return result;
}
