// What every test function of the engine shares: the number that is not
// there, and why a test has no result. Test functions are pure: spans of
// valid values in, a result struct out, nothing thrown. A number that does
// not apply to a result, or could not be computed, is kNoValue; the document
// writer writes it as missing.
#pragma once

#include <limits>

inline constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

// Why a test has no result.
enum class Outcome {
    kComputed = 0,      // the test has a result
    kNoCases,           // no valid case
    kTooFewCases,       // fewer cases than the test needs
    kOneCategory,       // every case falls in one category, or on one side of a cut point
    kNoVariance,        // every value is the same
    kAllAtTestValue,    // every value equals the hypothesized median
    kAllPairsTied,      // the two fields agree on every case
    kBadParameter,      // a parameter lies outside its domain (a probability, a level, ...)
    kOutsideSupport,    // a value lies outside the support of the hypothesized distribution
    kTooFewGroups,      // fewer groups with cases than the test compares
    kTooManyGroups,     // more groups with cases than the test compares
    kTooFewControls,    // Moses: fewer than two control cases
    kTrimmedTooFar,     // Moses: fewer than two control cases left after trimming
    kTooFewFields,      // fewer fields than the test compares
    kUnequalLengths,    // related fields of different lengths
    kNotFinite,         // a value or a difference beyond the doubles
    kInconsistentInput, // values, groups and ranks that do not belong together
};

// A short English text of the outcome ("too few cases"), for diagnostics.
const char* OutcomeText(Outcome outcome);

// The outcome every result struct carries.
struct TestOutcome {
    Outcome fOutcome = Outcome::kComputed;
    bool Computed() const { return fOutcome == Outcome::kComputed; }
};
