// The independent-samples records end to end: a split is written by the
// engine's writers into a result document, which the real nptests binary
// reads and renders; the output must hold every test with its tables and no
// reader complaint.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "engine/RReference.h"
#include "engine/doc/Builders.h"
#include "engine/stats/IndependentKSample.h"

namespace {

Variable MakeVariable(const char* name, const char* label, MeasureLevel level) {
    Variable variable;
    variable.fName = name;
    variable.fLabel = label;
    variable.fLevel = level;
    return variable;
}

struct Split {
    Variable fScore = MakeVariable("score", "Score", MeasureLevel::kContinuous);
    Variable fGroup = MakeVariable("group", "Group", MeasureLevel::kNominal);
    SplitData fData;
};

// Scores of `sizes[g]` cases in group g (coded 1, 2, ...), rounded so that
// there are ties, the groups shifted a little apart.
void Fill(Split& split, const std::vector<std::size_t>& sizes, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal(50, 10);
    std::vector<double> scores;
    std::vector<double> groups;
    for (std::size_t g = 0; g < sizes.size(); ++g) {
        for (std::size_t i = 0; i < sizes[g]; ++i) {
            scores.push_back(std::round(normal(random) + 4.0 * static_cast<double>(g)));
            groups.push_back(static_cast<double>(g + 1));
        }
    }
    std::vector<Category> categories;
    for (std::size_t g = 0; g < sizes.size(); ++g) {
        const std::string text = std::to_string(g + 1);
        categories.push_back({static_cast<double>(g + 1), text, "Group " + text});
    }
    split.fData.fFields = {{&split.fScore, scores, {}}, {&split.fGroup, groups, categories}};
    split.fData.fCaseNumbers.clear();
    for (std::size_t i = 0; i < scores.size(); ++i) {
        split.fData.fCaseNumbers.push_back(static_cast<double>(i + 1));
    }
}

// Explicit scores and group codes (1, 2, ...).
void FillWith(Split& split, const std::vector<double>& scores, const std::vector<double>& groups,
              std::size_t groupCount) {
    std::vector<Category> categories;
    for (std::size_t g = 0; g < groupCount; ++g) {
        const std::string text = std::to_string(g + 1);
        categories.push_back({static_cast<double>(g + 1), text, "Group " + text});
    }
    split.fData.fFields = {{&split.fScore, scores, {}}, {&split.fGroup, groups, categories}};
    split.fData.fCaseNumbers.clear();
    for (std::size_t i = 0; i < scores.size(); ++i) {
        split.fData.fCaseNumbers.push_back(static_cast<double>(i + 1));
    }
}

std::string RunNptests(const std::string& arguments) {
    const std::string command = std::string(NPTESTS_BINARY) + " " + arguments + " 2>&1";
    std::string output;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[4096];
        std::size_t got = 0;
        while ((got = fread(buffer, 1, sizeof buffer, pipe)) > 0) {
            output.append(buffer, got);
        }
        EXPECT_EQ(pclose(pipe), 0) << output;
    }
    return output;
}

std::string Render(const Split& split, const IndependentPlan& plan) {
    Document doc;
    doc.SetComment("independent-samples records written by the engine's writers");
    doc.SetCounts({static_cast<long long>(split.fData.CaseCount()), 0});
    doc.SetSettings(0.05, 0.95, MissingTreatment::kTestwise);
    doc.AddField({"score", "Score", MeasureLevel::kContinuous, StorageType::kDouble, {}});
    std::vector<std::pair<std::string, std::string>> values;
    std::vector<double> counts;
    for (const Category& category : split.fData.Categories(1)) {
        values.emplace_back(category.fText, category.fLabel);
        double count = 0;
        for (const double v : split.fData.Values(1)) {
            count += v == category.fValue;
        }
        counts.push_back(count);
    }
    doc.AddField({"group", "Group", MeasureLevel::kNominal, StorageType::kInteger, values});
    doc.AddField({"case", "Case", MeasureLevel::kContinuous, StorageType::kInteger, {}});
    WriteIndependentTests(split.fData, plan, Criteria{}, doc);
    const std::vector<double> scores(split.fData.Values(0).begin(), split.fData.Values(0).end());
    ValueHistogram bins;
    bins.fBins.push_back({50, scores.size()});
    doc.AddContinuousInfo(0, static_cast<double>(scores.size()), 0, 100, 50, 10, bins);
    doc.AddCategoricalInfo(1, static_cast<double>(scores.size()), counts);

    const std::filesystem::path file =
        std::filesystem::path(testing::TempDir()) / "independent_documents.xml";
    std::ofstream(file) << doc.Write();
    return RunNptests("-f json " + file.string());
}

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace

TEST(IndependentDocuments, EveryTestRendersWithItsTables) {
    if (!std::filesystem::exists(NPTESTS_BINARY)) {
        GTEST_SKIP() << "nptests is not built";
    }
    Split two;
    Fill(two, {14, 17}, 1);
    IndependentPlan plan;
    plan.fFields = {0};
    plan.fGroupField = 1;
    plan.fMannWhitney = plan.fWaldWolfowitz = plan.fKolmogorovSmirnov = true;
    plan.fMoses = MosesOptions{};
    plan.fHodgesLehmann = true;
    plan.fMedian = MedianOptions{};
    const std::string out = Render(two, plan);
    for (const char* title :
         {"Independent-Samples Mann-Whitney U Test", "Independent-Samples Wald-Wolfowitz Runs Test",
          "Independent-Samples Kolmogorov-Smirnov Test",
          "Independent-Samples Moses Test of Extreme Reaction", "Independent-Samples Median Test",
          "Confidence Interval Summary"}) {
        EXPECT_TRUE(Has(out, title)) << title << "\n" << out.substr(0, 3000);
    }
    EXPECT_FALSE(Has(out, "Not parse element")) << out.substr(0, 3000);
    EXPECT_TRUE(Has(out, "\"messages\": []"))
        << out.substr(out.size() > 2000 ? out.size() - 2000 : 0);

    Split four;
    Fill(four, {12, 15, 11, 13}, 2);
    IndependentPlan kPlan;
    kPlan.fFields = {0};
    kPlan.fGroupField = 1;
    kPlan.fKruskalWallis = KruskalWallisOptions{Compare::kPairwise};
    kPlan.fJonckheere = JonckheereOptions{true, Compare::kStepwise};
    kPlan.fMedian = MedianOptions{true, 0, Compare::kPairwise};
    kPlan.fMannWhitney = true; // more groups than it compares: kept, with its message
    const std::string k = Render(four, kPlan);
    for (const char* title :
         {"Independent-Samples Kruskal-Wallis Test", "Independent-Samples Jonckheere-Terpstra Test",
          "Pairwise Comparisons of Score", "Homogeneous Subsets based on Score",
          "Significances are adjusted for multiple tests by the Bonferroni correction.",
          "The test compares two groups; the number of groups with cases of this field is 4."}) {
        EXPECT_TRUE(Has(k, title)) << title;
    }
    EXPECT_FALSE(Has(k, "Not parse element"));
    EXPECT_TRUE(Has(k, "\"messages\": []"));
}

// From the CSV file to the rendered tables: the numbers the output shows are
// R's, computed from the same file (kruskal.test, chisq.test on the median
// split, wilcox.test, ks.test, the median of the differences).
TEST(IndependentDocuments, ClinicDataFromCsvShowRsNumbers) {
    if (!std::filesystem::exists(NPTESTS_BINARY)) {
        GTEST_SKIP() << "nptests is not built";
    }
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    const std::string data = std::string(NPTESTS_SOURCE_DIR) + "/examples/data/clinic";
    const std::string k =
        RunNptests("--no-charts --data " + data + ".csv --dictionary " + data +
                   ".json -c \"NPTESTS /INDEPENDENT TEST(wait_min age) GROUP(clinic) "
                   "KRUSKAL_WALLIS(COMPARE=PAIRWISE) MEDIAN(COMPARE=NONE).\"");
    const std::string two =
        RunNptests("--no-charts --data " + data + ".csv --dictionary " + data +
                   ".json -c \"NPTESTS /INDEPENDENT TEST(wait_min) GROUP(sex) MANN_WHITNEY "
                   "KOLMOGOROV_SMIRNOV HODGES_LEHMAN.\"");
    const std::vector<double> r = RunR("d <- read.csv('" + data + R"(.csv')
f <- function(v) { x <- d[[v]]; g <- d$clinic; ok <- !is.na(x) & !is.na(g); x <- x[ok]; g <- g[ok]
  kw <- kruskal.test(x, g); m <- median(x)
  cs <- suppressWarnings(chisq.test(table(x > m, g), correct = FALSE))
  c(kw$statistic, kw$p.value, m, cs$statistic, cs$p.value) }
x <- d$wait_min; ok <- !is.na(x); a <- x[ok & d$sex == 1]; b <- x[ok & d$sex == 2]
w <- wilcox.test(b, a, exact = FALSE, correct = FALSE)
k <- suppressWarnings(ks.test(a, b, exact = FALSE))
cat(f("wait_min"), f("age"), w$statistic, w$p.value, k$statistic, median(outer(b, a, "-")))
)");
    ASSERT_EQ(r.size(), 14u);
    const auto shown = [](double v) {
        char text[64];
        std::snprintf(text, sizeof text, "%.3f", v);
        return std::string(text);
    };
    for (std::size_t i = 0; i < 10; ++i) {
        EXPECT_TRUE(Has(k, shown(r[i]))) << "R's " << shown(r[i]) << " (number " << i << ")";
    }
    for (std::size_t i = 10; i < 14; ++i) {
        EXPECT_TRUE(Has(two, shown(r[i]))) << "R's " << shown(r[i]) << " (number " << i << ")";
    }
    EXPECT_TRUE(Has(k, "Pairwise Comparisons of Waiting time (minutes)"));
    EXPECT_TRUE(Has(two, "Confidence Interval Summary"));
}

// Values at the ends of the doubles, all-tied values and a single case per
// group: every record is written and read without complaint (tests that
// cannot be computed keep their row with the reason's message).
TEST(IndependentDocuments, ExtremeValuesAndTiesRender) {
    if (!std::filesystem::exists(NPTESTS_BINARY)) {
        GTEST_SKIP() << "nptests is not built";
    }
    IndependentPlan plan;
    plan.fFields = {0};
    plan.fGroupField = 1;
    plan.fMannWhitney = plan.fWaldWolfowitz = plan.fKolmogorovSmirnov = true;
    plan.fMoses = MosesOptions{};
    plan.fHodgesLehmann = true;
    plan.fKruskalWallis = KruskalWallisOptions{Compare::kStepwise};
    plan.fMedian = MedianOptions{true, 0, Compare::kPairwise};
    plan.fJonckheere = JonckheereOptions{false, Compare::kPairwise};
    const std::vector<std::pair<std::vector<double>, std::vector<double>>> cases{
        {{1e308, -1e308, 0, 0, 5, 5, 5, 1e-300}, {1, 2, 1, 2, 1, 2, 1, 2}},
        {{3, 3, 3, 3, 3, 3}, {1, 2, 1, 2, 1, 2}},
        {{1, 2}, {1, 2}},
        {{4, 4, 9}, {1, 1, 1}},
    };
    for (const auto& [scores, groups] : cases) {
        Split split;
        FillWith(split, scores, groups, 2);
        const std::string out = Render(split, plan);
        EXPECT_TRUE(Has(out, "Hypothesis Test Summary")) << out.substr(0, 2000);
        EXPECT_FALSE(Has(out, "Not parse element"));
        EXPECT_TRUE(Has(out, "\"messages\": []"));
    }
}
