// Writing result documents with pugixml.
#include "engine/doc/StatXml.h"

#include <charconv>
#include <cmath>
#include <sstream>

namespace {
constexpr const char* kMissingWord = "__MISSING__";

std::string Words(std::span<const std::string> words) {
    std::string text;
    for (const std::string& word : words) {
        if (!text.empty()) {
            text += ' ';
        }
        text += word;
    }
    return text;
}

const char* ClassificationWord(Classification classification) {
    switch (classification) {
    case Classification::kOneSample:
        return "One_Sample";
    case Classification::kRelated:
        return "Related_Samples";
    case Classification::kIndependent:
        return "Independent_Samples";
    }
    return "";
}

const char* DecisionWord(Decision decision) {
    switch (decision) {
    case Decision::kReject:
        return "reject";
    case Decision::kRetain:
        return "retain";
    case Decision::kUnableToCompute:
        return "unableToCompute";
    case Decision::kNone:
        return nullptr;
    }
    return nullptr;
}

const char* MessageTypeWord(MessageType type) {
    switch (type) {
    case MessageType::kError:
        return "error";
    case MessageType::kWarning:
        return "warning";
    case MessageType::kHelp:
        return "helpMessage";
    }
    return "helpMessage";
}

void AddParams(StructuredTable& table, std::span<const Param> params) {
    for (std::size_t i = 0; i < params.size(); ++i) {
        std::string name = "%";
        name += std::to_string(i + 1);
        table.Attribute(name, params[i].fValues);
    }
}
} // namespace

bool IsSysMis(double value) {
    return value == kSysMis || std::isnan(value);
}

std::string FormatNumber(double value) {
    if (IsSysMis(value) || !std::isfinite(value)) {
        return kMissingWord;
    }
    if (value == 0) {
        return "0"; // also for -0
    }
    char buffer[64];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    return ec == std::errc() ? std::string(buffer, end) : std::string(kMissingWord);
}

std::string FormatNumbers(std::span<const double> values) {
    std::string text;
    for (double value : values) {
        if (!text.empty()) {
            text += ' ';
        }
        text += FormatNumber(value);
    }
    return text;
}

SimpleTable& SimpleTable::Row(std::span<const double> cells) {
    fNode.append_child("Row").text().set(FormatNumbers(cells).c_str());
    return *this;
}

StructuredTable& StructuredTable::Attribute(std::string_view name, double value) {
    return Attribute(name, std::string_view(FormatNumber(value)));
}

StructuredTable& StructuredTable::Attribute(std::string_view name, std::span<const double> values) {
    return Attribute(name, std::string_view(FormatNumbers(values)));
}

StructuredTable& StructuredTable::Attribute(std::string_view name, std::string_view text) {
    pugi::xml_node node = fNode.append_child("Attribute");
    node.append_attribute("name").set_value(std::string(name).c_str());
    node.append_attribute("value").set_value(std::string(text).c_str());
    return *this;
}

StructuredTable StructuredTable::Table(std::string_view name) {
    pugi::xml_node node = fNode.append_child("StructuredTable");
    node.append_attribute("name").set_value(std::string(name).c_str());
    return StructuredTable(node);
}

SimpleTable StructuredTable::Simple(std::string_view name, std::span<const std::string> rowNames,
                                    std::span<const std::string> columnNames) {
    pugi::xml_node node = fNode.append_child("SimpleTable");
    node.append_attribute("name").set_value(std::string(name).c_str());
    node.append_child("RowNames").text().set(Words(rowNames).c_str());
    node.append_child("ColumnNames").text().set(Words(columnNames).c_str());
    return SimpleTable(node);
}

StatisticsResult& StatisticsResult::Group(std::string_view name,
                                          std::initializer_list<NamedValue> values) {
    StructuredTable group = Table(name);
    for (const auto& [valueName, value] : values) {
        group.Attribute(valueName, value);
    }
    return *this;
}

Decision Decide(double significance, double alpha) {
    if (IsSysMis(significance)) {
        return Decision::kUnableToCompute;
    }
    return significance < alpha ? Decision::kReject : Decision::kRetain;
}

StructuredTable Algorithm::Condition(std::string_view key, std::initializer_list<Param> params,
                                     std::optional<bool> useSample,
                                     std::span<const int> ordinalAsContinuous) {
    return Condition(key, std::span<const Param>(params.begin(), params.size()), useSample,
                     ordinalAsContinuous);
}

StructuredTable Algorithm::Condition(std::string_view key, std::span<const Param> params,
                                     std::optional<bool> useSample,
                                     std::span<const int> ordinalAsContinuous) {
    StructuredTable table = Table("Condition");
    table.Attribute("ConditionKey", key);
    AddParams(table, params);
    if (useSample) {
        table.Attribute("isUseSample", *useSample ? "true" : "false");
    }
    if (!ordinalAsContinuous.empty()) {
        std::vector<double> indices(ordinalAsContinuous.begin(), ordinalAsContinuous.end());
        table.Attribute("OrdinalTreatedAsCont", indices);
    }
    return table;
}

void Algorithm::Messages(std::span<const Message> messages) {
    if (messages.empty()) {
        return;
    }
    StructuredTable table = Table("WarningMessages");
    for (const Message& message : messages) {
        StructuredTable item = table.Table("Message");
        item.Attribute("code", message.fCode);
        item.Attribute("type", MessageTypeWord(message.fType));
        item.Attribute("paramNum", static_cast<double>(message.fParams.size()));
        AddParams(item, message.fParams);
        if (!message.fGroup.empty()) {
            item.Attribute("group", message.fGroup);
        }
    }
}

StatisticsResult Algorithm::Statistics() {
    return StatisticsResult(Table("StatisticsResult").Node());
}

void Algorithm::ValuesNotInCategories(std::span<const std::string> values) {
    if (values.empty()) {
        return;
    }
    StructuredTable table = Table("ValsNotInTheCategoreis");
    for (const std::string& value : values) {
        table.Attribute("Value", std::string_view(value));
    }
}

void Algorithm::SetDecision(Decision decision) {
    const char* word = DecisionWord(decision);
    pugi::xml_attribute attribute = fNode.attribute("decision");
    if (!word) {
        fNode.remove_attribute(attribute);
    } else if (attribute) {
        attribute.set_value(word);
    } else {
        fNode.append_attribute("decision").set_value(word);
    }
}

void Algorithm::Unable(int code, std::vector<Param> params) {
    SetDecision(Decision::kUnableToCompute);
    const Message message{code, MessageType::kError, std::move(params), {}};
    Messages(std::span<const Message>(&message, 1));
}

void WriteHistogram(StructuredTable parent, const ValueHistogram& histogram,
                    std::string_view name) {
    SimpleTable table = parent.Simple(name, {}, {"Value", "Count"});
    for (const ValueBin& bin : histogram.fBins) {
        table.Row({bin.fMidpoint, static_cast<double>(bin.fCount)});
    }
}

void WriteBoxTables(StructuredTable parent, const BoxNumbers& box) {
    parent
        .Simple("Box", {},
                {"LowerWhisker", "LowerQuartile", "Median", "UpperQuartile", "UpperWhisker"})
        .Row({box.fLowerWhisker, box.fLowerQuartile, box.fMedian, box.fUpperQuartile,
              box.fUpperWhisker});
    SimpleTable outliers = parent.Simple("Outliers", {}, {"Value", "CaseNumber"});
    for (const auto& [value, caseNumber] : box.fOutliers) {
        outliers.Row({value, caseNumber});
    }
}

void WriteBoxPlotInfo(Algorithm& algorithm, int groupFieldIndex,
                      std::span<const BoxPlotGroup> groups, std::optional<double> grandMedian) {
    StructuredTable table = algorithm.Table("BoxPlotInfo");
    table.Attribute("GroupFieldIndex", groupFieldIndex);
    table.Attribute("GroupCount", static_cast<double>(groups.size()));
    if (grandMedian) {
        table.Attribute("GrandMedian", *grandMedian);
    }
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const BoxPlotGroup& group = groups[i];
        std::string name = "Group";
        name += std::to_string(i);
        StructuredTable sub = table.Table(name);
        sub.Attribute("GroupIndex", group.fGroupIndex);
        sub.Attribute("N", group.fN);
        if (group.fMeanRank) {
            sub.Attribute("MeanOfRank", *group.fMeanRank);
        }
        if (group.fAboveMedian) {
            sub.Attribute("GTMedian", *group.fAboveMedian);
        }
        if (group.fAtOrBelowMedian) {
            sub.Attribute("STMedian", *group.fAtOrBelowMedian);
        }
        WriteBoxTables(sub, group.fBox);
    }
}

void WriteComparison(Algorithm& algorithm, ComparisonKind kind, std::string_view valueName,
                     std::span<const double> samples, std::span<const double> values,
                     std::span<const ComparisonResult> rows, std::optional<int> fieldIndex) {
    const bool pairwise = kind == ComparisonKind::kPairwise;
    StructuredTable table = algorithm.Table(pairwise ? "PairwiseResult" : "StepwiseResult");
    const std::string rowNames[] = {"SampleIndex", std::string(valueName)};
    SimpleTable info = table.Simple(pairwise ? "PairwiseInfo" : "StepwiseInfo", rowNames, {});
    info.Row(samples);
    info.Row(values);
    SimpleTable content = pairwise
                              ? table.Simple("Content", {},
                                             {"Sample1", "Sample2", "TestStatistic", "StdError",
                                              "StdTestStatistic", "Sig", "AdjSig"})
                              : table.Simple("Content", {},
                                             {"FirstPosition", "LastPosition", "TestStatistic",
                                              "StdError", "StdTestStatistic", "Sig", "AdjSig"});
    for (const ComparisonResult& row : rows) {
        content.Row({static_cast<double>(row.fFirst), static_cast<double>(row.fSecond),
                     row.fStatistic, row.fStdError, row.fStdStatistic, row.fSig, row.fAdjustedSig});
    }
    if (fieldIndex) {
        table.Attribute("fieldIndex", *fieldIndex);
    }
}

namespace {
const char* OptypeWord(MeasureLevel level) {
    switch (level) {
    case MeasureLevel::kContinuous:
        return "continuous";
    case MeasureLevel::kNominal:
        return "categorical";
    case MeasureLevel::kOrdinal:
        return "ordinal";
    }
    return "continuous";
}

const char* DataTypeWord(StorageType type) {
    switch (type) {
    case StorageType::kInteger:
        return "integer";
    case StorageType::kDouble:
        return "double";
    case StorageType::kString:
        return "string";
    case StorageType::kDate:
        return "date";
    }
    return "double";
}
} // namespace

Document::Document() {
    pugi::xml_node declaration = fDoc.append_child(pugi::node_declaration);
    declaration.append_attribute("version").set_value("1.0");
    declaration.append_attribute("encoding").set_value("UTF-8");
    pugi::xml_node root = fDoc.append_child("StatXML");
    root.append_child("PMMLModel").append_attribute("modelType").set_value("NonParametricTests");
    fCounts = root.append_child("DescriptiveModel")
                  .append_child("DescriptiveSummary")
                  .append_child("Counts");
    SetCounts({});
    pugi::xml_node output = root.append_child("Extension").append_child("NPAROutput");
    fDictionary = output.append_child("DataDictionary");
    fTests = output.append_child("NonParametricTests");
    fInfos = output.append_child("FieldInfos");
    SetSettings(0.05, 0.95, MissingTreatment::kTestwise);
}

void Document::SetComment(std::string_view comment) {
    // "--" may not appear inside a comment; a blank keeps the text readable.
    std::string text = " ";
    for (char c : comment) {
        if (c == '-' && text.back() == '-') {
            text += ' ';
        }
        text += c;
    }
    text += ' ';
    pugi::xml_node node = fDoc.child("StatXML");
    pugi::xml_node existing =
        fDoc.find_child([](pugi::xml_node n) { return n.type() == pugi::node_comment; });
    if (existing) {
        existing.set_value(text.c_str());
    } else {
        fDoc.insert_child_before(pugi::node_comment, node).set_value(text.c_str());
    }
}

void Document::SetCounts(const DocumentCounts& counts) {
    auto set = [&](const char* name, long long value) {
        pugi::xml_attribute attribute = fCounts.attribute(name);
        if (!attribute) {
            attribute = fCounts.append_attribute(name);
        }
        attribute.set_value(value);
    };
    set("totalFreq", counts.fTotal);
    set("totalCount", counts.fTotal);
    set("droppedCount", counts.fDropped);
    set("badWeightCount", 0);
    set("droppedFreq", counts.fDropped);
}

void Document::SetSettings(double sigLevel, double confidenceLevel, MissingTreatment missing) {
    auto set = [&](const char* name, const std::string& value) {
        pugi::xml_attribute attribute = fTests.attribute(name);
        if (!attribute) {
            attribute = fTests.append_attribute(name);
        }
        attribute.set_value(value.c_str());
    };
    set("number", std::to_string(fAlgorithmCount));
    set("sigLevel", FormatNumber(sigLevel));
    set("confidenceLevel", FormatNumber(confidenceLevel));
    set("missingTreatment", missing == MissingTreatment::kListwise ? "listwise" : "testwise");
}

int Document::AddField(const DocumentField& field) {
    pugi::xml_node node = fDictionary.append_child("DataField");
    node.append_attribute("index").set_value(fFieldCount);
    node.append_attribute("name").set_value(field.fName.c_str());
    node.append_attribute("displayName").set_value(field.fLabel.c_str());
    node.append_attribute("optype").set_value(OptypeWord(field.fLevel));
    node.append_attribute("dataType").set_value(DataTypeWord(field.fType));
    if (field.fDecimals >= 0) {
        node.append_attribute("decimals").set_value(field.fDecimals);
    }
    for (std::size_t i = 0; i < field.fValues.size(); ++i) {
        pugi::xml_node value = node.append_child("Value");
        value.append_attribute("index").set_value(static_cast<unsigned long long>(i));
        value.append_attribute("value").set_value(field.fValues[i].first.c_str());
        value.append_attribute("displayValue").set_value(field.fValues[i].second.c_str());
    }
    return fFieldCount++;
}

Algorithm Document::AddAlgorithm(std::string_view name, Classification classification,
                                 Decision decision) {
    pugi::xml_node node = fTests.append_child("Algorithm");
    node.append_attribute("name").set_value(std::string(name).c_str());
    node.append_attribute("classification").set_value(ClassificationWord(classification));
    if (const char* word = DecisionWord(decision)) {
        node.append_attribute("decision").set_value(word);
    }
    ++fAlgorithmCount;
    fTests.attribute("number").set_value(fAlgorithmCount);
    return Algorithm(node);
}

Algorithm Document::AddAlgorithm(Test test, Decision decision) {
    const TestNames& names = NamesOf(test);
    return Algorithm(AddAlgorithm(names.fWord, names.fClassification, decision).Node(), names.fKey);
}

void Document::AddCategoricalInfo(int fieldIndex, double total, std::span<const double> counts) {
    pugi::xml_node node = fInfos.append_child("FieldInfo");
    node.append_attribute("varIndex").set_value(fieldIndex);
    StructuredTable table(node.append_child("StructuredTable"));
    table.Node().append_attribute("name").set_value("CategoricalDistribution");
    table.Attribute("Total", total);
    SimpleTable categories = table.Simple("Categories", {}, {"Category", "Count"});
    for (std::size_t i = 0; i < counts.size(); ++i) {
        categories.Row({static_cast<double>(i), counts[i]});
    }
}

void Document::AddContinuousInfo(int fieldIndex, double total, double min, double max, double mean,
                                 double stdDev, const ValueHistogram& histogram) {
    pugi::xml_node node = fInfos.append_child("FieldInfo");
    node.append_attribute("varIndex").set_value(fieldIndex);
    StructuredTable table(node.append_child("StructuredTable"));
    table.Node().append_attribute("name").set_value("ContinuousDistribution");
    table.Attribute("Total", total).Attribute("Min", min).Attribute("Max", max);
    table.Attribute("Mean", mean).Attribute("StdDev", stdDev);
    WriteHistogram(table, histogram);
}

std::string Document::Write() const {
    std::ostringstream out;
    fDoc.save(out, "  ", pugi::format_indent | pugi::format_no_empty_element_tags,
              pugi::encoding_utf8);
    return out.str();
}
