// The per-test statistics tables, the Confidence Interval Summary, and the
// pairwise-comparisons and homogeneous-subsets tables.
#include "output_fixture.h"

#include "host/cf/CFErrorChannel.h"
#include "host/cf/CFSysmis.h"
#include "host/fac/FacSTDictionary.h"
#include "host/xml/XMLText.h"

#include <chrono>
#include <limits>
#include <stdexcept>

namespace {
using Strings = std::vector<std::string>;
const Strings kComparisonColumns = {"Sample1",          "Sample2", "TestStatistic", "StdError",
                                    "StdTestStatistic", "Sig",     "AdjSig"};
} // namespace

class StatisticsTableTest : public OutputTest {
protected:
    HTest* AddRuns() {
        AddField("score");
        AddField("group");
        return AddTest(Stats::kCIndependentSamples, Stats::kAIWaldWolfowitzRuns, Stats::kDRetain,
                       "DefaultAllDistinctValuesUsed_I_WaldWolfowitzRuns_2", {{0}, {1}});
    }
};

TEST_F(StatisticsTableTest, GroupsRowsByStatisticsGroupAndNotesMessages) {
    AddField("score");
    AddField("group");
    HTest* test = AddTest(Stats::kCIndependentSamples, Stats::kAIMannWhitneyU, Stats::kDRetain,
                          "DefaultAllDistinctValuesUsed_I_MannWhitneyU_2", {{0}, {1}});
    AddStatistics(test, "", {{"TotalN", 40}, {"TestStatistic", 120.5}, {"DegreeOfFreedom", 3}});
    AddStatistics(test, "Asymptotic", {{"AsymptoticSig2Tailed", 0.04}});
    AddStatistics(test, "", {{"Extra", 0.5}});
    AddMessage(test, 4711, Stats::kMWarning, "", {2.0});
    AddMessage(test, 222328, Stats::kMWarning, "0;1"); // a pair's message: not here
    Write();

    const FlatTable table = Table("Independent-Samples Mann-Whitney U Test Summary");
    EXPECT_EQ(table.fNode->fSubtype, "Independent-Samples Mann-Whitney U Test Summary");
    EXPECT_EQ(table.fNode->fMinDataColumnWidth, 150);
    EXPECT_EQ(table.fNode->fMaxDataColumnWidth, -1);
    EXPECT_EQ(table.fRows, (Strings{"TotalN", "TestStatistic", "DegreeOfFreedom",
                                    "Asymptotic/AsymptoticSig2Tailed", "Extra"}));
    EXPECT_EQ(table.At("TotalN"), "40");
    EXPECT_EQ(table.At("TestStatistic"), "120.500");
    EXPECT_EQ(table.At("DegreeOfFreedom"), "3");
    EXPECT_EQ(table.At("Asymptotic/AsymptoticSig2Tailed"), "0.040");
    EXPECT_EQ(table.NotesAt("TestStatistic"), Strings{"4711"});
}

TEST_F(StatisticsTableTest, RunsTestWithoutTiesWritesItsFirstNamedGroupFlat) {
    HTest* runs = AddRuns();
    AddStatistics(runs, "", {{"TotalN", 30}});
    AddStatistics(runs, "TestStatistic", {{"MinimumPossible", 12}, {"MaximumPossible", 12}});
    AddStatistics(runs, "MinimumPossible", {{"AsymptoticSig2Tailed", 0.2}});
    Write();

    const FlatTable table = Table("Independent-Samples Wald-Wolfowitz Runs Test Summary");
    EXPECT_EQ(table.fRows, (Strings{"TotalN", "MinimumPossible", "MaximumPossible"}));
    EXPECT_EQ(table.LabelNotes("TestStatistic"),
              Strings{"The test statistic is the number of runs."});
    EXPECT_EQ(Table("Hypothesis Test Summary").NotesAt("1", "Sig."), Strings{});
}

TEST_F(StatisticsTableTest, RunsTestWithTiesWritesBothBounds) {
    HTest* runs = AddRuns();
    AddStatistics(runs, "", {{"TotalN", 30}});
    AddStatistics(runs, "TestStatistic", {{"MinimumPossible", 10}, {"MaximumPossible", 14}});
    AddStatistics(runs, "MinimumPossible", {{"TestStatistic", 10}, {"AsymptoticSig2Tailed", 0.2}});
    AddStatistics(runs, "MaximumPossible", {{"TestStatistic", 14}, {"AsymptoticSig2Tailed", 0.6}});
    AddMessage(runs, 4711);
    Write();

    const FlatTable table = Table("Independent-Samples Wald-Wolfowitz Runs Test Summary");
    EXPECT_EQ(table.fRows,
              (Strings{"TotalN", "TestStatistic/MinimumPossible", "TestStatistic/MaximumPossible",
                       "MinimumPossible/TestStatistic", "MinimumPossible/AsymptoticSig2Tailed",
                       "MaximumPossible/TestStatistic", "MaximumPossible/AsymptoticSig2Tailed"}));
    for (const char* bound : {"MinimumPossible", "MaximumPossible"}) {
        const std::string row = std::string(bound) + "/TestStatistic";
        EXPECT_EQ(table.LabelNotes(row), Strings{"The test statistic is the number of runs."});
        EXPECT_EQ(table.NotesAt(row), Strings{"4711"});
    }
    const FlatTable summary = Table("Hypothesis Test Summary");
    EXPECT_EQ(summary.At("1", "Sig."), "0.600");
    EXPECT_EQ(summary.NotesAt("1", "Sig."), Strings{"HTSFootNoteUsingMaxWhenTies"});
}

TEST_F(StatisticsTableTest, MosesTestNotesTheSpanOfTheControlGroupsItHas) {
    AddField("score");
    AddField("group");
    HTest* moses = AddTest(Stats::kCIndependentSamples, Stats::kAIMoses, Stats::kDRetain,
                           "DefaultAllDistinctValuesUsed_I_Moses_2", {{0}, {1}});
    AddStatistics(moses, "TestStatistic", {{"ObservedControlGroup", 30}});
    Write();

    const FlatTable table = Table("Independent-Samples Moses Test of Extreme Reaction Summary");
    EXPECT_EQ(table.fRows, Strings{"TestStatistic/ObservedControlGroup"});
    EXPECT_EQ(table.LabelNotes("ObservedControlGroup/TestStatistic"),
              Strings{"The test statistic is the span."});
    EXPECT_EQ(table.LabelNotes("TrimmedControlGroup"), Strings{"<no label>"});
}

TEST_F(StatisticsTableTest, LillieforsCompanionAddsMonteCarloRows) {
    using KS = Stats::HTOKolmogorovSmirnov;
    AddField("x");
    fStats.fNormalFromSample = true;
    KS* ks = AddTest<KS>(Stats::kCOneSample, Stats::kAOKolmogorovSmirnov, Stats::kDRetain,
                         "NormalDistribution_O_KolmogorovSmirnov_3", {{0}, {10}, {2}});
    AddStatistics(ks, "", {{"TotalN", 50}, {"TestStatistic", 0.1}, {"AsymptoticSig2Tailed", 0.2}});
    KS* lill = AddTest<KS>(Stats::kCOneSample, Stats::kAOLilliefors, Stats::kDReject,
                           "NormalDistribution_O_Lilliefors_3", {{0}});
    lill->fIsUseSample = true;
    AddStatistics(lill, "",
                  {{"TestStatistic", 0.1},
                   {"AsymptoticSig2Tailed", 0.03},
                   {"ConfidenceIntervalLowerBound", 0.025},
                   {"ConfidenceIntervalUpperBound", 0.035}});

    auto output = Output();
    for (double level : {99.0, 95.5}) {
        fStats.fMCCILevel = level;
        output->MakeTestTable(fProcedure, ks, lill);
    }
    const std::vector<const BpTableNode*> tables = Tables();
    ASSERT_EQ(tables.size(), 2u);
    const FlatTable table = Flatten(*tables[0]);
    EXPECT_EQ(table.fRows, (Strings{"TotalN", "TestStatistic", "AsymptoticSig2Tailed",
                                    "MonteCarloSig2Tailed/Sig.",
                                    "MonteCarloSig2Tailed/99% Confidence Interval/Lower Bound",
                                    "MonteCarloSig2Tailed/99% Confidence Interval/Upper Bound"}));
    EXPECT_EQ(table.At("AsymptoticSig2Tailed"), "0.200");
    EXPECT_EQ(table.At("MonteCarloSig2Tailed/Sig."), "0.030");
    EXPECT_EQ(table.At("MonteCarloSig2Tailed/99% Confidence Interval/Upper Bound"), "0.035");
    EXPECT_EQ(table.LabelNotes("MonteCarloSig2Tailed"), Strings{"Lill 10000 samples ^ 2 seed ..."});
    EXPECT_EQ(Flatten(*tables[1]).At("MonteCarloSig2Tailed/95.5% Confidence Interval/Lower Bound"),
              "0.025");
}

// ---------------------------------------------------------------------------
// Confidence Interval Summary

TEST_F(OutputTest, ConfidenceIntervalSummaryNumbersRowsAcrossTests) {
    AddField("x");
    AddField("y");
    fStats.fConfidenceLevel = 0.95;
    auto* pairs = AddTest<Stats::HTHodgesLehmann>(Stats::kCRelatedSamples,
                                                  Stats::kARHodgesLehmannEstimatePairs,
                                                  Stats::kDUnknown, "R_HodgesLehman_2", {{0}, {1}});
    pairs->fEstimate = {1.5, 0.5, 2.5};
    auto* binomial = AddTest<Stats::HTOEstimateConfidenceInterval>(
        Stats::kCOneSample, Stats::kAOEstimateConfidenceInterval, Stats::kDUnknown,
        "ACutPointIsSpecified_O_Binomial_2", {{0}, {0.5}});
    for (const char* method : {"ClopperPearson", "Jeffreys", "ProfileLikelihood"}) {
        binomial->fIntervals.push_back({method, {0.4, 0.3, 0.5}});
    }
    AddMessage(binomial, 70001);
    AddTest(Stats::kCOneSample, Stats::kAOEstimateConfidenceInterval, Stats::kDUnknown,
            "ACutPointIsSpecified_O_Binomial_2", {{0}, {0.5}});
    Write();

    EXPECT_EQ(OutlineOf(), Strings{"table: Confidence Interval Summary"});
    const FlatTable table = Table("Confidence Interval Summary");
    EXPECT_EQ(table.fNode->fSubtype, "Confidence Interval Summary");
    EXPECT_EQ(table.fRows, (Strings{"1", "2", "3", "4", "5"}));
    EXPECT_EQ(table.fColumns,
              (Strings{"Confidence Interval Type", "Parameter", "Estimate",
                       "95% Confidence Interval/Lower", "95% Confidence Interval/Upper"}));
    EXPECT_EQ(table.At("1", "Confidence Interval Type"),
              "Related-Samples Hodges-Lehman Median Difference");
    EXPECT_EQ(table.At("1", "Estimate"), "1.500");
    EXPECT_EQ(table.NotesAt("1", "Estimate"), Strings{});
    EXPECT_EQ(table.At("3", "Confidence Interval Type"),
              "One-Sample Binomial Success Rate Jeffreys");
    EXPECT_EQ(table.At("3", "Parameter"), "ACutPointIsSpecified_O_Binomial_2");
    for (const char* row : {"2", "3", "4"}) {
        EXPECT_EQ(table.NotesAt(row, "Estimate"), Strings{"70001"});
        EXPECT_EQ(table.At(row, "95% Confidence Interval/Upper"), "0.500");
    }
    // A binomial test without intervals: one row of missing values.
    EXPECT_EQ(table.At("5", "Confidence Interval Type"), "One-Sample Binomial Success Rate");
    EXPECT_EQ(table.At("5", "Estimate"), ".");
}

TEST_F(OutputTest, ConfidenceIntervalNotesFillTheMessagesPlaces) {
    AddField("x");
    AddField("y");
    auto* pairs = AddTest<Stats::HTHodgesLehmann>(Stats::kCRelatedSamples,
                                                  Stats::kARHodgesLehmannEstimatePairs,
                                                  Stats::kDUnknown, "R_HodgesLehman_2", {{0}, {1}});
    pairs->fEstimate = {1.5, 0.5, 2.5};
    AddMessage(pairs, 220052, Stats::kMHelpMessage, "", {7.0});
    FacSTDictionary dictionary(NPTESTS_SOURCE_DIR "/resources/strings");
    ASSERT_TRUE(dictionary.SetProcedure("Nonparametric Tests"));
    BpProcedure procedure("Nonparametric Tests", &dictionary, &fSource);
    NOPROutput output(&procedure, nullptr, &fSource, &fStats);
    output.fMakeViews = false;
    output.MakeOutput();
    std::vector<const BpTableNode*> tables;
    CollectTables(procedure.Root(), tables);
    const BpTableNode* summary = nullptr;
    for (const BpTableNode* table : tables) {
        summary = table->fSubtype == "Confidence Interval Summary" ? table : summary;
    }
    ASSERT_NE(summary, nullptr);
    EXPECT_EQ(Flatten(*summary).NotesAt("1", "Estimate"),
              Strings{"7 cases with a value in neither category list are left out of the test."});
}

// ---------------------------------------------------------------------------
// Pairwise comparisons and homogeneous subsets

class ComparisonTest : public OutputTest {
protected:
    ComparisonTest() {
        AddField("score");
        VEXA_Variable& group = AddField("group");
        const char* labels[] = {"A", "B", "C", "D"};
        for (int value = 1; value <= 4; ++value) {
            group.ValueLabels().Add(value, labels[value - 1]);
            AddCategory(1, value);
        }
    }
    template <typename Record = Stats::HTIKruskalWallis>
    Record* AddComparisonTest(Stats::Algorithm algorithm, Stats::MultipleComparison::Kind kind,
                              std::vector<std::vector<double>> rankData,
                              std::vector<std::vector<double>> rows) {
        const bool independent = algorithm >= Stats::kAIKruskalWallis;
        auto* test =
            AddTest<Record>(independent ? Stats::kCIndependentSamples : Stats::kCRelatedSamples,
                            algorithm, Stats::kDReject, std::string(), {{0}, {1}});
        if (!test) {
            throw std::logic_error("the record type does not match the algorithm");
        }
        Stats::MultipleComparison& comparison = test->fComparison;
        comparison.fKind = kind;
        comparison.fFieldIndex = 0;
        comparison.fInfo.fRows = std::move(rankData);
        comparison.fContent.fColumnNames = kComparisonColumns;
        comparison.fContent.fRows = std::move(rows);
        return test;
    }
    static std::vector<double> Row(double first, double second, double statistic) {
        return {first, second, statistic, 2.0, 1.5, 0.01, 0.06};
    }
    FlatTable Pairwise(const HTest* test, const Stats::MultipleComparison& comparison) {
        Output()->MakePairwiseTable(fProcedure, test, comparison, nullptr);
        return Flatten(*Tables().back());
    }
};

TEST_F(ComparisonTest, PairwiseRowsAreOrientedAndOrderedByMeanRank) {
    // Samples 1 and 3 share the smallest mean rank.
    auto* test = AddComparisonTest(
        Stats::kAIKruskalWallis, Stats::MultipleComparison::kPairwise,
        {{0, 1, 2, 3}, {30, 10, 20, 10}},
        {Row(0, 1, 1), Row(1, 2, 2), Row(3, 0, 3), Row(2, 0, 4), Row(1, 3, 5), Row(2, 3, 6)});
    AddMessage(test, 222328, Stats::kMWarning, "0;1");
    AddMessage(test, 222331, Stats::kMWarning, "3;2");
    AddMessage(test, 70001, Stats::kMWarning, "1;3"); // not a pair's code
    const FlatTable table = Pairwise(test, test->fComparison);

    EXPECT_EQ(table.fNode->fTitle, "Pairwise Comparisons of score");
    EXPECT_EQ(table.fNode->fSubtype, "Pairwise Comparisons Table");
    EXPECT_EQ(table.fNode->fCaption, "PairwiseComparisonsTableCaptionCFKKM0.050");
    EXPECT_EQ(table.fNode->fMinDataColumnWidth, 60);
    EXPECT_EQ(table.fNode->fMaxDataColumnWidth, 100);
    EXPECT_EQ(table.fRows, (Strings{"B-D", "B-C", "B-A", "D-C", "D-A", "C-A"}));
    EXPECT_EQ(table.fColumns, (Strings{"Test Statistic", "Std. Error", "Std. Test Statistic",
                                       "Sig.", "Adj. Sig."}));
    EXPECT_EQ(table.At("B-A", "Test Statistic"), "1.000"); // stored as (0, 1)
    EXPECT_EQ(table.At("D-C", "Test Statistic"), "6.000"); // stored as (2, 3)
    EXPECT_EQ(table.At("B-A", "Adj. Sig."), "0.060");
    EXPECT_EQ(table.NotesAt("B-A", "Test Statistic"), Strings{"222328"});
    EXPECT_EQ(table.NotesAt("D-C", "Test Statistic"), Strings{"222331"});
    EXPECT_EQ(table.NotesAt("B-D", "Test Statistic"), Strings{});
    EXPECT_EQ(table.LabelNotes("Adj. Sig."),
              Strings{"Significance values have been adjusted by the Bonferroni correction for "
                      "multiple tests."});
}

TEST_F(ComparisonTest, PairwiseTableOfRelatedSamplesNamesFields) {
    AddField("third");
    auto* test = AddComparisonTest<Stats::HTRFriedmansTwoWayByRanks>(
        Stats::kARFriedmansTwoWayByRanks, Stats::MultipleComparison::kPairwise,
        {{0, 1, 2}, {2.5, 1.5, 2.0}}, {Row(0, 1, 1), Row(0, 2, 2), Row(1, 2, 3)});
    const FlatTable table = Pairwise(test, test->fComparison);
    EXPECT_EQ(table.fNode->fTitle, "Pairwise Comparisons");
    EXPECT_EQ(table.fRows, (Strings{"group-third", "group-score", "third-score"}));
}

TEST_F(ComparisonTest, PairwiseTableOfTheMedianTestHasNoStandardizedColumns) {
    auto* test = AddComparisonTest<Stats::HTIMedian>(
        Stats::kAIMedian, Stats::MultipleComparison::kPairwise, {{0, 1}, {3, 4}}, {Row(0, 1, 1)});
    const FlatTable table = Pairwise(test, test->fComparison);
    EXPECT_EQ(table.fColumns, (Strings{"Test Statistic", "Sig.", "Adj. Sig."}));
}

TEST_F(ComparisonTest, BadPairwiseDataLeavesOutARowTheFrameOrAsserts) {
    auto* test = AddComparisonTest<Stats::HTIJonckheereTerpstra>(
        Stats::kAIJonckheereTerpstra, Stats::MultipleComparison::kPairwise, {{0, 1}, {3, 4}},
        {Row(0, 1, 1), Row(0, 2, 2)}); // no sample 2
    // The row that names a sample the comparison lacks is left out, with a
    // warning; the others stay.
    CFErrorChannel::Clear();
    FlatTable table = Pairwise(test, test->fComparison);
    EXPECT_EQ(table.fNode->fCaption, "PairwiseComparisonsTableCaptionJ0.050");
    EXPECT_EQ(table.fNode->fDimensions.size(), 2u);
    EXPECT_EQ(table.fRows.size(), 1u);
    ASSERT_EQ(CFErrorChannel::Messages().size(), 1u);
    EXPECT_EQ(CFErrorChannel::Messages()[0].fText,
              "a pairwise comparison names sample 2, which the comparison's samples do not "
              "include; its row is left out");
    CFErrorChannel::Clear();

    Stats::MultipleComparison comparison = test->fComparison;
    comparison.fInfo.fRows[1].pop_back(); // rows of different lengths
    EXPECT_TRUE(Pairwise(test, comparison).fRows.empty());

    comparison = test->fComparison;
    comparison.fInfo.fRows.push_back({});
    EXPECT_EQ(AssertionText([&] { Pairwise(test, comparison); }),
              "rankData.fRows.size() == 2 @ backend/nonpar/NOPROutput");
    comparison = test->fComparison;
    comparison.fContent.fColumnNames.pop_back();
    EXPECT_EQ(AssertionText([&] { Pairwise(test, comparison); }),
              "nCol == 7 @ backend/nonpar/NOPROutput");
    // Seven column names but a short row: the frame alone.
    comparison = test->fComparison;
    comparison.fContent.fRows[0].resize(3);
    EXPECT_TRUE(Pairwise(test, comparison).fRows.empty());
}

TEST_F(ComparisonTest, HomogeneousSubsetsOfJonckheereTerpstraAreOneSided) {
    auto* test = AddComparisonTest<Stats::HTIJonckheereTerpstra>(
        Stats::kAIJonckheereTerpstra, Stats::MultipleComparison::kStepwise,
        {{0, 1, 2, 3}, {10, 20, 30, 40}}, {Row(2, 99, 7), Row(0, 1, 5)});
    AddMessage(test, 222333, Stats::kMWarning, "0;1");
    Write();

    const FlatTable table = Table("Homogeneous Subsets based on score");
    EXPECT_EQ(table.fNode->fSubtype, "Homogeneous Subsets Table");
    EXPECT_EQ(table.fNode->fCaption, "HomogeneousSubsetsTableCaption0.050");
    EXPECT_EQ(table.fColumns, (Strings{"1", "2"}));
    EXPECT_EQ(table.fRows,
              (Strings{"Sample/A", "Sample/B", "Sample/C", "Sample/D", "Test Statistic",
                       "Standard Error", "Standardized Test Statistic", "Sig. (1-sided test)",
                       "Adjusted Sig. (1-sided test)"}));
    EXPECT_EQ(table.At("Sample/A", "1"), "10.000");
    EXPECT_EQ(table.At("Sample/D", "2"), "40.000"); // the last position stops at the data
    EXPECT_EQ(table.Find("Sample/A", "2"), nullptr);
    EXPECT_EQ(table.At("Test Statistic", "1"), "5.000");
    EXPECT_EQ(table.NotesAt("Test Statistic", "1"), Strings{"222333"});
    EXPECT_EQ(table.LabelNotes("Sample"),
              Strings{"Each cell shows the sample average rank of score."});
}

TEST_F(ComparisonTest, HomogeneousSubsetsOfOtherTestsAreTwoSided) {
    auto* test = AddComparisonTest<Stats::HTIMedian>(
        Stats::kAIMedian, Stats::MultipleComparison::kStepwise, {{0, 1}, {3, 4}}, {Row(0, 1, 1)});
    Output()->MakeHomogeneousSubsetsTable(fProcedure, test, test->fComparison);
    FlatTable table = Flatten(*Tables().back());
    EXPECT_EQ(table.fRows, (Strings{"Sample/A", "Sample/B", "Test Statistic", "Sig. (2-sided test)",
                                    "Adjusted Sig. (2-sided test)"}));
    EXPECT_EQ(table.LabelNotes("Sample"), Strings{"Each cell shows the sample median score."});

    // Invalid data: the frame, without body and without assertion.
    Stats::MultipleComparison comparison = test->fComparison;
    comparison.fInfo.fRows.push_back({});
    comparison.fContent.fColumnNames.pop_back();
    Output()->MakeHomogeneousSubsetsTable(fProcedure, test, comparison);
    table = Flatten(*Tables().back());
    EXPECT_TRUE(table.fRows.empty());
    EXPECT_EQ(table.fNode->fDimensions.size(), 2u);
}

TEST_F(ComparisonTest, PairwiseTableOfAHundredSamples) {
    VEXA_Variable& group = *fStats.GetFieldInfo(1)->fVariable;
    std::vector<std::vector<double>> rankData(2);
    std::vector<std::vector<double>> rows;
    constexpr int kSamples = 100;
    for (int s = 0; s < kSamples; ++s) {
        if (s >= 4) {
            std::string label = std::to_string(s + 1);
            label.insert(0, 1, 'G');
            group.ValueLabels().Add(s + 1, std::move(label));
            AddCategory(1, s + 1);
        }
        rankData[0].push_back(s);
        rankData[1].push_back((s * 37) % kSamples); // distinct mean ranks, shuffled
    }
    for (int a = kSamples - 1; a >= 0; --a) {
        for (int b = 0; b < a; ++b) {
            rows.push_back(Row(a, b, a * 1000 + b));
        }
    }
    auto* test = AddComparisonTest(Stats::kAIKruskalWallis, Stats::MultipleComparison::kPairwise,
                                   rankData, rows);
    const auto start = std::chrono::steady_clock::now();
    const FlatTable table = Pairwise(test, test->fComparison);
    const auto elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start);
    RecordProperty("seconds", std::to_string(elapsed.count()));
    ASSERT_EQ(table.fRows.size(), static_cast<size_t>(kSamples * (kSamples - 1) / 2));
    // Sample 0 has the smallest mean rank: its rows come first, by the other's rank.
    EXPECT_EQ(table.fRows[0], "A-G74"); // 73 * 37 % 100 == 1
    EXPECT_EQ(table.fRows[1], "A-G47"); // 46 * 37 % 100 == 2
    EXPECT_LT(elapsed.count(), 5.0);
}

// Every record type with hostile numbers in its condition, statistics and
// comparison data: the output either completes or stops at a named assertion
// (the sanitizer build checks that nothing else goes wrong).
TEST(OutputRobustness, HostileNumbersEndInOutputOrANamedAssertion) {
    using Stats = NOPROutputStats;
    struct Key {
        Stats::Classification fClassification;
        Stats::Algorithm fAlgorithm;
        const char* fKey;
        size_t fParameters;
    };
    const Key keys[] = {
        {Stats::kCOneSample, Stats::kAOBinomial, "CategoryListsAreSpecified_O_Binomial_5", 5},
        {Stats::kCOneSample, Stats::kAORuns, "ABinaryTestVariableIsSpecified_O_Runs_3", 3},
        {Stats::kCOneSample, Stats::kAOEstimateConfidenceInterval,
         "CategoryListsAreSpecified_O_Binomial_2", 2},
        {Stats::kCOneSample, Stats::kAOKolmogorovSmirnov,
         "NormalDistribution_O_KolmogorovSmirnov_3", 3},
        {Stats::kCRelatedSamples, Stats::kARCochransQ, "CategoryListsAreSpecified_R_CochransQ_1",
         1},
        {Stats::kCRelatedSamples, Stats::kARFriedmansTwoWayByRanks, "R_FriedmansTwoWayByRanks_1",
         1},
        {Stats::kCRelatedSamples, Stats::kARHodgesLehmannEstimatePairs, "R_HodgesLehman_2", 2},
        {Stats::kCIndependentSamples, Stats::kAIMoses, "DefaultAllDistinctValuesUsed_I_Moses_2", 2},
        {Stats::kCIndependentSamples, Stats::kAIWaldWolfowitzRuns,
         "DefaultAllDistinctValuesUsed_I_WaldWolfowitzRuns_2", 2},
        {Stats::kCIndependentSamples, Stats::kAIKruskalWallis,
         "DefaultAllDistinctValuesUsed_I_KruskalWallis_2", 2},
        {Stats::kCIndependentSamples, Stats::kAIJonckheereTerpstra,
         "DefaultAllDistinctValuesUsed_I_JonckheereTerpstra_2", 2},
        {Stats::kCIndependentSamples, Stats::kAIMedian, "DefaultAllDistinctValuesUsed_I_Median_2",
         2},
    };
    const double values[] = {std::numeric_limits<double>::quiet_NaN(),
                             std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity(),
                             kCFSysmis,
                             1e300,
                             -1.0,
                             0.0,
                             2147483648.0,
                             3.7};
    int completed = 0;
    for (const Key& key : keys) {
        for (const double v : values) {
            for (const auto kind :
                 {Stats::MultipleComparison::kPairwise, Stats::MultipleComparison::kStepwise}) {
                OutputEnv env;
                env.AddField("a");
                env.AddField("b", 4);
                env.AddCategory(0, v);
                env.fStats.fNormalFromSample = true;
                env.fStats.fMCCILevel = v;
                env.fStats.fConfidenceLevel = v;
                std::vector<std::vector<double>> parameters(key.fParameters, {0.0, v});
                parameters[0] = {v};
                auto* test = env.AddTest(key.fClassification, key.fAlgorithm, Stats::kDReject,
                                         key.fKey, parameters);
                OutputEnv::AddStatistics(test, "", {{"TotalN", v}, {"ExactSig", v}});
                OutputEnv::AddStatistics(test, "TestStatistic",
                                         {{"MinimumPossible", v}, {"MaximumPossible", 1}});
                OutputEnv::AddMessage(test, 222328, Stats::kMWarning, "1;0", {v});
                OutputEnv::AddMessage(test, 220013, Stats::kMWarning, ";");
                auto* lill = env.AddTest(Stats::kCOneSample, Stats::kAOLilliefors, Stats::kDRetain,
                                         "NormalDistribution_O_Lilliefors_3", {{v}});
                static_cast<Stats::HTOKolmogorovSmirnov*>(lill)->fIsUseSample = true;
                if (auto* binomial = dynamic_cast<Stats::HTOEstimateConfidenceInterval*>(test)) {
                    binomial->fIntervals.push_back({"Jeffreys", {v, v, v}});
                }
                Stats::MultipleComparison* comparison = nullptr;
                if (auto* groups = dynamic_cast<Stats::HTIBoxPlotComparison*>(test)) {
                    comparison = &groups->fComparison;
                } else if (auto* ranks = dynamic_cast<Stats::HTRRanks*>(test)) {
                    comparison = &ranks->fComparison;
                } else if (auto* cochran = dynamic_cast<Stats::HTRCochransQ*>(test)) {
                    comparison = &cochran->fComparison;
                }
                if (comparison) {
                    comparison->fKind = kind;
                    comparison->fFieldIndex = TruncateToInt(v);
                    comparison->fInfo.fRows = {{v, 0, 1}, {v, v, 2}};
                    comparison->fContent.fColumnNames = kComparisonColumns;
                    comparison->fContent.fRows = {
                        {v, 1, v, v, v, v, v}, {0, v, v, v, v, v, v}, {v, v, v, v, v, v, v}};
                }
                NOPROutput output(&env.fProcedure, nullptr, &env.fSource, &env.fStats);
                output.fMakeViews = true;
                if (AssertionText([&] { output.MakeOutput(); }) == "<no assertion>") {
                    ++completed;
                }
            }
        }
    }
    RecordProperty("completed", completed);
    EXPECT_GT(completed, 0);
}
