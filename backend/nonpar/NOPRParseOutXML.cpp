// The result document reader: the document's sections, each Algorithm with
// its conditions, messages and statistics, the test-specific tables and the
// field information.
#include "backend/nonpar/NOPRParseOutXML.h"

#include <cstring>
#include <memory>

#include "host/cf/CFAssert.h"
#include "host/cf/CFErrorChannel.h"
#include "host/cf/CFMetaData.h"
#include "host/cf/CFSysmis.h"
#include "host/vexa/VEXA_DataSource.h"
#include "host/xml/SDOMXMLWrapper.h"
#include "host/xml/XMLText.h"

#define CF_ASSERT_SOURCE "backend/nonpar/NOPRParseOutXML"

using Stats = NOPROutputStats;

namespace {
// False, with a message, when an attribute of `element` (a name, label or
// value text of data field `field`) is longer than a label may be. Checked
// before any is copied.
bool TextsFit(const SDOMXMLWrapper& element, int field) {
    for (const pugi::xml_attribute attribute : element.Node().attributes()) {
        const std::size_t size = std::strlen(attribute.value());
        if (size > kCFMaxLabelBytes) {
            CFErrorChannel::Error("a text of data field " + std::to_string(field) + " has " +
                                  std::to_string(size) +
                                  " bytes; a name, label or value may have at most " +
                                  std::to_string(kCFMaxLabelBytes));
            return false;
        }
    }
    return true;
}

bool Contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

bool IsParameterName(std::string_view name) {
    return !name.empty() && name.front() == '%';
}

// A "%N" attribute: parameter N with the numbers of its value.
Stats::ConditionParameter MakeParameter(const AttributeData& attribute, double missingValue) {
    Stats::ConditionParameter parameter;
    parameter.fNumber = String2Integer(std::string_view(attribute.fName).substr(1));
    ParseDoubleList(attribute.fValue, missingValue, parameter.fValues);
    return parameter;
}

// A required section: the lookup must work and find an element.
bool FindRequired(const SDOMXMLWrapper& from, std::string_view path, SDOMXMLWrapper& out) {
    return from.GetFirstElement(path, out, true) && !out.IsNull();
}

// The single simple table of a structured table, converted.
bool ConvertSingleTable(const StructuredTableData& stData, NumericTableData& out,
                        double missingValue) {
    CF_ASSERT_TEXT(stData.fSimpleTables.size() == 1, "stData.fSimpleTables.size() == 1");
    return ToNumericTable(stData.fSimpleTables.front(), out, missingValue);
}

int MeasureOfOptype(std::string_view optype) {
    if (optype == "continuous") {
        return CFField::kContinuous;
    }
    if (optype == "categorical") {
        return CFField::kCategorical;
    }
    if (optype == "ordinal") {
        return CFField::kOrdinal;
    }
    return CFField::kUnknownMeasure;
}

int StorageOfDataType(std::string_view dataType) {
    if (dataType == "integer") {
        return CFField::kInteger;
    }
    if (dataType == "double" || dataType == "float") {
        return CFField::kReal;
    }
    if (dataType == "string") {
        return CFField::kString;
    }
    if (dataType == "date") {
        return CFField::kDate;
    }
    return CFField::kUnknownStorage;
}

CFDatum DatumOf(const std::string& text, int storage) {
    switch (storage) {
    case CFField::kString:
        return CFDatum(text);
    case CFField::kInteger:
        return CFDatum(static_cast<double>(String2Integer(text)));
    default:
        return CFDatum(String2Double(text));
    }
}
} // namespace

OutputXMLParser::OutputXMLParser(VEXA_DataSource* dataSource, NOPROutputStats* stats,
                                 const std::string& xml)
    : fMissingValue(kCFSysmis), fDataSource(dataSource), fStats(stats), fXML(xml) {}

bool OutputXMLParser::Parse() {
    if (fParsed) {
        return true;
    }
    if (fXML.empty()) {
        return false;
    }
    // The running result: an exception ends the read early and keeps what was
    // read so far, which counts as success. An assertion stays an assertion.
    bool result = true;
    try {
        SDOMXMLWrapper root;
        if (!root.LoadFromString(fXML)) {
            CFErrorChannel::Error(root.Error());
            result = false;
        } else {
            result = ParseHeader(root) && ParseCounts(root) && ParseDataDictionary(root) &&
                     ParseTests(root) && ParseFieldInfos(root);
        }
    } catch (const CFAssertionFailure&) {
        throw;
    } catch (...) {
        fParsed = false;
    }
    fParsed = result;
    return fParsed;
}

bool OutputXMLParser::ParseHeader(const SDOMXMLWrapper& root) {
    if (root.GetName() != "StatXML") {
        return false;
    }
    SDOMXMLWrapper model;
    if (!FindRequired(root, "PMMLModel", model)) {
        return false;
    }
    std::string modelType;
    model.GetAttribute("modelType", modelType);
    return modelType == "NonParametricTests";
}

bool OutputXMLParser::ParseCounts(const SDOMXMLWrapper& root) {
    SDOMXMLWrapper counts;
    if (!FindRequired(root, "DescriptiveModel/DescriptiveSummary/Counts", counts)) {
        return false;
    }
    int totalFreq = 0, totalCount = 0, droppedCount = 0, badWeightCount = 0, droppedFreq = 0;
    counts.GetAttribute("totalFreq", totalFreq);
    counts.GetAttribute("totalCount", totalCount);
    counts.GetAttribute("droppedCount", droppedCount);
    counts.GetAttribute("badWeightCount", badWeightCount);
    counts.GetAttribute("droppedFreq", droppedFreq);
    fStats->fTotalFreq = totalFreq;
    fStats->fTotalCount = totalCount;
    fStats->fDroppedCount = droppedCount;
    fStats->fBadWeightCount = badWeightCount;
    fStats->fDroppedFreq = droppedFreq;
    return true;
}

bool OutputXMLParser::ParseDataDictionary(const SDOMXMLWrapper& root) {
    SDOMXMLWrapper dictionary;
    if (!root.GetFirstElement("Extension/NPAROutput/DataDictionary", dictionary, true) ||
        dictionary.IsNull()) {
        return true;
    }
    fStats->SetMetaData(std::make_unique<CFMetaData>());
    CFMetaData* metaData = fStats->GetMetaData();

    SDOMXMLIterator dataFields;
    if (dictionary.GetElementIterator("DataField", dataFields, true)) {
        int curIndex = 0;
        SDOMXMLWrapper dataField;
        std::string name, displayName, optype, dataType;
        while (dataFields.Next(dataField)) {
            if (!TextsFit(dataField, curIndex)) {
                return false;
            }
            int index = -1;
            name.clear();
            displayName.clear();
            optype.clear();
            dataType.clear();
            dataField.GetAttribute("index", index);
            dataField.GetAttribute("name", name);
            dataField.GetAttribute("displayName", displayName);
            dataField.GetAttribute("optype", optype);
            dataField.GetAttribute("dataType", dataType);
            CF_ASSERT(index == curIndex);

            const int storage = StorageOfDataType(dataType);
            auto field = std::make_unique<CFField>(name, MeasureOfOptype(optype), storage, 7);
            field->SetLabel(displayName);

            std::vector<CFValue> valueLabels;
            std::vector<CFValue> values;
            SDOMXMLIterator valueElms;
            if (dataField.GetElementIterator("Value", valueElms, true)) {
                int curVIndex = 0;
                SDOMXMLWrapper valueElm;
                while (valueElms.Next(valueElm)) {
                    if (!TextsFit(valueElm, curIndex)) {
                        return false;
                    }
                    int vindex = -1;
                    std::string value, displayValue;
                    valueElm.GetAttribute("index", vindex);
                    valueElm.GetAttribute("value", value);
                    valueElm.GetAttribute("displayValue", displayValue);
                    CF_ASSERT(curVIndex == vindex);
                    CFDatum datum = DatumOf(value, storage);
                    valueLabels.push_back({datum, std::move(displayValue)});
                    values.push_back({std::move(datum), std::move(value)});
                    ++curVIndex;
                }
            }
            if (!values.empty()) {
                field->SetValueLabels(std::move(valueLabels));
                field->SetValues(std::move(values));
            }
            metaData->AppendField(std::move(field));
            ++curIndex;
        }
    }

    // Every field but the last gets a field information record.
    const int nFields = metaData->GetFieldCount();
    for (int position = 0; position + 1 < nFields; ++position) {
        Stats::FieldInfoRecord* record = fStats->AppendFieldInfo();
        record->fFieldIndex = position;
        record->fVariable = FieldVariable(metaData, position);
        if (!record->fVariable) {
            continue;
        }
        const CFField* field = metaData->GetField(position);
        const std::vector<CFValue>& values = field->GetValues();
        const std::vector<CFValue>& labels = field->GetValueLabels();
        record->fValues.reserve(values.size());
        for (std::size_t j = 0; j < values.size(); ++j) {
            Stats::FieldValueEntry& entry = record->fValues.emplace_back();
            entry.fIndex = static_cast<std::int32_t>(j);
            entry.fValue.SetCompleteValue(values[j].fDatum, record->fVariable);
            entry.fLabel = j < labels.size() ? labels[j].fLabel : std::string();
        }
    }
    return true;
}

bool OutputXMLParser::ParseTests(const SDOMXMLWrapper& root) {
    SDOMXMLWrapper tests;
    if (!FindRequired(root, "Extension/NPAROutput/NonParametricTests", tests)) {
        return false;
    }
    int number = 0;
    tests.GetAttribute("number", number);
    fStats->fNumberOfTests = number;
    double sigLevel = kCFSysmis;
    double confidenceLevel = kCFSysmis;
    tests.GetAttribute("sigLevel", sigLevel);
    tests.GetAttribute("confidenceLevel", confidenceLevel);
    fStats->fSigLevel = sigLevel;
    fStats->fConfidenceLevel = confidenceLevel;
    std::string missingTreatment;
    tests.GetAttribute("missingTreatment", missingTreatment);
    fStats->fIsListwise = missingTreatment == "listwise" ? 1 : 0;

    SDOMXMLIterator algorithms;
    if (!tests.GetElementIterator("Algorithm", algorithms, true)) {
        return false;
    }
    SDOMXMLWrapper algorithm;
    while (algorithms.Next(algorithm)) {
        if (!ParseAlgorithm(algorithm)) {
            return false;
        }
    }
    return true;
}

bool OutputXMLParser::ParseAlgorithm(const SDOMXMLWrapper& algorithm) {
    std::string name, classification, decision;
    algorithm.GetAttribute("name", name);
    algorithm.GetAttribute("classification", classification);
    algorithm.GetAttribute("decision", decision);
    Stats::BaseHypothesisTest* test =
        fStats->CreateTest(Stats::ClassificationOfKey(classification), Stats::AlgorithmOfKey(name),
                           Stats::DecisionOfWord(decision));
    if (!test) {
        // A test the model has no record for is passed over; a word that
        // names no test at all is most likely misspelt.
        if (Stats::AlgorithmOfKey(name) == Stats::kAUnknown) {
            CFErrorChannel::Warning("the test \"" + name.substr(0, 80) +
                                    "\" is not one this program knows; it is left out");
        }
        return true;
    }
    SDOMXMLIterator tables;
    if (!algorithm.GetElementIterator("StructuredTable", tables, true)) {
        return false;
    }
    SDOMXMLWrapper table;
    std::string tableName;
    while (tables.Next(table)) {
        tableName.clear();
        table.GetAttribute("name", tableName);
        bool ok;
        if (tableName == "Condition") {
            ok = ParseCondition(table, *test);
        } else if (tableName == "WarningMessages") {
            ok = ParseWarningMessages(table, test->fMessages);
        } else if (tableName == "StatisticsResult") {
            ok = ParseStatisticsResult(table, test->fStatistics);
        } else if (tableName == "ValsNotInTheCategoreis") {
            ok = ParseValsNotInCategories(table, test->fValsNotInCategories);
        } else {
            ok = ParseTestSpecific(table, *test);
        }
        if (!ok) {
            return false;
        }
    }
    FinishTest(*test);
    return true;
}

bool OutputXMLParser::ParseCondition(const SDOMXMLWrapper& table,
                                     NOPROutputStats::BaseHypothesisTest& test) {
    fIsUseSample = false;
    StructuredTableData stData;
    const bool result = ReadStructuredTable(&table, stData);
    for (const AttributeData& attribute : stData.fAttributes) {
        const std::string& name = attribute.fName;
        if (name == "ConditionKey") {
            test.fConditionKey = attribute.fValue;
        } else if (IsParameterName(name)) {
            test.fConditionParameters.push_back(MakeParameter(attribute, fMissingValue));
        } else if (name == "isUseSample") {
            if (attribute.fValue == "true") {
                fIsUseSample = true;
            }
        } else if (name == "OrdinalTreatedAsCont") {
            ParseIntegerList(attribute.fValue, test.fOrdinalAsContinuous);
            for (std::int32_t index : test.fOrdinalAsContinuous) {
                Stats::FieldInfoRecord* record = fStats->GetFieldInfo(index);
                if (!record) {
                    return false; // names a field the model has no record of
                }
                record->fOrdinalAsContinuous = true;
            }
        }
    }
    return result;
}

bool OutputXMLParser::ParseWarningMessages(
    const SDOMXMLWrapper& table, std::vector<NOPROutputStats::ConditionMessage>& messages) {
    StructuredTableData stData;
    const bool result = ReadStructuredTable(&table, stData);
    messages.clear();
    messages.resize(stData.fStrucTables.size());
    for (std::size_t iST = 0; iST < stData.fStrucTables.size(); ++iST) {
        Stats::ConditionMessage& message = messages[iST];
        for (const AttributeData& attribute : stData.fStrucTables[iST].fAttributes) {
            const std::string& name = attribute.fName;
            if (name == "code") {
                message.fCode = String2Integer(attribute.fValue);
            } else if (name == "type") {
                message.fType = Stats::MessageTypeOfWord(attribute.fValue);
            } else if (name == "paramNum") {
                message.fCount = String2Integer(attribute.fValue);
            } else if (IsParameterName(name)) {
                message.fParameters.push_back(MakeParameter(attribute, fMissingValue));
            } else if (name == "group") {
                message.fGroup = attribute.fValue;
            }
        }
        CF_ASSERT_TEXT(messages[iST].fCount >= 0 &&
                           static_cast<std::size_t>(messages[iST].fCount) ==
                               messages[iST].fParameters.size(),
                       "messages[iST].fCount == messages[iST].fParameters.size()");
    }
    return result;
}

bool OutputXMLParser::ParseStatisticsResult(const SDOMXMLWrapper& table,
                                            std::vector<NOPROutputStats::StatisticsGroup>& groups) {
    StructuredTableData stData;
    const bool result = ReadStructuredTable(&table, stData);
    fIsLowerBound = false;
    // Top-level attributes between two nested tables form one unnamed group.
    bool unnamedGroupOpen = false;
    for (const ElementOrderEntry& entry : stData.fOrder) {
        if (entry.fKind == 2) {
            const StructuredTableData& nested = stData.fStrucTables[entry.fIndex];
            Stats::StatisticsGroup& group = groups.emplace_back();
            group.fName = nested.fName;
            group.fValues.reserve(nested.fAttributes.size());
            for (const AttributeData& attribute : nested.fAttributes) {
                group.fValues.push_back({attribute.fName, String2Double(attribute.fValue)});
            }
            unnamedGroupOpen = false;
        } else if (entry.fKind == 0) {
            if (!unnamedGroupOpen) {
                groups.emplace_back();
                unnamedGroupOpen = true;
            }
            const AttributeData& attribute = stData.fAttributes[entry.fIndex];
            std::string_view text = attribute.fValue;
            if (!text.empty() && text.front() == '>') {
                text.remove_prefix(1);
                fIsLowerBound = true;
            }
            groups.back().fValues.push_back({attribute.fName, String2Double(text)});
        }
    }
    return result;
}

bool OutputXMLParser::ParseValsNotInCategories(const SDOMXMLWrapper& table,
                                               std::vector<std::string>& values) {
    SDOMXMLIterator attributes;
    if (!table.GetElementIterator("Attribute", attributes, true)) {
        return false;
    }
    SDOMXMLWrapper attribute;
    while (attributes.Next(attribute)) {
        attribute.GetAttribute("value", values.emplace_back());
    }
    return true;
}

bool OutputXMLParser::ParseTestSpecific(const SDOMXMLWrapper& table,
                                        NOPROutputStats::BaseHypothesisTest& test) {
    std::string name;
    table.GetAttribute("name", name);
    switch (test.fAlgorithm) {
    case Stats::kAOChiSquare:
        if (name == "TwoClassComparison") {
            if (auto* chiSquare = dynamic_cast<Stats::HTOChiSquare*>(&test)) {
                return ParseTwoClassComparison(table, chiSquare->fTable);
            }
        }
        break;
    case Stats::kAOBinomial:
        if (name == "TwoClassComparison") {
            if (auto* binomial = dynamic_cast<Stats::HTOBinomial*>(&test)) {
                return ParseTwoClassComparison(table, binomial->fTable);
            }
        }
        break;
    case Stats::kAORuns:
        if (name == "RunsParameters") {
            if (auto* runs = dynamic_cast<Stats::HTORuns*>(&test)) {
                return ParseRunsParameters(table, *runs);
            }
        }
        break;
    case Stats::kAOWilcoxonSignedRanks:
        if (name == "ContinuousDistribution") {
            if (auto* wilcoxon = dynamic_cast<Stats::HTOWilcoxonSignedRanks*>(&test)) {
                return ParseContinuousDistribution(table, *wilcoxon);
            }
        }
        break;
    case Stats::kAOEstimateConfidenceInterval:
        if (name == "ClopperPearson" || name == "Jeffreys" || name == "ProfileLikelihood") {
            if (auto* estimate = dynamic_cast<Stats::HTOEstimateConfidenceInterval*>(&test)) {
                return ParseConfidenceInterval(table, *estimate);
            }
        }
        break;
    case Stats::kAOKolmogorovSmirnov:
    case Stats::kAOLilliefors:
        return true; // no table of their own; passed over silently
    case Stats::kARSign:
    case Stats::kARWilcoxonSignedRanks:
        if (name == "ContinuousDistribution") {
            if (auto* differences = dynamic_cast<Stats::HTRDifferences*>(&test)) {
                return ParseRelatedDifferences(table, *differences);
            }
        }
        break;
    case Stats::kARCochransQ:
        if (auto* cochran = dynamic_cast<Stats::HTRCochransQ*>(&test)) {
            if (name == "TwoClassComparison") {
                return ParseTwoClassComparison(table, cochran->fTable);
            }
            if (name == "PairwiseResult" || name == "StepwiseResult") {
                return ParseMultipleComparison(table, cochran->fComparison);
            }
        }
        break;
    case Stats::kARMcNemar:
    case Stats::kARMarginalHomogeneity:
        if (name == "CategoryFieldsComparison") {
            if (auto* mcNemar = dynamic_cast<Stats::HTRMcNemar*>(&test)) {
                return ParseCategoryFieldsComparison(table, mcNemar->fComparison);
            }
            if (auto* marginal = dynamic_cast<Stats::HTRMarginalHomogeneity*>(&test)) {
                return ParseCategoryFieldsComparison(table, marginal->fComparison);
            }
        }
        break;
    case Stats::kARFriedmansTwoWayByRanks:
    case Stats::kARKendallsCoefficient:
        if (auto* ranks = dynamic_cast<Stats::HTRRanks*>(&test)) {
            if (name == "VariableInformation") {
                return ParseVariableInformation(table, ranks->fVariables.emplace_back());
            }
            if (name == "PairwiseResult" || name == "StepwiseResult") {
                return ParseMultipleComparison(table, ranks->fComparison);
            }
        }
        break;
    case Stats::kAIMoses:
        if (name == "BoxPlotInfo") {
            if (auto* moses = dynamic_cast<Stats::HTIMoses*>(&test)) {
                return ParseBoxPlotInfo(table, moses->fBoxPlot);
            }
        }
        break;
    case Stats::kAIMannWhitneyU:
    case Stats::kAIWaldWolfowitzRuns:
    case Stats::kAIKolmogorovSmirnov:
        if (Contains(name, "Group")) {
            if (auto* groups = dynamic_cast<Stats::HTIGroups*>(&test)) {
                return ParseGroup(table, groups->fGroups.emplace_back());
            }
        }
        break;
    case Stats::kAIKruskalWallis:
    case Stats::kAIJonckheereTerpstra:
    case Stats::kAIMedian:
        if (auto* boxPlot = dynamic_cast<Stats::HTIBoxPlotComparison*>(&test)) {
            if (name == "BoxPlotInfo") {
                return ParseBoxPlotInfo(table, boxPlot->fBoxPlot);
            }
            if (name == "PairwiseResult" || name == "StepwiseResult") {
                return ParseMultipleComparison(table, boxPlot->fComparison);
            }
        }
        break;
    default:
        break;
    }
    ReportUnparsedElement(name);
    return true;
}

void OutputXMLParser::FinishTest(NOPROutputStats::BaseHypothesisTest& test) {
    switch (test.fAlgorithm) {
    case Stats::kAOKolmogorovSmirnov:
    case Stats::kAOLilliefors:
        if (auto* ks = dynamic_cast<Stats::HTOKolmogorovSmirnov*>(&test)) {
            ks->fIsUseSample = test.fAlgorithm == Stats::kAOLilliefors || fIsUseSample;
            ks->fIsLowerBound = fIsLowerBound;
        }
        break;
    case Stats::kARHodgesLehmannEstimatePairs:
    case Stats::kAIHodgesLehmannEstimateGroups: {
        auto* hl = dynamic_cast<Stats::HTHodgesLehmann*>(&test);
        const std::vector<Stats::StatisticsGroup>& groups = test.fStatistics;
        if (!hl || groups.size() != 2 || !groups[0].fName.empty() ||
            groups[1].fName != "Asymptotic") {
            break;
        }
        if (!groups[0].fValues.empty() && groups[0].fValues.front().fName == "Estimate") {
            hl->fEstimate.fEstimate = groups[0].fValues.front().fValue;
        }
        if (groups[1].fValues.size() == 2) {
            hl->fEstimate.fLower = groups[1].fValues[0].fValue;
            hl->fEstimate.fUpper = groups[1].fValues[1].fValue;
        }
        break;
    }
    default:
        break;
    }
}

void OutputXMLParser::ReportUnparsedElement(std::string_view name) {
    std::string text = "Not parse element: ";
    text += name;
    CFErrorChannel::Error(text);
}

bool OutputXMLParser::ParseTwoClassComparison(const SDOMXMLWrapper& table, NumericTableData& out) {
    SDOMXMLWrapper simpleTable;
    if (!FindRequired(table, "SimpleTable", simpleTable)) {
        return false;
    }
    SimpleTableData data;
    return ReadSimpleTable(&simpleTable, data) && ToNumericTable(data, out, fMissingValue);
}

bool OutputXMLParser::ParseRunsParameters(const SDOMXMLWrapper& table,
                                          NOPROutputStats::HTORuns& test) {
    SDOMXMLIterator attributes;
    if (!table.GetElementIterator("Attribute", attributes, true)) {
        return false;
    }
    SDOMXMLWrapper attributeElm;
    NumericAttributeData attribute;
    while (attributes.Next(attributeElm)) {
        attribute.fName.clear();
        ReadAttributeDouble(&attributeElm, attribute);
        if (attribute.fName == "Mean") {
            test.fMean = attribute.fValue;
        } else if (attribute.fName == "StdDev") {
            test.fStdDev = attribute.fValue;
        } else if (attribute.fName == "ObservedRunNumber") {
            test.fObservedRunNumber = TruncateToInt(attribute.fValue);
        } else {
            ReportUnparsedElement(attribute.fName);
        }
    }
    return true;
}

bool OutputXMLParser::ParseContinuousDistribution(const SDOMXMLWrapper& table,
                                                  NOPROutputStats::HTOWilcoxonSignedRanks& test) {
    StructuredTableData stData;
    if (!ReadStructuredTable(&table, stData)) {
        return false;
    }
    for (const AttributeData& attribute : stData.fAttributes) {
        if (attribute.fName == "HypotheticalMedian") {
            test.fHypotheticalMedian = String2Double(attribute.fValue);
        } else if (attribute.fName == "ObservedMedian") {
            test.fObservedMedian = String2Double(attribute.fValue);
        } else {
            ReportUnparsedElement(attribute.fName);
        }
    }
    return ConvertSingleTable(stData, test.fDistribution, fMissingValue);
}

bool OutputXMLParser::ParseConfidenceInterval(
    const SDOMXMLWrapper& table, NOPROutputStats::HTOEstimateConfidenceInterval& test) {
    StructuredTableData stData;
    if (!ReadStructuredTable(&table, stData)) {
        return false;
    }
    Stats::IntervalEntry entry;
    for (const AttributeData& attribute : stData.fAttributes) {
        if (attribute.fName == "computeECIMethod") {
            entry.fMethod = attribute.fValue;
        } else if (attribute.fName == "Estimate") {
            entry.fEstimate.fEstimate = String2Double(attribute.fValue);
        } else {
            ReportUnparsedElement(attribute.fName);
        }
    }
    CF_ASSERT_TEXT(stData.fStrucTables.size() == 1, "stData.fStrucTables.size() == 1");
    for (const AttributeData& attribute : stData.fStrucTables.front().fAttributes) {
        if (attribute.fName == "Lower") {
            entry.fEstimate.fLower = String2Double(attribute.fValue);
        } else if (attribute.fName == "Upper") {
            entry.fEstimate.fUpper = String2Double(attribute.fValue);
        } else {
            ReportUnparsedElement(attribute.fName);
        }
    }
    test.fIntervals.push_back(std::move(entry));
    return true;
}

bool OutputXMLParser::ParseRelatedDifferences(const SDOMXMLWrapper& table,
                                              NOPROutputStats::HTRDifferences& test) {
    StructuredTableData stData;
    if (!ReadStructuredTable(&table, stData)) {
        return false;
    }
    for (const AttributeData& attribute : stData.fAttributes) {
        if (attribute.fName == "NegativeDifferences") {
            test.fNegativeDifferences = String2Integer(attribute.fValue);
        } else if (attribute.fName == "Ties") {
            test.fTies = String2Integer(attribute.fValue);
        } else if (attribute.fName == "PositiveDifferences") {
            test.fPositiveDifferences = String2Integer(attribute.fValue);
        } else {
            ReportUnparsedElement(attribute.fName);
        }
    }
    return ConvertSingleTable(stData, test.fDistribution, fMissingValue);
}

bool OutputXMLParser::ParseCategoryFieldsComparison(
    const SDOMXMLWrapper& table, NOPROutputStats::CategoryFieldsComparison& out) {
    StructuredTableData stData;
    if (!ReadStructuredTable(&table, stData)) {
        return false;
    }
    if (stData.fName != "CategoryFieldsComparison") {
        ReportUnparsedElement(stData.fName);
        return true;
    }
    for (const AttributeData& attribute : stData.fAttributes) {
        const std::string& name = attribute.fName;
        if (name == "RowNames") {
            out.fRowField = String2Integer(attribute.fValue);
        } else if (name == "ColumnNames") {
            out.fColumnField = String2Integer(attribute.fValue);
        } else if (name == "RowSuccessList") {
            ParseDoubleList(attribute.fValue, fMissingValue, out.fRowSuccessList);
        } else if (name == "RowFailList") {
            ParseDoubleList(attribute.fValue, fMissingValue, out.fRowFailList);
        } else if (name == "ColumnSuccessList") {
            ParseDoubleList(attribute.fValue, fMissingValue, out.fColumnSuccessList);
        } else if (name == "ColumnFailList") {
            ParseDoubleList(attribute.fValue, fMissingValue, out.fColumnFailList);
        } else {
            ReportUnparsedElement(name);
        }
    }
    ConvertSingleTable(stData, out.fTable, fMissingValue);
    for (const StructuredTableData& nested : stData.fStrucTables) {
        std::vector<std::string>* values = nullptr;
        if (nested.fName == "RowValsNotInTheCategoreis") {
            values = &out.fRowValsNotInCategories;
        } else if (nested.fName == "ColValsNotInTheCategoreis") {
            values = &out.fColValsNotInCategories;
        } else {
            continue;
        }
        for (const AttributeData& attribute : nested.fAttributes) {
            values->push_back(attribute.fValue);
        }
    }
    return true;
}

bool OutputXMLParser::ParseGroup(const SDOMXMLWrapper& table, NOPROutputStats::GroupRecord& out) {
    StructuredTableData stData;
    if (!ReadStructuredTable(&table, stData)) {
        return false;
    }
    for (const AttributeData& attribute : stData.fAttributes) {
        if (attribute.fName == "GroupIndex") {
            out.fGroupIndex = String2Integer(attribute.fValue);
        } else if (attribute.fName == "N") {
            out.fN = String2Integer(attribute.fValue);
        } else if (attribute.fName == "MeanOfRank") {
            out.fMeanOfRank = String2Double(attribute.fValue);
        } else {
            ReportUnparsedElement(attribute.fName);
        }
    }
    return ConvertSingleTable(stData, out.fTable, fMissingValue);
}

bool OutputXMLParser::ParseVariableInformation(const SDOMXMLWrapper& table,
                                               NOPROutputStats::VariableInformation& out) {
    StructuredTableData stData;
    if (!ReadStructuredTable(&table, stData)) {
        return false;
    }
    for (const AttributeData& attribute : stData.fAttributes) {
        if (attribute.fName == "GroupIndex") {
            out.fGroupIndex = String2Integer(attribute.fValue);
        } else if (attribute.fName == "MeanOfRank") {
            out.fMeanOfRank = String2Double(attribute.fValue);
        } else {
            ReportUnparsedElement(attribute.fName);
        }
    }
    return ConvertSingleTable(stData, out.fTable, fMissingValue);
}

bool OutputXMLParser::ParseBoxPlotInfo(const SDOMXMLWrapper& table,
                                       NOPROutputStats::BoxPlotInfo& out) {
    StructuredTableData stData;
    if (!ReadStructuredTable(&table, stData)) {
        return false;
    }
    for (const AttributeData& attribute : stData.fAttributes) {
        if (attribute.fName == "GroupFieldIndex") {
            out.fGroupFieldIndex = String2Integer(attribute.fValue);
        } else if (attribute.fName == "GroupCount") {
            out.fGroupCount = String2Integer(attribute.fValue);
        } else if (attribute.fName == "GrandMedian") {
            out.fGrandMedian = String2Double(attribute.fValue);
        } else {
            ReportUnparsedElement(attribute.fName);
        }
    }
    // A nested table whose name holds "Group" fills the group at its own
    // position; the others leave their position empty.
    for (std::size_t position = 0; position < stData.fStrucTables.size(); ++position) {
        const StructuredTableData& nested = stData.fStrucTables[position];
        if (!Contains(nested.fName, "Group")) {
            continue;
        }
        if (out.fGroups.size() <= position) {
            out.fGroups.resize(position + 1);
        }
        Stats::BoxPlotGroup& group = out.fGroups[position];
        for (const AttributeData& attribute : nested.fAttributes) {
            const std::string& name = attribute.fName;
            if (name == "GroupIndex") {
                group.fGroupIndex = String2Integer(attribute.fValue);
            } else if (name == "N") {
                group.fN = String2Integer(attribute.fValue);
            } else if (name == "MeanOfRank") {
                group.fMeanOfRank = String2Double(attribute.fValue);
            } else if (name == "GTMedian") {
                group.fGTMedian = String2Double(attribute.fValue);
            } else if (name == "STMedian") {
                group.fSTMedian = String2Double(attribute.fValue);
            } else {
                ReportUnparsedElement(name);
            }
        }
        for (const SimpleTableData& simple : nested.fSimpleTables) {
            if (simple.fName == "Box") {
                ToNumericTable(simple, group.fBox, fMissingValue);
            } else if (simple.fName == "Outliers") {
                ToNumericTable(simple, group.fOutliers, fMissingValue);
            }
        }
    }
    return true;
}

bool OutputXMLParser::ParseMultipleComparison(const SDOMXMLWrapper& table,
                                              NOPROutputStats::MultipleComparison& out) {
    // One pass over the children: every SimpleTable until one fails to read,
    // and the first Attribute.
    SDOMXMLIterator children;
    if (!table.GetElementIterator("", children, true)) {
        return false;
    }
    bool tablesOk = true;
    bool haveAttribute = false;
    SDOMXMLWrapper child;
    SimpleTableData simple;
    while (children.Next(child)) {
        const std::string_view tag = child.GetName();
        if (tag == "SimpleTable" && tablesOk) {
            simple.fRowNames.clear();
            simple.fColumnNames.clear();
            if (!ReadSimpleTable(&child, simple)) {
                tablesOk = false;
            } else if (simple.fName == "PairwiseInfo") {
                out.fKind = Stats::MultipleComparison::kPairwise;
                tablesOk = ToNumericTable(simple, out.fInfo, fMissingValue);
            } else if (simple.fName == "StepwiseInfo") {
                out.fKind = Stats::MultipleComparison::kStepwise;
                tablesOk = ToNumericTable(simple, out.fInfo, fMissingValue);
            } else if (simple.fName == "Content") {
                tablesOk = ToNumericTable(simple, out.fContent, fMissingValue);
            }
        } else if (tag == "Attribute" && !haveAttribute) {
            haveAttribute = true;
            NumericAttributeData attribute;
            ReadAttributeDouble(&child, attribute);
            if (attribute.fName == "fieldIndex") {
                out.fFieldIndex = TruncateToInt(attribute.fValue);
            }
        }
    }
    return tablesOk;
}

bool OutputXMLParser::ParseFieldInfos(const SDOMXMLWrapper& root) {
    SDOMXMLWrapper fieldInfos;
    if (!FindRequired(root, "Extension/NPAROutput/FieldInfos", fieldInfos)) {
        return false;
    }
    SDOMXMLIterator infos;
    if (!fieldInfos.GetElementIterator("FieldInfo", infos, true)) {
        return true;
    }
    SDOMXMLWrapper info;
    while (infos.Next(info)) {
        if (!ParseFieldInfo(info)) {
            return false;
        }
    }
    return true;
}

bool OutputXMLParser::ParseFieldInfo(const SDOMXMLWrapper& fieldInfo) {
    int varIndex = -1;
    fieldInfo.GetAttribute("varIndex", varIndex);
    Stats::FieldInfoRecord* record = fStats->GetFieldInfo(varIndex);
    if (!record) {
        return false; // names a field the model has no record of
    }
    SDOMXMLWrapper tableElm;
    if (!FindRequired(fieldInfo, "StructuredTable", tableElm)) {
        return false;
    }
    StructuredTableData stData;
    if (!ReadStructuredTable(&tableElm, stData)) {
        return false;
    }
    record->fIsCategorical = stData.fName == "CategoricalDistribution" ? 1 : 0;
    for (const AttributeData& attribute : stData.fAttributes) {
        const std::string& name = attribute.fName;
        if (name == "Total") {
            record->fTotal = String2Integer(attribute.fValue);
        } else if (name == "Min") {
            record->fMin = String2Double(attribute.fValue);
        } else if (name == "Max") {
            record->fMax = String2Double(attribute.fValue);
        } else if (name == "Mean") {
            record->fMean = String2Double(attribute.fValue);
        } else if (name == "StdDev") {
            record->fStdDev = String2Double(attribute.fValue);
        }
    }
    if (ConvertSingleTable(stData, record->fDistribution, fMissingValue)) {
        record->fHasInfo = true;
    }
    return true;
}

VEXA_Variable* OutputXMLParser::FieldVariable(const CFMetaData* metaData, int fieldIndex) const {
    if (!metaData || fieldIndex < 0 || fieldIndex >= metaData->GetFieldCount() || !fDataSource) {
        return nullptr;
    }
    const CFField* field = metaData->GetField(fieldIndex);
    return fDataSource->GetVariable(fDataSource->FindVarIndex(field->GetName()));
}
