// Pairwise Bonferroni rows and step-down homogeneous subsets.
#include "engine/stats/MultipleComparisons.h"

#include <algorithm>
#include <cmath>
#include <numeric>

double BonferroniAdjusted(double sig, std::size_t samples) {
    if (std::isnan(sig)) {
        return kNoValue;
    }
    const double k = static_cast<double>(samples);
    const double comparisons = k * (k - 1) / 2;
    return std::min(1.0, comparisons * sig);
}

double StepDownAdjusted(double sig, std::size_t subsetSize, std::size_t samples) {
    if (std::isnan(sig) || subsetSize == 0) {
        return kNoValue;
    }
    const double exponent = static_cast<double>(samples) / static_cast<double>(subsetSize);
    // 1 - (1 - sig)^e without losing a small sig to cancellation.
    return std::clamp(-std::expm1(exponent * std::log1p(-sig)), 0.0, 1.0);
}

std::vector<std::size_t> OrderByShownValue(std::span<const std::size_t> samples,
                                           std::span<const double> shownValues) {
    std::vector<std::size_t> order(samples.begin(), samples.end());
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return shownValues[a] < shownValues[b]; });
    return order;
}

std::vector<ComparisonResult> PairwiseComparisons(std::span<const std::size_t> samples,
                                                  std::span<const double> shownValues,
                                                  const PairTest& test) {
    std::vector<ComparisonResult> rows;
    const std::size_t k = samples.size();
    rows.reserve(k * (k > 0 ? k - 1 : 0) / 2);
    for (std::size_t i = 0; i < k; ++i) {
        for (std::size_t j = i + 1; j < k; ++j) {
            std::size_t first = samples[i];
            std::size_t second = samples[j];
            if (shownValues[second] < shownValues[first]) {
                std::swap(first, second);
            }
            const SampleTest result = test(first, second);
            ComparisonResult& row = rows.emplace_back();
            row.fFirst = first;
            row.fSecond = second;
            row.fStatistic = result.fStatistic;
            row.fStdError = result.fStdError;
            row.fStdStatistic = result.fStdStatistic;
            row.fSig = result.fSig;
            row.fAdjustedSig = BonferroniAdjusted(result.fSig, k);
            row.fNoVariation = result.fNoVariation;
        }
    }
    return rows;
}

std::vector<ComparisonResult> HomogeneousSubsets(std::span<const std::size_t> order,
                                                 const SubsetTest& test, double sigLevel) {
    const std::size_t k = order.size();
    std::vector<ComparisonResult> found;
    const auto covered = [&](std::size_t first, std::size_t last) {
        return std::any_of(found.begin(), found.end(), [&](const ComparisonResult& row) {
            return row.fFirst <= first && last <= row.fSecond;
        });
    };
    for (std::size_t size = k; size >= 2; --size) {
        for (std::size_t first = 0; first + size <= k; ++first) {
            const std::size_t last = first + size - 1;
            if (covered(first, last)) {
                continue;
            }
            const SampleTest result = test(order.subspan(first, size));
            const double adjusted = StepDownAdjusted(result.fSig, size, k);
            if (std::isnan(adjusted) || adjusted >= sigLevel) {
                found.push_back({first, last, result.fStatistic, result.fStdError,
                                 result.fStdStatistic, result.fSig, adjusted, result.fNoVariation});
            }
        }
    }
    for (std::size_t position = 0; position < k; ++position) {
        if (!covered(position, position)) {
            found.push_back({position, position});
        }
    }
    std::sort(found.begin(), found.end(), [](const ComparisonResult& a, const ComparisonResult& b) {
        return a.fFirst != b.fFirst ? a.fFirst < b.fFirst : a.fSecond < b.fSecond;
    });
    return found;
}
