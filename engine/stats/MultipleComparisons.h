// Multiple comparisons after a k-sample test: pairwise comparisons with
// Bonferroni-adjusted significances, and the step-down procedure that groups
// the samples into homogeneous subsets. Both are generic over the test used
// for two or more samples; the caller supplies it as a function.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "engine/stats/Outcome.h"

// The outcome of one test on two or more of the samples.
struct SampleTest {
    double fStatistic = kNoValue;
    double fStdError = kNoValue;
    double fStdStatistic = kNoValue; // standardized statistic
    double fSig = kNoValue;          // kNoValue when the samples cannot be compared
    bool fNoVariation = false;       // the samples show no variation: no significance
};

// One row of a comparison table.
struct ComparisonResult {
    // Pairwise: the two sample indices, the sample with the smaller shown
    // value first. Stepwise: first and last position of the subset in the
    // order of the samples by shown value.
    std::size_t fFirst = 0;
    std::size_t fSecond = 0;
    double fStatistic = kNoValue;
    double fStdError = kNoValue;
    double fStdStatistic = kNoValue;
    double fSig = kNoValue;
    double fAdjustedSig = kNoValue;
    bool fNoVariation = false; // the pair or subset shows no variation
};

// Compares two samples given by index. The first index is the sample with
// the smaller (or equal) shown value.
using PairTest = std::function<SampleTest(std::size_t first, std::size_t second)>;

// Tests a set of samples, given by index in ascending order of shown value.
using SubsetTest = std::function<SampleTest(std::span<const std::size_t> members)>;

// min(1, m * sig) with m = k(k-1)/2 comparisons among k samples.
double BonferroniAdjusted(double sig, std::size_t samples);

// Significance of a subset of p out of k samples in the step-down procedure,
// 1 - (1 - sig)^(k/p): comparing it with the significance level tests the
// subset at level 1 - (1 - level)^(p/k).
double StepDownAdjusted(double sig, std::size_t subsetSize, std::size_t samples);

// Indices of `samples` in ascending order of shownValues[index]; equal values
// keep the order of `samples`.
std::vector<std::size_t> OrderByShownValue(std::span<const std::size_t> samples,
                                           std::span<const double> shownValues);

// Every pair of `samples` (indices into shownValues), in the order the pairs
// of positions (i < j) of `samples` are met, each written with the sample of
// the smaller shown value first.
std::vector<ComparisonResult> PairwiseComparisons(std::span<const std::size_t> samples,
                                                  std::span<const double> shownValues,
                                                  const PairTest& test);

// Homogeneous subsets of the samples in `order` (ascending by shown value):
// sets of consecutive samples are tested from the largest down; a set is
// homogeneous when its step-down adjusted significance is at least
// `sigLevel`, and then none of its subsets is tested. A set whose test gives
// no significance counts as homogeneous. Samples in no homogeneous set form
// subsets of their own, without a test. Rows are sorted by first position.
std::vector<ComparisonResult> HomogeneousSubsets(std::span<const std::size_t> order,
                                                 const SubsetTest& test, double sigLevel);
