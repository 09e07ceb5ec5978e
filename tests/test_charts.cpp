// Charts: template text edits, the box-plot values, the network edge types,
// frame sizes, colours and patterns, the runs chart's room for the line
// under the title, tests that get no chart, and every chart class on one
// model whose documents must parse as XML.
#include <gtest/gtest.h>

#include <limits>
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
#include "host/chart/ChartTranscoder.h"
#include "host/chart/VarDataProcessor.h"
#include "host/chart/ViZVisualization.h"
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
        // Category counts by category position.
        group->fDistribution.fColumnNames = {"Category", "Count"};
        group->fDistribution.fRows = {{0, 10}, {1, 12}, {2, 8}};
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
        // Observed and expected counts down the columns of the categories'
        // positions; -1 holds the values outside the categories.
        chi->fTable.fRowNames = {"Observed", "Hypothesized"};
        chi->fTable.fColumnNames = {"0", "1", "2", "-1"};
        chi->fTable.fRows = {{10, 12, 8, 1}, {10, 10, 10, 0}};
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
        // Both fields are the three groups; rows and columns are their positions.
        auto* homogeneity = Add<Stats::HTRMarginalHomogeneity>(
            related, Stats::kARMarginalHomogeneity, {Parameter(1, {1}), Parameter(2, {1})});
        homogeneity->fComparison.fRowField = 1;
        homogeneity->fComparison.fColumnField = 1;
        homogeneity->fComparison.fTable.fRowNames = {"0", "1", "2"};
        homogeneity->fComparison.fTable.fColumnNames = {"0", "1", "2"};
        homogeneity->fComparison.fTable.fRows = {{10, 6, 1}, {2, 12, 3}, {0, 4, 9}};
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

TEST(ChartLayer, DocumentsThatAreNotChartsAreNeverSent) {
    ChartOutput output;
    for (const char* text : {"", "<visualization>", "<graph id=\"graph1\"/>", "plain"}) {
        XDocument document(text);
        EXPECT_FALSE(document.isValid());
        document.setEditor(2);
        document.setLanguage();
        EXPECT_FALSE(document.getExternalGraph().setTitle("T"));
        EXPECT_FALSE(document.getExternalGraph().getVariable("Value", 0).setLabel("L"));
        EXPECT_FALSE(document.applyCTemplate(false));
        EXPECT_FALSE(document.SendChart(true, false, false));
    }
    EXPECT_TRUE(output.Charts().empty());
    for (const char* name : {"", ".", "..", "a/b.viztemplate", "..\\x", "missing.viztemplate"}) {
        EXPECT_TRUE(XDocument::fetchTemplateFile(name).empty()) << name;
    }
}

TEST(ChartLayer, SendChartHandsTheDocumentToTheActiveProcedure) {
    const std::string text = "<visualization template=\"T.viztemplate\" palette=\"red\">"
                             "<graph id=\"graph1\"><outerFrame width=\"1\" height=\"1\"/></graph>"
                             "<data source=\"s\"><variable id=\"v\"/></data></visualization>";
    {
        XDocument orphan(text);
        EXPECT_FALSE(orphan.SendChart(true, false, false)); // no procedure writes output
    }
    ChartOutput output;
    XDocument document(text);
    const XGraph graph = document.getExternalGraph();
    EXPECT_TRUE(graph.setTitle("First"));
    EXPECT_TRUE(graph.setTitle("Title"));
    EXPECT_TRUE(graph.setSubtitle("Sex = 1"));
    EXPECT_TRUE(graph.setOuterFrameWidth(2.5));
    EXPECT_FALSE(graph.setOuterFrameHeight(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_TRUE(document.applyCTemplate(false));
    document.SetDescription("Title; Sex = 1");
    VarDataProcessor data;
    data.AddDataSource("s", 0);
    data.AddVariable("s", "v", nullptr);
    data.SetVariableValue("s", "v", 1, 2.0);
    document.SetChartData(&data);
    data.SetVariableValue("s", "v", 5, 2.0); // later changes are not the chart's
    ASSERT_TRUE(document.SendChart(true, false, false));
    const BpChartNode* chart = output.Only();
    ASSERT_NE(chart, nullptr);
    EXPECT_EQ(chart->fTemplate, "T.viztemplate");
    EXPECT_EQ(chart->fTitle, "Title");
    EXPECT_EQ(chart->fSubtitle, "Sex = 1");
    EXPECT_EQ(chart->fDescription, "Title; Sex = 1");
    ASSERT_EQ(chart->fSources.size(), 1u);
    EXPECT_EQ(chart->fSources[0].fVariables[0].fValues.size(), 2u);
    // The template's own palette stays; titles go before the graph.
    EXPECT_EQ(chart->fDocument,
              "<visualization template=\"T.viztemplate\" palette=\"red\" font=\"sans-serif\">"
              "<title><text>Title</text></title><subtitle><text>Sex = 1</text></subtitle>"
              "<graph id=\"graph1\"><outerFrame width=\"2.5\" height=\"1\"/></graph>"
              "<data source=\"s\"><variable id=\"v\"/></data></visualization>");
}

TEST(ChartLayer, VariablesTakeFormatsLabelsAndRelabels) {
    XDocument document("<visualization><data source=\"s\"><variable id=\"v\"/></data>"
                       "<derivedVariable id=\"d\" variable=\"v\" rule=\"sign\"/>"
                       "<graph id=\"graph1\"/></visualization>");
    const XGraph graph = document.getExternalGraph();
    const XVariable variable = graph.getVariable("v", 0);
    const XVariable missing = graph.getVariable("w", 0);
    EXPECT_FALSE(missing.setCategorical(true));
    EXPECT_FALSE(missing.addRelabel(1, "x"));
    EXPECT_FALSE(variable.setVexaVariable(nullptr));

    VEXA_Variable income("income", 0);
    income.SetLabel("Income");
    income.SetMeasure(VEXA_Variable::kContinuous);
    const auto format = [&](int type, int decimals) {
        income.SetFormat({type, 10, decimals});
        EXPECT_TRUE(variable.setFormatBasedOnVexaVariable(&income));
        std::string out;
        for (const pugi::xml_attribute attribute : variable.getFormat().node().attributes()) {
            out += std::string(attribute.name()) + "=" + attribute.value() + " ";
        }
        return out;
    };
    EXPECT_EQ(format(VEXA_Format::kDollar, 2), "type=number decimals=2 grouping=true prefix=$ ");
    EXPECT_EQ(format(VEXA_Format::kPercent, 1), "type=number decimals=1 grouping=false suffix=% ");
    EXPECT_EQ(format(VEXA_Format::kDate, 0), "type=date pattern=dd-MMM-yyyy unit=days ");
    EXPECT_EQ(format(VEXA_Format::kTime, 0), "type=time pattern=hh:mm:ss unit=seconds ");
    EXPECT_TRUE(variable.SetFormatPrefix("Observed\n"));
    EXPECT_EQ(variable.getFormat().node().attribute("pattern").value(), std::string("hh:mm:ss"));
    EXPECT_TRUE(variable.SetNumberFormat(XVariable::kGeneralNumber, false, nullptr, nullptr));
    EXPECT_EQ(variable.getFormat().node().attribute("type").value(), std::string("general"));
    EXPECT_FALSE(variable.getFormat().node().attribute("prefix"));

    EXPECT_TRUE(variable.setVexaVariable(&income));
    EXPECT_EQ(variable.node().attribute("label").value(), std::string("Income"));
    EXPECT_EQ(variable.node().attribute("measure").value(), std::string("continuous"));
    EXPECT_TRUE(variable.addRelabel(1, "one"));
    EXPECT_TRUE(variable.addRelabel(1, "One"));
    EXPECT_TRUE(variable.addRelabel(0.5, "half"));
    EXPECT_FALSE(variable.addRelabel(std::numeric_limits<double>::infinity(), "never"));
    EXPECT_EQ(std::distance(variable.node().children("relabel").begin(),
                            variable.node().children("relabel").end()),
              2);
    EXPECT_EQ(
        variable.node().find_child_by_attribute("relabel", "value", "1").attribute("text").value(),
        std::string("One"));
    // Many relabels, found by value: a value given again replaces its text
    // (the template's first relabel of a value is the one that counts), in
    // a chart document and in a bare pugixml document alike.
    {
        XDocument many("<visualization><graph id=\"graph1\"/><data source=\"s\">"
                       "<variable id=\"v\"><relabel value=\"7\" text=\"first\"/>"
                       "<relabel value=\"7\" text=\"second\"/></variable></data>"
                       "</visualization>");
        pugi::xml_document bare;
        bare.load_string("<variable><relabel value=\"7\" text=\"first\"/>"
                         "<relabel value=\"7\" text=\"second\"/></variable>");
        for (const pugi::xml_node node :
             {many.getExternalGraph().getVariable("v", 0).node(), bare.child("variable")}) {
            for (int value = 0; value < 3000; ++value) {
                EXPECT_TRUE(AddViZRelabel(node, value, std::to_string(value) + " cases"));
            }
            EXPECT_TRUE(AddViZRelabel(node, 1234, "again"));
            std::map<std::string, std::string> texts;
            std::size_t count = 0;
            for (const pugi::xml_node relabel : node.children("relabel")) {
                texts.emplace(relabel.attribute("value").value(),
                              relabel.attribute("text").value());
                ++count;
            }
            EXPECT_EQ(count, 3001u);
            EXPECT_EQ(texts["7"], "7 cases");
            EXPECT_EQ(node.child("relabel").next_sibling().attribute("text").value(),
                      std::string("second"));
            EXPECT_EQ(texts["1234"], "again");
            EXPECT_EQ(texts["2999"], "2999 cases");
        }
    }
    // Derived variables are found by the graph too.
    EXPECT_TRUE(graph.getVariable("d", 0).addRelabel(2, "negative"));
}

TEST(ChartLayer, DocumentHandlesAddStylesFramesAndLegends) {
    XDocument document("<visualization><style id=\"chartStyle1\"/><legend id=\"old\"/>"
                       "<graph id=\"graph1\"><schema/></graph></visualization>");
    const ViZVisualization visualization = document.getVisualization();
    EXPECT_EQ(visualization.addStyle().id(), "chartStyle2");
    EXPECT_EQ(visualization.addStyle().id(), "chartStyle3");
    const ViZLegend legend = visualization.addFirstLegend("new");
    EXPECT_EQ(visualization.node().child("legend").attribute("id").value(), std::string("new"));
    EXPECT_TRUE(legend.setTitle("Groups"));
    const ViZGraph graph = visualization.getGraph(0);
    EXPECT_FALSE(visualization.getGraph(1));
    EXPECT_TRUE(graph.getElement("schema").setAesthetic("label", "Label"));
    EXPECT_FALSE(graph.getElement("interval").setAesthetic("label", "Label"));
    const ViZLocation location =
        graph.addLocation(ViZLocation::kHeight, ViZLocation::kSizeToContent);
    EXPECT_EQ(location.node().attribute("part").value(), std::string("height"));
    EXPECT_EQ(location.node().attribute("method").value(), std::string("sizeToContent"));
    EXPECT_EQ(ViZLocation::PartName(42), std::string("left"));
    EXPECT_FALSE(visualization.hasSubtitle());
    document.getExternalGraph().setSubtitle("split");
    EXPECT_TRUE(visualization.hasSubtitle());
    EXPECT_TRUE(ParsesAsXML(document.toXML()));
}

TEST(ChartLayer, TranscodersReadTheirCodePagesAndRejectBrokenUTF8) {
    EXPECT_EQ(ChartTranscoder("CP1252").transcode("\x80 \x9F").str(), "\xE2\x82\xAC \xC5\xB8");
    EXPECT_EQ(ChartTranscoder("latin1").transcode("\x80").str(), "\xC2\x80");
    EXPECT_EQ(ChartTranscoder("cp1252").transcode("\x81").str(), "\xEF\xBF\xBD");
    // Overlong, surrogate and truncated sequences are not UTF-8.
    for (const char* broken : {"\xC0\xAF", "\xED\xA0\x80", "\xE2\x82", "\xF5\x80\x80\x80"}) {
        EXPECT_FALSE(ChartTranscoder::IsValidUTF8(broken));
        EXPECT_TRUE(ChartTranscoder::IsValidUTF8(ChartTranscoder("UTF-8").transcode(broken).str()));
    }
    EXPECT_TRUE(ChartTranscoder::IsValidUTF8("\xF0\x9F\x98\x80"));
}

namespace {

// The chart of one test of a model that holds every test.
const BpChartNode* ChartOf(ChartOutput& output, ChartModel& model, Stats::Algorithm algorithm,
                           const std::string& suffix = "") {
    for (const auto& test : model.fStats.GetHypothesisTests()) {
        if (test->fAlgorithm == algorithm) {
            OneSample(nullptr, &model.fStats).MakeView(test.get(), 0, suffix, !suffix.empty());
            IndependentSamples(nullptr, &model.fStats)
                .MakeView(test.get(), suffix, !suffix.empty());
            RelatedSamples(nullptr, &model.fStats).MakeView(test.get(), suffix, !suffix.empty());
            break;
        }
    }
    const auto charts = output.Charts();
    return charts.empty() ? nullptr : charts.back();
}

template <typename Record> Record* TestOf(ChartModel& model, Stats::Algorithm algorithm) {
    for (const auto& test : model.fStats.GetHypothesisTests()) {
        if (test->fAlgorithm == algorithm) {
            return dynamic_cast<Record*>(test.get());
        }
    }
    return nullptr;
}

std::vector<std::string> Strings(const BpChartNode::Variable* variable) {
    std::vector<std::string> out;
    for (const auto& value : variable ? variable->fValues : std::vector<BpChartNode::Value>{}) {
        out.push_back(std::holds_alternative<std::string>(value) ? std::get<std::string>(value)
                                                                 : "-");
    }
    return out;
}

bool Has(const BpChartNode* chart, std::string_view text) {
    return chart && chart->fDocument.find(text) != std::string::npos;
}

} // namespace

TEST(OneSample, ChiSquareSkipsOtherValuesAndFillsItsPopup) {
    ChartOutput output;
    ChartModel model;
    model.AddEveryTest();
    const BpChartNode* chart = ChartOf(output, model, Stats::kAOChiSquare);
    ASSERT_NE(chart, nullptr);
    // The categories' values, named by their labels.
    EXPECT_EQ(Numbers(Variable(*chart, "graphSource", "Category")),
              (std::vector<double>{1, 1, 2, 2, 3, 3}));
    EXPECT_EQ(Numbers(Variable(*chart, "graphSource", "Frequency")),
              (std::vector<double>{10, 10, 12, 10, 8, 10}));
    EXPECT_EQ(Numbers(Variable(*chart, "graphSource", "Residual")),
              (std::vector<double>{0, 0, 2, 2, -2, -2}));
    EXPECT_TRUE(Has(chart, "<popup tokenTemplate=\"group=$[category]$&#10;"
                           "Observed=$[observed]$&#10;Hypothesized=$[hypothesized]$&#10;"
                           "E61605=$[residual]$\" target=\"interval\">"));
    EXPECT_TRUE(Has(chart, "<relabel value=\"1\" text=\"Hypothesized\"/>"));
    EXPECT_TRUE(Has(chart, "<relabel value=\"1\" text=\"Group A\"/>"));
    EXPECT_TRUE(Has(chart, "<relabel value=\"3\" text=\"Group C\"/>"));
    EXPECT_TRUE(Has(chart, "<title><text>One-Sample Chi-Square Test</text></title>"));
}

TEST(OneSample, BinomialStacksPercentagesOfPositiveCellsOnly) {
    ChartOutput output;
    ChartModel model;
    model.AddEveryTest();
    auto* binomial = TestOf<Stats::HTOBinomial>(model, Stats::kAOBinomial);
    binomial->fTable.fRows = {{4, 6}, {0.5, 0}};
    const BpChartNode* chart = ChartOf(output, model, Stats::kAOBinomial);
    ASSERT_NE(chart, nullptr);
    EXPECT_EQ(chart->fTemplate, "NPARStackedBar.viztemplate");
    EXPECT_EQ(Strings(Variable(*chart, "graphSource", "categories")),
              (std::vector<std::string>{"E60564", "E60564", "Hypothesized"}));
    EXPECT_EQ(Strings(Variable(*chart, "graphSource", "type")),
              (std::vector<std::string>{"<=2.50", ">2.50", "<=2.50"}));
    EXPECT_EQ(Numbers(Variable(*chart, "graphSource", "value")),
              (std::vector<double>{40, 60, 100}));
    EXPECT_EQ(Strings(Variable(*chart, "graphSource", "tooltip")).back(),
              "<=2.50 100.0%\n>2.50 0.0%\n");
    // The field's label titles the category axis; the legend has no title.
    EXPECT_TRUE(Has(chart, "<axis dim=\"x\" variable=\"categories\"><title><text>Score &amp; "
                           "&lt;points&gt;</text></title></axis>"));
    EXPECT_FALSE(Has(chart, "LegendLabel"));
    EXPECT_FALSE(Has(chart, "<legend id=\"legend1\" variable=\"type\"><title><text>Score"));
    EXPECT_TRUE(Has(chart, "<text>E60703</text>"));

    // Success defined by the field's categories: their labels name the columns.
    binomial->fConditionKey = "ABinaryTestVariableIsSpecified_O_Binomial_5";
    binomial->fConditionParameters = {Parameter(1, {1}), Parameter(2, {0}), Parameter(3, {2})};
    const BpChartNode* labelled = ChartOf(output, model, Stats::kAOBinomial);
    EXPECT_EQ(Strings(Variable(*labelled, "graphSource", "type")).front(), "Group A");
}

TEST(OneSample, KolmogorovSmirnovFitsTheDistributionOfItsConditionKey) {
    ChartOutput output;
    ChartModel model;
    model.AddEveryTest();
    auto* ks = TestOf<Stats::HTOKolmogorovSmirnov>(model, Stats::kAOKolmogorovSmirnov);
    const BpChartNode* normal = ChartOf(output, model, Stats::kAOKolmogorovSmirnov);
    ASSERT_NE(normal, nullptr);
    EXPECT_EQ(normal->fTitle, "One-Sample Kolmogorov-Smirnov Normal Test");
    EXPECT_TRUE(Has(normal, "<line><distributionStatistic distribution=\"normal\" "
                            "parameter=\"4.5\" secondaryParameter=\"1.25\"/>"
                            "<x variable=\"value\"/><y variable=\"count\"/></line></graph>"));
    EXPECT_TRUE(
        Has(normal, "<text>Normal Parameters\nMean = 4.500\nStd. Deviation = 1.250</text>"));

    ks->fConditionKey = "ExponentialDistribution_O_KolmogorovSmirnov_2";
    ks->fConditionParameters.pop_back();
    const BpChartNode* exponential = ChartOf(output, model, Stats::kAOKolmogorovSmirnov);
    EXPECT_TRUE(Has(exponential, "distribution=\"exponential\" parameter=\"4.5\"/>"));
    EXPECT_FALSE(Has(exponential, "secondaryParameter"));

    ks->fConditionKey = "SomethingElse";
    const BpChartNode* other = ChartOf(output, model, Stats::kAOKolmogorovSmirnov);
    EXPECT_EQ(other->fTitle, "One-Sample Kolmogorov-Smirnov Test");
    EXPECT_FALSE(Has(other, "distributionStatistic"));
    EXPECT_EQ(output.Charts().size(), 3u);
}

TEST(OneSample, KolmogorovSmirnovOfADateFieldFitsDateTimes) {
    ChartOutput output;
    ChartModel model;
    model.AddEveryTest();
    model.fData.GetVariable(0)->SetFormat({VEXA_Format::kDate, 11, 0});
    auto* ks = TestOf<Stats::HTOKolmogorovSmirnov>(model, Stats::kAOKolmogorovSmirnov);
    // Days since 1970-01-01: 4 March 2024 at noon, and a spread of 7.25 days.
    ks->fConditionParameters = {Parameter(1, {0}), Parameter(2, {19786.5}), Parameter(3, {7.25})};
    const BpChartNode* normal = ChartOf(output, model, Stats::kAOKolmogorovSmirnov);
    ASSERT_NE(normal, nullptr);
    EXPECT_TRUE(Has(normal, "distribution=\"normal\" parameter=\"2024-03-04T12:00:00\" "
                            "secondaryParameter=\"7.25\"/>"));
    ks->fConditionKey = "UniformDistribution_O_KolmogorovSmirnov_3";
    ks->fConditionParameters = {Parameter(1, {0}), Parameter(2, {19786}), Parameter(3, {19815})};
    const BpChartNode* uniform = ChartOf(output, model, Stats::kAOKolmogorovSmirnov);
    EXPECT_TRUE(Has(uniform, "parameter=\"2024-03-04T00:00:00\" "
                             "secondaryParameter=\"2024-04-02T00:00:00\"/>"));

    // The field's note shows its mean as a date too.
    model.fStats.GetFieldInfo(0)->fMean = 19795.5;
    FieldInformation field(nullptr, &model.fStats, false);
    field.SetFieldIndex(0);
    ASSERT_TRUE(field.MakeChart("", false));
    EXPECT_FALSE(Has(output.Charts().back(), "19795"));
    EXPECT_TRUE(Has(output.Charts().back(), "Mean = 13-MAR-2024"));
}

TEST(OneSample, WilcoxonDrawsBothMediansWithALegendBesideTheGraph) {
    ChartOutput output;
    ChartModel model;
    model.AddEveryTest();
    const BpChartNode* chart = ChartOf(output, model, Stats::kAOWilcoxonSignedRanks);
    ASSERT_NE(chart, nullptr);
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(chart->fDocument.c_str()));
    const pugi::xml_node graph = document.child("visualization").child("graph");
    std::vector<std::string> guides;
    for (const pugi::xml_node guide : graph.children("lineGuide")) {
        const pugi::xml_node style =
            document.child("visualization")
                .find_child_by_attribute("style", "id", guide.attribute("style").value());
        guides.push_back(std::string(guide.attribute("x").value()) + " " +
                         style.attribute("color").value());
    }
    EXPECT_EQ(guides, (std::vector<std::string>{"2 green", "2.5 blue"}));
    // The graph's last location moves its right edge to make room for the legend.
    EXPECT_EQ(graph.last_child().previous_sibling().name(), std::string("lineGuide"));
    EXPECT_EQ(graph.last_child().attribute("part").value(), std::string("right"));
    EXPECT_EQ(graph.last_child().attribute("value").value(), std::string("80%"));
    const pugi::xml_node frame =
        document.child("visualization").find_child_by_attribute("labelFrame", "id", "medianLegend");
    EXPECT_EQ(std::distance(frame.children("location").begin(), frame.children("location").end()),
              4);
    EXPECT_EQ(std::distance(frame.children("label").begin(), frame.children("label").end()), 2);
    EXPECT_TRUE(Has(chart, "<text>TotalN = 30</text>"));
}

TEST(IndependentSamples, MosesLegendNeedsTwoGroups) {
    ChartOutput output;
    ChartModel model;
    model.AddEveryTest();
    const BpChartNode* two = ChartOf(output, model, Stats::kAIMoses);
    EXPECT_TRUE(Has(two, "<derivedVariable id=\"mosesGroup\" variable=\"Category\" rule=\"match\" "
                         "value=\"1\" categorical=\"true\">"));
    EXPECT_TRUE(Has(two, "<color variable=\"mosesGroup\"/>"));
    EXPECT_TRUE(Has(two, "<label variable=\"Label\"/>"));
    auto* moses = TestOf<Stats::HTIMoses>(model, Stats::kAIMoses);
    moses->fBoxPlot.fGroupCount = 1;
    moses->fBoxPlot.fGroups.resize(1);
    const BpChartNode* one = ChartOf(output, model, Stats::kAIMoses);
    ASSERT_NE(one, two);
    EXPECT_FALSE(Has(one, "mosesGroup"));
    EXPECT_FALSE(Has(one, "<label"));
}

TEST(IndependentSamples, MannWhitneyBarsStandBackToBackAndKolmogorovSmirnovKeepsItsTemplate) {
    ChartOutput output;
    ChartModel model;
    model.AddEveryTest();
    const BpChartNode* mannWhitney = ChartOf(output, model, Stats::kAIMannWhitneyU);
    ASSERT_NE(mannWhitney, nullptr);
    EXPECT_TRUE(Has(mannWhitney, "alternating=\"true\" bars=\"y\" invert=\"false\""));
    EXPECT_TRUE(Has(mannWhitney, "value=\"18%\""));
    EXPECT_TRUE(Has(mannWhitney, "<text>Group A</text>"));
    EXPECT_EQ(Strings(Variable(*mannWhitney, "graphSource", "LABELNAME")),
              (std::vector<std::string>{"Group A", "Group A", "Group B", "Group B"}));
    const BpChartNode* ks = ChartOf(output, model, Stats::kAIKolmogorovSmirnov);
    EXPECT_EQ(ks->fTemplate, "NPARKolmogorovSmirnov.viztemplate");
    EXPECT_TRUE(Has(ks, "alternating=\"false\" bars=\"y\" invert=\"false\""));

    TestOf<Stats::HTIWaldWolfowitzRuns>(model, Stats::kAIWaldWolfowitzRuns)->fGroups.resize(1);
    EXPECT_EQ(ChartOf(output, model, Stats::kAIWaldWolfowitzRuns), ks);
}

TEST(RelatedSamples, MarginalHomogeneityDropsTheLegendAndTheHypothesizedToken) {
    ChartOutput output;
    ChartModel model;
    model.AddEveryTest();
    const BpChartNode* chart = ChartOf(output, model, Stats::kARMarginalHomogeneity);
    ASSERT_NE(chart, nullptr);
    EXPECT_FALSE(Has(chart, "<legend"));
    EXPECT_FALSE(Has(chart, "HypothesizedTooltip\"/>"));
    EXPECT_TRUE(Has(chart, "tokenTemplate=\"Observed=$[1]$\""));
    EXPECT_EQ(Variable(*chart, "graphSource", "HypothesizedTooltip"), nullptr);
    EXPECT_EQ(Numbers(Variable(*chart, "graphSource", "CellValue")),
              (std::vector<double>{10, 6, 1, 2, 12, 3, 0, 4, 9}));
    // Rows and columns are category positions: facets carry the values and
    // their labels, and no facet is named by a position.
    EXPECT_EQ(Numbers(Variable(*chart, "graphSource", "CellText")),
              (std::vector<double>{1, 1, 1, 2, 2, 2, 3, 3, 3}));
    EXPECT_EQ(Numbers(Variable(*chart, "graphSource", "Column")),
              (std::vector<double>{1, 2, 3, 1, 2, 3, 1, 2, 3}));
    EXPECT_TRUE(Has(chart, "<relabel value=\"1\" text=\"Group A\"/>"));
    EXPECT_TRUE(Has(chart, "<relabel value=\"3\" text=\"Group C\"/>"));
    EXPECT_FALSE(Has(chart, "<relabel value=\"0\" text=\"0"));
    // The one series is named, not numbered.
    EXPECT_TRUE(Has(chart, "<relabel value=\"0\" text=\"Observed\"/>"));
}

TEST(RelatedSamples, CochranNamesRowsByFieldAndDropsTheLegendTitle) {
    ChartOutput output;
    ChartModel model;
    model.AddEveryTest();
    auto* cochran = TestOf<Stats::HTRCochransQ>(model, Stats::kARCochransQ);
    cochran->fTable.fRowNames = {"2", "17", "x3"};
    const BpChartNode* chart = ChartOf(output, model, Stats::kARCochransQ);
    ASSERT_NE(chart, nullptr);
    // The third row's failures only: its zero successes add no row.
    EXPECT_EQ(Strings(Variable(*chart, "graphSource", "categories")),
              (std::vector<std::string>{"before", "before", "17", "17", "x3"}));
    EXPECT_TRUE(Has(chart, "<legend id=\"legend1\" variable=\"type\"><title><text/></title>"));
}

TEST(RelatedSamples, PairChartTellsSignsApartAndNeedsItsRecordType) {
    ChartOutput output;
    ChartModel model;
    model.AddEveryTest();
    const BpChartNode* sign = ChartOf(output, model, Stats::kARSign);
    ASSERT_NE(sign, nullptr);
    EXPECT_EQ(sign->fTitle, "Related-Samples Sign Test");
    EXPECT_TRUE(Has(sign, "<relabel value=\"1\" text=\"Positive Differences&#10;(7)\"/>"));
    EXPECT_TRUE(Has(sign, "<relabel value=\"2\" text=\"Negative Differences&#10;(5)\"/>"));
    EXPECT_TRUE(Has(sign, "<text>Number of Ties = 2</text>"));
    EXPECT_TRUE(Has(sign, "<text>after - before</text>"));
    EXPECT_EQ(ChartOf(output, model, Stats::kARWilcoxonSignedRanks)->fTitle,
              "Related-Samples Wilcoxon Signed Rank Test");

    // A sign-test code on a record of another type makes no chart.
    auto* wilcoxon = TestOf<Stats::HTRWilcoxonSignedRanks>(model, Stats::kARWilcoxonSignedRanks);
    wilcoxon->fAlgorithm = Stats::kARSign;
    const size_t before = output.Charts().size();
    RelatedSamples(nullptr, &model.fStats).MakeView(wilcoxon, "", false);
    EXPECT_EQ(output.Charts().size(), before);
}

TEST(Network, WithoutATestFieldNodesKeepTheirFormatAndTheNoteFitsTheTest) {
    ChartOutput output;
    ChartModel model;
    model.AddEveryTest();
    for (auto algorithm : {Stats::kARCochransQ, Stats::kARFriedmansTwoWayByRanks}) {
        auto* test = model.fStats.GetHypothesisTests()[0].get();
        for (const auto& each : model.fStats.GetHypothesisTests()) {
            test = each->fAlgorithm == algorithm ? each.get() : test;
        }
        const auto* comparison = algorithm == Stats::kARCochransQ
                                     ? &dynamic_cast<Stats::HTRCochransQ*>(test)->fComparison
                                     : &dynamic_cast<Stats::HTRRanks*>(test)->fComparison;
        ASSERT_TRUE(
            NOPRPairwiseChart(nullptr, &model.fStats, test, comparison).MakeChart("", false));
    }
    const auto charts = output.Charts();
    ASSERT_EQ(charts.size(), 2u);
    EXPECT_EQ(charts[0]->fTitle, "Pairwise Comparisons");
    EXPECT_TRUE(Has(charts[0], "<text>Each node shows the sample number of successes.</text>"));
    EXPECT_TRUE(Has(charts[1], "<text>Each node shows the sample average rank.</text>"));
    EXPECT_TRUE(Has(charts[0], "<variable id=\"node\" type=\"number\"/>"));
    EXPECT_EQ(Strings(Variable(*charts[0], "nodeSource_1", "label")),
              (std::vector<std::string>{"Score & <points>", "group", "before"}));
}

TEST(Network, NodesOfTheMedianTestShowMedians) {
    ChartOutput output;
    ChartModel model;
    model.AddEveryTest();
    for (auto algorithm : {Stats::kAIKruskalWallis, Stats::kAIMedian}) {
        auto* test = TestOf<Stats::HTIBoxPlotComparison>(model, algorithm);
        ASSERT_TRUE(NOPRPairwiseChart(nullptr, &model.fStats, test, &test->fComparison)
                        .MakeChart("", false));
    }
    const auto charts = output.Charts();
    ASSERT_EQ(charts.size(), 2u);
    EXPECT_TRUE(Has(charts[0], "sample average rank of\nScore"));
    EXPECT_TRUE(Has(charts[1], "<text>Each node shows the\nsample median of\nScore &amp; "
                               "&lt;points&gt;.</text>"));
    EXPECT_FALSE(Has(charts[1], "average rank"));
}

TEST(FieldViews, EachFieldGetsTheViewOfItsKindWhenBinnedByInterval) {
    ChartOutput output;
    ChartModel model;
    model.fStats.GetFieldInfo(0)->fBinning = "Quantile";
    model.MakeEveryChart("");
    const BpChartNode* chart = output.Only();
    ASSERT_NE(chart, nullptr);
    EXPECT_EQ(chart->fTitle, "Categorical Field Information");
    EXPECT_FALSE(Has(chart, "<binStatistic/>"));
    EXPECT_FALSE(Has(chart, "<summaryStatistic"));
    EXPECT_TRUE(Has(chart, "categorical=\"true\""));
    // Category positions become values: each bar carries its own label.
    EXPECT_EQ(Numbers(Variable(*chart, "graphSource", "value")), (std::vector<double>{1, 2, 3}));
    EXPECT_TRUE(Has(chart, "<relabel value=\"2\" text=\"Group B\"/>"));
    EXPECT_TRUE(Has(chart, "<text>TotalN = 30</text>"));
    EXPECT_TRUE(Has(chart, "<text>E60352</text>"));

    model.fStats.GetFieldInfo(0)->fBinning = "Interval";
    model.fStats.GetFieldInfo(1)->fOrdinalAsContinuous = true;
    ChartOutput continuous;
    model.MakeEveryChart("");
    const auto charts = continuous.Charts();
    ASSERT_EQ(charts.size(), 2u);
    EXPECT_EQ(charts[0]->fTitle, "Continuous Field Information");
    EXPECT_TRUE(Has(charts[0], "<binStatistic/>"));
    EXPECT_TRUE(Has(charts[0], "<text>Mean = 4.500\nStd. Deviation = 1.250\nhistoN = 30</text>"));
    EXPECT_FALSE(Has(charts[1], "<relabel"));
}
