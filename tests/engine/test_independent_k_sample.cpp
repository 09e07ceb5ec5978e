// k-sample tests of independent samples against R (kruskal.test, Dunn's
// comparisons from rank() by formula, chisq.test, coin::median_test,
// fisher.test) on R's data sets and random ones; Jonckheere-Terpstra against
// its permutation distribution; properties every test must keep.
#include "engine/stats/IndependentKSample.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <sstream>

#include "engine/IndependentTestData.h"
#include "engine/stats/IndependentTwoSample.h"

namespace {

constexpr double kStatTolerance = 1e-9;
constexpr double kSigTolerance = 1e-6;

const std::vector<std::pair<std::string, Grouped>>& KSampleSets() {
    static std::vector<std::pair<std::string, Grouped>> sets;
    if (!sets.empty()) {
        return sets;
    }
    const std::vector<std::array<std::string, 3>> fromR{
        {"InsectSprays", "count", "spray"},  {"chickwts", "weight", "feed"},
        {"warpbreaks", "breaks", "tension"}, {"airquality", "Ozone", "Month"},
        {"ToothGrowth", "len", "dose"},      {"PlantGrowth", "weight", "group"}};
    std::vector<Grouped> data = HaveR() ? FromR(fromR) : std::vector<Grouped>{};
    for (std::size_t i = 0; i < data.size(); ++i) {
        sets.emplace_back(fromR[i][0] + " " + fromR[i][1] + " by " + fromR[i][2],
                          std::move(data[i]));
    }
    std::mt19937 random(1122);
    sets.emplace_back("random, an empty category", RandomGroups(random, {6, 0, 9, 7}, 0.5, 0.25));
    sets.emplace_back("random 2 groups", RandomGroups(random, {12, 9}, 0.8, 0.5));
    sets.emplace_back("random 7 groups",
                      RandomGroups(random, {40, 35, 50, 20, 44, 31, 28}, 0.1, 0));
    return sets;
}

// Flattens comparison rows for comparison with numbers R printed in the same
// layout (first, second, statistic, se, z, sig, adjusted sig).
std::vector<double> Flatten(const std::vector<ComparisonResult>& rows) {
    std::vector<double> out;
    for (const ComparisonResult& row : rows) {
        out.insert(out.end(),
                   {static_cast<double>(row.fFirst), static_cast<double>(row.fSecond),
                    row.fStatistic, row.fStdError, row.fStdStatistic, row.fSig, row.fAdjustedSig});
    }
    return out;
}

void ExpectRowsNear(const std::vector<double>& ours, const std::vector<double>& r) {
    ASSERT_EQ(ours.size(), r.size());
    for (std::size_t i = 0; i < ours.size(); ++i) {
        const std::size_t column = i % 7;
        if (std::isnan(r[i])) {
            EXPECT_TRUE(std::isnan(ours[i])) << "at " << i;
        } else {
            EXPECT_NEAR(ours[i], r[i], column >= 5 ? kSigTolerance : kStatTolerance)
                << "row " << i / 7 << " column " << column;
        }
    }
}

// R: every pair of non-empty levels i < j, written with the smaller shown
// value `v` first; `body` computes st, se, z, p of the pair (a, b).
std::string RPairs(const std::string& shown, const std::string& body) {
    return "v <- " + shown + R"(
lev <- which(table(g) > 0) - 1; k <- length(lev); m <- k * (k - 1) / 2; out <- c()
for (i in seq_len(k)) for (j in seq_len(k)) if (i < j) {
  a <- lev[i]; b <- lev[j]; if (v[b + 1] < v[a + 1]) { h <- a; a <- b; b <- h }
  xa <- x[g == a]; xb <- x[g == b]
)" + body + R"(
  out <- c(out, a, b, st, se, z, p, min(1, p * m))
}
cat(out)
)";
}

} // namespace

TEST(IndependentKSample, KruskalWallisAndDunnMatchR) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    const auto& sets = KSampleSets();
    std::vector<std::string> scripts;
    for (const auto& [name, data] : sets) {
        scripts.push_back(data.RData() + R"(
kw <- kruskal.test(x, g)
cat(kw$statistic, kw$parameter, kw$p.value, tapply(rank(x), g, mean), "")
r <- rank(x); N <- length(x); t <- table(x); n <- table(g); mr <- tapply(r, g, mean)
base <- N * (N + 1) / 12 - sum(t^3 - t) / (12 * (N - 1))
)" + RPairs("mr", R"(
  st <- mr[a + 1] - mr[b + 1]; se <- sqrt(base * (1 / n[a + 1] + 1 / n[b + 1]))
  z <- st / se; p <- 2 * pnorm(-abs(z))
)"));
    }
    const std::vector<std::vector<double>> results = RunREach(scripts);
    for (std::size_t i = 0; i < sets.size(); ++i) {
        const auto& [name, data] = sets[i];
        SCOPED_TRACE(name);
        const KruskalWallisResult ours = KruskalWallis(data.View());
        ASSERT_TRUE(ours.Computed()) << OutcomeText(ours.fOutcome);
        const std::vector<double>& r = results[i];
        ASSERT_GE(r.size(), 3 + data.fGroupCount);
        EXPECT_NEAR(ours.fStatistic, r[0], kStatTolerance);
        EXPECT_EQ(ours.fDf, r[1]);
        EXPECT_NEAR(ours.fSig, r[2], kSigTolerance);
        for (std::size_t g = 0; g < data.fGroupCount; ++g) {
            if (std::isnan(r[3 + g])) {
                EXPECT_TRUE(std::isnan(ours.fMeanRank[g]));
            } else {
                EXPECT_NEAR(ours.fMeanRank[g], r[3 + g], kStatTolerance);
            }
        }
        const std::vector<ComparisonResult> rows = KruskalWallisPairwise(ours);
        ExpectRowsNear(
            Flatten(rows),
            std::vector<double>(r.begin() + 3 + static_cast<long>(data.fGroupCount), r.end()));
        const double m = static_cast<double>(ours.fSamples.size() * (ours.fSamples.size() - 1) / 2);
        for (const ComparisonResult& row : rows) {
            EXPECT_EQ(row.fAdjustedSig, std::min(1.0, m * row.fSig));
        }
    }
}

TEST(IndependentKSample, KruskalWallisSubsetsTestEachSubsetAsR) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    const auto& sets = KSampleSets();
    std::vector<std::vector<ComparisonResult>> subsets;
    std::vector<std::string> scripts;
    for (const auto& [name, data] : sets) {
        const KruskalWallisResult test = KruskalWallis(data.View());
        const std::vector<std::size_t> order = OrderByShownValue(test.fSamples, test.fMeanRank);
        subsets.push_back(KruskalWallisSubsets(data.View(), test, 0.05));
        std::ostringstream script;
        script << data.RData() << "out <- c()\n";
        std::size_t covered = 0;
        for (const ComparisonResult& row : subsets.back()) {
            covered += row.fSecond - row.fFirst + 1;
            if (row.fFirst == row.fSecond) {
                EXPECT_TRUE(std::isnan(row.fSig));
                continue;
            }
            std::vector<double> members;
            for (std::size_t p = row.fFirst; p <= row.fSecond; ++p) {
                members.push_back(static_cast<double>(order[p]));
            }
            script << "s <- g %in% " << RVector(members)
                   << "; kw <- kruskal.test(x[s], droplevels(g[s])); out <- c(out, kw$statistic, "
                      "kw$p.value)\n";
        }
        EXPECT_GE(covered, test.fSamples.size()) << name;
        script << "cat(out)";
        scripts.push_back(script.str());
    }
    const std::vector<std::vector<double>> results = RunREach(scripts);
    for (std::size_t i = 0; i < sets.size(); ++i) {
        SCOPED_TRACE(sets[i].first);
        const std::vector<double>& r = results[i];
        const double k = static_cast<double>(KruskalWallis(sets[i].second.View()).fSamples.size());
        std::size_t at = 0;
        for (const ComparisonResult& row : subsets[i]) {
            if (row.fFirst == row.fSecond) {
                continue;
            }
            ASSERT_LT(at + 1, r.size());
            EXPECT_NEAR(row.fStatistic, r[at], kStatTolerance);
            EXPECT_NEAR(row.fSig, r[at + 1], kSigTolerance);
            const double p = static_cast<double>(row.fSecond - row.fFirst + 1);
            EXPECT_NEAR(row.fAdjustedSig, 1 - std::pow(1 - r[at + 1], k / p), kSigTolerance);
            EXPECT_GE(row.fAdjustedSig, 0.05);
            at += 2;
        }
        EXPECT_EQ(at, r.size());
    }
}

TEST(IndependentKSample, MedianTestMatchesR) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    const auto& sets = KSampleSets();
    std::vector<std::string> scripts;
    for (const auto& [name, data] : sets) {
        scripts.push_back(data.RData() + R"(
suppressMessages(library(coin))
h <- droplevels(g); med <- median(x); N <- length(x)
tab <- table(factor(x > med, levels = c(TRUE, FALSE)), h)
cs <- suppressWarnings(chisq.test(tab, correct = FALSE))
co <- statistic(median_test(x ~ h, data = data.frame(x = x, h = h)))
if (nlevels(h) == 2) co <- co^2
two <- if (nlevels(h) == 2) {
  y <- suppressWarnings(chisq.test(tab, correct = TRUE))
  c(y$statistic, y$p.value, fisher.test(tab)$p.value)
} else c(NA, NA, NA)
cat(med, cs$statistic, cs$parameter, cs$p.value, co * N / (N - 1), two, tab[1, ], tab[2, ], "")
sm <- tapply(x, g, median)
)" + RPairs("sm", R"(
  pm <- median(c(xa, xb)); t2 <- rbind(c(sum(xa > pm), sum(xb > pm)), c(sum(xa <= pm), sum(xb <= pm)))
  if (any(rowSums(t2) == 0)) { st <- NA; p <- NA } else {
    c2 <- suppressWarnings(chisq.test(t2, correct = FALSE)); st <- c2$statistic; p <- c2$p.value }
  se <- NA; z <- NA
)"));
    }
    const std::vector<std::vector<double>> results = RunREach(scripts);
    for (std::size_t i = 0; i < sets.size(); ++i) {
        const auto& [name, data] = sets[i];
        SCOPED_TRACE(name);
        const MedianTestResult ours = MedianTest(data.View(), std::nullopt);
        ASSERT_TRUE(ours.Computed()) << OutcomeText(ours.fOutcome);
        const std::vector<double>& r = results[i];
        const std::size_t k = ours.fSamples.size();
        ASSERT_GE(r.size(), 8 + 2 * k);
        EXPECT_NEAR(ours.fMedian, r[0], kStatTolerance);
        EXPECT_NEAR(ours.fChiSquare, r[1], kStatTolerance);
        EXPECT_EQ(ours.fDf, r[2]);
        EXPECT_NEAR(ours.fSig, r[3], kSigTolerance);
        EXPECT_NEAR(ours.fChiSquare, r[4], kStatTolerance); // coin's statistic times N/(N-1)
        EXPECT_EQ(ours.fTwoSamples, !std::isnan(r[5]));
        if (ours.fTwoSamples) {
            EXPECT_NEAR(ours.fYatesChiSquare, r[5], kStatTolerance);
            EXPECT_NEAR(ours.fYatesSig, r[6], kSigTolerance);
            EXPECT_NEAR(ours.fFisherSig, r[7], kSigTolerance);
        }
        for (std::size_t s = 0; s < k; ++s) {
            EXPECT_EQ(static_cast<double>(ours.fAbove[ours.fSamples[s]]), r[8 + s]);
            EXPECT_EQ(static_cast<double>(ours.fAtOrBelow[ours.fSamples[s]]), r[8 + k + s]);
        }
        ExpectRowsNear(Flatten(MedianPairwise(data.View(), ours, std::nullopt)),
                       std::vector<double>(r.begin() + 8 + 2 * static_cast<long>(k), r.end()));
    }
}

TEST(IndependentKSample, FisherExactMatchesR) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    const std::vector<std::array<std::size_t, 4>> tables{
        {3, 1, 1, 3}, {0, 5, 6, 0},       {10, 2, 3, 15}, {1, 0, 0, 0},
        {7, 7, 7, 7}, {120, 95, 80, 130}, {2, 9, 14, 3}};
    std::ostringstream script;
    for (const auto& t : tables) {
        script << "cat(fisher.test(matrix(c(" << t[0] << "," << t[2] << "," << t[1] << "," << t[3]
               << "), 2))$p.value, '')\n";
    }
    const std::vector<double> r = RunR(script.str());
    ASSERT_EQ(r.size(), tables.size());
    for (std::size_t i = 0; i < tables.size(); ++i) {
        const auto& t = tables[i];
        EXPECT_NEAR(FisherExact2x2(t[0], t[1], t[2], t[3]), r[i], 1e-12) << "table " << i;
    }
}

namespace {

// J by its definition: over pairs of groups earlier < later in `order`, the
// pairs of cases with the earlier case smaller, ties counting one half.
double JonckheereByDefinition(const std::vector<double>& values, const std::vector<int>& groups,
                              const std::vector<int>& order) {
    std::vector<int> position(order.size() + 8, -1);
    for (std::size_t p = 0; p < order.size(); ++p) {
        position[static_cast<std::size_t>(order[p])] = static_cast<int>(p);
    }
    double j = 0;
    for (std::size_t a = 0; a < values.size(); ++a) {
        for (std::size_t b = 0; b < values.size(); ++b) {
            const int pa = position[static_cast<std::size_t>(groups[a])];
            const int pb = position[static_cast<std::size_t>(groups[b])];
            if (pa >= 0 && pb >= 0 && pa < pb) {
                j += values[a] < values[b] ? 1 : values[a] == values[b] ? 0.5 : 0;
            }
        }
    }
    return j;
}

// Mean and variance of J over every assignment of the group labels to the
// values (the permutation distribution the test's moments describe).
std::pair<double, double> JonckheerePermutationMoments(const std::vector<double>& values,
                                                       std::vector<int> groups,
                                                       const std::vector<int>& order) {
    std::sort(groups.begin(), groups.end());
    double count = 0;
    double sum = 0;
    double squares = 0;
    do {
        const double j = JonckheereByDefinition(values, groups, order);
        count += 1;
        sum += j;
        squares += j * j;
    } while (std::next_permutation(groups.begin(), groups.end()));
    const double mean = sum / count;
    return {mean, squares / count - mean * mean};
}

} // namespace

TEST(IndependentKSample, JonckheereMomentsAreThoseOfThePermutationDistribution) {
    const std::vector<std::pair<std::vector<double>, std::vector<int>>> cases{
        {{1, 2, 2, 3, 5, 5, 5}, {0, 1, 2, 0, 2, 1, 2}},
        {{4, 1, 4, 2, 2, 7, 1, 4, 3, 2}, {0, 1, 2, 3, 0, 1, 2, 3, 3, 1}},
        {{3, 3, 3, 3, 1, 9}, {1, 0, 1, 0, 2, 2}},
        {{0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 7.5}, {2, 2, 0, 1, 0, 1, 2, 0}},
    };
    for (const auto& [values, groups] : cases) {
        const int k = *std::max_element(groups.begin(), groups.end()) + 1;
        const Grouped data(values, groups, static_cast<std::size_t>(k));
        for (const bool descending : {false, true}) {
            std::vector<int> order(static_cast<std::size_t>(k));
            std::iota(order.begin(), order.end(), 0);
            if (descending) {
                std::reverse(order.begin(), order.end());
            }
            const JonckheereResult ours = JonckheereTerpstra(data.View(), descending);
            ASSERT_TRUE(ours.Computed()) << OutcomeText(ours.fOutcome);
            const auto [mean, variance] = JonckheerePermutationMoments(values, groups, order);
            EXPECT_NEAR(ours.fStatistic, JonckheereByDefinition(values, groups, order), 1e-12);
            EXPECT_NEAR(ours.fMean, mean, 1e-9);
            EXPECT_NEAR(ours.fStdError * ours.fStdError, variance, 1e-9);
            // Each pair: the two-sample test in the order of the alternative.
            for (const ComparisonResult& row : JonckheerePairwise(data.View(), ours)) {
                std::vector<int> pair{static_cast<int>(row.fFirst), static_cast<int>(row.fSecond)};
                std::sort(pair.begin(), pair.end());
                if (descending) {
                    std::reverse(pair.begin(), pair.end());
                }
                std::vector<double> pv;
                std::vector<int> pg;
                for (std::size_t i = 0; i < values.size(); ++i) {
                    if (groups[i] == pair[0] || groups[i] == pair[1]) {
                        pv.push_back(values[i]);
                        pg.push_back(groups[i]);
                    }
                }
                const auto [pm, pvar] = JonckheerePermutationMoments(pv, pg, pair);
                EXPECT_NEAR(row.fStatistic, JonckheereByDefinition(pv, pg, pair), 1e-12);
                if (pvar > 0) {
                    EXPECT_NEAR(row.fStdError * row.fStdError, pvar, 1e-9);
                    EXPECT_NEAR(row.fStdStatistic, (row.fStatistic - pm) / std::sqrt(pvar), 1e-9);
                }
            }
        }
    }
}

TEST(IndependentKSample, JonckheereOfTwoGroupsIsMannWhitney) {
    std::mt19937 random(8);
    const Grouped data = RandomGroups(random, {15, 18}, 0.3, 0.5);
    const JonckheereResult jt = JonckheereTerpstra(data.View(), false);
    const MannWhitneyResult mw = MannWhitney(data.View());
    EXPECT_NEAR(jt.fStatistic, mw.fU, 1e-9);
    EXPECT_NEAR(jt.fStdError, mw.fStdError, 1e-9);
    EXPECT_NEAR(jt.fSig, mw.fAsymptoticSig, 1e-12);
}

namespace {

Grouped Relabelled(const Grouped& data, const std::vector<int>& newCode, double shift) {
    std::vector<double> values = data.fValues;
    for (double& v : values) {
        v += shift;
    }
    std::vector<int> groups;
    for (const int g : data.fGroups) {
        groups.push_back(newCode[static_cast<std::size_t>(g)]);
    }
    return Grouped(values, groups, data.fGroupCount);
}

} // namespace

TEST(IndependentKSample, RelabellingAndShiftingChangeNothing) {
    std::mt19937 random(99);
    const Grouped data = RandomGroups(random, {20, 25, 15, 30}, 0.3, 1.0);
    const Grouped moved = Relabelled(data, {2, 0, 3, 1}, 1000);
    const KruskalWallisResult a = KruskalWallis(data.View());
    const KruskalWallisResult b = KruskalWallis(moved.View());
    EXPECT_NEAR(a.fStatistic, b.fStatistic, 1e-12);
    EXPECT_EQ(a.fSig, b.fSig);
    const MedianTestResult ma = MedianTest(data.View(), std::nullopt);
    const MedianTestResult mb = MedianTest(moved.View(), std::nullopt);
    EXPECT_NEAR(ma.fChiSquare, mb.fChiSquare, 1e-12);
    EXPECT_EQ(ma.fMedian + 1000, mb.fMedian);
    // Same subsets of the same groups.
    const auto sa = KruskalWallisSubsets(data.View(), a, 0.05);
    const auto sb = KruskalWallisSubsets(moved.View(), b, 0.05);
    ASSERT_EQ(sa.size(), sb.size());
    for (std::size_t i = 0; i < sa.size(); ++i) {
        EXPECT_EQ(sa[i].fFirst, sb[i].fFirst);
        EXPECT_EQ(sa[i].fSecond, sb[i].fSecond);
    }
    // Jonckheere-Terpstra descending is ascending over the reversed categories.
    const Grouped reversed = Relabelled(data, {3, 2, 1, 0}, 0);
    EXPECT_NEAR(JonckheereTerpstra(data.View(), true).fStatistic,
                JonckheereTerpstra(reversed.View(), false).fStatistic, 1e-9);
    // Two samples swapped: U becomes n1 n2 - U, significances stay.
    const Grouped two = RandomGroups(random, {9, 12}, 0.5, 0.5);
    const Grouped swapped = Relabelled(two, {1, 0}, -3.5);
    const MannWhitneyResult u1 = MannWhitney(two.View());
    const MannWhitneyResult u2 = MannWhitney(swapped.View());
    EXPECT_NEAR(u1.fU, 9.0 * 12.0 - u2.fU, 1e-12);
    EXPECT_NEAR(u1.fAsymptoticSig, u2.fAsymptoticSig, 1e-14);
    EXPECT_NEAR(u1.fExactSig, u2.fExactSig, 1e-14);
    EXPECT_NEAR(KolmogorovSmirnovTwoSample(two.View()).fAbsolute,
                KolmogorovSmirnovTwoSample(swapped.View()).fAbsolute, 1e-14);
    EXPECT_EQ(WaldWolfowitz(two.View()).fMaximum.fRuns,
              WaldWolfowitz(swapped.View()).fMaximum.fRuns);
    EXPECT_NEAR(HodgesLehmann(two.View(), 0.9).fEstimate,
                -HodgesLehmann(swapped.View(), 0.9).fEstimate, 1e-12);
}

TEST(IndependentKSample, CannotComputeSaysWhy) {
    const Grouped one({1, 2, 3}, {1, 1, 1}, 3);
    const Grouped tied({4, 4, 4, 4}, {0, 1, 2, 0}, 3);
    const Grouped empty({}, {}, 3);
    for (const Grouped* data : {&one, &empty}) {
        EXPECT_FALSE(KruskalWallis(data->View()).Computed());
        EXPECT_FALSE(MedianTest(data->View(), std::nullopt).Computed());
        EXPECT_FALSE(JonckheereTerpstra(data->View(), false).Computed());
        EXPECT_NE(KruskalWallis(data->View()).fOutcome, Outcome::kComputed);
    }
    const KruskalWallisResult kw = KruskalWallis(tied.View());
    EXPECT_FALSE(kw.Computed());
    EXPECT_EQ(kw.fOutcome, Outcome::kNoVariance);
    EXPECT_TRUE(KruskalWallisPairwise(kw).empty());
    const MedianTestResult median = MedianTest(tied.View(), std::nullopt);
    EXPECT_FALSE(median.Computed());
    EXPECT_EQ(median.fAtOrBelow[0], 2u); // the counts are still there for the charts
    // A given test value above every case.
    const Grouped some({1, 2, 3, 4, 5, 6}, {0, 1, 2, 0, 1, 2}, 3);
    EXPECT_FALSE(MedianTest(some.View(), 10.0).Computed());
    const MedianTestResult at3 = MedianTest(some.View(), 3.0);
    EXPECT_TRUE(at3.Computed());
    EXPECT_EQ(at3.fMedian, 3.0);
    // A pair with every case on one side of its median carries a message.
    const Grouped sided({1, 1, 1, 1, 5, 9}, {0, 0, 1, 1, 2, 2}, 3);
    const MedianTestResult s = MedianTest(sided.View(), std::nullopt);
    const auto rows = MedianPairwise(sided.View(), s, std::nullopt);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_TRUE(rows[0].fNoVariation);
    EXPECT_TRUE(std::isnan(rows[0].fSig));
    EXPECT_TRUE(std::isnan(rows[0].fAdjustedSig));
}

// On a larger sample with ties, the moments of J under random relabelling
// (seeded simulation) agree with the tie-corrected mean and variance.
TEST(IndependentKSample, JonckheereMomentsMatchSimulation) {
    std::mt19937 random(77);
    const Grouped data = RandomGroups(random, {30, 25, 40, 35}, 0.0, 0.5);
    const JonckheereResult ours = JonckheereTerpstra(data.View(), false);
    ASSERT_TRUE(ours.Computed());
    std::vector<int> groups = data.fGroups;
    constexpr int kDraws = 20000;
    double sum = 0;
    double squares = 0;
    for (int draw = 0; draw < kDraws; ++draw) {
        std::shuffle(groups.begin(), groups.end(), random);
        const Grouped shuffled(data.fValues, groups, data.fGroupCount);
        const double j = JonckheereTerpstra(shuffled.View(), false).fStatistic;
        sum += j;
        squares += j * j;
    }
    const double mean = sum / kDraws;
    const double variance = squares / kDraws - mean * mean;
    const double sd = ours.fStdError;
    EXPECT_NEAR(mean, ours.fMean, 5 * sd / std::sqrt(kDraws));
    // The variance of a sample variance of a near-normal statistic: 2 sd^4 / n.
    EXPECT_NEAR(variance, sd * sd, 5 * sd * sd * std::sqrt(2.0 / kDraws));
}
