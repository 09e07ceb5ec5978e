// The Boost.Math policy and distributions of every statistic of the engine
// (for its .cpp files). Computation stays in double (no promotion to long
// double, whose width differs between platforms), and a domain or range
// error gives NaN or infinity instead of an exception.
#pragma once

#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/hypergeometric.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/poisson.hpp>
#include <boost/math/policies/policy.hpp>

using Policy = boost::math::policies::policy<
    boost::math::policies::domain_error<boost::math::policies::ignore_error>,
    boost::math::policies::pole_error<boost::math::policies::ignore_error>,
    boost::math::policies::overflow_error<boost::math::policies::ignore_error>,
    boost::math::policies::underflow_error<boost::math::policies::ignore_error>,
    boost::math::policies::evaluation_error<boost::math::policies::ignore_error>,
    boost::math::policies::rounding_error<boost::math::policies::ignore_error>,
    boost::math::policies::promote_float<false>, boost::math::policies::promote_double<false>,
    boost::math::policies::discrete_quantile<boost::math::policies::integer_round_down>>;

using Normal = boost::math::normal_distribution<double, Policy>;
using ChiSquared = boost::math::chi_squared_distribution<double, Policy>;
using Binomial = boost::math::binomial_distribution<double, Policy>;
using Poisson = boost::math::poisson_distribution<double, Policy>;
using Hypergeometric = boost::math::hypergeometric_distribution<double, Policy>;
