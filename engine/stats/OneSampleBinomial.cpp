// Binomial test and success-rate intervals.
#include "engine/stats/OneSampleBinomial.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <boost/math/special_functions/beta.hpp>
#include <boost/math/tools/roots.hpp>

#include "engine/stats/Distributions.h"

namespace {

std::vector<double> DistinctSorted(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

bool Contains(std::span<const double> list, double v) {
    return std::find(list.begin(), list.end(), v) != list.end();
}

} // namespace

BinomialCounts CountByCutPoint(std::span<const double> values, double cut) {
    BinomialCounts counts;
    for (double v : values) {
        if (v <= cut) {
            ++counts.fSuccesses;
        } else {
            ++counts.fFailures;
        }
    }
    return counts;
}

BinomialCounts CountByCategories(std::span<const double> values, std::span<const double> success,
                                 std::span<const double> failure) {
    BinomialCounts counts;
    std::vector<double> outside;
    for (double v : values) {
        if (Contains(success, v)) {
            ++counts.fSuccesses;
        } else if (failure.empty() || Contains(failure, v)) {
            ++counts.fFailures;
        } else {
            outside.push_back(v);
        }
    }
    counts.fExcluded = outside.size();
    counts.fValuesOutside = DistinctSorted(std::move(outside));
    return counts;
}

namespace {

// Two-sided significance by the minimum-likelihood rule: P of every count whose probability
// is at most that of the observed one (with a relative allowance of 1e-7 for rounding, as is
// usual). The binomial probabilities fall away from the mode on either side, so the counts on
// the far side that qualify are found by a binary search.
double MinLikelihoodSig(std::size_t x, std::size_t n, double p) {
    const Binomial binomial(static_cast<double>(n), p);
    const double observed = boost::math::pdf(binomial, static_cast<double>(x));
    const double threshold = observed * (1 + 1e-7);
    const double m = static_cast<double>(n) * p;
    const double xd = static_cast<double>(x);
    if (xd == m) {
        return 1.0;
    }
    const auto pdf = [&](std::size_t i) {
        return boost::math::pdf(binomial, static_cast<double>(i));
    };
    const std::size_t mode =
        std::min(n, static_cast<std::size_t>(std::floor(static_cast<double>(n + 1) * p)));
    double sig = 0;
    if (xd < m) {
        // Count i in [ceil(m), n] with pdf(i) <= threshold: pdf rises up to the mode, then
        // falls. Below the mode they are checked one by one (at most one or two of them).
        const std::size_t from = static_cast<std::size_t>(std::ceil(m));
        std::size_t count = 0;
        std::size_t i = from;
        for (; i < mode && i <= n; ++i) {
            count += pdf(i) <= threshold;
        }
        // On [i, n] pdf does not rise: find the first index at or below the threshold.
        std::size_t lo = i, hi = n + 1;
        while (lo < hi) {
            const std::size_t mid = lo + (hi - lo) / 2;
            if (pdf(mid) <= threshold) {
                hi = mid;
            } else {
                lo = mid + 1;
            }
        }
        count += n + 1 - lo;
        sig = boost::math::cdf(binomial, xd);
        if (count > 0) {
            sig +=
                boost::math::cdf(boost::math::complement(binomial, static_cast<double>(n - count)));
        }
    } else {
        // Count i in [0, floor(m)] with pdf(i) <= threshold: pdf rises up to the mode.
        const std::size_t to = static_cast<std::size_t>(std::floor(m));
        std::size_t count = 0;
        std::size_t i = to + 1; // indices > mode within [0, to] are checked one by one
        while (i > 0 && i - 1 > mode) {
            --i;
            count += pdf(i) <= threshold;
        }
        // On [0, min(i - 1, to)] pdf does not fall: the qualifying ones are a prefix.
        const std::size_t last = std::min(i, to + 1); // exclusive end
        std::size_t lo = 0, hi = last;
        while (lo < hi) {
            const std::size_t mid = lo + (hi - lo) / 2;
            if (pdf(mid) <= threshold) {
                lo = mid + 1;
            } else {
                hi = mid;
            }
        }
        count += lo;
        sig = x > 0 ? boost::math::cdf(boost::math::complement(binomial, xd - 1)) : 1.0;
        if (count > 0) {
            sig += boost::math::cdf(binomial, static_cast<double>(count - 1));
        }
    }
    return std::min(1.0, sig);
}

} // namespace

BinomialResult BinomialTest(std::size_t successes, std::size_t trials, double testProportion) {
    BinomialResult result;
    result.fTrials = trials;
    result.fSuccesses = successes;
    result.fTestProportion = testProportion;
    if (!(testProportion > 0 && testProportion < 1) || successes > trials) {
        result.fOutcome = Outcome::kBadParameter;
        return result;
    }
    if (trials == 0) {
        result.fOutcome = Outcome::kNoCases;
        return result;
    }
    const double n = static_cast<double>(trials);
    const double x = static_cast<double>(successes);
    const double p = testProportion;
    result.fObservedProportion = x / n;
    result.fStandardError = std::sqrt(n * p * (1 - p));
    const double difference = x - n * p;
    const double corrected = std::copysign(std::max(std::fabs(difference) - 0.5, 0.0), difference);
    result.fStandardized = corrected / result.fStandardError;

    const Binomial binomial(n, p);
    result.fExactSigLess = boost::math::cdf(binomial, x);
    result.fExactSigGreater =
        successes == 0 ? 1.0 : boost::math::cdf(boost::math::complement(binomial, x - 1));
    result.fExactSig2Tailed =
        std::min(1.0, 2 * std::min(result.fExactSigLess, result.fExactSigGreater));
    result.fExactSigMinLikelihood = MinLikelihoodSig(successes, trials, p);
    return result;
}

namespace {
// An interval whose bounds are beta quantiles at the two tails: the lower
// bound of Beta(x + lowerShift, n - x + 1 - lowerShift), the upper of
// Beta(x + 1 - upperShift, n - x + upperShift); 0 with no successes and 1
// with all. Clopper-Pearson shifts by 0 and 0, Jeffreys by 0.5 and 0.5.
ProportionInterval BetaInterval(std::size_t successes, std::size_t trials, double level,
                                double lowerShift, double upperShift) {
    ProportionInterval interval;
    if (trials == 0 || successes > trials || !(level > 0 && level < 1)) {
        return interval;
    }
    const double x = static_cast<double>(successes);
    const double n = static_cast<double>(trials);
    const double tail = (1 - level) / 2;
    interval.fEstimate = x / n;
    interval.fLower =
        successes == 0
            ? 0.0
            : boost::math::ibeta_inv(x + lowerShift, n - x + 1 - lowerShift, tail, Policy());
    interval.fUpper =
        successes == trials
            ? 1.0
            : boost::math::ibetac_inv(x + 1 - upperShift, n - x + upperShift, tail, Policy());
    return interval;
}
} // namespace

ProportionInterval ClopperPearsonInterval(std::size_t successes, std::size_t trials, double level) {
    return BetaInterval(successes, trials, level, 0.0, 0.0);
}

ProportionInterval JeffreysInterval(std::size_t successes, std::size_t trials, double level) {
    return BetaInterval(successes, trials, level, 0.5, 0.5);
}

ProportionInterval LikelihoodRatioInterval(std::size_t successes, std::size_t trials,
                                           double level) {
    ProportionInterval interval;
    if (trials == 0 || successes > trials || !(level > 0 && level < 1)) {
        return interval;
    }
    const double x = static_cast<double>(successes);
    const double n = static_cast<double>(trials);
    const double estimate = x / n;
    interval.fEstimate = estimate;
    const double critical = boost::math::quantile(ChiSquared(1), level);
    // Twice the log-likelihood ratio of the estimate against p, less the critical value:
    // it falls to its minimum -critical at the estimate and rises toward either end.
    const auto excess = [&](double p) {
        double deviance = 0;
        if (successes > 0) {
            deviance += x * (std::log(estimate) - std::log(p));
        }
        if (successes < trials) {
            deviance += (n - x) * (std::log1p(-estimate) - std::log1p(-p));
        }
        return 2 * deviance - critical;
    };
    const auto solve = [&](double a, double b) {
        boost::math::tools::eps_tolerance<double> tolerance(52);
        std::uintmax_t iterations = 200;
        const auto [lo, hi] =
            boost::math::tools::toms748_solve(excess, a, b, tolerance, iterations, Policy());
        return 0.5 * (lo + hi);
    };
    if (successes == 0) {
        interval.fLower = 0.0;
    } else {
        // The deviance grows without bound toward 0: halve until it passes the critical value.
        double a = estimate / 2;
        while (excess(a) <= 0 && a > 1e-300) {
            a /= 2;
        }
        interval.fLower = excess(a) <= 0 ? 0.0 : solve(a, estimate);
    }
    if (successes == trials) {
        interval.fUpper = 1.0;
    } else {
        double b = 0.5 * (1 + estimate);
        while (excess(b) <= 0 && 1 - b > 1e-16) {
            b = 0.5 * (1 + b);
        }
        interval.fUpper = excess(b) <= 0 ? 1.0 : solve(estimate, b);
    }
    return interval;
}

SuccessRateIntervals SuccessRateIntervalsOf(std::size_t successes, std::size_t trials,
                                            double level) {
    SuccessRateIntervals result;
    result.fTrials = trials;
    result.fSuccesses = successes;
    result.fLevel = level;
    if (!(level > 0 && level < 1) || successes > trials) {
        result.fOutcome = Outcome::kBadParameter;
        return result;
    }
    if (trials == 0) {
        result.fOutcome = Outcome::kNoCases;
        return result;
    }
    result.fClopperPearson = ClopperPearsonInterval(successes, trials, level);
    result.fJeffreys = JeffreysInterval(successes, trials, level);
    result.fLikelihoodRatio = LikelihoodRatioInterval(successes, trials, level);
    return result;
}
