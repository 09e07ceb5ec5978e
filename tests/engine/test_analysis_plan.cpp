// The analysis plan from NPTESTS commands: every family's options reach the
// plan as written, defaults where nothing is written.
#include "engine/plan/AnalysisPlan.h"

#include <gtest/gtest.h>

#include "engine/data/CsvReader.h"
#include "engine/data/Dataset.h"
#include "engine/data/HostDataSource.h"
#include "host/parser/CommandParser.h"
#include "host/parser/NPTestsGrammar.h"
#include "host/parser/ParsedCommand.h"
#include "host/parser/ParserMessage.h"
#include "host/vexa/DictionaryJson.h"
#include "host/vexa/VEXA_DataSource.h"

namespace {
class PlanTest : public testing::Test {
protected:
    void SetUp() override {
        std::string error;
        const std::unique_ptr<VEXA_DataSource> dictionary = DataSourceFromDictionary(
            R"({"variables": [{"name": "g", "measure": "nominal"}]})", error);
        ASSERT_TRUE(dictionary) << error;
        ASSERT_TRUE(ReadDataText("d.csv", "x,y,g,s\n1,2,1,a\n2,3,2,b\n3,5,1,a\n", dictionary.get(),
                                 fData, error))
            << error;
        fSource = HostDataSource(fData);
    }
    std::optional<AnalysisPlan> Plan(const std::string& text, std::string* failure = nullptr) {
        ParserMessage message;
        const std::unique_ptr<CommandSpec> command =
            CommandParser(fGrammar, fSource.get()).Parse(text, message);
        EXPECT_TRUE(command) << message.GetErrorText();
        if (!command) {
            return std::nullopt;
        }
        std::string error;
        std::optional<AnalysisPlan> plan = MakeAnalysisPlan(*command, fData, error);
        if (failure) {
            *failure = error;
        } else {
            EXPECT_TRUE(plan) << error;
        }
        return plan;
    }

    Dataset fData;
    std::unique_ptr<VEXA_DataSource> fSource;
    CommandDescriptor fGrammar = NPTestsCommandDescriptor();
};
} // namespace

TEST_F(PlanTest, OneSampleOptionsAndDefaults) {
    const auto plan =
        Plan("NPTESTS /ONESAMPLE TEST(x TO y s) CHISQUARE(EXPECTED=CUSTOM(FREQUENCIES=1 2 1 3 "
             "CATEGORIES=1 2 3 'a')) "
             "BINOMIAL(TESTVALUE=0.25 SUCCESSCATEGORICAL=LIST(1 'a') "
             "SUCCESSCONTINUOUS=CUTPOINT(VALUE=2.5) JEFFREYS) RUNS "
             "/CRITERIA ALPHA=0.01 CILEVEL=90 SEED=42 /MISSING SCOPE=LISTWISE USERMISSING=INCLUDE");
    ASSERT_TRUE(plan);
    EXPECT_EQ(plan->fCriteria.fAlpha, 0.01);
    EXPECT_EQ(plan->fCriteria.fCILevel, 90);
    EXPECT_TRUE(plan->fMissing.fListwise);
    EXPECT_TRUE(plan->fMissing.fIncludeUserMissing);
    const OneSamplePlan& one = *plan->fOneSample;
    EXPECT_EQ(one.fFields, (std::vector<int>{0, 1, 3}));
    EXPECT_FALSE(one.fChooseTests);
    EXPECT_FALSE(one.fChiSquare->fEqual);
    EXPECT_EQ(one.fChiSquare->fFrequencies, (std::vector<double>{1, 2, 1, 3}));
    EXPECT_EQ(one.fChiSquare->fCategories.size(), 4u);
    EXPECT_EQ(one.fBinomial->fTestValue, 0.25);
    ASSERT_EQ(one.fBinomial->fSuccess.fList.size(), 2u);
    EXPECT_TRUE(one.fBinomial->fSuccess.fList[1].fIsText);
    EXPECT_EQ(one.fBinomial->fCut.fKind, CutPoint::kValue);
    EXPECT_EQ(one.fBinomial->fCut.fValue, 2.5);
    EXPECT_TRUE(one.fBinomial->fJeffreys);
    EXPECT_FALSE(one.fBinomial->fClopperPearson);
    EXPECT_TRUE(one.fRuns->fGroups.fFirst);
    EXPECT_EQ(one.fRuns->fCut.fKind, CutPoint::kSampleMedian);
    EXPECT_FALSE(one.fKolmogorovSmirnov);
    EXPECT_EQ(plan->Fields(), (std::vector<int>{0, 1, 3}));

    const auto ordered = Plan("NPTESTS /ONESAMPLE TEST(x y) "
                              "KOLMOGOROV_SMIRNOV(NORMAL UNIFORM=SAMPLE EXPONENTIAL(SAMPLE=FALSE) "
                              "POISSON(CUSTOM(MEAN=2)) NSAMPLES=500 MC_CILEVEL=95) "
                              "WILCOXON(TESTVALUE=-1)");
    ASSERT_TRUE(ordered);
    const KolmogorovSmirnovOptions& ks = *ordered->fOneSample->fKolmogorovSmirnov;
    EXPECT_EQ(ks.fNormal.fParameters, KSDistribution::kEstimated);
    EXPECT_EQ(ks.fUniform.fParameters, KSDistribution::kLilliefors);
    // SAMPLE=FALSE asks for the Lilliefors companion on every distribution but the normal.
    EXPECT_EQ(ks.fExponential.fParameters, KSDistribution::kLilliefors);
    EXPECT_EQ(ks.fPoisson.fParameters, KSDistribution::kGiven);
    EXPECT_EQ(ks.fPoisson.fParam1, 2);
    EXPECT_EQ(ks.fMCSamples, 500);
    EXPECT_EQ(ks.fMCCILevel, 95);
    EXPECT_EQ(ordered->fOneSample->fWilcoxon->fTestValue, -1);

    const auto bare = Plan("NPTESTS /ONESAMPLE TEST(x) KOLMOGOROV_SMIRNOV");
    EXPECT_TRUE(bare->fOneSample->fKolmogorovSmirnov->fNormal.fRequested);
    EXPECT_EQ(bare->fOneSample->fKolmogorovSmirnov->fNormal.fParameters,
              KSDistribution::kLilliefors);
    EXPECT_FALSE(bare->fOneSample->fKolmogorovSmirnov->fNormal.fMonteCarlo);
    EXPECT_TRUE(Plan("NPTESTS /ONESAMPLE TEST(x s)")->fOneSample->fChooseTests);
}

TEST_F(PlanTest, IndependentAndRelatedOptions) {
    const auto plan =
        Plan("NPTESTS /INDEPENDENT TEST(x y) GROUP(g) MANN_WHITNEY MOSES(TRIMOUTLIERS=2) "
             "KRUSKAL_WALLIS(COMPARE=STEPWISE) MEDIAN(TESTVALUE=2.5 COMPARE=NONE) "
             "JONCKHEERE_TERPSTRA(ORDER=DESCENDING) "
             "/RELATED TEST(x y) SIGN MCNEMAR(SUCCESS=LIST(1)) COCHRAN(COMPARE=STEPWISE) FRIEDMAN "
             "KENDALL(COMPARE=NONE)");
    ASSERT_TRUE(plan);
    const IndependentPlan& ind = *plan->fIndependent;
    EXPECT_EQ(ind.fGroupField, 2);
    EXPECT_TRUE(ind.fMannWhitney);
    EXPECT_FALSE(ind.fWaldWolfowitz);
    EXPECT_FALSE(ind.fMoses->fTrimFromSample);
    EXPECT_EQ(ind.fMoses->fTrim, 2);
    EXPECT_EQ(ind.fKruskalWallis->fCompare, Compare::kStepwise);
    EXPECT_FALSE(ind.fMedian->fSampleMedian);
    EXPECT_EQ(ind.fMedian->fValue, 2.5);
    EXPECT_EQ(ind.fMedian->fCompare, Compare::kNone);
    EXPECT_FALSE(ind.fJonckheere->fAscending);
    EXPECT_EQ(ind.fJonckheere->fCompare, Compare::kPairwise);
    const RelatedPlan& rel = *plan->fRelated;
    EXPECT_TRUE(rel.fSign);
    EXPECT_FALSE(rel.fMcNemar->fSuccess.fFirst);
    EXPECT_TRUE(rel.fCochran->fSuccess.fFirst);
    EXPECT_EQ(rel.fCochran->fCompare, Compare::kStepwise);
    EXPECT_EQ(rel.fFriedman->fCompare, Compare::kPairwise);
    EXPECT_EQ(rel.fKendall->fCompare, Compare::kNone);
    EXPECT_EQ(plan->Fields(), (std::vector<int>{0, 1, 2}));

    const auto defaults = Plan("NPTESTS /INDEPENDENT TEST(x) GROUP(g) MOSES MEDIAN");
    EXPECT_TRUE(defaults->fIndependent->fMoses->fTrimFromSample);
    EXPECT_TRUE(defaults->fIndependent->fMedian->fSampleMedian);
    EXPECT_TRUE(Plan("NPTESTS /RELATED TEST(x y)")->fRelated->fChooseTests);
}

TEST_F(PlanTest, OptionsThatDoNotFitNameTheOption) {
    std::string error;
    EXPECT_FALSE(Plan("NPTESTS /ONESAMPLE TEST(x s) KOLMOGOROV_SMIRNOV", &error));
    EXPECT_EQ(error, "KOLMOGOROV_SMIRNOV needs a continuous or ordinal field; s is nominal");
    EXPECT_FALSE(Plan("NPTESTS /ONESAMPLE TEST(x) KOLMOGOROV_SMIRNOV(UNIFORM(CUSTOM(MIN=3 MAX=1)))",
                      &error));
    EXPECT_EQ(error, "KOLMOGOROV_SMIRNOV UNIFORM(CUSTOM(MIN= MAX=)): MIN must be less than MAX");
    EXPECT_FALSE(
        Plan("NPTESTS /ONESAMPLE TEST(x) KOLMOGOROV_SMIRNOV(NORMAL(CUSTOM(MEAN=1)))", &error));
    EXPECT_EQ(error, "KOLMOGOROV_SMIRNOV NORMAL(CUSTOM(...)) needs MEAN and SD");
    EXPECT_FALSE(Plan("NPTESTS /ONESAMPLE TEST(x) RUNS(GROUPCATEGORICAL=LIST(1))", &error));
    EXPECT_EQ(error, "RUNS GROUPCATEGORICAL=LIST needs two values, one for each group");
    EXPECT_FALSE(
        Plan("NPTESTS /ONESAMPLE TEST(x) CHISQUARE(EXPECTED=CUSTOM(CATEGORIES=1))", &error));
    EXPECT_EQ(error, "CHISQUARE EXPECTED=CUSTOM needs FREQUENCIES=...");
    EXPECT_FALSE(Plan("NPTESTS /INDEPENDENT TEST(x)", &error));
    EXPECT_EQ(error, "INDEPENDENT needs GROUP(field), the field that forms the groups");
}

TEST_F(PlanTest, FieldsThatDoNotFitTheFamilyNameTheFieldOrTheKeyword) {
    std::string error;
    EXPECT_FALSE(Plan("NPTESTS /INDEPENDENT TEST(x) GROUP(y) KRUSKAL_WALLIS", &error));
    EXPECT_EQ(error, "INDEPENDENT GROUP: y is continuous; the groups come from a nominal or "
                     "ordinal field (give its measurement level in the dictionary)");
    EXPECT_TRUE(Plan("NPTESTS /INDEPENDENT TEST(x) GROUP(s) MANN_WHITNEY")); // a string is nominal
    for (const char* keyword :
         {"SIGN", "WILCOXON", "MCNEMAR", "MARGINAL_HOMOGENEITY", "HODGES_LEHMAN"}) {
        EXPECT_FALSE(Plan(std::string("NPTESTS /RELATED TEST(x y g) ") + keyword, &error));
        EXPECT_EQ(error, std::string("RELATED ") + keyword +
                             " compares exactly two fields; TEST names 3 fields");
        EXPECT_TRUE(Plan(std::string("NPTESTS /RELATED TEST(x y) ") + keyword));
    }
    // The k-field tests take two fields or more.
    EXPECT_TRUE(Plan("NPTESTS /RELATED TEST(x y) FRIEDMAN KENDALL COCHRAN"));
    EXPECT_TRUE(Plan("NPTESTS /RELATED TEST(x y g) FRIEDMAN KENDALL COCHRAN"));
    EXPECT_FALSE(Plan("NPTESTS /RELATED TEST(x) FRIEDMAN", &error));
    EXPECT_EQ(error, "RELATED TEST names 1 field; the related tests compare two or more fields");
    EXPECT_FALSE(Plan("NPTESTS /RELATED TEST(x y x) FRIEDMAN", &error));
    EXPECT_EQ(error, "RELATED TEST names x twice; the related tests compare different fields");
}
