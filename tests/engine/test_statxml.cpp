// The document writer: numbers that read back exactly, escaped texts, and
// the element shapes the module's reader expects.
#include "engine/doc/StatXml.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include <pugixml.hpp>

namespace {
double ReadBack(const std::string& text) {
    double value = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    EXPECT_EQ(ec, std::errc()) << text;
    EXPECT_EQ(end, text.data() + text.size()) << text;
    return value;
}
} // namespace

TEST(StatXml, NumbersReadBackExactly) {
    EXPECT_EQ(FormatNumber(40), "40");
    EXPECT_EQ(FormatNumber(0.1), "0.1");
    EXPECT_EQ(FormatNumber(-0.0), "0");
    EXPECT_EQ(FormatNumber(1e21), "1e+21");
    EXPECT_EQ(FormatNumber(kSysMis), "__MISSING__");
    EXPECT_EQ(FormatNumber(std::nan("")), "__MISSING__");
    EXPECT_EQ(FormatNumber(std::numeric_limits<double>::infinity()), "__MISSING__");
    const double denormal = std::numeric_limits<double>::denorm_min();
    EXPECT_EQ(ReadBack(FormatNumber(denormal)), denormal);
    std::mt19937_64 random(42);
    std::uniform_int_distribution<std::uint64_t> bits;
    for (int i = 0; i < 10000; ++i) {
        const std::uint64_t pattern = bits(random);
        double value;
        std::memcpy(&value, &pattern, sizeof value);
        if (!std::isfinite(value) || value == kSysMis || value == 0) {
            continue;
        }
        ASSERT_EQ(ReadBack(FormatNumber(value)), value);
    }
    const double list[] = {1.5, kSysMis, 3};
    EXPECT_EQ(FormatNumbers(list), "1.5 __MISSING__ 3");
}

TEST(StatXml, DocumentHasTheShapesTheReaderNeeds) {
    Document doc;
    doc.SetComment("a -- b-");
    doc.SetCounts({40, 2});
    doc.SetSettings(0.01, 0.9, MissingTreatment::kListwise);
    EXPECT_EQ(doc.AddField({"pain",
                            "Pain <score> & \"more\"",
                            MeasureLevel::kOrdinal,
                            StorageType::kInteger,
                            {{"1", "Low"}, {"2", "High"}}}),
              0);
    Algorithm test = doc.AddAlgorithm("OChiSquare", Classification::kOneSample, Decision::kRetain);
    test.Condition("DefaultEqualProbabilities_O_ChiSquare_1", {0});
    const Message messages[] = {
        {220001, MessageType::kError, {0, std::vector<double>{1, kSysMis}}, "1-2"}};
    test.Messages(messages);
    test.Statistics()
        .Value("TotalN", 40)
        .Value("AsymptoticSig2Tailed", 0.2)
        .Group("MostExtremeDifferences", {{"Absolute", 0.25}, {"Negative", -0.125}});
    test.Table("TwoClassComparison")
        .Simple("Content", {"Observed", "Hypothesized"}, {"0", "1"})
        .Row({15, 25})
        .Row({20, 20});
    Algorithm estimate = doc.AddAlgorithm("OEstimateConfidenceInterval", Classification::kOneSample,
                                          Decision::kNone);
    estimate.SetDecision(Decision::kUnableToCompute);
    const double counts[] = {15, 25};
    doc.AddCategoricalInfo(0, 40, counts);

    const std::string text = doc.Write();
    pugi::xml_document parsed;
    ASSERT_TRUE(parsed.load_string(text.c_str())) << text;
    EXPECT_NE(text.find("<!-- a - - b- -->"), std::string::npos) << text;
    const pugi::xml_node root = parsed.child("StatXML");
    EXPECT_STREQ(root.child("PMMLModel").attribute("modelType").value(), "NonParametricTests");
    const pugi::xml_node counts_ =
        root.first_element_by_path("DescriptiveModel/DescriptiveSummary/Counts");
    EXPECT_EQ(counts_.attribute("totalCount").as_int(), 40);
    EXPECT_EQ(counts_.attribute("droppedCount").as_int(), 2);
    const pugi::xml_node output = root.first_element_by_path("Extension/NPAROutput");
    const pugi::xml_node field = output.first_element_by_path("DataDictionary/DataField");
    EXPECT_STREQ(field.attribute("displayName").value(), "Pain <score> & \"more\"");
    EXPECT_STREQ(field.attribute("optype").value(), "ordinal");
    EXPECT_STREQ(field.child("Value").next_sibling().attribute("displayValue").value(), "High");
    const pugi::xml_node tests = output.child("NonParametricTests");
    EXPECT_STREQ(tests.attribute("number").value(), "2");
    EXPECT_STREQ(tests.attribute("sigLevel").value(), "0.01");
    EXPECT_STREQ(tests.attribute("missingTreatment").value(), "listwise");
    const pugi::xml_node algorithm = tests.child("Algorithm");
    EXPECT_STREQ(algorithm.attribute("decision").value(), "retain");
    const pugi::xml_node message =
        algorithm.find_child_by_attribute("StructuredTable", "name", "WarningMessages")
            .child("StructuredTable");
    EXPECT_STREQ(
        message.find_child_by_attribute("Attribute", "name", "paramNum").attribute("value").value(),
        "2");
    EXPECT_STREQ(
        message.find_child_by_attribute("Attribute", "name", "%2").attribute("value").value(),
        "1 __MISSING__");
    EXPECT_STREQ(
        message.find_child_by_attribute("Attribute", "name", "group").attribute("value").value(),
        "1-2");
    const pugi::xml_node stats =
        algorithm.find_child_by_attribute("StructuredTable", "name", "StatisticsResult");
    EXPECT_STREQ(stats.find_child_by_attribute("Attribute", "name", "AsymptoticSig2Tailed")
                     .attribute("value")
                     .value(),
                 "0.2");
    const pugi::xml_node table =
        algorithm.find_child_by_attribute("StructuredTable", "name", "TwoClassComparison")
            .child("SimpleTable");
    EXPECT_STREQ(table.child_value("RowNames"), "Observed Hypothesized");
    EXPECT_STREQ(table.child("Row").next_sibling("Row").child_value(), "20 20");
    EXPECT_STREQ(algorithm.next_sibling("Algorithm").attribute("decision").value(),
                 "unableToCompute");
    const pugi::xml_node info = output.first_element_by_path("FieldInfos/FieldInfo");
    EXPECT_STREQ(info.child("StructuredTable").attribute("name").value(),
                 "CategoricalDistribution");
    // An empty RowNames is still an element.
    EXPECT_TRUE(info.child("StructuredTable").child("SimpleTable").child("RowNames"));
}
