// Wilcoxon signed-rank test of a hypothesized median.
#include "engine/stats/OneSampleWilcoxon.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "engine/stats/OneSampleMath.h"

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
    // The magnitudes of the positive differences fill the buffer from the front, those of the
    // negative ones from the back; each part is sorted on its own (plain sorts of doubles,
    // cheaper than one sort of value and sign), and one merge of the two gives the mid-ranks.
    std::vector<double> magnitudes(values.size());
    std::size_t front = 0;
    std::size_t back = values.size();
    for (double v : values) {
        const double d = v - hypothesizedMedian;
        if (d > 0) {
            magnitudes[front++] = d;
        } else if (d < 0) {
            magnitudes[--back] = -d;
        } else {
            ++result.fZero;
        }
    }
    result.fPositive = front;
    result.fNegative = values.size() - back;
    if (front == 0 && back == values.size()) {
        result.fReason = OneSampleReason::kAllDifferencesZero;
        return result;
    }
    const auto positives = magnitudes.begin();
    const auto negatives = magnitudes.begin() + static_cast<std::ptrdiff_t>(back);
    std::sort(positives, positives + static_cast<std::ptrdiff_t>(front));
    std::sort(negatives, magnitudes.end());
    const std::size_t count = result.fPositive + result.fNegative;
    const bool exact = count <= kWilcoxonExactMaxCases;
    std::vector<double> ranks; // every mid-rank, for the exact distribution
    double plus = 0;
    double tieSum = 0;
    std::size_t p = 0, q = back, below = 0;
    while (p < front || q < values.size()) {
        // The next magnitude and how many positive (a) and negative (b) differences share it.
        const double m = q == values.size() || (p < front && magnitudes[p] < magnitudes[q])
                             ? magnitudes[p]
                             : magnitudes[q];
        std::size_t a = 0, b = 0;
        while (p < front && magnitudes[p] == m) {
            ++p;
            ++a;
        }
        while (q < values.size() && magnitudes[q] == m) {
            ++q;
            ++b;
        }
        const double t = static_cast<double>(a + b);
        const double midRank = static_cast<double>(below) + (t + 1) / 2;
        plus += static_cast<double>(a) * midRank;
        tieSum += t * t * t - t;
        if (exact) {
            ranks.insert(ranks.end(), a + b, midRank);
        }
        below += a + b;
    }
    const double n = static_cast<double>(count);
    result.fStatistic = plus;
    result.fNegativeRankSum = n * (n + 1) / 2 - plus;
    result.fMean = n * (n + 1) / 4;
    result.fStandardError = std::sqrt(n * (n + 1) * (2 * n + 1) / 24 - tieSum / 48);
    result.fStandardized = (plus - result.fMean) / result.fStandardError;
    result.fAsymptoticSig2Tailed = onesample::NormalTwoSided(result.fStandardized);
    if (exact) {
        result.fExactSig2Tailed = ExactSignedRankSig(ranks, plus);
    }
    return result;
}
