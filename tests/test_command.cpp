// The NPTESTS command: the host's parser and variable checks, the module's
// ReadCommand through the real parser, and nptests --command/--check-command.
#include <gtest/gtest.h>

#include "RunCommand.h"

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "backend/nonpar/NOPRProcCustom.h"
#include "host/cf/CFErrorChannel.h"
#include "host/parser/CommandParser.h"
#include "host/parser/NPTestsGrammar.h"
#include "host/parser/ParsedCommand.h"
#include "host/parser/ParserMessage.h"
#include "host/parser/VarSpecObj.h"
#include "host/vexa/VEXA_DataSource.h"

namespace {
// id score time1 time2 time3 group region(string)
VEXA_DataSource MakeData() {
    VEXA_DataSource data;
    for (const char* name : {"id", "score", "time1", "time2", "time3", "group"}) {
        data.AddVariable(name, 0);
    }
    data.AddVariable("region", 6);
    return data;
}

class CommandTest : public ::testing::Test {
protected:
    void SetUp() override { CFErrorChannel::Clear(); }

    // The parsed command; fails the test on a syntax error.
    std::unique_ptr<CommandSpec> Parse(std::string_view text) {
        ParserMessage message;
        auto parsed = CommandParser(fGrammar, &fData).Parse(text, message);
        EXPECT_TRUE(parsed) << message.GetErrorText();
        return parsed;
    }
    // The syntax error of a command that must not parse.
    std::string ParseError(std::string_view text) {
        ParserMessage message;
        auto parsed = CommandParser(fGrammar, &fData).Parse(text, message);
        EXPECT_FALSE(parsed) << text;
        EXPECT_EQ(message.HasError(), !parsed);
        return message.GetErrorText();
    }
    // Runs ReadCommand on a fresh procedure over the data.
    bool Read(std::string_view text) {
        fProc = NOPRProcCustom(nullptr, &fData);
        fProc.fHostVariables = fHostVariables;
        fProc.fExtraVariable = fExtraVariable;
        auto parsed = Parse(text);
        return parsed && fProc.ReadCommand(parsed.get(), &fGrammar);
    }
    std::vector<std::string> MessageTexts() const {
        std::vector<std::string> texts;
        for (const CFMessage& message : CFErrorChannel::Messages()) {
            texts.push_back(message.fText);
        }
        return texts;
    }

    CommandDescriptor fGrammar = NPTestsCommandDescriptor();
    VEXA_DataSource fData = MakeData();
    NOPRProcCustom fProc;
    std::vector<int> fHostVariables;
    int fExtraVariable = -1;
};

using CommandParserTest = CommandTest;
using VarSpecObjTest = CommandTest;
using ReadCommandTest = CommandTest;

TEST_F(CommandParserTest, ReadsKeywordsQualifiersAndValuesWithoutRegardToCase) {
    auto parsed = Parse("nptests /OneSample test(Score, time1 to TIME3) "
                        "kolmogorov_smirnov(nsamples=5000 mc_cilevel=95.5 normal=sample "
                        "uniform(SAMPLE=false) exponential=custom(mean=2)) "
                        "chisquare(expected=custom(frequencies=1 2 categories='a' 'It''s'))"
                        " /criteria seed=random alpha(.01) /PRINT SUMMARY");
    ASSERT_TRUE(parsed);
    const SubComObj* one = parsed->getSubComObj("ONESAMPLE");
    ASSERT_TRUE(one);
    std::vector<std::string> names;
    ASSERT_TRUE(one->getParamObj("test")->getVarList(names));
    EXPECT_EQ(names, (std::vector<std::string>{"Score", "time1", "time2", "time3"}));

    const ParamObj* ks = one->getParamObj("KOLMOGOROV_SMIRNOV");
    std::vector<const ParamObj*> quals;
    ASSERT_TRUE(ks->getStringQualList(
        fGrammar.getSubComDesc("ONESAMPLE")->getParamDesc("KOLMOGOROV_SMIRNOV"), quals));
    ASSERT_EQ(quals.size(), 5u);
    EXPECT_EQ(ks->getParamObj("nsamples", quals)->getIntegerValue(), 5000);
    EXPECT_DOUBLE_EQ(ks->getParamObj("MC_CILEVEL", quals)->getNumberValue(), 95.5);
    EXPECT_EQ(ks->getParamObj("POISSON", quals), nullptr);

    // NORMAL=SAMPLE reads as NORMAL(SAMPLE): one qualifier, standing alone.
    std::string text;
    const ParamObj* qualifier = nullptr;
    ASSERT_TRUE(ks->getParamObj("NORMAL", quals)->getStringAndQual(text, qualifier));
    EXPECT_EQ(text, "SAMPLE");
    ASSERT_TRUE(qualifier);
    EXPECT_TRUE(qualifier->isLeadingToken());

    ASSERT_TRUE(ks->getParamObj("UNIFORM", quals)->getStringAndQual(text, qualifier));
    ASSERT_TRUE(qualifier);
    EXPECT_FALSE(qualifier->isLeadingToken());
    EXPECT_TRUE(qualifier->isStringValueCase());
    const ParamObj* none = nullptr;
    ASSERT_TRUE(qualifier->getStringAndQual(text, none));
    EXPECT_EQ(text, "FALSE");
    EXPECT_EQ(none, nullptr);

    ASSERT_TRUE(ks->getParamObj("EXPONENTIAL", quals)->getStringAndQual(text, qualifier));
    EXPECT_EQ(text, "CUSTOM");

    // Value lists: numbers up to the next keyword, quoted strings without their quotes.
    std::vector<const ParamObj*> chi;
    ASSERT_TRUE(one->getParamObj("CHISQUARE")->getStringQualList(nullptr, chi));
    ASSERT_EQ(chi.size(), 1u);
    ASSERT_TRUE(chi[0]->getStringAndQual(text, qualifier));
    EXPECT_EQ(text, "CUSTOM");
    std::vector<const ParamObj*> custom;
    ASSERT_TRUE(qualifier->getStringQualList(nullptr, custom));
    ASSERT_EQ(custom.size(), 2u);
    const auto& frequencies = custom[0]->getValueList();
    ASSERT_EQ(frequencies.size(), 2u);
    EXPECT_FALSE(frequencies[1].fIsText);
    EXPECT_EQ(frequencies[1].fNumber, 2);
    const auto& categories = custom[1]->getValueList();
    ASSERT_EQ(categories.size(), 2u);
    EXPECT_TRUE(categories[1].fIsText);
    EXPECT_EQ(categories[1].fText, "It's");

    const SubComObj* criteria = parsed->getSubComObj("CRITERIA");
    const ParamObj* seed = criteria->getParamObj("SEED");
    EXPECT_TRUE(seed->isStringValueCase());
    EXPECT_EQ(seed->getText(), "RANDOM");
    EXPECT_FALSE(seed->getStringAndQual(text, qualifier) && text.empty());
    EXPECT_DOUBLE_EQ(criteria->getParamObj("ALPHA")->getNumberValue(), 0.01);
    // A number is not text.
    EXPECT_FALSE(ks->getParamObj("NSAMPLES", quals)->getStringAndQual(text, qualifier));
}

TEST_F(CommandParserTest, AcceptsTheShortFormsAndResolvesAll) {
    EXPECT_TRUE(Parse("")); // the empty command
    EXPECT_TRUE(Parse("NPTESTS."));
    EXPECT_TRUE(Parse("NPTESTS  .  \n"));
    auto parsed = Parse("ONESAMPLE TEST(ALL) RUNS /INDEPENDENT TEST(score) GROUP(group) MEDIAN");
    ASSERT_TRUE(parsed);
    std::vector<std::string> names;
    parsed->getSubComObj("ONESAMPLE")->getParamObj("TEST")->getVarList(names);
    EXPECT_EQ(names.size(), 7u);
    EXPECT_EQ(parsed->getSubComObj("INDEPENDENT")->getParamObj("GROUP")->getVarName(), "group");
    EXPECT_TRUE(parsed->getSubComObj("INDEPENDENT")->getParamObj("MEDIAN")->isLeadingToken());
    EXPECT_EQ(parsed->getSubComObj("RELATED"), nullptr);
}

TEST_F(CommandParserTest, ErrorsQuoteTheCommandAndPointAtTheWord) {
    EXPECT_EQ(ParseError("NPTESTS /ONESAMPLE TEST(score) BOGUS."),
              "NPTESTS: unknown keyword \"BOGUS\" on ONESAMPLE; its keywords are TEST, "
              "CHISQUARE, BINOMIAL, RUNS, KOLMOGOROV_SMIRNOV, WILCOXON\n"
              "  NPTESTS /ONESAMPLE TEST(score) BOGUS.\n"
              "                                 ^^^^^");
    EXPECT_EQ(ParseError("NPTESTS /ONESAMPLE TEST(score)\n\t/CRITERIA SEED=1.5"),
              "NPTESTS, line 2: bad value \"1.5\" for SEED: expected an integer from 1 to "
              "2000000000 or RANDOM\n"
              "  \t/CRITERIA SEED=1.5\n"
              "  \t               ^^^");
}

TEST_F(CommandParserTest, RejectsMalformedCommands) {
    struct Case {
        const char* fCommand;
        const char* fMessage;
        const char* fUnderlined;
    };
    const Case cases[] = {
        {"NPTESTS /TWOSAMPLE", "unknown subcommand \"TWOSAMPLE\"", "TWOSAMPLE"},
        {"REGRESSION /ONESAMPLE", "expected the command name NPTESTS", "REGRESSION"},
        {"NPTESTS /ONESAMPLE KOLMOGOROV_SMIRNOV(GAMMA)", "unknown qualifier \"GAMMA\"", "GAMMA"},
        {"NPTESTS /ONESAMPLE KOLMOGOROV_SMIRNOV(NSAMPLES=many)", "bad value \"many\"", "many"},
        {"NPTESTS /ONESAMPLE KOLMOGOROV_SMIRNOV(NSAMPLES=0)", "integer from 1", "0"},
        {"NPTESTS /ONESAMPLE KOLMOGOROV_SMIRNOV(MC_CILEVEL=100)", "less than 100", "100"},
        {"NPTESTS /ONESAMPLE KOLMOGOROV_SMIRNOV(NSAMPLES)", "NSAMPLES needs a value", "NSAMPLES"},
        {"NPTESTS /MISSING SCOPE='ANALYSIS'", "not a quoted string", "'ANALYSIS'"},
        {"NPTESTS /ONESAMPLE TEST(score KOLMOGOROV_SMIRNOV", "this ( is not closed", "("},
        {"NPTESTS /ONESAMPLE KOLMOGOROV_SMIRNOV(NORMAL(SAMPLE) /CRITERIA", "is not closed", "("},
        {"NPTESTS /ONESAMPLE RUNS(GROUPCONTINUOUS=CUTPOINT(SAMPLEMEDIAN))) /CRITERIA",
         "no matching (", ")"},
        {"NPTESTS /ONESAMPLE BINOMIAL(SUCCESSCATEGORICAL=LIST())", "LIST needs a list of values",
         "LIST"},
        {"NPTESTS /ONESAMPLE CHISQUARE(EXPECTED=CUSTOM(FREQUENCIES=a))",
         "FREQUENCIES needs a list of values", "FREQUENCIES"},
        {"NPTESTS /INDEPENDENT KRUSKAL_WALLIS(COMPARE=ALL)", "bad value \"ALL\" for COMPARE",
         "ALL"},
        {"NPTESTS /ONESAMPLE TEST()", "expected a variable name before )", ")"},
        {"NPTESTS /ONESAMPLE TEST(score 12)", "expected a variable name, not \"12\"", "12"},
        {"NPTESTS /ONESAMPLE TEST(time3 TO time1)", "runs backwards", "time3 TO time1"},
        {"NPTESTS /ONESAMPLE TEST(time1 TO nothing)", "\"nothing\" of the range", "nothing"},
        {"NPTESTS /INDEPENDENT GROUP(group score)", "GROUP takes one variable", "score"},
        {"NPTESTS /ONESAMPLE KOLMOGOROV_SMIRNOV(NORMAL(SAMPLE CUSTOM(MEAN=1)))",
         "NORMAL takes only one of SAMPLE, CUSTOM", "CUSTOM"},
        {"NPTESTS /ONESAMPLE TEST(score) TEST(id)", "TEST is given twice", "TEST"},
        {"NPTESTS /CRITERIA SEED=1 /criteria ALPHA=0.1", "CRITERIA is given twice", "criteria"},
        {"NPTESTS /ONESAMPLE CHISQUARE(CATEGORIES='a", "string is not closed", "'a"},
        {"NPTESTS /ONESAMPLE TEST(score). /CRITERIA", "period ends the command", "."},
        {"NPTESTS /CRITERIA SEED=12x", "\"12x\" is not a number", "12x"},
        {"NPTESTS /CRITERIA SEED=1e999", "out of range", "1e999"},
        {"NPTESTS /CRITERIA SEED=", "expected a value for SEED", ""},
        {"NPTESTS /ONESAMPLE TEST(score) ; ", "unexpected character ';'", ";"},
        {"NPTESTS /", "expected a subcommand name after /", ""},
        {"NPTESTS /PRINT SUMMARY=YES", "SUMMARY takes no value", "="},
        {"NPTESTS /CRITERIA ALPHA(0.5", "this ( is not closed", "("},
    };
    for (const Case& c : cases) {
        const std::string error = ParseError(c.fCommand);
        EXPECT_NE(error.find(c.fMessage), std::string::npos) << c.fCommand << "\n" << error;
        // The caret line underlines the offending word of the quoted line.
        const size_t lastBreak = error.rfind('\n');
        const size_t quoted = error.rfind('\n', lastBreak - 1);
        ASSERT_NE(quoted, std::string::npos) << error;
        const std::string line = error.substr(quoted + 3, lastBreak - quoted - 3);
        const std::string carets = error.substr(lastBreak + 3);
        const size_t at = carets.find('^');
        const std::string underlined = line.substr(std::min(at, line.size()), carets.size() - at);
        EXPECT_EQ(underlined, c.fUnderlined) << c.fCommand << "\n" << error;
    }
}

TEST_F(CommandParserTest, NoTruncationOrDeletionCrashes) {
    const std::string command =
        "NPTESTS /ONESAMPLE TEST(score time1 TO time3) KOLMOGOROV_SMIRNOV(NORMAL=SAMPLE=TRUE "
        "UNIFORM(CUSTOM(MIN=-1e3 MAX=+.5)) NSAMPLES=10) CHISQUARE(X='q''s' (Y))"
        " /INDEPENDENT TEST(ALL) GROUP(group) /CRITERIA SEED=RANDOM.";
    for (size_t i = 0; i <= command.size(); ++i) {
        for (const std::string& text :
             {command.substr(0, i),
              command.substr(0, i) + command.substr(std::min(i + 1, command.size()))}) {
            ParserMessage message;
            auto parsed = CommandParser(fGrammar, &fData).Parse(text, message);
            EXPECT_NE(parsed == nullptr, message.GetErrorText().empty()) << text;
        }
    }
    // Without a data source, TO and ALL cannot be resolved.
    ParserMessage message;
    EXPECT_FALSE(CommandParser(fGrammar, nullptr).Parse("NPTESTS /RELATED TEST(ALL)", message));
    EXPECT_NE(message.GetErrorText().find("ALL needs a data dictionary"), std::string::npos);
}

TEST_F(VarSpecObjTest, ValidatesNamesAndRepeats) {
    auto parsed = Parse("NPTESTS /ONESAMPLE TEST(score nothing SCORE region) "
                        "/INDEPENDENT TEST(score time1) GROUP(time1)");
    ASSERT_TRUE(parsed);
    const SubComObj* one = parsed->getSubComObj("ONESAMPLE");
    std::vector<std::string> names;
    one->getParamObj("TEST")->getVarList(names);

    VarSpecObj quiet(one->getParamObj("TEST"), one, &fGrammar, &fData, false);
    quiet.SetErrorReport(false);
    EXPECT_TRUE(quiet.ValidateVariables(names, VarSpecObj::kRepeatDrop));
    EXPECT_EQ(quiet.GetValidVarList(), (std::vector<int>{1, 6}));
    EXPECT_TRUE(quiet.ValidateVariables(names, VarSpecObj::kRepeatKeep));
    EXPECT_EQ(quiet.GetValidVarList(), (std::vector<int>{1, 1, 6}));
    EXPECT_TRUE(CFErrorChannel::Messages().empty());

    VarSpecObj strict(one->getParamObj("TEST"), one, &fGrammar, &fData, true);
    EXPECT_FALSE(strict.ValidateVariables(names, VarSpecObj::kRepeatError));
    EXPECT_EQ(strict.GetValidVarList(), (std::vector<int>{1}));
    EXPECT_EQ(MessageTexts(),
              (std::vector<std::string>{
                  "The variable nothing named on ONESAMPLE TEST is not in the data.",
                  "The variable SCORE is named more than once on ONESAMPLE TEST.",
                  "The variable region named on ONESAMPLE TEST is a string variable; a numeric "
                  "variable is expected."}));
    EXPECT_LT(strict.ValidateVariable("absent"), 0);

    CFErrorChannel::Clear();
    ParserMessage message;
    message.GenericWarning("%2 before %1; %3 stays", {"one", "two"});
    EXPECT_EQ(MessageTexts(), (std::vector<std::string>{"two before one; %3 stays"}));

    CFErrorChannel::Clear();
    const SubComObj* ind = parsed->getSubComObj("INDEPENDENT");
    VarSpecObj test(ind->getParamObj("TEST"), ind, &fGrammar, &fData, false);
    VarSpecObj group(ind->getParamObj("GROUP"), ind, &fGrammar, &fData, false);
    ind->getParamObj("TEST")->getVarList(names);
    ASSERT_TRUE(test.ValidateVariables(names, VarSpecObj::kRepeatDrop));
    EXPECT_EQ(group.ValidateVariable("TIME1"), 2);
    EXPECT_FALSE(group.CheckCommonVars(test));
    EXPECT_EQ(MessageTexts(), (std::vector<std::string>{"The grouping variable time1 also "
                                                        "appears in the test variable list."}));
}

TEST_F(ReadCommandTest, NormalReadsTheSampleValueWhileOtherDistributionsDoNot) {
    ASSERT_TRUE(Read("NPTESTS /ONESAMPLE TEST(score) KOLMOGOROV_SMIRNOV(NORMAL(SAMPLE=FALSE) "
                     "UNIFORM(SAMPLE=FALSE) EXPONENTIAL=SAMPLE=FALSE)"));
    EXPECT_FALSE(fProc.fNormalFromSample);
    EXPECT_TRUE(fProc.fUniformFromSample);
    EXPECT_TRUE(fProc.fExponentialFromSample);

    ASSERT_TRUE(Read("NPTESTS /ONESAMPLE KOLMOGOROV_SMIRNOV(NORMAL=SAMPLE=true)"));
    EXPECT_TRUE(fProc.fNormalFromSample);
    ASSERT_TRUE(Read("NPTESTS /ONESAMPLE KOLMOGOROV_SMIRNOV(NORMAL=SAMPLE NSAMPLES=500 "
                     "MC_CILEVEL=90)"));
    EXPECT_TRUE(fProc.fNormalFromSample);
    EXPECT_FALSE(fProc.fUniformFromSample);
    EXPECT_EQ(fProc.fMCSamples, 500);
    EXPECT_DOUBLE_EQ(fProc.fMCCILevel, 90.0);

    // Given parameters are not estimated from the sample; every call starts
    // from the defaults.
    ASSERT_TRUE(Read("NPTESTS /ONESAMPLE KOLMOGOROV_SMIRNOV(NORMAL=CUSTOM(MEAN=0 SD=1) "
                     "UNIFORM)"));
    EXPECT_FALSE(fProc.fNormalFromSample);
    EXPECT_FALSE(fProc.fUniformFromSample);
    EXPECT_EQ(fProc.fMCSamples, 10000);
    EXPECT_DOUBLE_EQ(fProc.fMCCILevel, 99.0);
    EXPECT_EQ(fProc.fSeed, 2000000);
}

TEST_F(ReadCommandTest, PoissonWithSampleWarnsAndSetsNothing) {
    ASSERT_TRUE(Read("NPTESTS /ONESAMPLE TEST(score) KOLMOGOROV_SMIRNOV(POISSON(SAMPLE)) "
                     "/CRITERIA SEED=12345"));
    EXPECT_EQ(MessageTexts(), (std::vector<std::string>{"K-S Poisson Sample ignored ..."}));
    EXPECT_EQ(CFErrorChannel::Messages().front().fKind, CFMessage::kWarning);
    EXPECT_FALSE(fProc.fNormalFromSample || fProc.fUniformFromSample ||
                 fProc.fExponentialFromSample);
    EXPECT_EQ(fProc.fSeed, 2000000);
    EXPECT_FALSE(fProc.fSeedFromHost);
}

TEST_F(ReadCommandTest, SeedCountsOnlyWithASampleBasedTest) {
    ASSERT_TRUE(Read("NPTESTS /ONESAMPLE KOLMOGOROV_SMIRNOV(NORMAL(SAMPLE)) /CRITERIA SEED=12345"));
    EXPECT_EQ(fProc.fSeed, 12345);
    EXPECT_FALSE(fProc.fSeedFromHost);

    ASSERT_TRUE(Read("NPTESTS /ONESAMPLE TEST(score) RUNS /CRITERIA SEED=12345"));
    EXPECT_EQ(fProc.fSeed, 2000000);
    EXPECT_FALSE(fProc.fSeedFromHost);

    // RANDOM, or no SEED at all, takes the seed from the host's generator.
    for (const char* command :
         {"NPTESTS /ONESAMPLE KOLMOGOROV_SMIRNOV(UNIFORM=SAMPLE) /CRITERIA SEED=RANDOM",
          "NPTESTS /ONESAMPLE KOLMOGOROV_SMIRNOV(EXPONENTIAL=SAMPLE)"}) {
        ASSERT_TRUE(Read(command));
        EXPECT_TRUE(fProc.fSeedFromHost) << command;
        EXPECT_GE(fProc.fSeed, 1) << command;
        EXPECT_NE(fProc.fSeed, 2000000) << command;
    }
}

TEST_F(ReadCommandTest, CollectsTheVariablesToReadSortedOnce) {
    fHostVariables = {5, 0};
    ASSERT_TRUE(Read("NPTESTS /RELATED TEST(time3 time1 score) /ONESAMPLE TEST(time1 nothing)"));
    EXPECT_EQ(fProc.fVariablesToRead, (std::vector<int>{0, 1, 2, 4, 5}));
    EXPECT_TRUE(CFErrorChannel::Messages().empty()); // unknown names are left out silently

    ASSERT_TRUE(Read("NPTESTS /INDEPENDENT TEST(time1 TO time3) GROUP(group) /ONESAMPLE "
                     "TEST(time2)"));
    EXPECT_EQ(fProc.fVariablesToRead, (std::vector<int>{0, 2, 3, 4, 5}));

    // Without a test subcommand: the host's own list and extra variable.
    fHostVariables = {3, 1, 3};
    fExtraVariable = 0;
    ASSERT_TRUE(Read("NPTESTS /CRITERIA ALPHA=0.01"));
    EXPECT_EQ(fProc.fVariablesToRead, (std::vector<int>{0, 1, 3}));
}

TEST_F(ReadCommandTest, TheGroupAmongTheTestVariablesFails) {
    EXPECT_FALSE(Read("NPTESTS /INDEPENDENT TEST(score group) GROUP(GROUP) MANN_WHITNEY"));
    EXPECT_EQ(MessageTexts(), (std::vector<std::string>{"The grouping variable group also "
                                                        "appears in the test variable list."}));
    EXPECT_EQ(CFErrorChannel::Messages().front().fKind, CFMessage::kError);
    EXPECT_TRUE(fProc.fVariablesToRead.empty());
    // An invalid group variable is not checked, and not read.
    CFErrorChannel::Clear();
    EXPECT_TRUE(Read("NPTESTS /INDEPENDENT TEST(score) GROUP(nothing)"));
    EXPECT_EQ(fProc.fVariablesToRead, (std::vector<int>{1}));
    EXPECT_TRUE(CFErrorChannel::Messages().empty());
}

TEST_F(ReadCommandTest, WithoutACommandNothingChanges) {
    fProc.fSeed = 7;
    fProc.fMCSamples = 3;
    EXPECT_TRUE(fProc.ReadCommand(nullptr, &fGrammar));
    auto parsed = Parse("NPTESTS");
    EXPECT_TRUE(fProc.ReadCommand(parsed.get(), nullptr));
    EXPECT_EQ(fProc.fSeed, 7);
    EXPECT_EQ(fProc.fMCSamples, 3);
}

// The binary, run from the source folder.
CommandResult RunNptests(const std::vector<std::string>& args) {
    return ::RunNptests(std::string(NPTESTS_SOURCE_DIR), args);
}

const std::string kData = std::string(NPTESTS_SOURCE_DIR) + "/tests/data/";

TEST(NptestsCommand, MalformedCommandsExitWithTwoAndQuoteTheWord) {
    CommandResult run =
        RunNptests({"--check-command", "--dictionary", kData + "dictionary.json", "--command",
                    "NPTESTS /ONESAMPLE TEST(score) KOLMOGOROV_SMIRNOV(NORML)"});
    EXPECT_EQ(run.fStatus, 2);
    EXPECT_TRUE(run.fOut.empty());
    EXPECT_NE(run.fErr.find("unknown qualifier \"NORML\""), std::string::npos) << run.fErr;
    const std::string before = "NPTESTS /ONESAMPLE TEST(score) KOLMOGOROV_SMIRNOV(";
    EXPECT_NE(run.fErr.find("\n  " + before + "NORML)\n" + std::string(2 + before.size(), ' ') +
                            "^^^^^\n"),
              std::string::npos)
        << run.fErr;

    run = RunNptests({"--check-command", "--command", "NPTESTS"});
    EXPECT_EQ(run.fStatus, 2);
    EXPECT_NE(run.fErr.find("--dictionary"), std::string::npos) << run.fErr;

    run = RunNptests({"--check-command", "--dictionary", kData + "bad_dictionary.json"});
    EXPECT_EQ(run.fStatus, 2);
    EXPECT_NE(run.fErr.find("variable 2 score: type must be"), std::string::npos) << run.fErr;
}

TEST(NptestsCommand, CheckCommandPrintsWhatTheCommandYields) {
    CommandResult run = RunNptests({"--check-command", "--dictionary", kData + "dictionary.json",
                                    "--command", "@" + kData + "ks_normal_sample.cmd"});
    ASSERT_EQ(run.fStatus, 0) << run.fErr;
    const auto out = nlohmann::json::parse(run.fOut);
    EXPECT_EQ(out["result"], true);
    EXPECT_EQ(
        out["variablesToRead"],
        nlohmann::json::parse(R"([{"index": 1, "name": "score"}, {"index": 2, "name": "time1"},
                                       {"index": 3, "name": "time2"}, {"index": 4, "name": "time3"},
                                       {"index": 5, "name": "group"}])"));
    EXPECT_EQ(out["settings"], nlohmann::json::parse(R"({"normalFromSample": true,
        "uniformFromSample": false, "exponentialFromSample": false, "mcSamples": 5000,
        "mcCILevel": 95.0, "seed": 12345, "seedFromHost": false})"));
    EXPECT_EQ(out["messages"], nlohmann::json::array());

    // A command the procedure refuses: its message in the JSON, status 2.
    run = RunNptests({"--check-command", "--dictionary", kData + "dictionary.json", "--command",
                      "NPTESTS /INDEPENDENT TEST(score) GROUP(score) "
                      "/ONESAMPLE KOLMOGOROV_SMIRNOV(POISSON=SAMPLE)"});
    EXPECT_EQ(run.fStatus, 2);
    const auto refused = nlohmann::json::parse(run.fOut);
    EXPECT_EQ(refused["result"], false);
    EXPECT_EQ(refused["messages"], nlohmann::json::parse(R"([
        {"kind": "warning", "text": "K-S Poisson Sample ignored ...", "document": null},
        {"kind": "error", "text": "The grouping variable score also appears in the test variable list.",
         "document": null}])"));
}
} // namespace
