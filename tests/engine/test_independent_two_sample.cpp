// Two-sample tests of independent samples against R (wilcox.test,
// exactRankTests::wilcox.exact, ks.test) on R's data sets and random ones,
// and against complete enumeration where R has no reference.
#include "engine/stats/IndependentTwoSample.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <numeric>

#include "engine/IndependentTestData.h"

namespace {

constexpr double kStatTolerance = 1e-9;
constexpr double kSigTolerance = 1e-6;

// Two-sample data sets: R's own and random ones (with and without ties,
// small enough for exact significances and larger).
const std::vector<std::pair<std::string, Grouped>>& TwoSampleSets() {
    static std::vector<std::pair<std::string, Grouped>> sets;
    if (!sets.empty()) {
        return sets;
    }
    const std::vector<std::array<std::string, 3>> fromR{
        {"ToothGrowth", "len", "supp"},
        {"mtcars", "mpg", "am"},
        {"sleep", "extra", "group"},
        {"subset(airquality, Month %in% c(5, 8))", "Ozone", "Month"}};
    std::vector<Grouped> data = HaveR() ? FromR(fromR) : std::vector<Grouped>{};
    for (std::size_t i = 0; i < data.size(); ++i) {
        sets.emplace_back(fromR[i][0] + " " + fromR[i][1] + " by " + fromR[i][2],
                          std::move(data[i]));
    }
    std::mt19937 random(20261122);
    sets.emplace_back("random 8 and 11, no ties", RandomGroups(random, {8, 11}, 0.7, 0));
    sets.emplace_back("random 10 and 14, ties", RandomGroups(random, {10, 14}, 0.4, 0.5));
    sets.emplace_back("random 300 and 250, ties", RandomGroups(random, {300, 250}, 0.2, 0.1));
    sets.emplace_back("random 3 and 2", RandomGroups(random, {3, 2}, 1.0, 0));
    return sets;
}

} // namespace

TEST(IndependentTwoSample, MannWhitneyMatchesR) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    const auto& sets = TwoSampleSets();
    std::vector<std::string> scripts;
    for (const auto& [name, data] : sets) {
        scripts.push_back(data.RData() + R"(
a <- x[g == "0"]; b <- x[g == "1"]; n1 <- length(a); n2 <- length(b); N <- n1 + n2
w <- wilcox.test(b, a, exact = FALSE, correct = FALSE)
t <- table(x); se <- sqrt(n1 * n2 / 12 * ((N + 1) - sum(t^3 - t) / (N * (N - 1))))
r <- rank(x)
ex <- if (N <= 50) suppressWarnings(exactRankTests::wilcox.exact(b, a, exact = TRUE)$p.value) else NA
ex2 <- if (N <= 50 && length(t) == N) wilcox.test(b, a, exact = TRUE)$p.value else NA
cat(w$statistic, sum(r[g == "1"]), se, (w$statistic - n1 * n2 / 2) / se, w$p.value, ex, ex2,
    mean(r[g == "0"]), mean(r[g == "1"]))
)");
    }
    const std::vector<std::vector<double>> results = RunREach(scripts);
    for (std::size_t i = 0; i < sets.size(); ++i) {
        const auto& [name, data] = sets[i];
        SCOPED_TRACE(name);
        const MannWhitneyResult ours = MannWhitney(data.View());
        ASSERT_TRUE(ours.Computed()) << OutcomeText(ours.fOutcome);
        const std::vector<double>& r = results[i];
        ASSERT_EQ(r.size(), 9u);
        EXPECT_NEAR(ours.fU, r[0], kStatTolerance);
        EXPECT_NEAR(ours.fWilcoxonW, r[1], kStatTolerance);
        EXPECT_NEAR(ours.fStdError, r[2], kStatTolerance);
        EXPECT_NEAR(ours.fStdStatistic, r[3], kStatTolerance);
        EXPECT_NEAR(ours.fAsymptoticSig, r[4], kSigTolerance);
        EXPECT_EQ(ours.fHasExact, !std::isnan(r[5]));
        if (ours.fHasExact) {
            EXPECT_NEAR(ours.fExactSig, r[5], kSigTolerance);
        }
        if (!std::isnan(r[6])) {
            EXPECT_NEAR(ours.fExactSig, r[6], kSigTolerance);
        }
        EXPECT_NEAR(ours.fMeanRank1, r[7], kStatTolerance);
        EXPECT_NEAR(ours.fMeanRank2, r[8], kStatTolerance);
    }
}

TEST(IndependentTwoSample, KolmogorovSmirnovMatchesR) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    const auto& sets = TwoSampleSets();
    std::vector<std::string> scripts;
    for (const auto& [name, data] : sets) {
        scripts.push_back(data.RData() + R"(
a <- x[g == "0"]; b <- x[g == "1"]
ks <- function(...) suppressWarnings(ks.test(a, b, exact = FALSE, ...))
k <- ks(); n <- length(a) * length(b) / (length(a) + length(b))
cat(k$statistic, ks(alternative = "greater")$statistic, ks(alternative = "less")$statistic,
    sqrt(n) * k$statistic, k$p.value, 1 - .Call(stats:::C_pKS2, sqrt(n) * k$statistic, tol = 1e-14))
)");
    }
    const std::vector<std::vector<double>> results = RunREach(scripts);
    for (std::size_t i = 0; i < sets.size(); ++i) {
        const auto& [name, data] = sets[i];
        SCOPED_TRACE(name);
        const KolmogorovSmirnovResult ours = KolmogorovSmirnovTwoSample(data.View());
        ASSERT_TRUE(ours.Computed()) << OutcomeText(ours.fOutcome);
        const std::vector<double>& r = results[i];
        ASSERT_EQ(r.size(), 6u);
        EXPECT_NEAR(ours.fAbsolute, r[0], kStatTolerance);
        EXPECT_NEAR(ours.fPositive, r[1], kStatTolerance);
        EXPECT_NEAR(ours.fNegative, -r[2], kStatTolerance);
        EXPECT_NEAR(ours.fZ, r[3], kStatTolerance);
        // ks.test sums Kolmogorov's series only to 1e-6; to 1e-14 it agrees
        // with ours to 1e-12.
        EXPECT_NEAR(ours.fAsymptoticSig, r[4], 1e-5);
        EXPECT_NEAR(ours.fAsymptoticSig, r[5], 1e-12);
    }
}

TEST(IndependentTwoSample, HodgesLehmannMatchesR) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    const auto& sets = TwoSampleSets();
    std::vector<std::string> scripts;
    for (const auto& [name, data] : sets) {
        scripts.push_back(data.RData() + R"(
a <- x[g == "0"]; b <- x[g == "1"]; n1 <- length(a); n2 <- length(b)
d <- sort(outer(b, a, "-")); M <- length(d)
c <- round(M / 2 - qnorm(0.975) * sqrt(n1 * n2 * (n1 + n2 + 1) / 12))
lo <- if (c >= 1) d[c] else NA; hi <- if (c >= 1) d[M - c + 1] else NA
ex <- if (length(unique(x)) == length(x))
  suppressWarnings(wilcox.test(b, a, conf.int = TRUE, exact = TRUE))$estimate else NA
cat(median(d), lo, hi, ex)
)");
    }
    const std::vector<std::vector<double>> results = RunREach(scripts);
    for (std::size_t i = 0; i < sets.size(); ++i) {
        const auto& [name, data] = sets[i];
        SCOPED_TRACE(name);
        const HodgesLehmannResult ours = HodgesLehmann(data.View(), 0.95);
        ASSERT_TRUE(ours.Computed()) << OutcomeText(ours.fOutcome);
        const std::vector<double>& r = results[i];
        ASSERT_EQ(r.size(), 4u);
        EXPECT_NEAR(ours.fEstimate, r[0], kStatTolerance);
        EXPECT_EQ(ours.fHasInterval, !std::isnan(r[1]));
        if (ours.fHasInterval) {
            EXPECT_NEAR(ours.fLower, r[1], kStatTolerance);
            EXPECT_NEAR(ours.fUpper, r[2], kStatTolerance);
        }
        if (!std::isnan(r[3])) {
            EXPECT_NEAR(ours.fEstimate, r[3], kStatTolerance);
        }
    }
}

TEST(IndependentTwoSample, KthSmallestDifferenceIsTheOrderStatistic) {
    std::mt19937 random(5);
    for (int trial = 0; trial < 50; ++trial) {
        std::uniform_int_distribution<int> size(1, 12);
        std::vector<double> x(static_cast<std::size_t>(size(random)));
        std::vector<double> y(static_cast<std::size_t>(size(random)));
        std::uniform_int_distribution<int> value(-20, 20);
        for (double& v : x) {
            v = value(random) * (trial % 2 ? 0.1 : 1e200);
        }
        for (double& v : y) {
            v = value(random) * (trial % 2 ? 0.1 : 1e200);
        }
        std::sort(x.begin(), x.end());
        std::sort(y.begin(), y.end());
        std::vector<double> all;
        for (const double b : y) {
            for (const double a : x) {
                all.push_back(b - a);
            }
        }
        std::sort(all.begin(), all.end());
        for (std::size_t k = 1; k <= all.size(); ++k) {
            ASSERT_EQ(KthSmallestDifference(x, y, k), all[k - 1]) << "k = " << k;
        }
        EXPECT_TRUE(std::isnan(KthSmallestDifference(x, y, all.size() + 1)));
    }
}

namespace {

// Calls visit(labels) for every way of giving `ones` of `n` positions the
// label 1 (the rest 0).
void ForEachSplit(std::size_t n, std::size_t ones,
                  const std::function<void(const std::vector<int>&)>& visit) {
    std::vector<int> labels(n, 0);
    std::fill(labels.end() - static_cast<long>(ones), labels.end(), 1);
    do {
        visit(labels);
    } while (std::next_permutation(labels.begin(), labels.end()));
}

std::size_t CountRuns(const std::vector<int>& labels) {
    std::size_t runs = labels.empty() ? 0 : 1;
    for (std::size_t i = 1; i < labels.size(); ++i) {
        runs += labels[i] != labels[i - 1];
    }
    return runs;
}

} // namespace

TEST(IndependentTwoSample, RunsDistributionMatchesEnumeration) {
    for (std::size_t n1 = 1; n1 <= 7; ++n1) {
        for (std::size_t n2 = 1; n2 <= 7; ++n2) {
            std::map<std::size_t, double> count;
            double total = 0;
            ForEachSplit(n1 + n2, n2, [&](const std::vector<int>& labels) {
                count[CountRuns(labels)] += 1;
                total += 1;
            });
            double cumulative = 0;
            for (std::size_t r = 1; r <= n1 + n2; ++r) {
                cumulative += count[r];
                EXPECT_NEAR(RunsLowerTail(static_cast<double>(r), n1, n2), cumulative / total,
                            1e-12)
                    << n1 << " " << n2 << " r = " << r;
            }
        }
    }
}

TEST(IndependentTwoSample, WaldWolfowitzRunsBoundsMatchEveryOrderingOfTies) {
    std::mt19937 random(3);
    for (int trial = 0; trial < 200; ++trial) {
        const std::size_t n = 2 + random() % 9;
        std::vector<double> values(n);
        std::vector<int> groups(n);
        for (std::size_t i = 0; i < n; ++i) {
            values[i] = static_cast<double>(random() % 4);
            groups[i] = static_cast<int>(i < 1 ? 0 : i < 2 ? 1 : random() % 2);
        }
        const Grouped data(values, groups, 2);
        const WaldWolfowitzResult ours = WaldWolfowitz(data.View());
        ASSERT_TRUE(ours.Computed()) << OutcomeText(ours.fOutcome);
        // Every order of the cases that sorts the values: permute the cases
        // and keep the orders that are sorted.
        std::vector<std::size_t> order(n);
        std::iota(order.begin(), order.end(), 0);
        std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
            return values[a] != values[b] ? values[a] < values[b] : a < b;
        });
        std::size_t fewest = n + 1;
        std::size_t most = 0;
        // Permute within blocks of equal values by permuting the labels of each block.
        std::vector<int> labels(n);
        for (std::size_t i = 0; i < n; ++i) {
            labels[i] = groups[order[i]];
        }
        std::vector<std::pair<std::size_t, std::size_t>> blocks;
        for (std::size_t i = 0; i < n;) {
            std::size_t j = i;
            while (j < n && values[order[j]] == values[order[i]]) {
                ++j;
            }
            std::sort(labels.begin() + static_cast<long>(i), labels.begin() + static_cast<long>(j));
            blocks.emplace_back(i, j);
            i = j;
        }
        std::function<void(std::size_t)> walk = [&](std::size_t b) {
            if (b == blocks.size()) {
                fewest = std::min(fewest, CountRuns(labels));
                most = std::max(most, CountRuns(labels));
                return;
            }
            const auto first = labels.begin() + static_cast<long>(blocks[b].first);
            const auto last = labels.begin() + static_cast<long>(blocks[b].second);
            do {
                walk(b + 1);
            } while (std::next_permutation(first, last));
        };
        walk(0);
        EXPECT_EQ(ours.fMinimum.fRuns, static_cast<double>(fewest)) << "trial " << trial;
        EXPECT_EQ(ours.fMaximum.fRuns, static_cast<double>(most)) << "trial " << trial;
    }
}

TEST(IndependentTwoSample, MosesSpanDistributionMatchesEnumeration) {
    for (std::size_t m = 2; m <= 8; ++m) {
        for (std::size_t n = 1; n <= 7; ++n) {
            for (std::size_t h = 0; 2 * h + 2 <= m; ++h) {
                std::map<std::size_t, double> count;
                double total = 0;
                ForEachSplit(m + n, m, [&](const std::vector<int>& labels) {
                    std::vector<std::size_t> control;
                    for (std::size_t i = 0; i < labels.size(); ++i) {
                        if (labels[i] == 1) {
                            control.push_back(i + 1);
                        }
                    }
                    count[control[m - 1 - h] - control[h] + 1] += 1;
                    total += 1;
                });
                double cumulative = 0;
                for (std::size_t s = 1; s <= m + n; ++s) {
                    cumulative += count[s];
                    EXPECT_NEAR(MosesLowerTail(static_cast<double>(s), m, n, h), cumulative / total,
                                1e-12)
                        << "m " << m << " n " << n << " h " << h << " span " << s;
                }
            }
        }
    }
}

TEST(IndependentTwoSample, MosesSpansAndTrimming) {
    // Control group 1 holds ranks 1, 2, 6, 9, 10 of ten cases.
    const Grouped data({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, {1, 1, 0, 0, 0, 1, 0, 0, 1, 1}, 2);
    const MosesResult byCount = Moses(data.View(), 1, {false, 1});
    ASSERT_TRUE(byCount.Computed());
    EXPECT_EQ(byCount.fControl, 1u);
    EXPECT_EQ(byCount.fExperimental, 0u);
    EXPECT_EQ(byCount.fObservedSpan, 10.0);
    EXPECT_EQ(byCount.fTrimmedSpan, 8.0); // ranks 2 .. 9
    EXPECT_NEAR(byCount.fObservedSig, MosesLowerTail(10, 5, 5, 0), 0);
    EXPECT_EQ(byCount.fObservedSig, 1.0);
    const MosesResult bySample = Moses(data.View(), 1, {});
    EXPECT_EQ(bySample.fTrimmed, 1u); // 5% of five, at least one
    // Trimming two from each end of five leaves one control case: no test.
    const MosesResult tooMany = Moses(data.View(), 1, {false, 2});
    EXPECT_FALSE(tooMany.Computed());
    EXPECT_EQ(tooMany.fControlCases, 5u);
}

TEST(IndependentTwoSample, CannotComputeSaysWhy) {
    const Grouped three({1, 2, 3, 4}, {0, 1, 2, 2}, 3);
    const Grouped one({1, 2, 3}, {1, 1, 1}, 2);
    const Grouped tied({5, 5, 5, 5}, {0, 1, 0, 1}, 2);
    const Grouped empty({}, {}, 2);
    const Grouped badCode({1, 2}, {0, 3}, 2);
    for (const Grouped* data : {&three, &one, &empty, &badCode}) {
        const MannWhitneyResult mw = MannWhitney(data->View());
        EXPECT_FALSE(mw.Computed());
        EXPECT_FALSE(KolmogorovSmirnovTwoSample(data->View()).Computed());
        EXPECT_FALSE(WaldWolfowitz(data->View()).Computed());
        EXPECT_FALSE(Moses(data->View(), 0, {}).Computed());
        EXPECT_FALSE(HodgesLehmann(data->View(), 0.95).Computed());
    }
    EXPECT_EQ(MannWhitney(three.View()).fOutcome, Outcome::kTooManyGroups);
    EXPECT_EQ(MannWhitney(one.View()).fOutcome, Outcome::kTooFewGroups);
    EXPECT_FALSE(MannWhitney(tied.View()).Computed());
    // All tied: the distributions cannot differ, and nothing is undefined.
    const KolmogorovSmirnovResult ks = KolmogorovSmirnovTwoSample(tied.View());
    EXPECT_TRUE(ks.Computed());
    EXPECT_EQ(ks.fAbsolute, 0.0);
    EXPECT_EQ(ks.fAsymptoticSig, 1.0);
    const WaldWolfowitzResult runs = WaldWolfowitz(tied.View());
    EXPECT_EQ(runs.fMinimum.fRuns, 2.0);
    EXPECT_EQ(runs.fMaximum.fRuns, 4.0);
    EXPECT_TRUE(runs.fTiesBetweenGroups);
    const Grouped single({1, 2}, {0, 1}, 2);
    EXPECT_FALSE(HodgesLehmann(single.View(), 0.95).fHasInterval);
    EXPECT_EQ(HodgesLehmann(single.View(), 0.95).fEstimate, 1.0);
}

// Larger samples than enumeration reaches: the exact tails against seeded
// simulation of random orderings (200000 draws; the tolerance is five
// standard errors of a simulated proportion).
TEST(IndependentTwoSample, RunsAndMosesTailsMatchSimulation) {
    std::mt19937_64 random(424242);
    constexpr int kDraws = 200000;
    const auto tolerance = [](double p) { return 5 * std::sqrt(p * (1 - p) / kDraws) + 1e-4; };
    {
        const std::size_t n1 = 40;
        const std::size_t n2 = 55;
        std::vector<int> labels(n1 + n2, 0);
        std::fill(labels.begin() + n1, labels.end(), 1);
        std::map<std::size_t, double> count;
        for (int draw = 0; draw < kDraws; ++draw) {
            std::shuffle(labels.begin(), labels.end(), random);
            count[CountRuns(labels)] += 1;
        }
        for (const double r : {40.0, 44.0, 47.0, 50.0}) {
            double below = 0;
            for (const auto& [runs, c] : count) {
                below += runs <= r ? c : 0;
            }
            const double p = below / kDraws;
            EXPECT_NEAR(RunsLowerTail(r, n1, n2), p, tolerance(p)) << "runs " << r;
        }
    }
    {
        const std::size_t m = 30;
        const std::size_t n = 45;
        const std::size_t h = 2;
        std::vector<int> labels(m + n, 0);
        std::fill(labels.begin(), labels.begin() + m, 1);
        std::map<std::size_t, double> count;
        for (int draw = 0; draw < kDraws; ++draw) {
            std::shuffle(labels.begin(), labels.end(), random);
            std::vector<std::size_t> control;
            for (std::size_t i = 0; i < labels.size(); ++i) {
                if (labels[i] == 1) {
                    control.push_back(i + 1);
                }
            }
            count[control[m - 1 - h] - control[h] + 1] += 1;
        }
        for (const double s : {50.0, 55.0, 60.0, 65.0}) {
            double below = 0;
            for (const auto& [span, c] : count) {
                below += span <= s ? c : 0;
            }
            const double p = below / kDraws;
            EXPECT_NEAR(MosesLowerTail(s, m, n, h), p, tolerance(p)) << "span " << s;
        }
    }
}
