// Golden outputs: every example document rendered by the nptests program as
// text and as JSON, and the messages for every malformed document, compared
// with the files in tests/golden. NPTESTS_UPDATE_GOLDEN=1 rewrites them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "RunCommand.h"

namespace {
namespace fs = std::filesystem;

struct GoldenCase {
    std::string fName; // the golden files' name
    std::vector<std::string> fArguments;
};

bool Updating() {
    const char* value = std::getenv("NPTESTS_UPDATE_GOLDEN");
    return value && std::string(value) == "1";
}

void CompareOrUpdate(const fs::path& golden, const std::string& actual) {
    if (Updating()) {
        fs::create_directories(golden.parent_path());
        std::ofstream(golden, std::ios::binary) << actual;
        return;
    }
    ASSERT_TRUE(fs::exists(golden))
        << golden << " is missing; make it with NPTESTS_UPDATE_GOLDEN=1 and review it";
    EXPECT_EQ(actual, ReadWholeFile(golden)) << "differs from " << golden;
}

std::string Stem(const std::string& file) {
    return fs::path(file).stem().string();
}

std::vector<GoldenCase> ExampleCases() {
    std::vector<GoldenCase> cases;
    for (const std::string& document : ExampleDocuments(NPTESTS_EXAMPLES_DIR)) {
        cases.push_back({Stem(document), ExampleArguments(NPTESTS_EXAMPLES_DIR, document)});
    }
    if (fs::exists(fs::path(NPTESTS_EXAMPLES_DIR) / "splits.json")) {
        cases.push_back({"splits", {"--splits", "splits.json"}});
    }
    return cases;
}

std::vector<GoldenCase> MalformedCases() {
    std::vector<GoldenCase> cases;
    for (const std::string& document : ExampleDocuments(NPTESTS_EXAMPLES_DIR "/malformed")) {
        cases.push_back({Stem(document), {"malformed/" + document}});
    }
    return cases;
}

std::string CaseName(const testing::TestParamInfo<GoldenCase>& info) {
    std::string name = info.param.fName;
    for (char& c : name) {
        if (!std::isalnum(static_cast<unsigned char>(c))) {
            c = '_';
        }
    }
    return name;
}

class Golden : public testing::TestWithParam<GoldenCase> {};
class GoldenMalformed : public testing::TestWithParam<GoldenCase> {};
} // namespace

TEST_P(Golden, TextAndJsonMatch) {
    const GoldenCase& golden = GetParam();
    for (const char* format : {"text", "json"}) {
        std::vector<std::string> arguments = {"-f", format};
        arguments.insert(arguments.end(), golden.fArguments.begin(), golden.fArguments.end());
        const CommandResult result = RunNptests(NPTESTS_EXAMPLES_DIR, arguments);
        EXPECT_EQ(result.fStatus, 0) << result.fErr;
        const std::string extension = std::string(format) == "text" ? ".txt" : ".json";
        CompareOrUpdate(fs::path(NPTESTS_GOLDEN_DIR) / (golden.fName + extension), result.fOut);
    }
}

TEST_P(GoldenMalformed, IsRejectedByName) {
    const GoldenCase& golden = GetParam();
    std::vector<std::string> arguments = {"-f", "text"};
    arguments.insert(arguments.end(), golden.fArguments.begin(), golden.fArguments.end());
    const CommandResult result = RunNptests(NPTESTS_EXAMPLES_DIR, arguments);
    EXPECT_EQ(result.fStatus, 1);
    EXPECT_NE(result.fErr.find(golden.fArguments.back()), std::string::npos) << result.fErr;
    CompareOrUpdate(fs::path(NPTESTS_GOLDEN_DIR) / "malformed" / (golden.fName + ".stderr"),
                    result.fErr);
}

INSTANTIATE_TEST_SUITE_P(Examples, Golden, testing::ValuesIn(ExampleCases()), CaseName);
INSTANTIATE_TEST_SUITE_P(Examples, GoldenMalformed, testing::ValuesIn(MalformedCases()), CaseName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Golden);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(GoldenMalformed);

// A golden file whose example is gone would pass unnoticed.
TEST(GoldenFiles, EachBelongsToAnExample) {
    std::set<std::string> expected;
    for (const GoldenCase& golden : ExampleCases()) {
        expected.insert(golden.fName + ".txt");
        expected.insert(golden.fName + ".json");
    }
    for (const GoldenCase& golden : MalformedCases()) {
        expected.insert("malformed/" + golden.fName + ".stderr");
    }
    std::error_code ec;
    for (const auto& entry : fs::recursive_directory_iterator(NPTESTS_GOLDEN_DIR, ec)) {
        if (entry.is_regular_file()) {
            const std::string name =
                fs::relative(entry.path(), NPTESTS_GOLDEN_DIR).generic_string();
            EXPECT_TRUE(expected.count(name)) << "tests/golden/" << name << " has no example";
        }
    }
}
