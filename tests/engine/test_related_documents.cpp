// The related-samples records end to end: a split of data through the
// writers into a result document, rendered by the real nptests binary as
// JSON; the tables must hold the engine's numbers.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "engine/doc/Builders.h"
#include "engine/stats/RelatedKSamples.h"
#include "engine/stats/RelatedPairs.h"

namespace {

using nlohmann::json;

// A split of 60 cases: three continuous scores (one case missing), three
// yes/no answers (1 yes, 0 no), two ordinal ratings 1-4.
struct TestSplit {
    std::vector<Variable> fVariables;
    SplitData fData;
    TestSplit() {
        const char* names[] = {"before", "after", "later", "q1", "q2", "q3", "r1", "r2"};
        const MeasureLevel levels[] = {MeasureLevel::kContinuous, MeasureLevel::kContinuous,
                                       MeasureLevel::kContinuous, MeasureLevel::kNominal,
                                       MeasureLevel::kNominal,    MeasureLevel::kNominal,
                                       MeasureLevel::kOrdinal,    MeasureLevel::kOrdinal};
        for (int f = 0; f < 8; ++f) {
            Variable variable;
            variable.fName = names[f];
            variable.fLabel = std::string("Field ") + names[f];
            variable.fLevel = levels[f];
            fVariables.push_back(variable);
        }
        std::mt19937 random(17);
        std::normal_distribution<double> normal(0, 1);
        std::bernoulli_distribution coin(0.5);
        std::uniform_int_distribution<int> rating(1, 4);
        const std::size_t n = 60;
        fData.fFields.resize(8);
        for (int f = 0; f < 8; ++f) {
            fData.fFields[f].fVariable = &fVariables[f];
            fData.fFields[f].fValues.resize(n);
        }
        for (std::size_t i = 0; i < n; ++i) {
            const double base = std::round(normal(random) * 10) / 2;
            fData.fFields[0].fValues[i] = base;
            fData.fFields[1].fValues[i] = base + std::round(normal(random) * 4 + 3) / 2;
            fData.fFields[2].fValues[i] = base + std::round(normal(random) * 4 + 1) / 2;
            fData.fFields[3].fValues[i] = coin(random) ? 1 : 0;
            fData.fFields[4].fValues[i] = coin(random) || coin(random) ? 1 : 0;
            fData.fFields[5].fValues[i] = coin(random) && coin(random) ? 1 : 0;
            fData.fFields[6].fValues[i] = rating(random);
            fData.fFields[7].fValues[i] =
                std::min(4.0, fData.fFields[6].fValues[i] + (coin(random) ? 1 : 0));
            fData.fCaseNumbers.push_back(static_cast<double>(i + 1));
        }
        fData.fFields[1].fValues[7] = kSysMis;
        for (int f = 3; f < 8; ++f) {
            const int top = f < 6 ? 1 : 4;
            for (int v = f < 6 ? 0 : 1; v <= top; ++v) {
                fData.fFields[f].fCategories.push_back(
                    {static_cast<double>(v), std::to_string(v), "value " + std::to_string(v)});
            }
        }
    }

    void AddDictionary(Document& doc) const {
        for (int f = 0; f < 8; ++f) {
            DocumentField field;
            field.fName = fVariables[f].fName;
            field.fLabel = fVariables[f].fLabel;
            field.fLevel = fVariables[f].fLevel;
            for (const Category& c : fData.fFields[f].fCategories) {
                field.fValues.emplace_back(c.fText, c.fLabel);
            }
            doc.AddField(field);
        }
        doc.AddField({"split", "split", MeasureLevel::kNominal, StorageType::kDouble, {}});
    }
};

// Renders `document` with nptests -f json and returns the parsed output.
json Render(const std::string& document) {
    const std::filesystem::path dir = std::filesystem::path(testing::TempDir());
    const std::filesystem::path xml = dir / "related_document.xml";
    const std::filesystem::path out = dir / "related_document.json";
    std::ofstream(xml) << document;
    const std::string command =
        std::string(NPTESTS_BINARY) + " -f json -o " + out.string() + " " + xml.string() + " 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    std::ifstream in(out);
    return json::parse(in, nullptr, false);
}

// Every table of the output, depth first.
void Tables(const json& items, std::vector<json>& tables) {
    for (const json& item : items) {
        if (item["kind"] == "table") {
            tables.push_back(item);
        } else if (item["kind"] == "heading") {
            Tables(item["items"], tables);
        }
    }
}

const json* FindTable(const std::vector<json>& tables, const std::string& title,
                      std::size_t skip = 0) {
    for (const json& table : tables) {
        if (table["title"] == title && skip-- == 0) {
            return &table;
        }
    }
    return nullptr;
}

// The value of the row labelled `label` in a one-column statistics table.
double StatisticsValue(const json& table, const std::string& label) {
    for (const json& row : table["rows"]) {
        if (row["labels"].back()["text"] == label && row["cells"][0].is_object() &&
            row["cells"][0]["value"].is_number()) {
            return row["cells"][0]["value"];
        }
    }
    return std::nan("");
}

} // namespace

TEST(RelatedDocuments, EveryTestRendersThroughNptests) {
    if (!std::filesystem::exists(NPTESTS_BINARY)) {
        GTEST_SKIP() << "nptests is not built";
    }
    const TestSplit split;
    Document doc;
    doc.SetCounts({60, 0});
    doc.SetSettings(0.05, 0.95, MissingTreatment::kTestwise);
    split.AddDictionary(doc);
    const Criteria criteria;

    RelatedPlan pairs;
    pairs.fFields = {0, 1};
    pairs.fSign = pairs.fWilcoxon = pairs.fHodgesLehmann = true;
    WriteRelatedTests(split.fData, pairs, criteria, doc);
    RelatedPlan ranks;
    ranks.fFields = {0, 1, 2};
    ranks.fFriedman = FriedmanOptions{Compare::kStepwise};
    ranks.fKendall = FriedmanOptions{Compare::kPairwise};
    WriteRelatedTests(split.fData, ranks, criteria, doc);
    RelatedPlan answers;
    answers.fFields = {3, 4, 5};
    answers.fCochran = CochranOptions{{false, {{false, 1, ""}}}, Compare::kPairwise};
    WriteRelatedTests(split.fData, answers, criteria, doc);
    RelatedPlan change;
    change.fFields = {3, 4};
    change.fMcNemar = McNemarOptions{{false, {{false, 1, ""}}}};
    WriteRelatedTests(split.fData, change, criteria, doc);
    RelatedPlan ratings;
    ratings.fFields = {6, 7};
    ratings.fMarginalHomogeneity = true;
    WriteRelatedTests(split.fData, ratings, criteria, doc);
    RelatedPlan same; // one field twice: not computable, still reported
    same.fFields = {0, 0};
    same.fWilcoxon = true;
    WriteRelatedTests(split.fData, same, criteria, doc);
    ASSERT_EQ(doc.AlgorithmCount(), 9);

    const json output = Render(doc.Write());
    ASSERT_FALSE(output.is_discarded());
    EXPECT_TRUE(output["messages"].empty()) << output["messages"].dump();
    std::vector<json> tables;
    Tables(output["items"], tables);
    const json* summary = FindTable(tables, "Hypothesis Test Summary");
    ASSERT_NE(summary, nullptr);
    ASSERT_EQ((*summary)["rows"].size(), 8u);
    const char* expected[] = {"Related-Samples Sign Test",
                              "Related-Samples Wilcoxon Signed Rank Test",
                              "Related-Samples Friedman's Two-Way Analysis of Variance by Ranks",
                              "Related-Samples Kendall's Coefficient of Concordance",
                              "Related-Samples Cochran's Q Test",
                              "Related-Samples McNemar Change Test",
                              "Related-Samples Marginal Homogeneity Test",
                              "Related-Samples Wilcoxon Signed Rank Test"};
    for (std::size_t r = 0; r < 8; ++r) {
        EXPECT_EQ((*summary)["rows"][r]["cells"][1]["text"], expected[r]) << r;
    }

    // The numbers the tables show are the engine's.
    std::vector<double> before;
    std::vector<double> after;
    std::vector<double> later;
    for (std::size_t i = 0; i < 60; ++i) {
        if (i != 7) {
            before.push_back(split.fData.fFields[0].fValues[i]);
            after.push_back(split.fData.fFields[1].fValues[i]);
            later.push_back(split.fData.fFields[2].fValues[i]);
        }
    }
    const WilcoxonResult wilcoxon = WilcoxonSignedRank(before, after);
    const json* wilcoxonTable =
        FindTable(tables, "Related-Samples Wilcoxon Signed Rank Test Summary");
    ASSERT_NE(wilcoxonTable, nullptr);
    EXPECT_EQ(StatisticsValue(*wilcoxonTable, "Total N"), 59.0);
    EXPECT_DOUBLE_EQ(StatisticsValue(*wilcoxonTable, "Test Statistic"), wilcoxon.fStatistic);
    const std::vector<std::span<const double>> columns{before, after, later};
    const FriedmanResult friedman = Friedman(columns);
    const json* kendallTable =
        FindTable(tables, "Related-Samples Kendall's Coefficient of Concordance Summary");
    ASSERT_NE(kendallTable, nullptr);
    EXPECT_DOUBLE_EQ(StatisticsValue(*kendallTable, "Kendall's W"), friedman.fKendallW);

    const json* interval = FindTable(tables, "Confidence Interval Summary");
    ASSERT_NE(interval, nullptr);
    ASSERT_EQ((*interval)["rows"].size(), 1u);
    const PairedHodgesLehmannResult hl = HodgesLehmannPaired(before, after, 0.95);
    const json& cells = (*interval)["rows"][0]["cells"];
    std::vector<double> numbers;
    for (const json& cell : cells) {
        if (cell.is_object() && cell["value"].is_number()) {
            numbers.push_back(cell["value"]);
        }
    }
    EXPECT_NE(std::find(numbers.begin(), numbers.end(), hl.fEstimate), numbers.end());
    EXPECT_NE(std::find(numbers.begin(), numbers.end(), hl.fLower), numbers.end());
    EXPECT_NE(std::find(numbers.begin(), numbers.end(), hl.fUpper), numbers.end());

    // Kendall's pairwise table and Cochran's: three pairs each; Friedman's
    // homogeneous subsets.
    const json* kendallPairs = FindTable(tables, "Pairwise Comparisons");
    ASSERT_NE(kendallPairs, nullptr);
    EXPECT_EQ((*kendallPairs)["rows"].size(), 3u);
    const json* cochranPairs = FindTable(tables, "Pairwise Comparisons", 1);
    ASSERT_NE(cochranPairs, nullptr);
    EXPECT_EQ((*cochranPairs)["rows"].size(), 3u);
    EXPECT_NE(FindTable(tables, "Homogeneous Subsets"), nullptr);
    EXPECT_NE(FindTable(tables, "Related-Samples McNemar Change Test Summary"), nullptr);
    EXPECT_NE(FindTable(tables, "Related-Samples Marginal Homogeneity Test Summary"), nullptr);
}
