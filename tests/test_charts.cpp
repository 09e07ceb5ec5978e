// Charts: template text edits, the box-plot values, the network edge types,
// frame sizes, colours and patterns, the runs chart's room for the line
// under the title, tests that get no chart, and every chart class on one
// model whose documents must parse as XML.
#include <gtest/gtest.h>

#include <map>
#include <pugixml.hpp>

#include "backend/nonpar/Boxplot.h"
#include "backend/nonpar/FieldInformation.h"
#include "backend/nonpar/IndependentSamples.h"
#include "backend/nonpar/NOPROutputStats.h"
#include "backend/nonpar/NOPRPairwiseChart.h"
#include "backend/nonpar/OneSample.h"
#include "backend/nonpar/OneSampleRunsChart.h"
#include "backend/nonpar/RSHistogram.h"
#include "backend/nonpar/RelatedSamples.h"
#include "host/bp/BpOutput.h"
#include "host/chart/ChartString.h"
#include "host/chart/VarDataProcessor.h"
#include "host/chart/XDocument.h"
#include "host/chart/XUtility.h"
#include "host/vexa/VEXA_DataSource.h"

namespace {

using Stats = NOPROutputStats;
using Context = NOPRChartContext;

const char* const kTemplates[] = {"NPARBoxplot.viztemplate",
                                  "NPARHistogram.viztemplate",
                                  "NPARStackedBar.viztemplate",
                                  "NPARChiSquareTest.viztemplate",
                                  "NPARKolmogorovSmirnov.viztemplate",
                                  "NPARRelatedSamplesHistogram.viztemplate",
                                  "NPAROneSampleRunsTest.viztemplate",
                                  "FacetBarChart.viztemplate",
                                  "NPARWilcoxonPairSignedRank.viztemplate",
                                  "GLMMPairwiseContrasts.viztemplate"};

// Points the chart layer at the source tree's templates and collects the
// charts sent while it lives.
class ChartOutput {
public:
    ChartOutput() : fProcedure("Nonparametric Tests", nullptr, nullptr) {
        XDocument::setTemplateFolder(NPTESTS_SOURCE_DIR "/resources/templates");
    }
    ~ChartOutput() { XDocument::setTemplateFolder({}); }

    std::vector<const BpChartNode*> Charts() const {
        std::vector<const BpChartNode*> charts;
        for (const auto& item : fProcedure.Root().fChildren) {
            if (item->fKind == BpItem::kChart) {
                charts.push_back(static_cast<const BpChartNode*>(item.get()));
            }
        }
        return charts;
    }
    const BpChartNode* Only() const {
        const auto charts = Charts();
        return charts.size() == 1 ? charts.front() : nullptr;
    }

private:
    BpProcedure fProcedure;
};

const BpChartNode::Variable* Variable(const BpChartNode& chart, std::string_view source,
                                      std::string_view name) {
    for (const auto& each : chart.fSources) {
        for (const auto& variable : each.fVariables) {
            if (each.fName == source && variable.fName == name) {
                return &variable;
            }
        }
    }
    return nullptr;
}

std::vector<double> Numbers(const BpChartNode::Variable* variable) {
    std::vector<double> out;
    for (const auto& value : variable ? variable->fValues : std::vector<BpChartNode::Value>{}) {
        out.push_back(std::holds_alternative<double>(value) ? std::get<double>(value) : -1.0);
    }
    return out;
}

bool ParsesAsXML(const std::string& text) {
    pugi::xml_document document;
    return document.load_string(text.c_str()) &&
           std::string_view(document.document_element().name()) == "visualization";
}

Stats::ConditionParameter Parameter(int number, std::vector<double> values) {
    return {number, std::move(values)};
}

// A model with six fields: 0 score (continuous), 1 group (three labelled
// categories), 2 before, 3 after, 4 third, 5 fourth.
class ChartModel {
public:
    ChartModel() {
        const char* names[] = {"score", "group", "before", "after", "third", "fourth"};
        for (int i = 0; i < 6; ++i) {
            VEXA_Variable& variable = fData.AddVariable(names[i], 0);
            Stats::FieldInfoRecord* record = fStats.AppendFieldInfo();
            record->fFieldIndex = i;
            record->fVariable = &variable;
        }
        fData.GetVariable(0)->SetLabel("Score & <points>");
        fStats.SetDataSource(&fData);
        fStats.fSigLevel = 0.05;
        Stats::FieldInfoRecord* score = fStats.GetFieldInfo(0);
        score->fHasInfo = true;
        score->fTotal = 30;
        score->fMean = 4.5;
        score->fStdDev = 1.25;
        score->fDistribution.fRows = {{1, 4}, {2, 10}, {3, 16}};
        Stats::FieldInfoRecord* group = fStats.GetFieldInfo(1);
        group->fHasInfo = true;
        group->fIsCategorical = 1;
        group->fTotal = 30;
        group->fDistribution.fRows = {{1, 10}, {2, 12}, {3, 8}};
        for (int j = 0; j < 3; ++j) {
            Stats::FieldValueEntry& entry = group->fValues.emplace_back();
            entry.fIndex = j;
            entry.fValue.SetCompleteValue(CFDatum(j + 1.0), group->fVariable);
            entry.fLabel = std::string("Group ") + static_cast<char>('A' + j);
        }
    }

    template <typename Record>
    Record* Add(Stats::Classification classification, Stats::Algorithm algorithm,
                std::vector<Stats::ConditionParameter> parameters) {
        auto* test =
            dynamic_cast<Record*>(fStats.CreateTest(classification, algorithm, Stats::kDReject));
        test->fConditionParameters = std::move(parameters);
        return test;
    }

    static Stats::BoxPlotGroup BoxGroup(int index, double shift) {
        Stats::BoxPlotGroup group;
        group.fGroupIndex = index;
        group.fMeanOfRank = 10.5 + index;
        group.fBox.fRows = {{1 + shift, 2 + shift, 3 + shift, 4 + shift, 5 + shift}};
        group.fOutliers.fRows = {{9 + shift, 17}};
        return group;
    }
    static Stats::MultipleComparison Pairwise() {
        Stats::MultipleComparison comparison;
        comparison.fKind = Stats::MultipleComparison::kPairwise;
        comparison.fInfo.fRows = {{0, 1, 2}, {4.5, 9.0, 12.5}};
        comparison.fContent.fColumnNames = {
            "Sample1", "Sample2", "TestStatistic", "StdError", "StdTestStatistic", "Sig", "AdjSig"};
        comparison.fContent.fRows = {{0, 1, 1.0, 1.0, 1.0, 0.01, 0.03},
                                     {0, 2, 1.0, 1.0, 1.0, 0.02, 0.05},
                                     {1, 2, 1.0, 1.0, 1.0, 0.30, 0.90}};
        return comparison;
    }

    // One test of every algorithm that has a chart.
    void AddEveryTest() {
        const auto one = Stats::kCOneSample;
        const auto related = Stats::kCRelatedSamples;
        const auto independent = Stats::kCIndependentSamples;
        auto* chi = Add<Stats::HTOChiSquare>(one, Stats::kAOChiSquare, {Parameter(1, {1})});
        chi->fTable.fColumnNames = {"Category", "Observed", "Expected"};
        chi->fTable.fRows = {{0, 10, 10}, {1, 12, 10}, {2, 8, 10}, {-1, 1, 0}};
        auto* binomial = Add<Stats::HTOBinomial>(
            one, Stats::kAOBinomial,
            {Parameter(1, {0}), Parameter(2, {2.5}), Parameter(3, {0.5}), Parameter(4, {0.5})});
        binomial->fConditionKey = "ACutPointIsSpecified_O_Binomial_4";
        binomial->fTable.fRowNames = {"Observed", "Hypothesized"};
        binomial->fTable.fRows = {{0.4, 0.6}, {0.5, 0.5}};
        auto* runs = Add<Stats::HTORuns>(one, Stats::kAORuns, {Parameter(1, {0})});
        runs->fMean = 15.5;
        runs->fStdDev = 2.5;
        runs->fObservedRunNumber = 12;
        auto* wilcoxon = Add<Stats::HTOWilcoxonSignedRanks>(one, Stats::kAOWilcoxonSignedRanks,
                                                            {Parameter(1, {0})});
        wilcoxon->fHypotheticalMedian = 2.0;
        wilcoxon->fObservedMedian = 2.5;
        auto* ks = Add<Stats::HTOKolmogorovSmirnov>(
            one, Stats::kAOKolmogorovSmirnov,
            {Parameter(1, {0}), Parameter(2, {4.5}), Parameter(3, {1.25})});
        ks->fConditionKey = "NormalDistribution_O_KolmogorovSmirnov_3";
        for (auto algorithm : {Stats::kARSign, Stats::kARWilcoxonSignedRanks}) {
            auto* pair = dynamic_cast<Stats::HTRDifferences*>(
                fStats.CreateTest(related, algorithm, Stats::kDRetain));
            pair->fConditionParameters = {Parameter(1, {2}), Parameter(2, {3})};
            pair->fPositiveDifferences = 7;
            pair->fNegativeDifferences = 5;
            pair->fTies = 2;
            pair->fDistribution.fRows = {{-2, 3}, {-1, 2}, {1, 4}, {2, 3}};
        }
        auto* cochran =
            Add<Stats::HTRCochransQ>(related, Stats::kARCochransQ, {Parameter(1, {2, 3, 4})});
        cochran->fTable.fRowNames = {"2", "3", "4"};
        cochran->fTable.fColumnNames = {"Yes", "No"};
        cochran->fTable.fRows = {{10, 20}, {15, 15}, {0, 30}};
        cochran->fComparison = Pairwise();
        auto* mcnemar = Add<Stats::HTRMcNemar>(related, Stats::kARMcNemar,
                                               {Parameter(1, {2}), Parameter(2, {3})});
        mcnemar->fComparison.fRowField = 2;
        mcnemar->fComparison.fColumnField = 3;
        mcnemar->fComparison.fTable.fRowNames = {"0", "1"};
        mcnemar->fComparison.fTable.fColumnNames = {"0", "1"};
        mcnemar->fComparison.fTable.fRows = {{10, 6}, {2, 12}};
        auto* homogeneity = Add<Stats::HTRMarginalHomogeneity>(
            related, Stats::kARMarginalHomogeneity, {Parameter(1, {2}), Parameter(2, {3})});
        homogeneity->fComparison = mcnemar->fComparison;
        for (auto algorithm : {Stats::kARFriedmansTwoWayByRanks, Stats::kARKendallsCoefficient}) {
            auto* ranks = dynamic_cast<Stats::HTRRanks*>(
                fStats.CreateTest(related, algorithm, Stats::kDReject));
            ranks->fConditionParameters = {Parameter(1, {2, 3, 4, 5})};
            for (int field = 2; field < 6; ++field) {
                Stats::VariableInformation& info = ranks->fVariables.emplace_back();
                info.fGroupIndex = field;
                info.fMeanOfRank = field / 2.0;
                info.fTable.fRows = {{1, 3}, {2, 4}, {3, 2}, {4, 1}};
            }
            ranks->fComparison = Pairwise();
        }
        const std::vector<Stats::ConditionParameter> twoFields = {Parameter(1, {0}),
                                                                  Parameter(2, {1})};
        auto* moses = Add<Stats::HTIMoses>(independent, Stats::kAIMoses, twoFields);
        moses->fBoxPlot.fGroupCount = 2;
        moses->fBoxPlot.fGroups = {BoxGroup(0, 0), BoxGroup(1, 2)};
        for (auto algorithm :
             {Stats::kAIMannWhitneyU, Stats::kAIWaldWolfowitzRuns, Stats::kAIKolmogorovSmirnov}) {
            auto* groups = dynamic_cast<Stats::HTIGroups*>(
                fStats.CreateTest(independent, algorithm, Stats::kDRetain));
            groups->fConditionParameters = twoFields;
            for (int g = 0; g < 2; ++g) {
                Stats::GroupRecord& group = groups->fGroups.emplace_back();
                group.fGroupIndex = g;
                group.fTable.fRows = {{1.5, 3.0 + g}, {2.5, 5.0 - g}};
            }
        }
        for (auto algorithm :
             {Stats::kAIKruskalWallis, Stats::kAIJonckheereTerpstra, Stats::kAIMedian}) {
            auto* box = dynamic_cast<Stats::HTIBoxPlotComparison*>(
                fStats.CreateTest(independent, algorithm, Stats::kDReject));
            box->fConditionParameters = twoFields;
            box->fBoxPlot.fGrandMedian = 3.25;
            box->fBoxPlot.fGroups = {BoxGroup(0, 0), BoxGroup(1, 1), BoxGroup(2, 2)};
            box->fComparison = Pairwise();
        }
    }

    // Runs every dispatcher on every test, the network charts, and both field
    // views of every field.
    void MakeEveryChart(const std::string& suffix) {
        for (const auto& test : fStats.GetHypothesisTests()) {
            OneSample(nullptr, &fStats).MakeView(test.get(), 0, suffix, !suffix.empty());
            IndependentSamples(nullptr, &fStats).MakeView(test.get(), suffix, !suffix.empty());
            RelatedSamples(nullptr, &fStats).MakeView(test.get(), suffix, !suffix.empty());
            const Stats::MultipleComparison* comparison = nullptr;
            if (auto* ranks = dynamic_cast<Stats::HTRRanks*>(test.get())) {
                comparison = &ranks->fComparison;
            } else if (auto* box = dynamic_cast<Stats::HTIBoxPlotComparison*>(test.get())) {
                comparison = &box->fComparison;
            } else if (auto* cochran = dynamic_cast<Stats::HTRCochransQ*>(test.get())) {
                comparison = &cochran->fComparison;
            }
            if (comparison) {
                NOPRPairwiseChart(nullptr, &fStats, test.get(), comparison)
                    .MakeChart(suffix, !suffix.empty());
            }
        }
        for (size_t i = 0; i < fStats.GetFieldInfos().size(); ++i) {
            for (bool categorical : {true, false}) {
                FieldInformation chart(nullptr, &fStats, categorical);
                chart.SetFieldIndex(static_cast<int>(i));
                chart.MakeChart(suffix, true);
            }
        }
    }

    VEXA_DataSource fData;
    Stats fStats;
};

} // namespace

TEST(ChartText, EditsTouchTheFirstMatchOnlyAndLeaveTextWithoutItAlone) {
    std::string text = "<a>xAxisText</a><b>xAxisText</b>";
    EXPECT_TRUE(Context::ReplaceFirst(text, "xAxisText", "Age"));
    EXPECT_EQ(text, "<a>Age</a><b>xAxisText</b>");
    EXPECT_TRUE(Context::InsertBefore(text, "</b>", "!"));
    EXPECT_TRUE(Context::InsertAfter(text, "</a>", "?"));
    EXPECT_EQ(text, "<a>Age</a>?<b>xAxisText!</b>");
    const std::string unchanged = text;
    EXPECT_FALSE(Context::ReplaceFirst(text, "yAxisText", "Age"));
    EXPECT_FALSE(Context::InsertBefore(text, "</graph>", "<x/>"));
    EXPECT_FALSE(Context::RemoveFirst(text, "<legend", "</legend>"));
    EXPECT_EQ(text, unchanged);

    std::string legends = "<legend a=\"1\"><t/></legend><legend/></legend>";
    EXPECT_TRUE(Context::RemoveFirst(legends, "<legend", "</legend>"));
    EXPECT_EQ(legends, "<legend/></legend>");
    EXPECT_EQ(Context::TemplateText(ChartString("a<b & \"c\"\n")),
              "a&lt;b &amp; &quot;c&quot;&#10;");
}

TEST(ChartText, ChartStringsAndTranscoding) {
    ChartString number;
    EXPECT_EQ(number.assignDouble(0.1, 16).str(), "0.1");
    EXPECT_EQ(number.assignDouble(2.0 / 3.0, 4).str(), "0.6667");
    EXPECT_EQ(number.assignDouble(kCFSysmis * 10, 6).str(), "");
    ChartString text("a\\nb\\nc");
    EXPECT_EQ(text.replaceSubstring("\\n", "\n"), 2);
    EXPECT_EQ(text.str(), "a\nb\nc");
    // Latin-1 bytes from the data become UTF-8; control characters blanks.
    EXPECT_EQ(XUtility::ChartStringFromLocalCodePage("caf\xE9\x01").str(), "caf\xC3\xA9 ");
    EXPECT_EQ(XUtility::ChartStringFromLocalCodePage("caf\xC3\xA9").str(), "caf\xC3\xA9");
    EXPECT_EQ(XUtility::ChartStringFromOLANG("x\xFFy").str(), "x\xEF\xBF\xBDy");
}

TEST(ChartData, SourcesStayRectangularAndRejectBadCells) {
    VarDataProcessor data;
    EXPECT_TRUE(data.AddDataSource("s", 0));
    EXPECT_FALSE(data.AddDataSource("s", 0));
    EXPECT_TRUE(data.AddVariable("s", "a", nullptr));
    EXPECT_TRUE(data.AddVariable("s", "b", nullptr));
    EXPECT_FALSE(data.AddVariable("t", "a", nullptr));
    EXPECT_TRUE(data.SetVariableValue("s", "a", 2, 1.5));
    EXPECT_TRUE(data.SetStringVariableValue("s", "b", 0, "x"));
    EXPECT_FALSE(data.SetVariableValue("s", "c", 0, 1.0));
    EXPECT_FALSE(data.SetVariableValue("s", "a", -1, 1.0));
    EXPECT_FALSE(data.SetVariableValue("s", "a", VarDataProcessor::kMaxRows, 1.0));
    EXPECT_TRUE(data.SetVariableValue("s", "a", 0, kCFSysmis));
    EXPECT_EQ(data.RowCount("s"), 3);
    const auto& b = data.Sources()[0].fVariables[1].fValues;
    ASSERT_EQ(b.size(), 3u);
    EXPECT_EQ(std::get<std::string>(b[0]), "x");
    EXPECT_TRUE(std::holds_alternative<std::monostate>(b[2]));
    EXPECT_TRUE(std::holds_alternative<std::monostate>(data.Sources()[0].fVariables[0].fValues[0]));
}

TEST(BoxPlot, ValuesReproduceTheBoxWithCasesPaddedAndLabelled) {
    using Value = Boxplot::BoxValue;
    const auto values = [](const std::vector<Value>& list) {
        std::vector<double> out;
        for (const Value& value : list) {
            out.push_back(value.fValue);
        }
        return out;
    };
    EXPECT_EQ(values(Boxplot::BoxValues({10, 20, 30, 40, 50}, {})),
              (std::vector<double>{10, 20, 20, 30, 50, 40, 40}));
    EXPECT_TRUE(Boxplot::BoxValues({10, 20, 30, 40}, {}).empty());

    // One low case, two high ones (one value twice: the later case number
    // wins). Low: 1 10 20 +20 +20, padded by its middle element to the high
    // list's 9 values (100 120 100 50 40 +40 +40 +40 +40).
    const std::vector<Value> list =
        Boxplot::BoxValues({10, 20, 30, 40, 50}, {{1, 7}, {100, 3}, {120, 4}, {100, 9}});
    EXPECT_EQ(values(list), (std::vector<double>{1, 10, 20, 20, 20, 20, 20, 20, 20, 30, 100, 120,
                                                 100, 50, 40, 40, 40, 40, 40}));
    ASSERT_TRUE(list[0].fHasLabel);
    EXPECT_EQ(list[0].fLabel, 7);
    EXPECT_FALSE(list[1].fHasLabel);
    EXPECT_EQ(list[10].fLabel, 9);
    EXPECT_EQ(list[11].fLabel, 4);

    // High list shorter: it is padded with its middle element, recomputed.
    EXPECT_EQ(values(Boxplot::BoxValues({10, 20, 30, 40, 50}, {{1, 1}, {2, 2}, {3, 3}})),
              (std::vector<double>{1, 2, 3, 10, 20, 20, 20, 20, 20, 30, 50, 40, 40, 40, 40, 40, 40,
                                   40, 40}));
}

TEST(BoxPlot, ChartDataCarryCategoriesLabelsAndMeanRanks) {
    ChartOutput output;
    ChartModel model;
    auto* test =
        model.Add<Stats::HTIKruskalWallis>(Stats::kCIndependentSamples, Stats::kAIKruskalWallis,
                                           {Parameter(1, {0}), Parameter(2, {1})});
    test->fBoxPlot.fGroups = {ChartModel::BoxGroup(0, 0), ChartModel::BoxGroup(2, 0)};
    IndependentSamples(nullptr, &model.fStats).MakeView(test, "", false);
    const BpChartNode* chart = output.Only();
    ASSERT_NE(chart, nullptr);
    EXPECT_EQ(chart->fTemplate, "NPARBoxplot.viztemplate");
    EXPECT_EQ(chart->fTitle, "Independent-Samples Kruskal-Wallis Test");
    EXPECT_EQ(
        Numbers(Variable(*chart, "boxplotSource", "Category")),
        (std::vector<double>{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3}));
    EXPECT_EQ(Numbers(Variable(*chart, "boxplotSource", "Label")),
              (std::vector<double>{-1, -1, -1, -1, -1, -1, 17, -1, -1, -1, -1,
                                   -1, -1, -1, -1, -1, -1, 17, -1, -1, -1, -1}));
    const auto* tooltips = Variable(*chart, "boxplotSource", "Tooltips");
    ASSERT_NE(tooltips, nullptr);
    EXPECT_EQ(std::get<std::string>(tooltips->fValues.back()), "12.50");
    EXPECT_NE(chart->fDocument.find("tokenTemplate=\"Mean Rank=$[1]$\""), std::string::npos);
    EXPECT_NE(chart->fDocument.find("text=\"Group C\""), std::string::npos);
    // The label with XML characters went into the template escaped.
    EXPECT_NE(chart->fDocument.find("Score &amp; &lt;points&gt;"), std::string::npos);
}

TEST(BoxPlot, MedianGuideOnlyWithAGrandMedian) {
    ChartOutput output;
    ChartModel model;
    for (double median : {3.25, kCFSysmis}) {
        auto* test = model.Add<Stats::HTIMedian>(Stats::kCIndependentSamples, Stats::kAIMedian,
                                                 {Parameter(1, {0}), Parameter(2, {1})});
        test->fBoxPlot.fGrandMedian = median;
        test->fBoxPlot.fGroups = {ChartModel::BoxGroup(0, 0)};
        IndependentSamples(nullptr, &model.fStats).MakeView(test, "", false);
    }
    const auto charts = output.Charts();
    ASSERT_EQ(charts.size(), 2u);
    EXPECT_NE(charts[0]->fDocument.find("Grand Median =                                    3.250"),
              std::string::npos);
    EXPECT_EQ(charts[1]->fDocument.find("lineGuide"), std::string::npos);
}

TEST(Network, EdgeTypeTreatsTheLevelItselfAsNotSignificant) {
    EXPECT_EQ(NOPRPairwiseChart::EdgeType(0.05, 0.05), 2.0);
    EXPECT_EQ(NOPRPairwiseChart::EdgeType(0.0499, 0.05), 1.0);

    ChartOutput output;
    ChartModel model;
    auto* test =
        model.Add<Stats::HTIKruskalWallis>(Stats::kCIndependentSamples, Stats::kAIKruskalWallis,
                                           {Parameter(1, {0}), Parameter(2, {1})});
    test->fComparison = ChartModel::Pairwise();
    ASSERT_TRUE(
        NOPRPairwiseChart(nullptr, &model.fStats, test, &test->fComparison).MakeChart("", false));
    const BpChartNode* chart = output.Only();
    ASSERT_NE(chart, nullptr);
    EXPECT_EQ(Numbers(Variable(*chart, "edgeSource_1", "type")), (std::vector<double>{1, 2, 2}));
    EXPECT_EQ(Numbers(Variable(*chart, "nodeSource_1", "node")),
              (std::vector<double>{4.5, 9.0, 12.5}));
    EXPECT_EQ(chart->fTitle, "Pairwise Comparisons of Score & <points>");
    EXPECT_NE(chart->fDocument.find("text=\">= 0.05\""), std::string::npos);
    EXPECT_NE(chart->fDocument.find("tokenTemplate=\"Adj. Sig. = $[1]$\""), std::string::npos);
    EXPECT_NE(chart->fDocument.find("<swap/></graphLayoutStatistic>"), std::string::npos);

    // No sample columns by name or position: no chart.
    test->fComparison.fContent.fColumnNames.clear();
    for (auto& row : test->fComparison.fContent.fRows) {
        row.resize(3);
    }
    EXPECT_FALSE(
        NOPRPairwiseChart(nullptr, &model.fStats, test, &test->fComparison).MakeChart("", false));
}

TEST(RelatedSamples, FriedmanFrameGrowsWithMoreThanThreeSamples) {
    double width = 0.0;
    double height = 0.0;
    EXPECT_FALSE(RSHistogram::FrameSize(3, width, height));
    ASSERT_TRUE(RSHistogram::FrameSize(4, width, height));
    EXPECT_EQ(width, 2.0);
    EXPECT_EQ(height, 1.2);
    ASSERT_TRUE(RSHistogram::FrameSize(10, width, height));
    EXPECT_EQ(width, 3.0);

    ChartOutput output;
    ChartModel model;
    for (int samples : {3, 4}) {
        auto* test = model.Add<Stats::HTRFriedmansTwoWayByRanks>(
            Stats::kCRelatedSamples, Stats::kARFriedmansTwoWayByRanks, {Parameter(1, {})});
        for (int field = 0; field < samples; ++field) {
            test->fConditionParameters[0].fValues.push_back(field);
            test->fVariables.push_back({field, 1.0, {"", {}, {}, {{1, 2}, {2, 3}}}});
        }
        RelatedSamples(nullptr, &model.fStats).MakeView(test, "", false);
    }
    const auto charts = output.Charts();
    ASSERT_EQ(charts.size(), 2u);
    EXPECT_NE(charts[0]->fDocument.find("<outerFrame width=\"1.5\" height=\"1\""),
              std::string::npos);
    EXPECT_NE(charts[1]->fDocument.find("<outerFrame width=\"2\" height=\"1.2\""),
              std::string::npos);
}

TEST(RelatedSamples, McNemarBarsArePatternedUnlessColoursOnly) {
    ChartOutput output;
    ChartModel model;
    model.AddEveryTest();
    auto* test = model.fStats.GetHypothesisTests()[8].get();
    ASSERT_EQ(test->fAlgorithm, Stats::kARMcNemar);
    RelatedSamples(nullptr, &model.fStats).MakeView(test, "", false);
    XDocument::setUseColorsOnly(true);
    RelatedSamples(nullptr, &model.fStats).MakeView(test, "", false);
    XDocument::setUseColorsOnly(false);
    const auto charts = output.Charts();
    ASSERT_EQ(charts.size(), 2u);
    EXPECT_NE(charts[0]->fDocument.find("<pattern variable=\"category\""), std::string::npos);
    EXPECT_EQ(charts[0]->fDocument.find("<color"), std::string::npos);
    EXPECT_NE(charts[1]->fDocument.find("<color variable=\"category\""), std::string::npos);
    // Cell (0,1) holds 6 and its mirror 2: 4 expected under symmetry.
    EXPECT_EQ(Numbers(Variable(*charts[0], "graphSource", "CellValue")),
              (std::vector<double>{10, 10, 6, 4, 2, 4, 12, 12}));
}

TEST(OneSample, RunsChartMakesRoomForTheLineUnderTheTitleOnlyWhenSplit) {
    ChartModel model;
    auto* runs = model.Add<Stats::HTORuns>(Stats::kCOneSample, Stats::kAORuns, {});
    runs->fMean = 15.5;
    runs->fStdDev = 2.5;
    runs->fObservedRunNumber = 12;
    ChartOutput output;
    const OneSampleRunsChart chart(nullptr, &model.fStats, runs);
    for (const char* suffix : {"", "Sex = 1"}) {
        std::string text = XDocument::fetchTemplateFile("NPAROneSampleRunsTest.viztemplate");
        ASSERT_TRUE(chart.CustomizeTemplate(text, suffix));
        EXPECT_EQ(text.find("value=\"10%\"") != std::string::npos, *suffix == '\0');
        EXPECT_EQ(text.find("value=\"15%\"") != std::string::npos, *suffix != '\0');
        EXPECT_NE(text.find("<range max=\"31\" min=\"0\""), std::string::npos);
        EXPECT_NE(text.find("parameter=\"15.5\" secondaryParameter=\"2.5\""), std::string::npos);
        EXPECT_NE(text.find("<lineGuide x=\"12\""), std::string::npos);
        // 15.5 - 1.959964 * 2.5
        EXPECT_NE(text.find("<lineGuide x=\"10.6001\""), std::string::npos);
        EXPECT_TRUE(ParsesAsXML(text));
    }
    EXPECT_NEAR(OneSampleRunsChart::NormalQuantile(0.975), 1.959964, 1e-6);
    EXPECT_NEAR(OneSampleRunsChart::NormalQuantile(0.001), -3.090232, 1e-6);
}

TEST(Dispatch, TestsWithErrorsAndTestsWithoutChartsGetNone) {
    ChartOutput output;
    ChartModel model;
    model.AddEveryTest();
    for (const auto& test : model.fStats.GetHypothesisTests()) {
        test->fMessages.push_back({222330, Stats::kMError, 0, {}, ""});
    }
    model.fStats.CreateTest(Stats::kCOneSample, Stats::kAOEstimateConfidenceInterval,
                            Stats::kDUnknown);
    model.fStats.CreateTest(Stats::kCOneSample, Stats::kAOLilliefors, Stats::kDUnknown);
    for (const auto* list : {&model.fStats.GetHypothesisTests(), &model.fStats.GetEstimates(),
                             &model.fStats.GetLillieforsTests()}) {
        for (const auto& test : *list) {
            OneSample(nullptr, &model.fStats).MakeView(test.get(), 0, "", false);
            IndependentSamples(nullptr, &model.fStats).MakeView(test.get(), "", false);
            RelatedSamples(nullptr, &model.fStats).MakeView(test.get(), "", false);
        }
    }
    OneSample(nullptr, &model.fStats).MakeView(nullptr, 0, "", false);
    EXPECT_TRUE(output.Charts().empty());

    // A warning does not stop the chart; a missing template does.
    auto* chi = model.fStats.GetHypothesisTests()[0].get();
    chi->fMessages.back().fType = Stats::kMWarning;
    OneSample(nullptr, &model.fStats).MakeView(chi, 0, "", false);
    EXPECT_EQ(output.Charts().size(), 1u);
    XDocument::setTemplateFolder("/nonexistent");
    OneSample(nullptr, &model.fStats).MakeView(chi, 0, "", false);
    EXPECT_EQ(output.Charts().size(), 1u);
}

TEST(Dispatch, EveryChartOfEveryTestAndFieldParsesAsXML) {
    ChartOutput output;
    for (const char* name : kTemplates) {
        SCOPED_TRACE(name);
        const std::string text = XDocument::fetchTemplateFile(name);
        ASSERT_FALSE(text.empty());
        EXPECT_TRUE(ParsesAsXML(text));
    }
    EXPECT_TRUE(XDocument::fetchTemplateFile("../templates/NPARBoxplot.viztemplate").empty());

    for (const std::string suffix : {"", "Region = North"}) {
        ChartOutput split;
        ChartModel model;
        model.AddEveryTest();
        model.MakeEveryChart(suffix);
        const auto charts = split.Charts();
        // 19 tests, 6 networks, and one view for each of the two analysed fields.
        ASSERT_EQ(charts.size(), 27u);
        std::map<std::string, int> templates;
        for (const BpChartNode* chart : charts) {
            SCOPED_TRACE(chart->fTitle);
            EXPECT_TRUE(ParsesAsXML(chart->fDocument));
            EXPECT_EQ(chart->fSubtitle.has_value(), !suffix.empty());
            // Field views always carry the suffix in their description.
            const bool appended =
                !suffix.empty() || chart->fTitle.find("Field Information") != std::string::npos;
            EXPECT_EQ(chart->fDescription,
                      appended ? chart->fTitle + "; " + suffix : chart->fTitle);
            ++templates[chart->fTemplate];
        }
        EXPECT_EQ(templates.size(), 10u);
        EXPECT_EQ(templates["NPARBoxplot.viztemplate"], 4);
        EXPECT_EQ(templates["NPARHistogram.viztemplate"], 4);
        EXPECT_EQ(templates["GLMMPairwiseContrasts.viztemplate"], 6);
        EXPECT_EQ(charts.back()->fTitle, "Categorical Field Information");
    }
}
