// The result document reader: reads one split's result document into the
// result model.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "backend/nonpar/NOPROutputStats.h"
#include "backend/nonpar/NOPRXMLGeneral.h"

class SDOMXMLWrapper;
class VEXA_DataSource;
class VEXA_Variable;
class CFMetaData;

class OutputXMLParser final {
public:
    OutputXMLParser(VEXA_DataSource* dataSource, NOPROutputStats* stats, const std::string& xml);

    // Reads the document into the model; the result is kept, and a later
    // call after a success returns it at once.
    bool Parse();

    // The document's sections, in the order Parse reads them.
    bool ParseHeader(const SDOMXMLWrapper& root);
    bool ParseCounts(const SDOMXMLWrapper& root);
    bool ParseDataDictionary(const SDOMXMLWrapper& root);
    bool ParseTests(const SDOMXMLWrapper& root);
    bool ParseFieldInfos(const SDOMXMLWrapper& root);

    // One Algorithm element and its tables.
    bool ParseAlgorithm(const SDOMXMLWrapper& algorithm);
    bool ParseCondition(const SDOMXMLWrapper& table, NOPROutputStats::BaseHypothesisTest& test);
    bool ParseWarningMessages(const SDOMXMLWrapper& table,
                              std::vector<NOPROutputStats::ConditionMessage>& messages);
    bool ParseStatisticsResult(const SDOMXMLWrapper& table,
                               std::vector<NOPROutputStats::StatisticsGroup>& groups);
    bool ParseValsNotInCategories(const SDOMXMLWrapper& table, std::vector<std::string>& values);
    bool ParseTestSpecific(const SDOMXMLWrapper& table, NOPROutputStats::BaseHypothesisTest& test);
    void FinishTest(NOPROutputStats::BaseHypothesisTest& test);
    static void ReportUnparsedElement(std::string_view name);

    // The test-specific tables, each read into the part of a record it fills.
    bool ParseTwoClassComparison(const SDOMXMLWrapper& table, NumericTableData& out);
    bool ParseRunsParameters(const SDOMXMLWrapper& table, NOPROutputStats::HTORuns& test);
    bool ParseContinuousDistribution(const SDOMXMLWrapper& table,
                                     NOPROutputStats::HTOWilcoxonSignedRanks& test);
    bool ParseConfidenceInterval(const SDOMXMLWrapper& table,
                                 NOPROutputStats::HTOEstimateConfidenceInterval& test);
    bool ParseRelatedDifferences(const SDOMXMLWrapper& table,
                                 NOPROutputStats::HTRDifferences& test);
    bool ParseCategoryFieldsComparison(const SDOMXMLWrapper& table,
                                       NOPROutputStats::CategoryFieldsComparison& out);
    bool ParseGroup(const SDOMXMLWrapper& table, NOPROutputStats::GroupRecord& out);
    bool ParseVariableInformation(const SDOMXMLWrapper& table,
                                  NOPROutputStats::VariableInformation& out);
    bool ParseBoxPlotInfo(const SDOMXMLWrapper& table, NOPROutputStats::BoxPlotInfo& out);
    // A "PairwiseResult" or "StepwiseResult" table.
    bool ParseMultipleComparison(const SDOMXMLWrapper& table,
                                 NOPROutputStats::MultipleComparison& out);
    // One "FieldInfo" element; false also when the model has no record of
    // the field it names.
    bool ParseFieldInfo(const SDOMXMLWrapper& fieldInfo);

    // The host variable of a dictionary field, or null.
    VEXA_Variable* FieldVariable(const CFMetaData* metaData, int fieldIndex) const;

    bool fParsed = false;
    double fMissingValue;
    VEXA_DataSource* fDataSource;
    NOPROutputStats* fStats;
    const std::string& fXML;
    bool fIsUseSample = false;
    bool fIsLowerBound = false;
};
