// Chi-square goodness of fit against R's chisq.test.
#include "engine/stats/OneSampleChiSquare.h"

#include "engine/test_one_sample_support.h"

namespace {

// Statistic, df, significance and expected counts of chisq.test on the counts of `values`
// over `categories` with relative frequencies `weights` (equal when empty).
std::vector<double> RChiSquare(const std::vector<double>& values,
                               const std::vector<double>& categories,
                               const std::vector<double>& weights) {
    std::string script = "x <- " + RVector(values) + "\nlev <- " + RVector(categories) +
                         "\nt <- table(factor(x[x %in% lev], levels = lev))\n";
    script += weights.empty() ? "r <- suppressWarnings(chisq.test(t))\n"
                              : "r <- suppressWarnings(chisq.test(t, p = " + RVector(weights) +
                                    ", rescale.p = TRUE))\n";
    script += "cat(r$statistic, r$parameter, r$p.value, r$expected)";
    return RunR(script);
}

void ExpectMatchesR(const std::vector<double>& values, const std::vector<double>& categories,
                    const std::vector<double>& weights) {
    const OneSampleChiSquareResult result = ChiSquareGoodnessOfFit(values, categories, weights);
    ASSERT_TRUE(result.Computed()) << OneSampleReasonText(result.fReason);
    const std::vector<double> r = RChiSquare(values, categories, weights);
    ASSERT_EQ(r.size(), 3 + categories.size());
    EXPECT_STAT(result.fStatistic, r[0]);
    EXPECT_EQ(result.fDegreesOfFreedom, r[1]);
    EXPECT_SIG(result.fAsymptoticSig, r[2]);
    for (std::size_t i = 0; i < categories.size(); ++i) {
        EXPECT_STAT(result.fExpected[i], r[3 + i]) << "category " << categories[i];
    }
}

} // namespace

TEST(OneSampleChiSquare, EqualFrequenciesOnRDatasets) {
    REQUIRE_R();
    // Insect counts per sprayed plot; the categories are the distinct counts.
    const std::vector<double> counts = RData("InsectSprays$count");
    const OneSampleChiSquareResult insects = ChiSquareGoodnessOfFit(counts);
    ExpectMatchesR(counts, insects.fCategories, {});
    // Spray letters as codes 1 to 6: balanced, so the statistic is 0.
    const std::vector<double> sprays = RData("as.integer(InsectSprays$spray)");
    const OneSampleChiSquareResult balanced = ChiSquareGoodnessOfFit(sprays);
    EXPECT_EQ(balanced.fStatistic, 0.0);
    EXPECT_EQ(balanced.fAsymptoticSig, 1.0);
    // Annual rainfall of 70 US cities in classes of 10 inches.
    ExpectMatchesR(RData("precip %/% 10"), {0, 1, 2, 3, 4, 5, 6}, {});
}

TEST(OneSampleChiSquare, CustomFrequenciesAndCategoriesOnRDatasets) {
    REQUIRE_R();
    // Breaks of yarn per loom in classes of 10, against decreasing expected frequencies.
    const std::vector<double> breaks = RData("warpbreaks$breaks %/% 10");
    ExpectMatchesR(breaks, {1, 2, 3, 4, 5, 6, 7}, {20, 30, 25, 12, 6, 4, 3});
    // Only classes 2 to 4 tested: the others are outside the categories.
    const std::vector<double> categories{4, 2, 3};
    const std::vector<double> weights{1, 2, 2};
    const OneSampleChiSquareResult result = ChiSquareGoodnessOfFit(breaks, categories, weights);
    ExpectMatchesR(breaks, categories, weights);
    EXPECT_EQ(result.fTotalN + result.fOutsideCount, breaks.size());
    EXPECT_EQ(result.fValuesOutside, (std::vector<double>{1, 5, 6, 7}));
    EXPECT_EQ(result.fCategories, categories);
    // Geyser eruptions longer than 3 minutes against a one-to-two split.
    const std::vector<double> long_eruptions = RData("as.integer(faithful$eruptions > 3)");
    ExpectMatchesR(long_eruptions, {0, 1}, {1, 2});
}

TEST(OneSampleChiSquare, RandomDataWithEmptyCategoriesAndSmallExpectations) {
    REQUIRE_R();
    Random random(11);
    std::vector<double> values(30);
    for (double& v : values) {
        v = std::floor(random.Uniform() * random.Uniform() * 6);
    }
    // Category 9 never occurs: observed 0, and its expected count still counts.
    const std::vector<double> categories{0, 1, 2, 3, 4, 5, 9};
    ExpectMatchesR(values, categories, {});
    const OneSampleChiSquareResult result = ChiSquareGoodnessOfFit(values, categories);
    EXPECT_EQ(result.fObserved.back(), 0.0);
    EXPECT_EQ(result.fExpectedBelowFive, 7u); // 30 / 7 expected in each
    EXPECT_DOUBLE_EQ(result.fMinimumExpected, 30.0 / 7);
}

TEST(OneSampleChiSquare, CannotCompute) {
    const std::vector<double> same{3, 3, 3};
    EXPECT_EQ(ChiSquareGoodnessOfFit(same).fReason, OneSampleReason::kOneCategory);
    EXPECT_EQ(ChiSquareGoodnessOfFit({}).fReason, OneSampleReason::kOneCategory);
    const std::vector<double> categories{1, 2};
    const std::vector<double> elsewhere{5, 6};
    EXPECT_EQ(ChiSquareGoodnessOfFit(elsewhere, categories).fReason, OneSampleReason::kNoCases);
    const std::vector<double> values{1, 2, 2};
    const std::vector<double> zero{1, 0};
    const std::vector<double> three{1, 1, 1};
    const std::vector<double> twice{1, 1};
    EXPECT_EQ(ChiSquareGoodnessOfFit(values, categories, zero).fReason,
              OneSampleReason::kBadParameter);
    EXPECT_EQ(ChiSquareGoodnessOfFit(values, categories, three).fReason,
              OneSampleReason::kBadParameter);
    EXPECT_EQ(ChiSquareGoodnessOfFit(values, twice).fReason, OneSampleReason::kBadParameter);
}
