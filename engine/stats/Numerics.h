// The numbers every family of tests computes the same way: the tails of the
// normal and chi-square distributions, medians and quantiles, and histogram
// bins.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "engine/stats/Outcome.h"

// P(|Z| >= |z|) for a standard normal Z, at most 1; kNoValue for NaN.
double NormalTwoSided(double z);
// P(Z >= z) for a standard normal Z.
double NormalUpper(double z);
// Twice the smaller tail of `x` successes in `n` trials with p = 1/2, at
// most 1: the two-sided exact significance of the sign and McNemar tests.
double BinomialHalfTwoSided(double x, double n);
// P(X >= x) for X chi-square with `df` degrees of freedom (a negative x
// counts as 0); kNoValue for df <= 0 or a NaN x.
double ChiSquareUpper(double x, double df);

// The median (the mean of the two middle values for an even count);
// kNoValue when empty. MedianInPlace reorders its values.
double Median(std::span<const double> values);
double MedianInPlace(std::span<double> values);
double SortedMedian(std::span<const double> ascending);
// The weighted average at position p(n + 1) of ascending values, held to the
// first and last value (R's quantile type 6, the quartiles of box plots).
double QuantileType6(std::span<const double> ascending, double p);

// The smallest step * 10^k (k whole) that is at least `raw` (> 0), for steps
// between 1 and 10 in ascending order; 10 * 10^k when no step reaches it.
double NiceWidth(double raw, std::span<const double> steps);

struct ValueBin {
    double fMidpoint = 0;
    std::size_t fCount = 0;
};

// Bins [fOrigin + i * fWidth, fOrigin + (i + 1) * fWidth), from the bin that
// holds the smallest value to the one that holds the largest. The counts add
// up to N. Values whose range is beyond the doubles get one bin of width NaN.
struct ValueHistogram {
    double fOrigin = 0;
    double fWidth = 1;
    std::vector<ValueBin> fBins;
};

// Bins of the given width (> 0) aligned on `origin`; at most 100000 of them
// (a finer width is doubled until the range fits). No values give no bins.
ValueHistogram BinValues(std::span<const double> values, double width, double origin = 0);
// `values` counted in the bins of `layout` (values beyond its first or last
// bin count in that bin), so that groups can share their bins.
ValueHistogram BinLike(std::span<const double> values, const ValueHistogram& layout);
