// One-sample Kolmogorov-Smirnov test against R's ks.test and nortest's
// lillie.test; the statistic against its definition by brute force; the
// asymptotic significance by a large simulation.
#include "engine/stats/OneSampleKolmogorov.h"

#include <algorithm>

#include "engine/test_one_sample_support.h"

TEST(OneSampleKolmogorov, LimitDistributionMatchesR) {
    REQUIRE_R();
    std::vector<double> z;
    for (double v = 0.02; v < 6; v *= 1.07) {
        z.push_back(v);
    }
    // R's own series of the limiting distribution, summed to 1e-15.
    const std::vector<double> r =
        RunR("z <- " + RVector(z) + "\ncat(1 - .Call(stats:::C_pKS2, z, 1e-15))");
    ASSERT_EQ(r.size(), z.size());
    for (std::size_t i = 0; i < z.size(); ++i) {
        EXPECT_NEAR(KolmogorovLimitSf(z[i]), r[i], 1e-12) << "z " << z[i];
    }
    EXPECT_EQ(KolmogorovLimitSf(0), 1.0);
    EXPECT_EQ(KolmogorovLimitSf(-1), 1.0);
    EXPECT_EQ(KolmogorovLimitSf(40), 0.0);
}

namespace {

// ks.test sums the series of its asymptotic significance only to terms of 1e-6, which leaves
// errors up to 2e-5 (0.375460 against 0.375465 for precip with estimated parameters); the
// reference significance is R's same series summed to 1e-15.
const char* const kRAsymptotic = R"(
asym <- function(d, n) 1 - .Call(stats:::C_pKS2, sqrt(n) * d, 1e-15)
)";

// Given parameters: ks.test's D, D+ and D- and the asymptotic significance of D.
const char* const kRKs = R"(
k <- function(x, ...) {
  s <- function(a) suppressWarnings(ks.test(x, ..., alternative = a, exact = FALSE))
  d <- s('two.sided')$statistic
  cat(d, s('greater')$statistic, s('less')$statistic, asym(d, length(x)), '\n')
}
)";

struct GivenCase {
    std::string fData; // R expression of the data
    KsDistribution fDistribution;
    KsParameters fParameters;
    std::string fRArguments; // the distribution as ks.test takes it
};

} // namespace

TEST(OneSampleKolmogorov, GivenParametersMatchKsTest) {
    REQUIRE_R();
    const std::vector<GivenCase> cases{
        {"precip", KsDistribution::kNormal, {34, 13.7}, "'pnorm', 34, 13.7"},
        {"log(islands)", KsDistribution::kNormal, {4, 1.5}, "'pnorm', 4, 1.5"},
        {"faithful$waiting", KsDistribution::kNormal, {71, 13.6}, "'pnorm', 71, 13.6"},
        {"faithful$eruptions", KsDistribution::kUniform, {1.5, 5.2}, "'punif', 1.5, 5.2"},
        {"faithful$eruptions", KsDistribution::kUniform, {2, 5}, "'punif', 2, 5"},
        {"rivers", KsDistribution::kExponential, {600, 0}, "'pexp', 1 / 600"},
        {"as.numeric(discoveries)", KsDistribution::kExponential, {3.1, 0}, "'pexp', 1 / 3.1"},
        {"women$height", KsDistribution::kNormal, {65, 4.5}, "'pnorm', 65, 4.5"},
    };
    std::vector<std::string> expressions;
    std::string script = std::string(kRAsymptotic) + kRKs;
    for (const GivenCase& c : cases) {
        expressions.push_back(c.fData);
        script += "k(" + c.fData + ", " + c.fRArguments + ")\n";
    }
    const std::vector<std::vector<double>> data = RDataSets(expressions);
    const std::vector<double> r = RunR(script);
    ASSERT_EQ(r.size(), 4 * cases.size());
    for (std::size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(cases[i].fData + " against " + cases[i].fRArguments);
        const OneSampleKsResult result =
            OneSampleKolmogorovSmirnov(data[i], cases[i].fDistribution, cases[i].fParameters);
        ASSERT_TRUE(result.Computed()) << OutcomeText(result.fOutcome);
        EXPECT_FALSE(result.fFromSample);
        EXPECT_STAT(result.fAbsolute, r[4 * i]);
        EXPECT_STAT(result.fPositive, r[4 * i + 1]);
        EXPECT_STAT(result.fNegative, -r[4 * i + 2]);
        EXPECT_SIG(result.fAsymptoticSig2Tailed, r[4 * i + 3]);
    }
}

TEST(OneSampleKolmogorov, SampleParametersMatchKsTestAndLillieTest) {
    REQUIRE_R();
    Random random(17);
    std::vector<std::string> expressions{
        "precip",     "faithful$waiting", "log(islands)",       "rivers",
        "mtcars$mpg", "women$weight",     "InsectSprays$count", "as.numeric(Nile)"};
    for (std::size_t n : {5u, 9u, 60u, 150u, 1000u}) {
        expressions.push_back(RVector(NormalData(random, n, 10, 2, 1e-6)));
    }
    std::string script =
        std::string(kRAsymptotic) +
        "suppressMessages(library(nortest))\n"
        "l <- function(x) {\n"
        "  s <- function(d, ...) suppressWarnings(ks.test(x, d, ..., exact = FALSE))\n"
        "  n <- s('pnorm', mean(x), sd(x)); u <- s('punif', min(x), max(x))\n"
        "  e <- if (min(x) >= 0) s('pexp', 1 / mean(x))$statistic else NA\n"
        "  cat(n$statistic, asym(n$statistic, length(x)), lillie.test(x)$p.value, u$statistic, e, "
        "mean(x), sd(x), "
        "'\\n')\n"
        "}\n";
    for (const std::string& e : expressions) {
        script += "l(" + e + ")\n";
    }
    const std::vector<std::vector<double>> data = RDataSets(expressions);
    const std::vector<double> r = RunR(script);
    ASSERT_EQ(r.size(), 7 * expressions.size());
    for (std::size_t i = 0; i < expressions.size(); ++i) {
        SCOPED_TRACE(expressions[i].substr(0, 40));
        const double* row = &r[7 * i];
        const OneSampleKsResult normal =
            OneSampleKolmogorovSmirnov(data[i], KsDistribution::kNormal);
        ASSERT_TRUE(normal.Computed()) << OutcomeText(normal.fOutcome);
        EXPECT_TRUE(normal.fFromSample);
        EXPECT_STAT(normal.fParameters.fFirst, row[5]);
        EXPECT_STAT(normal.fParameters.fSecond, row[6]);
        EXPECT_STAT(normal.fAbsolute, row[0]);
        EXPECT_SIG(normal.fAsymptoticSig2Tailed, row[1]);
        EXPECT_SIG(normal.fLillieforsSig, row[2]);
        const OneSampleKsResult uniform =
            OneSampleKolmogorovSmirnov(data[i], KsDistribution::kUniform);
        EXPECT_STAT(uniform.fAbsolute, row[3]);
        const OneSampleKsResult exponential =
            OneSampleKolmogorovSmirnov(data[i], KsDistribution::kExponential);
        if (std::isnan(row[4])) {
            EXPECT_EQ(exponential.fOutcome, Outcome::kOutsideSupport);
        } else {
            EXPECT_STAT(exponential.fAbsolute, row[4]);
        }
    }
}

// For the Poisson both distribution functions are steps, and sup |Fn - F| is taken over
// every real number: R's ks.test assumes a continuous F and compares F at each value with the
// empirical function just before it, which overstates D- for a step function (and warns
// about ties). The reference is the definition, evaluated in R at every whole number.
TEST(OneSampleKolmogorov, PoissonMatchesTheDefinitionInR) {
    REQUIRE_R();
    const std::vector<std::string> expressions{"as.numeric(discoveries)", "InsectSprays$count",
                                               "warpbreaks$breaks", "c(0, 0, 1, 7)"};
    std::string script = "p <- function(x, lambda = mean(x)) {\n"
                         "  u <- 0:(max(x) + 1); d <- ecdf(x)(u) - ppois(u, lambda)\n"
                         "  z <- sqrt(length(x)) * max(abs(d))\n"
                         "  cat(max(0, d), max(0, -d), 1 - .Call(stats:::C_pKS2, z, 1e-15), "
                         "lambda, '\\n')\n"
                         "}\n";
    for (const std::string& e : expressions) {
        script += "p(" + e + ")\n";
    }
    script += "p(as.numeric(discoveries), 2.5)\n";
    const std::vector<std::vector<double>> data = RDataSets(expressions);
    const std::vector<double> r = RunR(script);
    ASSERT_EQ(r.size(), 4 * (expressions.size() + 1));
    for (std::size_t i = 0; i <= expressions.size(); ++i) {
        const bool given = i == expressions.size();
        SCOPED_TRACE(given ? "discoveries against 2.5" : expressions[i]);
        const OneSampleKsResult result =
            given ? OneSampleKolmogorovSmirnov(data[0], KsDistribution::kPoisson,
                                               KsParameters{2.5, 0})
                  : OneSampleKolmogorovSmirnov(data[i], KsDistribution::kPoisson);
        ASSERT_TRUE(result.Computed()) << OutcomeText(result.fOutcome);
        EXPECT_STAT(result.fPositive, r[4 * i]);
        EXPECT_STAT(result.fNegative, -r[4 * i + 1]);
        EXPECT_SIG(result.fAsymptoticSig2Tailed, r[4 * i + 2]);
        EXPECT_STAT(result.fParameters.fFirst, r[4 * i + 3]);
    }
}

namespace {

// sup |Fn - F| by its definition: Fn and F evaluated on a fine grid that holds every value and
// points just beside each.
double BruteForceD(std::vector<double> x, KsDistribution distribution, const KsParameters& p,
                   double (*cdf)(double, const KsParameters&)) {
    std::sort(x.begin(), x.end());
    std::vector<double> grid;
    const double low = x.front() - 3, high = x.back() + 3;
    for (int i = 0; i <= 20000; ++i) {
        grid.push_back(low + (high - low) * i / 20000);
    }
    for (double v : x) {
        grid.insert(grid.end(), {v, std::nextafter(v, -1e300), std::nextafter(v, 1e300)});
    }
    if (distribution == KsDistribution::kPoisson) {
        for (double u = -1; u <= x.back() + 30; u += 0.5) {
            grid.push_back(u);
        }
    }
    double d = 0;
    const double n = static_cast<double>(x.size());
    for (double g : grid) {
        const double fn =
            static_cast<double>(std::upper_bound(x.begin(), x.end(), g) - x.begin()) / n;
        d = std::max(d, std::fabs(fn - cdf(g, p)));
    }
    return d;
}

} // namespace

TEST(OneSampleKolmogorov, StatisticMatchesItsDefinitionOnSmallSamples) {
    Random random(23);
    const auto normal = [](double x, const KsParameters& p) {
        return 0.5 * std::erfc(-(x - p.fFirst) / (p.fSecond * std::sqrt(2.0)));
    };
    const auto uniform = [](double x, const KsParameters& p) {
        return std::clamp((x - p.fFirst) / (p.fSecond - p.fFirst), 0.0, 1.0);
    };
    const auto exponential = [](double x, const KsParameters& p) {
        return x <= 0 ? 0.0 : 1 - std::exp(-x / p.fFirst);
    };
    const auto poisson = [](double x, const KsParameters& p) {
        double sum = 0, term = std::exp(-p.fFirst);
        for (int k = 0; k <= std::floor(x); ++k) {
            sum += term;
            term *= p.fFirst / (k + 1);
        }
        return x < 0 ? 0.0 : sum;
    };
    for (std::size_t n : {1u, 2u, 3u, 6u, 12u}) {
        for (int repeat = 0; repeat < 5; ++repeat) {
            SCOPED_TRACE(testing::Message() << "n " << n << ", repeat " << repeat);
            std::vector<double> x = NormalData(random, n, 1, 1, 0.25); // ties on a coarse grid
            std::vector<double> positive(x), counts(x);
            for (double& v : positive) {
                v = std::fabs(v);
            }
            for (double& v : counts) {
                v = std::floor(3 * std::fabs(v));
            }
            const KsParameters pn{1.1, 0.8}, pu{-0.5, 2.5}, pe{0.9, 0}, pp{2.2, 0};
            EXPECT_NEAR(OneSampleKolmogorovSmirnov(x, KsDistribution::kNormal, pn).fAbsolute,
                        BruteForceD(x, KsDistribution::kNormal, pn, normal), 1e-12);
            EXPECT_NEAR(OneSampleKolmogorovSmirnov(x, KsDistribution::kUniform, pu).fAbsolute,
                        BruteForceD(x, KsDistribution::kUniform, pu, uniform), 1e-12);
            EXPECT_NEAR(
                OneSampleKolmogorovSmirnov(positive, KsDistribution::kExponential, pe).fAbsolute,
                BruteForceD(positive, KsDistribution::kExponential, pe, exponential), 1e-12);
            EXPECT_NEAR(OneSampleKolmogorovSmirnov(counts, KsDistribution::kPoisson, pp).fAbsolute,
                        BruteForceD(counts, KsDistribution::kPoisson, pp, poisson), 1e-12);
        }
    }
}

// Under the hypothesis the asymptotic significance is calibrated for large samples and
// conservative for small ones: P(sig <= alpha) is near alpha at N = 200 (0.048 and 0.095
// in 40000 samples) and at most alpha (up to simulation error) at N = 10 (0.034, 0.073).
TEST(OneSampleKolmogorov, AsymptoticSignificanceUnderTheHypothesisBySimulation) {
    Random random(29);
    const std::size_t repeats = 10000;
    for (std::size_t n : {10u, 200u}) {
        std::size_t at5 = 0, at10 = 0;
        std::vector<double> x(n);
        for (std::size_t k = 0; k < repeats; ++k) {
            for (double& v : x) {
                v = random.Uniform();
            }
            const double sig =
                OneSampleKolmogorovSmirnov(x, KsDistribution::kUniform, KsParameters{0, 1})
                    .fAsymptoticSig2Tailed;
            at5 += sig <= 0.05;
            at10 += sig <= 0.10;
        }
        const double rate5 = static_cast<double>(at5) / repeats;
        const double rate10 = static_cast<double>(at10) / repeats;
        SCOPED_TRACE(testing::Message() << "n " << n << ": " << rate5 << ", " << rate10);
        // Three simulation standard errors: 0.0065 at 5 %, 0.009 at 10 %.
        EXPECT_LE(rate5, 0.05 + 0.0065);
        EXPECT_LE(rate10, 0.10 + 0.009);
        if (n == 200) {
            EXPECT_GE(rate5, 0.05 - 0.0065 - 0.004); // and the finite-sample lag at N = 200
            EXPECT_GE(rate10, 0.10 - 0.009 - 0.007);
        } else {
            EXPECT_GE(rate5, 0.02);
        }
    }
}

TEST(OneSampleKolmogorov, CannotCompute) {
    EXPECT_EQ(OneSampleKolmogorovSmirnov({}, KsDistribution::kNormal).fOutcome, Outcome::kNoCases);
    const std::vector<double> one{2};
    const std::vector<double> same{2, 2, 2, 2, 2, 2};
    const std::vector<double> four{1, 2, 4, 3};
    const std::vector<double> fraction{1, 2.5};
    const std::vector<double> negative{1, -2};
    EXPECT_EQ(OneSampleKolmogorovSmirnov(one, KsDistribution::kNormal).fOutcome,
              Outcome::kTooFewCases);
    EXPECT_EQ(OneSampleKolmogorovSmirnov(same, KsDistribution::kNormal).fOutcome,
              Outcome::kNoVariance);
    EXPECT_EQ(OneSampleKolmogorovSmirnov(same, KsDistribution::kUniform).fOutcome,
              Outcome::kNoVariance);
    // Below five cases the normal statistic is there, its Lilliefors significance is not.
    const OneSampleKsResult small = OneSampleKolmogorovSmirnov(four, KsDistribution::kNormal);
    EXPECT_EQ(small.fOutcome, Outcome::kTooFewCases);
    EXPECT_GT(small.fAbsolute, 0);
    EXPECT_TRUE(std::isnan(small.fLillieforsSig));
    EXPECT_EQ(OneSampleKolmogorovSmirnov(fraction, KsDistribution::kPoisson).fOutcome,
              Outcome::kOutsideSupport);
    EXPECT_EQ(OneSampleKolmogorovSmirnov(negative, KsDistribution::kExponential).fOutcome,
              Outcome::kOutsideSupport);
    EXPECT_EQ(
        OneSampleKolmogorovSmirnov(four, KsDistribution::kNormal, KsParameters{0, 0}).fOutcome,
        Outcome::kBadParameter);
    EXPECT_EQ(
        OneSampleKolmogorovSmirnov(four, KsDistribution::kUniform, KsParameters{3, 1}).fOutcome,
        Outcome::kBadParameter);
    EXPECT_EQ(
        OneSampleKolmogorovSmirnov(four, KsDistribution::kPoisson, KsParameters{-1, 0}).fOutcome,
        Outcome::kBadParameter);
    const std::vector<double> zeros{0, 0, 0};
    EXPECT_EQ(OneSampleKolmogorovSmirnov(zeros, KsDistribution::kExponential).fOutcome,
              Outcome::kNoVariance);
    EXPECT_EQ(OneSampleKolmogorovSmirnov(four, KsDistribution::kExponential,
                                         KsParameters{std::nan(""), 0})
                  .fOutcome,
              Outcome::kBadParameter);
}
