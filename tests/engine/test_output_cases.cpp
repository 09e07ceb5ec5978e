// Cases run end to end through the real nptests program: a small data file,
// a command, and cells of the rendered output (JSON) with the values R or a
// hand computation gives for them, written beside each case. One driver
// reads them all; a new case is an entry of the table.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "RunCommand.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// One cell of the output: the table (by title; "T#2" is the second table of
// that title), the row (its labels joined by " / "; empty for the table's
// footnotes), the column (its last label; empty for the first column), and
// the text the cell shows or the value it holds.
struct Check {
    const char* fTable;
    const char* fRow;
    const char* fColumn;
    const char* fText = nullptr;
    double fValue = kNone;
    double fTolerance = 1e-9;
};

struct OutputCase {
    const char* fName;
    const char* fData;       // CSV
    const char* fDictionary; // JSON, or null
    const char* fCommand;
    std::vector<std::string> fOptions;
    std::vector<Check> fChecks;
};

const char* const kMtcarsMpg =
    "mpg\n21\n21\n22.8\n21.4\n18.7\n18.1\n14.3\n24.4\n22.8\n19.2\n17.8\n16.4\n17.3\n15.2\n10.4\n"
    "10.4\n14.7\n32.4\n30.4\n33.9\n21.5\n15.5\n15.2\n13.3\n19.2\n27.3\n26\n30.4\n15.8\n19.7\n15\n"
    "21.4\n";

// b = i for i = 1..50, negated when i is a multiple of 3; a = 0.
std::string FiftyDifferences() {
    std::string csv = "a,b\n";
    for (int i = 1; i <= 50; ++i) {
        csv += "0," + std::to_string(i % 3 == 0 ? -i : i) + "\n";
    }
    return csv;
}
const std::string kFifty = FiftyDifferences();

const char* const kSummary = "Hypothesis Test Summary";
const char* const kIntervals = "Confidence Interval Summary";
const char* const kNominalG = R"({"variables": [{"name": "g", "measure": "nominal"}]})";

const OutputCase kCases[] = {
    // Test values, cut points and parameters show as given; estimates one
    // decimal beyond the data, standard deviations two.
    {"ParametersShowAsGiven",
     "y\n1\n2\n3\n4\n",
     nullptr,
     "NPTESTS /ONESAMPLE TEST(y) WILCOXON(TESTVALUE=2.5) BINOMIAL(SUCCESSCONTINUOUS="
     "CUTPOINT(VALUE=2.5) CLOPPER_PEARSON) KOLMOGOROV_SMIRNOV(POISSON(CUSTOM(MEAN=2.5)))",
     {},
     {{kSummary, "1", "Null Hypothesis",
       "The categories defined by y <= 2.5 and y > 2.5 occur with probabilities 0.500 and 0.500."},
      {kSummary, "2", "Null Hypothesis", "The distribution of y is Poisson with mean 2.5."},
      {kSummary, "3", "Null Hypothesis", "The median of y equals 2.5."}}},
    // mean(c(1,2,3,4,5,4)) = 3.1667, sd = 1.4720
    {"EstimatesShowOneDecimalBeyondTheData",
     "y\n1\n2\n3\n4\n5\n4\n",
     nullptr,
     "NPTESTS /ONESAMPLE TEST(y) KOLMOGOROV_SMIRNOV(NORMAL)",
     {},
     {{kSummary, "1", "Null Hypothesis",
       "The distribution of y is normal with mean 3.2 and standard deviation 1.47."}}},
    // mean = 2.125e-9, sd = 9.878e-10: the data have ten decimals
    {"TinyEstimatesKeepTheirDigits",
     "y\n1.5e-9\n2.7e-9\n1.1e-9\n3.2e-9\n",
     nullptr,
     "NPTESTS /ONESAMPLE TEST(y) KOLMOGOROV_SMIRNOV(NORMAL)",
     {},
     {{kSummary, "1", "Null Hypothesis",
       "The distribution of y is normal with mean 0.00000000213 and standard deviation "
       "0.000000000988."}}},
    // nortest::lillie.test(mtcars$mpg)$p.value = 0.217118553921932 (above 0.2: a number, not a
    // bound)
    {"LillieforsAboveTwoTenthsIsANumber",
     kMtcarsMpg,
     nullptr,
     "NPTESTS /ONESAMPLE TEST(mpg) KOLMOGOROV_SMIRNOV(NORMAL=SAMPLE UNIFORM=SAMPLE)",
     {},
     {{"One-Sample Kolmogorov-Smirnov Test (Normal) Summary", "Asymptotic Sig.(2-sided test)", "",
       nullptr, 0.217118553921932, 1e-12},
      {"One-Sample Kolmogorov-Smirnov Test (Uniform) Summary", "", "footnote",
       "Monte Carlo significance by Lilliefors' method (the parameters estimated anew in every "
       "sample), from 10000 samples with starting seed 12345."}}},
    // Three controls, one trimmed from each end: one is left.
    {"MosesWithTooFewControlsAfterTrimming",
     "y,g\n5,1\n2,1\n9,1\n1,2\n7,2\n3,2\n8,2\n",
     kNominalG,
     "NPTESTS /INDEPENDENT TEST(y) GROUP(g) MOSES",
     {},
     {{kSummary, "1", "Decision", "Unable to compute."},
      {kSummary, "", "footnote",
       "Fewer than two cases of the control group remain after trimming; the test cannot be "
       "computed."}}},
    // exactRankTests::wilcox.exact(b)$p.value = 0.0261669681711965 for 50 differences, both kinds
    {"FiftyDifferencesAreExactInBothFamilies",
     kFifty.c_str(),
     nullptr,
     "NPTESTS /ONESAMPLE TEST(b) WILCOXON /RELATED TEST(a b) WILCOXON",
     {},
     {{"One-Sample Wilcoxon Signed Rank Test Summary", "Exact Sig.(2-sided test)", "", nullptr,
       0.0261669681711965, 1e-12},
      {"Related-Samples Wilcoxon Signed Rank Test Summary", "Exact Sig.(2-sided test)", "", nullptr,
       0.0261669681711965, 1e-12}}},
    // chisq.test(c(2,2,3,0), p = 1:4/10) and chisq.test(c(2,3,0,1), p = 1:4/10): each split
    // tests the file's four categories.
    {"CustomFrequenciesInEverySplit",
     "s,c\n1,1\n1,2\n1,2\n1,3\n1,3\n1,3\n1,1\n2,1\n2,2\n2,2\n2,1\n2,2\n2,4\n",
     R"({"variables": [{"name": "c", "measure": "nominal"}]})",
     "NPTESTS /ONESAMPLE TEST(c) CHISQUARE(EXPECTED=CUSTOM(FREQUENCIES=1 2 3 4))",
     {"--split-by", "s"},
     {{"One-Sample Chi-Square Test Summary", "Test Statistic", "", nullptr, 5.85714285714286},
      {"One-Sample Chi-Square Test Summary", "Asymptotic Sig.(2-sided test)", "", nullptr,
       0.118771208616383},
      {"One-Sample Chi-Square Test Summary#2", "Test Statistic", "", nullptr, 8.58333333333333},
      {"One-Sample Chi-Square Test Summary#2", "Asymptotic Sig.(2-sided test)", "", nullptr,
       0.0353756628966716}}},
    // A user-missing code is no category: y = 1 2 2 3 3 3 9 with 9 missing, three frequencies.
    // chisq.test(c(1,2,3), p = c(1,2,3)/6)$statistic = 0
    {"UserMissingCodesAreNoCategories",
     "y\n1\n2\n2\n3\n3\n3\n9\n",
     R"({"variables": [{"name": "y", "measure": "nominal", "missing": [9]}]})",
     "NPTESTS /ONESAMPLE TEST(y) CHISQUARE(EXPECTED=CUSTOM(FREQUENCIES=1 2 3))",
     {},
     {{"One-Sample Chi-Square Test Summary", "Test Statistic", "", nullptr, 0}}},
    // n = 5 pairs reach at most 93.75% coverage (c rounds to 0): no 95% bounds, either kind.
    {"HodgesLehmannLevelOutOfReach",
     "a,b,g\n1,2,1\n2,5,1\n3,3.5,2\n4,4.5,2\n5,4,2\n",
     kNominalG,
     "NPTESTS /RELATED TEST(a b) HODGES_LEHMAN /INDEPENDENT TEST(a) GROUP(g) HODGES_LEHMAN",
     {},
     {{kIntervals, "1", "Lower", "."},
      {kIntervals, "1", "Upper", "."},
      {kIntervals, "2", "Lower", "."},
      {kIntervals, "", "footnote",
       "The sample is too small for a confidence interval at this level; the bounds are not "
       "shown."}}},
    // |0.1 - 0.3| ties |0.5 - 0.3|: wilcox.exact(c(-2, 2, 4, 6, 10))$p.value = 0.1875, V = 13.5
    {"DecimalDifferencesTie",
     "x\n0.1\n0.5\n0.7\n0.9\n1.3\n",
     nullptr,
     "NPTESTS /ONESAMPLE TEST(x) WILCOXON(TESTVALUE=0.3)",
     {},
     {{"One-Sample Wilcoxon Signed Rank Test Summary", "Test Statistic", "", nullptr, 13.5},
      {"One-Sample Wilcoxon Signed Rank Test Summary", "Exact Sig.(2-sided test)", "", nullptr,
       0.1875}}},
    // d = 0.2 0.2 -0.2 0.3 -0.3: ranks 2 2 2 4.5 4.5, positive sum 8.5
    {"DecimalPairedDifferencesTie",
     "a,b\n0.1,0.3\n1.1,1.3\n2.2,2.0\n0.7,1.0\n3.3,3.0\n",
     nullptr,
     "NPTESTS /RELATED TEST(a b) WILCOXON",
     {},
     {{"Related-Samples Wilcoxon Signed Rank Test Summary", "Test Statistic", "", nullptr, 8.5}}},
    // Counts 2 0 0 against 1 1 1: chi-square 4, df 2, p = exp(-2)
    {"UnknownCategoryTextsStayApart",
     "f\na\nb\nc\na\nb\nb\n",
     nullptr,
     "NPTESTS /ONESAMPLE TEST(f) CHISQUARE(EXPECTED=CUSTOM(FREQUENCIES=1 1 1 CATEGORIES='a' 'x' "
     "'y'))",
     {},
     {{"One-Sample Chi-Square Test Summary", "Test Statistic", "", nullptr, 4},
      {"One-Sample Chi-Square Test Summary", "Asymptotic Sig.(2-sided test)", "", nullptr,
       0.135335283236613}}},
    // Why a k-sample test stops: no variation at all, or one group.
    {"KSampleTestWithoutVariation",
     "t,g\n7,1\n7,1\n7,2\n7,2\n",
     kNominalG,
     "NPTESTS /INDEPENDENT TEST(t) GROUP(g) KRUSKAL_WALLIS",
     {},
     {{kSummary, "1", "Decision", "Unable to compute."},
      {kSummary, "", "footnote", "The values do not vary; the test cannot be computed."}}},
    {"KSampleTestWithOneGroup",
     "y,g\n1,1\n2,1\n3,1\n",
     kNominalG,
     "NPTESTS /INDEPENDENT TEST(y) GROUP(g) KRUSKAL_WALLIS",
     {},
     {{kSummary, "", "footnote",
       "Only one group has cases of this field; the test cannot be computed."}}},
    // Tests that order the values refuse a nominal field in both families.
    {"NominalFieldsHaveNoOrder",
     "a,b\n1,2\n2,1\n1,3\n3,1\n2,3\n",
     R"({"variables": [{"name": "a", "measure": "nominal"}, {"name": "b", "measure": "nominal"}]})",
     "NPTESTS /RELATED TEST(a b) WILCOXON",
     {},
     {{kSummary, "1", "Decision", "Unable to compute."},
      {kSummary, "", "footnote",
       "The test orders the values, and a nominal field has no order; the test cannot be "
       "computed."}}},
};

// The tables of the output, in order.
void CollectTables(const json& items, std::vector<const json*>& tables) {
    for (const json& item : items) {
        if (item["kind"] == "heading") {
            CollectTables(item["items"], tables);
        } else if (item["kind"] == "table") {
            tables.push_back(&item);
        }
    }
}

std::string Joined(const json& labels) {
    std::string text;
    for (const json& label : labels) {
        text += (text.empty() ? "" : " / ") + label["text"].get<std::string>();
    }
    return text;
}

const json* FindTable(const std::vector<const json*>& tables, std::string title) {
    int wanted = 1;
    if (const auto hash = title.find('#'); hash != std::string::npos) {
        wanted = std::stoi(title.substr(hash + 1));
        title.resize(hash);
    }
    for (const json* table : tables) {
        if ((*table)["title"] == title && --wanted == 0) {
            return table;
        }
    }
    return nullptr;
}

void ExpectCell(const std::vector<const json*>& tables, const Check& check) {
    SCOPED_TRACE(std::string(check.fTable) + " | " + check.fRow + " | " + check.fColumn);
    const json* table = FindTable(tables, check.fTable);
    ASSERT_NE(table, nullptr) << "no such table";
    if (std::string(check.fRow).empty()) {
        std::vector<std::string> texts;
        for (const json& footnote : (*table)["footnotes"]) {
            texts.push_back(footnote["text"]);
        }
        EXPECT_NE(std::find(texts.begin(), texts.end(), check.fText), texts.end())
            << "footnotes: " << testing::PrintToString(texts);
        return;
    }
    std::size_t column = 0;
    if (std::string(check.fColumn).size() > 0) {
        const json& columns = (*table)["columns"];
        for (column = 0; column < columns.size(); ++column) {
            if (!columns[column].empty() && columns[column].back()["text"] == check.fColumn) {
                break;
            }
        }
        ASSERT_LT(column, columns.size()) << "no such column";
    }
    for (const json& row : (*table)["rows"]) {
        if (Joined(row["labels"]) != check.fRow) {
            continue;
        }
        const json& cell = row["cells"].at(column);
        ASSERT_FALSE(cell.is_null()) << "empty cell";
        if (check.fText) {
            EXPECT_EQ(cell["text"], check.fText);
        } else {
            ASSERT_TRUE(cell["value"].is_number()) << cell.dump();
            const double value = cell["value"];
            EXPECT_NEAR(value, check.fValue,
                        check.fTolerance * std::max(1.0, std::fabs(check.fValue)));
        }
        return;
    }
    ADD_FAILURE() << "no such row";
}

void PrintTo(const OutputCase& c, std::ostream* out) {
    *out << c.fName;
}

class OutputCases : public testing::TestWithParam<OutputCase> {};

TEST_P(OutputCases, CellsHoldTheReferenceValues) {
    const OutputCase& c = GetParam();
    const fs::path dir =
        fs::path(testing::TempDir()) / ("output_case_" + std::to_string(getpid()) + "_" + c.fName);
    fs::create_directories(dir);
    std::ofstream(dir / "data.csv", std::ios::binary) << c.fData;
    // A fixed seed, so that Monte Carlo notes read the same every run.
    std::vector<std::string> arguments{
        "--data", "data.csv", "-c",         std::string(c.fCommand) + " /CRITERIA SEED=12345",
        "-f",     "json",     "--no-charts"};
    arguments.insert(arguments.end(), c.fOptions.begin(), c.fOptions.end());
    if (c.fDictionary) {
        std::ofstream(dir / "dictionary.json", std::ios::binary) << c.fDictionary;
        arguments.insert(arguments.end(), {"--dictionary", "dictionary.json"});
    }
    const CommandResult result = RunNptests(dir.string(), arguments);
    fs::remove_all(dir);
    ASSERT_EQ(result.fStatus, 0) << result.fErr;
    std::vector<const json*> tables;
    const json output = json::parse(result.fOut);
    CollectTables(output["items"], tables);
    for (const Check& check : c.fChecks) {
        ExpectCell(tables, check);
    }
}

INSTANTIATE_TEST_SUITE_P(Engine, OutputCases, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<OutputCase>& info) {
                             return std::string(info.param.fName);
                         });

} // namespace
