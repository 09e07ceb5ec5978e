// k-sample tests of independent samples and their multiple comparisons.
#include "engine/stats/IndependentKSample.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <boost/math/distributions/hypergeometric.hpp>

#include "engine/stats/Numerics.h"

namespace {

KSamples Groups(const GroupedValues& data) {
    const GroupCounts counts = CountGroups(data, 2, std::numeric_limits<std::size_t>::max());
    KSamples samples;
    samples.fOutcome = counts.fOutcome;
    samples.fSamples = counts.fSamples;
    samples.fN = counts.fN;
    samples.fTotalN = data.fValues.size();
    return samples;
}

// Mean rank of every category (kNoValue for an empty one).
std::vector<double> MeanRanks(const GroupedValues& data, const std::vector<std::size_t>& n) {
    std::vector<double> sums(n.size(), 0.0);
    for (std::size_t i = 0; i < data.fValues.size(); ++i) {
        sums[static_cast<std::size_t>(data.fGroups[i])] += data.fRanking->fRanks[i];
    }
    for (std::size_t g = 0; g < n.size(); ++g) {
        sums[g] = n[g] > 0 ? sums[g] / static_cast<double>(n[g]) : kNoValue;
    }
    return sums;
}

// Kruskal-Wallis H of categories with the given rank sums and sizes.
double KruskalWallisH(const std::vector<double>& rankSums, const std::vector<double>& sizes,
                      double n, double tieSum) {
    double sum = 0;
    const double middle = (n + 1) / 2;
    for (std::size_t g = 0; g < sizes.size(); ++g) {
        if (sizes[g] > 0) {
            const double deviation = rankSums[g] / sizes[g] - middle;
            sum += sizes[g] * deviation * deviation;
        }
    }
    const double correction = 1 - tieSum / (n * n * n - n);
    return correction > 0 ? 12 / (n * (n + 1)) * sum / correction : kNoValue;
}

// The values of every category.
std::vector<std::vector<double>> ValuesByGroup(const GroupedValues& data) {
    std::vector<std::vector<double>> values(data.fGroupCount);
    for (std::size_t i = 0; i < data.fValues.size(); ++i) {
        values[static_cast<std::size_t>(data.fGroups[i])].push_back(data.fValues[i]);
    }
    return values;
}

// A median test over some groups: counts on each side of the test value and
// Pearson's chi-square.
struct MedianTable {
    double fMedian = kNoValue;
    std::vector<std::size_t> fAbove;
    std::vector<std::size_t> fAtOrBelow;
    double fChiSquare = kNoValue; // kNoValue when every case is on one side
    double fDf = kNoValue;
    double fSig = kNoValue;
};

MedianTable MedianOfGroups(const std::vector<const std::vector<double>*>& groups,
                           std::optional<double> testValue) {
    MedianTable table;
    if (testValue) {
        table.fMedian = *testValue;
    } else {
        std::vector<double> pooled;
        for (const auto* group : groups) {
            pooled.insert(pooled.end(), group->begin(), group->end());
        }
        table.fMedian = MedianInPlace(pooled);
    }
    double above = 0;
    double below = 0;
    for (const auto* group : groups) {
        const auto count = static_cast<std::size_t>(std::count_if(
            group->begin(), group->end(), [&](double v) { return v > table.fMedian; }));
        table.fAbove.push_back(count);
        table.fAtOrBelow.push_back(group->size() - count);
        above += static_cast<double>(count);
        below += static_cast<double>(group->size() - count);
    }
    const double n = above + below;
    if (above == 0 || below == 0) {
        return table;
    }
    double chi = 0;
    for (std::size_t g = 0; g < groups.size(); ++g) {
        const double size = static_cast<double>(groups[g]->size());
        const double expectedAbove = size * above / n;
        const double expectedBelow = size * below / n;
        const double a = static_cast<double>(table.fAbove[g]) - expectedAbove;
        const double b = static_cast<double>(table.fAtOrBelow[g]) - expectedBelow;
        chi += a * a / expectedAbove + b * b / expectedBelow;
    }
    table.fChiSquare = chi;
    table.fDf = static_cast<double>(groups.size() - 1);
    table.fSig = ChiSquareUpper(chi, table.fDf);
    return table;
}

// Jonckheere-Terpstra over the categories with a position in `position`
// (-1: not taking part), by one walk over the values in ascending order.
struct JonckheereSums {
    double fJ = 0;
    double fMean = 0;
    double fVariance = 0;
};

// Sums over the blocks of tied values: t(t-1)(2t+5), t(t-1)(t-2), t(t-1).
struct TieSums {
    double fA = 0;
    double fB = 0;
    double fC = 0;
};

// J with its mean and its variance corrected for ties, for samples of the
// given sizes.
JonckheereSums Moments(double j, const std::vector<double>& sizes, const TieSums& ties) {
    double n = 0;
    double squares = 0;
    double sizeA = 0;
    double sizeB = 0;
    double sizeC = 0;
    for (const double m : sizes) {
        n += m;
        squares += m * m;
        sizeA += m * (m - 1) * (2 * m + 5);
        sizeB += m * (m - 1) * (m - 2);
        sizeC += m * (m - 1);
    }
    JonckheereSums sums;
    sums.fJ = j;
    sums.fMean = (n * n - squares) / 4;
    double variance = (n * (n - 1) * (2 * n + 5) - sizeA - ties.fA) / 72;
    if (n > 2) {
        variance += sizeB * ties.fB / (36 * n * (n - 1) * (n - 2));
    }
    if (n > 1) {
        variance += sizeC * ties.fC / (8 * n * (n - 1));
    }
    sums.fVariance = variance;
    return sums;
}

// Jonckheere-Terpstra of two samples, earlier and later in the order of the
// alternative, both ascending: one merge of the two.
JonckheereSums JonckheereOfTwo(const std::vector<double>& earlier,
                               const std::vector<double>& later) {
    double j = 0;
    double earlierBelow = 0;
    TieSums ties;
    std::size_t a = 0;
    std::size_t b = 0;
    while (a < earlier.size() || b < later.size()) {
        const double value = b == later.size() || (a < earlier.size() && earlier[a] < later[b])
                                 ? earlier[a]
                                 : later[b];
        double inEarlier = 0;
        double inLater = 0;
        for (; a < earlier.size() && earlier[a] == value; ++a) {
            inEarlier += 1;
        }
        for (; b < later.size() && later[b] == value; ++b) {
            inLater += 1;
        }
        j += inLater * (earlierBelow + 0.5 * inEarlier);
        earlierBelow += inEarlier;
        const double t = inEarlier + inLater;
        ties.fA += t * (t - 1) * (2 * t + 5);
        ties.fB += t * (t - 1) * (t - 2);
        ties.fC += t * (t - 1);
    }
    return Moments(j, {static_cast<double>(earlier.size()), static_cast<double>(later.size())},
                   ties);
}

JonckheereSums JonckheereOn(const SortedGroups& sorted, const std::vector<int>& position,
                            std::size_t positions) {
    std::vector<double> below(positions, 0.0); // cases in earlier blocks, per position
    std::vector<double> block(positions, 0.0); // cases in this block, per position
    std::vector<double> tree(positions, 0.0);  // Fenwick tree of `below`
    std::vector<int> touched;
    double j = 0;
    double tieA = 0;
    double tieB = 0;
    double tieC = 0;
    std::size_t at = 0;
    for (const std::uint32_t size : sorted.fBlockSizes) {
        touched.clear();
        double t = 0;
        for (std::uint32_t k = 0; k < size; ++k, ++at) {
            const int p = position[static_cast<std::size_t>(sorted.fGroups[at])];
            if (p < 0) {
                continue;
            }
            if (block[static_cast<std::size_t>(p)] == 0) {
                touched.push_back(p);
            }
            block[static_cast<std::size_t>(p)] += 1;
            t += 1;
        }
        // Cases of earlier positions below this block (a Fenwick tree over
        // the positions), and in this block at earlier positions.
        std::sort(touched.begin(), touched.end());
        double earlierInBlock = 0;
        for (const int p : touched) {
            double earlierBelow = 0;
            for (auto i = static_cast<std::size_t>(p); i > 0; i &= i - 1) {
                earlierBelow += tree[i - 1];
            }
            j += block[static_cast<std::size_t>(p)] * (earlierBelow + 0.5 * earlierInBlock);
            earlierInBlock += block[static_cast<std::size_t>(p)];
        }
        for (const int p : touched) {
            for (auto i = static_cast<std::size_t>(p) + 1; i <= positions; i += i & (~i + 1)) {
                tree[i - 1] += block[static_cast<std::size_t>(p)];
            }
        }
        for (const int p : touched) {
            below[static_cast<std::size_t>(p)] += block[static_cast<std::size_t>(p)];
            block[static_cast<std::size_t>(p)] = 0;
        }
        tieA += t * (t - 1) * (2 * t + 5);
        tieB += t * (t - 1) * (t - 2);
        tieC += t * (t - 1);
    }
    return Moments(j, below, {tieA, tieB, tieC});
}

} // namespace

KruskalWallisResult KruskalWallis(const GroupedValues& data) {
    KruskalWallisResult result;
    static_cast<KSamples&>(result) = Groups(data);
    if (!result.Computed()) {
        return result;
    }
    result.fMeanRank = MeanRanks(data, result.fN);
    result.fTieSum = data.fRanking->fTieSum;
    std::vector<double> sums(result.fN.size(), 0.0);
    std::vector<double> sizes(result.fN.size(), 0.0);
    for (std::size_t g = 0; g < result.fN.size(); ++g) {
        sizes[g] = static_cast<double>(result.fN[g]);
        sums[g] = result.fN[g] > 0 ? result.fMeanRank[g] * sizes[g] : 0;
    }
    const double n = static_cast<double>(result.fTotalN);
    result.fStatistic = KruskalWallisH(sums, sizes, n, result.fTieSum);
    if (std::isnan(result.fStatistic)) {
        result.fOutcome = Outcome::kNoVariance;
        return result;
    }
    result.fDf = static_cast<double>(result.fSamples.size() - 1);
    result.fSig = ChiSquareUpper(result.fStatistic, result.fDf);
    return result;
}

std::vector<ComparisonResult> KruskalWallisPairwise(const KruskalWallisResult& test) {
    if (!test.Computed()) {
        return {};
    }
    const double n = static_cast<double>(test.fTotalN);
    const double base = n * (n + 1) / 12 - test.fTieSum / (12 * (n - 1));
    return PairwiseComparisons(test.fSamples, test.fMeanRank, [&](std::size_t a, std::size_t b) {
        SampleTest t;
        t.fStatistic = test.fMeanRank[a] - test.fMeanRank[b];
        const double variance =
            base * (1 / static_cast<double>(test.fN[a]) + 1 / static_cast<double>(test.fN[b]));
        if (variance > 0) {
            t.fStdError = std::sqrt(variance);
            t.fStdStatistic = t.fStatistic / t.fStdError;
            t.fSig = NormalTwoSided(t.fStdStatistic);
        } else {
            t.fNoVariation = true;
        }
        return t;
    });
}

std::vector<ComparisonResult>
KruskalWallisSubsets(const GroupedValues& data, const KruskalWallisResult& test, double sigLevel) {
    if (!test.Computed()) {
        return {};
    }
    const SortedGroups sorted = SortGroupsByRank(data);
    const std::vector<std::size_t> order = OrderByShownValue(test.fSamples, test.fMeanRank);
    std::vector<char> member(data.fGroupCount, 0);
    return HomogeneousSubsets(
        order,
        [&](std::span<const std::size_t> members) {
            std::fill(member.begin(), member.end(), 0);
            for (const std::size_t g : members) {
                member[g] = 1;
            }
            // Ranks among the members' cases alone: walk the blocks of equal
            // values, counting the members' cases in each.
            std::vector<double> sums(data.fGroupCount, 0.0);
            std::vector<double> sizes(data.fGroupCount, 0.0);
            double position = 0;
            double tieSum = 0;
            std::size_t at = 0;
            for (const std::uint32_t size : sorted.fBlockSizes) {
                double t = 0;
                for (std::uint32_t k = 0; k < size; ++k) {
                    t += member[static_cast<std::size_t>(sorted.fGroups[at + k])];
                }
                const double rank = position + (t + 1) / 2;
                for (std::uint32_t k = 0; k < size; ++k, ++at) {
                    const auto g = static_cast<std::size_t>(sorted.fGroups[at]);
                    if (member[g]) {
                        sums[g] += rank;
                        sizes[g] += 1;
                    }
                }
                position += t;
                tieSum += t * t * t - t;
            }
            SampleTest t;
            t.fStatistic = KruskalWallisH(sums, sizes, position, tieSum);
            if (std::isnan(t.fStatistic)) {
                t.fNoVariation = true;
            } else {
                t.fSig = ChiSquareUpper(t.fStatistic, static_cast<double>(members.size() - 1));
            }
            return t;
        },
        sigLevel);
}

double FisherExact2x2(std::size_t a, std::size_t b, std::size_t c, std::size_t d) {
    // With the margins fixed, a follows the hypergeometric distribution of
    // the first column's a + c cases among the first row's a + b draws.
    const std::size_t n = a + b + c + d;
    const std::size_t row = a + b;
    const std::size_t column = a + c;
    if (n == 0) {
        return 1.0;
    }
    const boost::math::hypergeometric_distribution<double> h(column, row, n);
    const std::size_t low = row + column > n ? row + column - n : 0;
    const std::size_t high = std::min(row, column);
    // Terms farther than 12 standard deviations from the mean are below
    // 1e-30 of the largest; leave them out on large tables.
    const double nn = static_cast<double>(n);
    const double mean = static_cast<double>(row) * static_cast<double>(column) / nn;
    const double sd = nn > 1 ? std::sqrt(mean * (1 - static_cast<double>(column) / nn) *
                                         (nn - static_cast<double>(row)) / (nn - 1))
                             : 0;
    const double reach = 12 * sd + 2;
    const auto from = static_cast<std::size_t>(std::max(static_cast<double>(low), mean - reach));
    const auto to = static_cast<std::size_t>(std::min(static_cast<double>(high), mean + reach));
    // The same relative tolerance for "no more likely" as R's fisher.test.
    const double observed = boost::math::pdf(h, static_cast<unsigned>(a)) * (1 + 1e-7);
    double p = 0;
    for (std::size_t k = from; k <= to; ++k) {
        const double probability = boost::math::pdf(h, static_cast<unsigned>(k));
        if (probability <= observed) {
            p += probability;
        }
    }
    return std::min(1.0, p);
}

MedianTestResult MedianTest(const GroupedValues& data, std::optional<double> testValue) {
    MedianTestResult result;
    static_cast<KSamples&>(result) = Groups(data);
    if (!result.Computed()) {
        return result;
    }
    std::vector<std::vector<double>> values = ValuesByGroup(data);
    std::vector<const std::vector<double>*> groups;
    for (const std::size_t g : result.fSamples) {
        groups.push_back(&values[g]);
    }
    const MedianTable table = MedianOfGroups(groups, testValue);
    result.fMedian = table.fMedian;
    result.fAbove.assign(data.fGroupCount, 0);
    result.fAtOrBelow.assign(data.fGroupCount, 0);
    for (std::size_t s = 0; s < result.fSamples.size(); ++s) {
        result.fAbove[result.fSamples[s]] = table.fAbove[s];
        result.fAtOrBelow[result.fSamples[s]] = table.fAtOrBelow[s];
    }
    result.fSampleMedian.assign(data.fGroupCount, kNoValue);
    for (const std::size_t g : result.fSamples) {
        std::vector<double> copy = values[g];
        result.fSampleMedian[g] = MedianInPlace(copy);
    }
    if (std::isnan(table.fChiSquare)) {
        result.fOutcome = Outcome::kOneCategory;
        return result;
    }
    result.fChiSquare = table.fChiSquare;
    result.fDf = table.fDf;
    result.fSig = table.fSig;
    if (result.fSamples.size() == 2) {
        result.fTwoSamples = true;
        const std::size_t a = table.fAbove[0];
        const std::size_t b = table.fAbove[1];
        const std::size_t c = table.fAtOrBelow[0];
        const std::size_t d = table.fAtOrBelow[1];
        const double n = static_cast<double>(result.fTotalN);
        const double cross = std::fabs(static_cast<double>(a) * static_cast<double>(d) -
                                       static_cast<double>(b) * static_cast<double>(c));
        const double margins = static_cast<double>(a + b) * static_cast<double>(c + d) *
                               static_cast<double>(a + c) * static_cast<double>(b + d);
        result.fYatesChiSquare =
            cross > n / 2 ? n * (cross - n / 2) * (cross - n / 2) / margins : 0;
        result.fYatesSig = ChiSquareUpper(result.fYatesChiSquare, 1);
        result.fFisherSig = FisherExact2x2(a, b, c, d);
    }
    return result;
}

std::vector<ComparisonResult> MedianPairwise(const GroupedValues& data,
                                             const MedianTestResult& test,
                                             std::optional<double> testValue) {
    if (test.fSamples.size() < 2 || test.fSampleMedian.size() != data.fGroupCount) {
        return {};
    }
    const std::vector<std::vector<double>> values = ValuesByGroup(data);
    return PairwiseComparisons(
        test.fSamples, test.fSampleMedian, [&](std::size_t a, std::size_t b) {
            const MedianTable table = MedianOfGroups({&values[a], &values[b]}, testValue);
            SampleTest t;
            t.fStatistic = table.fChiSquare;
            t.fSig = table.fSig;
            if (std::isnan(table.fChiSquare)) {
                t.fNoVariation = true;
            }
            return t;
        });
}

std::vector<ComparisonResult> MedianSubsets(const GroupedValues& data, const MedianTestResult& test,
                                            std::optional<double> testValue, double sigLevel) {
    if (test.fSamples.size() < 2 || test.fSampleMedian.size() != data.fGroupCount) {
        return {};
    }
    const std::vector<std::vector<double>> values = ValuesByGroup(data);
    const std::vector<std::size_t> order = OrderByShownValue(test.fSamples, test.fSampleMedian);
    return HomogeneousSubsets(
        order,
        [&](std::span<const std::size_t> members) {
            std::vector<const std::vector<double>*> groups;
            for (const std::size_t g : members) {
                groups.push_back(&values[g]);
            }
            const MedianTable table = MedianOfGroups(groups, testValue);
            SampleTest t;
            t.fStatistic = table.fChiSquare;
            t.fSig = table.fSig;
            if (std::isnan(table.fChiSquare)) {
                t.fNoVariation = true;
            }
            return t;
        },
        sigLevel);
}

namespace {

// Positions of the categories in the order of the alternative, or -1.
std::vector<int> Positions(std::size_t groupCount, std::span<const std::size_t> inOrder) {
    std::vector<int> position(groupCount, -1);
    for (std::size_t p = 0; p < inOrder.size(); ++p) {
        position[inOrder[p]] = static_cast<int>(p);
    }
    return position;
}

// The categories of `members` in the order of the alternative.
std::vector<std::size_t> InAlternativeOrder(std::vector<std::size_t> members, bool descending) {
    std::sort(members.begin(), members.end());
    if (descending) {
        std::reverse(members.begin(), members.end());
    }
    return members;
}

SampleTest FromSums(const JonckheereSums& sums) {
    SampleTest t;
    t.fStatistic = sums.fJ;
    if (sums.fVariance > 0) {
        t.fStdError = std::sqrt(sums.fVariance);
        t.fStdStatistic = (sums.fJ - sums.fMean) / t.fStdError;
    } else {
        t.fNoVariation = true;
    }
    return t;
}

SampleTest JonckheereTest(const SortedGroups& sorted, std::size_t groupCount,
                          const std::vector<std::size_t>& inOrder) {
    return FromSums(JonckheereOn(sorted, Positions(groupCount, inOrder), inOrder.size()));
}

} // namespace

JonckheereResult JonckheereTerpstra(const GroupedValues& data, bool descending) {
    JonckheereResult result;
    static_cast<KSamples&>(result) = Groups(data);
    result.fDescending = descending;
    if (!result.Computed()) {
        return result;
    }
    result.fMeanRank = MeanRanks(data, result.fN);
    const SortedGroups sorted = SortGroupsByRank(data);
    const std::vector<std::size_t> inOrder = InAlternativeOrder(result.fSamples, descending);
    const JonckheereSums sums =
        JonckheereOn(sorted, Positions(data.fGroupCount, inOrder), inOrder.size());
    const SampleTest t = FromSums(sums);
    result.fStatistic = t.fStatistic;
    result.fMean = sums.fMean;
    if (std::isnan(t.fStdError)) {
        result.fOutcome = Outcome::kNoVariance;
        return result;
    }
    result.fStdError = t.fStdError;
    result.fStdStatistic = t.fStdStatistic;
    result.fSig = NormalTwoSided(t.fStdStatistic);
    return result;
}

std::vector<ComparisonResult> JonckheerePairwise(const GroupedValues& data,
                                                 const JonckheereResult& test) {
    if (!test.Computed()) {
        return {};
    }
    std::vector<std::vector<double>> values = ValuesByGroup(data);
    for (std::vector<double>& group : values) {
        std::sort(group.begin(), group.end());
    }
    return PairwiseComparisons(test.fSamples, test.fMeanRank, [&](std::size_t a, std::size_t b) {
        const std::vector<std::size_t> inOrder = InAlternativeOrder({a, b}, test.fDescending);
        SampleTest t = FromSums(JonckheereOfTwo(values[inOrder[0]], values[inOrder[1]]));
        if (!std::isnan(t.fStdStatistic)) {
            t.fSig = NormalUpper(t.fStdStatistic);
        }
        return t;
    });
}

std::vector<ComparisonResult> JonckheereSubsets(const GroupedValues& data,
                                                const JonckheereResult& test, double sigLevel) {
    if (!test.Computed()) {
        return {};
    }
    const SortedGroups sorted = SortGroupsByRank(data);
    const std::vector<std::size_t> order = OrderByShownValue(test.fSamples, test.fMeanRank);
    return HomogeneousSubsets(
        order,
        [&](std::span<const std::size_t> members) {
            SampleTest t = JonckheereTest(
                sorted, data.fGroupCount,
                InAlternativeOrder({members.begin(), members.end()}, test.fDescending));
            if (!std::isnan(t.fStdStatistic)) {
                t.fSig = NormalUpper(t.fStdStatistic);
            }
            return t;
        },
        sigLevel);
}
