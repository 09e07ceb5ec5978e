// Cochran's Q, Friedman's test and Kendall's W, with pairwise comparisons
// and step-down homogeneous subsets.
#include "engine/stats/RelatedKSamples.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <numeric>

#include "engine/stats/Numerics.h"

namespace {

// Whether all columns hold n cases; sets the outcome otherwise.
template <typename Result> bool CheckColumns(RelatedColumns columns, Result& result) {
    result.fFields = columns.size();
    if (columns.size() < 2) {
        result.fOutcome = Outcome::kTooFewFields;
        return false;
    }
    result.fTotalN = columns[0].size();
    for (const auto& column : columns) {
        if (column.size() != result.fTotalN) {
            result.fOutcome = Outcome::kUnequalLengths;
            return false;
        }
    }
    if (result.fTotalN < 2) {
        result.fOutcome = Outcome::kTooFewCases;
        return false;
    }
    return true;
}

bool Contains(std::span<const double> list, double value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

// Every pair of the fields compared by the difference of their values
// times `scale`, with one standard error.
std::vector<ComparisonResult> Pairwise(const std::vector<double>& values, double scale,
                                       double standardError) {
    std::vector<std::size_t> fields(values.size());
    std::iota(fields.begin(), fields.end(), std::size_t{0});
    return PairwiseComparisons(fields, values, [&](std::size_t first, std::size_t second) {
        SampleTest test;
        test.fStatistic = (values[first] - values[second]) * scale;
        test.fStdError = standardError;
        test.fStdStatistic = test.fStatistic / standardError;
        test.fSig = NormalTwoSided(test.fStdStatistic);
        return test;
    });
}

// The step-down subsets of the fields ordered by `values`; `test` runs the
// family's test on the fields it is handed.
RelatedStepwise Stepwise(const std::vector<double>& values, double sigLevel,
                         const std::function<SampleTest(RelatedColumns)>& test,
                         RelatedColumns columns) {
    RelatedStepwise stepwise;
    std::vector<std::size_t> fields(values.size());
    std::iota(fields.begin(), fields.end(), std::size_t{0});
    stepwise.fOrder = OrderByShownValue(fields, values);
    for (std::size_t f : stepwise.fOrder) {
        stepwise.fValues.push_back(values[f]);
    }
    stepwise.fRows = HomogeneousSubsets(
        stepwise.fOrder,
        [&](std::span<const std::size_t> members) {
            std::vector<std::span<const double>> subset;
            for (std::size_t f : members) {
                subset.push_back(columns[f]);
            }
            return test(subset);
        },
        sigLevel);
    return stepwise;
}

} // namespace

FriedmanResult Friedman(RelatedColumns columns) {
    FriedmanResult result;
    if (!CheckColumns(columns, result)) {
        return result;
    }
    const std::size_t n = result.fTotalN;
    const std::size_t k = result.fFields;
    // Rank sums and rank counts are kept in doubled ranks (integers 2..2k).
    std::vector<std::uint64_t> doubledRankSums(k, 0);
    // Rank counts: a dense table of k by 2k+1 for few fields, one sorted map
    // per field for many (where the table would be too large).
    constexpr std::size_t kDenseFields = 64;
    const bool dense = k <= kDenseFields;
    std::vector<std::uint64_t> counts(dense ? k * (2 * k + 1) : 0, 0);
    std::vector<std::map<std::uint64_t, std::uint64_t>> sparse(dense ? 0 : k);
    std::vector<double> row(k);
    std::vector<std::size_t> order(k);
    std::uint64_t tieSum = 0;
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < k; ++j) {
            row[j] = columns[j][i];
            order[j] = j;
        }
        // The fields by value: insertion sort for few fields, else a full sort.
        if (dense) {
            for (std::size_t a = 1; a < k; ++a) {
                const std::size_t moving = order[a];
                std::size_t b = a;
                while (b > 0 && row[moving] < row[order[b - 1]]) {
                    order[b] = order[b - 1];
                    --b;
                }
                order[b] = moving;
            }
        } else {
            // NaN sorts last, so that the order stays strict and weak.
            std::sort(order.begin(), order.end(), [&](std::size_t x, std::size_t y) {
                return row[x] < row[y] || (!std::isnan(row[x]) && std::isnan(row[y]));
            });
        }
        for (std::size_t first = 0; first < k;) {
            std::size_t last = first + 1;
            while (last < k && row[order[last]] == row[order[first]]) {
                ++last;
            }
            const std::uint64_t doubled = first + 1 + last;
            for (std::size_t p = first; p < last; ++p) {
                doubledRankSums[order[p]] += doubled;
                if (dense) {
                    ++counts[order[p] * (2 * k + 1) + doubled];
                } else {
                    ++sparse[order[p]][doubled];
                }
            }
            const std::uint64_t t = last - first;
            tieSum += t * t * t - t;
            first = last;
        }
    }
    const double nd = static_cast<double>(n);
    const double kd = static_cast<double>(k);
    result.fTieSum = static_cast<double>(tieSum);
    double squares = 0;
    result.fMeanRanks.resize(k);
    result.fRankCounts.resize(k);
    for (std::size_t j = 0; j < k; ++j) {
        // R_j - n(k+1)/2 in halves, exactly: 2R_j - n(k+1).
        const double excess = static_cast<double>(static_cast<std::int64_t>(doubledRankSums[j]) -
                                                  static_cast<std::int64_t>(n * (k + 1)));
        squares += 0.25 * excess * excess;
        result.fMeanRanks[j] = 0.5 * static_cast<double>(doubledRankSums[j]) / nd;
        if (!dense) {
            for (const auto& [doubled, c] : sparse[j]) {
                result.fRankCounts[j].push_back(
                    {0.5 * static_cast<double>(doubled), static_cast<double>(c)});
            }
            continue;
        }
        for (std::size_t doubled = 2; doubled <= 2 * k; ++doubled) {
            const std::uint64_t c = counts[j * (2 * k + 1) + doubled];
            if (c > 0) {
                result.fRankCounts[j].push_back(
                    {0.5 * static_cast<double>(doubled), static_cast<double>(c)});
            }
        }
    }
    const double denominator = nd * kd * (kd + 1) - result.fTieSum / (kd - 1);
    result.fDegreesOfFreedom = kd - 1;
    if (!(denominator > 0)) {
        result.fOutcome = Outcome::kNoVariance;
        return result;
    }
    result.fStatistic = 12.0 * squares / denominator;
    result.fAsymptoticSig = ChiSquareUpper(result.fStatistic, kd - 1);
    result.fKendallW = result.fStatistic / (nd * (kd - 1));
    return result;
}

CochranResult CochranQ(RelatedColumns columns, std::span<const double> success) {
    CochranResult result;
    if (!CheckColumns(columns, result)) {
        return result;
    }
    const std::size_t n = result.fTotalN;
    const std::size_t k = result.fFields;
    std::vector<std::uint64_t> fieldSuccesses(k, 0);
    std::uint64_t rowSquares = 0;
    for (std::size_t i = 0; i < n; ++i) {
        std::uint64_t r = 0;
        for (std::size_t j = 0; j < k; ++j) {
            if (Contains(success, columns[j][i])) {
                ++fieldSuccesses[j];
                ++r;
            }
        }
        rowSquares += r * r;
    }
    std::uint64_t total = 0;
    std::uint64_t fieldSquares = 0;
    for (std::uint64_t t : fieldSuccesses) {
        total += t;
        fieldSquares += t * t;
        result.fSuccesses.push_back(static_cast<double>(t));
    }
    const double kd = static_cast<double>(k);
    const double nd = static_cast<double>(n);
    result.fDegreesOfFreedom = kd - 1;
    // Both sums are exact integers; kN - sum R_i^2 = sum R_i (k - R_i) >= 0.
    const double denominator = static_cast<double>(k * total - rowSquares);
    if (!(denominator > 0)) {
        result.fOutcome = Outcome::kNoVariance;
        return result;
    }
    const double numerator = static_cast<double>(k * fieldSquares - total * total);
    result.fStatistic = (kd - 1) * numerator / denominator;
    result.fAsymptoticSig = ChiSquareUpper(result.fStatistic, kd - 1);
    result.fPairStandardError = std::sqrt(2.0 * denominator / (nd * nd * kd * (kd - 1)));
    return result;
}

std::vector<ComparisonResult> FriedmanPairwise(const FriedmanResult& result) {
    if (!result.Computed()) {
        return {};
    }
    const double k = static_cast<double>(result.fFields);
    const double n = static_cast<double>(result.fTotalN);
    return Pairwise(result.fMeanRanks, 1.0, std::sqrt(k * (k + 1) / (6.0 * n)));
}

std::vector<ComparisonResult> CochranPairwise(const CochranResult& result) {
    if (!result.Computed()) {
        return {};
    }
    return Pairwise(result.fSuccesses, 1.0 / static_cast<double>(result.fTotalN),
                    result.fPairStandardError);
}

// Fields that agree in every case cannot be told apart: statistic 0,
// significance 1.
static SampleTest SubsetOutcome(double statistic, double sig, bool computed) {
    SampleTest test;
    test.fStatistic = computed ? statistic : 0.0;
    test.fSig = computed ? sig : 1.0;
    return test;
}

RelatedStepwise FriedmanStepwise(RelatedColumns columns, const FriedmanResult& result,
                                 double sigLevel) {
    if (!result.Computed()) {
        return {};
    }
    return Stepwise(
        result.fMeanRanks, sigLevel,
        [](RelatedColumns subset) {
            const FriedmanResult part = Friedman(subset);
            return SubsetOutcome(part.fStatistic, part.fAsymptoticSig, part.Computed());
        },
        columns);
}

RelatedStepwise CochranStepwise(RelatedColumns columns, std::span<const double> success,
                                const CochranResult& result, double sigLevel) {
    if (!result.Computed()) {
        return {};
    }
    return Stepwise(
        result.fSuccesses, sigLevel,
        [&](RelatedColumns subset) {
            const CochranResult part = CochranQ(subset, success);
            return SubsetOutcome(part.fStatistic, part.fAsymptoticSig, part.Computed());
        },
        columns);
}
