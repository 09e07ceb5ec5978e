// Wilcoxon signed-rank test against R's wilcox.test (normal approximation
// without continuity correction; exact without ties) and exactRankTests'
// wilcox.exact (exact with tied mid-ranks).
#include "engine/stats/OneSampleWilcoxon.h"

#include "engine/test_one_sample_support.h"

namespace {

// V, its normal approximation's z and significance (correct = FALSE), the exact
// significance (exactRankTests, NA above 50 non-zero differences) and the median. The
// differences are taken at the data's precision (the data sets have at most 12 decimals), so
// that differences equal in the data tie; tied groups are then counted over the ranks.
const char* const kRWilcoxon = R"(
suppressMessages(library(exactRankTests))
w <- function(x, mu) {
  d <- round(x - mu, 12); d <- d[d != 0]; n <- length(d)
  a <- suppressWarnings(wilcox.test(d, exact = FALSE, correct = FALSE))
  t <- table(rank(abs(d))); s <- sqrt(n * (n + 1) * (2 * n + 1) / 24 - sum(t^3 - t) / 48)
  e <- if (n <= 50) wilcox.exact(d, exact = TRUE)$p.value else NA
  cat(a$statistic, (a$statistic - n * (n + 1) / 4) / s, a$p.value, e, median(x), '\n')
}
)";

void ExpectMatches(const std::vector<double>& x, double mu, const double* r) {
    const OneSampleWilcoxonResult result = OneSampleWilcoxon(x, mu);
    ASSERT_TRUE(result.Computed()) << OutcomeText(result.fOutcome);
    EXPECT_STAT(result.fStatistic, r[0]);
    EXPECT_STAT(result.fStandardized, r[1]);
    EXPECT_SIG(result.fAsymptoticSig2Tailed, r[2]);
    if (std::isnan(r[3])) {
        EXPECT_FALSE(result.HasExact());
    } else {
        EXPECT_SIG(result.fExactSig2Tailed, r[3]);
    }
    EXPECT_STAT(result.fObservedMedian, r[4]);
    const double n = static_cast<double>(result.fPositive + result.fNegative);
    EXPECT_DOUBLE_EQ(result.fStatistic + result.fNegativeRankSum, n * (n + 1) / 2);
    EXPECT_EQ(result.fNegative + result.fZero + result.fPositive, x.size());
}

struct Sample {
    std::string fExpression;
    double fMedian;
};

void ExpectSamplesMatch(const std::vector<Sample>& samples) {
    std::vector<std::string> expressions;
    std::string script = kRWilcoxon;
    for (const Sample& s : samples) {
        expressions.push_back(s.fExpression);
        script += "w(" + s.fExpression + ", " + std::to_string(s.fMedian) + ")\n";
    }
    const std::vector<std::vector<double>> data = RDataSets(expressions);
    const std::vector<double> r = RunR(script);
    ASSERT_EQ(r.size(), 5 * samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        SCOPED_TRACE(samples[i].fExpression);
        ExpectMatches(data[i], samples[i].fMedian, &r[5 * i]);
    }
}

} // namespace

TEST(OneSampleWilcoxon, RDatasetsWithTiesAndZeros) {
    REQUIRE_R();
    ExpectSamplesMatch({{"precip", 35},              // 70 cities: normal approximation only
                        {"islands", 100},            // 48 areas, tied
                        {"faithful$eruptions", 3.5}, // 272 eruptions
                        {"rivers", 500},             // 141 river lengths
                        {"InsectSprays$count", 8},   // counts: many ties and zero differences
                        {"mtcars$mpg", 20},          // 32 cars, tied
                        {"morley$Speed[1:20]", 850}, // light speed runs, tied, zeros
                        {"women$height", 60.5},      // 15 heights, no ties: exact
                        {"warpbreaks$breaks[1:9]", 30}});
}

TEST(OneSampleWilcoxon, RandomDataWithoutTiesMatchesWilcoxTestExact) {
    REQUIRE_R();
    Random random(3);
    const std::vector<std::size_t> sizes{1, 2, 7, 25, 50};
    std::vector<std::vector<double>> samples;
    std::string script;
    for (std::size_t n : sizes) {
        samples.emplace_back(n);
        for (double& v : samples.back()) {
            v = random.Normal();
        }
        script += "x <- " + RVector(samples.back()) +
                  "\ncat(wilcox.test(x, mu = 0.2, exact = TRUE)$p.value, wilcox.test(x, mu = "
                  "0.2, exact = FALSE, correct = FALSE)$p.value, '\\n')\n";
    }
    const std::vector<double> r = RunR(script);
    ASSERT_EQ(r.size(), 2 * sizes.size());
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        SCOPED_TRACE(sizes[i]);
        const OneSampleWilcoxonResult result = OneSampleWilcoxon(samples[i], 0.2);
        EXPECT_SIG(result.fExactSig2Tailed, r[2 * i]);
        EXPECT_SIG(result.fAsymptoticSig2Tailed, r[2 * i + 1]);
    }
    // Above 50 non-zero differences only the normal approximation.
    std::vector<double> large(51);
    for (double& v : large) {
        v = random.Normal();
    }
    EXPECT_FALSE(OneSampleWilcoxon(large, 0).HasExact());
}

TEST(OneSampleWilcoxon, CannotCompute) {
    EXPECT_EQ(OneSampleWilcoxon({}, 0).fOutcome, Outcome::kNoCases);
    const std::vector<double> same{4, 4, 4};
    const OneSampleWilcoxonResult result = OneSampleWilcoxon(same, 4);
    EXPECT_EQ(result.fOutcome, Outcome::kAllAtTestValue);
    EXPECT_EQ(result.fZero, 3u);
    EXPECT_EQ(result.fObservedMedian, 4.0);
    // One non-zero difference is enough for a result (significance 1).
    const std::vector<double> one{4, 4, 5};
    const OneSampleWilcoxonResult single = OneSampleWilcoxon(one, 4);
    ASSERT_TRUE(single.Computed());
    EXPECT_EQ(single.fExactSig2Tailed, 1.0);
}
