// Tests of k related fields measured on the same cases: Cochran's Q,
// Friedman's two-way analysis of variance by ranks and Kendall's
// coefficient of concordance, with their pairwise comparisons and step-down
// homogeneous subsets. Every function takes the complete cases only, one
// span per field, all of the same length.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "engine/stats/MultipleComparisons.h"

using RelatedColumns = std::span<const std::span<const double>>;

// How often a field received a rank (ranks are multiples of one half).
struct RankCount {
    double fRank = 0;
    double fCount = 0;
};

// Friedman's test: the fields are ranked within each case (mid-ranks for
// ties). The statistic is 12 sum_j (R_j - n(k+1)/2)^2 / (nk(k+1) - T/(k-1)),
// R_j the rank sum of field j and T the sum of t^3 - t over the tied groups
// within cases, chi-square on k - 1 degrees of freedom. Kendall's W of the
// same ranks is statistic / (n(k-1)): the tie-corrected coefficient
// 12 S / (n^2 (k^3 - k) - n T).
struct FriedmanResult : TestOutcome {
    std::size_t fTotalN = 0; // cases
    std::size_t fFields = 0; // k
    double fStatistic = kNoValue;
    double fDegreesOfFreedom = kNoValue;
    double fAsymptoticSig = kNoValue;
    double fKendallW = kNoValue;
    double fTieSum = 0;
    std::vector<double> fMeanRanks;                  // per field
    std::vector<std::vector<RankCount>> fRankCounts; // per field, ascending by rank
};
FriedmanResult Friedman(RelatedColumns columns);

// Cochran's Q over success flags: a value listed in `success` is a success,
// any other value a failure. Q = (k-1)(k sum_j T_j^2 - N^2) / (kN - sum_i R_i^2)
// with T_j the successes of field j, R_i those of case i and N their total,
// chi-square on k - 1 degrees of freedom.
struct CochranResult : TestOutcome {
    std::size_t fTotalN = 0;
    std::size_t fFields = 0;
    double fStatistic = kNoValue;
    double fDegreesOfFreedom = kNoValue;
    double fAsymptoticSig = kNoValue;
    std::vector<double> fSuccesses;       // per field
    double fPairStandardError = kNoValue; // sqrt(2(kN - sum R_i^2) / (n^2 k(k-1)))
};
CochranResult CochranQ(RelatedColumns columns, std::span<const double> success);

// Pairwise comparisons of the fields. The first field of a
// pair is the one with the smaller mean rank (Friedman, Kendall) or the
// fewer successes (Cochran); on a tie, the earlier field. The statistic is
// first minus second (mean ranks, or proportions of successes), so it is
// never positive; the significance is two-sided from the standard normal,
// and the adjusted one is Bonferroni's over the k(k-1)/2 pairs.
// Pairs of mean ranks with standard error sqrt(k(k+1)/(6n)) (Friedman and Kendall).
std::vector<ComparisonResult> FriedmanPairwise(const FriedmanResult& result);
// Pairs of success proportions with the pair standard error of the result.
std::vector<ComparisonResult> CochranPairwise(const CochranResult& result);

// Step-down homogeneous subsets: the fields ordered by their value (mean
// rank or successes, ascending; ties keep field order), each run of
// consecutive fields tested with the family's own test on those fields
// alone (Friedman's statistic for Friedman and Kendall, Q for Cochran;
// neither has a standard error). Fields that agree in every case make a
// subset with statistic 0 and significance 1.
struct RelatedStepwise {
    std::vector<std::size_t> fOrder;     // field positions, ascending by value
    std::vector<double> fValues;         // the value of each field in fOrder
    std::vector<ComparisonResult> fRows; // fFirst, fSecond: positions in fOrder
};
RelatedStepwise FriedmanStepwise(RelatedColumns columns, const FriedmanResult& result,
                                 double sigLevel);
RelatedStepwise CochranStepwise(RelatedColumns columns, std::span<const double> success,
                                const CochranResult& result, double sigLevel);
