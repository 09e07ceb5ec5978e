// Mid-ranks and tie terms against R's rank().
#include "engine/stats/Ranks.h"

#include <random>

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
