// Runs test: the exact distribution by complete enumeration of every
// sequence; statistics and both significances against the textbook formulas
// evaluated in R (base R has no runs test) on R's time series and datasets.
#include "engine/stats/OneSampleRuns.h"

#include <map>

#include "engine/test_one_sample_support.h"

TEST(OneSampleRuns, ExactTailsMatchCompleteEnumeration) {
    for (std::size_t n = 3; n <= 14; ++n) {
        // count[n1][r]: sequences of length n with n1 cases of the first class and r runs.
        std::map<std::size_t, std::map<std::size_t, double>> count;
        std::map<std::pair<std::size_t, std::size_t>, std::vector<std::uint8_t>> example;
        for (std::uint32_t mask = 0; mask < (1u << n); ++mask) {
            std::vector<std::uint8_t> classes;
            std::size_t first = 0;
            std::size_t runs = 0;
            for (std::size_t i = 0; i < n; ++i) {
                const std::uint8_t c = (mask >> i) & 1u;
                first += c == 0;
                runs += i == 0 || c != classes.back();
                classes.push_back(c);
            }
            count[first][runs] += 1;
            example.emplace(std::pair{first, runs}, classes);
        }
        for (const auto& [key, classes] : example) {
            const auto [first, runs] = key;
            if (first == 0 || first == n) {
                continue;
            }
            double total = 0, atMost = 0, atLeast = 0;
            for (const auto& [r, c] : count[first]) {
                total += c;
                atMost += r <= runs ? c : 0;
                atLeast += r >= runs ? c : 0;
            }
            const OneSampleRunsResult result = RunsTest(classes);
            SCOPED_TRACE(testing::Message() << "n " << n << ", n1 " << first << ", runs " << runs);
            ASSERT_TRUE(result.Computed());
            EXPECT_EQ(result.fRuns, static_cast<double>(runs));
            EXPECT_NEAR(result.fExactSigLess, atMost / total, 1e-12);
            EXPECT_NEAR(result.fExactSigGreater, atLeast / total, 1e-12);
            EXPECT_NEAR(result.fExactSig2Tailed,
                        std::min(1.0, 2 * std::min(atMost, atLeast) / total), 1e-12);
        }
    }
}

namespace {

// Runs about a cut point by the textbook formulas in R: n1, n2, runs, mean, standard
// deviation, z (continuity corrected below 50 cases), its two-sided significance, and the
// exact P(R <= r) and P(R >= r) summed from the closed form with choose().
const char* const kRRuns = R"(
runs <- function(x, cut) {
  g <- as.integer(x >= cut); n1 <- sum(g == 0); n2 <- sum(g == 1); n <- n1 + n2
  r <- 1 + sum(diff(g) != 0); mu <- 2 * n1 * n2 / n + 1
  v <- 2 * n1 * n2 * (2 * n1 * n2 - n) / (n^2 * (n - 1)); d <- r - mu
  if (n < 50) d <- sign(d) * max(abs(d) - 0.5, 0)
  z <- d / sqrt(v)
  pr <- function(k) {
    if (k %% 2 == 0) { m <- k / 2; 2 * choose(n1 - 1, m - 1) * choose(n2 - 1, m - 1) }
    else { m <- (k - 1) / 2
           choose(n1 - 1, m - 1) * choose(n2 - 1, m) + choose(n1 - 1, m) * choose(n2 - 1, m - 1) }
  }
  k <- 2:(2 * min(n1, n2) + 1); p <- sapply(k, pr) / choose(n, n1)
  cat(cut, n1, n2, r, mu, sqrt(v), z, 2 * pnorm(-abs(z)), sum(p[k <= r]), sum(p[k >= r]), '\n')
}
)";

void ExpectRunsMatch(const OneSampleRunsResult& result, const double* r) {
    ASSERT_TRUE(result.Computed()) << OutcomeText(result.fOutcome);
    EXPECT_EQ(result.fFirstCount, r[1]);
    EXPECT_EQ(result.fSecondCount, r[2]);
    EXPECT_EQ(result.fRuns, r[3]);
    EXPECT_STAT(result.fMean, r[4]);
    EXPECT_STAT(result.fStdDev, r[5]);
    EXPECT_STAT(result.fStandardized, r[6]);
    EXPECT_SIG(result.fAsymptoticSig2Tailed, r[7]);
    EXPECT_SIG(result.fExactSigLess, r[8]);
    EXPECT_SIG(result.fExactSigGreater, r[9]);
    EXPECT_EQ(result.fExactIsReported, result.fTotalN <= kRunsExactMaxCases);
}

} // namespace

TEST(OneSampleRuns, CutPointsOnRSeriesMatchFormulasInR) {
    REQUIRE_R();
    // Series in time order (Nile flow, lynx trappings, Lake Huron level, New Haven
    // temperature, US airline miles), cities' rainfall, island areas, geyser waiting times.
    const std::vector<std::string> series{"as.numeric(Nile)",
                                          "as.numeric(lynx)",
                                          "as.numeric(LakeHuron)",
                                          "as.numeric(nhtemp)",
                                          "as.numeric(airmiles)",
                                          "precip",
                                          "islands",
                                          "faithful$waiting",
                                          "as.numeric(LakeHuron)[1:30]"};
    std::string script = kRRuns;
    const std::vector<std::vector<double>> data = RDataSets(series);
    std::vector<std::pair<RunsCut, std::size_t>> plan;
    for (std::size_t i = 0; i < series.size(); ++i) {
        for (RunsCut cut : {RunsCut::kMedian, RunsCut::kMean}) {
            plan.emplace_back(cut, i);
            script += "runs(" + series[i] + ", " + (cut == RunsCut::kMedian ? "median" : "mean") +
                      "(" + series[i] + "))\n";
        }
    }
    const std::vector<double> r = RunR(script);
    ASSERT_EQ(r.size(), 10 * plan.size());
    for (std::size_t k = 0; k < plan.size(); ++k) {
        const auto [cut, i] = plan[k];
        SCOPED_TRACE(series[i] +
                     (cut == RunsCut::kMedian ? " about the median" : " about the mean"));
        const double point = RunsCutPoint(data[i], cut);
        EXPECT_STAT(point, r[10 * k]);
        ExpectRunsMatch(RunsTestByCutPoint(data[i], point), &r[10 * k]);
    }
}

TEST(OneSampleRuns, CategoriesOnRDatasets) {
    REQUIRE_R();
    // Transmission and engine shape of the 32 cars in data-set order; a value list that leaves
    // cases out (4 and 8 cylinders only).
    const std::vector<double> am = RData("mtcars$am");
    const std::vector<double> cyl = RData("mtcars$cyl");
    const std::vector<double> r =
        RunR(std::string(kRRuns) + "runs(mtcars$am, 1)\n"
                                   "c <- mtcars$cyl[mtcars$cyl != 6]\nruns(c, 8)\n");
    ASSERT_EQ(r.size(), 20u);
    ExpectRunsMatch(RunsTestByCategories(am, std::vector<double>{0}, std::vector<double>{1}),
                    &r[0]);
    const OneSampleRunsResult cylinders =
        RunsTestByCategories(cyl, std::vector<double>{4}, std::vector<double>{8});
    ExpectRunsMatch(cylinders, &r[10]);
    EXPECT_EQ(cylinders.fExcluded, 7u);
    EXPECT_EQ(cylinders.fValuesOutside, std::vector<double>{6});
}

TEST(OneSampleRuns, CannotCompute) {
    EXPECT_EQ(RunsTest({}).fOutcome, Outcome::kNoCases);
    const std::vector<std::uint8_t> one{1};
    const std::vector<std::uint8_t> same{1, 1, 1, 1};
    const std::vector<std::uint8_t> pair{0, 1};
    EXPECT_EQ(RunsTest(one).fOutcome, Outcome::kTooFewCases);
    EXPECT_EQ(RunsTest(same).fOutcome, Outcome::kOneCategory);
    EXPECT_EQ(RunsTest(pair).fOutcome, Outcome::kTooFewCases);
    // Every value at or above the cut.
    const std::vector<double> values{4, 5, 6};
    EXPECT_EQ(RunsTestByCutPoint(values, 4).fOutcome, Outcome::kOneCategory);
    EXPECT_EQ(
        RunsTestByCategories(values, std::vector<double>{4, 5}, std::vector<double>{5}).fOutcome,
        Outcome::kBadParameter);
    // The smallest sample that can vary: three cases.
    const std::vector<std::uint8_t> three{0, 1, 0};
    const OneSampleRunsResult result = RunsTest(three);
    ASSERT_TRUE(result.Computed());
    EXPECT_DOUBLE_EQ(result.fExactSigGreater, 1.0 / 3);
}
