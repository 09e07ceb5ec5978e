// The string dictionary, the message translator and the English string
// table: every key the module passes has a text, with its places intact.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "RunCommand.h"
#include "host/fac/FacMessageTranslator.h"
#include "host/fac/FacSTDictionary.h"

namespace {
std::filesystem::path WriteTable(const std::string& folderName, const std::string& text) {
    const std::filesystem::path folder = std::filesystem::path(testing::TempDir()) / folderName;
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "my_procedure.txt", std::ios::binary) << text;
    return folder;
}

// The places of a text: "^N" and "%N" outside brackets, and the numbers of
// the "[...]N" lists.
struct Places {
    std::set<int> fTop;
    std::set<int> fLists;
    bool operator==(const Places&) const = default;
};

Places PlacesOf(const std::string& text) {
    Places places;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '[') {
            const size_t close = text.find(']', i);
            if (close != std::string::npos && close + 1 < text.size() &&
                std::isdigit(static_cast<unsigned char>(text[close + 1]))) {
                places.fLists.insert(text[close + 1] - '0');
                i = close + 1;
                continue;
            }
        }
        if ((text[i] == '^' || text[i] == '%') && i + 1 < text.size() &&
            std::isdigit(static_cast<unsigned char>(text[i + 1]))) {
            places.fTop.insert(text[i + 1] - '0');
        }
    }
    return places;
}

Places Expect(std::set<int> top, std::set<int> lists = {}) {
    return {std::move(top), std::move(lists)};
}

FacSTDictionary RealTable() {
    FacSTDictionary dictionary(NPTESTS_SOURCE_DIR "/resources/strings");
    EXPECT_TRUE(dictionary.SetProcedure("Nonparametric Tests"));
    return dictionary;
}
} // namespace

TEST(FacSTDictionary, ReadsEntriesEscapesAndComments) {
    const std::filesystem::path folder =
        WriteTable("strings_read", "# a comment\tnot an entry\n"
                                   "\n"
                                   "Plain\tA plain text.\n"
                                   "Two\\nlines\tFirst\\nsecond\\tand \\\\ \\q\n"
                                   "Windows\tEnds in CR LF.\r\n"
                                   "no tab on this line\n"
                                   "@message\tCode ^1 from the engine.\n"
                                   "220001\tKnown message ^1.\n");
    FacSTDictionary dictionary(folder.string());
    EXPECT_EQ(dictionary.LookUp("Plain"), "Plain") << "no procedure set yet";
    ASSERT_TRUE(dictionary.SetProcedure("My Procedure"));
    EXPECT_EQ(dictionary.LookUp("Plain"), "A plain text.");
    EXPECT_EQ(dictionary.LookUp("Two\nlines"), "First\nsecond\tand \\ \\q");
    EXPECT_EQ(dictionary.LookUp("Windows"), "Ends in CR LF.");
    EXPECT_EQ(dictionary.LookUp("no tab on this line"), "no tab on this line");
    EXPECT_EQ(dictionary.LookUp("# a comment"), "# a comment");
    EXPECT_EQ(dictionary.LookUp("Absent ^1"), "Absent ^1");
    EXPECT_EQ(dictionary.LookUp("220001"), "Known message ^1.");
    EXPECT_EQ(dictionary.LookUp("220002"), "Code 220002 from the engine.");
    EXPECT_EQ(dictionary.LookUp("22000x"), "22000x");
    EXPECT_TRUE(dictionary.Has("Plain"));
    EXPECT_FALSE(dictionary.Has("220002"));
    EXPECT_FALSE(FacSTDictionary(folder.string()).SetProcedure("Other Procedure"));
}

TEST(FacSTDictionary, ReadsATableOncePerProcessAndReportsMisses) {
    const std::filesystem::path folder = WriteTable("strings_once", "Key\tFirst text.\n");
    FacSTDictionary first(folder.string());
    ASSERT_TRUE(first.SetProcedure("My Procedure"));
    WriteTable("strings_once", "Key\tSecond text.\n");
    FacSTDictionary second(folder.string());
    ASSERT_TRUE(second.SetProcedure("My Procedure"));
    EXPECT_EQ(second.LookUp("Key"), "First text.");

    std::vector<std::string> misses;
    FacSTDictionary::SetMissRecorder([&](std::string_view key) { misses.emplace_back(key); });
    first.LookUp("Key");
    first.LookUp("Other");
    second.LookUp("123");
    FacSTDictionary::SetMissRecorder({});
    first.LookUp("After");
    EXPECT_EQ(misses, (std::vector<std::string>{"Other", "123"}));
}

TEST(FacMessageTranslator, FillsNumberedPlaces) {
    EXPECT_EQ(FacMessageTranslator::Format("^1 samples, seed ^2.", {"10000", "2000000"}),
              "10000 samples, seed 2000000.");
    EXPECT_EQ(FacMessageTranslator::Format("^2 before ^1; ^3 is gone", {"a", "b"}),
              "b before a;  is gone");
    EXPECT_EQ(FacMessageTranslator::Format("^^1 ^ 2 100% ^", {"x"}), "^1 ^ 2 100% ^");
    EXPECT_EQ(FacMessageTranslator::Format("^10", std::vector<std::string>(10, "t")), "t");
    EXPECT_EQ(FacMessageTranslator::Format(nullptr, "Lill ^1 samples ^ 2 seed ...", {"5", "7"}),
              "Lill 5 samples ^ 2 seed ...");
    const FacSTDictionary dictionary = RealTable();
    EXPECT_EQ(FacMessageTranslator::Format(&dictionary, "Lill ^1 samples ^ 2 seed ...",
                                           {"10000", "2000000"}),
              "Monte Carlo significance by Lilliefors' method (the parameters estimated anew in "
              "every sample), from 10000 samples with starting seed 2000000.");
}

TEST(PathFactory, NamesTheFoldersOfEachKind) {
    const std::string root = PathFactory::getPathInstance(PathFactory::kResources).getPath();
    EXPECT_FALSE(root.empty());
    EXPECT_EQ(PathFactory::getPathInstance(PathFactory::kStrings).getPath(), root + "/strings");
    EXPECT_EQ(PathFactory::getPathInstance(PathFactory::kTemplates).getPath(), root + "/templates");
}

// Every condition key with the places its text must use: the parts the
// module adds at the top level, and its lists.
TEST(StringTable, HasEveryConditionKeyWithItsPlaces) {
    const std::pair<const char*, Places> keys[] = {
        {"DefaultEqualProbabilities_O_ChiSquare_1", Expect({1})},
        {"UserSpecifiesProbabilities_O_ChiSquare_1", Expect({1})},
        {"ACutPointIsSpecified_O_Binomial_4", Expect({1, 2, 3, 4})},
        {"ABinaryTestVariableIsSpecified_O_Binomial_5", Expect({1, 2, 3, 4, 5})},
        {"CategoryListsAreSpecified_O_Binomial_5", Expect({1, 2, 3}, {1, 2})},
        {"ABinaryTestVariableIsSpecified_O_Runs_3", Expect({1, 2, 3})},
        {"CategoryListsAreSpecified_O_Runs_3", Expect({1}, {1, 2})},
        {"ACutPointIsSpecified_O_Runs_2", Expect({1, 2})},
        {"O_WilcoxonSignedRanks_2", Expect({1, 2})},
        {"ACutPointIsSpecified_O_Binomial_2", Expect({1, 2})},
        {"ABinaryTestVariableIsSpecified_O_Binomial_2", Expect({1, 2})},
        {"CategoryListsAreSpecified_O_Binomial_2", Expect({1}, {1})},
        {"UniformDistribution_O_KolmogorovSmirnov_3", Expect({1, 2, 3})},
        {"NormalDistribution_O_KolmogorovSmirnov_3", Expect({1, 2, 3})},
        {"PoissonDistribution_O_KolmogorovSmirnov_2", Expect({1, 2})},
        {"ExponentialDistribution_O_KolmogorovSmirnov_2", Expect({1, 2})},
        {"NormalDistribution_O_Lilliefors_3", Expect({1, 2, 3})},
        {"UniformDistribution_O_Lilliefors_3", Expect({1, 2, 3})},
        {"ExponentialDistribution_O_Lilliefors_2", Expect({1, 2})},
        {"R_Sign_2", Expect({1, 2})},
        {"R_WilcoxonSignedRanks_2", Expect({1, 2})},
        {"DefaultAllDistinctValuesUsed_R_CochransQ_1", Expect({}, {1})},
        {"CategoryListsAreSpecified_R_CochransQ_1", Expect({}, {1})},
        {"CategoryListsAreSpecified_R_McNemar_2", Expect({1, 2})},
        {"AllDistinctValuesUsed_R_McNemar_2", Expect({1, 2})},
        {"R_FriedmansTwoWayByRanks_1", Expect({}, {1})},
        {"R_KendallsCoefficient_1", Expect({}, {1})},
        {"AllDistinctValuesUsed_R_MarginalHomogeneity_2", Expect({1, 2})},
        {"R_HodgesLehman_2", Expect({1, 2})},
        {"AllDistinctValuesUsed_I_HodgesLehman_2", Expect({1, 2})},
        {"CategoryListsAreSpecified_I_HodgesLehman_2", Expect({1, 2})},
        {"DefaultAllDistinctValuesUsed_I_Moses_2", Expect({1, 2})},
        {"CategoryListsAreSpecified_I_Moses_2", Expect({1, 2})},
        {"DefaultAllDistinctValuesUsed_I_MannWhitneyU_2", Expect({1, 2})},
        {"CategoryListsAreSpecified_I_MannWhitneyU_2", Expect({1, 2})},
        {"DefaultAllDistinctValuesUsed_I_WaldWolfowitzRuns_2", Expect({1, 2})},
        {"CategoryListsAreSpecified_I_WaldWolfowitzRuns_2", Expect({1, 2})},
        {"DefaultAllDistinctValuesUsed_I_KolmogorovSmirnov_2", Expect({1, 2})},
        {"CategoryListsAreSpecified_I_KolmogorovSmirnov_2", Expect({1, 2})},
        {"DefaultAllDistinctValuesUsed_I_KruskalWallis_2", Expect({1, 2})},
        {"CategoryListsAreSpecified_I_KruskalWallis_2", Expect({1, 2})},
        {"DefaultAllDistinctValuesUsed_I_JonckheereTerpstra_2", Expect({1, 2})},
        {"CategoryListsAreSpecified_I_JonckheereTerpstra_2", Expect({1, 2})},
        {"DefaultAllDistinctValuesUsed_I_Median_2", Expect({1, 2})},
        {"CategoryListsAreSpecified_I_Median_2", Expect({1, 2})},
        // Templates whose key spells a place differently from the text.
        {"Sig ^1 Lill ^2 samples ^ 3 seed ...", Expect({1, 2, 3})},
        {"Lill ^1 samples ^ 2 seed ...", Expect({1, 2})},
    };
    const FacSTDictionary dictionary = RealTable();
    for (const auto& [key, places] : keys) {
        ASSERT_TRUE(dictionary.Has(key)) << key;
        EXPECT_EQ(PlacesOf(dictionary.LookUp(key)), places) << key;
    }
}

// Every other fixed key the tables and charts pass; a key that is a
// template keeps its places.
TEST(StringTable, HasEveryFixedKeyWithItsPlaces) {
    const char* titles[] = {
        "One-Sample Chi-Square Test",
        "One-Sample Binomial Test",
        "One-Sample Runs Test",
        "One-Sample Wilcoxon Signed Rank Test",
        "One-Sample Binomial Success Rate",
        "One-Sample Kolmogorov-Smirnov Test",
        "One-Sample Kolmogorov-Smirnov Normal Test",
        "One-Sample Kolmogorov-Smirnov Uniform Test",
        "One-Sample Kolmogorov-Smirnov Poisson Test",
        "One-Sample Kolmogorov-Smirnov Exponential Test",
        "Related-Samples Sign Test",
        "Related-Samples Wilcoxon Signed Rank Test",
        "Related-Samples Cochran's Q Test",
        "Related-Samples McNemar Change Test",
        "Related-Samples Friedman's Two-Way Analysis of Variance by Ranks",
        "Related-Samples Kendall's Coefficient of Concordance",
        "Related-Samples Marginal Homogeneity Test",
        "Related-Samples Hodges-Lehman Median Difference",
        "Independent-Samples Hodges-Lehman Median Difference",
        "Independent-Samples Moses Test of Extreme Reaction",
        "Independent-Samples Mann-Whitney U Test",
        "Independent-Samples Wald-Wolfowitz Runs Test",
        "Independent-Samples Kolmogorov-Smirnov Test",
        "Independent-Samples Kruskal-Wallis Test",
        "Independent-Samples Jonckheere-Terpstra Test for Ordered Alternatives",
        "Independent-Samples Median Test",
        "Unknown",
    };
    std::vector<std::string> keys;
    for (const char* title : titles) {
        keys.emplace_back(title);
        keys.push_back(std::string(title) + " Summary");
    }
    keys.emplace_back("One-Sample Binomial Success Rate ^1");
    const char* others[] = {
        // Headings and the Hypothesis Test Summary.
        "[%1:, ^1]1", "^1 across ^2", "Hypothesis Test Summary", "Statistics", "Null Hypothesis",
        "Test", "Sig.", "Decision", "Unable to compute.", "Reject the null hypothesis.",
        "Retain the null hypothesis.", "The significance level is ^1.",
        "Asymptotic significance is displayed.", "HTSFootNoteFootNoteFisherLillAsymp",
        "HTSFootNoteFootNoteFisherLillifors", "HTSFootNoteShowExact",
        "HTSFootNoteFisherCantCompute", "HTSFootNoteFootNoteFisherLowerBound",
        "HTSFootNoteFootNoteFisherExactSig", "HTSFootNoteYateAsymSig",
        "HTSFootNoteUsingMaxWhenTies",
        // Confidence Interval Summary.
        "Confidence Interval Summary", "Confidence Interval Type", "Parameter", "Estimate",
        "^1 Confidence Interval", "Lower", "Upper", "Clopper-Pearson", "Jeffreys",
        "Likelihood Ratio",
        // Pairwise comparisons and homogeneous subsets.
        "Pairwise Comparisons of ^1", "Pairwise Comparisons", "PairwiseComparisonsTableCaptionJ^1",
        "PairwiseComparisonsTableCaptionCFKKM^1", "^1-^2", "Test Statistic", "Std. Error",
        "Std. Test Statistic", "Adj. Sig.",
        "Significance values have been adjusted by the Bonferroni correction for multiple tests.",
        "Homogeneous Subsets based on ^1", "Homogeneous Subsets",
        "HomogeneousSubsetsTableCaption^1", "Subset", "Sample",
        "Each cell shows the sample number of successes.",
        "Each cell shows the sample average rank.",
        "Each cell shows the sample average rank of ^1.", "Each cell shows the sample median ^1.",
        "Standard Error", "Standardized Test Statistic", "Sig. (1-sided test)",
        "Adjusted Sig. (1-sided test)", "Sig. (2-sided test)", "Adjusted Sig. (2-sided test)",
        // Statistics tables: row and group names.
        "TotalN", "TestStatistic", "StandardError", "StandardizedTestStatistic",
        "AsymptoticSig2Tailed", "ExactSig2Tailed", "ExactSig1Tailed", "DegreeOfFreedom",
        "MonteCarloSig2Tailed", "ConfidenceIntervalLowerBound", "ConfidenceIntervalUpperBound",
        "^1% Confidence Interval", "Lower Bound", "Upper Bound", "MinimumPossible",
        "MaximumPossible", "ObservedControlGroup", "TrimmedControlGroup",
        "YatesContinuityCorrection", "FisherExactSig", "Asymptotic", "MostExtremeDifferences",
        "Absolute", "Positive", "Negative", "The test statistic is the number of runs.",
        "The test statistic is the span.",
        // Charts.
        "E62935", "E60564", "E60703", "E61605", "E60352", "Frequency", "Mean Rank", "Rank",
        "Observed", "Hypothesized", "ObservedFrequency", "Grand Median",
        "NPAR_BOXPLOT_CONTROLGROUP", "NPAR_BOXPLOT_EXPERIMENTALGROUP", "Normal Parameters",
        "Uniform Parameters", "Poisson Parameter", "Exponential Parameter", "Mean",
        "Std. Deviation", "Minimum", "Maximum", "OWilcoxonSignedRanksHypotheticalMedian",
        "OWilcoxonSignedRanksObservedMedian", "Observed Number of Runs = ^1", "Too few runs",
        "Too many runs", "Number of Ties = ^1", "Positive Differences", "Negative Differences",
        "Each node shows the\nsample average rank of\n^1.",
        "Each node shows the\\nsample average rank of\\n^1.",
        "Each node shows the\\nsample median of\\n^1.",
        "Each node shows the sample number of successes.", "Categorical Field Information",
        "Continuous Field Information", "histoN",
        // Messages whose meaning the tables rely on: the pair-specific codes.
        "220013", "222328", "222329", "222331", "222332", "222333", "222334"};
    keys.insert(keys.end(), std::begin(others), std::end(others));

    const FacSTDictionary dictionary = RealTable();
    for (const std::string& key : keys) {
        ASSERT_TRUE(dictionary.Has(key)) << key;
        EXPECT_EQ(PlacesOf(dictionary.LookUp(key)), PlacesOf(key)) << key;
    }
    EXPECT_EQ(dictionary.LookUp("299999"), "Engine message 299999.");
}

// The texts of the real table as patterns, each "^N" standing for any part.
std::vector<std::regex> TextPatterns() {
    std::vector<std::regex> patterns;
    std::ifstream in(NPTESTS_SOURCE_DIR "/resources/strings/nonparametric_tests.txt");
    std::string line;
    while (std::getline(in, line)) {
        const size_t tab = line.find('\t');
        if (line.empty() || line[0] == '#' || tab == std::string::npos) {
            continue;
        }
        std::string pattern;
        size_t literal = 0;
        const std::string text = line.substr(tab + 1);
        for (size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '^' && i + 1 < text.size() &&
                std::isdigit(static_cast<unsigned char>(text[i + 1]))) {
                pattern += ".*";
                ++i;
                continue;
            }
            ++literal;
            if (std::strchr("\\^$.|?*+()[]{}", text[i])) {
                pattern += '\\';
                pattern += text[i];
            } else {
                pattern += text[i];
            }
        }
        if (literal >= 12) { // "^1-^2" would match any key with a hyphen
            patterns.emplace_back(pattern);
        }
    }
    return patterns;
}

// Every example document, rendered through the real module: no key the
// module passes is without a text. A key that already reads as a text of the
// table (a translated message handed on as a key) is no missing text.
TEST(StringTable, CoversEveryKeyTheExamplesPass) {
    std::vector<std::vector<std::string>> runs;
    for (const std::string& document : ExampleDocuments(NPTESTS_EXAMPLES_DIR)) {
        runs.push_back(ExampleArguments(NPTESTS_EXAMPLES_DIR, document));
    }
    if (std::filesystem::exists(std::filesystem::path(NPTESTS_EXAMPLES_DIR) / "splits.json")) {
        runs.push_back({"--splits", "splits.json"});
    }
    const std::vector<std::regex> texts = TextPatterns();
    ASSERT_FALSE(texts.empty());
    const std::string prefix = "nptests: no text for the key \"";
    for (std::vector<std::string> arguments : runs) {
        arguments.insert(arguments.begin(), {"--missing-strings", "-f", "json"});
        const CommandResult result = RunNptests(NPTESTS_EXAMPLES_DIR, arguments);
        EXPECT_NE(result.fOut.find("\"procedure\""), std::string::npos) << arguments.back();
        std::istringstream lines(result.fErr);
        std::string line;
        while (std::getline(lines, line)) {
            if (line.rfind(prefix, 0) != 0) {
                continue;
            }
            const std::string key = line.substr(prefix.size(), line.size() - prefix.size() - 1);
            const bool isText =
                std::any_of(texts.begin(), texts.end(),
                            [&](const std::regex& text) { return std::regex_match(key, text); });
            EXPECT_TRUE(isText) << arguments.back() << ": no text for the key \"" << key << "\"";
        }
    }
}
