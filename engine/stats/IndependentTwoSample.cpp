// Two-sample tests of independent samples.
#include "engine/stats/IndependentTwoSample.h"

#include "engine/stats/OneSampleKolmogorov.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include <boost/math/distributions/normal.hpp>
#include <boost/math/special_functions/gamma.hpp>

#include "engine/stats/Differences.h"
#include "engine/stats/Numerics.h"

namespace {

TwoSamples TwoGroups(const GroupedValues& data) {
    const GroupCounts counts = CountGroups(data, 2, 2);
    TwoSamples two;
    two.fOutcome = counts.fOutcome;
    if (counts.Computed()) {
        two.fFirst = counts.fSamples[0];
        two.fSecond = counts.fSamples[1];
        two.fN1 = counts.fN[two.fFirst];
        two.fN2 = counts.fN[two.fSecond];
    }
    return two;
}

// Values of one group, ascending.
std::vector<double> SortedValuesOf(const GroupedValues& data, std::size_t group) {
    std::vector<double> values;
    for (std::size_t i = 0; i < data.fValues.size(); ++i) {
        if (static_cast<std::size_t>(data.fGroups[i]) == group) {
            values.push_back(data.fValues[i]);
        }
    }
    std::sort(values.begin(), values.end());
    return values;
}

// log k! for k = 0 .. n from Boost's lgamma, so that sums of many binomial
// terms cost a lookup per coefficient.
class LogFactorials final {
public:
    explicit LogFactorials(std::size_t n) : fTable(n + 1) {
        for (std::size_t k = 0; k <= n; ++k) {
            fTable[k] = boost::math::lgamma(static_cast<double>(k) + 1);
        }
    }

    // log C(n, k) for n up to the table's size; minus infinity where
    // C(n, k) = 0, and C(-1, 0) = 1 (the one empty arrangement).
    double Choose(double n, double k) const {
        if (k == 0 && n >= -1) {
            return 0;
        }
        if (k < 0 || n < 0 || k > n) {
            return -std::numeric_limits<double>::infinity();
        }
        const auto at = [&](double v) { return fTable[static_cast<std::size_t>(v)]; };
        return at(n) - at(k) - at(n - k);
    }

private:
    std::vector<double> fTable;
};

} // namespace

MannWhitneyResult MannWhitney(const GroupedValues& data, std::size_t exactUpTo) {
    MannWhitneyResult result;
    static_cast<TwoSamples&>(result) = TwoGroups(data);
    if (!result.Computed()) {
        return result;
    }
    const std::vector<double>& ranks = data.fRanking->fRanks;
    double sum1 = 0;
    double sum2 = 0;
    for (std::size_t i = 0; i < ranks.size(); ++i) {
        (static_cast<std::size_t>(data.fGroups[i]) == result.fFirst ? sum1 : sum2) += ranks[i];
    }
    const double n1 = static_cast<double>(result.fN1);
    const double n2 = static_cast<double>(result.fN2);
    const double n = n1 + n2;
    result.fMeanRank1 = sum1 / n1;
    result.fMeanRank2 = sum2 / n2;
    result.fWilcoxonW = sum2;
    result.fU = sum2 - n2 * (n2 + 1) / 2;
    const double variance = n1 * n2 / 12 * ((n + 1) - data.fRanking->fTieSum / (n * (n - 1)));
    if (!(variance > 0)) {
        result.fOutcome = Outcome::kNoVariance;
        return result;
    }
    result.fStdError = std::sqrt(variance);
    result.fStdStatistic = (result.fU - n1 * n2 / 2) / result.fStdError;
    result.fAsymptoticSig = NormalTwoSided(result.fStdStatistic);

    const std::size_t total = result.fN1 + result.fN2;
    if (total > exactUpTo) {
        return result;
    }
    // Distribution of the sum of doubled mid-ranks (integers) of the smaller
    // group over all ways of choosing its cases: counts[k][s] ways to choose
    // k cases with doubled rank sum s.
    const bool firstSmaller = result.fN1 <= result.fN2;
    const std::size_t chosen = firstSmaller ? result.fN1 : result.fN2;
    const std::size_t maxSum = total * (total + 1);
    std::vector<std::vector<double>> counts(chosen + 1, std::vector<double>(maxSum + 1, 0.0));
    counts[0][0] = 1;
    std::size_t reached = 0;
    long observed = 0;
    for (std::size_t i = 0; i < total; ++i) {
        const auto twice = static_cast<std::size_t>(std::lround(2 * ranks[i]));
        const bool inChosen =
            (static_cast<std::size_t>(data.fGroups[i]) == result.fFirst) == firstSmaller;
        observed += inChosen ? static_cast<long>(twice) : 0;
        reached += twice;
        for (std::size_t k = std::min(chosen, i + 1); k >= 1; --k) {
            for (std::size_t s = std::min(reached, maxSum); s >= twice; --s) {
                counts[k][s] += counts[k - 1][s - twice];
            }
        }
    }
    const long expected = static_cast<long>(chosen * (total + 1)); // doubled mean
    const long deviation = std::labs(observed - expected);
    double extreme = 0;
    double all = 0;
    for (std::size_t s = 0; s <= maxSum; ++s) {
        all += counts[chosen][s];
        if (std::labs(static_cast<long>(s) - expected) >= deviation) {
            extreme += counts[chosen][s];
        }
    }
    result.fHasExact = true;
    result.fExactSig = std::min(1.0, extreme / all);
    return result;
}

KolmogorovSmirnovResult KolmogorovSmirnovTwoSample(const GroupedValues& data) {
    KolmogorovSmirnovResult result;
    static_cast<TwoSamples&>(result) = TwoGroups(data);
    if (!result.Computed()) {
        return result;
    }
    const SortedGroups sorted = SortGroupsByRank(data);
    const double n1 = static_cast<double>(result.fN1);
    const double n2 = static_cast<double>(result.fN2);
    double count1 = 0;
    double count2 = 0;
    double largest = 0;
    double smallest = 0;
    std::size_t position = 0;
    for (const std::uint32_t size : sorted.fBlockSizes) {
        for (std::uint32_t k = 0; k < size; ++k, ++position) {
            (static_cast<std::size_t>(sorted.fGroups[position]) == result.fFirst ? count1
                                                                                 : count2) += 1;
        }
        const double difference = count1 / n1 - count2 / n2;
        largest = std::max(largest, difference);
        smallest = std::min(smallest, difference);
    }
    result.fPositive = largest;
    result.fNegative = smallest;
    result.fAbsolute = std::max(largest, -smallest);
    result.fZ = result.fAbsolute * std::sqrt(n1 * n2 / (n1 + n2));
    result.fAsymptoticSig = KolmogorovLimitSf(result.fZ);
    return result;
}

double RunsLowerTail(double runs, std::size_t n1, std::size_t n2) {
    if (n1 == 0 || n2 == 0) {
        return runs >= 1 ? 1.0 : 0.0;
    }
    const double a = static_cast<double>(n1);
    const double b = static_cast<double>(n2);
    const LogFactorials log(n1 + n2);
    const double logTotal = log.Choose(a + b, a);
    double p = 0;
    const auto top = static_cast<long>(std::floor(runs));
    const long longest = 2 * static_cast<long>(std::min(n1, n2)) + 1;
    for (long r = 2; r <= std::min(top, longest); ++r) {
        if (r % 2 == 0) {
            const double k = static_cast<double>(r / 2);
            p += 2 * std::exp(log.Choose(a - 1, k - 1) + log.Choose(b - 1, k - 1) - logTotal);
        } else {
            const double k = static_cast<double>((r - 1) / 2);
            p += std::exp(log.Choose(a - 1, k - 1) + log.Choose(b - 1, k) - logTotal) +
                 std::exp(log.Choose(a - 1, k) + log.Choose(b - 1, k - 1) - logTotal);
        }
    }
    return std::min(1.0, p);
}

WaldWolfowitzResult WaldWolfowitz(const GroupedValues& data) {
    WaldWolfowitzResult result;
    static_cast<TwoSamples&>(result) = TwoGroups(data);
    if (!result.Computed()) {
        return result;
    }
    const SortedGroups sorted = SortGroupsByRank(data);
    // Over the blocks of equal values, the fewest and most runs: best[s] is
    // the best count so far among orderings whose last symbol is s. A block
    // with a of one symbol and b of the other can be ordered to begin with
    // symbol f and end with symbol l in at least fewest(f, l) and at most
    // most(f, l) runs.
    constexpr double kNone = -1;
    std::array<double, 2> fewest{kNone, kNone};
    std::array<double, 2> most{kNone, kNone};
    bool first = true;
    std::size_t position = 0;
    for (const std::uint32_t size : sorted.fBlockSizes) {
        std::array<double, 2> count{0, 0};
        for (std::uint32_t k = 0; k < size; ++k, ++position) {
            count[static_cast<std::size_t>(sorted.fGroups[position]) == result.fFirst ? 0 : 1] += 1;
        }
        result.fTiesBetweenGroups = result.fTiesBetweenGroups || (count[0] > 0 && count[1] > 0);
        std::array<double, 2> nextFewest{kNone, kNone};
        std::array<double, 2> nextMost{kNone, kNone};
        for (int f = 0; f < 2; ++f) {
            for (int l = 0; l < 2; ++l) {
                double low = 0;
                double high = 0;
                if (count[0] > 0 && count[1] > 0) {
                    if (f != l) {
                        low = 2;
                        high = 2 * std::min(count[0], count[1]);
                    } else if (count[f] >= 2) {
                        low = 3;
                        high = std::min(2 * count[f] - 1, 2 * count[1 - f] + 1);
                    } else {
                        continue;
                    }
                } else if (count[f] > 0 && f == l) {
                    low = high = 1;
                } else {
                    continue;
                }
                for (int last = 0; last < 2; ++last) {
                    double lowSoFar = 0;
                    double highSoFar = 0;
                    if (!first) {
                        if (fewest[last] == kNone) {
                            continue;
                        }
                        lowSoFar = fewest[last] - (last == f ? 1 : 0);
                        highSoFar = most[last] - (last == f ? 1 : 0);
                    } else if (last == 1) {
                        continue;
                    }
                    const double newLow = lowSoFar + low;
                    const double newHigh = highSoFar + high;
                    if (nextFewest[l] == kNone || newLow < nextFewest[l]) {
                        nextFewest[l] = newLow;
                    }
                    if (nextMost[l] == kNone || newHigh > nextMost[l]) {
                        nextMost[l] = newHigh;
                    }
                }
            }
        }
        fewest = nextFewest;
        most = nextMost;
        first = false;
    }
    const auto best = [](const std::array<double, 2>& state, bool low) {
        if (state[0] == kNone) {
            return state[1];
        }
        if (state[1] == kNone) {
            return state[0];
        }
        return low ? std::min(state[0], state[1]) : std::max(state[0], state[1]);
    };
    const double n1 = static_cast<double>(result.fN1);
    const double n2 = static_cast<double>(result.fN2);
    const double n = n1 + n2;
    const double mean = 2 * n1 * n2 / n + 1;
    const double sd = std::sqrt(2 * n1 * n2 * (2 * n1 * n2 - n) / (n * n * (n - 1)));
    const auto bound = [&](double runs) {
        RunsBound b;
        b.fRuns = runs;
        double difference = runs - mean;
        difference += difference < 0 ? 0.5 : -0.5;
        b.fStdStatistic = sd > 0 ? difference / sd : kNoValue;
        b.fExactSig = RunsLowerTail(runs, result.fN1, result.fN2);
        return b;
    };
    result.fMinimum = bound(best(fewest, true));
    result.fMaximum = bound(best(most, false));
    return result;
}

double MosesLowerTail(double span, std::size_t m, std::size_t n, std::size_t h) {
    if (m < 2 * h + 2) {
        return kNoValue;
    }
    const double kept = static_cast<double>(m - 2 * h);
    const double extra = std::floor(span) - kept; // spaces beyond the kept control cases
    if (extra < 0) {
        return 0.0;
    }
    const double nn = static_cast<double>(n);
    const double hh = static_cast<double>(h);
    const LogFactorials log(m + n + 1);
    const double logTotal = log.Choose(static_cast<double>(m + n), static_cast<double>(m));
    double p = 0;
    for (double i = 0; i <= std::min(extra, nn); ++i) {
        p += std::exp(log.Choose(i + kept - 2, i) + log.Choose(nn + 2 * hh + 1 - i, nn - i) -
                      logTotal);
    }
    return std::min(1.0, p);
}

MosesResult Moses(const GroupedValues& data, std::size_t control, const MosesTrim& trim) {
    MosesResult result;
    static_cast<TwoSamples&>(result) = TwoGroups(data);
    if (!result.Computed()) {
        return result;
    }
    result.fControl = control == result.fSecond ? result.fSecond : result.fFirst;
    result.fExperimental = result.fControl == result.fFirst ? result.fSecond : result.fFirst;
    std::vector<double> controlRanks;
    for (std::size_t i = 0; i < data.fValues.size(); ++i) {
        if (static_cast<std::size_t>(data.fGroups[i]) == result.fControl) {
            controlRanks.push_back(data.fRanking->fRanks[i]);
        }
    }
    std::sort(controlRanks.begin(), controlRanks.end());
    const std::size_t m = controlRanks.size();
    const std::size_t n = data.fValues.size() - m;
    result.fControlCases = m;
    if (m < 2) {
        result.fOutcome = Outcome::kTooFewControls;
        return result;
    }
    result.fObservedSpan = controlRanks.back() - controlRanks.front() + 1;
    result.fObservedSig = MosesLowerTail(result.fObservedSpan, m, n, 0);
    const std::size_t h =
        trim.fFromSample
            ? std::max<std::size_t>(1, static_cast<std::size_t>(0.05 * static_cast<double>(m)))
            : trim.fCount;
    result.fTrimmed = h;
    if (m < 2 * h + 2) {
        result.fOutcome = Outcome::kTrimmedTooFar;
        return result;
    }
    result.fTrimmedSpan = controlRanks[m - 1 - h] - controlRanks[h] + 1;
    result.fTrimmedSig = MosesLowerTail(result.fTrimmedSpan, m, n, h);
    return result;
}

namespace {

// Doubles mapped to integers in the same order (-0 and +0 together).
std::int64_t OrderedKey(double value) {
    const auto bits = std::bit_cast<std::int64_t>(value);
    return bits >= 0 ? bits : std::numeric_limits<std::int64_t>::min() - bits;
}

double FromOrderedKey(std::int64_t key) {
    return std::bit_cast<double>(key >= 0 ? key : std::numeric_limits<std::int64_t>::min() - key);
}

// Number of differences y[j] - x[i] (as computed in floating point) <= t.
std::uint64_t CountDifferencesAtMost(std::span<const double> x, std::span<const double> y,
                                     double t) {
    // For fixed j, y[j] - x[i] falls as i rises, so the differences <= t are
    // those from some i on; that i does not fall as j rises.
    std::uint64_t count = 0;
    std::size_t from = 0;
    for (const double yj : y) {
        while (from < x.size() && yj - x[from] > t) {
            ++from;
        }
        count += x.size() - from;
    }
    return count;
}

} // namespace

double KthSmallestDifference(std::span<const double> xAscending, std::span<const double> yAscending,
                             std::size_t k) {
    if (xAscending.empty() || yAscending.empty() || k == 0 ||
        k > xAscending.size() * yAscending.size()) {
        return kNoValue;
    }
    // The smallest t with at least k differences <= t is the k-th difference;
    // search the doubles between the smallest and largest difference.
    std::int64_t low = OrderedKey(yAscending.front() - xAscending.back());
    std::int64_t high = OrderedKey(yAscending.back() - xAscending.front());
    while (low < high) {
        const auto span = static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low);
        const std::int64_t middle = low + static_cast<std::int64_t>(span / 2);
        if (CountDifferencesAtMost(xAscending, yAscending, FromOrderedKey(middle)) >= k) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    return FromOrderedKey(low);
}

HodgesLehmannResult HodgesLehmann(const GroupedValues& data, double level) {
    HodgesLehmannResult result;
    static_cast<TwoSamples&>(result) = TwoGroups(data);
    if (!result.Computed()) {
        return result;
    }
    // The differences are taken between the values' keys on the data's
    // decimal grid, so that equal decimal differences are equal.
    std::vector<double> x = SortedValuesOf(data, result.fFirst);
    std::vector<double> y = SortedValuesOf(data, result.fSecond);
    const DecimalGrid grid = DecimalGrid::Of({x, y});
    for (std::vector<double>* values : {&x, &y}) {
        for (double& value : *values) {
            value = grid.Key(value);
        }
    }
    const std::size_t pairs = x.size() * y.size();
    if (pairs % 2 == 1) {
        result.fEstimate = grid.Value(KthSmallestDifference(x, y, (pairs + 1) / 2));
    } else {
        result.fEstimate = grid.Value(
            (KthSmallestDifference(x, y, pairs / 2) + KthSmallestDifference(x, y, pairs / 2 + 1)) /
            2);
    }
    if (!(level > 0 && level < 1)) {
        result.fIntervalReason = "The confidence level must lie between 0 and 100 percent.";
        return result;
    }
    const double n1 = static_cast<double>(x.size());
    const double n2 = static_cast<double>(y.size());
    const double z = boost::math::quantile(boost::math::normal(), 1 - (1 - level) / 2);
    const double c = std::floor(n1 * n2 / 2 - z * std::sqrt(n1 * n2 * (n1 + n2 + 1) / 12) + 0.5);
    if (c < 1) {
        result.fIntervalReason = "Too few cases for an interval at this confidence level.";
        return result;
    }
    const auto rank = static_cast<std::size_t>(c);
    result.fHasInterval = true;
    result.fLower = grid.Value(KthSmallestDifference(x, y, rank));
    result.fUpper = grid.Value(KthSmallestDifference(x, y, pairs - rank + 1));
    return result;
}
