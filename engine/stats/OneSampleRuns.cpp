// Runs test. The exact distribution of the number of runs R of n1 and n2
// cases in random order splits into hypergeometric terms:
//   P(R = 2k)     = 2 n1 n2 / (N (N-1))     H(N-2, n1-1, n2-1)(k-1)
//   P(R = 2k + 1) = n2 (n2-1) / (N (N-1))   H(N-2, n1-1, n2-2)(k-1)
//                 + n1 (n1-1) / (N (N-1))   H(N-2, n2-1, n1-2)(k-1)
// where H(population, successes, draws) is the hypergeometric distribution of the
// successes drawn; so each tail of R is a weighted sum of three hypergeometric
// tails, taken from Boost.Math.
#include "engine/stats/OneSampleRuns.h"

#include <algorithm>
#include <cmath>

#include "engine/stats/Distributions.h"

double RunsCutPoint(std::span<const double> values, RunsCut cut, double value) {
    switch (cut) {
    case RunsCut::kMedian:
        return Median(values);
    case RunsCut::kMean:
        return Describe(values).fMean;
    case RunsCut::kValue:
        return value;
    }
    return value;
}

namespace {

// One hypergeometric term: its weight and P(X <= x) or P(X > x) of its distribution.
struct RunsTerm {
    double fWeight = 0;
    std::size_t fPopulation = 0;
    std::size_t fSuccesses = 0;
    std::size_t fDraws = 0;
    bool fPresent = false;

    double Below(long long x) const { // P(X <= x)
        if (!fPresent || x < Lowest()) {
            return 0.0;
        }
        if (x >= Highest()) {
            return 1.0;
        }
        return boost::math::cdf(Distribution(), static_cast<double>(x));
    }
    double Above(long long x) const { // P(X > x)
        if (!fPresent || x >= Highest()) {
            return 0.0;
        }
        if (x < Lowest()) {
            return 1.0;
        }
        return boost::math::cdf(boost::math::complement(Distribution(), static_cast<double>(x)));
    }

private:
    Hypergeometric Distribution() const { return Hypergeometric(fSuccesses, fDraws, fPopulation); }
    long long Lowest() const {
        const long long low =
            static_cast<long long>(fDraws + fSuccesses) - static_cast<long long>(fPopulation);
        return std::max(0LL, low);
    }
    long long Highest() const { return static_cast<long long>(std::min(fSuccesses, fDraws)); }
};

struct RunsTerms {
    RunsTerm fEven, fOddA, fOddB;
};

RunsTerms TermsOf(std::size_t n1, std::size_t n2) {
    const double n = static_cast<double>(n1 + n2);
    const double pairs = n * (n - 1);
    RunsTerms terms;
    terms.fEven = {2.0 * static_cast<double>(n1) * static_cast<double>(n2) / pairs, n1 + n2 - 2,
                   n1 - 1, n2 - 1, true};
    if (n2 >= 2) {
        terms.fOddA = {static_cast<double>(n2) * static_cast<double>(n2 - 1) / pairs, n1 + n2 - 2,
                       n1 - 1, n2 - 2, true};
    }
    if (n1 >= 2) {
        terms.fOddB = {static_cast<double>(n1) * static_cast<double>(n1 - 1) / pairs, n1 + n2 - 2,
                       n2 - 1, n1 - 2, true};
    }
    return terms;
}

// P(R <= r).
double RunsAtMost(const RunsTerms& t, long long r) {
    // Even 2k <= r: k - 1 <= floor(r / 2) - 1; odd 2k + 1 <= r: k - 1 <= floor((r - 1) / 2) - 1.
    const long long even = r / 2 - 1;
    const long long odd = (r - 1) / 2 - 1;
    return t.fEven.fWeight * t.fEven.Below(even) + t.fOddA.fWeight * t.fOddA.Below(odd) +
           t.fOddB.fWeight * t.fOddB.Below(odd);
}

// P(R >= r).
double RunsAtLeast(const RunsTerms& t, long long r) {
    // Even 2k >= r: k - 1 > ceil(r / 2) - 2; odd 2k + 1 >= r: k - 1 > ceil((r - 1) / 2) - 2.
    const long long even = (r + 1) / 2 - 2;
    const long long odd = r / 2 - 2;
    return t.fEven.fWeight * t.fEven.Above(even) + t.fOddA.fWeight * t.fOddA.Above(odd) +
           t.fOddB.fWeight * t.fOddB.Above(odd);
}

} // namespace

OneSampleRunsResult RunsTest(std::span<const std::uint8_t> classes) {
    OneSampleRunsResult result;
    result.fTotalN = classes.size();
    std::size_t runs = 0;
    for (std::size_t i = 0; i < classes.size(); ++i) {
        const bool second = classes[i] != 0;
        (second ? result.fSecondCount : result.fFirstCount) += 1;
        if (i == 0 || second != (classes[i - 1] != 0)) {
            ++runs;
        }
    }
    const std::size_t n1 = result.fFirstCount;
    const std::size_t n2 = result.fSecondCount;
    if (classes.empty()) {
        result.fOutcome = Outcome::kNoCases;
        return result;
    }
    result.fRuns = static_cast<double>(runs);
    if (classes.size() < 2) {
        result.fOutcome = Outcome::kTooFewCases;
        return result;
    }
    if (n1 == 0 || n2 == 0) {
        result.fOutcome = Outcome::kOneCategory;
        return result;
    }
    if (n1 == 1 && n2 == 1) {
        result.fOutcome = Outcome::kTooFewCases;
        return result;
    }
    const double n = static_cast<double>(n1 + n2);
    const double product = 2.0 * static_cast<double>(n1) * static_cast<double>(n2);
    result.fMean = product / n + 1;
    result.fStdDev = std::sqrt(product * (product - n) / (n * n * (n - 1)));
    double difference = result.fRuns - result.fMean;
    if (result.fTotalN < kRunsExactMaxCases) {
        difference = std::copysign(std::max(std::fabs(difference) - 0.5, 0.0), difference);
    }
    result.fStandardized = difference / result.fStdDev;
    result.fAsymptoticSig2Tailed = NormalTwoSided(result.fStandardized);

    const RunsTerms terms = TermsOf(n1, n2);
    const long long r = static_cast<long long>(runs);
    result.fExactSigLess = std::min(1.0, RunsAtMost(terms, r));
    result.fExactSigGreater = std::min(1.0, RunsAtLeast(terms, r));
    result.fExactSig2Tailed =
        std::min(1.0, 2 * std::min(result.fExactSigLess, result.fExactSigGreater));
    result.fExactIsReported = result.fTotalN <= kRunsExactMaxCases;
    return result;
}

OneSampleRunsResult RunsTestByCutPoint(std::span<const double> values, double cut) {
    std::vector<std::uint8_t> classes(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        classes[i] = values[i] <= cut ? 0 : 1;
    }
    return RunsTest(classes);
}

OneSampleRunsResult RunsTestByCategories(std::span<const double> values,
                                         std::span<const double> first,
                                         std::span<const double> second) {
    const auto contains = [](std::span<const double> list, double v) {
        return std::find(list.begin(), list.end(), v) != list.end();
    };
    for (double v : first) {
        if (contains(second, v)) {
            OneSampleRunsResult result;
            result.fOutcome = Outcome::kBadParameter;
            return result;
        }
    }
    std::vector<std::uint8_t> classes;
    std::vector<double> outside;
    for (double v : values) {
        if (contains(first, v)) {
            classes.push_back(0);
        } else if (contains(second, v)) {
            classes.push_back(1);
        } else {
            outside.push_back(v);
        }
    }
    OneSampleRunsResult result = RunsTest(classes);
    result.fExcluded = outside.size();
    std::sort(outside.begin(), outside.end());
    outside.erase(std::unique(outside.begin(), outside.end()), outside.end());
    result.fValuesOutside = std::move(outside);
    return result;
}
