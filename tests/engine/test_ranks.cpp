// Mid-ranks and tie terms against R's rank().
#include "engine/stats/Ranks.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "engine/RReference.h"

TEST(Ranks, MatchRWithTiesAndSumToTriangle) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> draw(0, 30);
    std::vector<double> values(200);
    for (double& v : values) {
        v = draw(random) * 0.5;
    }
    const Ranking ranking = RankValues(values);
    double sum = 0;
    for (double r : ranking.fRanks) {
        sum += r;
    }
    EXPECT_DOUBLE_EQ(sum, 200.0 * 201.0 / 2.0);
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    const std::vector<double> expected =
        RunR("x <- " + RVector(values) + "\nt <- table(x)\ncat(rank(x), sum(t^3 - t), sum(t > 1))");
    ASSERT_EQ(expected.size(), values.size() + 2);
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(ranking.fRanks[i], expected[i]) << "at " << i;
    }
    EXPECT_EQ(ranking.fTieSum, expected[200]);
    EXPECT_EQ(ranking.fTieGroups, expected[201]);
}

TEST(Ranks, EmptyAndSingle) {
    EXPECT_TRUE(RankValues({}).fRanks.empty());
    const std::vector<double> one{3.5};
    const Ranking ranking = RankValues(one);
    ASSERT_EQ(ranking.fRanks.size(), 1u);
    EXPECT_EQ(ranking.fRanks[0], 1.0);
    EXPECT_EQ(ranking.fTieSum, 0.0);
}

namespace {

// Mid-rank of each value by counting against a sorted copy: the number of
// smaller values plus the mean position among its equals (with -0.0 == 0.0
// as doubles compare).
Ranking CountedRanks(const std::vector<double>& values) {
    std::vector<double> sorted = values;
    std::sort(sorted.begin(), sorted.end());
    Ranking ranking;
    for (double v : values) {
        const auto below = std::lower_bound(sorted.begin(), sorted.end(), v) - sorted.begin();
        const auto upTo = std::upper_bound(sorted.begin(), sorted.end(), v) - sorted.begin();
        ranking.fRanks.push_back(0.5 * static_cast<double>(below + 1 + upTo));
    }
    for (auto first = sorted.begin(); first != sorted.end();) {
        const auto last = std::upper_bound(first, sorted.end(), *first);
        const auto t = static_cast<double>(last - first);
        if (t > 1) {
            ranking.fTieSum += t * t * t - t;
            ++ranking.fTieGroups;
        }
        first = last;
    }
    return ranking;
}

void ExpectCountedRanks(const std::vector<double>& values, const std::string& what) {
    const Ranking ranking = RankValues(values);
    const Ranking expected = CountedRanks(values);
    ASSERT_EQ(ranking.fRanks.size(), values.size()) << what;
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (ranking.fRanks[i] != expected.fRanks[i] && ++wrong <= 5) {
            ADD_FAILURE() << what << ": value " << values[i] << " at " << i << " ranked "
                          << ranking.fRanks[i] << ", expected " << expected.fRanks[i];
        }
    }
    EXPECT_EQ(wrong, 0u) << what;
    EXPECT_EQ(ranking.fTieSum, expected.fTieSum) << what;
    EXPECT_EQ(ranking.fTieGroups, expected.fTieGroups) << what;
}

} // namespace

// Samples below and above the size where the comparison sort gives way to the
// radix sort, with the values that an integer key of a double gets wrong
// first: negatives, both zeros (which tie), infinities, subnormals, values
// that differ only in the last bit, and inputs already in or against order.
TEST(Ranks, MatchCountingOnSignsZerosInfinitiesAndOrder) {
    const double inf = std::numeric_limits<double>::infinity();
    const double tiny = std::numeric_limits<double>::denorm_min();
    const std::vector<double> special{-inf,
                                      inf,
                                      -0.0,
                                      0.0,
                                      tiny,
                                      -tiny,
                                      -1.0,
                                      1.0,
                                      -2.5,
                                      2.5,
                                      std::nextafter(1.0, 2.0),
                                      std::nextafter(-1.0, -2.0),
                                      -1e308,
                                      1e308};
    for (const std::size_t n :
         {std::size_t{14}, std::size_t{1000}, std::size_t{5000}, std::size_t{200'000}}) {
        std::mt19937_64 random(n);
        std::vector<double> values(n);
        for (std::size_t i = 0; i < n; ++i) {
            // Half the values from the special ones (many ties), half spread
            // over both signs and many exponents.
            values[i] = random() % 2 == 0
                            ? special[random() % special.size()]
                            : std::ldexp(static_cast<double>(random() % 2001) - 1000.0,
                                         static_cast<int>(random() % 40) - 20);
        }
        const std::string size = "n=" + std::to_string(n);
        ExpectCountedRanks(values, size + " shuffled");
        std::sort(values.begin(), values.end());
        ExpectCountedRanks(values, size + " ascending");
        std::reverse(values.begin(), values.end());
        ExpectCountedRanks(values, size + " descending");
    }
}

// Keys that share most of their digits (a radix pass is skipped when every
// key has the same digit): all equal, small integers, and values one bit
// apart; also a few distinct values over a million cases.
TEST(Ranks, MatchCountingWhenDigitsRepeat) {
    ExpectCountedRanks(std::vector<double>(3000, -0.0), "all zero");
    std::vector<double> integers(4096);
    std::vector<double> adjacent(4096);
    double next = 1.0;
    for (std::size_t i = 0; i < integers.size(); ++i) {
        integers[i] = static_cast<double>((i * 7919) % 300);
        adjacent[(i * 2053) % adjacent.size()] = next;
        next = std::nextafter(next, 2.0);
    }
    ExpectCountedRanks(integers, "integers");
    ExpectCountedRanks(adjacent, "adjacent");
    std::mt19937 random(11);
    std::vector<double> fewDistinct(1'000'000);
    for (double& v : fewDistinct) {
        v = static_cast<double>(static_cast<int>(random() % 9) - 4) * 0.25;
    }
    ExpectCountedRanks(fewDistinct, "nine values");
}

// A large sample with negatives, both zeros and many ties, beside R's rank().
TEST(Ranks, LargeSampleMatchesR) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    std::mt19937 random(3);
    std::normal_distribution<double> normal;
    std::vector<double> values(20'000);
    for (double& v : values) {
        v = std::round(normal(random) * 100) / 100;
        if (v == 0 && random() % 2 == 0) {
            v = -0.0;
        }
    }
    const Ranking ranking = RankValues(values);
    const std::vector<double> expected =
        RunR("x <- " + RVector(values) + "\nt <- table(x)\ncat(rank(x), sum(t^3 - t), sum(t > 1))");
    ASSERT_EQ(expected.size(), values.size() + 2);
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        wrong += ranking.fRanks[i] != expected[i] ? 1 : 0;
    }
    EXPECT_EQ(wrong, 0u);
    EXPECT_EQ(ranking.fTieSum, expected[values.size()]);
    EXPECT_EQ(ranking.fTieGroups, expected[values.size() + 1]);
}
