// Replays the fuzzers' corpora through the fuzzers' own entry points: every
// input that ever crashed (tests/fuzz_corpus/regressions*) must now end
// cleanly, and the seeds must still be read (documents written whole).
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/fuzz/DocumentEntry.h"
#include "tests/fuzz/InputEntries.h"

namespace {
namespace fs = std::filesystem;

std::vector<fs::path> FilesIn(const fs::path& dir) {
    std::vector<fs::path> files;
    if (fs::is_directory(dir)) {
        for (const fs::directory_entry& entry : fs::directory_iterator(dir)) {
            if (entry.is_regular_file() && entry.path().filename() != "README.md") {
                files.push_back(entry.path());
            }
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

template <typename Entry> auto Replay(const fs::path& file, Entry entry) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    const std::string bytes = std::move(text).str();
    return entry(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

DocumentOutcome Replay(const fs::path& file) {
    return Replay(file, RunDocument);
}

// The entries of the other inputs, by the name of their corpus folder.
struct InputEntry {
    const char* fName;
    bool (*fRun)(const std::uint8_t*, std::size_t);
};
constexpr InputEntry kInputEntries[] = {
    {"splits", RunSplitsFile}, {"dictionary", RunDictionaryFile}, {"command", RunCommandText}};

const fs::path kCorpus = fs::path(NPTESTS_SOURCE_DIR) / "tests" / "fuzz_corpus";
} // namespace

TEST(FuzzRegressions, EveryInputThatCrashedEndsCleanly) {
    // Running to the end without a sanitizer report is the test; the outcome
    // itself (shown, rejected, named assertion) is whatever the input earns.
    for (const fs::path& file : FilesIn(kCorpus / "regressions")) {
        SCOPED_TRACE(file.string());
        Replay(file);
    }
}

TEST(FuzzRegressions, SeedDocumentsAreShown) {
    const std::vector<fs::path> seeds = FilesIn(kCorpus / "seeds");
    ASSERT_FALSE(seeds.empty());
    for (const fs::path& file : seeds) {
        EXPECT_EQ(Replay(file), DocumentOutcome::kShown) << file;
    }
}

TEST(FuzzRegressions, OtherInputsThatCrashedEndCleanlyAndSeedsAreRead) {
    for (const InputEntry& input : kInputEntries) {
        for (const fs::path& file :
             FilesIn(kCorpus / ("regressions_" + std::string(input.fName)))) {
            SCOPED_TRACE(file.string());
            Replay(file, input.fRun);
        }
        const std::vector<fs::path> seeds = FilesIn(kCorpus / input.fName);
        EXPECT_FALSE(seeds.empty()) << input.fName;
        for (const fs::path& file : seeds) {
            EXPECT_TRUE(Replay(file, input.fRun)) << file;
        }
    }
}
