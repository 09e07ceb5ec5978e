// The data source built from a dictionary file (nptests --dictionary).
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "app/DataSourceBuilder.h"
#include "host/vexa/VEXA_DataSource.h"

namespace {
std::string ReadText(const std::string& path) {
    std::ifstream in(path);
    std::stringstream buffer;
    buffer << in.rdbuf();
    return buffer.str();
}

void ExpectFormat(const VEXA_Variable& variable, int type, int width, int decimals) {
    EXPECT_EQ(variable.GetFormat().fType, type) << variable.GetName();
    EXPECT_EQ(variable.GetFormat().fWidth, width) << variable.GetName();
    EXPECT_EQ(variable.GetFormat().fDecimals, decimals) << variable.GetName();
}

TEST(Dictionary, ReadsVariablesFormatsMeasuresAndValueLabels) {
    std::string error;
    auto source = DataSourceFromDictionary(
        ReadText(std::string(NPTESTS_SOURCE_DIR) + "/tests/data/dictionary.json"), error);
    ASSERT_TRUE(source) << error;
    ASSERT_EQ(source->GetVariableCount(), 8);
    EXPECT_EQ(source->FindVarIndex("TIME2"), 3);

    const VEXA_Variable& score = *source->GetVariable(1);
    EXPECT_EQ(score.GetLabel(), "Test score");
    EXPECT_TRUE(score.IsNumeric());
    EXPECT_EQ(score.GetMeasure(), VEXA_Variable::kContinuous);
    ExpectFormat(score, VEXA_Format::kNumber, 8, 2);
    ExpectFormat(*source->GetVariable(0), VEXA_Format::kNumber, 8, 0);
    EXPECT_EQ(source->GetVariable(2)->GetMeasure(), VEXA_Variable::kContinuous); // "scale"
    ExpectFormat(*source->GetVariable(7), VEXA_Format::kAmericanDate, 10, 0);

    const VEXA_Variable& group = *source->GetVariable(5);
    EXPECT_EQ(group.GetMeasure(), VEXA_Variable::kCategorical);
    ASSERT_TRUE(group.GetValueLabels().Find(2.0));
    EXPECT_EQ(*group.GetValueLabels().Find(2.0), "Treatment");

    const VEXA_Variable& region = *source->GetVariable(6);
    EXPECT_EQ(region.GetType(), 6);
    EXPECT_EQ(region.GetPreferredLabel(), "region");
    ExpectFormat(region, VEXA_Format::kString, 6, 0);
    ASSERT_TRUE(region.GetValueLabels().Find(std::string_view("S ")));
    EXPECT_EQ(*region.GetValueLabels().Find(std::string_view("S")), "South");
    EXPECT_EQ(source->GetVariable(3)->GetValueLabels().Empty(), true);
}

TEST(Dictionary, NamesWhatIsWrong) {
    struct Case {
        const char* fJson;
        const char* fError;
    };
    const Case cases[] = {
        {"{\"variables\": [", "not valid JSON"},
        {"[]", "expected an object with a \"variables\" list"},
        {R"({"variables": [{"label": "x"}]})", "variable 1 has no name"},
        {R"({"variables": [{"name": "a"}, {"name": "A"}]})", "variable 2 A is named twice"},
        {R"({"variables": [{"name": "a", "type": "date"}]})", "type must be \"numeric\" or"},
        {R"({"variables": [{"name": "a", "label": 3}]})", "must be texts"},
        {R"({"variables": [{"name": "a", "type": "string", "width": 0}]})", "width must be"},
        {R"({"variables": [{"name": "a", "measure": "interval"}]})", "unknown measure"},
        {R"({"variables": [{"name": "a", "format": "F"}]})", "bad format \"F\""},
        {R"({"variables": [{"name": "a", "format": "Q8.2"}]})", "bad format"},
        {R"({"variables": [{"name": "a", "format": "F8.x"}]})", "bad format"},
        {R"({"variables": [{"name": "a", "format": "F8.2 "}]})", "bad format"},
        {R"({"variables": [{"name": "a", "format": "F-8"}]})", "bad format"},
        {R"({"variables": [{"name": "a", "format": {"type": 5, "width": -1}}]})", "bad format"},
        {R"({"variables": [{"name": "a", "valueLabels": {"1": "x"}}]})", "must be a list"},
        {R"({"variables": [{"name": "a", "valueLabels": [{"value": "1", "label": "x"}]}]})",
         "numeric \"value\""},
        {R"({"variables": [{"name": "a", "type": "string", "valueLabels": [{"value": 1}]}]})",
         "text \"value\""},
    };
    for (const Case& c : cases) {
        std::string error;
        EXPECT_FALSE(DataSourceFromDictionary(c.fJson, error)) << c.fJson;
        EXPECT_NE(error.find(c.fError), std::string::npos) << c.fJson << "\n" << error;
    }
    std::string error;
    auto formats = DataSourceFromDictionary(
        R"({"variables": [{"name": "d", "format": "datetime20"}, {"name": "e", "format": "E10.3"},
                          {"name": "s", "type": "string", "format": {"width": 3}}]})",
        error);
    ASSERT_TRUE(formats) << error;
    ExpectFormat(*formats->GetVariable(0), VEXA_Format::kDateTime, 20, 0);
    ExpectFormat(*formats->GetVariable(1), VEXA_Format::kScientific, 10, 3);
    ExpectFormat(*formats->GetVariable(2), VEXA_Format::kString, 3, 0);
}
} // namespace

// The data source of a result document is read from the text up to the end
// of its dictionary when that gives the same variables as the whole text.
TEST(Dictionary, FromTheDocumentPrefixOrTheWholeDocument) {
    auto names = [](const std::string& xml, std::string& error) {
        std::string list;
        if (auto source = DataSourceFromDocument(xml, error)) {
            for (int i = 0; i < source->GetVariableCount(); ++i) {
                list += source->GetVariable(i)->GetName() + ";";
            }
        } else {
            list = "null";
        }
        return list;
    };
    const std::string head = "<StatXML><Extension><NPAROutput>";
    const std::string dictionary =
        "<DataDictionary><DataField name='a'/><DataField name='b'/></DataDictionary>";
    std::string error;
    // Broken after the dictionary: the prefix suffices, the module rejects it.
    EXPECT_EQ(names(head + dictionary + "<NonParametricTests><", error), "a;b;");
    // Broken before it: the error of the whole document.
    EXPECT_EQ(names("<StatXML><x a=1/><Extension><NPAROutput>" + dictionary, error), "null");
    EXPECT_FALSE(error.empty());
    // A close tag inside a comment, or a nested dictionary closed first, does
    // not end the dictionary: the whole document is read.
    EXPECT_EQ(names(head + "<DataDictionary><!-- </DataDictionary> --><DataField name='c'/>" +
                        "</DataDictionary></NPAROutput></Extension></StatXML>",
                    error),
              "c;");
    EXPECT_EQ(names(head + "<DataDictionary><x><DataDictionary></DataDictionary></x>" +
                        "<DataField name='d'/></DataDictionary></NPAROutput></Extension></StatXML>",
                    error),
              "d;");
    // The first close tag belongs to a dictionary off the path.
    EXPECT_EQ(names("<StatXML><Other>" + dictionary + "</Other><Extension><NPAROutput>" +
                        "<DataDictionary><DataField name='e'/></DataDictionary></NPAROutput>" +
                        "</Extension></StatXML>",
                    error),
              "e;");
}
