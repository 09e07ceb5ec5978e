// Wilcoxon signed-rank test of a hypothesized median.
#include "engine/stats/OneSampleWilcoxon.h"

#include <cmath>
#include <vector>

#include "engine/stats/Differences.h"

OneSampleWilcoxonResult OneSampleWilcoxon(std::span<const double> values,
                                          double hypothesizedMedian) {
    OneSampleWilcoxonResult result;
    result.fTotalN = values.size();
    result.fHypothesizedMedian = hypothesizedMedian;
    if (values.empty()) {
        result.fOutcome = Outcome::kNoCases;
        return result;
    }
    if (!std::isfinite(hypothesizedMedian)) {
        result.fOutcome = Outcome::kBadParameter;
        return result;
    }
    result.fObservedMedian = Median(values);
    const DecimalGrid grid =
        DecimalGrid::Of({values, std::span<const double>(&hypothesizedMedian, 1)});
    const double median = grid.Key(hypothesizedMedian);
    std::vector<double> differences(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        differences[i] = grid.Key(values[i]) - median;
    }
    const SignedRankSums sums = SignedRanks(differences);
    result.fPositive = sums.fPositive;
    result.fNegative = sums.fNegative;
    result.fZero = sums.fZero;
    if (sums.NonZero() == 0) {
        result.fOutcome = Outcome::kAllAtTestValue;
        return result;
    }
    const double n = static_cast<double>(sums.NonZero());
    result.fStatistic = sums.fStatistic;
    result.fNegativeRankSum = n * (n + 1) / 2 - sums.fStatistic;
    result.fMean = sums.fMean;
    result.fStandardError = sums.fStandardError;
    result.fStandardized = sums.fStandardized;
    result.fAsymptoticSig2Tailed = sums.fAsymptoticSig;
    result.fExactSig2Tailed = sums.fExactSig;
    return result;
}
