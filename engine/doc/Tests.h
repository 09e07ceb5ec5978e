// Every test the engine writes, with the names the documents give it: the
// algorithm word, its family (classification) and the condition key it has
// when its options choose no other. Writers name a test by its entry here,
// so that each name is written once.
#pragma once

#include <string_view>

enum class Classification { kOneSample, kRelated, kIndependent };

enum class Test {
    kChiSquare,
    kBinomial,
    kSuccessRate, // the binomial test's confidence intervals
    kRuns,
    kOneSampleWilcoxon,
    kOneSampleKolmogorov,
    kLilliefors, // the Monte Carlo companion of a Kolmogorov-Smirnov test
    kMannWhitney,
    kWaldWolfowitz,
    kTwoSampleKolmogorov,
    kMoses,
    kKruskalWallis,
    kMedian,
    kJonckheere,
    kGroupsHodgesLehmann,
    kSign,
    kPairedWilcoxon,
    kMcNemar,
    kMarginalHomogeneity,
    kCochran,
    kFriedman,
    kKendall,
    kPairsHodgesLehmann,
};

struct TestNames {
    std::string_view fWord;
    Classification fClassification;
    std::string_view fKey; // empty where the options always choose the key
};

const TestNames& NamesOf(Test test);
