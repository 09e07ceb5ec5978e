// Pairwise Bonferroni rows and step-down homogeneous subsets, checked against
// their definitions written out independently of the implementation.
#include "engine/stats/MultipleComparisons.h"

#include <cmath>
#include <map>
#include <random>
#include <set>
#include <utility>

#include <gtest/gtest.h>

TEST(MultipleComparisons, PairsAreOrientedBySmallerValueAndAdjustedByBonferroni) {
    const std::vector<double> shown{5.0, 1.0, 3.0, 1.0, 9.0};
    const std::vector<std::size_t> samples{0, 1, 2, 3, 4};
    std::set<std::pair<std::size_t, std::size_t>> seen;
    const auto rows = PairwiseComparisons(samples, shown, [&](std::size_t a, std::size_t b) {
        SampleTest t;
        t.fStatistic = shown[a] - shown[b];
        t.fSig = 0.001 * static_cast<double>(a + 10 * b + 1);
        t.fNoVariation = a == 1 && b == 3;
        return t;
    });
    ASSERT_EQ(rows.size(), 10u);
    for (const ComparisonResult& row : rows) {
        EXPECT_LE(shown[row.fFirst], shown[row.fSecond]);
        EXPECT_LE(row.fStatistic, 0.0);
        EXPECT_EQ(row.fAdjustedSig, std::min(1.0, 10 * row.fSig));
        seen.insert(std::minmax(row.fFirst, row.fSecond));
    }
    EXPECT_EQ(seen.size(), 10u);
    // Equal shown values keep the order of the sample list.
    EXPECT_EQ(rows[5].fFirst, 1u);
    EXPECT_EQ(rows[5].fSecond, 3u);
    EXPECT_TRUE(rows[5].fNoVariation);
    EXPECT_EQ(BonferroniAdjusted(0.3, 4), 1.0);
    EXPECT_TRUE(std::isnan(BonferroniAdjusted(kNoValue, 4)));
    EXPECT_TRUE(PairwiseComparisons({}, shown, nullptr).empty());
}

TEST(MultipleComparisons, StepDownAdjustment) {
    EXPECT_DOUBLE_EQ(StepDownAdjusted(0.2, 4, 4), 0.2);
    EXPECT_DOUBLE_EQ(StepDownAdjusted(0.2, 2, 4), 1 - 0.8 * 0.8);
    EXPECT_NEAR(StepDownAdjusted(1e-18, 2, 6), 3e-18, 1e-30);
    EXPECT_EQ(StepDownAdjusted(1.0, 3, 7), 1.0);
    EXPECT_EQ(StepDownAdjusted(0.0, 3, 7), 0.0);
}

TEST(MultipleComparisons, OrderIsStableByShownValue) {
    const std::vector<double> shown{2.0, 1.0, 2.0, 0.5};
    const std::vector<std::size_t> samples{0, 1, 2, 3};
    EXPECT_EQ(OrderByShownValue(samples, shown), (std::vector<std::size_t>{3, 1, 0, 2}));
}

// The subsets the step-down procedure reports, by their definition: a set of
// consecutive positions is reported when it is accepted and no larger set of
// consecutive positions that contains it is accepted; positions in no
// reported set stand alone.
static std::set<std::pair<std::size_t, std::size_t>>
ReportedByDefinition(std::size_t k,
                     const std::map<std::pair<std::size_t, std::size_t>, bool>& accept) {
    std::set<std::pair<std::size_t, std::size_t>> reported;
    for (std::size_t first = 0; first < k; ++first) {
        for (std::size_t last = first + 1; last < k; ++last) {
            if (!accept.at({first, last})) {
                continue;
            }
            bool superset = false;
            for (std::size_t a = 0; a <= first; ++a) {
                for (std::size_t b = last; b < k; ++b) {
                    if ((a != first || b != last) && accept.at({a, b})) {
                        superset = true;
                    }
                }
            }
            if (!superset) {
                reported.insert({first, last});
            }
        }
    }
    for (std::size_t p = 0; p < k; ++p) {
        bool inSome = false;
        for (const auto& [a, b] : reported) {
            inSome = inSome || (a <= p && p <= b);
        }
        if (!inSome) {
            reported.insert({p, p});
        }
    }
    return reported;
}

TEST(MultipleComparisons, StepDownSubsetsMatchTheirDefinition) {
    std::mt19937 random(11);
    for (int trial = 0; trial < 300; ++trial) {
        const std::size_t k = 1 + random() % 7;
        std::vector<std::size_t> order(k);
        for (std::size_t i = 0; i < k; ++i) {
            order[i] = (i * 5 + 3) % 11; // sample indices unrelated to positions
        }
        std::map<std::size_t, std::size_t> positionOf;
        for (std::size_t i = 0; i < k; ++i) {
            positionOf[order[i]] = i;
        }
        std::map<std::pair<std::size_t, std::size_t>, double> sig;
        std::map<std::pair<std::size_t, std::size_t>, bool> accept;
        for (std::size_t first = 0; first < k; ++first) {
            for (std::size_t last = first + 1; last < k; ++last) {
                const double s = std::uniform_real_distribution<double>(0, 0.3)(random);
                sig[{first, last}] = s;
                accept[{first, last}] = StepDownAdjusted(s, last - first + 1, k) >= 0.05;
            }
        }
        int tests = 0;
        const auto rows = HomogeneousSubsets(
            order,
            [&](std::span<const std::size_t> members) {
                ++tests;
                SampleTest t;
                t.fSig = sig.at({positionOf.at(members.front()), positionOf.at(members.back())});
                t.fStatistic = static_cast<double>(members.size());
                return t;
            },
            0.05);
        std::set<std::pair<std::size_t, std::size_t>> got;
        for (const ComparisonResult& row : rows) {
            got.insert({row.fFirst, row.fSecond});
            if (row.fFirst == row.fSecond) {
                EXPECT_TRUE(std::isnan(row.fSig));
            } else {
                EXPECT_EQ(row.fSig, sig.at({row.fFirst, row.fSecond}));
                EXPECT_EQ(row.fStatistic, static_cast<double>(row.fSecond - row.fFirst + 1));
                EXPECT_GE(row.fAdjustedSig, 0.05);
            }
        }
        EXPECT_EQ(got, ReportedByDefinition(k, accept)) << "trial " << trial;
        EXPECT_EQ(got.size(), rows.size());
        EXPECT_TRUE(std::is_sorted(rows.begin(), rows.end(), [](const auto& a, const auto& b) {
            return a.fFirst < b.fFirst;
        }));
        EXPECT_LE(tests, static_cast<int>(k * (k - 1) / 2));
    }
}

TEST(MultipleComparisons, UntestableSetIsHomogeneous) {
    const std::vector<std::size_t> order{2, 0, 1};
    const auto rows = HomogeneousSubsets(
        order, [](std::span<const std::size_t>) { return SampleTest{}; }, 0.05);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].fFirst, 0u);
    EXPECT_EQ(rows[0].fSecond, 2u);
    EXPECT_TRUE(HomogeneousSubsets({}, nullptr, 0.05).empty());
}
