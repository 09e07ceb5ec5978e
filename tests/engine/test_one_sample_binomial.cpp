// Binomial test against R's binom.test and prop.test; success-rate intervals
// against their formulas evaluated in R (qbeta, uniroot).
#include "engine/stats/OneSampleBinomial.h"

#include <sstream>

#include "engine/test_one_sample_support.h"

namespace {

struct Case {
    std::size_t fSuccesses;
    std::size_t fTrials;
    double fProportion;
};

// For each case: binom.test two-sided, less and greater; the doubled smaller tail; the signed
// root of prop.test's continuity-corrected statistic.
std::vector<double> RBinomial(const std::vector<Case>& cases) {
    std::ostringstream script;
    script.precision(17);
    script << "f <- function(x, n, p) {\n"
              "  t <- binom.test(x, n, p)$p.value\n"
              "  l <- binom.test(x, n, p, alternative = 'less')$p.value\n"
              "  g <- binom.test(x, n, p, alternative = 'greater')$p.value\n"
              "  d <- min(1, 2 * min(pbinom(x, n, p), pbinom(x - 1, n, p, lower.tail = FALSE)))\n"
              "  z <- sign(x - n * p) * sqrt(suppressWarnings(prop.test(x, n, p)$statistic))\n"
              "  cat(t, l, g, d, z, '\\n')\n"
              "}\n";
    for (const Case& c : cases) {
        script << "f(" << c.fSuccesses << ", " << c.fTrials << ", " << c.fProportion << ")\n";
    }
    return RunR(script.str());
}

void ExpectBinomialMatchesR(const std::vector<Case>& cases) {
    const std::vector<double> r = RBinomial(cases);
    ASSERT_EQ(r.size(), 5 * cases.size());
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        SCOPED_TRACE(testing::Message()
                     << c.fSuccesses << " of " << c.fTrials << ", p0 " << c.fProportion);
        const BinomialResult result = BinomialTest(c.fSuccesses, c.fTrials, c.fProportion);
        ASSERT_TRUE(result.Computed());
        EXPECT_SIG(result.fExactSigMinLikelihood, r[5 * i]);
        EXPECT_SIG(result.fExactSigLess, r[5 * i + 1]);
        EXPECT_SIG(result.fExactSigGreater, r[5 * i + 2]);
        EXPECT_SIG(result.fExactSig2Tailed, r[5 * i + 3]);
        EXPECT_STAT(result.fStandardized, r[5 * i + 4]);
        EXPECT_STAT(result.fStandardError,
                    std::sqrt(c.fTrials * c.fProportion * (1 - c.fProportion)));
    }
}

} // namespace

TEST(OneSampleBinomial, MatchesRAcrossProportionsAndEdges) {
    REQUIRE_R();
    ExpectBinomialMatchesR({{7, 20, 0.5},
                            {13, 20, 0.5},
                            {10, 20, 0.5},
                            {3, 25, 0.3},
                            {14, 25, 0.3},
                            {0, 12, 0.2},
                            {12, 12, 0.2},
                            {1, 1, 0.5},
                            {0, 1, 0.9},
                            {31, 40, 0.65},
                            {2, 50, 0.01},
                            {498, 1000, 0.52},
                            {30512, 100000, 0.3},
                            {29510, 100000, 0.3}});
}

TEST(OneSampleBinomial, SuccessesOfRDatasets) {
    REQUIRE_R();
    // Cities with at most 30 inches of rain a year; eruptions of at most 3 minutes.
    const std::vector<std::vector<double>> data =
        RDataSets({"precip", "faithful$eruptions", "as.integer(InsectSprays$spray)",
                   "c(sum(precip <= 30), sum(faithful$eruptions <= 3), "
                   "sum(InsectSprays$spray %in% c('A', 'B')), "
                   "sum(InsectSprays$spray %in% c('C', 'D')))"});
    const BinomialCounts dry = CountByCutPoint(data[0], 30);
    const BinomialCounts short_eruptions = CountByCutPoint(data[1], 3);
    // Sprays A and B succeed, C and D fail, E and F are in neither list.
    const BinomialCounts sprays =
        CountByCategories(data[2], std::vector<double>{1, 2}, std::vector<double>{3, 4});
    const std::vector<double>& r = data[3];
    ASSERT_EQ(r.size(), 4u);
    EXPECT_EQ(dry.fSuccesses, r[0]);
    EXPECT_EQ(dry.fSuccesses + dry.fFailures, 70u);
    EXPECT_EQ(short_eruptions.fSuccesses, r[1]);
    EXPECT_EQ(sprays.fSuccesses, r[2]);
    EXPECT_EQ(sprays.fFailures, r[3]);
    EXPECT_EQ(sprays.fExcluded, 24u);
    EXPECT_EQ(sprays.fValuesOutside, (std::vector<double>{5, 6}));
    ExpectBinomialMatchesR({{dry.fSuccesses, 70, 0.25},
                            {short_eruptions.fSuccesses, 272, 0.5},
                            {sprays.fSuccesses, 48, 0.6}});
}

TEST(OneSampleBinomial, IntervalsMatchTheirFormulasInR) {
    REQUIRE_R();
    const std::vector<Case> cases{{0, 10, 0.95},   {1, 10, 0.95},    {5, 10, 0.9},
                                  {10, 10, 0.95},  {27, 70, 0.95},   {136, 272, 0.99},
                                  {3, 1000, 0.95}, {999, 1000, 0.8}, {1, 1, 0.95}};
    std::ostringstream script;
    script.precision(17);
    script << "lr <- function(x, n, level) {\n"
              "  ph <- x / n; crit <- qchisq(level, 1)\n"
              "  ll <- function(p) (if (x > 0) x * log(p) else 0) + (if (x < n) (n - x) * "
              "log1p(-p) else 0)\n"
              "  dev <- function(p) 2 * (ll(ph) - ll(p)) - crit\n"
              "  lo <- if (x == 0) 0 else uniroot(dev, c(1e-300, ph), tol = 1e-15)$root\n"
              "  hi <- if (x == n) 1 else uniroot(dev, c(ph, 1 - 1e-16), tol = 1e-15)$root\n"
              "  c(lo, hi)\n"
              "}\n"
              "f <- function(x, n, level) {\n"
              "  a <- (1 - level) / 2\n"
              "  cp <- binom.test(x, n, conf.level = level)$conf.int\n"
              "  j <- c(if (x == 0) 0 else qbeta(a, x + 0.5, n - x + 0.5),\n"
              "         if (x == n) 1 else qbeta(a, x + 0.5, n - x + 0.5, lower.tail = FALSE))\n"
              "  cat(cp, j, lr(x, n, level), '\\n')\n"
              "}\n";
    for (const Case& c : cases) {
        script << "f(" << c.fSuccesses << ", " << c.fTrials << ", " << c.fProportion << ")\n";
    }
    const std::vector<double> r = RunR(script.str());
    ASSERT_EQ(r.size(), 6 * cases.size());
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        SCOPED_TRACE(testing::Message()
                     << c.fSuccesses << " of " << c.fTrials << " at " << c.fProportion);
        const SuccessRateIntervals result =
            SuccessRateIntervalsOf(c.fSuccesses, c.fTrials, c.fProportion);
        ASSERT_TRUE(result.Computed());
        const double estimate = static_cast<double>(c.fSuccesses) / c.fTrials;
        EXPECT_EQ(result.fClopperPearson.fEstimate, estimate);
        EXPECT_STAT(result.fClopperPearson.fLower, r[6 * i]);
        EXPECT_STAT(result.fClopperPearson.fUpper, r[6 * i + 1]);
        EXPECT_STAT(result.fJeffreys.fLower, r[6 * i + 2]);
        EXPECT_STAT(result.fJeffreys.fUpper, r[6 * i + 3]);
        EXPECT_STAT(result.fLikelihoodRatio.fLower, r[6 * i + 4]);
        EXPECT_STAT(result.fLikelihoodRatio.fUpper, r[6 * i + 5]);
        // Every interval holds the estimate.
        for (const ProportionInterval* interval :
             {&result.fClopperPearson, &result.fJeffreys, &result.fLikelihoodRatio}) {
            EXPECT_LE(interval->fLower, estimate);
            EXPECT_GE(interval->fUpper, estimate);
        }
    }
}

// The doubled tail is the test the Clopper-Pearson interval inverts: p0 at either bound of the
// (1 - alpha) interval has a two-sided significance of alpha.
TEST(OneSampleBinomial, DoubledTailAgreesWithClopperPearson) {
    for (const Case& c : std::vector<Case>{{4, 17, 0.95}, {12, 30, 0.9}, {80, 100, 0.99}}) {
        const ProportionInterval interval =
            ClopperPearsonInterval(c.fSuccesses, c.fTrials, c.fProportion);
        const double alpha = 1 - c.fProportion;
        EXPECT_NEAR(BinomialTest(c.fSuccesses, c.fTrials, interval.fLower).fExactSig2Tailed, alpha,
                    1e-9);
        EXPECT_NEAR(BinomialTest(c.fSuccesses, c.fTrials, interval.fUpper).fExactSig2Tailed, alpha,
                    1e-9);
    }
}

TEST(OneSampleBinomial, CannotCompute) {
    EXPECT_EQ(BinomialTest(0, 0, 0.5).fOutcome, Outcome::kNoCases);
    EXPECT_EQ(BinomialTest(3, 5, 0).fOutcome, Outcome::kBadParameter);
    EXPECT_EQ(BinomialTest(3, 5, 1).fOutcome, Outcome::kBadParameter);
    EXPECT_EQ(BinomialTest(6, 5, 0.5).fOutcome, Outcome::kBadParameter);
    EXPECT_EQ(SuccessRateIntervalsOf(0, 0, 0.95).fOutcome, Outcome::kNoCases);
    EXPECT_EQ(SuccessRateIntervalsOf(2, 5, 95).fOutcome, Outcome::kBadParameter);
    EXPECT_EQ(SuccessRateIntervalsOf(2, 5, 1).fOutcome, Outcome::kBadParameter);
    EXPECT_TRUE(std::isnan(ClopperPearsonInterval(2, 5, 0).fLower));
    // Cut point and categories on no values.
    EXPECT_EQ(CountByCutPoint({}, 1).fSuccesses, 0u);
    EXPECT_EQ(CountByCategories({}, {}).fFailures, 0u);
}
