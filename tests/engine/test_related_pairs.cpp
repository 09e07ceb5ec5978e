// Sign test, Wilcoxon signed-rank test and Hodges-Lehmann estimate of two
// related fields against R (binom.test, prop.test, wilcox.test,
// exactRankTests::wilcox.exact, Walsh averages), and their properties.
#include "engine/stats/Numerics.h"
#include "engine/stats/RelatedPairs.h"

#include <algorithm>
#include <numeric>
#include <random>

#include "engine/RReference.h"
#include "engine/RelatedTestData.h"

namespace {

// R script lines that define d (second - first, at the data's precision:
// they have at most 12 decimals) and print the reference numbers in the
// order CheckAgainstR reads them.
const char* kPairScript = R"(
d <- round(y - x, 12)
nz <- d[d != 0]
pos <- sum(nz > 0); m <- length(nz)
cat(binom.test(pos, m)$p.value, suppressWarnings(prop.test(pos, m, correct = TRUE))$p.value, "\n")
w <- wilcox.test(d, exact = FALSE, correct = FALSE)
cat(w$statistic, w$p.value, "\n")
if (m <= 50) cat(suppressMessages(exactRankTests::wilcox.exact(d,
    exact = TRUE))$p.value, "\n") else cat(-1, "\n")
n <- length(d)
wa <- outer(d, d, "+"); wa <- sort(wa[!lower.tri(wa)]) / 2; N <- length(wa)
cc <- max(1, floor(n * (n + 1) / 4 - qnorm(0.975) * sqrt(n * (n + 1) * (2 * n + 1) / 24) + 0.5))
cat(median(wa), wa[cc], wa[N - cc + 1], "\n")
)";

void CheckAgainstR(const std::vector<double>& x, const std::vector<double>& y,
                   const std::vector<double>& r, const std::string& name) {
    ASSERT_EQ(r.size(), 9u) << name;
    const SignTestResult sign = SignTest(x, y);
    ASSERT_TRUE(sign.Computed()) << name;
    ExpectSig(sign.fExactSig, r[0], name + "|sign exact");
    ExpectSig(sign.fAsymptoticSig, r[1], name + "|sign asymptotic");
    const WilcoxonResult wilcoxon = WilcoxonSignedRank(x, y);
    ASSERT_TRUE(wilcoxon.Computed()) << name;
    ExpectStatistic(wilcoxon.fStatistic, r[2], name + "|signed-rank statistic");
    ExpectSig(wilcoxon.fAsymptoticSig, r[3], name + "|signed-rank asymptotic");
    if (r[4] >= 0) {
        ASSERT_TRUE(wilcoxon.fHasExact) << name;
        ExpectSig(wilcoxon.fExactSig, r[4], name + "|signed-rank exact");
    } else {
        EXPECT_FALSE(wilcoxon.fHasExact) << name;
    }
    const PairedHodgesLehmannResult hl = HodgesLehmannPaired(x, y, 0.95);
    ASSERT_TRUE(hl.Computed()) << name;
    ExpectStatistic(hl.fEstimate, r[5], name + "|Hodges-Lehmann estimate (Walsh averages)");
    ExpectStatistic(hl.fLower, r[6], name + "|Hodges-Lehmann lower bound");
    ExpectStatistic(hl.fUpper, r[7], name + "|Hodges-Lehmann upper bound");
}

std::vector<double> RunPairScript(const std::vector<double>& x, const std::vector<double>& y) {
    return RunR("x <- " + RVector(x) + "\ny <- " + RVector(y) + kPairScript + "cat(0)\n");
}

} // namespace

TEST(RelatedPairs, SleepAndAirqualityMatchR) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    // The data come from R itself: the paired sleep study (ties and a zero
    // difference) and Ozone against Temp of the complete airquality cases.
    for (const std::string data :
         {"x <- sleep$extra[sleep$group == 1]; y <- sleep$extra[sleep$group == 2]",
          "a <- na.omit(airquality); x <- a$Temp; y <- a$Ozone"}) {
        const std::vector<double> numbers =
            RunR(data + "\ncat(length(x), x, y, \"\\n\")" + kPairScript + "cat(0)\n");
        std::size_t at = 0;
        const std::size_t n = static_cast<std::size_t>(numbers.at(0));
        at = 1;
        const std::vector<double> x = Take(numbers, at, n);
        const std::vector<double> y = Take(numbers, at, n);
        const std::vector<double> r(numbers.begin() + static_cast<std::ptrdiff_t>(at),
                                    numbers.end());
        CheckAgainstR(x, y, r, data);
    }
}

TEST(RelatedPairs, RandomDataMatchR) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    // Small samples (exact significances, ties and zeros), a tie-free one,
    // and large ones for the normal approximations.
    const struct {
        unsigned seed;
        std::size_t n;
        double step;
        double shift;
    } cases[] = {{1, 12, 1.0, 0.5},
                 {2, 30, 0.5, 0.0},
                 {3, 45, 1e-9, 0.7},
                 {4, 200, 1.0, 0.3},
                 {5, 1000, 0.25, -0.1}};
    for (const auto& c : cases) {
        const auto [x, y] = RandomPairs(c.seed, c.n, c.step, c.shift);
        CheckAgainstR(x, y, RunPairScript(x, y), "seed " + std::to_string(c.seed));
    }
}

TEST(RelatedPairs, HodgesLehmannEstimateMatchesWilcoxTestWithoutTies) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    const auto [x, y] = RandomPairs(11, 25, 1e-9, 0.4);
    const std::vector<double> r =
        RunR("x <- " + RVector(x) + "\ny <- " + RVector(y) +
             "\ncat(wilcox.test(y, x, paired = TRUE, conf.int = TRUE, exact = TRUE)$estimate)");
    ASSERT_EQ(r.size(), 1u);
    ExpectStatistic(HodgesLehmannPaired(x, y, 0.9).fEstimate, r[0],
                    "|Hodges-Lehmann estimate (wilcox.test)");
}

TEST(RelatedPairs, WalshSelectionAgreesWithSortingAllAverages) {
    // Enough values that the selection narrows rows before it collects.
    std::mt19937 random(5);
    std::uniform_int_distribution<int> draw(-400, 400);
    std::vector<double> d(2000);
    for (double& v : d) {
        v = draw(random) * 0.25;
    }
    std::vector<double> all;
    for (std::size_t i = 0; i < d.size(); ++i) {
        for (std::size_t j = i; j < d.size(); ++j) {
            all.push_back((d[i] + d[j]) / 2.0);
        }
    }
    std::sort(all.begin(), all.end());
    for (std::size_t k : {std::size_t{1}, std::size_t{2}, std::size_t{777777}, all.size() / 2,
                          all.size() / 2 + 1, all.size() - 3, all.size()}) {
        EXPECT_EQ(WalshAverageOrderStatistic(d, k), all[k - 1]) << "k = " << k;
    }
    EXPECT_TRUE(std::isnan(WalshAverageOrderStatistic(d, 0)));
    EXPECT_TRUE(std::isnan(WalshAverageOrderStatistic(d, all.size() + 1)));
}

TEST(RelatedPairs, SwappingFieldsFlipsDirectionAndKeepsSignificance) {
    const auto [x, y] = RandomPairs(21, 40, 0.5, 0.6);
    const SignTestResult sign = SignTest(x, y);
    const SignTestResult signSwapped = SignTest(y, x);
    EXPECT_EQ(signSwapped.fStandardized, -sign.fStandardized);
    EXPECT_EQ(signSwapped.fStatistic, static_cast<double>(sign.fCounts.fNegative));
    EXPECT_EQ(signSwapped.fAsymptoticSig, sign.fAsymptoticSig);
    EXPECT_EQ(signSwapped.fExactSig, sign.fExactSig);
    const WilcoxonResult w = WilcoxonSignedRank(x, y);
    const WilcoxonResult ws = WilcoxonSignedRank(y, x);
    EXPECT_DOUBLE_EQ(ws.fStandardized, -w.fStandardized);
    EXPECT_DOUBLE_EQ(ws.fAsymptoticSig, w.fAsymptoticSig);
    EXPECT_DOUBLE_EQ(ws.fExactSig, w.fExactSig);
    const PairedHodgesLehmannResult h = HodgesLehmannPaired(x, y, 0.95);
    const PairedHodgesLehmannResult hs = HodgesLehmannPaired(y, x, 0.95);
    EXPECT_EQ(hs.fEstimate, -h.fEstimate);
    EXPECT_EQ(hs.fLower, -h.fUpper);
    EXPECT_EQ(hs.fUpper, -h.fLower);
}

TEST(RelatedPairs, ReorderingCasesChangesNothing) {
    auto [x, y] = RandomPairs(22, 60, 0.5, 0.2);
    const WilcoxonResult w = WilcoxonSignedRank(x, y);
    const PairedHodgesLehmannResult h = HodgesLehmannPaired(x, y, 0.9);
    std::vector<std::size_t> order(x.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::shuffle(order.begin(), order.end(), std::mt19937(3));
    std::vector<double> xr;
    std::vector<double> yr;
    for (std::size_t i : order) {
        xr.push_back(x[i]);
        yr.push_back(y[i]);
    }
    const WilcoxonResult wr = WilcoxonSignedRank(xr, yr);
    EXPECT_EQ(wr.fStatistic, w.fStatistic);
    EXPECT_EQ(wr.fStandardized, w.fStandardized);
    EXPECT_EQ(wr.fAsymptoticSig, w.fAsymptoticSig);
    const PairedHodgesLehmannResult hr = HodgesLehmannPaired(xr, yr, 0.9);
    EXPECT_EQ(hr.fEstimate, h.fEstimate);
    EXPECT_EQ(hr.fLower, h.fLower);
    EXPECT_EQ(hr.fUpper, h.fUpper);
}

TEST(RelatedPairs, CannotComputeSaysWhy) {
    const std::vector<double> empty;
    const std::vector<double> one{1.0};
    const std::vector<double> a{1, 2, 3};
    const std::vector<double> b{1, 2};
    EXPECT_EQ(SignTest(empty, empty).fOutcome, Outcome::kTooFewCases);
    EXPECT_EQ(WilcoxonSignedRank(one, one).fOutcome, Outcome::kTooFewCases);
    EXPECT_EQ(SignTest(a, b).fOutcome, Outcome::kUnequalLengths);
    EXPECT_EQ(HodgesLehmannPaired(a, b, 0.95).fOutcome, Outcome::kUnequalLengths);
    EXPECT_EQ(SignTest(a, a).fOutcome, Outcome::kAllPairsTied);
    const WilcoxonResult w = WilcoxonSignedRank(a, a);
    EXPECT_EQ(w.fOutcome, Outcome::kAllPairsTied);
    EXPECT_EQ(w.fCounts.fTies, 3u);
    EXPECT_TRUE(std::isnan(w.fAsymptoticSig));
    EXPECT_EQ(HodgesLehmannPaired(a, a, 1.0).fOutcome, Outcome::kBadParameter);
    // A difference beyond the doubles (no reader lets one through) is refused.
    const std::vector<double> huge{-1.7e308, 0, 1};
    const std::vector<double> other{1.7e308, 0, 2};
    EXPECT_EQ(HodgesLehmannPaired(huge, other, 0.95).fOutcome, Outcome::kNotFinite);
    EXPECT_TRUE(std::isnan(WalshAverageOrderStatistic(PairedDifferences(huge, other), 1)));
    EXPECT_TRUE(WilcoxonSignedRank(huge, other).Computed());
    // Identical pairs still have an estimate: no difference at all. Three
    // pairs are too few for a 95% interval.
    const PairedHodgesLehmannResult h = HodgesLehmannPaired(a, a, 0.95);
    ASSERT_TRUE(h.Computed());
    EXPECT_EQ(h.fEstimate, 0.0);
    EXPECT_FALSE(h.fIntervalReachable);
    EXPECT_TRUE(std::isnan(h.fLower) && std::isnan(h.fUpper));
}

TEST(RelatedPairs, SignTestReportsExactUpToTwentyFiveDiscordantPairs) {
    std::vector<double> x(30, 0.0);
    std::vector<double> y(30, 0.0);
    for (std::size_t i = 0; i < 25; ++i) {
        y[i] = i < 18 ? 1.0 : -1.0;
    }
    EXPECT_TRUE(SignTest(x, y).fExactReported);
    y[25] = 1.0;
    EXPECT_FALSE(SignTest(x, y).fExactReported);
}

TEST(RelatedPairs, HistogramOfDifferences) {
    const std::vector<double> d{-1.2, 0.0, 0.4, 2.5, 2.0};
    const std::vector<ValueBin> bins = BinValues(d, 1.0).fBins;
    ASSERT_EQ(bins.size(), 5u);
    const double mids[] = {-1.5, -0.5, 0.5, 1.5, 2.5};
    const std::size_t counts[] = {1, 0, 2, 0, 2};
    for (std::size_t b = 0; b < 5; ++b) {
        EXPECT_DOUBLE_EQ(bins[b].fMidpoint, mids[b]);
        EXPECT_EQ(bins[b].fCount, counts[b]);
    }
    EXPECT_TRUE(BinValues({}, 1.0).fBins.empty());
    EXPECT_TRUE(BinValues(d, 0.0).fBins.empty());
    EXPECT_EQ(HistogramBinWidth(d), 1.0); // range 3.7 in 4 bins: 0.925 rounds up to 1
    EXPECT_EQ(HistogramBinWidth(std::vector<double>{2, 2, 2}), 1.0);
    const DifferenceCounts signs = CountDifferenceSigns(d);
    EXPECT_EQ(signs.fNegative, 1u);
    EXPECT_EQ(signs.fTies, 1u);
    EXPECT_EQ(signs.fPositive, 3u);
}
