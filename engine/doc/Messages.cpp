// The message of each outcome.
#include "engine/doc/Messages.h"

int MessageCode(Outcome outcome) {
    switch (outcome) {
    case Outcome::kComputed:
        return 0;
    case Outcome::kNoCases:
        return message::kNoCases;
    case Outcome::kTooFewCases:
        return message::kTooFewCases;
    case Outcome::kOneCategory:
        return message::kOneCategory;
    case Outcome::kNoVariance:
        return message::kNoVariance;
    case Outcome::kAllAtTestValue:
        return message::kAllAtTestValue;
    case Outcome::kAllPairsTied:
        return message::kAllPairsTied;
    case Outcome::kBadParameter:
        return message::kBadParameter;
    case Outcome::kOutsideSupport:
        return message::kOutsideSupport;
    case Outcome::kTooFewGroups:
        return message::kOneGroup;
    case Outcome::kTooFewControls:
        return message::kTooFewControls;
    case Outcome::kTrimmedTooFar:
        return message::kTrimmedTooFar;
    case Outcome::kTooManyGroups:
    case Outcome::kTooFewFields:
    case Outcome::kUnequalLengths:
    case Outcome::kNotFinite:
    case Outcome::kInconsistentInput:
        break;
    }
    return message::kCannotCompute;
}
