// The messages the engine writes into its documents, by their code in the
// string table (resources/strings), in one place.
#pragma once

#include "engine/stats/Outcome.h"

namespace message {
inline constexpr int kCannotCompute = 220001; // "The test cannot be computed for the values ..."
inline constexpr int kTooFewCases = 220002;
inline constexpr int kOneCategory = 220003;
inline constexpr int kNoVariance = 220004;
inline constexpr int kAllAtTestValue = 220005;
inline constexpr int kOutsideSupport = 220006;
inline constexpr int kBadParameter = 220007;
inline constexpr int kNoCases = 220008;
inline constexpr int kNotTwoGroups = 220009;       // ^1: the number of groups with cases
inline constexpr int kIntervalNotReached = 220010; // a Hodges-Lehmann level out of reach
inline constexpr int kTooFewControls = 220011;
inline constexpr int kTrimmedTooFar = 220012;
inline constexpr int kFewCasesInPair = 220013; // a pair of samples (pairwise rows)
inline constexpr int kNominal = 220014;        // a test that orders values, on a nominal field
inline constexpr int kAllPairsTied = 220016;
inline constexpr int kOneGroup = 220017;
inline constexpr int kCountedWithLower = 220030;  // values at the cut point
inline constexpr int kNoLilliefors = 220045;      // fewer than five cases
inline constexpr int kOutsideCategories = 220052; // ^1: cases with a value in no category
inline constexpr int kNoVariationInPair = 222329; // a pairwise row or subset
} // namespace message

// The message that says why a test with `outcome` has no result; 0 for a
// computed test.
int MessageCode(Outcome outcome);
