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
#include <pugixml.hpp>

#include "engine/RReference.h"
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

namespace {

// Runs nptests on a CSV file with a command and returns the parsed JSON.
json RunOnData(const std::filesystem::path& csv, const std::filesystem::path& dictionary,
               const std::string& command) {
    const std::filesystem::path out = csv.parent_path() / (csv.stem().string() + ".json");
    const std::string line = std::string(NPTESTS_BINARY) + " --data " + csv.string() +
                             " --dictionary " + dictionary.string() + " -c \"" + command +
                             "\" -f json -o " + out.string() + " 2>&1";
    EXPECT_EQ(std::system(line.c_str()), 0) << line;
    std::ifstream in(out);
    return json::parse(in, nullptr, false);
}

// The significance shown in the summary row of test `title`.
double SummarySig(const std::vector<json>& tables, const std::string& title) {
    const json* summary = FindTable(tables, "Hypothesis Test Summary");
    if (summary) {
        for (const json& row : (*summary)["rows"]) {
            if (row["cells"][1]["text"] == title && row["cells"][2]["value"].is_number()) {
                return row["cells"][2]["value"];
            }
        }
    }
    return std::nan("");
}

} // namespace

TEST(RelatedDocuments, FromCsvDataAgreesWithR) {
    if (!std::filesystem::exists(NPTESTS_BINARY) || !HaveR()) {
        GTEST_SKIP() << "needs nptests and Rscript";
    }
    const std::filesystem::path dir = std::filesystem::path(testing::TempDir()) / "related_e2e";
    std::filesystem::create_directories(dir);
    // R writes its own data sets as CSV files and computes the references:
    // the sleep study side by side, friedman.test's rounding times, and hot,
    // windy and high-ozone days of airquality (missing ozone readings left
    // empty, so that those days leave the test).
    const std::vector<double> r = RunR("setwd('" + dir.string() + "')\n" + R"(
s <- data.frame(drug1 = sleep$extra[1:10], drug2 = sleep$extra[11:20])
write.csv(s, "sleep.csv", row.names = FALSE)
d <- s$drug2 - s$drug1; nz <- d[d != 0]
cat(wilcox.test(s$drug2, s$drug1, paired = TRUE, exact = FALSE, correct = FALSE)$statistic,
    suppressMessages(exactRankTests::wilcox.exact(s$drug2, s$drug1, paired = TRUE))$p.value,
    binom.test(sum(nz > 0), length(nz))$p.value, "\n")
m <- matrix(c(5.40, 5.50, 5.55, 5.85, 5.70, 5.75, 5.20, 5.60, 5.50, 5.55, 5.50, 5.40, 5.90, 5.85,
  5.70, 5.45, 5.55, 5.60, 5.40, 5.40, 5.35, 5.45, 5.50, 5.35, 5.25, 5.15, 5.00, 5.85, 5.80, 5.70,
  5.25, 5.20, 5.10, 5.65, 5.55, 5.45, 5.60, 5.35, 5.45, 5.05, 5.00, 4.95, 5.50, 5.50, 5.40, 5.45,
  5.55, 5.50, 5.55, 5.55, 5.35, 5.45, 5.50, 5.55, 5.50, 5.45, 5.25, 5.65, 5.60, 5.40, 5.70, 5.65,
  5.55, 6.30, 6.30, 6.25), nrow = 22, byrow = TRUE)
write.csv(data.frame(round = m[, 1], narrow = m[, 2], wide = m[, 3]), "rounding.csv",
          row.names = FALSE)
f <- friedman.test(m)
cat(f$statistic, f$p.value, f$statistic / (22 * 2), "\n")
a <- data.frame(hot = 1 * (airquality$Temp > 80), windy = 1 * (airquality$Wind > 9),
                ozone = 1 * (airquality$Ozone > 40))
write.csv(a, "air.csv", row.names = FALSE, na = "")
x <- as.matrix(na.omit(a)); k <- 3; T <- colSums(x); R <- rowSums(x); N <- sum(T)
Q <- (k - 1) * (k * sum(T^2) - N^2) / (k * N - sum(R^2))
cat(nrow(x), Q, pchisq(Q, k - 1, lower.tail = FALSE), "\n")
)");
    ASSERT_EQ(r.size(), 9u);
    // Each data file names only its own variables.
    const auto dictionary = [&](const std::string& name, const std::string& variables) {
        std::ofstream(dir / name) << "{\"variables\": [" << variables << "]}";
        return dir / name;
    };

    std::vector<json> tables;
    Tables(RunOnData(dir / "sleep.csv",
                     dictionary("sleep.json", R"({"name": "drug1"}, {"name": "drug2"})"),
                     "NPTESTS /RELATED TEST(drug1 drug2) SIGN WILCOXON HODGES_LEHMAN.")["items"],
           tables);
    const json* wilcoxon = FindTable(tables, "Related-Samples Wilcoxon Signed Rank Test Summary");
    ASSERT_NE(wilcoxon, nullptr);
    EXPECT_NEAR(StatisticsValue(*wilcoxon, "Test Statistic"), r[0], 1e-9);
    EXPECT_NEAR(SummarySig(tables, "Related-Samples Wilcoxon Signed Rank Test"), r[1], 1e-6);
    EXPECT_NEAR(SummarySig(tables, "Related-Samples Sign Test"), r[2], 1e-6);
    EXPECT_NE(FindTable(tables, "Confidence Interval Summary"), nullptr);

    tables.clear();
    Tables(RunOnData(dir / "rounding.csv",
                     dictionary("rounding.json",
                                R"({"name": "round"}, {"name": "narrow"}, {"name": "wide"})"),
                     "NPTESTS /RELATED TEST(round narrow wide) FRIEDMAN(COMPARE=STEPWISE) "
                     "KENDALL(COMPARE=PAIRWISE).")["items"],
           tables);
    const json* friedman = FindTable(
        tables, "Related-Samples Friedman's Two-Way Analysis of Variance by Ranks Summary");
    ASSERT_NE(friedman, nullptr);
    EXPECT_NEAR(StatisticsValue(*friedman, "Test Statistic"), r[3], 1e-9);
    EXPECT_NEAR(
        SummarySig(tables, "Related-Samples Friedman's Two-Way Analysis of Variance by Ranks"),
        r[4], 1e-6);
    const json* kendall =
        FindTable(tables, "Related-Samples Kendall's Coefficient of Concordance Summary");
    ASSERT_NE(kendall, nullptr);
    EXPECT_NEAR(StatisticsValue(*kendall, "Kendall's W"), r[5], 1e-9);
    EXPECT_NE(FindTable(tables, "Homogeneous Subsets"), nullptr);
    const json* pairs = FindTable(tables, "Pairwise Comparisons");
    ASSERT_NE(pairs, nullptr);
    EXPECT_EQ((*pairs)["rows"].size(), 3u);

    tables.clear();
    Tables(RunOnData(dir / "air.csv",
                     dictionary("air.json", R"({"name": "hot", "measure": "nominal"},
                                {"name": "windy", "measure": "nominal"},
                                {"name": "ozone", "measure": "nominal"})"),
                     "NPTESTS /RELATED TEST(hot windy ozone) COCHRAN(SUCCESS=LIST(1) "
                     "COMPARE=PAIRWISE).")["items"],
           tables);
    const json* cochran = FindTable(tables, "Related-Samples Cochran's Q Test Summary");
    ASSERT_NE(cochran, nullptr);
    EXPECT_EQ(StatisticsValue(*cochran, "Total N"), r[6]);
    EXPECT_NEAR(StatisticsValue(*cochran, "Test Statistic"), r[7], 1e-9);
    EXPECT_NEAR(SummarySig(tables, "Related-Samples Cochran's Q Test"), r[8], 1e-6);
}

TEST(RelatedDocuments, TestsChosenByMeasurementLevelAndFieldCount) {
    const TestSplit split;
    const struct {
        std::vector<int> fields;
        const char* algorithm;
    } cases[] = {{{0, 1}, "RWilcoxonSignedRanks"},
                 {{0, 1, 2}, "RFriedmansTwoWayByRanks"},
                 {{3, 4}, "RMcNemar"},
                 {{3, 4, 5}, "RCochransQ"},
                 {{6, 7}, "RMarginalHomogeneity"},
                 {{0, 6}, "RWilcoxonSignedRanks"},
                 {{6, 7, 0}, "RFriedmansTwoWayByRanks"}};
    for (const auto& c : cases) {
        Document doc;
        split.AddDictionary(doc);
        RelatedPlan plan;
        plan.fFields = c.fields;
        plan.fChooseTests = true;
        WriteRelatedTests(split.fData, plan, Criteria{}, doc);
        pugi::xml_document parsed;
        ASSERT_TRUE(parsed.load_string(doc.Write().c_str()));
        const pugi::xml_node tests =
            parsed.first_element_by_path("StatXML/Extension/NPAROutput/NonParametricTests");
        ASSERT_EQ(doc.AlgorithmCount(), 1);
        EXPECT_STREQ(tests.child("Algorithm").attribute("name").value(), c.algorithm);
    }
}
