// What the one-sample tests share: the descriptive numbers of a field that
// the records and charts show, and its histogram.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "engine/stats/Numerics.h"

// Descriptive numbers of one field.
struct Descriptives {
    std::size_t fN = 0;
    double fMean = kNoValue;
    double fStdDev = kNoValue; // with divisor N - 1; NaN below two cases
    double fMin = kNoValue;
    double fMax = kNoValue;
    double fMedian = kNoValue;
    // Quartiles as box plots draw them: the weighted average at position p(N + 1) of the
    // sorted values, clamped to the first and last value (R's quantile type 6).
    double fLowerQuartile = kNoValue;
    double fUpperQuartile = kNoValue;
};

Descriptives Describe(std::span<const double> values);

// Bins of a width chosen for the data: whole numbers with a range of at most 40 get one bin
// per number, centred on it; other data get about 1 + log2(N) bins (between 5 and 40) of a
// width of 1, 2, 2.5 or 5 times a power of ten, aligned on a multiple of the width.
ValueHistogram MakeHistogram(std::span<const double> values);
