// Replays the fuzzer's corpus through the fuzzer's own entry point: every
// input that ever crashed (tests/fuzz_corpus/regressions) must now end
// cleanly, and the seed documents must still be read and written whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/fuzz/DocumentEntry.h"

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

DocumentOutcome Replay(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    const std::string bytes = std::move(text).str();
    return RunDocument(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

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
