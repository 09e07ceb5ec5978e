// The independent-samples tests where R is no reference: the runs and span
// distributions by complete enumeration and simulation, Jonckheere-Terpstra's
// moments against its permutation distribution, the order statistics of the
// differences by brute force, properties every test must keep, and why each
// test stops. Their agreement with R: test_reference_independent.cpp.
#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <numeric>

#include <gtest/gtest.h>

#include "engine/IndependentTestData.h"
#include "engine/stats/IndependentKSample.h"
#include "engine/stats/IndependentTwoSample.h"

TEST(IndependentTwoSample, KthSmallestDifferenceIsTheOrderStatistic) {
    std::mt19937 random(5);
    for (int trial = 0; trial < 50; ++trial) {
        std::uniform_int_distribution<int> size(1, 12);
        std::vector<double> x(static_cast<std::size_t>(size(random)));
        std::vector<double> y(static_cast<std::size_t>(size(random)));
        std::uniform_int_distribution<int> value(-20, 20);
        for (double& v : x) {
            v = value(random) * (trial % 2 ? 0.1 : 1e200);
        }
        for (double& v : y) {
            v = value(random) * (trial % 2 ? 0.1 : 1e200);
        }
        std::sort(x.begin(), x.end());
        std::sort(y.begin(), y.end());
        std::vector<double> all;
        for (const double b : y) {
            for (const double a : x) {
                all.push_back(b - a);
            }
        }
        std::sort(all.begin(), all.end());
        for (std::size_t k = 1; k <= all.size(); ++k) {
            ASSERT_EQ(KthSmallestDifference(x, y, k), all[k - 1]) << "k = " << k;
        }
        EXPECT_TRUE(std::isnan(KthSmallestDifference(x, y, all.size() + 1)));
    }
}

namespace {

// Calls visit(labels) for every way of giving `ones` of `n` positions the
// label 1 (the rest 0).
void ForEachSplit(std::size_t n, std::size_t ones,
                  const std::function<void(const std::vector<int>&)>& visit) {
    std::vector<int> labels(n, 0);
    std::fill(labels.end() - static_cast<long>(ones), labels.end(), 1);
    do {
        visit(labels);
    } while (std::next_permutation(labels.begin(), labels.end()));
}

std::size_t CountRuns(const std::vector<int>& labels) {
    std::size_t runs = labels.empty() ? 0 : 1;
    for (std::size_t i = 1; i < labels.size(); ++i) {
        runs += labels[i] != labels[i - 1];
    }
    return runs;
}

} // namespace

TEST(IndependentTwoSample, RunsDistributionMatchesEnumeration) {
    for (std::size_t n1 = 1; n1 <= 7; ++n1) {
        for (std::size_t n2 = 1; n2 <= 7; ++n2) {
            std::map<std::size_t, double> count;
            double total = 0;
            ForEachSplit(n1 + n2, n2, [&](const std::vector<int>& labels) {
                count[CountRuns(labels)] += 1;
                total += 1;
            });
            double cumulative = 0;
            for (std::size_t r = 1; r <= n1 + n2; ++r) {
                cumulative += count[r];
                EXPECT_NEAR(RunsLowerTail(static_cast<double>(r), n1, n2), cumulative / total,
                            1e-12)
                    << n1 << " " << n2 << " r = " << r;
            }
        }
    }
}

TEST(IndependentTwoSample, WaldWolfowitzRunsBoundsMatchEveryOrderingOfTies) {
    std::mt19937 random(3);
    for (int trial = 0; trial < 200; ++trial) {
        const std::size_t n = 2 + random() % 9;
        std::vector<double> values(n);
        std::vector<int> groups(n);
        for (std::size_t i = 0; i < n; ++i) {
            values[i] = static_cast<double>(random() % 4);
            groups[i] = static_cast<int>(i < 1 ? 0 : i < 2 ? 1 : random() % 2);
        }
        const Grouped data(values, groups, 2);
        const WaldWolfowitzResult ours = WaldWolfowitz(data.View());
        ASSERT_TRUE(ours.Computed()) << OutcomeText(ours.fOutcome);
        // Every order of the cases that sorts the values: permute the cases
        // and keep the orders that are sorted.
        std::vector<std::size_t> order(n);
        std::iota(order.begin(), order.end(), 0);
        std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
            return values[a] != values[b] ? values[a] < values[b] : a < b;
        });
        std::size_t fewest = n + 1;
        std::size_t most = 0;
        // Permute within blocks of equal values by permuting the labels of each block.
        std::vector<int> labels(n);
        for (std::size_t i = 0; i < n; ++i) {
            labels[i] = groups[order[i]];
        }
        std::vector<std::pair<std::size_t, std::size_t>> blocks;
        for (std::size_t i = 0; i < n;) {
            std::size_t j = i;
            while (j < n && values[order[j]] == values[order[i]]) {
                ++j;
            }
            std::sort(labels.begin() + static_cast<long>(i), labels.begin() + static_cast<long>(j));
            blocks.emplace_back(i, j);
            i = j;
        }
        std::function<void(std::size_t)> walk = [&](std::size_t b) {
            if (b == blocks.size()) {
                fewest = std::min(fewest, CountRuns(labels));
                most = std::max(most, CountRuns(labels));
                return;
            }
            const auto first = labels.begin() + static_cast<long>(blocks[b].first);
            const auto last = labels.begin() + static_cast<long>(blocks[b].second);
            do {
                walk(b + 1);
            } while (std::next_permutation(first, last));
        };
        walk(0);
        EXPECT_EQ(ours.fMinimum.fRuns, static_cast<double>(fewest)) << "trial " << trial;
        EXPECT_EQ(ours.fMaximum.fRuns, static_cast<double>(most)) << "trial " << trial;
    }
}

TEST(IndependentTwoSample, MosesSpanDistributionMatchesEnumeration) {
    for (std::size_t m = 2; m <= 8; ++m) {
        for (std::size_t n = 1; n <= 7; ++n) {
            for (std::size_t h = 0; 2 * h + 2 <= m; ++h) {
                std::map<std::size_t, double> count;
                double total = 0;
                ForEachSplit(m + n, m, [&](const std::vector<int>& labels) {
                    std::vector<std::size_t> control;
                    for (std::size_t i = 0; i < labels.size(); ++i) {
                        if (labels[i] == 1) {
                            control.push_back(i + 1);
                        }
                    }
                    count[control[m - 1 - h] - control[h] + 1] += 1;
                    total += 1;
                });
                double cumulative = 0;
                for (std::size_t s = 1; s <= m + n; ++s) {
                    cumulative += count[s];
                    EXPECT_NEAR(MosesLowerTail(static_cast<double>(s), m, n, h), cumulative / total,
                                1e-12)
                        << "m " << m << " n " << n << " h " << h << " span " << s;
                }
            }
        }
    }
}

TEST(IndependentTwoSample, MosesSpansAndTrimming) {
    // Control group 1 holds ranks 1, 2, 6, 9, 10 of ten cases.
    const Grouped data({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, {1, 1, 0, 0, 0, 1, 0, 0, 1, 1}, 2);
    const MosesResult byCount = Moses(data.View(), 1, {false, 1});
    ASSERT_TRUE(byCount.Computed());
    EXPECT_EQ(byCount.fControl, 1u);
    EXPECT_EQ(byCount.fExperimental, 0u);
    EXPECT_EQ(byCount.fObservedSpan, 10.0);
    EXPECT_EQ(byCount.fTrimmedSpan, 8.0); // ranks 2 .. 9
    EXPECT_NEAR(byCount.fObservedSig, MosesLowerTail(10, 5, 5, 0), 0);
    EXPECT_EQ(byCount.fObservedSig, 1.0);
    const MosesResult bySample = Moses(data.View(), 1, {});
    EXPECT_EQ(bySample.fTrimmed, 1u); // 5% of five, at least one
    // Trimming two from each end of five leaves one control case: no test.
    const MosesResult tooMany = Moses(data.View(), 1, {false, 2});
    EXPECT_FALSE(tooMany.Computed());
    EXPECT_EQ(tooMany.fControlCases, 5u);
}

TEST(IndependentTwoSample, CannotComputeSaysWhy) {
    const Grouped three({1, 2, 3, 4}, {0, 1, 2, 2}, 3);
    const Grouped one({1, 2, 3}, {1, 1, 1}, 2);
    const Grouped tied({5, 5, 5, 5}, {0, 1, 0, 1}, 2);
    const Grouped empty({}, {}, 2);
    const Grouped badCode({1, 2}, {0, 3}, 2);
    for (const Grouped* data : {&three, &one, &empty, &badCode}) {
        const MannWhitneyResult mw = MannWhitney(data->View());
        EXPECT_FALSE(mw.Computed());
        EXPECT_FALSE(KolmogorovSmirnovTwoSample(data->View()).Computed());
        EXPECT_FALSE(WaldWolfowitz(data->View()).Computed());
        EXPECT_FALSE(Moses(data->View(), 0, {}).Computed());
        EXPECT_FALSE(HodgesLehmann(data->View(), 0.95).Computed());
    }
    EXPECT_EQ(MannWhitney(three.View()).fOutcome, Outcome::kTooManyGroups);
    EXPECT_EQ(MannWhitney(one.View()).fOutcome, Outcome::kTooFewGroups);
    EXPECT_FALSE(MannWhitney(tied.View()).Computed());
    // All tied: the distributions cannot differ, and nothing is undefined.
    const KolmogorovSmirnovResult ks = KolmogorovSmirnovTwoSample(tied.View());
    EXPECT_TRUE(ks.Computed());
    EXPECT_EQ(ks.fAbsolute, 0.0);
    EXPECT_EQ(ks.fAsymptoticSig, 1.0);
    const WaldWolfowitzResult runs = WaldWolfowitz(tied.View());
    EXPECT_EQ(runs.fMinimum.fRuns, 2.0);
    EXPECT_EQ(runs.fMaximum.fRuns, 4.0);
    EXPECT_TRUE(runs.fTiesBetweenGroups);
    const Grouped single({1, 2}, {0, 1}, 2);
    EXPECT_FALSE(HodgesLehmann(single.View(), 0.95).fHasInterval);
    EXPECT_EQ(HodgesLehmann(single.View(), 0.95).fEstimate, 1.0);
}

// Larger samples than enumeration reaches: the exact tails against seeded
// simulation of random orderings (200000 draws; the tolerance is five
// standard errors of a simulated proportion).
TEST(IndependentTwoSample, RunsAndMosesTailsMatchSimulation) {
    std::mt19937_64 random(424242);
    constexpr int kDraws = 200000;
    const auto tolerance = [](double p) { return 5 * std::sqrt(p * (1 - p) / kDraws) + 1e-4; };
    {
        const std::size_t n1 = 40;
        const std::size_t n2 = 55;
        std::vector<int> labels(n1 + n2, 0);
        std::fill(labels.begin() + n1, labels.end(), 1);
        std::map<std::size_t, double> count;
        for (int draw = 0; draw < kDraws; ++draw) {
            std::shuffle(labels.begin(), labels.end(), random);
            count[CountRuns(labels)] += 1;
        }
        for (const double r : {40.0, 44.0, 47.0, 50.0}) {
            double below = 0;
            for (const auto& [runs, c] : count) {
                below += runs <= r ? c : 0;
            }
            const double p = below / kDraws;
            EXPECT_NEAR(RunsLowerTail(r, n1, n2), p, tolerance(p)) << "runs " << r;
        }
    }
    {
        const std::size_t m = 30;
        const std::size_t n = 45;
        const std::size_t h = 2;
        std::vector<int> labels(m + n, 0);
        std::fill(labels.begin(), labels.begin() + m, 1);
        std::map<std::size_t, double> count;
        for (int draw = 0; draw < kDraws; ++draw) {
            std::shuffle(labels.begin(), labels.end(), random);
            std::vector<std::size_t> control;
            for (std::size_t i = 0; i < labels.size(); ++i) {
                if (labels[i] == 1) {
                    control.push_back(i + 1);
                }
            }
            count[control[m - 1 - h] - control[h] + 1] += 1;
        }
        for (const double s : {50.0, 55.0, 60.0, 65.0}) {
            double below = 0;
            for (const auto& [span, c] : count) {
                below += span <= s ? c : 0;
            }
            const double p = below / kDraws;
            EXPECT_NEAR(MosesLowerTail(s, m, n, h), p, tolerance(p)) << "span " << s;
        }
    }
}

namespace {

// J by its definition: over pairs of groups earlier < later in `order`, the
// pairs of cases with the earlier case smaller, ties counting one half.
double JonckheereByDefinition(const std::vector<double>& values, const std::vector<int>& groups,
                              const std::vector<int>& order) {
    std::vector<int> position(order.size() + 8, -1);
    for (std::size_t p = 0; p < order.size(); ++p) {
        position[static_cast<std::size_t>(order[p])] = static_cast<int>(p);
    }
    double j = 0;
    for (std::size_t a = 0; a < values.size(); ++a) {
        for (std::size_t b = 0; b < values.size(); ++b) {
            const int pa = position[static_cast<std::size_t>(groups[a])];
            const int pb = position[static_cast<std::size_t>(groups[b])];
            if (pa >= 0 && pb >= 0 && pa < pb) {
                j += values[a] < values[b] ? 1 : values[a] == values[b] ? 0.5 : 0;
            }
        }
    }
    return j;
}

// Mean and variance of J over every assignment of the group labels to the
// values (the permutation distribution the test's moments describe).
std::pair<double, double> JonckheerePermutationMoments(const std::vector<double>& values,
                                                       std::vector<int> groups,
                                                       const std::vector<int>& order) {
    std::sort(groups.begin(), groups.end());
    double count = 0;
    double sum = 0;
    double squares = 0;
    do {
        const double j = JonckheereByDefinition(values, groups, order);
        count += 1;
        sum += j;
        squares += j * j;
    } while (std::next_permutation(groups.begin(), groups.end()));
    const double mean = sum / count;
    return {mean, squares / count - mean * mean};
}

} // namespace

TEST(IndependentKSample, JonckheereMomentsAreThoseOfThePermutationDistribution) {
    const std::vector<std::pair<std::vector<double>, std::vector<int>>> cases{
        {{1, 2, 2, 3, 5, 5, 5}, {0, 1, 2, 0, 2, 1, 2}},
        {{4, 1, 4, 2, 2, 7, 1, 4, 3, 2}, {0, 1, 2, 3, 0, 1, 2, 3, 3, 1}},
        {{3, 3, 3, 3, 1, 9}, {1, 0, 1, 0, 2, 2}},
        {{0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 7.5}, {2, 2, 0, 1, 0, 1, 2, 0}},
    };
    for (const auto& [values, groups] : cases) {
        const int k = *std::max_element(groups.begin(), groups.end()) + 1;
        const Grouped data(values, groups, static_cast<std::size_t>(k));
        for (const bool descending : {false, true}) {
            std::vector<int> order(static_cast<std::size_t>(k));
            std::iota(order.begin(), order.end(), 0);
            if (descending) {
                std::reverse(order.begin(), order.end());
            }
            const JonckheereResult ours = JonckheereTerpstra(data.View(), descending);
            ASSERT_TRUE(ours.Computed()) << OutcomeText(ours.fOutcome);
            const auto [mean, variance] = JonckheerePermutationMoments(values, groups, order);
            EXPECT_NEAR(ours.fStatistic, JonckheereByDefinition(values, groups, order), 1e-12);
            EXPECT_NEAR(ours.fMean, mean, 1e-9);
            EXPECT_NEAR(ours.fStdError * ours.fStdError, variance, 1e-9);
            // Each pair: the two-sample test in the order of the alternative.
            for (const ComparisonResult& row : JonckheerePairwise(data.View(), ours)) {
                std::vector<int> pair{static_cast<int>(row.fFirst), static_cast<int>(row.fSecond)};
                std::sort(pair.begin(), pair.end());
                if (descending) {
                    std::reverse(pair.begin(), pair.end());
                }
                std::vector<double> pv;
                std::vector<int> pg;
                for (std::size_t i = 0; i < values.size(); ++i) {
                    if (groups[i] == pair[0] || groups[i] == pair[1]) {
                        pv.push_back(values[i]);
                        pg.push_back(groups[i]);
                    }
                }
                const auto [pm, pvar] = JonckheerePermutationMoments(pv, pg, pair);
                EXPECT_NEAR(row.fStatistic, JonckheereByDefinition(pv, pg, pair), 1e-12);
                if (pvar > 0) {
                    EXPECT_NEAR(row.fStdError * row.fStdError, pvar, 1e-9);
                    EXPECT_NEAR(row.fStdStatistic, (row.fStatistic - pm) / std::sqrt(pvar), 1e-9);
                }
            }
        }
    }
}

TEST(IndependentKSample, JonckheereOfTwoGroupsIsMannWhitney) {
    std::mt19937 random(8);
    const Grouped data = RandomGroups(random, {15, 18}, 0.3, 0.5);
    const JonckheereResult jt = JonckheereTerpstra(data.View(), false);
    const MannWhitneyResult mw = MannWhitney(data.View());
    EXPECT_NEAR(jt.fStatistic, mw.fU, 1e-9);
    EXPECT_NEAR(jt.fStdError, mw.fStdError, 1e-9);
    EXPECT_NEAR(jt.fSig, mw.fAsymptoticSig, 1e-12);
}

namespace {

Grouped Relabelled(const Grouped& data, const std::vector<int>& newCode, double shift) {
    std::vector<double> values = data.fValues;
    for (double& v : values) {
        v += shift;
    }
    std::vector<int> groups;
    for (const int g : data.fGroups) {
        groups.push_back(newCode[static_cast<std::size_t>(g)]);
    }
    return Grouped(values, groups, data.fGroupCount);
}

} // namespace

TEST(IndependentKSample, RelabellingAndShiftingChangeNothing) {
    std::mt19937 random(99);
    const Grouped data = RandomGroups(random, {20, 25, 15, 30}, 0.3, 1.0);
    const Grouped moved = Relabelled(data, {2, 0, 3, 1}, 1000);
    const KruskalWallisResult a = KruskalWallis(data.View());
    const KruskalWallisResult b = KruskalWallis(moved.View());
    EXPECT_NEAR(a.fStatistic, b.fStatistic, 1e-12);
    EXPECT_EQ(a.fSig, b.fSig);
    const MedianTestResult ma = MedianTest(data.View(), std::nullopt);
    const MedianTestResult mb = MedianTest(moved.View(), std::nullopt);
    EXPECT_NEAR(ma.fChiSquare, mb.fChiSquare, 1e-12);
    EXPECT_EQ(ma.fMedian + 1000, mb.fMedian);
    // Same subsets of the same groups.
    const auto sa = KruskalWallisSubsets(data.View(), a, 0.05);
    const auto sb = KruskalWallisSubsets(moved.View(), b, 0.05);
    ASSERT_EQ(sa.size(), sb.size());
    for (std::size_t i = 0; i < sa.size(); ++i) {
        EXPECT_EQ(sa[i].fFirst, sb[i].fFirst);
        EXPECT_EQ(sa[i].fSecond, sb[i].fSecond);
    }
    // Jonckheere-Terpstra descending is ascending over the reversed categories.
    const Grouped reversed = Relabelled(data, {3, 2, 1, 0}, 0);
    EXPECT_NEAR(JonckheereTerpstra(data.View(), true).fStatistic,
                JonckheereTerpstra(reversed.View(), false).fStatistic, 1e-9);
    // Two samples swapped: U becomes n1 n2 - U, significances stay.
    const Grouped two = RandomGroups(random, {9, 12}, 0.5, 0.5);
    const Grouped swapped = Relabelled(two, {1, 0}, -3.5);
    const MannWhitneyResult u1 = MannWhitney(two.View());
    const MannWhitneyResult u2 = MannWhitney(swapped.View());
    EXPECT_NEAR(u1.fU, 9.0 * 12.0 - u2.fU, 1e-12);
    EXPECT_NEAR(u1.fAsymptoticSig, u2.fAsymptoticSig, 1e-14);
    EXPECT_NEAR(u1.fExactSig, u2.fExactSig, 1e-14);
    EXPECT_NEAR(KolmogorovSmirnovTwoSample(two.View()).fAbsolute,
                KolmogorovSmirnovTwoSample(swapped.View()).fAbsolute, 1e-14);
    EXPECT_EQ(WaldWolfowitz(two.View()).fMaximum.fRuns,
              WaldWolfowitz(swapped.View()).fMaximum.fRuns);
    EXPECT_NEAR(HodgesLehmann(two.View(), 0.9).fEstimate,
                -HodgesLehmann(swapped.View(), 0.9).fEstimate, 1e-12);
}

TEST(IndependentKSample, CannotComputeSaysWhy) {
    const Grouped one({1, 2, 3}, {1, 1, 1}, 3);
    const Grouped tied({4, 4, 4, 4}, {0, 1, 2, 0}, 3);
    const Grouped empty({}, {}, 3);
    for (const Grouped* data : {&one, &empty}) {
        EXPECT_FALSE(KruskalWallis(data->View()).Computed());
        EXPECT_FALSE(MedianTest(data->View(), std::nullopt).Computed());
        EXPECT_FALSE(JonckheereTerpstra(data->View(), false).Computed());
        EXPECT_NE(KruskalWallis(data->View()).fOutcome, Outcome::kComputed);
    }
    const KruskalWallisResult kw = KruskalWallis(tied.View());
    EXPECT_FALSE(kw.Computed());
    EXPECT_EQ(kw.fOutcome, Outcome::kNoVariance);
    EXPECT_TRUE(KruskalWallisPairwise(kw).empty());
    const MedianTestResult median = MedianTest(tied.View(), std::nullopt);
    EXPECT_FALSE(median.Computed());
    EXPECT_EQ(median.fAtOrBelow[0], 2u); // the counts are still there for the charts
    // A given test value above every case.
    const Grouped some({1, 2, 3, 4, 5, 6}, {0, 1, 2, 0, 1, 2}, 3);
    EXPECT_FALSE(MedianTest(some.View(), 10.0).Computed());
    const MedianTestResult at3 = MedianTest(some.View(), 3.0);
    EXPECT_TRUE(at3.Computed());
    EXPECT_EQ(at3.fMedian, 3.0);
    // A pair with every case on one side of its median carries a message.
    const Grouped sided({1, 1, 1, 1, 5, 9}, {0, 0, 1, 1, 2, 2}, 3);
    const MedianTestResult s = MedianTest(sided.View(), std::nullopt);
    const auto rows = MedianPairwise(sided.View(), s, std::nullopt);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_TRUE(rows[0].fNoVariation);
    EXPECT_TRUE(std::isnan(rows[0].fSig));
    EXPECT_TRUE(std::isnan(rows[0].fAdjustedSig));
}

// On a larger sample with ties, the moments of J under random relabelling
// (seeded simulation) agree with the tie-corrected mean and variance.
TEST(IndependentKSample, JonckheereMomentsMatchSimulation) {
    std::mt19937 random(77);
    const Grouped data = RandomGroups(random, {30, 25, 40, 35}, 0.0, 0.5);
    const JonckheereResult ours = JonckheereTerpstra(data.View(), false);
    ASSERT_TRUE(ours.Computed());
    std::vector<int> groups = data.fGroups;
    constexpr int kDraws = 20000;
    double sum = 0;
    double squares = 0;
    for (int draw = 0; draw < kDraws; ++draw) {
        std::shuffle(groups.begin(), groups.end(), random);
        const Grouped shuffled(data.fValues, groups, data.fGroupCount);
        const double j = JonckheereTerpstra(shuffled.View(), false).fStatistic;
        sum += j;
        squares += j * j;
    }
    const double mean = sum / kDraws;
    const double variance = squares / kDraws - mean * mean;
    const double sd = ours.fStdError;
    EXPECT_NEAR(mean, ours.fMean, 5 * sd / std::sqrt(kDraws));
    // The variance of a sample variance of a near-normal statistic: 2 sd^4 / n.
    EXPECT_NEAR(variance, sd * sd, 5 * sd * sd * std::sqrt(2.0 / kDraws));
}
