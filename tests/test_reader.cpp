// The result document reader: real document text through pugixml into the
// result model.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "backend/nonpar/NOPRParseOutXML.h"
#include "backend/nonpar/NOPRXMLGeneral.h"
#include "host/cf/CFAssert.h"
#include "host/cf/CFErrorChannel.h"
#include "host/vexa/VEXA_DataSource.h"
#include "host/xml/SDOMXMLWrapper.h"

using Stats = NOPROutputStats;

namespace {
const std::string kDictionary =
    "<DataDictionary>"
    "<DataField index='0' name='score' displayName='Score' optype='continuous' dataType='double'/>"
    "<DataField index='1' name='day' displayName='Day' optype='ordinal' dataType='date'>"
    " <Value index='0' value='1.5' displayValue='First'/>"
    " <Value index='1' value='2' displayValue='Second'/></DataField>"
    "<DataField index='2' name='grp' optype='nominal' dataType='string'>"
    " <Value index='0' value='a' displayValue='A'/></DataField>"
    "</DataDictionary>";

std::string Document(const std::string& algorithms, const std::string& fieldInfos = "") {
    return "<StatXML><PMMLModel modelType='NonParametricTests'/>"
           "<DescriptiveModel><DescriptiveSummary><Counts totalCount='30'/>"
           "</DescriptiveSummary></DescriptiveModel><Extension><NPAROutput>" +
           kDictionary +
           "<NonParametricTests number='2' sigLevel='0.05' missingTreatment='Listwise'>" +
           algorithms + "</NonParametricTests><FieldInfos>" + fieldInfos +
           "</FieldInfos></NPAROutput></Extension></StatXML>";
}

std::string Algorithm(const std::string& name, const std::string& tables) {
    return "<Algorithm name='" + name + "' classification='One_Sample' decision='reject'>" +
           tables + "</Algorithm>";
}

std::string Table(const std::string& name, const std::string& content) {
    return "<StructuredTable name='" + name + "'>" + content + "</StructuredTable>";
}

std::string Attr(const std::string& name, const std::string& value) {
    return "<Attribute name='" + name + "' value='" + value + "'/>";
}

std::string Simple(const std::string& name, const std::string& rows) {
    return "<SimpleTable name='" + name + "'><Row>" + rows + "</Row></SimpleTable>";
}

bool Parse(Stats& stats, const std::string& xml, VEXA_DataSource* dataSource = nullptr) {
    OutputXMLParser parser(dataSource, &stats, xml);
    return parser.Parse();
}

// The text of the assertion that `run` trips, or empty.
std::string AssertionOf(const std::function<void()>& run) {
    CFAssertHandler previous = CFSetAssertHandler(CFThrowingAssertHandler);
    std::string text;
    try {
        run();
    } catch (const CFAssertionFailure& failure) {
        text = failure.fExpression + " in " + failure.fSource;
    }
    CFSetAssertHandler(previous);
    return text;
}

SDOMXMLWrapper* Load(SDOMXMLWrapper& doc, const std::string& xml) {
    EXPECT_TRUE(doc.LoadFromString(xml)) << xml;
    return &doc;
}
} // namespace

TEST(ElementReaders, AttributesAndStructuredTables) {
    SDOMXMLWrapper doc;
    AttributeData attribute;
    EXPECT_TRUE(ReadAttribute(Load(doc, "<Attribute name='n'/>"), attribute));
    EXPECT_EQ(attribute.fValue, "");
    EXPECT_FALSE(ReadAttribute(Load(doc, "<Attribute value='1'/>"), attribute));
    NumericAttributeData numeric;
    EXPECT_TRUE(ReadAttributeDouble(Load(doc, "<Attribute name='n'/>"), numeric));
    EXPECT_TRUE(CFIsSysmis(numeric.fValue));

    StructuredTableData table;
    ASSERT_TRUE(
        ReadStructuredTable(Load(doc, Table("T", Attr("a", "1") + Simple("S", "1") + "<Other/>" +
                                                     Attr("b", "2") + Table("N", ""))),
                            table));
    std::vector<std::pair<int, std::uint64_t>> order;
    for (const ElementOrderEntry& entry : table.fOrder) {
        order.emplace_back(entry.fKind, entry.fIndex);
    }
    EXPECT_EQ(order, (std::vector<std::pair<int, std::uint64_t>>{{0, 0}, {1, 0}, {0, 1}, {2, 0}}));
    EXPECT_EQ(table.fAttributes[1].fValue, "2");
    // A nameless table, also a nested one, fails the read.
    EXPECT_FALSE(ReadStructuredTable(Load(doc, "<StructuredTable/>"), table));
    EXPECT_FALSE(ReadStructuredTable(
        Load(doc, Table("T", Attr("a", "1") + "<StructuredTable/>" + Attr("b", "2"))), table));
    EXPECT_EQ(table.fAttributes.size(), 1u);
    // Absurdly deep nesting is refused rather than recursed into.
    std::string deep;
    for (int i = 0; i < 200; ++i) {
        deep = Table("d", deep);
    }
    EXPECT_FALSE(ReadStructuredTable(Load(doc, deep), table));

    EXPECT_EQ(AssertionOf([&] { ReadAttribute(nullptr, attribute); }),
              "attributeElm in backend/nonpar/NOPRXMLGeneral");
    EXPECT_EQ(AssertionOf([&] { ReadStructuredTable(nullptr, table); }),
              "structTableElm in backend/nonpar/NOPRXMLGeneral");
}

TEST(ElementReaders, SimpleTablesAndNumbers) {
    SDOMXMLWrapper doc;
    SimpleTableData simple;
    ASSERT_TRUE(ReadSimpleTable(
        Load(doc, "<SimpleTable name='t'><RowNames>r1 r2</RowNames><Row>1.5 __MISSING__ 3</Row>"
                  "<Row> </Row><Row>__missing__</Row></SimpleTable>"),
        simple));
    NumericTableData numbers;
    numbers.fRows = {{9}, {9}, {9}, {9}}; // a reused table keeps nothing of before
    ASSERT_TRUE(ToNumericTable(simple, numbers, kCFSysmis));
    EXPECT_EQ(numbers.fRowNames, (std::vector<std::string>{"r1", "r2"}));
    EXPECT_TRUE(numbers.fColumnNames.empty());
    ASSERT_EQ(numbers.fRows.size(), 3u);
    EXPECT_EQ(numbers.fRows[0], (std::vector<double>{1.5, kCFSysmis, 3.0}));
    EXPECT_TRUE(numbers.fRows[1].empty());
    // Lower case is not the missing word; as any non-number it still reads as missing.
    EXPECT_EQ(numbers.fRows[2], (std::vector<double>{kCFSysmis}));
    EXPECT_FALSE(ReadSimpleTable(Load(doc, "<SimpleTable><Row>1</Row></SimpleTable>"), simple));

    std::vector<std::int32_t> integers{7};
    ParseIntegerList(" \n", integers);
    EXPECT_EQ(integers, (std::vector<std::int32_t>{7}));
    ParseIntegerList("1 -2\t3", integers);
    EXPECT_EQ(integers, (std::vector<std::int32_t>{1, -2, 3}));
}

TEST(Reader, EachDocumentFailureGivesFalse) {
    const std::string good = Document("");
    auto replaced = [&](std::vector<std::pair<std::string, std::string>> edits) {
        std::string text = good;
        for (const auto& [from, to] : edits) {
            for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
                text.replace(at, from.size(), to);
                at += to.size();
            }
        }
        return text;
    };
    const std::string histogram = Table("ContinuousDistribution", Simple("h", "1"));
    const std::vector<std::pair<const char*, std::string>> failures = {
        {"empty text", ""},
        {"not XML", "<StatXML>"},
        {"root in lower case", replaced({{"StatXML>", "statxml>"}})},
        {"no PMMLModel", replaced({{"<PMMLModel", "<PMML"}})},
        {"modelType one letter short", replaced({{"NonParametricTests'", "NonParametricTest'"}})},
        {"no Counts", replaced({{"<Counts", "<Count"}})},
        {"no NonParametricTests",
         replaced({{"NonParametricTests ", "Tests "}, {"/NonParametricTests", "/Tests"}})},
        {"no FieldInfos", replaced({{"<FieldInfos></FieldInfos>", ""}})},
        {"Algorithm table fails",
         Document(Algorithm("OChiSquare", Table("Condition", "<StructuredTable/>")))},
        {"FieldInfo without table", Document("", "<FieldInfo varIndex='0'/>")},
        {"FieldInfo of the last field",
         Document("", "<FieldInfo varIndex='2'>" + histogram + "</FieldInfo>")},
        {"FieldInfo without varIndex", Document("", "<FieldInfo>" + histogram + "</FieldInfo>")},
        {"ordinal index without record",
         Document(
             Algorithm("OChiSquare", Table("Condition", Attr("OrdinalTreatedAsCont", "0 5"))))},
    };
    Stats stats;
    EXPECT_TRUE(Parse(stats, good));
    for (const auto& [what, text] : failures) {
        Stats model;
        EXPECT_FALSE(Parse(model, text)) << what;
    }
}

TEST(Reader, CountsSettingsAndDictionary) {
    VEXA_DataSource dataSource;
    dataSource.AddVariable("SCORE", 0);
    dataSource.AddVariable("day", 0).SetFormat({VEXA_Format::kDate, 11, 0});
    Stats stats;
    ASSERT_TRUE(Parse(stats, Document(""), &dataSource));
    EXPECT_EQ(stats.fTotalCount, 30);
    EXPECT_EQ(stats.fTotalFreq + stats.fDroppedCount + stats.fBadWeightCount + stats.fDroppedFreq,
              0);
    EXPECT_EQ(stats.fNumberOfTests, 2);
    EXPECT_DOUBLE_EQ(stats.fSigLevel, 0.05);
    EXPECT_TRUE(CFIsSysmis(stats.fConfidenceLevel));
    EXPECT_EQ(stats.fIsListwise, 0); // "Listwise" is not "listwise"

    const CFMetaData* meta = stats.GetMetaData();
    ASSERT_EQ(meta->GetFieldCount(), 3);
    const CFField* day = meta->GetField(1);
    EXPECT_EQ(day->GetMeasure(), CFField::kOrdinal);
    EXPECT_EQ(day->GetStorage(), CFField::kDate);
    ASSERT_EQ(day->GetValues().size(), 2u);
    EXPECT_DOUBLE_EQ(day->GetValues()[0].fDatum.GetNumber(), 1.5); // a date holds doubles
    EXPECT_EQ(day->GetValues()[0].fLabel, "1.5");
    EXPECT_EQ(day->GetValueLabels()[1].fLabel, "Second");
    EXPECT_EQ(meta->GetField(2)->GetMeasure(), CFField::kUnknownMeasure);
    EXPECT_EQ(meta->GetField(2)->GetValues()[0].fDatum.GetString(), "a");

    // Three fields give two records; the variables are found by name.
    ASSERT_EQ(stats.GetFieldInfos().size(), 2u);
    EXPECT_EQ(stats.GetFieldInfo(0)->fVariable, dataSource.GetVariable(0));
    const Stats::FieldInfoRecord* dayInfo = stats.GetFieldInfo(1);
    EXPECT_EQ(dayInfo->fFieldIndex, 1);
    ASSERT_EQ(dayInfo->fValues.size(), 2u);
    EXPECT_DOUBLE_EQ(dayInfo->fValues[0].fValue.GetNumber(), 1.5 * 86400);
    EXPECT_EQ(dayInfo->fValues[1].fLabel, "Second");

    Stats outOfOrder;
    std::string text = Document("");
    text.replace(text.find("index='1' name='day'"), 9, "index='2'");
    EXPECT_EQ(AssertionOf([&] { Parse(outOfOrder, text); }),
              "index == curIndex in backend/nonpar/NOPRParseOutXML");
}

TEST(Reader, ConditionsMessagesAndStatistics) {
    const std::string tables =
        Table("Condition", Attr("ConditionKey", "K1") + Attr("%1", "0.05") +
                               Attr("%2", "__MISSING__ 3") + Attr("isUseSample", "True") +
                               Attr("OrdinalTreatedAsCont", "1")) +
        Table("WarningMessages",
              Table("m", Attr("code", "222330") + Attr("type", "note") + Attr("paramNum", "1") +
                             Attr("%1", "2") + Attr("group", "g")) +
                  Table("m", Attr("type", "warning"))) +
        Table("StatisticsResult", Attr("A", "1") + Attr("B", "2") + Table("N", Attr("C", "3")) +
                                      Attr("D", "&gt;0.999")) +
        Table("ValsNotInTheCategoreis", Attr("v", "7") + Attr("w", "x"));
    Stats stats;
    ASSERT_TRUE(Parse(stats, Document(Algorithm("OKolmogorovSmirnov", tables) +
                                      Algorithm("OLilliefors", Table("Condition", "")))));
    auto* ks = dynamic_cast<Stats::HTOKolmogorovSmirnov*>(stats.GetHypothesisTest(0));
    ASSERT_NE(ks, nullptr);
    EXPECT_EQ(ks->fConditionKey, "K1");
    ASSERT_EQ(ks->fConditionParameters.size(), 2u);
    EXPECT_EQ(ks->fConditionParameters[0].fValues, (std::vector<double>{0.05}));
    EXPECT_EQ(ks->fConditionParameters[1].fNumber, 2);
    EXPECT_EQ(ks->fConditionParameters[1].fValues, (std::vector<double>{kCFSysmis, 3}));
    EXPECT_EQ(ks->fOrdinalAsContinuous, (std::vector<std::int32_t>{1}));
    EXPECT_TRUE(stats.GetFieldInfo(1)->fOrdinalAsContinuous);
    EXPECT_FALSE(ks->fIsUseSample);
    EXPECT_TRUE(ks->fIsLowerBound);

    ASSERT_EQ(ks->fMessages.size(), 2u);
    EXPECT_EQ(ks->fMessages[0].fType, Stats::kMHelpMessage); // "note"
    EXPECT_EQ(ks->fMessages[0].fGroup, "g");
    EXPECT_EQ(ks->fMessages[1].fType, Stats::kMWarning);

    ASSERT_EQ(ks->fStatistics.size(), 3u);
    EXPECT_EQ(ks->fStatistics[0].fName, "");
    EXPECT_EQ(ks->fStatistics[0].fValues.size(), 2u);
    EXPECT_EQ(ks->fStatistics[1].fName + ks->fStatistics[2].fName, "N");
    EXPECT_DOUBLE_EQ(ks->fStatistics[2].fValues[0].fValue, 0.999);
    EXPECT_EQ(ks->fValsNotInCategories, (std::vector<std::string>{"7", "x"}));

    auto* lilliefors = dynamic_cast<Stats::HTOKolmogorovSmirnov*>(stats.GetLillieforsTest(0));
    ASSERT_NE(lilliefors, nullptr);
    EXPECT_TRUE(lilliefors->fIsUseSample);

    Stats wrongCount;
    const std::string message =
        Table("WarningMessages", Table("m", Attr("paramNum", "2") + Attr("%1", "1")));
    EXPECT_EQ(AssertionOf([&] { Parse(wrongCount, Document(Algorithm("OChiSquare", message))); }),
              "messages[iST].fCount == messages[iST].fParameters.size() in "
              "backend/nonpar/NOPRParseOutXML");
}

TEST(Reader, TestSpecificTables) {
    const std::string boxPlot = Table(
        "BoxPlotInfo", Attr("GroupFieldIndex", "1") + Attr("GrandMedian", "4.5") +
                           Table("Group0", Attr("N", "5") + Attr("GTMedian", "2") +
                                               Simple("Box", "1 2 3") + Simple("Ignored", "9")) +
                           Table("Other", Attr("N", "6")) + Table("Group2", Attr("Median", "1")));
    const std::string pairwise =
        Table("PairwiseResult", Simple("PairwiseInfo", "0 1") + Attr("fieldIndex", "2") +
                                    Attr("fieldIndex", "5") + Simple("Content", "1 2 3 4 5 6 7"));
    const std::string hodgesLehmann =
        Table("StatisticsResult",
              Attr("Estimate", "1.25") + Table("Asymptotic", Attr("L", "0.5") + Attr("U", "2")));
    const std::string mannWhitney = Table("Group1", Attr("GroupIndex", "1") + Attr("N", "8") +
                                                        Attr("Median", "1") + Simple("t", "1 2"));
    CFErrorChannel::Clear();
    Stats stats;
    ASSERT_TRUE(
        Parse(stats, Document(Algorithm("IKruskalWallis", boxPlot + pairwise + Table("Bogus", "")) +
                              Algorithm("RHodgesLehmannEstimatePairs", hodgesLehmann) +
                              Algorithm("IMannWhitneyU", mannWhitney) +
                              Algorithm("OKolmogorovSmirnovNormal", Table("Bogus", "")))));
    auto* kw = dynamic_cast<Stats::HTIKruskalWallis*>(stats.GetHypothesisTest(0));
    ASSERT_NE(kw, nullptr);
    EXPECT_EQ(kw->fBoxPlot.fGroupFieldIndex, 1);
    EXPECT_DOUBLE_EQ(kw->fBoxPlot.fGrandMedian, 4.5);
    ASSERT_EQ(kw->fBoxPlot.fGroups.size(), 3u);
    EXPECT_EQ(kw->fBoxPlot.fGroups[0].fN, 5);
    EXPECT_EQ(kw->fBoxPlot.fGroups[0].fBox.fRows[0], (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(kw->fBoxPlot.fGroups[1].fN, 0); // "Other" leaves its place empty
    EXPECT_EQ(kw->fComparison.fKind, Stats::MultipleComparison::kPairwise);
    EXPECT_EQ(kw->fComparison.fFieldIndex, 2);
    EXPECT_EQ(kw->fComparison.fInfo.fRows[0].size(), 2u);
    EXPECT_EQ(kw->fComparison.fContent.fRows[0].size(), 7u);

    auto* hl = dynamic_cast<Stats::HTHodgesLehmann*>(stats.GetEstimate(0));
    ASSERT_NE(hl, nullptr);
    EXPECT_DOUBLE_EQ(hl->fEstimate.fEstimate, 1.25);
    EXPECT_DOUBLE_EQ(hl->fEstimate.fLower, 0.5);
    EXPECT_DOUBLE_EQ(hl->fEstimate.fUpper, 2.0);

    auto* mw = dynamic_cast<Stats::HTIGroups*>(stats.GetHypothesisTest(1));
    ASSERT_NE(mw, nullptr);
    ASSERT_EQ(mw->fGroups.size(), 1u);
    EXPECT_EQ(mw->fGroups[0].fN, 8);
    EXPECT_EQ(stats.GetHypothesisTests().size(), 2u); // no record for the Normal variant

    std::vector<std::string> texts;
    for (const CFMessage& message : CFErrorChannel::Messages()) {
        texts.push_back(message.fText);
    }
    EXPECT_EQ(texts,
              (std::vector<std::string>{"Not parse element: Median", "Not parse element: Bogus",
                                        "Not parse element: Median"}));
}

TEST(Reader, FieldInfos) {
    const std::string continuous =
        Table("ContinuousDistribution", Attr("Total", "30") + Attr("Min", "1") + Attr("Max", "9") +
                                            Attr("Mean", "4.5") + Attr("StdDev", "2") +
                                            Attr("Skew", "0") + Simple("Histogram", "1 2 3"));
    Stats stats;
    ASSERT_TRUE(Parse(stats, Document("", "<FieldInfo varIndex='0'>" + continuous +
                                              "</FieldInfo><FieldInfo varIndex='1'>" +
                                              Table("CategoricalDistribution", Simple("c", "4 5")) +
                                              "</FieldInfo>")));
    const Stats::FieldInfoRecord* info = stats.GetFieldInfo(0);
    EXPECT_TRUE(info->fHasInfo);
    EXPECT_EQ(info->fIsCategorical, 0);
    EXPECT_EQ(info->fTotal, 30);
    EXPECT_DOUBLE_EQ(info->fMin + info->fMax + info->fMean + info->fStdDev, 16.5);
    EXPECT_EQ(stats.GetFieldInfo(1)->fIsCategorical, 1);

    Stats twoTables;
    const std::string bad = "<FieldInfo varIndex='0'>" +
                            Table("ContinuousDistribution", Simple("a", "1") + Simple("b", "2")) +
                            "</FieldInfo>";
    EXPECT_EQ(AssertionOf([&] { Parse(twoTables, Document("", bad)); }),
              "stData.fSimpleTables.size() == 1 in backend/nonpar/NOPRParseOutXML");
}

TEST(Reader, ExceptionEndsTheReadWithSuccessAndKeepsWhatWasRead) {
    CFErrorChannel::SetListener([](const CFMessage& message) {
        if (message.fText.rfind("Not parse element", 0) == 0) {
            throw std::runtime_error("listener");
        }
    });
    const std::string chiSquare =
        Algorithm("OChiSquare", Table("Condition", Attr("ConditionKey", "K")));
    Stats stats;
    const std::string text =
        Document(chiSquare + Algorithm("ORuns", Table("Bogus", "")) + chiSquare);
    OutputXMLParser parser(nullptr, &stats, text);
    const bool result = parser.Parse();
    CFErrorChannel::SetListener({});
    EXPECT_TRUE(result);
    EXPECT_TRUE(parser.fParsed);
    ASSERT_EQ(stats.GetHypothesisTests().size(), 2u); // the third was never read
    EXPECT_EQ(stats.GetHypothesisTest(0)->fConditionKey, "K");
    EXPECT_EQ(stats.GetFieldInfos().size(), 2u);
    EXPECT_TRUE(parser.Parse()); // kept, not read again
    EXPECT_EQ(stats.GetHypothesisTests().size(), 2u);
}
