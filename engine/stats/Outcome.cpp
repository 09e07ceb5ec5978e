// The texts of the outcomes.
#include "engine/stats/Outcome.h"

const char* OutcomeText(Outcome outcome) {
    switch (outcome) {
    case Outcome::kComputed:
        return "computed";
    case Outcome::kNoCases:
        return "no valid cases";
    case Outcome::kTooFewCases:
        return "too few cases";
    case Outcome::kOneCategory:
        return "every case in one category";
    case Outcome::kNoVariance:
        return "every value is the same";
    case Outcome::kAllAtTestValue:
        return "every value equals the hypothesized median";
    case Outcome::kAllPairsTied:
        return "the fields agree on every case";
    case Outcome::kBadParameter:
        return "a parameter is outside its domain";
    case Outcome::kOutsideSupport:
        return "a value lies outside the support of the distribution";
    case Outcome::kTooFewGroups:
        return "too few groups have cases";
    case Outcome::kTooManyGroups:
        return "too many groups have cases";
    case Outcome::kTooFewControls:
        return "fewer than two control cases";
    case Outcome::kTrimmedTooFar:
        return "fewer than two control cases remain after trimming";
    case Outcome::kTooFewFields:
        return "too few fields";
    case Outcome::kUnequalLengths:
        return "the fields hold different numbers of cases";
    case Outcome::kNotFinite:
        return "a value or a difference is not a finite number";
    case Outcome::kInconsistentInput:
        return "the values, their groups and their ranks do not match";
    }
    return "unknown";
}
