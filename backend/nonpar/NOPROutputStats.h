// The result model of one split: counts, settings, every hypothesis test with
// its conditions, messages, statistics and test-specific tables, the
// estimates, the Lilliefors companions and the per-field information. Also the
// catalogue that turns the result document's words into the model's values.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/cf/CFMetaData.h"
#include "host/cf/CFSysmis.h"

class VEXA_DataSource;
class VEXA_Variable;
class CFSplitDocument;
class CFDump;

// A simple table converted to numbers.
struct NumericTableData {
    std::string fName;
    std::vector<std::string> fRowNames;
    std::vector<std::string> fColumnNames;
    std::vector<std::vector<double>> fRows;
};

class NOPROutputStats final {
public:
    enum Classification : std::int32_t {
        kCUnknown = 0,
        kCOneSample = 1,
        kCRelatedSamples = 2,
        kCIndependentSamples = 3,
    };

    enum Algorithm : std::int32_t {
        kAUnknown = 0,
        kAOChiSquare = 1,
        kAOBinomial = 2,
        kAORuns = 3,
        kAOWilcoxonSignedRanks = 4,
        kAOEstimateConfidenceInterval = 5,
        kAOKolmogorovSmirnov = 6,
        kAOKolmogorovSmirnovNormal = 7,
        kAOKolmogorovSmirnovUniform = 8,
        kAOKolmogorovSmirnovPoisson = 9,
        kAOKolmogorovSmirnovExponential = 10,
        kAOLilliefors = 11,
        kAOLillieforsNormal = 12,
        kAOLillieforsUniform = 13,
        kAOLillieforsExponential = 14,
        kARSign = 15,
        kARWilcoxonSignedRanks = 16,
        kARCochransQ = 17,
        kARMcNemar = 18,
        kARFriedmansTwoWayByRanks = 19,
        kARKendallsCoefficient = 20,
        kARMarginalHomogeneity = 21,
        kARHodgesLehmannEstimatePairs = 22,
        kAIHodgesLehmannEstimateGroups = 23,
        kAIMoses = 24,
        kAIMannWhitneyU = 25,
        kAIWaldWolfowitzRuns = 26,
        kAIKolmogorovSmirnov = 27,
        kAIKruskalWallis = 28,
        kAIJonckheereTerpstra = 29,
        kAIMedian = 30,
    };

    enum Decision : std::int32_t { kDUnknown = 0, kDReject = 1, kDRetain = 2 };

    enum MessageType : std::int32_t { kMError = 0, kMWarning = 1, kMHelpMessage = 2 };

    // A numbered parameter of a condition or a message.
    struct ConditionParameter {
        std::int32_t fNumber = 0;
        std::vector<double> fValues;
    };

    struct ConditionMessage {
        std::int32_t fCode = 0;
        MessageType fType = kMError;
        std::int32_t fCount = 0; // parameters announced
        std::vector<ConditionParameter> fParameters;
        std::string fGroup;
    };

    struct StatisticsValue {
        std::string fName;
        double fValue = 0.0;
    };

    struct StatisticsGroup {
        std::string fName;
        std::vector<StatisticsValue> fValues;
    };

    // An estimate with its confidence interval.
    struct EstimateRecord {
        double fEstimate = kCFSysmis;
        double fLower = kCFSysmis;
        double fUpper = kCFSysmis;
    };

    // One confidence interval of the binomial success rate.
    struct IntervalEntry {
        std::string fMethod; // "computeECIMethod": the interval type
        EstimateRecord fEstimate;
    };

    // Rank statistics of one group of an independent-samples test.
    struct GroupRecord {
        std::int32_t fGroupIndex = 0;
        std::int32_t fN = 0;
        double fMeanOfRank = 0.0;
        NumericTableData fTable;
    };

    // Rank statistics of one field of a related-samples test.
    struct VariableInformation {
        std::int32_t fGroupIndex = 0;
        double fMeanOfRank = 0.0;
        NumericTableData fTable;
    };

    struct BoxPlotGroup {
        std::int32_t fGroupIndex = 0;
        std::int32_t fN = 0;
        double fMeanOfRank = 0.0;
        double fGTMedian = 0.0;
        double fSTMedian = 0.0;
        NumericTableData fBox;
        NumericTableData fOutliers;
    };

    struct BoxPlotInfo {
        std::int32_t fGroupFieldIndex = -1;
        std::int32_t fGroupCount = 0;
        double fGrandMedian = kCFSysmis;
        std::vector<BoxPlotGroup> fGroups;
    };

    // Pairwise comparisons (kind 1) or homogeneous subsets (kind 2).
    struct MultipleComparison {
        enum Kind : std::int32_t { kNone = 0, kPairwise = 1, kStepwise = 2 };
        Kind fKind = kNone;
        std::int32_t fFieldIndex = -1;
        NumericTableData fInfo;    // rank data: sample indices and their values
        NumericTableData fContent; // one row per pair or subset, 7 columns
    };

    // The two-way table of two categorical fields (McNemar, marginal homogeneity).
    struct CategoryFieldsComparison {
        std::int32_t fRowField = 0;    // "RowNames"
        std::int32_t fColumnField = 0; // "ColumnNames"
        std::vector<double> fRowSuccessList;
        std::vector<double> fRowFailList;
        std::vector<double> fColumnSuccessList;
        std::vector<double> fColumnFailList;
        std::vector<std::string> fRowValsNotInCategories;
        std::vector<std::string> fColValsNotInCategories;
        NumericTableData fTable;
    };

    class BaseHypothesisTest {
    public:
        virtual ~BaseHypothesisTest();

        Classification fClassification = kCUnknown;
        Algorithm fAlgorithm = kAUnknown;
        Decision fDecision = kDUnknown;
        std::string fConditionKey;
        std::vector<ConditionParameter> fConditionParameters;
        std::vector<std::int32_t> fOrdinalAsContinuous;
        std::vector<ConditionMessage> fMessages;
        std::vector<StatisticsGroup> fStatistics;
        std::vector<std::string> fValsNotInCategories;
    };

    class HTOChiSquare final : public BaseHypothesisTest {
    public:
        NumericTableData fTable; // observed and hypothesized frequencies
    };
    class HTOBinomial final : public BaseHypothesisTest {
    public:
        NumericTableData fTable; // observed and hypothesized proportions
    };
    class HTOKolmogorovSmirnov final : public BaseHypothesisTest {
    public:
        bool fIsUseSample = false;  // parameters estimated from the sample
        bool fIsLowerBound = false; // significance written as a lower bound
    };
    class HTORuns final : public BaseHypothesisTest {
    public:
        double fMean = kCFSysmis;   // expected number of runs
        double fStdDev = kCFSysmis; // its standard deviation
        std::int32_t fObservedRunNumber = 0;
    };
    class HTOWilcoxonSignedRanks final : public BaseHypothesisTest {
    public:
        double fHypotheticalMedian = kCFSysmis;
        double fObservedMedian = kCFSysmis;
        NumericTableData fDistribution;
    };
    class HTOEstimateConfidenceInterval final : public BaseHypothesisTest {
    public:
        std::vector<IntervalEntry> fIntervals;
    };
    // The paired differences of the sign and Wilcoxon signed-rank tests.
    class HTRDifferences : public BaseHypothesisTest {
    public:
        std::int32_t fNegativeDifferences = 0;
        std::int32_t fTies = 0;
        std::int32_t fPositiveDifferences = 0;
        NumericTableData fDistribution;
    };
    class HTRSign final : public HTRDifferences {};
    class HTRWilcoxonSignedRanks final : public HTRDifferences {};
    class HTRCochransQ final : public BaseHypothesisTest {
    public:
        NumericTableData fTable; // successes and failures per field
        MultipleComparison fComparison;
    };
    class HTRMcNemar final : public BaseHypothesisTest {
    public:
        CategoryFieldsComparison fComparison;
    };
    class HTRMarginalHomogeneity final : public BaseHypothesisTest {
    public:
        CategoryFieldsComparison fComparison;
    };
    class HTRRanks : public BaseHypothesisTest {
    public:
        std::vector<VariableInformation> fVariables;
        MultipleComparison fComparison;
    };
    class HTRFriedmansTwoWayByRanks final : public HTRRanks {};
    class HTRKendallsCoefficient final : public HTRRanks {};
    class HTHodgesLehmann : public BaseHypothesisTest {
    public:
        std::string fEstimateName;
        EstimateRecord fEstimate;
    };
    class HTRHodgesLehmannEstimatePairs final : public HTHodgesLehmann {};
    class HTIHodgesLehmannEstimateGroups final : public HTHodgesLehmann {};
    class HTIGroups : public BaseHypothesisTest {
    public:
        std::vector<GroupRecord> fGroups;
    };
    class HTIMannWhitneyU final : public HTIGroups {};
    class HTIKolmogorovSmirnov final : public HTIGroups {};
    class HTIWaldWolfowitzRuns final : public HTIGroups {};
    class HTIMoses final : public BaseHypothesisTest {
    public:
        BoxPlotInfo fBoxPlot;
    };
    class HTIBoxPlotComparison : public BaseHypothesisTest {
    public:
        BoxPlotInfo fBoxPlot;
        MultipleComparison fComparison;
    };
    class HTIKruskalWallis final : public HTIBoxPlotComparison {};
    class HTIJonckheereTerpstra final : public HTIBoxPlotComparison {};
    class HTIMedian final : public HTIBoxPlotComparison {};

    // One value of a field: its position, its value as the host sees it and
    // its label.
    struct FieldValueEntry {
        std::int32_t fIndex = 0;
        CFStatVariableValue fValue;
        std::string fLabel;
    };

    struct FieldInfoRecord {
        bool fHasInfo = false;
        std::int32_t fFieldIndex = 0;
        VEXA_Variable* fVariable = nullptr;
        std::vector<FieldValueEntry> fValues;
        std::int32_t fIsCategorical = 0;
        std::int32_t fTotal = 0;
        double fMin = kCFSysmis;
        double fMax = kCFSysmis;
        double fMean = kCFSysmis;
        double fStdDev = kCFSysmis;
        bool fOrdinalAsContinuous = false;
        NumericTableData fDistribution;
        // How the distribution was binned; the engine writes "Interval".
        std::string fBinning = "Interval";
    };

    NOPROutputStats();
    ~NOPROutputStats();
    NOPROutputStats(const NOPROutputStats&) = delete;
    NOPROutputStats& operator=(const NOPROutputStats&) = delete;

    // Host objects, not owned.
    void SetDataSource(VEXA_DataSource* dataSource) { fDataSource = dataSource; }
    void SetHostContext(void* context) { fHostContext = context; }
    void SetSplit(const CFSplitDocument* split) { fSplit = split; }
    VEXA_DataSource* GetDataSource() const { return fDataSource; }
    void* GetHostContext() const { return fHostContext; }
    const CFSplitDocument* GetSplit() const { return fSplit; }
    // The split as chart subtitles show it ("gender = Female, ..."; value
    // labels where there are some) and whether charts append it to their
    // descriptions; empty and false when the data are not split.
    void GetSplitViewTitle(std::string& suffix, bool& appendSuffix) const;

    // The field dictionary of the result document (owned).
    CFMetaData* GetMetaData() const { return fMetaData.get(); }
    void SetMetaData(std::unique_ptr<CFMetaData> metaData) { fMetaData = std::move(metaData); }

    // Creates the record of an algorithm, appends it to its list and returns
    // it; null for the values that have no record (0, 7-10, 12-14, >30).
    BaseHypothesisTest* CreateTest(Classification classification, Algorithm algorithm,
                                   Decision decision);
    FieldInfoRecord* AppendFieldInfo();

    std::vector<std::unique_ptr<BaseHypothesisTest>>& GetHypothesisTests() {
        return fHypothesisTests;
    }
    std::vector<std::unique_ptr<BaseHypothesisTest>>& GetEstimates() { return fEstimates; }
    std::vector<std::unique_ptr<BaseHypothesisTest>>& GetLillieforsTests() {
        return fLillieforsTests;
    }
    std::vector<std::unique_ptr<FieldInfoRecord>>& GetFieldInfos() { return fFieldInfos; }
    const std::vector<std::unique_ptr<BaseHypothesisTest>>& GetHypothesisTests() const {
        return fHypothesisTests;
    }
    const std::vector<std::unique_ptr<BaseHypothesisTest>>& GetEstimates() const {
        return fEstimates;
    }
    const std::vector<std::unique_ptr<BaseHypothesisTest>>& GetLillieforsTests() const {
        return fLillieforsTests;
    }
    const std::vector<std::unique_ptr<FieldInfoRecord>>& GetFieldInfos() const {
        return fFieldInfos;
    }

    // Bounded element access: null when the index is outside the list.
    BaseHypothesisTest* GetHypothesisTest(std::size_t i) const;
    BaseHypothesisTest* GetEstimate(std::size_t i) const;
    BaseHypothesisTest* GetLillieforsTest(std::size_t i) const;
    FieldInfoRecord* GetFieldInfo(std::size_t i) const;
    FieldInfoRecord* GetFieldInfo(int i) const;
    // Entry j of field record i; null for a negative j, a missing record or j
    // not below its entry count.
    const FieldValueEntry* GetFieldValue(int i, int j) const;

    // A statistic of a test by group name and value name (empty: the group's
    // first value). False when there is no such group or value; a group with
    // no values gives true and leaves `value` as it was when `valueName` is
    // empty.
    static bool GetStatisticValue(const BaseHypothesisTest* test, std::string_view groupName,
                                  std::string_view valueName, double& value);

    // The first error message whose code blocks the test's output; null for
    // none, for a null test and for the estimation tests.
    static const ConditionMessage* FirstBlockingMessage(const BaseHypothesisTest* test);
    static bool IsEstimation(Algorithm algorithm);
    static bool IsEstimation(const BaseHypothesisTest* test);
    // Message codes: (a) codes that block a test; (b) the first and (c) the
    // second group of codes that belong to one pair of a multiple comparison.
    static bool IsBlockingCode(std::int32_t code);
    static bool IsPairCodeFirstGroup(std::int32_t code);
    static bool IsPairCodeSecondGroup(std::int32_t code);
    static bool IsPairCode(std::int32_t code) {
        return IsPairCodeFirstGroup(code) || IsPairCodeSecondGroup(code);
    }

    // The catalogue: words of the result document to values, and titles.
    static Classification ClassificationOfKey(std::string_view key);
    static Algorithm AlgorithmOfKey(std::string_view key);
    static Decision DecisionOfWord(std::string_view word);
    static MessageType MessageTypeOfWord(std::string_view word);
    static std::string AlgorithmTitle(std::int32_t algorithm);
    // The document word of an algorithm value; empty outside 1-30.
    static std::string_view AlgorithmKey(std::int32_t algorithm);

    // Everything read, as a tree for the command line's model dump.
    CFDump Dump() const;

    std::int32_t fTotalFreq = 0;
    std::int32_t fTotalCount = 0;
    std::int32_t fDroppedCount = 0;
    std::int32_t fBadWeightCount = 0;
    std::int32_t fDroppedFreq = 0;
    std::int32_t fNumberOfTests = 0;
    double fSigLevel = 0.0;
    double fConfidenceLevel = 0.0;
    double fMCCILevel = 99.0;
    std::int32_t fSeed = 2000000;
    bool fNormalFromSample = false;
    bool fUniformFromSample = false;
    bool fExponentialFromSample = false;
    std::int32_t fMCSamples = 10000;
    std::int32_t fIsListwise = 0;
    double fReserved = 0.0;

private:
    VEXA_DataSource* fDataSource = nullptr;
    void* fHostContext = nullptr;
    const CFSplitDocument* fSplit = nullptr;
    std::unique_ptr<CFMetaData> fMetaData;
    std::vector<std::unique_ptr<BaseHypothesisTest>> fHypothesisTests;
    std::vector<std::unique_ptr<BaseHypothesisTest>> fEstimates;
    std::vector<std::unique_ptr<BaseHypothesisTest>> fLillieforsTests;
    std::vector<std::unique_ptr<FieldInfoRecord>> fFieldInfos;
};
