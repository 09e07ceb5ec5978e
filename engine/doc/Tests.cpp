// The names of the tests.
#include "engine/doc/Tests.h"

#include <array>
#include <cstddef>

namespace {
using enum Classification;
constexpr std::array<TestNames, 23> kNames{{
    {"OChiSquare", kOneSample, ""},
    {"OBinomial", kOneSample, ""},
    {"OEstimateConfidenceInterval", kOneSample, ""},
    {"ORuns", kOneSample, ""},
    {"OWilcoxonSignedRanks", kOneSample, "O_WilcoxonSignedRanks_2"},
    {"OKolmogorovSmirnov", kOneSample, ""},
    {"OLilliefors", kOneSample, ""},
    {"IMannWhitneyU", kIndependent, "DefaultAllDistinctValuesUsed_I_MannWhitneyU_2"},
    {"IWaldWolfowitzRuns", kIndependent, "DefaultAllDistinctValuesUsed_I_WaldWolfowitzRuns_2"},
    {"IKolmogorovSmirnov", kIndependent, "DefaultAllDistinctValuesUsed_I_KolmogorovSmirnov_2"},
    {"IMoses", kIndependent, "DefaultAllDistinctValuesUsed_I_Moses_2"},
    {"IKruskalWallis", kIndependent, "DefaultAllDistinctValuesUsed_I_KruskalWallis_2"},
    {"IMedian", kIndependent, "DefaultAllDistinctValuesUsed_I_Median_2"},
    {"IJonckheereTerpstra", kIndependent, "DefaultAllDistinctValuesUsed_I_JonckheereTerpstra_2"},
    {"IHodgesLehmannEstimateGroups", kIndependent, "AllDistinctValuesUsed_I_HodgesLehman_2"},
    {"RSign", kRelated, "R_Sign_2"},
    {"RWilcoxonSignedRanks", kRelated, "R_WilcoxonSignedRanks_2"},
    {"RMcNemar", kRelated, "AllDistinctValuesUsed_R_McNemar_2"},
    {"RMarginalHomogeneity", kRelated, "AllDistinctValuesUsed_R_MarginalHomogeneity_2"},
    {"RCochransQ", kRelated, "DefaultAllDistinctValuesUsed_R_CochransQ_1"},
    {"RFriedmansTwoWayByRanks", kRelated, "R_FriedmansTwoWayByRanks_1"},
    {"RKendallsCoefficient", kRelated, "R_KendallsCoefficient_1"},
    {"RHodgesLehmannEstimatePairs", kRelated, "R_HodgesLehman_2"},
}};
} // namespace

const TestNames& NamesOf(Test test) {
    return kNames[static_cast<std::size_t>(test)];
}
