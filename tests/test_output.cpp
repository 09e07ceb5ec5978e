// The output driver, the Hypothesis Test Summary with its footnotes, the
// condition texts and their parameter writers, the Lilliefors companions, and
// the procedure's split headings and split loop.
#include "output_fixture.h"

#include "backend/nonpar/NOPRProcCustom.h"
#include "host/cf/CFSysmis.h"

namespace {
using Strings = std::vector<std::string>;
constexpr const char* kNormal = "NormalDistribution_O_KolmogorovSmirnov_3";
constexpr const char* kNormalLill = "NormalDistribution_O_Lilliefors_3";
} // namespace

class SummaryEnv : public OutputEnv {
public:
    using KS = Stats::HTOKolmogorovSmirnov;

    KS* AddNormalKS(bool useSample, double field = 0, Stats::Decision decision = Stats::kDRetain) {
        KS* ks = AddTest<KS>(Stats::kCOneSample, Stats::kAOKolmogorovSmirnov, decision, kNormal,
                             {{field}, {10.0}, {2.0}});
        ks->fIsUseSample = useSample;
        return ks;
    }
    KS* AddLilliefors(double field, Stats::Decision decision = Stats::kDReject,
                      const char* key = kNormalLill) {
        KS* lill = AddTest<KS>(Stats::kCOneSample, Stats::kAOLilliefors, decision, key, {{field}});
        lill->fIsUseSample = true;
        return lill;
    }
    HTest* AddChiSquare() {
        HTest* chi = AddTest(Stats::kCOneSample, Stats::kAOChiSquare, Stats::kDRetain,
                             "DefaultEqualProbabilities_O_ChiSquare_1", {{0}});
        AddStatistics(chi, "", {{"TotalN", 20}, {"AsymptoticSig2Tailed", 0.202}});
        return chi;
    }
};

class SummaryTest : public ::testing::Test, public SummaryEnv {};

TEST_F(SummaryTest, WritesOneRowPerTestAndABlockPerUnblockedTest) {
    AddField("score").SetLabel("Test score");
    AddField("group");
    AddChiSquare();
    HTest* kw = AddTest(Stats::kCIndependentSamples, Stats::kAIKruskalWallis, Stats::kDReject,
                        "DefaultAllDistinctValuesUsed_I_KruskalWallis_2", {{0}, {1}});
    AddStatistics(kw, "", {{"AsymptoticSig2Tailed", 0.0001}});
    HTest* sign =
        AddTest(Stats::kCRelatedSamples, Stats::kARSign, Stats::kDUnknown, "R_Sign_2", {{0}, {1}});
    HTest* moses = AddTest(Stats::kCIndependentSamples, Stats::kAIMoses, Stats::kDUnknown,
                           "DefaultAllDistinctValuesUsed_I_Moses_2", {{0}, {1}});
    AddMessage(moses, 222328, Stats::kMError); // belongs to a pair: does not block
    AddMessage(sign, 12345, Stats::kMError, "", {3.0});
    // The document carries a significance the engine could not decide on.
    AddStatistics(sign, "", {{"ExactSig2Tailed", 0.25}});
    AddStatistics(moses, "", {{"ExactSig1Tailed", 0.5}});
    Write();

    EXPECT_EQ(OutlineOf(),
              (Strings{"table: Hypothesis Test Summary", "# One-Sample Chi-Square Test",
                       "  # Test score", "    table: One-Sample Chi-Square Test Summary",
                       "# Independent-Samples Kruskal-Wallis Test", "  # Test score across group",
                       "    table: Independent-Samples Kruskal-Wallis Test Summary",
                       "# Independent-Samples Moses Test of Extreme Reaction",
                       "  # Test score across group",
                       "    table: Independent-Samples Moses Test of Extreme "
                       "Reaction Summary"}));

    const FlatTable summary = Table("Hypothesis Test Summary");
    EXPECT_EQ(summary.fNode->fSubtype, "Hypothesis Test Summary");
    EXPECT_EQ(summary.fNode->fMinDataColumnWidth, 100);
    EXPECT_EQ(summary.fNode->fMaxDataColumnWidth, 200);
    EXPECT_EQ(summary.fRows, (Strings{"1", "2", "3", "4"}));
    EXPECT_EQ(summary.fColumns, (Strings{"Null Hypothesis", "Test", "Sig.", "Decision"}));
    EXPECT_EQ(summary.At("1", "Null Hypothesis"), "DefaultEqualProbabilities_O_ChiSquare_1");
    EXPECT_EQ(summary.At("2", "Test"), "Independent-Samples Kruskal-Wallis Test");
    EXPECT_EQ(summary.At("1", "Sig."), "0.202");
    EXPECT_EQ(summary.At("2", "Sig."), "<0.001");
    EXPECT_EQ(summary.At("1", "Decision"), "Retain the null hypothesis.");
    EXPECT_EQ(summary.At("2", "Decision"), "Reject the null hypothesis.");
    // The blocked test keeps its row: missing significance, the message as its note.
    EXPECT_EQ(summary.At("3", "Decision"), "Unable to compute.");
    EXPECT_EQ(summary.At("3", "Sig."), ".");
    EXPECT_EQ(summary.NotesAt("3", "Sig."), Strings{"12345"});
    // An undecided test without a blocking message shows no significance either.
    EXPECT_EQ(summary.At("4", "Decision"), "Unable to compute.");
    EXPECT_EQ(summary.At("4", "Sig."), ".");
    EXPECT_EQ(summary.NotesAt("1", "Sig."), Strings{});
    // Only asymptotic significances: the column says so once.
    EXPECT_EQ(summary.LabelNotes("Sig."), (Strings{"The significance level is 0.050.",
                                                   "Asymptotic significance is displayed."}));
}

TEST_F(SummaryTest, AModelWithoutTestsWritesNoTables) {
    AddField("score");
    Write();
    EXPECT_TRUE(Tables().empty());
}

TEST_F(SummaryTest, FootnoteModesFollowTheKindsOfTests) {
    struct Case {
        std::function<void(SummaryEnv&)> fBuild;
        int fMode;
        Strings fColumnNotes;
    };
    const std::string level = "The significance level is 0.050.";
    const std::vector<Case> cases = {
        {[](SummaryEnv& t) { t.AddChiSquare(); },
         NOPROutput::kFMAsymptotic,
         {level, "Asymptotic significance is displayed."}},
        {[](SummaryEnv& t) { t.AddNormalKS(true); },
         NOPROutput::kFMLillieforsCorrected,
         {level, "HTSFootNoteFootNoteFisherLillAsymp"}},
        {[](SummaryEnv& t) {
             t.AddNormalKS(false);
             t.AddLilliefors(0);
         },
         NOPROutput::kFMMonteCarlo,
         {"Sig 0.050 Lill 10000 samples ^ 3 seed ..."}},
        {[](SummaryEnv& t) {
             t.AddNormalKS(false);
             t.AddLilliefors(0);
             t.AddChiSquare();
         },
         NOPROutput::kFMMixed,
         {level}},
        {[](SummaryEnv& t) {
             t.AddNormalKS(true);
             t.AddChiSquare();
         },
         NOPROutput::kFMMixed,
         {level}},
    };
    for (size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE("case " + std::to_string(i));
        SummaryEnv t;
        t.AddField("x");
        t.fStats.fNormalFromSample = true;
        cases[i].fBuild(t);
        auto output = t.Output();
        EXPECT_EQ(output->ComputeFootnoteMode(), cases[i].fMode);
        output->MakeHypothesisSummary();
        EXPECT_EQ(t.Table("Hypothesis Test Summary").LabelNotes("Sig."), cases[i].fColumnNotes);
    }
}

TEST_F(SummaryTest, MixedModeFootnotesTheSingleCells) {
    AddField("x");
    AddField("y");
    fStats.fNormalFromSample = true;
    AddStatistics(AddNormalKS(false, 0), "", {{"AsymptoticSig2Tailed", 0.2}});
    AddStatistics(AddLilliefors(0), "", {{"AsymptoticSig2Tailed", 0.03}});
    AddStatistics(AddNormalKS(true, 1), "", {{"AsymptoticSig2Tailed", 0.4}}); // no companion
    AddTest(Stats::kCOneSample, Stats::kAOKolmogorovSmirnov, Stats::kDRetain,
            "UniformDistribution_O_KolmogorovSmirnov_3", {{0}, {0}, {1}});
    AddStatistics(AddChiSquare(), "", {{"ExactSig", 0.5}});
    Write();

    const FlatTable summary = Table("Hypothesis Test Summary");
    EXPECT_EQ(summary.LabelNotes("Sig."), Strings{"The significance level is 0.050."});
    // The companion's significance, with the simulation's note.
    EXPECT_EQ(summary.At("1", "Sig."), "0.030");
    EXPECT_EQ(summary.NotesAt("1", "Sig."), Strings{"Lill 10000 samples ^ 2 seed ..."});
    EXPECT_EQ(summary.At("2", "Sig."), "0.400");
    EXPECT_EQ(summary.NotesAt("2", "Sig."), Strings{"HTSFootNoteFootNoteFisherLillAsymp"});
    EXPECT_EQ(summary.NotesAt("3", "Sig."), Strings{"Asymptotic significance is displayed."});
    EXPECT_EQ(summary.At("4", "Sig."), "0.500");
    EXPECT_EQ(summary.NotesAt("4", "Sig."), Strings{"HTSFootNoteShowExact"});
}

TEST_F(SummaryTest, LillieforsCompanionReplacesDecisionAndSignificance) {
    AddField("x");
    AddField("y");
    fStats.fNormalFromSample = true;
    KS* ks = AddNormalKS(true, 0, Stats::kDRetain);
    AddStatistics(ks, "", {{"AsymptoticSig2Tailed", 0.2}});
    AddStatistics(AddLilliefors(1), "", {{"AsymptoticSig2Tailed", 0.9}}); // another field
    KS* lill = AddLilliefors(0, Stats::kDReject);
    AddStatistics(lill, "", {{"AsymptoticSig2Tailed", 0.012}});
    AddLilliefors(0, Stats::kDRetain); // a second match; the first one counts
    AddLilliefors(0, Stats::kDRetain, "UniformDistribution_O_Lilliefors_3");
    HTest* poisson = AddTest(Stats::kCOneSample, Stats::kAOKolmogorovSmirnov, Stats::kDRetain,
                             "PoissonDistribution_O_KolmogorovSmirnov_2", {{0}, {3}});
    Write();

    const FlatTable summary = Table("Hypothesis Test Summary");
    EXPECT_EQ(summary.At("1", "Sig."), "0.012");
    EXPECT_EQ(summary.At("1", "Decision"), "Reject the null hypothesis.");
    // With the Poisson test beside it the footnotes go on the cells.
    EXPECT_EQ(summary.NotesAt("1", "Sig."), Strings{"Lill 10000 samples ^ 2 seed ..."});
    EXPECT_EQ(summary.LabelNotes("Sig."), Strings{"The significance level is 0.050."});

    auto output = Output();
    EXPECT_EQ(output->FindLillieforsTests(ks), (std::vector<int>{1, 2}));
    EXPECT_TRUE(output->FindLillieforsTests(poisson).empty());
    output->fNormalFromSample = false;
    EXPECT_TRUE(output->FindLillieforsTests(ks).empty());
    // A companion's block carries the simulated significance.
    const FlatTable statistics = Table("One-Sample Kolmogorov-Smirnov Normal Test Summary");
    EXPECT_EQ(statistics.At("AsymptoticSig2Tailed"), "0.200");
    EXPECT_EQ(statistics.At("MonteCarloSig2Tailed/Sig."), "0.012");
}

TEST_F(SummaryTest, LillieforsLookupAssertsOnRecordsThatCannotBeCompanions) {
    AddField("x");
    fStats.fNormalFromSample = true;
    KS* ks = AddNormalKS(false);
    KS* lill = AddLilliefors(0);
    lill->fIsUseSample = false;
    auto output = Output();
    EXPECT_EQ(AssertionText([&] { output->FindLillieforsTests(ks); }),
              "theLill->fIsUseSample @ backend/nonpar/NOPROutput");
    lill->fIsUseSample = true;
    lill->fConditionParameters[0].fValues[0] = -1;
    EXPECT_EQ(AssertionText([&] { output->FindLillieforsTests(ks); }),
              "lillVarInd >= 0 @ backend/nonpar/NOPROutput");
    ks->fConditionParameters[0].fValues[0] = -2;
    EXPECT_EQ(AssertionText([&] { output->FindLillieforsTests(ks); }),
              "testVarInd >= 0 @ backend/nonpar/NOPROutput");
}

TEST_F(SummaryTest, NormalKSWithFewerThanFiveCasesCannotBeComputed) {
    AddField("x");
    KS* ks = AddNormalKS(true);
    AddStatistics(ks, "TotalN", {{"N", 4}});
    AddStatistics(ks, "", {{"AsymptoticSig2Tailed", 0.3}});
    AddChiSquare();
    Write();

    const FlatTable summary = Table("Hypothesis Test Summary");
    EXPECT_EQ(summary.At("1", "Sig."), ".");
    EXPECT_EQ(summary.NotesAt("1", "Sig."), Strings{"HTSFootNoteFisherCantCompute"});
    const FlatTable statistics = Table("One-Sample Kolmogorov-Smirnov Normal Test Summary");
    EXPECT_EQ(statistics.At("AsymptoticSig2Tailed"), ".");
    EXPECT_EQ(statistics.NotesAt("AsymptoticSig2Tailed"), Strings{"HTSFootNoteFisherCantCompute"});
}

TEST_F(SummaryTest, NormalKSLowerBoundShowsAsPointTwo) {
    AddField("x");
    KS* ks = AddNormalKS(true);
    ks->fIsLowerBound = true;
    AddStatistics(ks, "TotalN", {{"N", 5}});
    AddStatistics(ks, "", {{"AsymptoticSig2Tailed", 0.9}});
    AddChiSquare();
    Write();

    const FlatTable summary = Table("Hypothesis Test Summary");
    EXPECT_EQ(summary.At("1", "Sig."), "0.200");
    EXPECT_EQ(summary.NotesAt("1", "Sig."), (Strings{"HTSFootNoteFootNoteFisherLillAsymp",
                                                     "HTSFootNoteFootNoteFisherLowerBound"}));
    const FlatTable statistics = Table("One-Sample Kolmogorov-Smirnov Normal Test Summary");
    EXPECT_EQ(statistics.At("AsymptoticSig2Tailed"), "0.200");
    EXPECT_EQ(statistics.NotesAt("AsymptoticSig2Tailed"),
              Strings{"HTSFootNoteFootNoteFisherLowerBound"});
    EXPECT_EQ(statistics.LabelNotes("AsymptoticSig2Tailed"),
              Strings{"HTSFootNoteFootNoteFisherLillifors"});
}

// ---------------------------------------------------------------------------
// Condition texts

class ConditionTextTest : public OutputTest {
protected:
    std::string Fill(const std::string& pattern, const std::function<void(BpComposite&)>& fill) {
        BpComposite text(pattern, false);
        fill(text);
        text.Finish();
        return text.Resolve(fProcedure).fText;
    }
};

TEST_F(ConditionTextTest, VariablesWriterNamesFieldsAndReportsBadIndices) {
    AddField("score").SetLabel("Test score");
    AddField("grade");
    auto output = Output();
    const NOPROutput::Condition condition = {{1, {0, 1}}, {2, {}}, {3, {1, 7, 0}}};
    EXPECT_EQ(Fill("^1; ^2", [&](BpComposite& c) { output->AddVariables(c, condition, 0, false); }),
              "Test score; grade");
    EXPECT_EQ(
        Fill("[%1:, ^1]1", [&](BpComposite& c) { output->AddVariables(c, condition, 0, true); }),
        "Test score, grade");
    EXPECT_EQ(
        Fill("[%1:, ^1]1", [&](BpComposite& c) { output->AddVariables(c, condition, 2, true); }),
        "grade, Unknown Variable");
    EXPECT_EQ(Fill("<^1>", [&](BpComposite& c) { output->AddVariables(c, condition, 1, false); }),
              "< >");
    for (int bad : {-1, 3}) {
        EXPECT_EQ(
            Fill("^1", [&](BpComposite& c) { output->AddVariables(c, condition, bad, false); }),
            "Incorrect Parameter Index");
    }
    fStats.GetFieldInfo(1)->fFieldIndex = 5;
    EXPECT_EQ(AssertionText([&] {
                  Fill("^1", [&](BpComposite& c) { output->AddVariables(c, condition, 0, false); });
              }),
              "curIndex == data->fFieldIndex @ backend/nonpar/NOPROutput");
}

TEST_F(ConditionTextTest, ValuesWriterUsesTheFormatOfNumericVariablesOnly) {
    VEXA_Variable& visit = AddField("visit");
    visit.SetFormat({VEXA_Format::kDate, 11, 0});
    VEXA_Variable& city = AddField("city", 8);
    auto output = Output();
    const NOPROutput::Condition condition = {{1, {19782, 19783}}, {2, {0.25}}};
    // Dates come in days and show in the variable's format.
    EXPECT_EQ(Fill("[%1:, ^1]1",
                   [&](BpComposite& c) { output->AddValues(c, condition, 0, &visit, true); }),
              "29-FEB-2024, 01-MAR-2024");
    EXPECT_EQ(Fill("^1", [&](BpComposite& c) { output->AddValues(c, condition, 1, &city, false); }),
              "0.250");
    EXPECT_EQ(
        Fill("^1", [&](BpComposite& c) { output->AddValues(c, condition, 1, nullptr, false); }),
        "0.250");
    EXPECT_EQ(
        Fill("^1", [&](BpComposite& c) { output->AddValues(c, condition, 2, nullptr, false); }),
        "Incorrect Parameter Index");
}

TEST_F(ConditionTextTest, CategoriesWriterUsesCategoriesThenValuesNotInThem) {
    AddField("score");
    VEXA_Variable& grade = AddField("grade");
    grade.ValueLabels().Add(1.0, "low");
    grade.ValueLabels().Add(2.0, "high");
    AddCategory(1, 1.0);
    AddCategory(1, 2.0);
    AddField("city", 8);
    auto output = Output();
    const NOPROutput::Condition condition = {{1, {1}},    {2, {0, kCFSysmis, 1, 9, 12, 1}},
                                             {3, {0, 1}}, {4, {}},
                                             {5, {2}},    {6, {kCFSysmis}}};
    const Strings notInCategories = {"maybe"};
    std::size_t cursor = 0;
    EXPECT_EQ(Fill("[%1:, ^1]1",
                   [&](BpComposite& c) {
                       output->AddCategories(c, condition, 0, 1, notInCategories, cursor, true);
                   }),
              "low, ., high, maybe, Unknown Variable");
    cursor = 0;
    EXPECT_EQ(
        Fill("^1",
             [&](BpComposite& c) { output->AddCategories(c, condition, 0, 3, {}, cursor, false); }),
        " ");
    // The field parameter must name exactly one field.
    EXPECT_EQ(
        Fill("^1",
             [&](BpComposite& c) { output->AddCategories(c, condition, 2, 1, {}, cursor, false); }),
        "Unknown Variable");
    EXPECT_EQ(
        Fill("^1",
             [&](BpComposite& c) { output->AddCategories(c, condition, 0, 6, {}, cursor, false); }),
        "Incorrect Parameter Index");
    // A missing code of a string field is a blank value.
    EXPECT_EQ(
        Fill("<^1>",
             [&](BpComposite& c) { output->AddCategories(c, condition, 4, 5, {}, cursor, false); }),
        "<>");
}

TEST_F(ConditionTextTest, NullHypothesisCellByConditionKey) {
    AddField("score");
    AddTest(Stats::kCOneSample, Stats::kAOChiSquare, Stats::kDRetain,
            "DefaultEqualProbabilities_O_ChiSquare_2", {{0}});
    AddTest(Stats::kCOneSample, Stats::kAOChiSquare, Stats::kDRetain, "R_Sign_2", {{0}, {0}});
    AddTest(Stats::kCOneSample, Stats::kAOChiSquare, Stats::kDRetain,
            "UserSpecifiesProbabilities_O_ChiSquare_1", {{0}});
    Write();
    const FlatTable summary = Table("Hypothesis Test Summary");
    EXPECT_EQ(summary.At("1", "Null Hypothesis"),
              "Unknown Condition Key: DefaultEqualProbabilities_O_ChiSquare_2");
    EXPECT_EQ(summary.At("2", "Null Hypothesis"), "Unknown Condition Key: R_Sign_2");
    EXPECT_EQ(summary.At("3", "Null Hypothesis"), "UserSpecifiesProbabilities_O_ChiSquare_1");

    AddTest(Stats::kCOneSample, Stats::kAOChiSquare, Stats::kDRetain,
            "UserSpecifiesProbabilities_O_ChiSquare_1", {{0}, {1}});
    EXPECT_EQ(AssertionText([&] { Write(); }),
              "data.fParameters.size() == 1 @ backend/nonpar/NOPROutput");
}

TEST_F(ConditionTextTest, StandardDeviationOfDateVariablesIsInSeconds) {
    VEXA_Variable& visit = AddField("visit");
    visit.SetFormat({VEXA_Format::kDate, 11, 0});
    VEXA_Variable& weight = AddField("weight");
    weight.SetFormat({VEXA_Format::kNumber, 8, 2});
    HTest* ks = AddTest(Stats::kCOneSample, Stats::kAOKolmogorovSmirnov, Stats::kDRetain, kNormal,
                        {{0}, {19782}, {1.5}});
    auto output = Output();
    auto deviation = [&](const VEXA_Variable* variable) {
        return Fill("^1", [&](BpComposite& c) { output->AddStandardDeviation(c, ks, variable); });
    };
    EXPECT_EQ(deviation(&visit), "129600");
    EXPECT_EQ(deviation(&weight), "1.500"); // one decimal more than the variable shows
    EXPECT_EQ(deviation(nullptr), "1.500");
    ks->fConditionParameters.pop_back();
    EXPECT_EQ(deviation(&visit), "Incorrect Parameter Index");
}

// ---------------------------------------------------------------------------
// Splits

class SplitTest : public OutputTest {
protected:
    SplitTest() {
        VEXA_Variable& gender = fSource.AddVariable("gender", 0);
        gender.ValueLabels().Add(2.0, "Female");
        fSource.AddVariable("site", 0).SetFormat({VEXA_Format::kNumber, 8, 0});
        AddField("score"); // field 0 is variable 2
        fSplit.fSplitVariables = {0, 1};
        fSplit.fSplitValues = {2.0, 7.0};
        fStats.SetSplit(&fSplit);
        HTest* chi = AddTest(Stats::kCOneSample, Stats::kAOChiSquare, Stats::kDRetain,
                             "DefaultEqualProbabilities_O_ChiSquare_1", {{0}});
        AddStatistics(chi, "", {{"TotalN", 20}});
    }
    CFSplitDocument fSplit;
};

TEST_F(SplitTest, SplitsSharingOneHeadingBecomeRowDimensions) {
    fSplit.fHeading = false;
    EXPECT_EQ(NOPRProcCustom::MakeSplitHeading(fStats, &fProcedure), nullptr);
    Write();
    const FlatTable summary = Table("Hypothesis Test Summary");
    EXPECT_EQ(summary.fRows, Strings{"Female | 7 | 1"});
    EXPECT_EQ(summary.fNode->fDimensions.at(0).fName, "gender");
    EXPECT_EQ(Table("One-Sample Chi-Square Test Summary").fRows, Strings{"Female | 7 | TotalN"});
}

TEST_F(SplitTest, SplitsWithHeadingsGetTheirOwnHeading) {
    std::unique_ptr<BpHeading> heading(NOPRProcCustom::MakeSplitHeading(fStats, &fProcedure));
    ASSERT_NE(heading, nullptr);
    NOPROutput output(&fProcedure, heading.get(), &fSource, &fStats);
    output.fMakeViews = true;
    output.MakeOutput();
    EXPECT_EQ(OutlineOf(),
              (Strings{"# gender = Female, site = 7", "  table: Hypothesis Test Summary",
                       "  # One-Sample Chi-Square Test", "    # score",
                       "      table: One-Sample Chi-Square Test Summary"}));
    EXPECT_EQ(Table("Hypothesis Test Summary").fRows, Strings{"1"});
    // Field charts go under the split, not under the last test.
    EXPECT_EQ(fProcedure.CurrentHeading().Node(), heading->Node());

    std::string suffix;
    bool append = false;
    fStats.GetSplitViewTitle(suffix, append);
    EXPECT_EQ(suffix, "gender = Female, site = 7");
    EXPECT_TRUE(append);
    fStats.SetSplit(nullptr);
    fStats.GetSplitViewTitle(suffix, append);
    EXPECT_EQ(suffix, "");
    EXPECT_FALSE(append);
    EXPECT_EQ(NOPRProcCustom::MakeSplitHeading(fStats, &fProcedure), nullptr);
}

namespace {
// A small result document with one runs test; `root` lets a test spoil it.
std::string Document(const std::string& root, double cutPoint) {
    return "<" + root +
           "><PMMLModel modelType=\"NonParametricTests\"/>"
           "<DescriptiveModel><DescriptiveSummary><Counts totalCount=\"10\"/>"
           "</DescriptiveSummary></DescriptiveModel>"
           "<Extension><NPAROutput>"
           "<DataDictionary>"
           "<DataField index=\"0\" name=\"score\" optype=\"continuous\" dataType=\"double\"/>"
           "<DataField index=\"1\" name=\"region\" optype=\"categorical\" dataType=\"double\"/>"
           "</DataDictionary>"
           "<NonParametricTests number=\"1\" sigLevel=\"0.05\" confidenceLevel=\"0.95\">"
           "<Algorithm name=\"ORuns\" classification=\"One_Sample\" decision=\"retain\">"
           "<StructuredTable name=\"Condition\">"
           "<Attribute name=\"ConditionKey\" value=\"ACutPointIsSpecified_O_Runs_2\"/>"
           "<Attribute name=\"%1\" value=\"0\"/><Attribute name=\"%2\" value=\"" +
           std::to_string(cutPoint) +
           "\"/></StructuredTable>"
           "<StructuredTable name=\"StatisticsResult\">"
           "<Attribute name=\"TotalN\" value=\"10\"/>"
           "<Attribute name=\"AsymptoticSig2Tailed\" value=\"0.5\"/></StructuredTable>"
           "</Algorithm></NonParametricTests><FieldInfos/>"
           "</NPAROutput></Extension></" +
           root + ">";
}
} // namespace

TEST(ProcedureOutput, StopsAtTheFirstSplitThatCannotBeRead) {
    VEXA_DataSource source;
    source.AddVariable("score", 0);
    source.AddVariable("region", 0).ValueLabels().Add(1.0, "North");
    BpProcedure output("Nonparametric Tests", nullptr, &source);
    NOPRProcCustom procedure(&output, &source);

    std::vector<CFSplitDocument> splits(3);
    const char* roots[] = {"StatXML", "statxml", "StatXML"};
    for (size_t i = 0; i < splits.size(); ++i) {
        splits[i].fSplitVariables = {1};
        splits[i].fSplitValues = {static_cast<double>(i + 1)};
        splits[i].fResultDocument = Document(roots[i], 2.5);
    }
    std::vector<std::string> models;
    EXPECT_FALSE(procedure.ProduceOutput(models, splits));
    EXPECT_TRUE(splits[1].WasRead());
    EXPECT_FALSE(splits[2].WasRead());

    std::vector<std::string> outline;
    Outline(output.Root(), 0, outline);
    EXPECT_EQ(outline, (Strings{"# region = North", "  table: Hypothesis Test Summary",
                                "  # One-Sample Runs Test", "    # score",
                                "      table: One-Sample Runs Test Summary"}));
}
