// Conversions of the generator's bits into deviates, all by inversion through
// Boost.Math in double precision, so that they depend on nothing that differs
// between standard libraries.
#include "engine/stats/Random.h"

#include <cmath>

#include <boost/math/special_functions/erf.hpp>

#include "engine/stats/Distributions.h"

double Random::Uniform() {
    // 53 bits fill a double's mantissa; the half step keeps 0 and 1 out.
    constexpr double kStep = 1.0 / 9007199254740992.0; // 2^-53
    return (static_cast<double>(Bits() >> 11) + 0.5) * kStep;
}

double Random::Normal() {
    // The standard normal quantile: -sqrt(2) erfc^-1(2u).
    return -std::sqrt(2.0) * boost::math::erfc_inv(2 * Uniform(), Policy());
}

double Random::Exponential() {
    return -std::log(Uniform());
}
