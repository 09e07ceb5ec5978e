// The related-samples tests where R is no reference: the Walsh averages by
// brute force, the tables of categories, properties of field and case order,
// and why each test stops. Their agreement with R: test_reference_related.cpp.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <span>

#include <gtest/gtest.h>

#include "engine/RelatedTestData.h"
#include "engine/stats/Numerics.h"
#include "engine/stats/RelatedCategories.h"
#include "engine/stats/RelatedKSamples.h"
#include "engine/stats/RelatedPairs.h"

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

namespace {

std::vector<double> RandomCategories(std::mt19937& random, std::size_t n, int levels) {
    std::uniform_int_distribution<int> draw(1, levels);
    std::vector<double> values(n);
    for (double& v : values) {
        v = draw(random);
    }
    return values;
}

} // namespace

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

namespace {

std::vector<std::span<const double>> Spans(const std::vector<std::vector<double>>& fields) {
    return {fields.begin(), fields.end()};
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
