// Hostile and broken inputs through the real nptests binary: each is refused
// with one line on standard error that names the file, and a non-zero exit
// status, or shown with a warning; nothing crashes or hangs, and nothing
// else is lost (earlier splits are rendered, an existing output file stays
// as it was).
#include <gtest/gtest.h>

#include "RunCommand.h"

#include <nlohmann/json.hpp>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {
namespace fs = std::filesystem;

class Hostile : public ::testing::Test {
protected:
    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        fDir = fs::temp_directory_path() /
               ("nptests_hostile_" + std::to_string(::getpid()) + "_" + info->name());
        fs::remove_all(fDir);
        fs::create_directories(fDir);
    }
    void TearDown() override {
        std::error_code ec;
        fs::permissions(fDir / "unreadable.xml", fs::perms::owner_all, ec);
        fs::remove_all(fDir, ec);
    }

    fs::path Write(const std::string& name, const std::string& text) {
        const fs::path file = fDir / name;
        std::ofstream(file, std::ios::binary) << text;
        return file;
    }

    CommandResult Nptests(const std::vector<std::string>& args) {
        return RunNptests(fDir.string(), args);
    }

    // Refused: a non-zero status (not a signal) and one line naming `file`.
    void ExpectRefused(const CommandResult& run, const fs::path& file) {
        EXPECT_GE(run.fStatus, 1);
        EXPECT_LE(run.fStatus, 3) << "died by signal or sanitizer: " << run.fErr;
        ASSERT_FALSE(run.fErr.empty());
        EXPECT_EQ(run.fErr.find('\n'), run.fErr.size() - 1) << run.fErr;
        EXPECT_NE(run.fErr.find(file.string()), std::string::npos) << run.fErr;
    }

    // Runs `nptests ARGS` in the test's folder with standard input from
    // `input` (a shell command, or none) and standard output to `output`
    // (a path, or none: captured).
    CommandResult NptestsWith(const std::string& input, const std::vector<std::string>& args,
                              const std::string& output = {}) {
        const fs::path out = fDir / "stdout.captured";
        const fs::path err = fDir / "stderr.captured";
        std::string command = "cd " + Quote(fDir.string()) + " && " +
                              (input.empty() ? std::string() : input + " | ") +
                              Quote(NPTESTS_BINARY);
        for (const std::string& arg : args) {
            command += ' ';
            command += Quote(arg);
        }
        command += " >";
        command += Quote(output.empty() ? out.string() : output);
        command += " 2>";
        command += Quote(err.string());
        command += input.empty() ? " </dev/null" : "";
        const int status = std::system(command.c_str());
        CommandResult result;
        result.fStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        result.fOut = output.empty() ? ReadWholeFile(out) : std::string();
        result.fErr = ReadWholeFile(err);
        fs::remove(out);
        fs::remove(err);
        return result;
    }

    // The files of the test's folder, by name.
    std::vector<std::string> Files() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(fDir)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    static std::string Example(const std::string& name) {
        return ReadWholeFile(fs::path(NPTESTS_EXAMPLES_DIR) / name);
    }

    // `text` with its first `from` replaced by `to` (which must be there).
    static std::string Replace(std::string text, const std::string& from, const std::string& to) {
        const std::size_t at = text.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        if (at != std::string::npos) {
            text.replace(at, from.size(), to);
        }
        return text;
    }

    // The cell of the text output's row labelled `label` (the last word of
    // the first line that begins with it).
    static std::string RowText(const std::string& text, const std::string& label) {
        const std::size_t at = text.find("\n" + label + " ");
        if (at == std::string::npos) {
            return {};
        }
        const std::string line = text.substr(at + 1, text.find('\n', at + 1) - at - 1);
        return line.substr(line.find_last_of(' ') + 1);
    }

    // A small valid document: three tests of one kind (a fuzzer seed).
    static std::string Valid(const std::string& testName = "IKruskalWallis") {
        return ReadWholeFile(fs::path(NPTESTS_SOURCE_DIR) / "tests/fuzz_corpus/seeds" /
                             (testName + ".xml"));
    }

    fs::path fDir;
};

TEST_F(Hostile, EmptyBinaryAndTruncatedDocuments) {
    const fs::path empty = Write("empty.xml", "");
    ExpectRefused(Nptests({empty.string()}), empty);

    std::mt19937 random(7);
    std::string bytes(4096, '\0');
    for (char& c : bytes) {
        c = static_cast<char>(random());
    }
    const fs::path binary = Write("binary.xml", bytes);
    ExpectRefused(Nptests({binary.string()}), binary);

    const std::string valid = Valid();
    ASSERT_GT(valid.size(), 1000u);
    for (std::size_t cut : {valid.size() / 3, valid.size() - 20}) {
        const fs::path truncated = Write("truncated.xml", valid.substr(0, cut));
        ExpectRefused(Nptests({truncated.string()}), truncated);
    }
}

TEST_F(Hostile, DeepNestingIsRefusedWithoutExhaustingTheStack) {
    // 100000 nested structured tables inside one test's statistics.
    std::string valid = Valid("IMannWhitneyU");
    const std::string anchor = "<StructuredTable name='StatisticsResult'>";
    const std::size_t at = valid.find(anchor);
    ASSERT_NE(at, std::string::npos);
    std::string deep;
    deep.reserve(100000 * 48);
    for (int i = 0; i < 100000; ++i) {
        deep += "<StructuredTable name='n'>";
    }
    for (int i = 0; i < 100000; ++i) {
        deep += "</StructuredTable>";
    }
    valid.insert(at + anchor.size(), deep);
    const fs::path file = Write("deep.xml", valid);
    ExpectRefused(Nptests({file.string()}), file);

    // The same depth of plain elements outside the sections that are read
    // is harmless.
    std::string elements = Valid();
    std::string nest;
    for (int i = 0; i < 100000; ++i) {
        nest += "<x>";
    }
    for (int i = 0; i < 100000; ++i) {
        nest += "</x>";
    }
    elements.insert(elements.find("<Extension>"), nest);
    const CommandResult run = Nptests({Write("elements.xml", elements).string()});
    EXPECT_EQ(run.fStatus, 0) << run.fErr;
}

TEST_F(Hostile, HugeAttributeValues) {
    // 8 MB in a number and a condition key: read without crashing, the
    // number converted like any other.
    std::string valid = Valid();
    const std::string huge(8 << 20, '7');
    std::string doc = valid;
    const std::string totalN = "name='TotalN' value='";
    doc.insert(doc.find(totalN) + totalN.size(), huge);
    const std::string key = "value='DefaultAllDistinctValuesUsed_I_KruskalWallis_2";
    doc.insert(doc.find(key) + key.size(), huge);
    const CommandResult run = Nptests({Write("huge.xml", doc).string()});
    EXPECT_EQ(run.fStatus, 0) << run.fErr.substr(0, 500);

    // A data field's name is a label, copied into every table and chart
    // that shows it: one longer than the most a label may have is refused.
    const std::string field = "name='score0";
    std::string named = valid;
    named.insert(named.find(field) + field.size(), huge);
    const fs::path longName = Write("long_name.xml", named);
    const CommandResult refused = Nptests({longName.string()});
    EXPECT_EQ(refused.fStatus, 1);
    EXPECT_NE(refused.fErr.find("has 8388614 bytes; a name, label or value may have at most 65536"),
              std::string::npos)
        << refused.fErr;
    EXPECT_NE(refused.fErr.find(longName.string()), std::string::npos) << refused.fErr;

    // A huge value that never ends is a broken document.
    const fs::path open =
        Write("open.xml", valid.substr(0, valid.find(totalN) + totalN.size()) + huge);
    ExpectRefused(Nptests({open.string()}), open);
}

TEST_F(Hostile, FilesThatCannotBeRead) {
    const fs::path missing = fDir / "missing.xml";
    ExpectRefused(Nptests({missing.string()}), missing);

    const fs::path directory = fDir / "folder.xml";
    fs::create_directories(directory);
    ExpectRefused(Nptests({directory.string()}), directory);

    if (::geteuid() == 0) {
        GTEST_SKIP() << "root reads files whatever their mode";
    }
    const fs::path unreadable = Write("unreadable.xml", Valid());
    fs::permissions(unreadable, fs::perms::none);
    ExpectRefused(Nptests({unreadable.string()}), unreadable);
}

TEST_F(Hostile, OutputPathThatCannotBeWritten) {
    const fs::path doc = Write("doc.xml", Valid());
    const fs::path target = fDir / "no" / "such" / "folder" / "out.json";
    const CommandResult run = Nptests({"-f", "json", "-o", target.string(), doc.string()});
    ExpectRefused(run, target);
    EXPECT_EQ(run.fStatus, 3);
    EXPECT_NE(run.fErr.find("No such file or directory"), std::string::npos) << run.fErr;
    const fs::path directory = fDir / "outdir";
    fs::create_directories(directory);
    const CommandResult intoFolder = Nptests({"-o", directory.string(), doc.string()});
    ExpectRefused(intoFolder, directory);
    EXPECT_EQ(intoFolder.fStatus, 3);
    EXPECT_NE(intoFolder.fErr.find("Is a directory"), std::string::npos) << intoFolder.fErr;
}

TEST_F(Hostile, SplitsBeforeAFailedOneKeepTheirOutput) {
    const fs::path good = Write("good.xml", Valid());
    const fs::path bad = Write("bad.xml", Valid().substr(0, 200));
    const fs::path after = Write("after.xml", Valid("IMedian"));
    const CommandResult run = Nptests({good.string(), bad.string(), after.string()});
    ExpectRefused(run, bad);
    EXPECT_EQ(run.fErr.find(after.string()), std::string::npos);
    // The first split's tables are there, nothing of the third's.
    EXPECT_NE(run.fOut.find("Kruskal-Wallis"), std::string::npos) << run.fOut;
    EXPECT_EQ(run.fOut.find("Median Test"), std::string::npos) << run.fOut;
}
} // namespace

namespace {
// The assertions the module keeps, each set off by one fault of a document.
struct AssertionCase {
    const char* fName;
    const char* fBase;   // under examples/ or, with "seed:", a fuzzer seed
    const char* fFrom;   // the text the fault replaces
    const char* fTo;     // the fault
    const char* fFailed; // the assertion's text
};

const AssertionCase kAssertionCases[] = {
    {"field_index", "minimal.xml", "<DataField index=\"1\"", "<DataField index=\"3\"",
     "index == curIndex"},
    {"value_index", "minimal.xml", "<Value index=\"1\"", "<Value index=\"5\"",
     "curVIndex == vindex"},
    {"message_parameters", "one_sample.xml", "<Attribute name=\"paramNum\" value=\"2\"/>",
     "<Attribute name=\"paramNum\" value=\"3\"/>",
     "messages[iST].fCount == messages[iST].fParameters.size()"},
    {"interval_without_table", "seed:OEstimateConfidenceInterval",
     "<StructuredTable name='Interval'><Attribute name='Lower' value='0.052423087'/><Attribute "
     "name='Upper' value='0.07863463108777573'/></StructuredTable>",
     "", "stData.fStrucTables.size() == 1"},
};
} // namespace

TEST_F(Hostile, AFailedAssertionFailsItsSplitAlone) {
    const fs::path good = Write("good.xml", Valid());
    const fs::path after = Write("after.xml", Valid("IMedian"));
    for (const AssertionCase& fault : kAssertionCases) {
        SCOPED_TRACE(fault.fName);
        const std::string base = std::string_view(fault.fBase).starts_with("seed:")
                                     ? Valid(std::string(fault.fBase).substr(5))
                                     : Example(fault.fBase);
        const fs::path bad =
            Write(std::string(fault.fName) + ".xml", Replace(base, fault.fFrom, fault.fTo));
        const CommandResult run =
            Nptests({"-f", "json", good.string(), bad.string(), after.string()});
        // The message names the document and gives the assertion's text,
        // source and line.
        EXPECT_EQ(run.fStatus, 1) << run.fErr;
        const std::string expected = bad.string() + ": Assertion failed: " + fault.fFailed +
                                     ", file backend/nonpar/NOPRParseOutXML, line ";
        EXPECT_EQ(run.fErr.rfind("nptests: " + expected, 0), 0u) << run.fErr;
        EXPECT_EQ(run.fErr.find('\n'), run.fErr.size() - 1) << run.fErr;
        // The first split is rendered; nothing of the failed one or the third.
        const nlohmann::json out = nlohmann::json::parse(run.fOut);
        ASSERT_FALSE(out["items"].empty());
        EXPECT_NE(run.fOut.find("Kruskal-Wallis"), std::string::npos);
        EXPECT_EQ(run.fOut.find("Median Test"), std::string::npos);
        ASSERT_EQ(out["messages"].size(), 1u);
        EXPECT_EQ(out["messages"][0]["text"].get<std::string>().rfind(expected, 0), 0u);

        // Alone, it leaves an existing output file as it was.
        const fs::path report = Write("report.txt", "earlier report\n");
        const CommandResult alone = Nptests({"-o", report.string(), bad.string()});
        EXPECT_EQ(alone.fStatus, 1);
        EXPECT_EQ(ReadWholeFile(report), "earlier report\n");
    }
}

TEST_F(Hostile, OutputIsReplacedOnlyWhenComplete) {
    const fs::path doc = Write("doc.xml", Valid());
    const std::string expected = Nptests({doc.string()}).fOut;
    ASSERT_NE(expected.find("Kruskal-Wallis"), std::string::npos);

    // Written whole, keeping the file's permissions; no temporary file left.
    const fs::path report = Write("report.txt", "earlier report\n");
    fs::permissions(report, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    CommandResult run = Nptests({"-o", report.string(), doc.string()});
    EXPECT_EQ(run.fStatus, 0) << run.fErr;
    EXPECT_EQ(ReadWholeFile(report), expected);
    EXPECT_EQ(fs::status(report).permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    EXPECT_EQ(Files(), (std::vector<std::string>{"doc.xml", "report.txt"}));
    // The HTML report written into a file is what standard output gets.
    const fs::path html = fDir / "report.html";
    EXPECT_EQ(Nptests({"-o", html.string(), doc.string()}).fStatus, 0);
    EXPECT_EQ(ReadWholeFile(html), Nptests({"-f", "html", doc.string()}).fOut);
    fs::remove(html);

    // Nothing that could be rendered: the file stays.
    Write("report.txt", "earlier report\n");
    const fs::path missing = fDir / "missing.xml";
    run = Nptests({"-o", report.string(), missing.string()});
    EXPECT_EQ(run.fStatus, 1);
    EXPECT_NE(run.fErr.find(missing.string()), std::string::npos) << run.fErr;
    EXPECT_EQ(ReadWholeFile(report), "earlier report\n");

    // A full disk: the system's reason, status 3, for a file and for
    // standard output.
    run = Nptests({"-o", "/dev/full", doc.string()});
    EXPECT_EQ(run.fStatus, 3);
    EXPECT_EQ(run.fErr, "nptests: cannot write /dev/full: No space left on device\n");
    run = NptestsWith("", {doc.string()}, "/dev/full");
    EXPECT_EQ(run.fStatus, 3);
    EXPECT_EQ(run.fErr, "nptests: cannot write to standard output: No space left on device\n");
    run = NptestsWith("", {"-f", "json", doc.string()}, "/dev/full");
    EXPECT_EQ(run.fStatus, 3) << run.fErr;

    // The output may not be one of the inputs.
    const std::string before = ReadWholeFile(doc);
    run = Nptests({"-o", doc.string(), doc.string()});
    EXPECT_EQ(run.fStatus, 2);
    EXPECT_NE(run.fErr.find("is the input"), std::string::npos) << run.fErr;
    EXPECT_EQ(ReadWholeFile(doc), before);
    const fs::path splits =
        Write("splits.json", R"({"splits": [{"document": "doc.xml", "values": []}]})");
    run = Nptests({"--splits", splits.string(), "-o", (fDir / "." / "splits.json").string()});
    EXPECT_EQ(run.fStatus, 2);
    EXPECT_NE(ReadWholeFile(splits).find("doc.xml"), std::string::npos);
}

TEST_F(Hostile, FaultsOfTheSplitsAndDictionaryFiles) {
    const fs::path doc = Write("doc.xml", Example("minimal.xml"));
    const fs::path splits = Write(
        "splits.json",
        R"({"variables": ["group"], "splits": [{"document": "doc.xml", "values": [1e400]}]})");
    CommandResult run = Nptests({"--splits", splits.string()});
    ExpectRefused(run, splits);
    EXPECT_EQ(run.fStatus, 2);
    EXPECT_NE(run.fErr.find("number overflow"), std::string::npos) << run.fErr;

    const fs::path dictionary = Write(
        "dictionary.json",
        R"({"variables": [{"name": "group", "valueLabels": [{"value": -1e400, "label": "x"}]}]})");
    run = Nptests({"--dictionary", dictionary.string(), doc.string()});
    ExpectRefused(run, dictionary);
    EXPECT_NE(run.fErr.find("number overflow"), std::string::npos) << run.fErr;

    // A label longer than a label may be.
    const fs::path long_label =
        Write("long.json", R"({"variables": [{"name": "group", "label": ")" +
                               std::string(70000, 'x') + R"("}]})");
    run = Nptests({"--dictionary", long_label.string(), doc.string()});
    ExpectRefused(run, long_label);
    EXPECT_NE(run.fErr.find("longer than 65536 bytes"), std::string::npos) << run.fErr;

    // Labels that are not UTF-8 are dumped with replacement characters.
    const fs::path latin = Write("latin.xml", Replace(Example("minimal.xml"), "displayValue=\"A\"",
                                                      "displayValue=\"\xC4\xFF\""));
    run = Nptests({"--dump-model", latin.string()});
    EXPECT_EQ(run.fStatus, 0) << run.fErr;
    EXPECT_NE(run.fOut.find("\xEF\xBF\xBD\xEF\xBF\xBD"), std::string::npos);
}

TEST_F(Hostile, SilentFaultsGetMessages) {
    const std::string minimal = Example("minimal.xml");
    const auto runJson = [&](const fs::path& file) {
        return Nptests({"-f", "json", file.string()});
    };
    const auto messages = [](const CommandResult& run) {
        std::vector<std::string> texts;
        const nlohmann::json out = nlohmann::json::parse(run.fOut);
        for (const auto& message : out["messages"]) {
            // The text as the module wrote it, its document apart.
            texts.push_back(message["kind"].get<std::string>() + " in " +
                            message["document"].get<std::string>() + ": " +
                            message["text"].get<std::string>());
        }
        return texts;
    };

    // One pairwise row naming a sample that is not there: that row alone is
    // left out.
    const fs::path pairwise =
        Write("pairwise.xml", Replace(Valid(), "<Row>1 0 3.3803669", "<Row>9 0 3.3803669"));
    CommandResult run = runJson(pairwise);
    EXPECT_EQ(run.fStatus, 0) << run.fErr;
    EXPECT_EQ(messages(run), (std::vector<std::string>{
                                 "warning in " + pairwise.string() +
                                 ": a pairwise comparison names sample 9, which the comparison's "
                                 "samples do not include; its row is left out"}));
    std::vector<std::size_t> rows;
    const std::function<void(const nlohmann::json&)> walk = [&](const nlohmann::json& items) {
        for (const auto& item : items) {
            if (item["kind"] == "heading") {
                walk(item["items"]);
            } else if (item["kind"] == "table" && item["subtype"] == "Pairwise Comparisons Table") {
                rows.push_back(item["rows"].size());
            }
        }
    };
    walk(nlohmann::json::parse(run.fOut)["items"]);
    EXPECT_EQ(rows, (std::vector<std::size_t>{5, 6, 6}));

    // A misspelt test word.
    const fs::path typo =
        Write("typo.xml", Replace(minimal, "name=\"OChiSquare\"", "name=\"OChiSqare\""));
    run = runJson(typo);
    EXPECT_EQ(run.fStatus, 0) << run.fErr;
    EXPECT_EQ(messages(run),
              (std::vector<std::string>{"warning in " + typo.string() +
                                        ": the test \"OChiSqare\" is not one this program knows; "
                                        "it is left out"}));

    // A number beyond the range of a double: missing, with one warning.
    const fs::path huge =
        Write("huge.xml", Replace(Replace(minimal, "value=\"0.4\"", "value=\"1e400\""),
                                  "value=\"0.527089\"", "value=\"-1E+999\""));
    run = Nptests({huge.string()});
    EXPECT_EQ(run.fStatus, 0) << run.fErr;
    // minimal.xml has no frequency table: its chart says that it is left out.
    EXPECT_EQ(run.fErr, "nptests: " + huge.string() +
                            ": a number beyond the range of a double (such as 1e400) is read as "
                            "the missing value\nnptests: " +
                            huge.string() +
                            ": the chart \"One-Sample Chi-Square Test\" cannot be drawn from its "
                            "document; it is left out\n");
    EXPECT_EQ(RowText(run.fOut, "Test Statistic"), ".") << run.fOut;

    // What makes a document not well-formed fails its split, after the
    // first is rendered.
    const fs::path good = Write("good.xml", Valid());
    const std::pair<std::string, std::string> broken[] = {
        {Replace(minimal, "displayValue=\"A\"", "displayValue=\"A\" displayValue=\"B\""),
         "not well-formed XML: the attribute displayValue given twice on <Value>"},
        {minimal + "<StatXML/>\n", "not well-formed XML: a second root element <StatXML>"},
        {Replace(minimal, "displayValue=\"A\"", "displayValue=\"A&nbsp;\""),
         "not well-formed XML: an undefined entity &nbsp;"},
    };
    for (const auto& [text, message] : broken) {
        const fs::path bad = Write("bad.xml", text);
        run = Nptests({good.string(), bad.string()});
        EXPECT_EQ(run.fStatus, 1);
        EXPECT_EQ(run.fErr, "nptests: " + bad.string() + ": " + message + "\n");
        EXPECT_NE(run.fOut.find("Kruskal-Wallis"), std::string::npos);
    }
    // References XML defines are not faults.
    const fs::path references =
        Write("references.xml", Replace(minimal, "displayName=\"Group\"",
                                        "displayName=\"R&amp;D &lt;&#65;&#x42;&gt;\""));
    run = Nptests({references.string()});
    EXPECT_EQ(run.fStatus, 0) << run.fErr;
    EXPECT_NE(run.fOut.find("R&D <AB>"), std::string::npos);
}

TEST_F(Hostile, ControlCharactersReachTheTerminalEscaped) {
    // An escape sequence that would retitle the terminal, a bell and a C1
    // control (CSI).
    const std::string minimal = Example("minimal.xml");
    const fs::path doc =
        Write("control.xml", Replace(Replace(minimal, "displayName=\"Group\"",
                                             "displayName=\"Gr&#27;]0;owned&#7;oup&#x9b;2J\""),
                                     "name=\"OChiSquare\"", "name=\"O&#27;[2JChi\""));
    const CommandResult run = Nptests({doc.string()});
    EXPECT_EQ(run.fStatus, 0) << run.fErr;
    for (const std::string* text : {&run.fOut, &run.fErr}) {
        EXPECT_EQ(text->find('\x1B'), std::string::npos);
        EXPECT_EQ(text->find('\x07'), std::string::npos);
        EXPECT_EQ(text->find("\xC2\x9B"), std::string::npos);
    }
    EXPECT_NE(run.fErr.find("the test \"O\\x1B[2JChi\""), std::string::npos) << run.fErr;
    const CommandResult chart = Nptests(
        {"-f", "json", "--dump-model",
         Write("chart.xml", Replace(minimal, "displayName=\"Group\"", "displayName=\"G&#27;\""))
             .string()});
    EXPECT_EQ(chart.fStatus, 0);
    const std::string text =
        Nptests({Write("heading.xml", Replace(minimal, "displayName=\"Group\"",
                                              "displayName=\"Gr&#27;]0;owned&#7;oup\""))
                     .string()})
            .fOut;
    EXPECT_NE(text.find("Gr\\x1B]0;owned\\x07oup"), std::string::npos) << text;
}

TEST_F(Hostile, PipedInputIsBounded) {
    const fs::path doc = Write("doc.xml", Example("minimal.xml"));
    CommandResult run =
        NptestsWith("echo 'NPTESTS /ONESAMPLE TEST(group) CHISQUARE.'", {"-c", "@-", doc.string()});
    EXPECT_EQ(run.fStatus, 0) << run.fErr;
    EXPECT_NE(run.fOut.find("Chi-Square"), std::string::npos);
    run = NptestsWith("head -c 17000000 /dev/zero", {"-c", "@-", doc.string()});
    EXPECT_EQ(run.fStatus, 2);
    EXPECT_EQ(run.fErr,
              "nptests: cannot read standard input: larger than 16 MiB, the most that is read\n");
}

TEST_F(Hostile, AStatisticOfZeroIsNotASignificance) {
    // Statistics show three decimals; only significances show "<0.001".
    const fs::path doc =
        Write("zero.xml", Replace(Replace(Example("minimal.xml"), "value=\"0.4\"", "value=\"0\""),
                                  "value=\"0.527089\"", "value=\"0.0001\""));
    const CommandResult run = Nptests({doc.string()});
    EXPECT_EQ(run.fStatus, 0) << run.fErr;
    EXPECT_EQ(RowText(run.fOut, "Test Statistic"), "0.000") << run.fOut;
    EXPECT_EQ(RowText(run.fOut, "Asymptotic Sig.(2-sided test)"), "<0.001") << run.fOut;
}
