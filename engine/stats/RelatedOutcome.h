// Whether a related-samples statistic could be computed, and why not.
#pragma once

#include <cstddef>
#include <limits>

enum class RelatedOutcome {
    kComputed,
    kTooFewCases,        // fewer than two complete cases
    kTooFewFields,       // fewer than two fields (k-sample tests)
    kUnequalLengths,     // the fields do not hold the same number of cases
    kAllDifferencesZero, // every pair is tied (no nonzero difference, no discordant pair)
    kOneCategory,        // the fields hold fewer than two categories between them
    kNoVariance,         // every case is constant across the fields
    kInvalidLevel,       // a confidence level outside (0, 1)
    kNotFinite,          // a value or a difference is not a finite number
};

// A short English reason for the outcome, for messages and test output.
inline const char* RelatedOutcomeText(RelatedOutcome outcome) {
    switch (outcome) {
    case RelatedOutcome::kComputed:
        return "computed";
    case RelatedOutcome::kTooFewCases:
        return "fewer than two complete cases";
    case RelatedOutcome::kTooFewFields:
        return "fewer than two fields";
    case RelatedOutcome::kUnequalLengths:
        return "the fields hold different numbers of cases";
    case RelatedOutcome::kAllDifferencesZero:
        return "all differences are zero";
    case RelatedOutcome::kOneCategory:
        return "only one category";
    case RelatedOutcome::kNoVariance:
        return "every case has the same value in all fields";
    case RelatedOutcome::kInvalidLevel:
        return "the confidence level is not between 0 and 1";
    case RelatedOutcome::kNotFinite:
        return "a value or a difference is not a finite number";
    }
    return "unknown";
}

// A number that was not computed or does not apply (a missing cell in the
// document).
inline constexpr double kRelatedNoValue = std::numeric_limits<double>::quiet_NaN();

// The check that opens every two-field test: both fields hold the same number
// of cases (sets `result.fTotalN`), at least two. False, with the outcome
// set, when not.
template <typename Result>
bool ArePairedCases(std::size_t firstSize, std::size_t secondSize, Result& result) {
    if (firstSize != secondSize) {
        result.fOutcome = RelatedOutcome::kUnequalLengths;
        return false;
    }
    result.fTotalN = firstSize;
    if (result.fTotalN < 2) {
        result.fOutcome = RelatedOutcome::kTooFewCases;
        return false;
    }
    return true;
}
