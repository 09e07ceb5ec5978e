// The real nptests binary with --dump-model: the JSON it prints for a readable
// document, and the exit status and message for an unreadable one.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "RunCommand.h"

namespace {
// nptests --dump-model on `document`, saved as `name`.
CommandResult RunDumpModel(const std::string& name, const std::string& document) {
    std::ofstream(std::filesystem::path(::testing::TempDir()) / name) << document;
    return RunNptests(::testing::TempDir(), {"--dump-model", name});
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
    const CommandResult run = RunDumpModel("dump_ok.xml", kDocument);
    ASSERT_EQ(run.fStatus, 0) << run.fErr;
    const nlohmann::json out = nlohmann::json::parse(run.fOut);
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
    const CommandResult run = RunDumpModel("dump_bad.xml", malformed);
    EXPECT_EQ(run.fStatus, 1);
    EXPECT_NE(run.fErr.find("dump_bad.xml"), std::string::npos) << run.fErr;
}
