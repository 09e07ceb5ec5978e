// One-sample Kolmogorov-Smirnov test, Lilliefors significance, Monte Carlo
// significance.
#include "engine/stats/OneSampleKolmogorov.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include <boost/math/special_functions/ellint_rf.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/tools/roots.hpp>

#include "engine/stats/Distributions.h"
#include "engine/stats/OneSampleBinomial.h"
#include "engine/stats/Random.h"

namespace {

double MeanOf(std::span<const double> values) {
    double sum = 0;
    for (double v : values) {
        sum += v;
    }
    const double n = static_cast<double>(values.size());
    double mean = sum / n;
    double correction = 0;
    for (double v : values) {
        correction += v - mean;
    }
    return mean + correction / n;
}

double StdDevOf(std::span<const double> values, double mean) {
    double squares = 0;
    for (double v : values) {
        squares += (v - mean) * (v - mean);
    }
    return std::sqrt(squares / static_cast<double>(values.size() - 1));
}

// The hypothesized distribution function.
double Cdf(KsDistribution distribution, const KsParameters& p, double x) {
    switch (distribution) {
    case KsDistribution::kNormal:
        return 0.5 *
               boost::math::erfc(-(x - p.fFirst) / (p.fSecond * std::numbers::sqrt2), Policy());
    case KsDistribution::kUniform:
        return std::clamp((x - p.fFirst) / (p.fSecond - p.fFirst), 0.0, 1.0);
    case KsDistribution::kPoisson:
        return x < 0 ? 0.0 : boost::math::cdf(Poisson(p.fFirst), std::floor(x));
    case KsDistribution::kExponential:
        return x <= 0 ? 0.0 : -std::expm1(-x / p.fFirst);
    }
    return 0.0;
}

struct Differences {
    double fPlus = 0;  // sup (Fn - F)
    double fMinus = 0; // sup (F - Fn)
};

// Differences of the empirical distribution of `sorted` (ascending) and a continuous F given
// at each sorted value: at a value x, Fn jumps from Fn(x-) to Fn(x), F does not.
template <typename CdfAt>
Differences ContinuousDifferences(const std::vector<double>& sorted, CdfAt cdfAt) {
    Differences d;
    const std::size_t n = sorted.size();
    const double count = static_cast<double>(n);
    for (std::size_t first = 0; first < n;) {
        std::size_t last = first + 1;
        while (last < n && sorted[last] == sorted[first]) {
            ++last;
        }
        const double f = cdfAt(first);
        d.fPlus = std::max(d.fPlus, static_cast<double>(last) / count - f);
        d.fMinus = std::max(d.fMinus, f - static_cast<double>(first) / count);
        first = last;
    }
    return d;
}

// Differences for the Poisson: both functions are steps at whole numbers. Between two
// observed values Fn stays level while F climbs, so Fn - F peaks at each observed value and
// F - Fn just before the next one (and just before the first).
Differences PoissonDifferences(const std::vector<double>& sorted, const KsParameters& p) {
    Differences d;
    const std::size_t n = sorted.size();
    const double count = static_cast<double>(n);
    if (sorted.front() > 0) {
        d.fMinus = std::max(d.fMinus, Cdf(KsDistribution::kPoisson, p, sorted.front() - 1));
    }
    for (std::size_t first = 0; first < n;) {
        std::size_t last = first + 1;
        while (last < n && sorted[last] == sorted[first]) {
            ++last;
        }
        const double fn = static_cast<double>(last) / count;
        const double f = Cdf(KsDistribution::kPoisson, p, sorted[first]);
        d.fPlus = std::max(d.fPlus, fn - f);
        d.fMinus = std::max(d.fMinus, f - fn);
        if (last < n && sorted[last] - 1 > sorted[first]) {
            d.fMinus = std::max(d.fMinus, Cdf(KsDistribution::kPoisson, p, sorted[last] - 1) - fn);
        }
        first = last;
    }
    return d;
}

bool IsWholeNumber(double v) {
    return std::floor(v) == v;
}

} // namespace

KsParameters EstimateKsParameters(std::span<const double> values, KsDistribution distribution) {
    KsParameters p;
    if (values.empty()) {
        return p;
    }
    switch (distribution) {
    case KsDistribution::kNormal:
        p.fFirst = MeanOf(values);
        if (values.size() > 1) {
            p.fSecond = StdDevOf(values, p.fFirst);
        }
        break;
    case KsDistribution::kUniform: {
        const auto [low, high] = std::minmax_element(values.begin(), values.end());
        p.fFirst = *low;
        p.fSecond = *high;
        break;
    }
    case KsDistribution::kPoisson:
    case KsDistribution::kExponential:
        p.fFirst = MeanOf(values);
        break;
    }
    return p;
}

OneSampleKsResult OneSampleKolmogorovSmirnov(std::span<const double> values,
                                             KsDistribution distribution,
                                             std::optional<KsParameters> given) {
    OneSampleKsResult result;
    result.fDistribution = distribution;
    result.fFromSample = !given.has_value();
    result.fTotalN = values.size();
    if (values.empty()) {
        result.fOutcome = Outcome::kNoCases;
        return result;
    }
    const KsParameters p = given ? *given : EstimateKsParameters(values, distribution);
    result.fParameters = p;
    const bool twoParameters =
        distribution == KsDistribution::kNormal || distribution == KsDistribution::kUniform;

    // Whether the data and the parameters admit the test.
    if (distribution == KsDistribution::kPoisson &&
        !std::all_of(values.begin(), values.end(),
                     [](double v) { return v >= 0 && IsWholeNumber(v); })) {
        result.fOutcome = Outcome::kOutsideSupport;
        return result;
    }
    if (distribution == KsDistribution::kExponential &&
        std::any_of(values.begin(), values.end(), [](double v) { return v < 0; })) {
        result.fOutcome = Outcome::kOutsideSupport;
        return result;
    }
    if (!given && twoParameters && values.size() < 2) {
        result.fOutcome = Outcome::kTooFewCases;
        return result;
    }
    const bool finite = std::isfinite(p.fFirst) && (!twoParameters || std::isfinite(p.fSecond));
    bool valid = finite;
    switch (distribution) {
    case KsDistribution::kNormal:
        valid = valid && p.fSecond > 0;
        break;
    case KsDistribution::kUniform:
        valid = valid && p.fSecond > p.fFirst;
        break;
    case KsDistribution::kPoisson:
    case KsDistribution::kExponential:
        valid = valid && p.fFirst > 0;
        break;
    }
    if (!valid) {
        result.fOutcome = given || !finite ? Outcome::kBadParameter : Outcome::kNoVariance;
        return result;
    }

    std::vector<double> sorted(values.begin(), values.end());
    std::sort(sorted.begin(), sorted.end());
    const Differences d = distribution == KsDistribution::kPoisson
                              ? PoissonDifferences(sorted, p)
                              : ContinuousDifferences(sorted, [&](std::size_t i) {
                                    return Cdf(distribution, p, sorted[i]);
                                });
    const double n = static_cast<double>(values.size());
    result.fPositive = d.fPlus;
    result.fNegative = -d.fMinus;
    result.fAbsolute = std::max(d.fPlus, d.fMinus);
    result.fZ = std::sqrt(n) * result.fAbsolute;
    result.fAsymptoticSig2Tailed = KolmogorovLimitSf(result.fZ);
    if (distribution == KsDistribution::kNormal && !given) {
        if (values.size() < kLillieforsMinCases) {
            result.fOutcome = Outcome::kTooFewCases;
        } else {
            result.fLillieforsSig = LillieforsNormalSig(result.fAbsolute, values.size());
        }
    }
    return result;
}

// Kolmogorov's limiting distribution is a Jacobi theta function:
//   P(K <= z) = 1 + 2 sum_{k>=1} (-1)^k exp(-2 k^2 z^2) = theta4(q),  q = exp(-2 z^2).
// Theta functions of a nome q are complete elliptic integrals of the parameter m whose nome
// exp(-pi K(1-m) / K(m)) is q: theta4(q)^2 = 2 sqrt(1-m) K(m) / pi. K(m) is Carlson's
// R_F(0, 1-m, 1) from Boost.Math; m is found by a bracketing root finder on the ratio
// K(1-m) / K(m) = 2 z^2 / pi. For small z (ratio below 1), m is near 1 and is found through
// its complement p = 1 - m, which keeps it exact.
double KolmogorovLimitSf(double z) {
    if (!(z > 0)) {
        return 1.0;
    }
    const double ratio = 2 * z * z / std::numbers::pi;
    // K of the parameter p and of its complement 1 - p.
    const auto kOf = [](double p) { return boost::math::ellint_rf(0.0, 1 - p, 1.0, Policy()); };
    const auto kOfComplement = [](double p) {
        return boost::math::ellint_rf(0.0, p, 1.0, Policy());
    };
    const bool large = ratio >= 1;
    // Over t = log p in [log 1e-300, log 1/2]: for a large z, p = m and the ratio falls with p;
    // for a small z, p = 1 - m and the ratio rises with p.
    const auto excess = [&](double t) {
        const double p = std::exp(t);
        return large ? kOfComplement(p) / kOf(p) - ratio : kOf(p) / kOfComplement(p) - ratio;
    };
    const double lowT = std::log(1e-300);
    const double highT = -std::numbers::ln2;
    const double atLow = excess(lowT);
    if ((large && atLow <= 0) || (!large && atLow >= 0)) {
        // Beyond the reach of doubles: the tail is below 1e-300, or the distribution is.
        return large ? 0.0 : 1.0;
    }
    boost::math::tools::eps_tolerance<double> tolerance(52);
    std::uintmax_t iterations = 200;
    const auto [lo, hi] = boost::math::tools::toms748_solve(
        excess, lowT, highT, atLow, excess(highT), tolerance, iterations, Policy());
    const double p = std::exp(0.5 * (lo + hi));
    const double thetaSquared = large ? 2 * std::sqrt(1 - p) * kOf(p) / std::numbers::pi
                                      : 2 * std::sqrt(p) * kOfComplement(p) / std::numbers::pi;
    return std::clamp(1 - std::sqrt(thetaSquared), 0.0, 1.0);
}

double LillieforsNormalSig(double d, std::size_t n) {
    // Dallal and Wilkinson's approximation, valid for small significances; for N above 100
    // the statistic is rescaled to N = 100.
    const double count = static_cast<double>(n);
    double kd = d;
    double nd = count;
    if (n > 100) {
        kd = d * std::pow(count / 100, 0.49);
        nd = 100;
    }
    double sig =
        std::exp(-7.01256 * kd * kd * (nd + 2.78019) + 2.99587 * kd * std::sqrt(nd + 2.78019) -
                 0.122119 + 0.974598 / std::sqrt(nd) + 1.67997 / nd);
    if (sig <= 0.1) {
        return sig;
    }
    // Above 0.1: Stephens' modified statistic and its piecewise polynomials.
    const double k = (std::sqrt(count) - 0.01 + 0.85 / std::sqrt(count)) * d;
    const double k2 = k * k, k3 = k2 * k, k4 = k3 * k;
    if (k <= 0.302) {
        sig = 1;
    } else if (k <= 0.5) {
        sig = 2.76773 - 19.828315 * k + 80.709644 * k2 - 138.55152 * k3 + 81.218052 * k4;
    } else if (k <= 0.9) {
        sig = -4.901232 + 40.662806 * k - 97.490286 * k2 + 94.029866 * k3 - 32.355711 * k4;
    } else if (k <= 1.31) {
        sig = 6.198765 - 19.558097 * k + 23.186922 * k2 - 12.234627 * k3 + 2.423045 * k4;
    } else {
        sig = 0;
    }
    return sig;
}

MonteCarloSig LillieforsMonteCarlo(const OneSampleKsResult& observed, std::size_t samples,
                                   double level, std::uint64_t seed,
                                   const MonteCarloProgress& progress) {
    MonteCarloSig result;
    result.fLevel = level;
    const KsDistribution distribution = observed.fDistribution;
    // The statistic of a normal test below the Lilliefors minimum is still there to simulate.
    const bool statistic = observed.Computed() || (observed.fOutcome == Outcome::kTooFewCases &&
                                                   std::isfinite(observed.fAbsolute));
    if (!statistic) {
        result.fOutcome = observed.fOutcome;
        return result;
    }
    if (distribution == KsDistribution::kPoisson || !observed.fFromSample || samples == 0 ||
        !(level > 0 && level < 1)) {
        result.fOutcome = Outcome::kBadParameter;
        return result;
    }
    const std::size_t n = observed.fTotalN;
    if (n < 3) {
        result.fOutcome = Outcome::kTooFewCases;
        return result;
    }
    Random random(seed);
    std::vector<double> x(n);
    const double threshold = observed.fAbsolute - 1e-12;
    const std::size_t every = std::max<std::size_t>(1, samples / 100);
    for (std::size_t s = 0; s < samples; ++s) {
        KsParameters p;
        switch (distribution) {
        case KsDistribution::kNormal:
            for (double& v : x) {
                v = random.Normal();
            }
            break;
        case KsDistribution::kUniform:
            for (double& v : x) {
                v = random.Uniform();
            }
            break;
        case KsDistribution::kExponential:
        case KsDistribution::kPoisson:
            for (double& v : x) {
                v = random.Exponential();
            }
            break;
        }
        p = EstimateKsParameters(x, distribution);
        std::sort(x.begin(), x.end());
        const Differences d =
            ContinuousDifferences(x, [&](std::size_t i) { return Cdf(distribution, p, x[i]); });
        if (std::max(d.fPlus, d.fMinus) >= threshold) {
            ++result.fAtLeastObserved;
        }
        if (progress && (s + 1) % every == 0) {
            progress(s + 1, samples);
        }
    }
    result.fSamples = samples;
    result.fSig = static_cast<double>(result.fAtLeastObserved) / static_cast<double>(samples);
    const ProportionInterval interval =
        ClopperPearsonInterval(result.fAtLeastObserved, samples, level);
    result.fLower = interval.fLower;
    result.fUpper = interval.fUpper;
    return result;
}
