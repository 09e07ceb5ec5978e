// The k-sample tests of independent samples: Kruskal-Wallis, the median test
// and Jonckheere-Terpstra, each with its pairwise comparisons and its
// homogeneous subsets (MultipleComparisons). Groups without cases take no
// part; at least two groups must have cases.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "engine/stats/IndependentSamples.h"
#include "engine/stats/MultipleComparisons.h"

// The groups of a k-sample test.
struct KSamples : TestOutcome {
    std::vector<std::size_t> fSamples; // category positions with cases, ascending
    std::vector<std::size_t> fN;       // cases per category (every category)
    std::size_t fTotalN = 0;
};

struct KruskalWallisResult : KSamples {
    std::vector<double> fMeanRank; // per category; kNoValue for an empty one
    double fStatistic = kNoValue;  // H, corrected for ties
    double fDf = kNoValue;
    double fSig = kNoValue; // asymptotic, chi-square with fDf degrees of freedom
    double fTieSum = 0;     // sum of t^3 - t over the tied blocks
};

KruskalWallisResult KruskalWallis(const GroupedValues& data);

// Dunn's comparisons: each pair's difference of mean ranks (smaller first),
// its standard error with the correction for ties, z, two-sided significance
// and Bonferroni-adjusted significance.
std::vector<ComparisonResult> KruskalWallisPairwise(const KruskalWallisResult& test);

// Homogeneous subsets: samples ordered by mean rank, each set of consecutive
// samples tested by Kruskal-Wallis on its own cases (ranked among themselves).
std::vector<ComparisonResult>
KruskalWallisSubsets(const GroupedValues& data, const KruskalWallisResult& test, double sigLevel);

struct MedianTestResult : KSamples {
    double fMedian = kNoValue;           // the test value: pooled median or the given value
    std::vector<std::size_t> fAbove;     // cases above the test value, per category
    std::vector<std::size_t> fAtOrBelow; // cases at or below it, per category
    std::vector<double> fSampleMedian;   // median of each category; kNoValue for an empty one
    double fChiSquare = kNoValue;        // Pearson's, without correction
    double fDf = kNoValue;
    double fSig = kNoValue;
    bool fTwoSamples = false;          // the next three apply to two samples only
    double fYatesChiSquare = kNoValue; // with Yates' continuity correction, 1 df
    double fYatesSig = kNoValue;
    double fFisherSig = kNoValue; // Fisher's exact test, two-sided
};

// Median test against `testValue`, or against the pooled median when none.
MedianTestResult MedianTest(const GroupedValues& data, std::optional<double> testValue);

// Each pair's 2x2 median test (against the pair's pooled median, or the given
// test value): Pearson's chi-square, its significance and the Bonferroni
// adjustment; pairs ordered by sample median.
std::vector<ComparisonResult> MedianPairwise(const GroupedValues& data,
                                             const MedianTestResult& test,
                                             std::optional<double> testValue);

// Homogeneous subsets: samples ordered by median, each set of consecutive
// samples tested by the median test on its own cases.
std::vector<ComparisonResult> MedianSubsets(const GroupedValues& data, const MedianTestResult& test,
                                            std::optional<double> testValue, double sigLevel);

// Two-sided Fisher exact significance of the 2x2 table [[a, b], [c, d]]:
// the probability of the tables with the same margins that are no more
// likely than the observed one.
double FisherExact2x2(std::size_t a, std::size_t b, std::size_t c, std::size_t d);

struct JonckheereResult : KSamples {
    bool fDescending = false;      // the alternative orders the categories descending
    std::vector<double> fMeanRank; // per category; kNoValue for an empty one
    double fStatistic =
        kNoValue; // J: pairs (earlier, later) in the order with earlier < later, ties 1/2
    double fMean = kNoValue;     // expected J
    double fStdError = kNoValue; // with the correction for ties
    double fStdStatistic = kNoValue;
    double fSig = kNoValue; // two-sided asymptotic
};

JonckheereResult JonckheereTerpstra(const GroupedValues& data, bool descending);

// Each pair's two-sample Jonckheere-Terpstra test in the order of the
// alternative (statistic, standard error, z, one-sided significance and
// Bonferroni adjustment); the row names the pair with the smaller mean rank
// first.
std::vector<ComparisonResult> JonckheerePairwise(const GroupedValues& data,
                                                 const JonckheereResult& test);

// Homogeneous subsets: samples ordered by mean rank, each set of consecutive
// samples tested by Jonckheere-Terpstra in the order of the alternative,
// one-sided.
std::vector<ComparisonResult> JonckheereSubsets(const GroupedValues& data,
                                                const JonckheereResult& test, double sigLevel);
