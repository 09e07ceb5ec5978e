// Wilcoxon signed-rank test of a hypothesized median.
#include "engine/stats/OneSampleWilcoxon.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/stats/OneSampleMath.h"
#include "engine/stats/Ranks.h"

namespace {

// Exact two-sided significance of the positive rank sum `statistic` over the 2^n equally
// likely sign assignments of `ranks` (mid-ranks, so multiples of 1/2: doubled they are
// whole numbers, and the distribution is counted over doubled sums).
double ExactSignedRankSig(const std::vector<double>& ranks, double statistic) {
    std::size_t total = 0;
    std::vector<std::size_t> doubled;
    doubled.reserve(ranks.size());
    for (double r : ranks) {
        doubled.push_back(static_cast<std::size_t>(std::llround(2 * r)));
        total += doubled.back();
    }
    // probability[s]: P(doubled positive sum = s), built one rank at a time; halving at each
    // step keeps every entry a probability (exact: counts times powers of two).
    std::vector<double> probability(total + 1, 0.0);
    probability[0] = 1.0;
    std::size_t reach = 0;
    for (std::size_t r : doubled) {
        reach += r;
        for (std::size_t s = reach + 1; s-- > 0;) {
            const double without = probability[s];
            const double with = s >= r ? probability[s - r] : 0.0;
            probability[s] = 0.5 * (without + with);
        }
    }
    const std::size_t observed = static_cast<std::size_t>(std::llround(2 * statistic));
    double lower = 0; // P(T <= t)
    double upper = 0; // P(T >= t)
    for (std::size_t s = 0; s <= total; ++s) {
        if (s <= observed) {
            lower += probability[s];
        }
        if (s >= observed) {
            upper += probability[s];
        }
    }
    return std::min(1.0, 2 * std::min(lower, upper));
}

} // namespace

OneSampleWilcoxonResult OneSampleWilcoxon(std::span<const double> values,
                                          double hypothesizedMedian) {
    OneSampleWilcoxonResult result;
    result.fTotalN = values.size();
    result.fHypothesizedMedian = hypothesizedMedian;
    if (values.empty()) {
        result.fReason = OneSampleReason::kNoCases;
        return result;
    }
    if (!std::isfinite(hypothesizedMedian)) {
        result.fReason = OneSampleReason::kBadParameter;
        return result;
    }
    result.fObservedMedian = Median(values);
    std::vector<double> magnitudes;
    std::vector<bool> positive;
    for (double v : values) {
        const double d = v - hypothesizedMedian;
        if (d == 0) {
            ++result.fZero;
            continue;
        }
        (d > 0 ? result.fPositive : result.fNegative) += 1;
        magnitudes.push_back(std::fabs(d));
        positive.push_back(d > 0);
    }
    if (magnitudes.empty()) {
        result.fReason = OneSampleReason::kAllDifferencesZero;
        return result;
    }
    const Ranking ranking = RankValues(magnitudes);
    double plus = 0;
    double minus = 0;
    for (std::size_t i = 0; i < magnitudes.size(); ++i) {
        (positive[i] ? plus : minus) += ranking.fRanks[i];
    }
    const double n = static_cast<double>(magnitudes.size());
    result.fStatistic = plus;
    result.fNegativeRankSum = minus;
    result.fMean = n * (n + 1) / 4;
    result.fStandardError = std::sqrt(n * (n + 1) * (2 * n + 1) / 24 - ranking.fTieSum / 48);
    result.fStandardized = (plus - result.fMean) / result.fStandardError;
    result.fAsymptoticSig2Tailed = onesample::NormalTwoSided(result.fStandardized);
    if (magnitudes.size() <= kWilcoxonExactMaxCases) {
        result.fExactSig2Tailed = ExactSignedRankSig(ranking.fRanks, plus);
    }
    return result;
}
