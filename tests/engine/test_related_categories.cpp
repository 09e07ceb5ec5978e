// McNemar and marginal homogeneity against R (mcnemar.test, binom.test,
// coin::mh_test), the category tables, and their properties.
#include "engine/stats/RelatedCategories.h"

#include <numeric>
#include <random>

#include "engine/RReference.h"
#include "engine/RelatedTestData.h"

namespace {

// Cases of two fields read from R's output: n, then the first and the second
// field; `at` is left after them.
std::pair<std::vector<double>, std::vector<double>> ReadFields(const std::vector<double>& numbers,
                                                               std::size_t& at) {
    const std::size_t n = static_cast<std::size_t>(numbers.at(at++));
    std::vector<double> a = Take(numbers, at, n);
    std::vector<double> b = Take(numbers, at, n);
    return {a, b};
}

std::vector<double> RandomCategories(std::mt19937& random, std::size_t n, int levels) {
    std::uniform_int_distribution<int> draw(1, levels);
    std::vector<double> values(n);
    for (double& v : values) {
        v = draw(random);
    }
    return values;
}

} // namespace

TEST(RelatedCategories, McNemarMatchesR) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    // The approval ratings of mcnemar.test's own example (1600 cases, 236
    // discordant), a small random set (exact binomial) and a set whose
    // success is a list of two values among three.
    const std::string reference = R"(
s <- a %in% succ; t <- b %in% succ
tab <- table(factor(s, levels = c(FALSE, TRUE)), factor(t, levels = c(FALSE, TRUE)))
m <- mcnemar.test(tab)
cat(length(a), a, b, m$statistic, m$p.value, binom.test(tab[1, 2], tab[1, 2] + tab[2, 1])$p.value,
    tab[1, 1], tab[1, 2], tab[2, 1], tab[2, 2])
)";
    std::mt19937 random(4);
    const std::vector<double> small1 = RandomCategories(random, 30, 2);
    const std::vector<double> small2 = RandomCategories(random, 30, 2);
    const std::vector<double> three1 = RandomCategories(random, 300, 3);
    const std::vector<double> three2 = RandomCategories(random, 300, 3);
    const struct {
        std::string data;
        std::vector<double> success;
    } cases[] = {
        {"a <- rep(c(1, 1, 2, 2), c(794, 86, 150, 570)); b <- rep(c(1, 2, 1, 2), c(794, 86, 150, "
         "570))",
         {1}},
        {"a <- " + RVector(small1) + "; b <- " + RVector(small2), {2}},
        {"a <- " + RVector(three1) + "; b <- " + RVector(three2), {1, 3}},
    };
    for (const auto& c : cases) {
        const std::vector<double> r = RunR(c.data + "\nsucc <- " + RVector(c.success) + reference);
        std::size_t at = 0;
        const auto [a, b] = ReadFields(r, at);
        ASSERT_EQ(r.size() - at, 7u);
        const McNemarResult result = McNemar(a, b, c.success);
        ASSERT_TRUE(result.Computed()) << c.data;
        ExpectStatistic(result.fStatistic, r[at], c.data + "|McNemar statistic");
        ExpectSig(result.fAsymptoticSig, r[at + 1], c.data + "|McNemar asymptotic sig");
        ExpectSig(result.fExactSig, r[at + 2], c.data + "|McNemar exact sig (binom.test)");
        EXPECT_EQ(result.fCounts[0][0], r[at + 3]);
        EXPECT_EQ(result.fCounts[0][1], r[at + 4]);
        EXPECT_EQ(result.fCounts[1][0], r[at + 5]);
        EXPECT_EQ(result.fCounts[1][1], r[at + 6]);
        EXPECT_EQ(result.fExactReported, r[at + 4] + r[at + 5] <= 25);
    }
}

TEST(RelatedCategories, McNemarWithFailureListLeavesOtherValuesOut) {
    const std::vector<double> a{1, 1, 0, 0, 9, 1, 0};
    const std::vector<double> b{1, 0, 1, 1, 1, 7, 0};
    const std::vector<double> success{1};
    const std::vector<double> failure{0};
    const McNemarResult result = McNemar(a, b, success, failure);
    ASSERT_TRUE(result.Computed());
    EXPECT_EQ(result.fTotalN, 5u);
    EXPECT_EQ(result.fCounts[1][1], 1.0);
    EXPECT_EQ(result.fCounts[1][0], 1.0);
    EXPECT_EQ(result.fCounts[0][1], 2.0);
    EXPECT_EQ(result.fCounts[0][0], 1.0);
    EXPECT_EQ(result.fFirstOutside, std::vector<double>{9});
    EXPECT_EQ(result.fSecondOutside, std::vector<double>{7});
    // b = c: R's statistic (|b - c| - 1)^2 / (b + c) is not zero.
    const std::vector<double> c{1, 0};
    const std::vector<double> d{0, 1};
    EXPECT_DOUBLE_EQ(McNemar(c, d, success).fStatistic, 0.5);
    EXPECT_EQ(McNemar(c, d, success).fExactSig, 1.0);
}

TEST(RelatedCategories, MarginalHomogeneityMatchesCoin) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    // One R session for all sets: loading coin takes seconds.
    const std::string reference = R"(
lev <- sort(unique(c(a, b)))
tab <- table(factor(a, levels = lev, ordered = TRUE), factor(b, levels = lev, ordered = TRUE))
r <- mh_test(tab, scores = list(response = lev))
cat(length(a), a, b, statistic(r), pvalue(r), "\n")
)";
    std::mt19937 random(8);
    std::vector<std::string> data = {
        // Wind speed against temperature classes of R's airquality data.
        "a <- as.numeric(cut(airquality$Temp, c(0, 70, 80, 90, 200))); "
        "b <- as.numeric(cut(airquality$Wind * 8, c(0, 70, 80, 90, 200)))"};
    for (int set = 0; set < 3; ++set) {
        const std::vector<double> a = RandomCategories(random, 40 + 100 * set, 3 + set);
        std::vector<double> b = a;
        std::uniform_int_distribution<int> shift(-1, 2);
        for (double& v : b) {
            v = std::clamp(v + shift(random), 1.0, 3.0 + set);
        }
        // Scores that are not equally spaced.
        for (double& v : b) {
            v = v * v;
        }
        std::vector<double> aa = a;
        for (double& v : aa) {
            v = v * v;
        }
        data.push_back("a <- " + RVector(aa) + "; b <- " + RVector(b));
    }
    std::string script = "suppressMessages(library(coin))\n";
    for (const std::string& d : data) {
        script += d + reference;
    }
    const std::vector<double> r = RunR(script);
    std::size_t at = 0;
    for (const std::string& d : data) {
        const auto [a, b] = ReadFields(r, at);
        ASSERT_LE(at + 2, r.size());
        const MarginalHomogeneityResult result = MarginalHomogeneity(a, b);
        ASSERT_TRUE(result.Computed()) << d;
        ExpectStatistic(result.fStandardized, r[at], d + "|marginal homogeneity Z (coin)");
        ExpectSig(result.fAsymptoticSig, r[at + 1], d + "|marginal homogeneity sig (coin)");
        at += 2;
        // The statistic, its expectation and standard error by definition.
        double observed = 0;
        double expected = 0;
        double variance = 0;
        for (std::size_t i = 0; i < a.size(); ++i) {
            if (a[i] != b[i]) {
                observed += a[i];
                expected += (a[i] + b[i]) / 2;
                variance += (a[i] - b[i]) * (a[i] - b[i]) / 4;
            }
        }
        ExpectStatistic(result.fStatistic, observed,
                        d + "|marginal homogeneity statistic (definition)");
        ExpectStatistic(result.fExpected, expected,
                        d + "|marginal homogeneity expected (definition)");
        ExpectStatistic(result.fStandardError, std::sqrt(variance),
                        d + "|marginal homogeneity se (definition)");
    }
    EXPECT_EQ(at, r.size());
}

TEST(RelatedCategories, SwappingFieldsAndReorderingCases) {
    std::mt19937 random(9);
    const std::vector<double> a = RandomCategories(random, 80, 4);
    const std::vector<double> b = RandomCategories(random, 80, 4);
    const MarginalHomogeneityResult mh = MarginalHomogeneity(a, b);
    const MarginalHomogeneityResult swapped = MarginalHomogeneity(b, a);
    EXPECT_DOUBLE_EQ(swapped.fStandardized, -mh.fStandardized);
    EXPECT_DOUBLE_EQ(swapped.fAsymptoticSig, mh.fAsymptoticSig);
    const std::vector<double> success{2, 4};
    const McNemarResult m = McNemar(a, b, success);
    const McNemarResult ms = McNemar(b, a, success);
    EXPECT_EQ(ms.fStatistic, m.fStatistic);
    EXPECT_EQ(ms.fExactSig, m.fExactSig);
    EXPECT_EQ(ms.fCounts[0][1], m.fCounts[1][0]);
    std::vector<std::size_t> order(a.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
    std::vector<double> ar;
    std::vector<double> br;
    for (std::size_t i : order) {
        ar.push_back(a[i]);
        br.push_back(b[i]);
    }
    const MarginalHomogeneityResult mr = MarginalHomogeneity(ar, br);
    EXPECT_EQ(mr.fStandardized, mh.fStandardized);
    EXPECT_EQ(mr.fCrosstab.fCounts, mh.fCrosstab.fCounts);
    EXPECT_EQ(McNemar(ar, br, success).fStatistic, m.fStatistic);
}

TEST(RelatedCategories, CrosstabAndCannotCompute) {
    const std::vector<double> a{3, 1, 1, 2};
    const std::vector<double> b{1, 1, 5, 2};
    const CategoryCrosstab table = Crosstab(a, b);
    EXPECT_EQ(table.fCategories, (std::vector<double>{1, 2, 3, 5}));
    EXPECT_EQ(table.At(2, 0), 1.0);
    EXPECT_EQ(table.At(0, 0), 1.0);
    EXPECT_EQ(table.At(0, 3), 1.0);
    EXPECT_EQ(table.At(1, 1), 1.0);
    EXPECT_EQ(std::accumulate(table.fCounts.begin(), table.fCounts.end(), 0.0), 4.0);

    const std::vector<double> same{2, 2, 2};
    const std::vector<double> one{2};
    const std::vector<double> success{2};
    EXPECT_EQ(MarginalHomogeneity(same, same).fOutcome, Outcome::kOneCategory);
    EXPECT_EQ(MarginalHomogeneity(a, a).fOutcome, Outcome::kAllPairsTied);
    EXPECT_EQ(MarginalHomogeneity(one, one).fOutcome, Outcome::kTooFewCases);
    EXPECT_EQ(MarginalHomogeneity(a, same).fOutcome, Outcome::kUnequalLengths);
    EXPECT_EQ(McNemar(same, same, success).fOutcome, Outcome::kAllPairsTied);
    EXPECT_EQ(McNemar(one, one, success).fOutcome, Outcome::kTooFewCases);
    EXPECT_EQ(McNemar({}, {}, success).fOutcome, Outcome::kTooFewCases);
    const std::vector<double> withNaN{1, std::nan(""), 2};
    EXPECT_EQ(MarginalHomogeneity(withNaN, same).fOutcome, Outcome::kNotFinite);
    EXPECT_TRUE(Crosstab(withNaN, same).fCategories.empty());
}
