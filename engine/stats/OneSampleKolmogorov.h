// One-sample Kolmogorov-Smirnov test against the normal, uniform, Poisson and
// exponential distributions, with given parameters or parameters estimated from
// the sample; the Lilliefors significance of the normal test with estimated
// parameters; and the Monte Carlo significance of a test with estimated
// parameters (the Lilliefors companion), seeded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "engine/stats/OneSample.h"

enum class KsDistribution { kNormal, kUniform, kPoisson, kExponential };

// The parameters of a distribution: normal: mean, standard deviation; uniform: minimum,
// maximum; Poisson: mean (fSecond unused); exponential: mean (fSecond unused).
struct KsParameters {
    double fFirst = kNoValue;
    double fSecond = kNoValue;
};

// The parameters estimated from a sample: mean and standard deviation (divisor N - 1);
// minimum and maximum; the mean. NaN where the sample has too few values.
KsParameters EstimateKsParameters(std::span<const double> values, KsDistribution distribution);

// Cases a normal test with estimated parameters needs for its Lilliefors significance.
inline constexpr std::size_t kLillieforsMinCases = 5;

struct OneSampleKsResult : TestOutcome {
    KsDistribution fDistribution = KsDistribution::kNormal;
    bool fFromSample = false; // parameters estimated from the sample
    std::size_t fTotalN = 0;
    KsParameters fParameters; // the parameters tested (given or estimated)
    // Most extreme differences of the empirical and the hypothesized distribution function,
    // sup |Fn - F| over every real number (for the Poisson both are step functions).
    double fAbsolute = kNoValue; // D = max(D+, D-)
    double fPositive = kNoValue; // D+ = sup (Fn - F), 0 or more
    double fNegative = kNoValue; // -D- = -sup (F - Fn), 0 or less
    double fZ = kNoValue;        // sqrt(N) D
    // Upper tail of Kolmogorov's limiting distribution at sqrt(N) D. For estimated parameters
    // it is conservative (too large); see the Lilliefors and Monte Carlo significances.
    double fAsymptoticSig2Tailed = kNoValue;
    // Normal test with estimated parameters and N >= kLillieforsMinCases: the Lilliefors
    // significance by the Dallal-Wilkinson approximation, with Stephens' polynomials above
    // 0.1 (as R's nortest::lillie.test); NaN otherwise.
    double fLillieforsSig = kNoValue;
};

// `given` empty: the parameters are estimated from the sample. Outcomes: kNoCases;
// kTooFewCases (normal from the sample below two cases; and below kLillieforsMinCases,
// where the statistic is filled but no Lilliefors significance); kNoVariance (normal or
// uniform from a sample of equal values); kBadParameter (standard deviation or mean not
// positive, maximum not above minimum, a parameter not finite); kOutsideSupport (Poisson:
// a value that is not a whole number 0 or more; exponential: a negative value).
OneSampleKsResult OneSampleKolmogorovSmirnov(std::span<const double> values,
                                             KsDistribution distribution,
                                             std::optional<KsParameters> given = std::nullopt);

// P(K > z) for Kolmogorov's limiting distribution K of sqrt(N) sup |Fn - F|.
double KolmogorovLimitSf(double z);

// The Lilliefors significance of the normal statistic `d` of `n` cases (n >= 5), as
// nortest's lillie.test computes it.
double LillieforsNormalSig(double d, std::size_t n);

// Monte Carlo significance: the share of simulated samples whose statistic is at least the
// observed one.
struct MonteCarloSig : TestOutcome {
    std::size_t fSamples = 0;         // samples drawn
    std::size_t fAtLeastObserved = 0; // samples whose statistic was at least the observed D
    double fSig = kNoValue;           // fAtLeastObserved / fSamples
    double fLevel = kNoValue;         // confidence level of the interval, a fraction
    // Clopper-Pearson interval of the significance at fLevel (never empty, also with no hit).
    double fLower = kNoValue;
    double fUpper = kNoValue;
};

// Called now and then with the samples done and the samples asked for.
using MonteCarloProgress = std::function<void(std::size_t done, std::size_t total)>;

// The Lilliefors companion of a test with estimated parameters (normal, uniform,
// exponential): draws `samples` samples of `observed.fTotalN` cases from the standard form of
// the distribution with the random numbers of `seed`, estimates the parameters of each as the
// test does, and counts the statistics at least `observed.fAbsolute` (within 1e-12, so that a
// simulated sample equal to the observed one counts). The statistics are invariant under the
// changes of location and scale the estimates absorb, so the standard form stands for every
// member of the family. `level` is a fraction (0.99). Outcomes: the observed test's reason
// when it was not computed; kBadParameter (Poisson, given parameters, no samples, level
// outside (0, 1)); kTooFewCases (fewer than 3 cases).
MonteCarloSig LillieforsMonteCarlo(const OneSampleKsResult& observed, std::size_t samples,
                                   double level, std::uint64_t seed,
                                   const MonteCarloProgress& progress = {});
