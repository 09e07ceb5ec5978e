// The engine through the real nptests program: data in, documents and output
// out. Exit statuses and messages of bad data and bad options, splits, the
// missing-value rules, the same bytes for the same seed, and the one-sample
// statistics of the documents against R, the layout of the related tables.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <pugixml.hpp>

#include "RReference.h"
#include "RunCommand.h"

namespace fs = std::filesystem;

namespace {
class EngineRun : public testing::Test {
protected:
    void SetUp() override {
        fDir = fs::path(testing::TempDir()) /
               ("engine_e2e_" + std::to_string(getpid()) + "_" +
                testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(fDir);
        fs::create_directories(fDir);
    }
    void TearDown() override { fs::remove_all(fDir); }

    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(fDir / name, std::ios::binary) << text;
    }
    CommandResult Run(const std::vector<std::string>& arguments) const {
        return RunNptests(fDir.string(), arguments);
    }
    std::string Document(const std::string& folder, int split = 1) const {
        return ReadWholeFile(fDir / folder / ("split_" + std::to_string(split) + ".xml"));
    }

    fs::path fDir;
};

// The statistics of the n-th Algorithm named `name` (top-level and grouped
// values by name; a lower bound ">x" reads as x).
std::map<std::string, double> Statistics(const std::string& document, const std::string& name,
                                         int nth = 0) {
    pugi::xml_document doc;
    EXPECT_TRUE(doc.load_string(document.c_str()));
    std::map<std::string, double> values;
    int seen = 0;
    for (pugi::xpath_node algorithm :
         doc.select_nodes(("//Algorithm[@name='" + name + "']").c_str())) {
        if (seen++ != nth) {
            continue;
        }
        const pugi::xml_node stats =
            algorithm.node().find_child_by_attribute("StructuredTable", "name", "StatisticsResult");
        for (pugi::xpath_node attribute : stats.select_nodes(".//Attribute")) {
            std::string text = attribute.node().attribute("value").value();
            if (!text.empty() && text[0] == '>') {
                text.erase(0, 1);
            }
            values[attribute.node().attribute("name").value()] = std::strtod(text.c_str(), nullptr);
        }
        values["decision:" + std::string(algorithm.node().attribute("decision").value())] = 1;
    }
    return values;
}

// The document's count of cases left out of every test.
double Dropped(const std::string& document) {
    pugi::xml_document doc;
    EXPECT_TRUE(doc.load_string(document.c_str()));
    return doc.select_node("//Counts").node().attribute("droppedCount").as_double();
}
} // namespace

TEST_F(EngineRun, BadDataEndsWithStatusOneAndWritesNothing) {
    Write("ragged.csv", "a,b\n1,2\n3\n");
    const CommandResult result =
        Run({"--data", "ragged.csv", "-c", "NPTESTS /ONESAMPLE TEST(a)", "-o", "out.txt"});
    EXPECT_EQ(result.fStatus, 1);
    EXPECT_EQ(result.fErr, "nptests: ragged.csv: line 3: the row has 1 cells, the header 2\n");
    EXPECT_FALSE(fs::exists(fDir / "out.txt"));
    const CommandResult missing = Run({"--data", "none.csv", "-c", "NPTESTS /ONESAMPLE TEST(a)"});
    EXPECT_EQ(missing.fStatus, 1);
    EXPECT_EQ(missing.fErr, "nptests: none.csv: cannot open the data file\n");
}

TEST_F(EngineRun, OptionsThatDoNotFitEndWithStatusTwoAndNameTheOption) {
    Write("d.csv", "x,g,s\n1,1,a\n2,2,b\n3,1,c\n");
    const struct {
        const char* fCommand;
        const char* fMessage;
    } cases[] = {
        {"NPTESTS /ONESAMPLE TEST(s) WILCOXON",
         "nptests: WILCOXON needs a continuous or ordinal field; s is nominal\n"},
        {"NPTESTS /ONESAMPLE TEST(x) CHISQUARE(EXPECTED=CUSTOM(FREQUENCIES=1 2))",
         "nptests: CHISQUARE FREQUENCIES gives 2 frequencies, but x has 3 categories; give one "
         "per category, or CATEGORIES=...\n"},
        {"NPTESTS /ONESAMPLE TEST(x) CHISQUARE(EXPECTED=CUSTOM(FREQUENCIES=1 2 CATEGORIES=1))",
         "nptests: CHISQUARE: FREQUENCIES gives 2 frequencies and CATEGORIES 1 categories; give "
         "one frequency per category\n"},
        {"NPTESTS /ONESAMPLE TEST(s) BINOMIAL(SUCCESSCATEGORICAL=LIST(1))",
         "nptests: BINOMIAL SUCCESSCATEGORICAL: s is a string variable; quote its values ('a')\n"},
        {"NPTESTS /ONESAMPLE TEST(s) RUNS(GROUPCONTINUOUS=CUTPOINT(VALUE=2))",
         "nptests: RUNS GROUPCONTINUOUS: a cut point needs a numeric field; every TEST field is "
         "a string\n"},
        // The procedure itself rejects this one, before the engine runs.
        {"NPTESTS /INDEPENDENT TEST(x g) GROUP(g)",
         "nptests: The grouping variable g also appears in the test variable list.\nnptests: the "
         "NPTESTS command cannot be run\n"},
        {"NPTESTS /CRITERIA ALPHA=0.1", "nptests: the command asks for no test: give /ONESAMPLE, "
                                        "/INDEPENDENT or /RELATED\n"},
    };
    for (const auto& c : cases) {
        const CommandResult result = Run({"--data", "d.csv", "-c", c.fCommand});
        EXPECT_EQ(result.fStatus, 2) << c.fCommand;
        EXPECT_EQ(result.fErr, c.fMessage) << c.fCommand;
        EXPECT_EQ(result.fOut, "") << c.fCommand;
    }
    const CommandResult syntax = Run({"--data", "d.csv", "-c", "NPTESTS /ONESAMPLE TEST(nope)"});
    EXPECT_EQ(syntax.fStatus, 2);
    const CommandResult split =
        Run({"--data", "d.csv", "--split-by", "s", "-c", "NPTESTS /ONESAMPLE TEST(x)"});
    EXPECT_EQ(split.fStatus, 2);
    EXPECT_EQ(split.fErr, "nptests: --split-by: s is a string variable; split by a numeric "
                          "variable (codes with value labels)\n");
}

// Fields the family cannot test end the run with status 2 before anything is
// written; a two-sample test on a field of three groups keeps its row and says why.
TEST_F(EngineRun, FieldsThatDoNotFitTheFamilyEndWithStatusTwo) {
    Write("d.csv", "x,y,z,g\n1,2,3,1\n2,3,1,2\n3,5,4,1\n4,1,2,3\n5,7,6,2\n6,4,5,3\n");
    Write("d.json", R"({"variables": [{"name": "g", "measure": "nominal"}]})");
    const struct {
        const char* fCommand;
        const char* fMessage;
    } cases[] = {
        {"NPTESTS /RELATED TEST(x y z) SIGN FRIEDMAN",
         "nptests: RELATED SIGN compares exactly two fields; TEST names 3 fields\n"},
        {"NPTESTS /RELATED TEST(x y z) MARGINAL_HOMOGENEITY",
         "nptests: RELATED MARGINAL_HOMOGENEITY compares exactly two fields; TEST names 3 "
         "fields\n"},
        {"NPTESTS /RELATED TEST(x x) WILCOXON",
         "nptests: RELATED TEST names x twice; the related tests compare different fields\n"},
        {"NPTESTS /RELATED TEST(y)",
         "nptests: RELATED TEST names 1 field; the related tests compare two or more fields\n"},
        {"NPTESTS /INDEPENDENT TEST(x) GROUP(y)",
         "nptests: INDEPENDENT GROUP: y is continuous; the groups come from a nominal or ordinal "
         "field (give its measurement level in the dictionary)\n"},
    };
    for (const auto& c : cases) {
        const CommandResult result =
            Run({"--data", "d.csv", "--dictionary", "d.json", "-c", c.fCommand, "-o", "out.txt"});
        EXPECT_EQ(result.fStatus, 2) << c.fCommand;
        EXPECT_EQ(result.fErr, c.fMessage) << c.fCommand;
        EXPECT_FALSE(fs::exists(fDir / "out.txt")) << c.fCommand;
    }
    const CommandResult three =
        Run({"--data", "d.csv", "--dictionary", "d.json", "-c",
             "NPTESTS /INDEPENDENT TEST(x) GROUP(g) MANN_WHITNEY KRUSKAL_WALLIS(COMPARE=NONE)"});
    ASSERT_EQ(three.fStatus, 0) << three.fErr;
    // The summary row of each test, as the text output lays it out.
    const auto rowOf = [&](const std::string& test) {
        const std::size_t at = three.fOut.find(test);
        return at == std::string::npos ? std::string()
                                       : three.fOut.substr(at, three.fOut.find('\n', at) - at);
    };
    EXPECT_NE(rowOf("Mann-Whitney U Test").find(".[a]  Unable to compute."), std::string::npos)
        << three.fOut;
    EXPECT_NE(three.fOut.find("a. The test compares two groups; the number of groups with cases "
                              "of this field is 3."),
              std::string::npos);
    EXPECT_NE(rowOf("Kruskal-Wallis Test").find("0.276     Retain the null hypothesis."),
              std::string::npos);
}

TEST_F(EngineRun, SplitsInAscendingOrderWithTheirValues) {
    Write("d.csv", "x,g\n1,3\n2,1\n3,3\n4,\n5,1\n6,2\n");
    const CommandResult result =
        Run({"--data", "d.csv", "--split-by", "g", "--write-documents", "docs", "-c",
             "NPTESTS /ONESAMPLE TEST(x) WILCOXON(TESTVALUE=2)", "-f", "json"});
    ASSERT_EQ(result.fStatus, 0) << result.fErr;
    const std::string plan = ReadWholeFile(fDir / "docs" / "splits.json");
    EXPECT_NE(plan.find("\"values\": [\n        1.0\n      ]"), std::string::npos) << plan;
    // Split 1 holds the cases of g = 1, split 3 those of g = 3; the case
    // without a split value is in none.
    EXPECT_EQ(Statistics(Document("docs", 1), "OWilcoxonSignedRanks")["TotalN"], 2);
    EXPECT_EQ(Statistics(Document("docs", 2), "OWilcoxonSignedRanks")["TotalN"], 1);
    EXPECT_EQ(Statistics(Document("docs", 3), "OWilcoxonSignedRanks")["TotalN"], 2);
    EXPECT_FALSE(fs::exists(fDir / "docs" / "split_4.xml"));
    const size_t first = result.fOut.find("\"g = 1\"");
    const size_t third = result.fOut.find("\"g = 3\"");
    EXPECT_NE(first, std::string::npos) << result.fOut.substr(0, 2000);
    EXPECT_LT(first, third);
    // The documents saved render again with --splits.
    const CommandResult again = Run({"--splits", "docs/splits.json", "-f", "json"});
    EXPECT_EQ(again.fStatus, 0) << again.fErr;
    EXPECT_EQ(again.fOut, result.fOut);
}

TEST_F(EngineRun, MissingValueRules) {
    Write("d.json", R"({"variables": [{"name": "x"}, {"name": "y", "missing": [9]}]})");
    Write("d.csv", "x,y\n1,1\n2,9\n,3\n4,4\n5,\n6,6\n");
    auto totals = [&](const std::string& missing) {
        const CommandResult result =
            Run({"--data", "d.csv", "--dictionary", "d.json", "--write-documents", "docs", "-c",
                 "NPTESTS /ONESAMPLE TEST(x y) WILCOXON " + missing});
        EXPECT_EQ(result.fStatus, 0) << result.fErr;
        const std::string doc = Document("docs");
        return std::vector<double>{Statistics(doc, "OWilcoxonSignedRanks", 0)["TotalN"],
                                   Statistics(doc, "OWilcoxonSignedRanks", 1)["TotalN"],
                                   Dropped(doc)};
    };
    EXPECT_EQ(totals(""), (std::vector<double>{5, 4, 0}));
    EXPECT_EQ(totals("/MISSING USERMISSING=INCLUDE"), (std::vector<double>{5, 5, 0}));
    EXPECT_EQ(totals("/MISSING SCOPE=LISTWISE"), (std::vector<double>{3, 3, 3}));
}

TEST_F(EngineRun, TheSameSeedGivesTheSameBytes) {
    std::string csv = "x\n";
    for (int i = 0; i < 60; ++i) {
        csv += std::to_string(std::sin(i * 1.7) * 3 + i % 7) + "\n";
    }
    Write("d.csv", csv);
    auto run = [&](const std::string& folder, const std::string& seed) {
        const CommandResult result =
            Run({"--data", "d.csv", "--write-documents", folder, "-c",
                 "NPTESTS /ONESAMPLE TEST(x) KOLMOGOROV_SMIRNOV(NORMAL=SAMPLE UNIFORM=SAMPLE "
                 "NSAMPLES=2000) /CRITERIA SEED=" +
                     seed});
        EXPECT_EQ(result.fStatus, 0) << result.fErr;
        return Document(folder);
    };
    const std::string first = run("a", "12345");
    EXPECT_EQ(first, run("b", "12345"));
    EXPECT_NE(first, run("c", "54321"));
    EXPECT_NE(first.find("OLilliefors"), std::string::npos);
}

// The one-sample statistics of the documents against R, on R's own data
// (precip, rivers, islands are real data sets) and on small invented samples.
TEST_F(EngineRun, OneSampleTestsAgreeWithR) {
    if (!HaveR()) {
        GTEST_SKIP() << "Rscript is not installed";
    }
    const std::vector<double> precip = RunR("cat(precip)");
    const std::vector<double> rivers = RunR("cat(rivers)");
    ASSERT_EQ(precip.size(), 70u);
    std::string csv = "precip,rivers,count\n";
    const std::vector<double> counts = {3, 1, 2, 2, 3, 1, 1, 2, 3, 3, 2, 1, 2, 2, 3, 1, 1, 1, 3, 2};
    for (std::size_t i = 0; i < rivers.size(); ++i) {
        char row[96];
        std::snprintf(row, sizeof row, "%s,%.17g,%s\n",
                      i < precip.size() ? std::to_string(precip[i]).c_str() : "", rivers[i],
                      i < counts.size() ? std::to_string(static_cast<int>(counts[i])).c_str() : "");
        csv += row;
    }
    Write("d.csv", csv);
    Write("d.json", R"({"variables": [{"name": "count", "measure": "nominal"}]})");
    const CommandResult result =
        Run({"--data", "d.csv", "--dictionary", "d.json", "--write-documents", "docs", "-f", "json",
             "-c",
             "NPTESTS /ONESAMPLE TEST(precip rivers) WILCOXON(TESTVALUE=35) "
             "KOLMOGOROV_SMIRNOV(NORMAL=SAMPLE EXPONENTIAL(CUSTOM(MEAN=600)) NSAMPLES=1000)"
             " /CRITERIA SEED=7"});
    ASSERT_EQ(result.fStatus, 0) << result.fErr;
    const std::string doc = Document("docs");
    const std::string setup = "precip <- precip; rivers <- rivers\n";

    // Wilcoxon signed rank: V and the normal approximation without continuity correction
    // (precip has ties, so R gives the approximation too).
    auto wilcoxon = Statistics(doc, "OWilcoxonSignedRanks", 0);
    const std::vector<double> w =
        RunR(setup + "t <- suppressWarnings(wilcox.test(precip, mu = 35, correct = FALSE, "
                     "exact = FALSE)); cat(t$statistic, t$p.value)");
    EXPECT_NEAR(wilcoxon["TestStatistic"], w[0], 1e-9);
    EXPECT_NEAR(wilcoxon["AsymptoticSig2Tailed"], w[1], 1e-6);
    EXPECT_EQ(wilcoxon["TotalN"], 70);

    // Kolmogorov-Smirnov: Lilliefors statistic and significance of nortest, and
    // ks.test against a given exponential.
    auto normal = Statistics(doc, "OKolmogorovSmirnov", 0);
    const std::vector<double> l =
        RunR(setup + "t <- nortest::lillie.test(precip); cat(t$statistic, t$p.value)");
    EXPECT_NEAR(normal["TestStatistic"], l[0], 1e-9);
    if (l[1] <= 0.2) {
        EXPECT_NEAR(normal["AsymptoticSig2Tailed"], l[1], 1e-6);
    }
    auto exponential = Statistics(doc, "OKolmogorovSmirnov", 3);
    const std::vector<double> k =
        RunR(setup + "t <- suppressWarnings(ks.test(rivers, 'pexp', 1/600, exact = FALSE));"
                     " cat(t$statistic, t$p.value)");
    EXPECT_NEAR(exponential["TestStatistic"], k[0], 1e-9);
    EXPECT_NEAR(exponential["AsymptoticSig2Tailed"], k[1], 1e-6);

    // The JSON output carries the same significance in the summary.
    EXPECT_NE(result.fOut.find("Hypothesis Test Summary"), std::string::npos);

    // Chi-square and binomial on the nominal field.
    const CommandResult categorical =
        Run({"--data", "d.csv", "--dictionary", "d.json", "--write-documents", "cat", "-c",
             "NPTESTS /ONESAMPLE TEST(count) CHISQUARE BINOMIAL(TESTVALUE=0.3 "
             "SUCCESSCATEGORICAL=LIST(1) CLOPPER_PEARSON)"});
    ASSERT_EQ(categorical.fStatus, 0) << categorical.fErr;
    const std::string catDoc = Document("cat");
    auto chi = Statistics(catDoc, "OChiSquare");
    const std::vector<double> c = RunR("x <- " + RVector(counts) +
                                       "; t <- chisq.test(table(x)); cat(t$statistic, t$p.value)");
    EXPECT_NEAR(chi["TestStatistic"], c[0], 1e-9);
    EXPECT_NEAR(chi["AsymptoticSig2Tailed"], c[1], 1e-6);
    auto binomial = Statistics(catDoc, "OBinomial");
    const std::vector<double> b =
        RunR("x <- " + RVector(counts) +
             "; t <- binom.test(sum(x == 1), length(x), 0.3); cat(t$statistic, t$conf.int)");
    EXPECT_EQ(binomial["TestStatistic"], b[0]);
    pugi::xml_document parsed;
    ASSERT_TRUE(parsed.load_string(catDoc.c_str()));
    const pugi::xpath_node lower =
        parsed.select_node("//StructuredTable[@name='ClopperPearson']//Attribute[@name='Lower']");
    ASSERT_TRUE(lower);
    EXPECT_NEAR(lower.node().attribute("value").as_double(), b[1], 1e-9);
}

// The tables charts draw name categories by position, bin only the non-zero
// differences, and give an ordinal field that a test treated as continuous
// the field information of a continuous field.
TEST_F(EngineRun, RelatedTablesAreLaidOutForTheCharts) {
    Write("d.json", R"({"variables": [
        {"name": "pre", "measure": "ordinal", "valueLabels": [{"value": 1, "label": "Poor"},
            {"value": 2, "label": "Fair"}, {"value": 3, "label": "Good"}]},
        {"name": "post", "measure": "ordinal", "valueLabels": [{"value": 1, "label": "Poor"},
            {"value": 2, "label": "Fair"}, {"value": 3, "label": "Good"}]}]})");
    Write("d.csv", "pre,post\n1,2\n2,3\n2,2\n3,3\n1,3\n2,1\n");
    const CommandResult result =
        Run({"--data", "d.csv", "--dictionary", "d.json", "--write-documents", "docs", "-f", "json",
             "-c",
             "NPTESTS /RELATED TEST(pre post) SIGN MARGINAL_HOMOGENEITY MCNEMAR(SUCCESS=LIST(3))"});
    ASSERT_EQ(result.fStatus, 0) << result.fErr;
    pugi::xml_document doc;
    ASSERT_TRUE(doc.load_string(Document("docs").c_str()));
    auto text = [&](const std::string& xpath) {
        return std::string(doc.select_node(xpath.c_str()).node().child_value());
    };
    const std::string mh =
        "//Algorithm[@name='RMarginalHomogeneity']//SimpleTable[@name='Crosstab']";
    EXPECT_EQ(text(mh + "/RowNames"), "0 1 2");
    EXPECT_EQ(text(mh + "/ColumnNames"), "0 1 2");
    // McNemar: failure (the first failure value met, 1 = position 0), then success.
    const std::string mc =
        "//Algorithm[@name='RMcNemar']//StructuredTable[@name='CategoryFieldsComparison']";
    EXPECT_EQ(text(mc + "/SimpleTable[@name='Crosstab']/RowNames"), "0 2");
    EXPECT_EQ(std::string(doc.select_node((mc + "/Attribute[@name='RowSuccessList']").c_str())
                              .node()
                              .attribute("value")
                              .value()),
              "2");
    // Differences 1 1 0 0 2 -1: the two ties are in no bin, no bin holds zero inside.
    double counted = 0;
    for (pugi::xpath_node row :
         doc.select_nodes("//Algorithm[@name='RSign']//SimpleTable[@name='Histogram']/Row")) {
        double midpoint = 0;
        double count = 0;
        std::istringstream(row.node().child_value()) >> midpoint >> count;
        EXPECT_NE(midpoint, 0) << "a bin centred on zero mixes signs";
        counted += count;
    }
    EXPECT_EQ(counted, 4);
    // The sign test treated pre and post as continuous.
    for (const char* index : {"0", "1"}) {
        EXPECT_TRUE(doc.select_node((std::string("//FieldInfo[@varIndex='") + index +
                                     "']/StructuredTable[@name='ContinuousDistribution']")
                                        .c_str()))
            << "field " << index;
    }
}
