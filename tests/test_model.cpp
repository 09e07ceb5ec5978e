// The result model (factory, bounded access, statistic and message queries)
// and the catalogue of document words and titles.
#include <gtest/gtest.h>

#include "backend/nonpar/NOPROutputStats.h"

using Stats = NOPROutputStats;

TEST(Model, FactoryPutsEachAlgorithmInItsListAndMakesNothingForOthers) {
    Stats stats;
    auto* ks = stats.CreateTest(Stats::kCOneSample, Stats::kAOLilliefors, Stats::kDRetain);
    ASSERT_NE(dynamic_cast<Stats::HTOKolmogorovSmirnov*>(ks), nullptr);
    EXPECT_EQ(stats.GetLillieforsTest(0), ks);
    EXPECT_TRUE(stats.GetHypothesisTests().empty());
    EXPECT_EQ(ks->fDecision, Stats::kDRetain);

    for (auto algorithm :
         {Stats::kAOEstimateConfidenceInterval, Stats::kARHodgesLehmannEstimatePairs,
          Stats::kAIHodgesLehmannEstimateGroups}) {
        stats.CreateTest(Stats::kCUnknown, algorithm, Stats::kDUnknown);
    }
    EXPECT_EQ(stats.GetEstimates().size(), 3u);
    EXPECT_NE(dynamic_cast<Stats::HTHodgesLehmann*>(stats.GetEstimate(2)), nullptr);

    auto* kw =
        stats.CreateTest(Stats::kCIndependentSamples, Stats::kAIKruskalWallis, Stats::kDReject);
    EXPECT_NE(dynamic_cast<Stats::HTIBoxPlotComparison*>(kw), nullptr);
    EXPECT_NE(dynamic_cast<Stats::HTRMarginalHomogeneity*>(stats.CreateTest(
                  Stats::kCRelatedSamples, Stats::kARMarginalHomogeneity, Stats::kDReject)),
              nullptr);

    for (int algorithm : {0, 7, 10, 12, 14, 31, -1}) {
        EXPECT_EQ(stats.CreateTest(Stats::kCOneSample, static_cast<Stats::Algorithm>(algorithm),
                                   Stats::kDReject),
                  nullptr)
            << algorithm;
    }
    EXPECT_EQ(stats.GetHypothesisTests().size(), 2u);
}

TEST(Model, Queries) {
    Stats stats;
    auto* test = stats.CreateTest(Stats::kCOneSample, Stats::kAOChiSquare, Stats::kDReject);
    EXPECT_EQ(stats.GetHypothesisTest(1), nullptr);
    stats.AppendFieldInfo()->fValues.resize(2);
    EXPECT_EQ(stats.GetFieldInfo(-1), nullptr);
    EXPECT_EQ(stats.GetFieldValue(0, 2), nullptr);
    EXPECT_NE(stats.GetFieldValue(0, 1), nullptr);

    test->fStatistics = {{"", {{"TestStatistic", 3.5}, {"Sig", 0.04}}}, {"Empty", {}}};
    double value = -1;
    EXPECT_TRUE(Stats::GetStatisticValue(test, "", "Sig", value));
    EXPECT_DOUBLE_EQ(value, 0.04);
    value = -1;
    EXPECT_TRUE(Stats::GetStatisticValue(test, "Empty", "", value));
    EXPECT_EQ(value, -1); // untouched
    EXPECT_FALSE(Stats::GetStatisticValue(test, "Empty", "Sig", value));
    EXPECT_FALSE(Stats::GetStatisticValue(test, "Empty ", "", value));

    // 222330 is the one code of 222328-222334 that blocks a test.
    test->fMessages = {{222330, Stats::kMWarning, 0, {}, ""},
                       {222328, Stats::kMError, 0, {}, ""},
                       {220013, Stats::kMError, 0, {}, ""},
                       {222330, Stats::kMError, 0, {}, ""}};
    EXPECT_EQ(Stats::FirstBlockingMessage(test), &test->fMessages[3]);
    auto* estimate = stats.CreateTest(Stats::kCOneSample, Stats::kAOEstimateConfidenceInterval,
                                      Stats::kDUnknown);
    estimate->fMessages = test->fMessages;
    EXPECT_EQ(Stats::FirstBlockingMessage(estimate), nullptr);
    EXPECT_TRUE(Stats::IsPairCodeFirstGroup(222333) && !Stats::IsPairCodeFirstGroup(222331));
    EXPECT_TRUE(Stats::IsPairCodeSecondGroup(220013) && !Stats::IsPairCodeSecondGroup(222330));
}

TEST(Catalogue, WordsAndTitles) {
    EXPECT_EQ(Stats::ClassificationOfKey("Related_Samples"), Stats::kCRelatedSamples);
    EXPECT_EQ(Stats::ClassificationOfKey("one_sample"), Stats::kCUnknown);
    EXPECT_EQ(Stats::ClassificationOfKey("One_Sample "), Stats::kCUnknown);
    EXPECT_EQ(Stats::AlgorithmOfKey("OLilliefors"), Stats::kAOLilliefors);
    EXPECT_EQ(Stats::AlgorithmOfKey("IMedian"), Stats::kAIMedian);
    EXPECT_EQ(Stats::AlgorithmOfKey("RHodgesLehmanEstimatePairs"), Stats::kAUnknown);
    EXPECT_EQ(Stats::AlgorithmOfKey(""), Stats::kAUnknown);
    EXPECT_EQ(Stats::AlgorithmTitle(Stats::kAOLilliefors), "One-Sample Kolmogorov-Smirnov Test");
    EXPECT_EQ(Stats::AlgorithmTitle(Stats::kARHodgesLehmannEstimatePairs),
              "Related-Samples Hodges-Lehman Median Difference");
    for (int algorithm : {0, 31, -1, 7, 14}) {
        EXPECT_EQ(Stats::AlgorithmTitle(algorithm), "Unknown") << algorithm;
    }
    EXPECT_EQ(Stats::AlgorithmKey(Stats::kAIJonckheereTerpstra), "IJonckheereTerpstra");
    EXPECT_EQ(Stats::AlgorithmKey(0), "");
    EXPECT_EQ(Stats::DecisionOfWord("reject"), Stats::kDReject);
    EXPECT_EQ(Stats::DecisionOfWord("Retain"), Stats::kDUnknown);
    EXPECT_EQ(Stats::MessageTypeOfWord("warning"), Stats::kMWarning);
    EXPECT_EQ(Stats::MessageTypeOfWord("Warning"), Stats::kMHelpMessage);
    EXPECT_EQ(Stats::MessageTypeOfWord("note"), Stats::kMHelpMessage);
    EXPECT_EQ(Stats::MessageTypeOfWord("error"), Stats::kMError);
}
