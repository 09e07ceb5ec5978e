// The result model and the test catalogue.
#include "backend/nonpar/NOPROutputStats.h"

#include <array>

using Stats = NOPROutputStats;

Stats::BaseHypothesisTest::~BaseHypothesisTest() = default;

Stats::NOPROutputStats() = default;

Stats::~NOPROutputStats() {
    fHypothesisTests.clear();
    fEstimates.clear();
    fLillieforsTests.clear();
    fFieldInfos.clear();
}

namespace {
template <typename Record> std::unique_ptr<Stats::BaseHypothesisTest> Make() {
    return std::make_unique<Record>();
}

template <typename List> auto* At(const List& list, std::size_t i) {
    return i < list.size() ? list[i].get() : nullptr;
}

struct CatalogueEntry {
    std::string_view fKey;
    std::string_view fTitle;
};

// Indexed by algorithm value.
constexpr std::array<CatalogueEntry, 31> kCatalogue = {{
    {"", "Unknown"},
    {"OChiSquare", "One-Sample Chi-Square Test"},
    {"OBinomial", "One-Sample Binomial Test"},
    {"ORuns", "One-Sample Runs Test"},
    {"OWilcoxonSignedRanks", "One-Sample Wilcoxon Signed Rank Test"},
    {"OEstimateConfidenceInterval", "One-Sample Binomial Success Rate"},
    {"OKolmogorovSmirnov", "One-Sample Kolmogorov-Smirnov Test"},
    {"OKolmogorovSmirnovNormal", "Unknown"},
    {"OKolmogorovSmirnovUniform", "Unknown"},
    {"OKolmogorovSmirnovPoisson", "Unknown"},
    {"OKolmogorovSmirnovExponential", "Unknown"},
    {"OLilliefors", "One-Sample Kolmogorov-Smirnov Test"},
    {"OLillieforsNormal", "Unknown"},
    {"OLillieforsUniform", "Unknown"},
    {"OLillieforsExponential", "Unknown"},
    {"RSign", "Related-Samples Sign Test"},
    {"RWilcoxonSignedRanks", "Related-Samples Wilcoxon Signed Rank Test"},
    {"RCochransQ", "Related-Samples Cochran's Q Test"},
    {"RMcNemar", "Related-Samples McNemar Change Test"},
    {"RFriedmansTwoWayByRanks", "Related-Samples Friedman's Two-Way Analysis of Variance by Ranks"},
    {"RKendallsCoefficient", "Related-Samples Kendall's Coefficient of Concordance"},
    {"RMarginalHomogeneity", "Related-Samples Marginal Homogeneity Test"},
    {"RHodgesLehmannEstimatePairs", "Related-Samples Hodges-Lehman Median Difference"},
    {"IHodgesLehmannEstimateGroups", "Independent-Samples Hodges-Lehman Median Difference"},
    {"IMoses", "Independent-Samples Moses Test of Extreme Reaction"},
    {"IMannWhitneyU", "Independent-Samples Mann-Whitney U Test"},
    {"IWaldWolfowitzRuns", "Independent-Samples Wald-Wolfowitz Runs Test"},
    {"IKolmogorovSmirnov", "Independent-Samples Kolmogorov-Smirnov Test"},
    {"IKruskalWallis", "Independent-Samples Kruskal-Wallis Test"},
    {"IJonckheereTerpstra",
     "Independent-Samples Jonckheere-Terpstra Test for Ordered Alternatives"},
    {"IMedian", "Independent-Samples Median Test"},
}};
} // namespace

Stats::BaseHypothesisTest* Stats::CreateTest(Classification classification, Algorithm algorithm,
                                             Decision decision) {
    std::unique_ptr<BaseHypothesisTest> test;
    auto* list = &fHypothesisTests;
    switch (algorithm) {
    case kAOChiSquare:
        test = Make<HTOChiSquare>();
        break;
    case kAOBinomial:
        test = Make<HTOBinomial>();
        break;
    case kAORuns:
        test = Make<HTORuns>();
        break;
    case kAOWilcoxonSignedRanks:
        test = Make<HTOWilcoxonSignedRanks>();
        break;
    case kAOEstimateConfidenceInterval:
        test = Make<HTOEstimateConfidenceInterval>();
        list = &fEstimates;
        break;
    case kAOKolmogorovSmirnov:
        test = Make<HTOKolmogorovSmirnov>();
        break;
    case kAOLilliefors:
        test = Make<HTOKolmogorovSmirnov>();
        list = &fLillieforsTests;
        break;
    case kARSign:
        test = Make<HTRSign>();
        break;
    case kARWilcoxonSignedRanks:
        test = Make<HTRWilcoxonSignedRanks>();
        break;
    case kARCochransQ:
        test = Make<HTRCochransQ>();
        break;
    case kARMcNemar:
        test = Make<HTRMcNemar>();
        break;
    case kARFriedmansTwoWayByRanks:
        test = Make<HTRFriedmansTwoWayByRanks>();
        break;
    case kARKendallsCoefficient:
        test = Make<HTRKendallsCoefficient>();
        break;
    case kARMarginalHomogeneity:
        test = Make<HTRMarginalHomogeneity>();
        break;
    case kARHodgesLehmannEstimatePairs:
        test = Make<HTRHodgesLehmannEstimatePairs>();
        list = &fEstimates;
        break;
    case kAIHodgesLehmannEstimateGroups:
        test = Make<HTIHodgesLehmannEstimateGroups>();
        list = &fEstimates;
        break;
    case kAIMoses:
        test = Make<HTIMoses>();
        break;
    case kAIMannWhitneyU:
        test = Make<HTIMannWhitneyU>();
        break;
    case kAIWaldWolfowitzRuns:
        test = Make<HTIWaldWolfowitzRuns>();
        break;
    case kAIKolmogorovSmirnov:
        test = Make<HTIKolmogorovSmirnov>();
        break;
    case kAIKruskalWallis:
        test = Make<HTIKruskalWallis>();
        break;
    case kAIJonckheereTerpstra:
        test = Make<HTIJonckheereTerpstra>();
        break;
    case kAIMedian:
        test = Make<HTIMedian>();
        break;
    default:
        return nullptr; // no record type for this value
    }
    test->fClassification = classification;
    test->fAlgorithm = algorithm;
    test->fDecision = decision;
    list->push_back(std::move(test));
    return list->back().get();
}

Stats::FieldInfoRecord* Stats::AppendFieldInfo() {
    fFieldInfos.push_back(std::make_unique<FieldInfoRecord>());
    return fFieldInfos.back().get();
}

Stats::BaseHypothesisTest* Stats::GetHypothesisTest(std::size_t i) const {
    return At(fHypothesisTests, i);
}
Stats::BaseHypothesisTest* Stats::GetEstimate(std::size_t i) const {
    return At(fEstimates, i);
}
Stats::BaseHypothesisTest* Stats::GetLillieforsTest(std::size_t i) const {
    return At(fLillieforsTests, i);
}
Stats::FieldInfoRecord* Stats::GetFieldInfo(std::size_t i) const {
    return At(fFieldInfos, i);
}
Stats::FieldInfoRecord* Stats::GetFieldInfo(int i) const {
    return i < 0 ? nullptr : At(fFieldInfos, static_cast<std::size_t>(i));
}

const Stats::FieldValueEntry* Stats::GetFieldValue(int i, int j) const {
    const FieldInfoRecord* record = GetFieldInfo(i);
    if (!record || j < 0 || static_cast<std::size_t>(j) >= record->fValues.size()) {
        return nullptr;
    }
    return &record->fValues[static_cast<std::size_t>(j)];
}

bool Stats::GetStatisticValue(const BaseHypothesisTest* test, std::string_view groupName,
                              std::string_view valueName, double& value) {
    if (!test) {
        return false;
    }
    for (const StatisticsGroup& group : test->fStatistics) {
        if (group.fName != groupName) {
            continue;
        }
        if (valueName.empty()) {
            if (!group.fValues.empty()) {
                value = group.fValues.front().fValue;
            }
            return true;
        }
        for (const StatisticsValue& row : group.fValues) {
            if (row.fName == valueName) {
                value = row.fValue;
                return true;
            }
        }
        return false;
    }
    return false;
}

bool Stats::IsBlockingCode(std::int32_t code) {
    if (code == 220013) {
        return false;
    }
    // 222328 to 222334 against the mask 0b1111011: all but 222330 pass.
    if (code >= 222328 && code <= 222334) {
        return ((0b1111011 >> (code - 222328)) & 1) == 0;
    }
    return true;
}

bool Stats::IsPairCodeFirstGroup(std::int32_t code) {
    return code == 222328 || code == 222329 || code == 222333;
}

bool Stats::IsPairCodeSecondGroup(std::int32_t code) {
    return code == 222331 || code == 222332 || code == 222334 || code == 220013;
}

bool Stats::IsEstimation(Algorithm algorithm) {
    return algorithm == kAOEstimateConfidenceInterval ||
           algorithm == kARHodgesLehmannEstimatePairs ||
           algorithm == kAIHodgesLehmannEstimateGroups;
}

bool Stats::IsEstimation(const BaseHypothesisTest* test) {
    return test && IsEstimation(test->fAlgorithm);
}

const Stats::ConditionMessage* Stats::FirstBlockingMessage(const BaseHypothesisTest* test) {
    if (!test || IsEstimation(test)) {
        return nullptr;
    }
    for (const ConditionMessage& message : test->fMessages) {
        if (message.fType == kMError && IsBlockingCode(message.fCode)) {
            return &message;
        }
    }
    return nullptr;
}

Stats::Classification Stats::ClassificationOfKey(std::string_view key) {
    if (key == "One_Sample") {
        return kCOneSample;
    }
    if (key == "Related_Samples") {
        return kCRelatedSamples;
    }
    if (key == "Independent_Samples") {
        return kCIndependentSamples;
    }
    return kCUnknown;
}

Stats::Algorithm Stats::AlgorithmOfKey(std::string_view key) {
    for (std::size_t i = 1; i < kCatalogue.size(); ++i) {
        if (kCatalogue[i].fKey == key) {
            return static_cast<Algorithm>(i);
        }
    }
    return kAUnknown;
}

Stats::Decision Stats::DecisionOfWord(std::string_view word) {
    if (word == "reject") {
        return kDReject;
    }
    if (word == "retain") {
        return kDRetain;
    }
    return kDUnknown;
}

Stats::MessageType Stats::MessageTypeOfWord(std::string_view word) {
    if (word == "error") {
        return kMError;
    }
    if (word == "warning") {
        return kMWarning;
    }
    return kMHelpMessage;
}

std::string Stats::AlgorithmTitle(std::int32_t algorithm) {
    if (algorithm < 1 || algorithm >= static_cast<std::int32_t>(kCatalogue.size())) {
        return "Unknown";
    }
    return std::string(kCatalogue[static_cast<std::size_t>(algorithm)].fTitle);
}

std::string_view Stats::AlgorithmKey(std::int32_t algorithm) {
    if (algorithm < 1 || algorithm >= static_cast<std::int32_t>(kCatalogue.size())) {
        return {};
    }
    return kCatalogue[static_cast<std::size_t>(algorithm)].fKey;
}
