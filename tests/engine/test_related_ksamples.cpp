// Friedman, Kendall's W and Cochran's Q against R (friedman.test, and the
// textbook formulas of W and Q), their pairwise comparisons and step-down
// subsets, and their properties.
#include "engine/stats/RelatedKSamples.h"

#include <algorithm>
#include <numeric>
#include <random>

#include "engine/RReference.h"
#include "engine/RelatedTestData.h"

namespace {

std::vector<std::span<const double>> Spans(const std::vector<std::vector<double>>& fields) {
    return {fields.begin(), fields.end()};
}

// An R matrix literal (cases in rows) of the fields.
std::string RMatrix(const std::vector<std::vector<double>>& fields) {
    std::vector<double> all;
    for (const auto& f : fields) {
        all.insert(all.end(), f.begin(), f.end());
    }
    return "matrix(" + RVector(all) + ", ncol = " + std::to_string(fields.size()) + ")";
}

// Prints, for the matrix m (cases in rows): n, k, the fields column by
// column, Friedman's statistic and significance, Kendall's W by its own
// formula, the mean ranks, and the two-sided pairwise significances of the
// mean ranks in the order (1,2), (1,3), ..., (k-1,k).
const char* kFriedmanScript = R"(
n <- nrow(m); k <- ncol(m)
f <- friedman.test(m)
r <- t(apply(m, 1, rank))
S <- sum((colSums(r) - n * (k + 1) / 2)^2)
ties <- sum(apply(m, 1, function(u) { t <- table(u); sum(t^3 - t) }))
W <- 12 * S / (n^2 * (k^3 - k) - n * ties)
mr <- colMeans(r)
se <- sqrt(k * (k + 1) / (6 * n))
p <- c()
for (i in 1:(k - 1)) for (j in (i + 1):k) p <- c(p, 2 * pnorm(-abs(mr[i] - mr[j]) / se))
cat(n, k, m, f$statistic, f$p.value, W, mr, p)
)";

struct Fields {
    std::vector<std::vector<double>> fFields;
    std::vector<double> fRest; // R's numbers after the data
};

Fields ReadMatrix(const std::vector<double>& numbers) {
    Fields out;
    std::size_t at = 2;
    const std::size_t n = static_cast<std::size_t>(numbers.at(0));
    const std::size_t k = static_cast<std::size_t>(numbers.at(1));
    for (std::size_t j = 0; j < k; ++j) {
        out.fFields.push_back(Take(numbers, at, n));
    }
    out.fRest.assign(numbers.begin() + static_cast<std::ptrdiff_t>(at), numbers.end());
    return out;
}

void CheckFriedman(const std::vector<double>& numbers, const std::string& name) {
    const Fields data = ReadMatrix(numbers);
    const std::size_t k = data.fFields.size();
    ASSERT_EQ(data.fRest.size(), 3 + k + k * (k - 1) / 2) << name;
    const FriedmanResult result = Friedman(Spans(data.fFields));
    ASSERT_TRUE(result.Computed()) << name;
    ExpectStatistic(result.fStatistic, data.fRest[0], name + "|Friedman statistic");
    ExpectSig(result.fAsymptoticSig, data.fRest[1], name + "|Friedman sig");
    ExpectStatistic(result.fKendallW, data.fRest[2], name + "|Kendall's W");
    EXPECT_EQ(result.fDegreesOfFreedom, static_cast<double>(k - 1));
    for (std::size_t j = 0; j < k; ++j) {
        ExpectStatistic(result.fMeanRanks[j], data.fRest[3 + j], name + "|Friedman mean rank");
        double cases = 0;
        for (const RankCount& c : result.fRankCounts[j]) {
            cases += c.fCount;
        }
        EXPECT_EQ(cases, static_cast<double>(result.fTotalN));
    }
    const std::vector<ComparisonResult> pairs = FriedmanPairwise(result);
    ASSERT_EQ(pairs.size(), k * (k - 1) / 2);
    for (std::size_t p = 0; p < pairs.size(); ++p) {
        ExpectSig(pairs[p].fSig, data.fRest[3 + k + p], name + "|Friedman pairwise sig");
        ExpectSig(pairs[p].fAdjustedSig,
                  std::min(1.0, data.fRest[3 + k + p] * static_cast<double>(pairs.size())),
                  name + "|Friedman pairwise adjusted sig");
        EXPECT_LE(pairs[p].fStatistic, 0.0);
        EXPECT_LE(result.fMeanRanks[pairs[p].fFirst], result.fMeanRanks[pairs[p].fSecond]);
    }
}

// Cochran's Q by its formula, and the pairwise significances of the success
// proportions, for the 0/1 matrix s.
const char* kCochranScript = R"(
n <- nrow(s); k <- ncol(s)
T <- colSums(s); R <- rowSums(s); N <- sum(T)
Q <- (k - 1) * (k * sum(T^2) - N^2) / (k * N - sum(R^2))
se <- sqrt(2 * (k * N - sum(R^2)) / (n^2 * k * (k - 1)))
p <- c()
for (i in 1:(k - 1)) for (j in (i + 1):k) p <- c(p, 2 * pnorm(-abs(T[i] - T[j]) / n / se))
cat(n, k, m, Q, pchisq(Q, k - 1, lower.tail = FALSE), T, se, p)
)";

void CheckCochran(const std::vector<double>& numbers, const std::vector<double>& success,
                  const std::string& name) {
    const Fields data = ReadMatrix(numbers);
    const std::size_t k = data.fFields.size();
    ASSERT_EQ(data.fRest.size(), 3 + k + k * (k - 1) / 2) << name;
    const CochranResult result = CochranQ(Spans(data.fFields), success);
    ASSERT_TRUE(result.Computed()) << name;
    ExpectStatistic(result.fStatistic, data.fRest[0], name + "|Cochran Q");
    ExpectSig(result.fAsymptoticSig, data.fRest[1], name + "|Cochran sig");
    for (std::size_t j = 0; j < k; ++j) {
        EXPECT_EQ(result.fSuccesses[j], data.fRest[2 + j]) << name;
    }
    ExpectStatistic(result.fPairStandardError, data.fRest[2 + k], name + "|Cochran pair se");
    const std::vector<ComparisonResult> pairs = CochranPairwise(result);
    ASSERT_EQ(pairs.size(), k * (k - 1) / 2);
    for (std::size_t p = 0; p < pairs.size(); ++p) {
        ExpectSig(pairs[p].fSig, data.fRest[3 + k + p], name + "|Cochran pairwise sig");
    }
}

std::vector<std::vector<double>> Shuffled(const std::vector<std::vector<double>>& fields,
                                          unsigned seed) {
    std::vector<std::size_t> order(fields[0].size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::shuffle(order.begin(), order.end(), std::mt19937(seed));
    std::vector<std::vector<double>> out(fields.size());
    for (std::size_t j = 0; j < fields.size(); ++j) {
        for (std::size_t i : order) {
            out[j].push_back(fields[j][i]);
        }
    }
    return out;
}

} // namespace

TEST(RelatedKSamples, FriedmanAndKendallMatchROnItsDatasets) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    const std::string datasets[] = {
        // friedman.test's own example: rounding first base, 22 players x 3 methods.
        "m <- matrix(c(5.40, 5.50, 5.55, 5.85, 5.70, 5.75, 5.20, 5.60, 5.50, 5.55, 5.50, 5.40,"
        " 5.90, 5.85, 5.70, 5.45, 5.55, 5.60, 5.40, 5.40, 5.35, 5.45, 5.50, 5.35, 5.25, 5.15,"
        " 5.00, 5.85, 5.80, 5.70, 5.25, 5.20, 5.10, 5.65, 5.55, 5.45, 5.60, 5.35, 5.45, 5.05,"
        " 5.00, 4.95, 5.50, 5.50, 5.40, 5.45, 5.55, 5.50, 5.55, 5.55, 5.35, 5.45, 5.50, 5.55,"
        " 5.50, 5.45, 5.25, 5.65, 5.60, 5.40, 5.70, 5.65, 5.55, 6.30, 6.30, 6.25), nrow = 22,"
        " byrow = TRUE)",
        // Its warpbreaks example: mean breaks by tension (cases) and wool (fields).
        "wb <- aggregate(warpbreaks$breaks, by = list(w = warpbreaks$wool, t = warpbreaks$tension),"
        " FUN = mean); m <- t(matrix(wb$x, nrow = 2))",
        // The complete cases of airquality, four measurements.
        "m <- as.matrix(na.omit(airquality)[, 1:4])",
    };
    for (const std::string& d : datasets) {
        CheckFriedman(RunR(d + kFriedmanScript), d.substr(0, 40));
    }
}

TEST(RelatedKSamples, FriedmanMatchesROnRandomData) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    const struct {
        unsigned seed;
        std::size_t n;
        std::size_t k;
        int levels;
        double shift;
    } cases[] = {{1, 10, 3, 4, 0.3},
                 {2, 50, 5, 3, 0.0},
                 {3, 400, 4, 1000, 0.4},
                 {4, 7, 8, 2, 0.5},
                 {5, 30, 100, 6, 0.02}};
    for (const auto& c : cases) {
        const auto fields = RandomFields(c.seed, c.n, c.k, c.levels, c.shift);
        CheckFriedman(RunR("m <- " + RMatrix(fields) + kFriedmanScript),
                      "seed " + std::to_string(c.seed));
    }
}

TEST(RelatedKSamples, CochranMatchesFormulaInR) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    // Hot, windy and sunny days of airquality (success coded 1), and random
    // three-valued fields with two success values.
    CheckCochran(RunR("a <- na.omit(airquality); m <- cbind(1 * (a$Temp > 80), 1 * (a$Wind > 9),"
                      " 1 * (a$Solar.R > 200), 1 * (a$Ozone > 40)); s <- m" +
                      std::string(kCochranScript)),
                 {1.0}, "airquality");
    const std::vector<double> success{0, 2};
    for (unsigned seed : {5u, 6u, 7u}) {
        const auto fields = RandomFields(seed, 30 + 200 * seed, 3 + seed % 3, 3, 0.4);
        CheckCochran(
            RunR("m <- " + RMatrix(fields) + "; s <- 1 * (m == 0 | m == 2)" + kCochranScript),
            success, "seed " + std::to_string(seed));
    }
}

TEST(RelatedKSamples, StepwiseSubsetsTestRunsOfOrderedFields) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    // Two clusters of fields: 0 and 1 alike, 2 and 3 alike and higher.
    const std::vector<std::vector<double>> fields = [] {
        std::vector<std::vector<double>> f = RandomFields(31, 60, 4, 5, 0.0);
        for (std::size_t i = 0; i < 60; ++i) {
            f[2][i] += 3;
            f[3][i] += 3;
        }
        std::swap(f[0], f[3]); // the order of the fields is not the order of their ranks
        return f;
    }();
    const FriedmanResult result = Friedman(Spans(fields));
    ASSERT_TRUE(result.Computed());
    const RelatedStepwise stepwise = FriedmanStepwise(Spans(fields), result, 0.05);
    ASSERT_EQ(stepwise.fOrder.size(), 4u);
    for (std::size_t p = 1; p < 4; ++p) {
        EXPECT_LE(stepwise.fValues[p - 1], stepwise.fValues[p]);
    }
    ASSERT_EQ(stepwise.fRows.size(), 2u);
    EXPECT_EQ(stepwise.fRows[0].fFirst, 0u);
    EXPECT_EQ(stepwise.fRows[0].fSecond, 1u);
    EXPECT_EQ(stepwise.fRows[1].fFirst, 2u);
    EXPECT_EQ(stepwise.fRows[1].fSecond, 3u);
    for (const ComparisonResult& s : stepwise.fRows) {
        std::vector<std::vector<double>> members;
        for (std::size_t p = s.fFirst; p <= s.fSecond; ++p) {
            members.push_back(fields[stepwise.fOrder[p]]);
        }
        const std::vector<double> r =
            RunR("f <- friedman.test(" + RMatrix(members) + "); cat(f$statistic, f$p.value)");
        ASSERT_EQ(r.size(), 2u);
        ExpectStatistic(s.fStatistic, r[0], "|Friedman stepwise subset statistic");
        ExpectSig(s.fSig, r[1], "|Friedman stepwise subset sig");
        ExpectSig(s.fAdjustedSig, 1 - std::pow(1 - r[1], 4.0 / 2.0),
                  "|Friedman stepwise adjusted sig");
        EXPECT_GE(s.fAdjustedSig, 0.05);
        EXPECT_TRUE(std::isnan(s.fStdError));
    }
    // Cochran on the same fields with success "3 or more": alike pairs again.
    const std::vector<double> success{3, 4, 5, 6, 7};
    const CochranResult q = CochranQ(Spans(fields), success);
    const RelatedStepwise cs = CochranStepwise(Spans(fields), success, q, 0.05);
    ASSERT_FALSE(cs.fRows.empty());
    EXPECT_EQ(cs.fRows.front().fFirst, 0u);
    EXPECT_EQ(cs.fRows.back().fSecond, 3u);
}

TEST(RelatedKSamples, StepwiseOfIndistinguishableFieldsIsOneSubset) {
    const auto fields = RandomFields(41, 30, 3, 4, 0.0);
    const FriedmanResult result = Friedman(Spans(fields));
    const RelatedStepwise stepwise = FriedmanStepwise(Spans(fields), result, 1e-12);
    ASSERT_EQ(stepwise.fRows.size(), 1u);
    EXPECT_EQ(stepwise.fRows[0].fSecond, 2u);
    // alpha above every adjusted significance: every field alone, untested.
    const RelatedStepwise alone = FriedmanStepwise(Spans(fields), result, 1.5);
    ASSERT_EQ(alone.fRows.size(), 3u);
    for (std::size_t p = 0; p < 3; ++p) {
        EXPECT_EQ(alone.fRows[p].fFirst, p);
        EXPECT_TRUE(std::isnan(alone.fRows[p].fSig));
    }
}

TEST(RelatedKSamples, PropertiesOfFieldAndCaseOrder) {
    auto fields = RandomFields(51, 120, 4, 4, 0.5);
    const FriedmanResult f = Friedman(Spans(fields));
    const std::vector<double> success{1, 2};
    const CochranResult q = CochranQ(Spans(fields), success);
    // Reordering the cases changes nothing.
    const auto shuffled = Shuffled(fields, 2);
    const FriedmanResult fs = Friedman(Spans(shuffled));
    EXPECT_EQ(fs.fStatistic, f.fStatistic);
    EXPECT_EQ(fs.fMeanRanks, f.fMeanRanks);
    EXPECT_EQ(CochranQ(Spans(shuffled), success).fStatistic, q.fStatistic);
    // Swapping two fields swaps their mean ranks and keeps every significance.
    std::swap(fields[0], fields[2]);
    const FriedmanResult fw = Friedman(Spans(fields));
    EXPECT_EQ(fw.fStatistic, f.fStatistic);
    EXPECT_EQ(fw.fAsymptoticSig, f.fAsymptoticSig);
    EXPECT_EQ(fw.fMeanRanks[0], f.fMeanRanks[2]);
    EXPECT_EQ(fw.fMeanRanks[2], f.fMeanRanks[0]);
    EXPECT_EQ(CochranQ(Spans(fields), success).fStatistic, q.fStatistic);
    std::vector<double> sigs;
    std::vector<double> swappedSigs;
    for (const auto& row : FriedmanPairwise(f)) {
        sigs.push_back(row.fSig);
    }
    for (const auto& row : FriedmanPairwise(fw)) {
        swappedSigs.push_back(row.fSig);
    }
    std::sort(sigs.begin(), sigs.end());
    std::sort(swappedSigs.begin(), swappedSigs.end());
    EXPECT_EQ(sigs, swappedSigs);
}

TEST(RelatedKSamples, KendallsWLiesInTheUnitInterval) {
    for (unsigned seed = 60; seed < 100; ++seed) {
        const auto fields = RandomFields(seed, 3 + seed % 17, 2 + seed % 5, 1 + seed % 4,
                                         static_cast<double>(seed % 3));
        const FriedmanResult result = Friedman(Spans(fields));
        if (!result.Computed()) {
            EXPECT_EQ(result.fOutcome, Outcome::kNoVariance);
            continue;
        }
        EXPECT_GE(result.fKendallW, 0.0) << seed;
        EXPECT_LE(result.fKendallW, 1.0 + 1e-12) << seed;
    }
    // Complete agreement: W = 1.
    std::vector<std::vector<double>> agree(3, std::vector<double>(5));
    for (std::size_t i = 0; i < 5; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            agree[j][i] = static_cast<double>(j) * 10 + static_cast<double>(i);
        }
    }
    EXPECT_DOUBLE_EQ(Friedman(Spans(agree)).fKendallW, 1.0);
}

TEST(RelatedKSamples, ManyFieldsWithNaNDoNotBreakTheRanking) {
    auto fields = RandomFields(71, 20, 70, 5, 0.1);
    fields[3][4] = std::nan("");
    fields[60][4] = std::nan("");
    const FriedmanResult result = Friedman(Spans(fields));
    ASSERT_EQ(result.fRankCounts.size(), 70u);
    double counted = 0;
    for (const auto& counts : result.fRankCounts) {
        for (const RankCount& c : counts) {
            counted += c.fCount;
        }
    }
    EXPECT_EQ(counted, 20.0 * 70.0);
}

TEST(RelatedKSamples, CannotComputeSaysWhy) {
    const std::vector<double> a{1, 2, 3};
    const std::vector<double> b{1, 2};
    const std::vector<double> one{1};
    const std::vector<double> success{1};
    EXPECT_EQ(Friedman(Spans({a})).fOutcome, Outcome::kTooFewFields);
    EXPECT_EQ(Friedman({}).fOutcome, Outcome::kTooFewFields);
    EXPECT_EQ(Friedman(Spans({a, b})).fOutcome, Outcome::kUnequalLengths);
    EXPECT_EQ(Friedman(Spans({one, one})).fOutcome, Outcome::kTooFewCases);
    EXPECT_EQ(Friedman(Spans({a, a, a})).fOutcome, Outcome::kNoVariance);
    EXPECT_EQ(CochranQ(Spans({a, a}), success).fOutcome, Outcome::kNoVariance);
    EXPECT_EQ(CochranQ(Spans({a, b}), success).fOutcome, Outcome::kUnequalLengths);
    EXPECT_TRUE(FriedmanPairwise(Friedman(Spans({a, a}))).empty());
    EXPECT_TRUE(FriedmanStepwise(Spans({a, a}), Friedman(Spans({a, a})), 0.05).fRows.empty());
}
