// Chi-square goodness of fit against R's chisq.test.
#include "engine/stats/OneSampleChiSquare.h"

#include "engine/test_one_sample_support.h"

namespace {

struct ChiSquareCase {
    std::vector<double> fValues;
    std::vector<double> fCategories; // empty: the distinct values
    std::vector<double> fWeights;    // empty: equal
};

// chisq.test on the counts of each case's values over its categories: statistic, df,
// significance and expected counts, a line per case, from one run of R.
void ExpectMatchChisqTest(const std::vector<ChiSquareCase>& cases) {
    std::string script;
    std::vector<OneSampleChiSquareResult> results;
    for (const ChiSquareCase& c : cases) {
        results.push_back(ChiSquareGoodnessOfFit(c.fValues, c.fCategories, c.fWeights));
        script += "x <- " + RVector(c.fValues) + "\nlev <- " + RVector(results.back().fCategories) +
                  "\nt <- table(factor(x[x %in% lev], levels = lev))\n";
        script += c.fWeights.empty()
                      ? "r <- suppressWarnings(chisq.test(t))\n"
                      : "r <- suppressWarnings(chisq.test(t, p = " + RVector(c.fWeights) +
                            ", rescale.p = TRUE))\n";
        script += "cat(r$statistic, r$parameter, r$p.value, r$expected, '\\n')\n";
    }
    const std::vector<double> r = RunR(script);
    std::size_t at = 0;
    for (const OneSampleChiSquareResult& result : results) {
        SCOPED_TRACE(testing::Message() << "case of " << result.fTotalN << " cases");
        ASSERT_TRUE(result.Computed()) << OutcomeText(result.fOutcome);
        const std::size_t k = result.fCategories.size();
        ASSERT_LE(at + 3 + k, r.size());
        EXPECT_STAT(result.fStatistic, r[at]);
        EXPECT_EQ(result.fDegreesOfFreedom, r[at + 1]);
        EXPECT_SIG(result.fAsymptoticSig, r[at + 2]);
        for (std::size_t i = 0; i < k; ++i) {
            EXPECT_STAT(result.fExpected[i], r[at + 3 + i]) << "category " << i;
        }
        at += 3 + k;
    }
    EXPECT_EQ(at, r.size());
}

} // namespace

TEST(OneSampleChiSquare, MatchesChisqTestOnRDatasetsAndRandomData) {
    REQUIRE_R();
    // Insect counts per sprayed plot (categories: the distinct counts); rainfall of 70 US
    // cities and breaks of yarn per loom in classes of 10; geyser eruptions over 3 minutes.
    const std::vector<std::vector<double>> data =
        RDataSets({"InsectSprays$count", "precip %/% 10", "warpbreaks$breaks %/% 10",
                   "as.integer(faithful$eruptions > 3)", "as.integer(InsectSprays$spray)"});
    // Random whole numbers 0 to 5, and a category 9 that never occurs (observed 0).
    Random random(11);
    std::vector<double> random_values(30);
    for (double& v : random_values) {
        v = std::floor(random.Uniform() * random.Uniform() * 6);
    }
    ExpectMatchChisqTest({{data[0], {}, {}},
                          {data[1], {0, 1, 2, 3, 4, 5, 6}, {}},
                          {data[2], {1, 2, 3, 4, 5, 6, 7}, {20, 30, 25, 12, 6, 4, 3}},
                          {data[2], {4, 2, 3}, {1, 2, 2}},
                          {data[3], {0, 1}, {1, 2}},
                          {random_values, {0, 1, 2, 3, 4, 5, 9}, {}}});
    // Only classes 2 to 4 tested, in the order given: the others are outside the categories.
    const std::vector<double> categories{4, 2, 3};
    const OneSampleChiSquareResult part = ChiSquareGoodnessOfFit(data[2], categories);
    EXPECT_EQ(part.fTotalN + part.fOutsideCount, data[2].size());
    EXPECT_EQ(part.fValuesOutside, (std::vector<double>{1, 5, 6, 7}));
    EXPECT_EQ(part.fCategories, categories);
    // Spray letters as codes 1 to 6: balanced, so the statistic is 0.
    const OneSampleChiSquareResult balanced = ChiSquareGoodnessOfFit(data[4]);
    EXPECT_EQ(balanced.fStatistic, 0.0);
    EXPECT_EQ(balanced.fAsymptoticSig, 1.0);
    // 30 cases over 7 categories: every expected count below 5.
    const std::vector<double> seven{0, 1, 2, 3, 4, 5, 9};
    const OneSampleChiSquareResult sparse = ChiSquareGoodnessOfFit(random_values, seven);
    EXPECT_EQ(sparse.fObserved.back(), 0.0);
    EXPECT_EQ(sparse.fExpectedBelowFive, 7u);
    EXPECT_DOUBLE_EQ(sparse.fMinimumExpected, 30.0 / 7);
}

TEST(OneSampleChiSquare, CannotCompute) {
    const std::vector<double> same{3, 3, 3};
    EXPECT_EQ(ChiSquareGoodnessOfFit(same).fOutcome, Outcome::kOneCategory);
    EXPECT_EQ(ChiSquareGoodnessOfFit({}).fOutcome, Outcome::kOneCategory);
    const std::vector<double> categories{1, 2};
    const std::vector<double> elsewhere{5, 6};
    EXPECT_EQ(ChiSquareGoodnessOfFit(elsewhere, categories).fOutcome, Outcome::kNoCases);
    const std::vector<double> values{1, 2, 2};
    const std::vector<double> zero{1, 0};
    const std::vector<double> three{1, 1, 1};
    const std::vector<double> twice{1, 1};
    EXPECT_EQ(ChiSquareGoodnessOfFit(values, categories, zero).fOutcome, Outcome::kBadParameter);
    EXPECT_EQ(ChiSquareGoodnessOfFit(values, categories, three).fOutcome, Outcome::kBadParameter);
    EXPECT_EQ(ChiSquareGoodnessOfFit(values, twice).fOutcome, Outcome::kBadParameter);
}
