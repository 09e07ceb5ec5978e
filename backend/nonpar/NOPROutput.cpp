// The pivot-table output of one split: the summary tables, the per-test
// blocks, the comparison tables and the calls into the chart dispatchers.
#include "backend/nonpar/NOPROutput.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <map>
#include <string_view>
#include <utility>

#include "backend/nonpar/FieldInformation.h"
#include "backend/nonpar/IndependentSamples.h"
#include "backend/nonpar/NOPRPairwiseChart.h"
#include "backend/nonpar/OneSample.h"
#include "backend/nonpar/RelatedSamples.h"
#include "host/cf/CFAssert.h"
#include "host/cf/CFMetaData.h"
#include "host/cf/CFProcCustom.h"
#include "host/cf/CFSysmis.h"
#include "host/fac/FacSTDictionary.h"
#include "host/vexa/VEXA_DataSource.h"
#include "host/xml/XMLText.h"

#define CF_ASSERT_SOURCE "backend/nonpar/NOPROutput"

using Stats = NOPROutputStats;
using Test = NOPROutputStats::BaseHypothesisTest;

namespace {
constexpr std::string_view kNormalKS = "NormalDistribution_O_KolmogorovSmirnov_3";
constexpr std::string_view kUniformKS = "UniformDistribution_O_KolmogorovSmirnov_3";
constexpr std::string_view kPoissonKS = "PoissonDistribution_O_KolmogorovSmirnov_2";
constexpr std::string_view kExponentialKS = "ExponentialDistribution_O_KolmogorovSmirnov_2";
constexpr const char* kLillSamplesSeed = "Lill ^1 samples ^ 2 seed ...";
constexpr const char* kIncorrectIndex = "Incorrect Parameter Index";
constexpr const char* kUnknownVariable = "Unknown Variable";

constexpr auto kRows = BpDimension::kRows;
constexpr auto kColumns = BpDimension::kColumns;
constexpr auto kSortNone = BpGroup::kNone;

BpString Tr(std::string text) {
    return BpString(std::move(text), true);
}
BpString Raw(std::string text) {
    return BpString(std::move(text), false);
}

std::string IntText(long long value) {
    char buffer[24];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, ec == std::errc() ? end : buffer);
}

// The parameter at a position of a condition, or null.
const Stats::ConditionParameter* ParameterAt(const NOPROutput::Condition& condition, int i) {
    if (i < 0 || static_cast<std::size_t>(i) >= condition.size()) {
        return nullptr;
    }
    return &condition[static_cast<std::size_t>(i)];
}

int CategoryCode(double value) {
    return CFIsSysmis(value) ? std::numeric_limits<int>::min() : TruncateToInt(value);
}

bool IsOneSampleKS(const Test* test) {
    return test->fAlgorithm == Stats::kAOKolmogorovSmirnov;
}

// The record of a test that carries a multiple comparison, or null.
const Stats::MultipleComparison* ComparisonOf(const Test* test) {
    if (auto* cochran = dynamic_cast<const Stats::HTRCochransQ*>(test)) {
        return &cochran->fComparison;
    }
    if (auto* ranks = dynamic_cast<const Stats::HTRRanks*>(test)) {
        return &ranks->fComparison;
    }
    if (auto* groups = dynamic_cast<const Stats::HTIBoxPlotComparison*>(test)) {
        return &groups->fComparison;
    }
    return nullptr;
}

bool HasComparisonCode(int code) {
    return code == Stats::kARCochransQ || code == Stats::kARFriedmansTwoWayByRanks ||
           code == Stats::kARKendallsCoefficient || code == Stats::kAIKruskalWallis ||
           code == Stats::kAIJonckheereTerpstra || code == Stats::kAIMedian;
}

bool IsIndependentComparison(int code) {
    return code == Stats::kAIKruskalWallis || code == Stats::kAIJonckheereTerpstra ||
           code == Stats::kAIMedian;
}

// Whether the runs test of two samples has ties: its least and greatest
// possible numbers of runs differ, or one of them is unknown.
bool RunsHasTies(const Test* test) {
    double minimum = 0.0;
    double maximum = 0.0;
    const bool hasMin = Stats::GetStatisticValue(test, "TestStatistic", "MinimumPossible", minimum);
    const bool hasMax = Stats::GetStatisticValue(test, "TestStatistic", "MaximumPossible", maximum);
    return !(hasMin && hasMax && minimum == maximum);
}

// The first value of the group "TotalN" is below 5 (a missing total counts as 5 or more).
bool TotalBelowFive(const Test* test) {
    double total = std::numeric_limits<double>::quiet_NaN();
    return Stats::GetStatisticValue(test, "TotalN", "", total) && total < 5.0;
}

// Messages of a multiple comparison that belong to one pair, by the pair key
// "first;second" in either order.
class PairMessages {
public:
    explicit PairMessages(const Test* test) {
        for (const Stats::ConditionMessage& message : test->fMessages) {
            if (!Stats::IsPairCode(message.fCode)) {
                continue;
            }
            const std::string& group = message.fGroup;
            const std::size_t split = group.find(';');
            if (split == std::string::npos) {
                continue;
            }
            int first = 0;
            int second = 0;
            const char* begin = group.data();
            const char* end = begin + group.size();
            auto r1 = std::from_chars(begin, begin + split, first);
            auto r2 = std::from_chars(begin + split + 1, end, second);
            if (r1.ec != std::errc() || r1.ptr != begin + split || r2.ec != std::errc() ||
                r2.ptr != end || group != IntText(first) + ";" + IntText(second)) {
                continue;
            }
            fByPair[std::minmax(first, second)].push_back(&message);
        }
    }

    void Attach(const NOPROutput& output, BpCategory& category, int first, int second) const {
        auto it = fByPair.find(std::minmax(first, second));
        if (it == fByPair.end()) {
            return;
        }
        for (const Stats::ConditionMessage* message : it->second) {
            if (message->fGroup == IntText(first) + ";" + IntText(second) ||
                message->fGroup == IntText(second) + ";" + IntText(first)) {
                category.CellNote(output.MessageNote(*message));
            }
        }
    }

private:
    std::map<std::pair<int, int>, std::vector<const Stats::ConditionMessage*>> fByPair;
};

// The rank data of a multiple comparison: the value of each sample index.
class SampleValues {
public:
    // False when the two rows differ in length (or are not two rows).
    bool Build(const NumericTableData& rankData) {
        if (rankData.fRows.size() != 2 || rankData.fRows[0].size() != rankData.fRows[1].size()) {
            return false;
        }
        const std::vector<double>& samples = rankData.fRows[0];
        const std::vector<double>& values = rankData.fRows[1];
        fValues.clear();
        fValues.reserve(samples.size());
        for (std::size_t k = 0; k < samples.size(); ++k) {
            const int sample = TruncateToInt(samples[k]);
            if (sample >= 0) {
                fValues.emplace_back(sample, values[k]);
            }
        }
        // A later position of the same sample replaces an earlier one.
        std::stable_sort(fValues.begin(), fValues.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        std::vector<std::pair<int, double>> unique;
        unique.reserve(fValues.size());
        for (const auto& entry : fValues) {
            if (!unique.empty() && unique.back().first == entry.first) {
                unique.back() = entry;
            } else {
                unique.push_back(entry);
            }
        }
        fValues = std::move(unique);
        fCount = fValues.empty() ? 0 : static_cast<long long>(fValues.back().first) + 1;
        return true;
    }

    // The number of sample values: one more than the greatest sample index.
    long long Count() const { return fCount; }
    bool Contains(int sample) const { return sample >= 0 && sample < fCount; }
    // The value of a sample; 0 for an index without a value of its own.
    double Value(int sample) const {
        auto it = std::lower_bound(fValues.begin(), fValues.end(), sample,
                                   [](const auto& entry, int s) { return entry.first < s; });
        return it != fValues.end() && it->first == sample ? it->second : 0.0;
    }

private:
    std::vector<std::pair<int, double>> fValues;
    long long fCount = 0;
};

// The comparison table has seven columns and every row holds them.
bool ContentHasSevenColumns(const NumericTableData& content) {
    if (content.fColumnNames.size() != 7) {
        return false;
    }
    return std::all_of(content.fRows.begin(), content.fRows.end(),
                       [](const std::vector<double>& row) { return row.size() >= 7; });
}

// How the null-hypothesis writer fills one condition key.
enum class PartKind {
    kVars,       // variables of parameter i
    kVarsSub,    // the same, as a sublist
    kVals,       // values of parameter i, in the first field's format
    kNums,       // values of parameter i as numbers
    kCats,       // categories of field i, codes j
    kCatsSub,    // the same, as a sublist
    kCatsNot,    // categories with the values not in the categories
    kCatsSubNot, // the same, as a sublist
    kStdDev,     // the standard deviation of the normal distribution
};

struct KeyPart {
    PartKind fKind;
    int fI;
    int fJ;
};

struct ConditionKeyEntry {
    int fCode;
    std::string_view fKey;
    std::size_t fParameters;
    std::array<KeyPart, 5> fParts;
    int fPartCount;
};

constexpr KeyPart V(int i) {
    return {PartKind::kVars, i, 0};
}
constexpr KeyPart VS(int i) {
    return {PartKind::kVarsSub, i, 0};
}
constexpr KeyPart Vals(int i) {
    return {PartKind::kVals, i, 0};
}
constexpr KeyPart Nums(int i) {
    return {PartKind::kNums, i, 0};
}
constexpr KeyPart C(int i, int j) {
    return {PartKind::kCats, i, j};
}
constexpr KeyPart CS(int i, int j) {
    return {PartKind::kCatsSub, i, j};
}
constexpr KeyPart CN(int i, int j) {
    return {PartKind::kCatsNot, i, j};
}
constexpr KeyPart CSN(int i, int j) {
    return {PartKind::kCatsSubNot, i, j};
}
constexpr KeyPart SD() {
    return {PartKind::kStdDev, 2, 0};
}
constexpr KeyPart None() {
    return {PartKind::kVars, 0, 0};
}

constexpr ConditionKeyEntry Key1(int code, std::string_view key, KeyPart a) {
    return {code, key, 1, {a, None(), None(), None(), None()}, 1};
}
constexpr ConditionKeyEntry Key2(int code, std::string_view key, KeyPart a, KeyPart b) {
    return {code, key, 2, {a, b, None(), None(), None()}, 2};
}
constexpr ConditionKeyEntry Key3(int code, std::string_view key, KeyPart a, KeyPart b, KeyPart c) {
    return {code, key, 3, {a, b, c, None(), None()}, 3};
}
constexpr ConditionKeyEntry Key4(int code, std::string_view key, KeyPart a, KeyPart b, KeyPart c,
                                 KeyPart d) {
    return {code, key, 4, {a, b, c, d, None()}, 4};
}
constexpr ConditionKeyEntry Key5(int code, std::string_view key, KeyPart a, KeyPart b, KeyPart c,
                                 KeyPart d, KeyPart e) {
    return {code, key, 5, {a, b, c, d, e}, 5};
}

constexpr std::array kConditionKeys = {
    Key1(1, "DefaultEqualProbabilities_O_ChiSquare_1", V(0)),
    Key1(1, "UserSpecifiesProbabilities_O_ChiSquare_1", V(0)),
    Key4(2, "ACutPointIsSpecified_O_Binomial_4", V(0), Vals(1), Nums(2), Nums(3)),
    Key5(2, "ABinaryTestVariableIsSpecified_O_Binomial_5", V(0), C(0, 1), C(0, 2), Nums(3),
         Nums(4)),
    Key5(2, "CategoryListsAreSpecified_O_Binomial_5", V(0), CSN(0, 1), CSN(0, 2), Nums(3), Nums(4)),
    Key3(3, "ABinaryTestVariableIsSpecified_O_Runs_3", V(0), C(0, 1), C(0, 2)),
    Key3(3, "CategoryListsAreSpecified_O_Runs_3", V(0), CS(0, 1), CS(0, 2)),
    Key2(3, "ACutPointIsSpecified_O_Runs_2", V(0), Vals(1)),
    Key2(4, "O_WilcoxonSignedRanks_2", V(0), Vals(1)),
    Key2(5, "ACutPointIsSpecified_O_Binomial_2", V(0), Nums(1)),
    Key2(5, "ABinaryTestVariableIsSpecified_O_Binomial_2", V(0), CN(0, 1)),
    Key2(5, "CategoryListsAreSpecified_O_Binomial_2", V(0), CSN(0, 1)),
    Key3(6, kUniformKS, V(0), Vals(1), Vals(2)),
    Key3(6, kNormalKS, V(0), Vals(1), SD()),
    Key2(6, kPoissonKS, V(0), Vals(1)),
    Key2(6, kExponentialKS, V(0), Vals(1)),
    Key2(15, "R_Sign_2", V(0), V(1)),
    Key2(16, "R_WilcoxonSignedRanks_2", V(0), V(1)),
    Key1(17, "DefaultAllDistinctValuesUsed_R_CochransQ_1", VS(0)),
    Key1(17, "CategoryListsAreSpecified_R_CochransQ_1", VS(0)),
    Key2(18, "CategoryListsAreSpecified_R_McNemar_2", V(0), V(1)),
    Key2(18, "AllDistinctValuesUsed_R_McNemar_2", V(0), V(1)),
    Key1(19, "R_FriedmansTwoWayByRanks_1", VS(0)),
    Key1(20, "R_KendallsCoefficient_1", VS(0)),
    Key2(21, "AllDistinctValuesUsed_R_MarginalHomogeneity_2", V(0), V(1)),
    Key2(22, "R_HodgesLehman_2", V(0), V(1)),
    Key2(23, "AllDistinctValuesUsed_I_HodgesLehman_2", V(0), V(1)),
    Key2(23, "CategoryListsAreSpecified_I_HodgesLehman_2", V(0), V(1)),
    Key2(24, "DefaultAllDistinctValuesUsed_I_Moses_2", V(0), V(1)),
    Key2(24, "CategoryListsAreSpecified_I_Moses_2", V(0), V(1)),
    Key2(25, "DefaultAllDistinctValuesUsed_I_MannWhitneyU_2", V(0), V(1)),
    Key2(25, "CategoryListsAreSpecified_I_MannWhitneyU_2", V(0), V(1)),
    Key2(26, "DefaultAllDistinctValuesUsed_I_WaldWolfowitzRuns_2", V(0), V(1)),
    Key2(26, "CategoryListsAreSpecified_I_WaldWolfowitzRuns_2", V(0), V(1)),
    Key2(27, "DefaultAllDistinctValuesUsed_I_KolmogorovSmirnov_2", V(0), V(1)),
    Key2(27, "CategoryListsAreSpecified_I_KolmogorovSmirnov_2", V(0), V(1)),
    Key2(28, "DefaultAllDistinctValuesUsed_I_KruskalWallis_2", V(0), V(1)),
    Key2(28, "CategoryListsAreSpecified_I_KruskalWallis_2", V(0), V(1)),
    Key2(29, "DefaultAllDistinctValuesUsed_I_JonckheereTerpstra_2", V(0), V(1)),
    Key2(29, "CategoryListsAreSpecified_I_JonckheereTerpstra_2", V(0), V(1)),
    Key2(30, "DefaultAllDistinctValuesUsed_I_Median_2", V(0), V(1)),
    Key2(30, "CategoryListsAreSpecified_I_Median_2", V(0), V(1)),
};

const ConditionKeyEntry* FindConditionKey(int code, std::string_view key) {
    for (const ConditionKeyEntry& entry : kConditionKeys) {
        if (entry.fCode == code && entry.fKey == key) {
            return &entry;
        }
    }
    return nullptr;
}

void AssertParameterCount(const Test& test, std::size_t expected) {
    const NOPROutput::Condition& fParameters = test.fConditionParameters;
    switch (expected) {
    case 1:
        CF_ASSERT_TEXT(fParameters.size() == 1, "data.fParameters.size() == 1");
        break;
    case 2:
        CF_ASSERT_TEXT(fParameters.size() == 2, "data.fParameters.size() == 2");
        break;
    case 3:
        CF_ASSERT_TEXT(fParameters.size() == 3, "data.fParameters.size() == 3");
        break;
    case 4:
        CF_ASSERT_TEXT(fParameters.size() == 4, "data.fParameters.size() == 4");
        break;
    default:
        CF_ASSERT_TEXT(fParameters.size() == 5, "data.fParameters.size() == 5");
        break;
    }
}
} // namespace

NOPROutput::NOPROutput(BpProcedure* procedure, BpHeading* heading, VEXA_DataSource* dataSource,
                       NOPROutputStats* stats)
    : fProcedure(procedure), fDataSource(dataSource), fStats(stats), fMissingValue(kCFSysmis),
      fMCSamples(stats ? stats->fMCSamples : 10000), fSeed(stats ? stats->fSeed : 2000000),
      fNormalFromSample(stats && stats->fNormalFromSample),
      fUniformFromSample(stats && stats->fUniformFromSample),
      fExponentialFromSample(stats && stats->fExponentialFromSample),
      fMakeViews(ViewsFromEnvironment()) {
    if (heading) {
        fHeading = *heading;
    } else if (procedure) {
        fHeading = *procedure;
    }
}

bool NOPROutput::ViewsFromEnvironment() {
    static const bool enabled = [] {
        const char* value = std::getenv("DEBUG_MODEL_VIEWER");
        return !(value && std::string_view(value) == "2");
    }();
    return enabled;
}

// ---------------------------------------------------------------------------
// The driver

void NOPROutput::MakeOutput() {
    if (!fStats || !fProcedure || !fHeading) {
        return;
    }
    FacSTDictionary dictionary(PathFactory::getPathInstance(PathFactory::kStrings));
    dictionary.SetProcedure("Nonparametric Tests");
    fSuffix.clear();
    fAppendSuffix = false;
    if (fMakeViews) {
        fStats->GetSplitViewTitle(fSuffix, fAppendSuffix);
    }

    MakeHypothesisSummary();
    MakeConfidenceIntervalSummary();

    for (const auto& entry : fStats->GetHypothesisTests()) {
        Test* test = entry.get();
        if (!test) {
            continue;
        }
        BpHeading testHeading = fHeading.Heading(Tr(TestTitle(test)));
        if (Stats::FirstBlockingMessage(test)) {
            testHeading.Remove();
            continue;
        }
        BpHeading block = testHeading;
        if (std::unique_ptr<BpCellText> fields = FieldHeadingText(test)) {
            block = testHeading.Heading(*fields);
        }

        const Lilliefors* lill = nullptr;
        const std::vector<int> lillIndices = FindLillieforsTests(test);
        if (!lillIndices.empty()) {
            const int lillVarInd = lillIndices.front();
            CF_ASSERT(lillVarInd >= 0);
            lill = dynamic_cast<const Lilliefors*>(
                fStats->GetLillieforsTest(static_cast<std::size_t>(lillVarInd)));
        }
        MakeTestTable(block, test, lill);

        if (fMakeViews) {
            const std::vector<int> fields = GetTestFields(test);
            const int fieldIndex = fields.empty() ? 0 : fields.front();
            OneSample oneSample(&dictionary, fStats);
            IndependentSamples independentSamples(&dictionary, fStats);
            RelatedSamples relatedSamples(&dictionary, fStats);
            oneSample.MakeView(test, fieldIndex, fSuffix, fAppendSuffix);
            independentSamples.MakeView(test, fSuffix, fAppendSuffix);
            relatedSamples.MakeView(test, fSuffix, fAppendSuffix);
        }
        MakeComparisons(block, test, &dictionary);
    }

    if (fMakeViews) {
        // Field charts belong to the split, not to the last test's heading.
        fProcedure->SetCurrentHeading(fHeading);
        const auto& fieldInfos = fStats->GetFieldInfos();
        for (std::size_t i = 0; i < fieldInfos.size(); ++i) {
            for (const bool categorical : {true, false}) {
                FieldInformation view(&dictionary, fStats, categorical);
                view.SetFieldIndex(static_cast<int>(i));
                view.MakeChart(fSuffix, true);
            }
        }
    }
}

void NOPROutput::MakeComparisons(BpHeading& heading, const Test* test,
                                 FacSTDictionary* dictionary) {
    if (!test || !HasComparisonCode(test->fAlgorithm)) {
        return;
    }
    const Stats::MultipleComparison* comparison = ComparisonOf(test);
    if (!comparison) {
        return;
    }
    if (comparison->fKind == Stats::MultipleComparison::kPairwise) {
        MakePairwiseTable(heading, test, *comparison, dictionary);
    } else if (comparison->fKind == Stats::MultipleComparison::kStepwise) {
        MakeHomogeneousSubsetsTable(heading, test, *comparison);
    }
}

std::string NOPROutput::TestTitle(const Test* test) {
    if (!test) {
        return Stats::AlgorithmTitle(Stats::kAUnknown);
    }
    if (IsOneSampleKS(test)) {
        const std::string& key = test->fConditionKey;
        if (key == kUniformKS) {
            return "One-Sample Kolmogorov-Smirnov Uniform Test";
        }
        if (key == kNormalKS) {
            return "One-Sample Kolmogorov-Smirnov Normal Test";
        }
        if (key == kPoissonKS) {
            return "One-Sample Kolmogorov-Smirnov Poisson Test";
        }
        if (key == kExponentialKS) {
            return "One-Sample Kolmogorov-Smirnov Exponential Test";
        }
    }
    return Stats::AlgorithmTitle(test->fAlgorithm);
}

void NOPROutput::AddSplitDimensions(BpPivotTable& table) const {
    const CFSplitDocument* split = fStats ? fStats->GetSplit() : nullptr;
    const VEXA_DataSource* dataSource = fStats ? fStats->GetDataSource() : nullptr;
    if (!dataSource || !split || split->fHeading || split->fSplitVariables.empty()) {
        return;
    }
    for (std::size_t k = 0; k < split->fSplitVariables.size(); ++k) {
        const VEXA_Variable* variable = dataSource->GetVariable(split->fSplitVariables[k]);
        if (!variable) {
            continue;
        }
        const double value = k < split->fSplitValues.size() ? split->fSplitValues[k] : kCFSysmis;
        BpDimension dimension = table.Dimension(BpVariable(variable, 2), BpGroup::kAscending);
        dimension.Position(kRows, 1, false, false);
        dimension.Category(BpDataValue(variable, value, 2));
    }
}

// ---------------------------------------------------------------------------
// Hypothesis Test Summary

int NOPROutput::ComputeFootnoteMode() const {
    int lillCount = 0;
    int correctedCount = 0;
    int otherCount = 0;
    for (const auto& entry : fStats->GetHypothesisTests()) {
        const Test* test = entry.get();
        if (!FindLillieforsTests(test).empty()) {
            ++lillCount;
            continue;
        }
        auto* ks = dynamic_cast<const Lilliefors*>(test);
        if (ks && IsOneSampleKS(test) && test->fConditionKey == kNormalKS && ks->fIsUseSample) {
            ++correctedCount;
        } else {
            ++otherCount;
        }
    }
    if (lillCount > 0 && correctedCount == 0 && otherCount == 0) {
        return kFMMonteCarlo;
    }
    if (lillCount == 0 && correctedCount > 0 && otherCount == 0) {
        return kFMLillieforsCorrected;
    }
    if (lillCount == 0 && correctedCount == 0) {
        return kFMAsymptotic;
    }
    return kFMMixed;
}

void NOPROutput::MakeHypothesisSummary() {
    if (!fStats || fStats->GetHypothesisTests().empty()) {
        return;
    }
    BpPivotTable table =
        fHeading.PivotTable(Tr("Hypothesis Test Summary"), Raw("Hypothesis Test Summary"), false);
    table.MinDataColumnWidth(100);
    table.MaxDataColumnWidth(200);
    const int mode = ComputeFootnoteMode();
    AddSplitDimensions(table);

    BpDimension items = table.Dimension(Raw("Item"), kSortNone);
    items.Position(kRows, 1, true, false);
    BpDimension statistics = table.Dimension(Tr("Statistics"), kSortNone);
    statistics.Position(kColumns, 1, true, false);
    // The columns in their order, whatever the first row writes.
    for (const char* column : {"Null Hypothesis", "Test", "Sig.", "Decision"}) {
        statistics.Category(Tr(column));
    }

    const auto& tests = fStats->GetHypothesisTests();
    for (std::size_t i = 0; i < tests.size(); ++i) {
        const Test* test = tests[i].get();
        items.Category(BpNumber(static_cast<double>(i + 1), BpProcedure::Count()));

        const Lilliefors* lill = nullptr;
        const std::vector<int> lillIndices = FindLillieforsTests(test);
        if (!lillIndices.empty()) {
            const int lillVarInd = lillIndices.front();
            CF_ASSERT(lillVarInd >= 0);
            lill = dynamic_cast<const Lilliefors*>(
                fStats->GetLillieforsTest(static_cast<std::size_t>(lillVarInd)));
        }

        BpCategory hypothesis = statistics.Category(Tr("Null Hypothesis"));
        WriteNullHypothesis(hypothesis, test);
        if (test) {
            statistics.Category(Tr("Test")).Cell(Tr(Stats::AlgorithmTitle(test->fAlgorithm)));
        }
        BpCategory significance = statistics.Category(Tr("Sig."));
        WriteSignificance(significance, test, lill, mode);

        const int decision = lill ? lill->fDecision : (test ? test->fDecision : -1);
        const char* decisionText = nullptr;
        switch (decision) {
        case Stats::kDUnknown:
            decisionText = "Unable to compute.";
            break;
        case Stats::kDReject:
            decisionText = "Reject the null hypothesis.";
            break;
        case Stats::kDRetain:
            decisionText = "Retain the null hypothesis.";
            break;
        default:
            break;
        }
        if (decisionText) {
            statistics.Category(Tr("Decision")).Cell(Tr(decisionText));
        }
    }
}

// ---------------------------------------------------------------------------
// Null hypothesis, significance and their footnotes

const Stats::FieldInfoRecord* NOPROutput::FieldRecord(int fieldIndex) const {
    return fStats ? fStats->GetFieldInfo(fieldIndex) : nullptr;
}

const VEXA_Variable* NOPROutput::FieldVariable(int fieldIndex) const {
    const Stats::FieldInfoRecord* record = FieldRecord(fieldIndex);
    return record ? record->fVariable : nullptr;
}

const VEXA_Variable* NOPROutput::FirstFieldVariable(const Test* test) const {
    if (!test || test->fClassification != Stats::kCOneSample) {
        return nullptr;
    }
    const std::vector<int> fields = GetTestFields(test);
    return fields.empty() ? nullptr : FieldVariable(fields.front());
}

void NOPROutput::WriteNullHypothesis(BpCategory& category, const Test* test) const {
    if (!test) {
        category.Cell(Tr(" "));
        return;
    }
    const ConditionKeyEntry* entry = FindConditionKey(test->fAlgorithm, test->fConditionKey);
    if (!entry) {
        category.Cell(Raw("Unknown Condition Key: " + test->fConditionKey));
        return;
    }
    AssertParameterCount(*test, entry->fParameters);

    BpComposite text(test->fConditionKey, true);
    const VEXA_Variable* firstVariable = FirstFieldVariable(test);
    const Condition& condition = test->fConditionParameters;
    std::size_t cursor = 0;
    for (int p = 0; p < entry->fPartCount; ++p) {
        const KeyPart& part = entry->fParts[static_cast<std::size_t>(p)];
        switch (part.fKind) {
        case PartKind::kVars:
            AddVariables(text, condition, part.fI, false);
            break;
        case PartKind::kVarsSub:
            AddVariables(text, condition, part.fI, true);
            break;
        case PartKind::kVals:
            AddValues(text, condition, part.fI, firstVariable, false);
            break;
        case PartKind::kNums:
            AddValues(text, condition, part.fI, nullptr, false);
            break;
        case PartKind::kCats:
            AddCategories(text, condition, part.fI, part.fJ, {}, cursor, false);
            break;
        case PartKind::kCatsSub:
            AddCategories(text, condition, part.fI, part.fJ, {}, cursor, true);
            break;
        case PartKind::kCatsNot:
            AddCategories(text, condition, part.fI, part.fJ, test->fValsNotInCategories, cursor,
                          false);
            break;
        case PartKind::kCatsSubNot:
            AddCategories(text, condition, part.fI, part.fJ, test->fValsNotInCategories, cursor,
                          true);
            break;
        case PartKind::kStdDev:
            AddStandardDeviation(text, test, firstVariable);
            break;
        }
    }
    text.Finish();
    category.Cell(text);
}

void NOPROutput::AddStandardDeviation(BpComposite& text, const Test* test,
                                      const VEXA_Variable* variable) const {
    const Condition& condition = test->fConditionParameters;
    const Stats::ConditionParameter* parameter = ParameterAt(condition, 2);
    if (!fProcedure || !fDataSource || !variable || !parameter || parameter->fValues.empty()) {
        AddValues(text, condition, 2, nullptr, false);
        return;
    }
    double deviation = parameter->fValues.front();
    if (VEXA_Format::IsDateTime(variable->GetFormat().fType) && !CFIsSysmis(deviation)) {
        deviation *= 86400.0; // days to the host's seconds
    }
    const int index = fDataSource->FindVarIndex(variable->GetName(), 0);
    text.Add(BpNumber(deviation, fProcedure->StdDev(index)));
}

void NOPROutput::AddVariables(BpComposite& text, const Condition& condition, int i,
                              bool sublist) const {
    const Stats::ConditionParameter* parameter = ParameterAt(condition, i);
    if (!parameter) {
        text.Add(Raw(kIncorrectIndex));
        return;
    }
    if (sublist) {
        text.Sublist();
    }
    if (parameter->fValues.empty()) {
        text.Add(Raw(" "));
    }
    for (const double value : parameter->fValues) {
        const int curIndex = TruncateToInt(value);
        const Stats::FieldInfoRecord* data = FieldRecord(curIndex);
        if (!data || !data->fVariable) {
            text.Add(Raw(kUnknownVariable));
            break;
        }
        CF_ASSERT(curIndex == data->fFieldIndex);
        text.Add(BpVariable(data->fVariable, 2));
    }
    if (sublist) {
        text.EndSublist();
    }
}

void NOPROutput::AddValues(BpComposite& text, const Condition& condition, int i,
                           const VEXA_Variable* variable, bool sublist) const {
    const Stats::ConditionParameter* parameter = ParameterAt(condition, i);
    if (!parameter) {
        text.Add(Raw(kIncorrectIndex));
        return;
    }
    if (sublist) {
        text.Sublist();
    }
    if (parameter->fValues.empty()) {
        text.Add(Raw(" "));
    }
    for (const double value : parameter->fValues) {
        if (variable && variable->GetType() == 0) {
            text.Add(BpDataValue(variable,
                                 NumericFormatCFToStat(value, variable->GetFormat().fType), 0));
        } else {
            text.Add(BpNumber(value, BpProcedure::Coefficient()));
        }
    }
    if (sublist) {
        text.EndSublist();
    }
}

void NOPROutput::AddCategories(BpComposite& text, const Condition& condition, int i, int j,
                               const std::vector<std::string>& notInCategories, std::size_t& cursor,
                               bool sublist) const {
    const Stats::ConditionParameter* field = ParameterAt(condition, i);
    const Stats::ConditionParameter* codes = ParameterAt(condition, j);
    if (!field || !codes) {
        text.Add(Raw(kIncorrectIndex));
        return;
    }
    if (sublist) {
        text.Sublist();
    }
    const int fIndex = field->fValues.size() == 1 ? TruncateToInt(field->fValues.front()) : -1;
    const Stats::FieldInfoRecord* data = fIndex >= 0 ? FieldRecord(fIndex) : nullptr;
    if (!data || !data->fVariable) {
        text.Add(Raw(kUnknownVariable));
    } else {
        CF_ASSERT(fIndex == data->fFieldIndex);
        const VEXA_Variable* variable = data->fVariable;
        if (codes->fValues.empty()) {
            text.Add(Raw(" "));
        }
        for (const double value : codes->fValues) {
            const int code = CategoryCode(value);
            if (code == std::numeric_limits<int>::min()) {
                if (variable->GetType() == 0) {
                    text.Add(BpDataValue(variable, fMissingValue, 2));
                } else {
                    text.Add(BpDataValue(variable, std::string(" "), 2));
                }
            } else if (code >= 0 && static_cast<std::size_t>(code) < data->fValues.size()) {
                const CFStatVariableValue& category =
                    data->fValues[static_cast<std::size_t>(code)].fValue;
                if (category.IsString()) {
                    text.Add(BpDataValue(variable, category.GetString(), 2));
                } else {
                    text.Add(BpDataValue(variable, category.GetNumber(), 2));
                }
            } else if (cursor < notInCategories.size()) {
                text.Add(Raw(notInCategories[cursor++]));
            } else {
                text.Add(Raw(kUnknownVariable));
                break;
            }
        }
    }
    if (sublist) {
        text.EndSublist();
    }
}

BpAnnotation NOPROutput::MessageNote(const Stats::ConditionMessage& message) const {
    const std::string code = IntText(message.fCode);
    if (message.fParameters.empty()) {
        return Tr(code).Replicate();
    }
    BpComposite text(code, true);
    for (const Stats::ConditionParameter& parameter : message.fParameters) {
        if (!parameter.fValues.empty()) {
            const double value = parameter.fValues.front();
            text.Add(BpNumber(value, BpProcedure::CountOrCoefficent(value)));
        }
    }
    text.Finish();
    return text.Replicate();
}

std::string NOPROutput::TranslateMessage(const std::string& key,
                                         const std::vector<std::string>& args) const {
    const std::string text = fProcedure ? fProcedure->Translate(key) : key;
    std::string out;
    out.reserve(text.size());
    for (std::size_t k = 0; k < text.size(); ++k) {
        const char next = k + 1 < text.size() ? text[k + 1] : '\0';
        if (text[k] == '^' && next >= '1' && next <= '9' &&
            static_cast<std::size_t>(next - '1') < args.size()) {
            out += args[static_cast<std::size_t>(next - '1')];
            ++k;
        } else {
            out += text[k];
        }
    }
    return out;
}

void NOPROutput::WriteSignificance(BpCategory& category, const Test* test, const Lilliefors* lill,
                                   int mode) const {
    const BpFormatSpec significance = BpProcedure::Significance();
    if (!test) {
        category.Cell(BpNumber(fMissingValue, significance));
        return;
    }
    // The last row whose name speaks of a significance.
    const Test* source = lill ? static_cast<const Test*>(lill) : test;
    const Stats::StatisticsValue* row = nullptr;
    const Stats::StatisticsGroup* rowGroup = nullptr;
    for (auto group = source->fStatistics.rbegin(); group != source->fStatistics.rend() && !row;
         ++group) {
        for (auto value = group->fValues.rbegin(); value != group->fValues.rend(); ++value) {
            if (value->fName.find("Sig") != std::string::npos) {
                row = &*value;
                rowGroup = &*group;
                break;
            }
        }
    }
    const std::string rowName = row ? row->fName : std::string();
    const std::string groupName = rowGroup ? rowGroup->fName : std::string();
    // A test that could not be decided shows no significance, whatever its
    // document carries.
    const int decision = lill ? lill->fDecision : test->fDecision;
    const bool computed = row && decision != Stats::kDUnknown;
    category.Cell(BpNumber(computed ? row->fValue : fMissingValue, significance));

    if (const Stats::ConditionMessage* blocking = Stats::FirstBlockingMessage(test)) {
        category.CellNote(MessageNote(*blocking));
        return;
    }
    if (const Stats::ConditionMessage* blocking = Stats::FirstBlockingMessage(lill)) {
        category.CellNote(MessageNote(*blocking));
        return;
    }

    const double sigLevel = fStats ? fStats->fSigLevel : fMissingValue;
    if (mode == kFMMonteCarlo) {
        BpComposite note("Sig ^1 Lill ^2 samples ^ 3 seed ...", true);
        note.Add(BpNumber(sigLevel, significance));
        note.Add(BpNumber(fMCSamples, BpProcedure::Count()));
        note.Add(BpNumber(fSeed, BpProcedure::Count()));
        note.Finish();
        category.Note(note.Replicate());
    } else {
        BpComposite level("The significance level is ^1.", true);
        level.Add(BpNumber(sigLevel, significance));
        level.Finish();
        category.Note(level.Replicate());
        if (mode == kFMLillieforsCorrected) {
            category.Note(Tr("HTSFootNoteFootNoteFisherLillAsymp").Replicate());
        } else if (mode == kFMAsymptotic) {
            category.Note(Tr("Asymptotic significance is displayed.").Replicate());
        }
    }

    std::vector<std::string> keys;
    if (rowName.find("ExactSig") != std::string::npos) {
        keys.emplace_back("HTSFootNoteShowExact");
    }
    switch (test->fAlgorithm) {
    case Stats::kAOKolmogorovSmirnov: {
        auto* ks = dynamic_cast<const Lilliefors*>(test);
        if (lill) {
            if (mode != kFMMonteCarlo) {
                keys.push_back(
                    TranslateMessage(kLillSamplesSeed, {IntText(fMCSamples), IntText(fSeed)}));
            }
        } else if (ks && test->fConditionKey == kNormalKS && ks->fIsUseSample) {
            if (TotalBelowFive(test)) {
                category.Cell(BpNumber(fMissingValue, significance));
                keys.emplace_back("HTSFootNoteFisherCantCompute");
            } else {
                if (mode != kFMLillieforsCorrected) {
                    keys.emplace_back("HTSFootNoteFootNoteFisherLillAsymp");
                }
                if (ks->fIsLowerBound) {
                    category.Cell(BpNumber(0.2, significance));
                    keys.emplace_back("HTSFootNoteFootNoteFisherLowerBound");
                }
            }
        } else if (mode != kFMAsymptotic) {
            keys.emplace_back("Asymptotic significance is displayed.");
        }
        break;
    }
    case Stats::kAIMedian:
        if (rowName == "FisherExactSig") {
            keys.emplace_back("HTSFootNoteFootNoteFisherExactSig");
        } else if (groupName == "YatesContinuityCorrection" &&
                   rowName.find("AsymptoticSig") != std::string::npos) {
            keys.emplace_back("HTSFootNoteYateAsymSig");
        }
        break;
    case Stats::kAIWaldWolfowitzRuns: {
        double minimum = 0.0;
        double maximum = 0.0;
        if (Stats::GetStatisticValue(test, "TestStatistic", "MinimumPossible", minimum) &&
            Stats::GetStatisticValue(test, "TestStatistic", "MaximumPossible", maximum) &&
            minimum != maximum) {
            keys.emplace_back("HTSFootNoteUsingMaxWhenTies");
        }
        break;
    }
    default:
        break;
    }
    for (std::string& key : keys) {
        category.CellNote(Tr(std::move(key)).Replicate());
    }
}

std::unique_ptr<BpCellText> NOPROutput::FieldHeadingText(const Test* test) const {
    if (!test) {
        return nullptr;
    }
    const std::vector<int> fields = GetTestFields(test);
    switch (test->fClassification) {
    case Stats::kCOneSample: {
        const VEXA_Variable* variable = fields.empty() ? nullptr : FieldVariable(fields.front());
        if (!variable) {
            return nullptr;
        }
        return std::make_unique<BpVariable>(variable, 2);
    }
    case Stats::kCRelatedSamples: {
        if (fields.size() < 2) {
            return nullptr;
        }
        auto text = std::make_unique<BpComposite>("[%1:, ^1]1", true);
        text->Sublist();
        for (const int field : fields) {
            if (const VEXA_Variable* variable = FieldVariable(field)) {
                text->Add(BpVariable(variable, 2));
            }
        }
        text->EndSublist();
        text->Finish();
        return text;
    }
    case Stats::kCIndependentSamples: {
        if (fields.size() < 2) {
            return nullptr;
        }
        const VEXA_Variable* testField = FieldVariable(fields[0]);
        const VEXA_Variable* groupField = FieldVariable(fields[1]);
        if (!testField || !groupField) {
            return nullptr;
        }
        auto text = std::make_unique<BpComposite>("^1 across ^2", true);
        text->Add(BpVariable(testField, 2));
        text->Add(BpVariable(groupField, 2));
        text->Finish();
        return text;
    }
    default:
        return nullptr;
    }
}

// ---------------------------------------------------------------------------
// Lilliefors companions, field lookup and Monte Carlo rows

std::vector<int> NOPROutput::GetTestFields(const Test* test) {
    std::vector<int> fields;
    if (!test) {
        return fields;
    }
    const Condition& condition = test->fConditionParameters;
    auto firstValue = [&](int i, int& out) {
        const Stats::ConditionParameter* parameter = ParameterAt(condition, i);
        if (!parameter || parameter->fValues.empty()) {
            return false;
        }
        out = TruncateToInt(parameter->fValues.front());
        return true;
    };
    switch (test->fClassification) {
    case Stats::kCOneSample: {
        int field = 0;
        if (firstValue(0, field)) {
            fields.push_back(field);
        }
        break;
    }
    case Stats::kCIndependentSamples: {
        int testField = 0;
        int groupField = 0;
        if (firstValue(0, testField) && firstValue(1, groupField)) {
            fields = {testField, groupField};
        }
        break;
    }
    case Stats::kCRelatedSamples:
        if (const Stats::ConditionParameter* parameter = ParameterAt(condition, 0)) {
            fields.reserve(parameter->fValues.size());
            for (const double value : parameter->fValues) {
                fields.push_back(TruncateToInt(value));
            }
        }
        break;
    default:
        break;
    }
    return fields;
}

std::vector<int> NOPROutput::FindLillieforsTests(const Test* test) const {
    std::vector<int> result;
    if (!fStats || !test || test->fAlgorithm != Stats::kAOKolmogorovSmirnov ||
        test->fClassification != Stats::kCOneSample) {
        return result;
    }
    auto* theTest = dynamic_cast<const Lilliefors*>(test);
    CF_ASSERT(theTest != 0);

    std::string_view lillKey;
    bool requested = false;
    const std::string& key = theTest->fConditionKey;
    if (key == kNormalKS) {
        lillKey = "NormalDistribution_O_Lilliefors_3";
        requested = fNormalFromSample;
    } else if (key == kUniformKS) {
        lillKey = "UniformDistribution_O_Lilliefors_3";
        requested = fUniformFromSample;
    } else if (key == kExponentialKS) {
        lillKey = "ExponentialDistribution_O_Lilliefors_2";
        requested = fExponentialFromSample;
    }
    if (lillKey.empty() || !requested) {
        return result;
    }

    const std::vector<int> fields = GetTestFields(theTest);
    if (fields.empty()) {
        return result;
    }
    const int testVarInd = fields.front();
    CF_ASSERT(testVarInd >= 0);

    const auto& lillieforsTests = fStats->GetLillieforsTests();
    for (std::size_t index = 0; index < lillieforsTests.size(); ++index) {
        const Test* hLill = lillieforsTests[index].get();
        CF_ASSERT(hLill != 0);
        CF_ASSERT(hLill->fAlgorithm == NOPROutputStats::kAOLilliefors);
        CF_ASSERT(hLill->fClassification == NOPROutputStats::kCOneSample);
        auto* theLill = dynamic_cast<const Lilliefors*>(hLill);
        CF_ASSERT(theLill != 0);
        CF_ASSERT(theLill->fIsUseSample);
        if (theLill->fConditionKey != lillKey) {
            continue;
        }
        const Condition& condition = theLill->fConditionParameters;
        if (condition.empty() || condition.front().fValues.empty()) {
            continue;
        }
        const int lillVarInd = TruncateToInt(condition.front().fValues.front());
        CF_ASSERT(lillVarInd >= 0);
        if (lillVarInd == testVarInd) {
            result.push_back(static_cast<int>(index));
        }
    }
    return result;
}

void NOPROutput::WriteMonteCarloRows(BpGroup& parent, const StatisticsRows& rows, bool monteCarlo) {
    for (const Stats::StatisticsValue& row : rows) {
        if (!monteCarlo) {
            // Counts as whole numbers, significances as such ("<0.001" near
            // zero), every other statistic to three decimals.
            const bool isCount = row.fName == "TotalN" || row.fName == "DegreeOfFreedom";
            const bool isSig = row.fName.find("Sig") != std::string::npos &&
                               row.fName.find("Sign") == std::string::npos;
            parent.Category(Tr(row.fName))
                .Cell(BpNumber(row.fValue, isCount ? BpProcedure::Count()
                                           : isSig ? BpProcedure::Significance()
                                                   : BpProcedure::Coefficient()));
            continue;
        }
        const bool isSig = row.fName == "AsymptoticSig2Tailed";
        const bool isLower = row.fName == "ConfidenceIntervalLowerBound";
        const bool isUpper = row.fName == "ConfidenceIntervalUpperBound";
        if (!isSig && !isLower && !isUpper) {
            continue;
        }
        BpGroup group = parent.Group(Tr("MonteCarloSig2Tailed"), true, kSortNone);
        fMonteCarloGroup = group;
        if (isSig) {
            group.Category(Tr("Sig.")).Cell(BpNumber(row.fValue, BpProcedure::Significance()));
            continue;
        }
        const double level = fStats ? fStats->fMCCILevel : 99.0;
        BpComposite title("^1% Confidence Interval", true);
        title.Add(
            BpNumber(level, level == 99.0 ? BpProcedure::Count() : BpProcedure::SigDigit(level)));
        title.Finish();
        BpGroup interval = group.Group(title, true, kSortNone);
        interval.Category(Tr(isLower ? "Lower Bound" : "Upper Bound"))
            .Cell(BpNumber(row.fValue, BpProcedure::Significance()));
    }
}

// ---------------------------------------------------------------------------
// Per-test statistics tables

void NOPROutput::WriteStatisticsGroups(BpDimension& dimension, const Test* test, bool monteCarlo) {
    for (const Stats::StatisticsGroup& group : test->fStatistics) {
        if (group.fName.empty()) {
            WriteMonteCarloRows(dimension, group.fValues, monteCarlo);
        } else {
            BpGroup rows = dimension.Group(Tr(group.fName), true, kSortNone);
            WriteMonteCarloRows(rows, group.fValues, monteCarlo);
        }
    }
}

void NOPROutput::MakeTestTable(BpHeading& heading, const Test* hTest, const Lilliefors* lill) {
    CF_ASSERT(hTest);
    if (!hTest) {
        return;
    }
    const std::string title = TestTitle(hTest) + " Summary";
    BpPivotTable table = heading.PivotTable(Tr(title), Raw(title), false);
    table.MinDataColumnWidth(150);
    AddSplitDimensions(table);
    BpDimension dimension = table.Dimension(Tr("Statistics"), kSortNone);
    dimension.Position(kRows, 1, true, false);

    const int code = hTest->fAlgorithm;
    const bool isRuns = code == Stats::kAIWaldWolfowitzRuns;
    const bool noTies = isRuns && !RunsHasTies(hTest);
    fMonteCarloGroup.reset();

    if (!lill) {
        for (const Stats::StatisticsGroup& group : hTest->fStatistics) {
            if (group.fName.empty()) {
                WriteMonteCarloRows(dimension, group.fValues, false);
            } else if (noTies) {
                WriteMonteCarloRows(dimension, group.fValues, false);
                break;
            } else {
                BpGroup rows = dimension.Group(Tr(group.fName), true, kSortNone);
                WriteMonteCarloRows(rows, group.fValues, false);
            }
        }
    } else {
        CF_ASSERT(!noTies);
        WriteStatisticsGroups(dimension, hTest, hTest->fConditionKey != kNormalKS);
        WriteStatisticsGroups(dimension, lill, true);
    }

    const BpFormatSpec significance = BpProcedure::Significance();
    auto attachMessageNotes = [&](BpCategory& category) {
        for (const Stats::ConditionMessage& message : hTest->fMessages) {
            if (!Stats::IsPairCode(message.fCode)) {
                category.CellNote(MessageNote(message));
            }
        }
    };

    if (isRuns) {
        const BpAnnotation runsNote = Tr("The test statistic is the number of runs.").Replicate();
        if (noTies) {
            dimension.Category(Tr("TestStatistic")).Note(runsNote);
        } else {
            for (const char* bound : {"MinimumPossible", "MaximumPossible"}) {
                BpGroup group = dimension.Group(Tr(bound), true, kSortNone);
                BpCategory statistic = group.Category(Tr("TestStatistic"));
                statistic.Note(runsNote);
                attachMessageNotes(statistic);
            }
        }
    } else if (code == Stats::kAIMoses) {
        const BpAnnotation spanNote = Tr("The test statistic is the span.").Replicate();
        for (const char* control : {"ObservedControlGroup", "TrimmedControlGroup"}) {
            double value = 0.0;
            if (Stats::GetStatisticValue(hTest, "TestStatistic", control, value)) {
                BpGroup group = dimension.Group(Tr(control), true, kSortNone);
                group.Category(Tr("TestStatistic")).Note(spanNote);
            }
        }
    } else if (code == Stats::kAOKolmogorovSmirnov) {
        auto* ks = dynamic_cast<const Lilliefors*>(hTest);
        if (!lill && ks && ks->fConditionKey == kNormalKS && ks->fIsUseSample) {
            BpCategory sig = dimension.Category(Tr("AsymptoticSig2Tailed"));
            if (TotalBelowFive(hTest)) {
                sig.Cell(BpNumber(fMissingValue, significance));
                sig.CellNote(Tr("HTSFootNoteFisherCantCompute").Replicate());
            } else {
                sig.Note(Tr("HTSFootNoteFootNoteFisherLillifors").Replicate());
                if (ks->fIsLowerBound) {
                    sig.Cell(BpNumber(0.2, significance));
                    sig.CellNote(Tr("HTSFootNoteFootNoteFisherLowerBound").Replicate());
                }
            }
        }
    }
    if (lill && fMonteCarloGroup) {
        BpComposite note(kLillSamplesSeed, true);
        note.Add(BpNumber(fMCSamples, BpProcedure::Count()));
        note.Add(BpNumber(fSeed, BpProcedure::Count()));
        note.Finish();
        fMonteCarloGroup->Note(note.Replicate());
    }

    if (!(isRuns && !noTies)) {
        const bool hasNotes =
            std::any_of(hTest->fMessages.begin(), hTest->fMessages.end(),
                        [](const auto& message) { return !Stats::IsPairCode(message.fCode); });
        if (hasNotes) {
            BpCategory statistic = dimension.Category(Tr("TestStatistic"));
            attachMessageNotes(statistic);
        }
    }
    fMonteCarloGroup.reset();
}

// ---------------------------------------------------------------------------
// Confidence Interval Summary

void NOPROutput::MakeConfidenceIntervalSummary() {
    if (!fStats || fStats->GetEstimates().empty()) {
        return;
    }
    BpPivotTable table = fHeading.PivotTable(Tr("Confidence Interval Summary"),
                                             Raw("Confidence Interval Summary"), false);
    table.MinDataColumnWidth(100);
    table.MaxDataColumnWidth(200);
    AddSplitDimensions(table);
    BpDimension items = table.Dimension(Raw("Item"), kSortNone);
    items.Position(kRows, 1, true, true);
    BpDimension statistics = table.Dimension(Tr("Statistics"), kSortNone);
    statistics.Position(kColumns, 1, true, false);

    const double level = fStats->fConfidenceLevel;
    BpComposite intervalTitle("^1 Confidence Interval", true);
    intervalTitle.Add(BpNumber(CFIsSysmis(level) ? level : level * 100.0, BpProcedure::Percent()));
    intervalTitle.Finish();

    int rowNumber = 0;
    auto writeRow = [&](const Test* test, const BpCellText& type,
                        const Stats::EstimateRecord& estimate,
                        const Stats::ConditionMessage* message) {
        ++rowNumber;
        items.Category(BpNumber(rowNumber, BpProcedure::Count()));
        statistics.Category(Tr("Confidence Interval Type")).Cell(type);
        BpCategory parameter = statistics.Category(Tr("Parameter"));
        WriteNullHypothesis(parameter, test);
        BpCategory estimateCell = statistics.Category(Tr("Estimate"));
        estimateCell.Cell(BpNumber(estimate.fEstimate, BpProcedure::Coefficient()));
        if (message && message->fCode != 0) {
            estimateCell.CellNote(MessageNote(*message));
        }
        BpGroup interval = statistics.Group(intervalTitle, true, kSortNone);
        interval.Category(Tr("Lower")).Cell(BpNumber(estimate.fLower, BpProcedure::Coefficient()));
        interval.Category(Tr("Upper")).Cell(BpNumber(estimate.fUpper, BpProcedure::Coefficient()));
    };

    for (const auto& entry : fStats->GetEstimates()) {
        const Test* test = entry.get();
        if (!test) {
            continue;
        }
        // The first message marks every estimate of the test, its places
        // filled as in the summary's message notes.
        const Stats::ConditionMessage* message =
            test->fMessages.empty() ? nullptr : &test->fMessages.front();
        const std::string title = Stats::AlgorithmTitle(test->fAlgorithm);
        if (auto* hodgesLehmann = dynamic_cast<const Stats::HTHodgesLehmann*>(test)) {
            writeRow(test, Tr(title), hodgesLehmann->fEstimate, message);
        } else if (auto* binomial =
                       dynamic_cast<const Stats::HTOEstimateConfidenceInterval*>(test)) {
            if (binomial->fIntervals.empty()) {
                writeRow(test, Tr(title), Stats::EstimateRecord(), message);
            }
            for (const Stats::IntervalEntry& interval : binomial->fIntervals) {
                BpComposite type(title + " ^1", true);
                type.Add(Tr(interval.fMethod));
                type.Finish();
                writeRow(test, type, interval.fEstimate, message);
            }
        }
    }
}

// ---------------------------------------------------------------------------
// Pairwise comparisons and homogeneous subsets

std::unique_ptr<BpCellText> NOPROutput::SampleName(const Test* test, int sample) const {
    if (IsIndependentComparison(test->fAlgorithm)) {
        const std::vector<int> fields = GetTestFields(test);
        if (fields.size() < 2) {
            return nullptr;
        }
        const VEXA_Variable* grouping = FieldVariable(fields[1]);
        const Stats::FieldValueEntry* value = fStats->GetFieldValue(fields[1], sample);
        if (!grouping || !value) {
            return nullptr;
        }
        if (value->fValue.IsString()) {
            return std::make_unique<BpDataValue>(grouping, value->fValue.GetString(), 2);
        }
        return std::make_unique<BpDataValue>(grouping, value->fValue.GetNumber(), 2);
    }
    const VEXA_Variable* variable = FieldVariable(sample);
    if (!variable) {
        return nullptr;
    }
    return std::make_unique<BpVariable>(variable, 2);
}

BpComposite NOPROutput::TestFieldTitle(const std::string& pattern, const Test* test,
                                       const Stats::MultipleComparison& comparison) const {
    BpComposite title(pattern, true);
    const VEXA_Variable* variable = FieldVariable(comparison.fFieldIndex);
    if (!variable) {
        const std::vector<int> fields = GetTestFields(test);
        variable = fields.empty() ? nullptr : FieldVariable(fields.front());
    }
    if (variable) {
        title.Add(BpVariable(variable, 2));
    } else {
        title.Add(Raw(kUnknownVariable));
    }
    title.Finish();
    return title;
}

void NOPROutput::MakePairwiseTable(BpHeading& heading, const Test* test,
                                   const Stats::MultipleComparison& comparison,
                                   FacSTDictionary* dictionary) {
    if (!test || !HasComparisonCode(test->fAlgorithm)) {
        return;
    }
    const int code = test->fAlgorithm;
    const bool independent = IsIndependentComparison(code);
    BpComposite title = independent ? TestFieldTitle("Pairwise Comparisons of ^1", test, comparison)
                                    : BpComposite("Pairwise Comparisons", true).Finish();
    BpPivotTable table = heading.PivotTable(title, Raw("Pairwise Comparisons Table"), false);
    table.MinDataColumnWidth(60);
    table.MaxDataColumnWidth(100);
    BpComposite caption(code == Stats::kAIJonckheereTerpstra
                            ? "PairwiseComparisonsTableCaptionJ^1"
                            : "PairwiseComparisonsTableCaptionCFKKM^1",
                        true);
    caption.Add(BpNumber(fStats->fSigLevel, BpProcedure::Significance()));
    caption.Finish();
    table.Caption(caption);
    AddSplitDimensions(table);

    BpDimension pairs = table.Dimension(Raw("Sample 1-Sample 2"), kSortNone);
    pairs.Position(kRows, 1, false, false);
    BpDimension statistics = table.Dimension(Tr("Statistics"), kSortNone);
    statistics.Position(kColumns, 1, true, false);

    const NumericTableData& rankData = comparison.fInfo;
    CF_ASSERT_TEXT(rankData.fRows.size() <= 2, "rankData.fRows.size() == 2");
    SampleValues values;
    if (!values.Build(rankData)) {
        return;
    }
    const NumericTableData& content = comparison.fContent;
    const std::size_t nCol = content.fColumnNames.size();
    CF_ASSERT(nCol == 7);
    if (!ContentHasSevenColumns(content)) {
        return;
    }

    struct Pair {
        int fFirst;
        int fSecond;
        double fFirstValue;
        double fSecondValue;
        const std::vector<double>* fRow;
    };
    std::vector<Pair> rows;
    rows.reserve(content.fRows.size());
    for (const std::vector<double>& row : content.fRows) {
        Pair pair{TruncateToInt(row[0]), TruncateToInt(row[1]), 0.0, 0.0, &row};
        if (!values.Contains(pair.fFirst) || !values.Contains(pair.fSecond)) {
            // A sample outside the rank data: that row alone is left out.
            BpError::Warning(
                "a pairwise comparison names sample " +
                std::to_string(values.Contains(pair.fFirst) ? pair.fSecond : pair.fFirst) +
                ", which the comparison's samples do not include; its row is "
                "left out");
            continue;
        }
        pair.fFirstValue = values.Value(pair.fFirst);
        pair.fSecondValue = values.Value(pair.fSecond);
        if (pair.fFirstValue > pair.fSecondValue) {
            std::swap(pair.fFirst, pair.fSecond);
            std::swap(pair.fFirstValue, pair.fSecondValue);
        }
        rows.push_back(pair);
    }
    // By the first sample's value, the rows of one first sample together, and
    // within them by the second sample's value.
    std::stable_sort(rows.begin(), rows.end(), [](const Pair& a, const Pair& b) {
        if (a.fFirstValue != b.fFirstValue) {
            return a.fFirstValue < b.fFirstValue;
        }
        if (a.fFirst != b.fFirst) {
            return a.fFirst < b.fFirst;
        }
        return a.fSecondValue < b.fSecondValue;
    });

    // Each sample's name, made once.
    std::map<int, std::unique_ptr<BpCellText>> names;
    auto nameOf = [&](int sample) -> const BpCellText& {
        auto it = names.find(sample);
        if (it == names.end()) {
            std::unique_ptr<BpCellText> name = SampleName(test, sample);
            if (!name) {
                name = std::make_unique<BpNumber>(sample, BpProcedure::Count());
            }
            it = names.emplace(sample, std::move(name)).first;
        }
        return *it->second;
    };

    const PairMessages pairMessages(test);
    const BpFormatSpec coefficient = BpProcedure::Coefficient();
    const BpFormatSpec significance = BpProcedure::Significance();
    bool bonferroniNoted = false;
    for (const Pair& pair : rows) {
        const std::vector<double>& row = *pair.fRow;
        BpComposite label("^1-^2", true);
        label.Add(nameOf(pair.fFirst));
        label.Add(nameOf(pair.fSecond));
        label.Finish();
        pairs.Category(label);

        BpCategory statistic = statistics.Category(Tr("Test Statistic"));
        statistic.Cell(BpNumber(row[2], coefficient));
        pairMessages.Attach(*this, statistic, pair.fFirst, pair.fSecond);
        if (code != Stats::kAIMedian) {
            statistics.Category(Tr("Std. Error")).Cell(BpNumber(row[3], coefficient));
            statistics.Category(Tr("Std. Test Statistic")).Cell(BpNumber(row[4], coefficient));
        }
        statistics.Category(Tr("Sig.")).Cell(BpNumber(row[5], significance));
        BpCategory adjusted = statistics.Category(Tr("Adj. Sig."));
        adjusted.Cell(BpNumber(row[6], significance));
        if (!bonferroniNoted) {
            adjusted.Note(Tr("Significance values have been adjusted by the Bonferroni "
                             "correction for multiple tests.")
                              .Replicate());
            bonferroniNoted = true;
        }
    }

    if (fMakeViews) {
        NOPRPairwiseChart chart(dictionary, fStats, test, &comparison);
        if (!chart.MakeChart(fSuffix, fAppendSuffix)) {
            chart.ReportNotDrawn(fSuffix);
        }
    }
}

void NOPROutput::MakeHomogeneousSubsetsTable(BpHeading& heading, const Test* test,
                                             const Stats::MultipleComparison& comparison) {
    if (!test || !HasComparisonCode(test->fAlgorithm)) {
        return;
    }
    const int code = test->fAlgorithm;
    const bool independent = IsIndependentComparison(code);
    BpComposite title = independent
                            ? TestFieldTitle("Homogeneous Subsets based on ^1", test, comparison)
                            : BpComposite("Homogeneous Subsets", true).Finish();
    BpPivotTable table = heading.PivotTable(title, Raw("Homogeneous Subsets Table"), false);
    table.MinDataColumnWidth(60);
    table.MaxDataColumnWidth(100);
    BpComposite caption("HomogeneousSubsetsTableCaption^1", true);
    caption.Add(BpNumber(fStats->fSigLevel, BpProcedure::Significance()));
    caption.Finish();
    table.Caption(caption);
    AddSplitDimensions(table);

    BpDimension rowsDimension = table.Dimension(Raw("Statistics"), kSortNone);
    rowsDimension.Position(kRows, 1, true, false);
    BpDimension subsets = table.Dimension(Tr("Subset"), kSortNone);
    subsets.Position(kColumns, 1, false, false);

    const NumericTableData& rankData = comparison.fInfo;
    const NumericTableData& content = comparison.fContent;
    SampleValues values;
    if (!values.Build(rankData) || !ContentHasSevenColumns(content)) {
        return;
    }
    std::vector<const std::vector<double>*> rows;
    rows.reserve(content.fRows.size());
    for (const std::vector<double>& row : content.fRows) {
        rows.push_back(&row);
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const auto* a, const auto* b) { return (*a)[0] < (*b)[0]; });

    const char* groupNote = nullptr;
    switch (code) {
    case Stats::kARCochransQ:
        groupNote = "Each cell shows the sample number of successes.";
        break;
    case Stats::kARFriedmansTwoWayByRanks:
    case Stats::kARKendallsCoefficient:
        groupNote = "Each cell shows the sample average rank.";
        break;
    case Stats::kAIKruskalWallis:
    case Stats::kAIJonckheereTerpstra:
        groupNote = "Each cell shows the sample average rank of ^1.";
        break;
    default:
        groupNote = "Each cell shows the sample median ^1.";
        break;
    }
    BpComposite note(groupNote, true);
    if (independent) {
        const VEXA_Variable* variable = FieldVariable(comparison.fFieldIndex);
        if (!variable) {
            const std::vector<int> fields = GetTestFields(test);
            variable = fields.empty() ? nullptr : FieldVariable(fields.front());
        }
        if (variable) {
            note.Add(BpVariable(variable, 2));
        }
    }
    note.Finish();
    BpGroup samples = rowsDimension.Group(Tr("Sample"), true, kSortNone);
    samples.Note(note.Replicate());

    const std::vector<double>& sampleRow = rankData.fRows[0];
    const std::vector<double>& valueRow = rankData.fRows[1];
    const long long positions = static_cast<long long>(sampleRow.size());
    const PairMessages pairMessages(test);
    const BpFormatSpec coefficient = BpProcedure::Coefficient();
    const BpFormatSpec significance = BpProcedure::Significance();
    const bool oneSided = code == Stats::kAIJonckheereTerpstra;

    for (std::size_t k = 0; k < rows.size(); ++k) {
        const std::vector<double>& row = *rows[k];
        subsets.Category(Raw(IntText(static_cast<long long>(k + 1))));
        const long long first = std::max<long long>(TruncateToInt(row[0]), 0);
        const long long last = std::min<long long>(TruncateToInt(row[1]), positions - 1);
        for (long long p = first; p <= last; ++p) {
            const std::size_t position = static_cast<std::size_t>(p);
            std::unique_ptr<BpCellText> name = SampleName(test, TruncateToInt(sampleRow[position]));
            if (!name) {
                continue;
            }
            samples.Category(*name).Cell(BpNumber(valueRow[position], coefficient));
        }

        BpCategory statistic = rowsDimension.Category(Tr("Test Statistic"));
        statistic.Cell(BpNumber(row[2], coefficient));
        pairMessages.Attach(*this, statistic, TruncateToInt(row[0]), TruncateToInt(row[1]));
        if (oneSided) {
            rowsDimension.Category(Tr("Standard Error")).Cell(BpNumber(row[3], coefficient));
            rowsDimension.Category(Tr("Standardized Test Statistic"))
                .Cell(BpNumber(row[4], coefficient));
            rowsDimension.Category(Tr("Sig. (1-sided test)")).Cell(BpNumber(row[5], significance));
            rowsDimension.Category(Tr("Adjusted Sig. (1-sided test)"))
                .Cell(BpNumber(row[6], significance));
        } else {
            rowsDimension.Category(Tr("Sig. (2-sided test)")).Cell(BpNumber(row[5], significance));
            rowsDimension.Category(Tr("Adjusted Sig. (2-sided test)"))
                .Cell(BpNumber(row[6], significance));
        }
    }
}
