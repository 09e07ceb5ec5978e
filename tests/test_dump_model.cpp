// The real nptests binary with --dump-model: the JSON it prints for a readable
// document, and the exit status and message for an unreadable one.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>

#include <nlohmann/json.hpp>

namespace {
struct RunResult {
    int fStatus = -1;
    std::string fOutput; // standard output, then standard error
};

RunResult RunDumpModel(const std::string& name, const std::string& document) {
    const std::filesystem::path path = std::filesystem::path(::testing::TempDir()) / name;
    std::ofstream(path) << document;
    const std::string errors = path.string() + ".err";
    const std::string command =
        std::string(NPTESTS_BINARY) + " --dump-model '" + path.string() + "' 2>'" + errors + "'";
    RunResult run;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) {
        return run;
    }
    std::array<char, 4096> buffer;
    for (size_t n; (n = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
        run.fOutput.append(buffer.data(), n);
    }
    const int status = pclose(pipe);
    run.fStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::ifstream err(errors);
    run.fOutput.append(std::istreambuf_iterator<char>(err), {});
    return run;
}

const char* kDocument = R"(<StatXML><PMMLModel modelType="NonParametricTests"/>
<DescriptiveModel><DescriptiveSummary><Counts totalCount="12"/></DescriptiveSummary></DescriptiveModel>
<Extension><NPAROutput>
 <DataDictionary>
  <DataField index="0" name="x" displayName="X" optype="continuous" dataType="double"/>
  <DataField index="1" name="g" displayName="G" optype="categorical" dataType="integer"/>
 </DataDictionary>
 <NonParametricTests number="1" sigLevel="0.05" confidenceLevel="95">
  <Algorithm name="OKolmogorovSmirnov" classification="One_Sample" decision="retain">
   <StructuredTable name="StatisticsResult"><Attribute name="Sig" value="&gt;0.2"/></StructuredTable>
  </Algorithm>
 </NonParametricTests>
 <FieldInfos/>
</NPAROutput></Extension></StatXML>)";
} // namespace

TEST(DumpModel, PrintsWhatWasRead) {
    const RunResult run = RunDumpModel("dump_ok.xml", kDocument);
    ASSERT_EQ(run.fStatus, 0) << run.fOutput;
    const nlohmann::json out = nlohmann::json::parse(run.fOutput);
    const nlohmann::json& model = out.at(0).at("model");
    EXPECT_EQ(model["counts"]["totalCount"], 12);
    EXPECT_EQ(model["settings"]["sigLevel"], 0.05);
    EXPECT_EQ(model["dictionary"][1]["name"], "g");
    const nlohmann::json& test = model["tests"][0];
    EXPECT_EQ(test["record"], "HTOKolmogorovSmirnov");
    EXPECT_EQ(test["algorithm"]["key"], "OKolmogorovSmirnov");
    EXPECT_EQ(test["decision"], 2);
    EXPECT_EQ(test["isLowerBound"], true);
    EXPECT_EQ(test["statistics"][0]["values"][0]["value"], 0.2);
    EXPECT_EQ(model["fieldInfos"][0]["variable"], "x");
    EXPECT_TRUE(model["fieldInfos"][0]["min"].is_null()); // system-missing
}

TEST(DumpModel, RejectedDocumentNamesItself) {
    std::string malformed = kDocument;
    malformed.replace(malformed.find("NonParametricTests\""), 18, "Other");
    const RunResult run = RunDumpModel("dump_bad.xml", malformed);
    EXPECT_EQ(run.fStatus, 1);
    EXPECT_NE(run.fOutput.find("dump_bad.xml"), std::string::npos) << run.fOutput;
}
