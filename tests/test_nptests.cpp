// The nptests command line: formats, output files, splits from a --splits
// file, and the exit status when a split's document is rejected.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "RunCommand.h"

namespace {
namespace fs = std::filesystem;

// A small result document: one chi-square test of a field "group" (the last
// field has no field information, as the engine writes it).
constexpr const char* kDocument = R"(<?xml version="1.0" encoding="UTF-8"?>
<StatXML>
  <PMMLModel modelType="NonParametricTests"/>
  <DescriptiveModel><DescriptiveSummary>
    <Counts totalFreq="8" totalCount="8" droppedCount="0" badWeightCount="0" droppedFreq="0"/>
  </DescriptiveSummary></DescriptiveModel>
  <Extension><NPAROutput>
    <DataDictionary>
      <DataField index="0" name="group" displayName="Group" optype="categorical" dataType="integer">
        <Value index="0" value="1" displayValue="A"/>
        <Value index="1" value="2" displayValue="B"/>
      </DataField>
      <DataField index="1" name="case" displayName="Case" optype="continuous" dataType="integer"/>
    </DataDictionary>
    <NonParametricTests number="1" sigLevel="0.05" confidenceLevel="0.95" missingTreatment="testwise">
      <Algorithm name="OChiSquare" classification="One_Sample" decision="retain">
        <StructuredTable name="Condition">
          <Attribute name="ConditionKey" value="DefaultEqualProbabilities_O_ChiSquare_1"/>
          <Attribute name="%1" value="0"/>
        </StructuredTable>
        <StructuredTable name="StatisticsResult">
          <Attribute name="TotalN" value="8"/>
          <Attribute name="TestStatistic" value="0.5"/>
          <Attribute name="DegreeOfFreedom" value="1"/>
          <Attribute name="AsymptoticSig2Tailed" value="0.4795"/>
        </StructuredTable>
      </Algorithm>
    </NonParametricTests>
    <FieldInfos>
      <FieldInfo varIndex="0">
        <StructuredTable name="CategoricalDistribution">
          <Attribute name="Total" value="8"/>
          <SimpleTable name="Categories">
            <RowNames></RowNames>
            <ColumnNames>Value Count</ColumnNames>
            <Row>0 5</Row>
            <Row>1 3</Row>
          </SimpleTable>
        </StructuredTable>
      </FieldInfo>
    </FieldInfos>
  </NPAROutput></Extension>
</StatXML>
)";

// A folder of documents: a.xml and c.xml readable, b.xml not a result document.
fs::path MakeFolder(const std::string& name) {
    const fs::path folder = fs::path(testing::TempDir()) / name;
    fs::create_directories(folder);
    std::ofstream(folder / "a.xml") << kDocument;
    std::ofstream(folder / "b.xml") << "<notStatXML/>";
    std::ofstream(folder / "c.xml") << kDocument;
    return folder;
}

void WriteSplits(const fs::path& file, const std::vector<std::string>& documents) {
    nlohmann::json splits = nlohmann::json::array();
    for (size_t i = 0; i < documents.size(); ++i) {
        splits.push_back({{"document", documents[i]}, {"values", {i + 1}}});
    }
    std::ofstream(file) << nlohmann::json{
        {"variables", {"group"}}, {"heading", true}, {"splits", splits}};
}
} // namespace

TEST(Nptests, KeepsTheSplitsBeforeARejectedOneAndNamesIt) {
    const fs::path folder = MakeFolder("nptests_splits");
    fs::create_directories(folder / "plans");
    WriteSplits(folder / "plans" / "three.json", {"../a.xml", "../b.xml", "../c.xml"});
    WriteSplits(folder / "plans" / "first.json", {"../a.xml"});

    const CommandResult three =
        RunNptests(folder.string(), {"-f", "json", "--splits", "plans/three.json"});
    EXPECT_EQ(three.fStatus, 1);
    EXPECT_NE(three.fErr.find("b.xml: not a readable"), std::string::npos) << three.fErr;
    EXPECT_EQ(three.fErr.find("c.xml"), std::string::npos) << three.fErr;
    const CommandResult first =
        RunNptests(folder.string(), {"-f", "json", "--splits", "plans/first.json"});
    EXPECT_EQ(first.fStatus, 0) << first.fErr;

    const nlohmann::json threeJson = nlohmann::json::parse(three.fOut);
    const nlohmann::json firstJson = nlohmann::json::parse(first.fOut);
    EXPECT_EQ(threeJson["items"], firstJson["items"]);
    ASSERT_FALSE(threeJson["messages"].empty());
    EXPECT_EQ(threeJson["messages"].back()["kind"], "error");
    EXPECT_EQ(threeJson["messages"].back()["text"],
              "b.xml: not a readable nonparametric-tests result document");
}

TEST(Nptests, WritesTheChosenFormatToAFile) {
    const fs::path folder = MakeFolder("nptests_output");
    const CommandResult json =
        RunNptests(folder.string(), {"-o", "out.json", "-f", "json", "a.xml"});
    EXPECT_EQ(json.fStatus, 0) << json.fErr;
    EXPECT_EQ(json.fOut, "");
    EXPECT_EQ(nlohmann::json::parse(ReadWholeFile(folder / "out.json"))["procedure"],
              "Nonparametric Tests");
    // A file name ending in .html chooses the HTML report.
    const CommandResult html = RunNptests(folder.string(), {"-o", "report.html", "a.xml"});
    EXPECT_EQ(html.fStatus, 0) << html.fErr;
    EXPECT_EQ(ReadWholeFile(folder / "report.html").rfind("<!DOCTYPE html>", 0), 0u);
    const CommandResult text = RunNptests(folder.string(), {"a.xml", "c.xml", "--no-charts"});
    EXPECT_EQ(text.fStatus, 0) << text.fErr;
    EXPECT_EQ(text.fOut.rfind("Nonparametric Tests\n===================\n", 0), 0u);
    EXPECT_EQ(text.fOut.find("[chart]"), std::string::npos);
}

TEST(Nptests, ColoursOnlyKeepsTheFacetChartsColours) {
    auto mcNemarDocuments = [](const std::vector<std::string>& extra) {
        std::vector<std::string> arguments{"-f", "json", "related_samples.xml"};
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        const CommandResult run = RunNptests(NPTESTS_EXAMPLES_DIR, arguments);
        EXPECT_EQ(run.fStatus, 0) << run.fErr;
        std::vector<std::string> documents;
        std::vector<nlohmann::json> stack{nlohmann::json::parse(run.fOut)};
        while (!stack.empty()) {
            nlohmann::json item = std::move(stack.back());
            stack.pop_back();
            if (item.value("title", "") == "Related-Samples McNemar Change Test") {
                documents.push_back(item["document"]);
            }
            for (auto& child : item.value("items", nlohmann::json::array())) {
                stack.push_back(std::move(child));
            }
        }
        return documents;
    };
    const std::vector<std::string> patterned = mcNemarDocuments({});
    const std::vector<std::string> coloured = mcNemarDocuments({"--colors-only"});
    ASSERT_EQ(patterned.size(), 1u);
    ASSERT_EQ(coloured.size(), 1u);
    // The McNemar chart draws its series with patterns unless colours alone
    // are asked for.
    EXPECT_NE(patterned.front().find("<pattern"), std::string::npos);
    EXPECT_EQ(coloured.front().find("<pattern"), std::string::npos);
}

TEST(Nptests, RejectsUsageErrorsWithStatus2) {
    const fs::path folder = MakeFolder("nptests_usage");
    WriteSplits(folder / "splits.json", {"a.xml"});
    std::ofstream(folder / "bad_variable.json")
        << R"({"variables": ["nosuch"], "splits": [{"document": "a.xml", "values": [1]}]})";
    std::ofstream(folder / "bad_values.json")
        << R"({"variables": ["group"], "splits": [{"document": "a.xml", "values": []}]})";
    const struct {
        std::vector<std::string> fArguments;
        const char* fMessage;
    } cases[] = {
        {{"-f", "pdf", "a.xml"}, "unknown format \"pdf\""},
        {{}, "no data file or result document given"},
        {{"a.xml", "--splits", "splits.json"}, "not both"},
        {{"--splits", "bad_variable.json"}, "split variable nosuch is not a variable of a.xml"},
        {{"--splits", "bad_values.json"}, "split 1 must have \"values\": a list of 1 number"},
        {{"--splits", "missing.json"}, "cannot read missing.json"},
    };
    for (const auto& usage : cases) {
        const CommandResult result = RunNptests(folder.string(), usage.fArguments);
        EXPECT_EQ(result.fStatus, 2) << usage.fMessage;
        EXPECT_NE(result.fErr.find(usage.fMessage), std::string::npos) << result.fErr;
        EXPECT_EQ(result.fOut, "") << usage.fMessage;
    }
}

TEST(Nptests, RejectsAnUnreadableDocumentByName) {
    const fs::path folder = MakeFolder("nptests_unreadable");
    const CommandResult result = RunNptests(folder.string(), {"-f", "json", "absent.xml"});
    EXPECT_EQ(result.fStatus, 1);
    EXPECT_NE(result.fErr.find("cannot read absent.xml"), std::string::npos) << result.fErr;
    EXPECT_EQ(nlohmann::json::parse(result.fOut)["items"].size(), 0u);
}
