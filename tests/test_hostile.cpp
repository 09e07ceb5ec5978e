// Hostile and broken inputs through the real nptests binary: each is refused
// with one line on standard error that names the file, and a non-zero exit
// status; nothing crashes or hangs.
#include <gtest/gtest.h>

#include "RunCommand.h"

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
