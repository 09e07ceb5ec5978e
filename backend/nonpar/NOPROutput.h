// The pivot-table output of one split: the Hypothesis Test Summary, the
// Confidence Interval Summary, a block per test (heading, statistics table,
// chart, pairwise comparisons or homogeneous subsets) and the field charts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "backend/nonpar/NOPROutputStats.h"
#include "host/bp/BpOutput.h"

class FacSTDictionary;
class VEXA_DataSource;
class VEXA_Variable;

class NOPROutput final {
public:
    using Stats = NOPROutputStats;
    using Test = NOPROutputStats::BaseHypothesisTest;
    using Lilliefors = NOPROutputStats::HTOKolmogorovSmirnov;
    using Condition = std::vector<NOPROutputStats::ConditionParameter>;
    using StatisticsRows = std::vector<NOPROutputStats::StatisticsValue>;

    // How the significance column of the summary is footnoted.
    enum FootnoteMode : int {
        kFMMonteCarlo = 0,          // every significance is a Lilliefors simulation
        kFMLillieforsCorrected = 1, // every significance is Lilliefors-corrected
        kFMAsymptotic = 2,          // every significance is asymptotic
        kFMMixed = 3,               // footnotes go on the single cells
    };

    // `heading` is the split's heading, or null for output directly under the
    // procedure. Nothing is owned.
    NOPROutput(BpProcedure* procedure, BpHeading* heading, VEXA_DataSource* dataSource,
               NOPROutputStats* stats);
    NOPROutput(const NOPROutput&) = delete;
    NOPROutput& operator=(const NOPROutput&) = delete;

    // Writes everything of the split, in output order.
    void MakeOutput();

    void MakeHypothesisSummary();
    void MakeConfidenceIntervalSummary();
    // The statistics table of one test; `lill` is its Lilliefors companion.
    void MakeTestTable(BpHeading& heading, const Test* hTest, const Lilliefors* lill);
    // The pairwise-comparisons or homogeneous-subsets table of a test that
    // carries a multiple comparison, by the comparison's kind.
    void MakeComparisons(BpHeading& heading, const Test* test, FacSTDictionary* dictionary);
    void MakePairwiseTable(BpHeading& heading, const Test* test,
                           const Stats::MultipleComparison& comparison,
                           FacSTDictionary* dictionary);
    void MakeHomogeneousSubsetsTable(BpHeading& heading, const Test* test,
                                     const Stats::MultipleComparison& comparison);

    int ComputeFootnoteMode() const;
    // The "Null Hypothesis" cell: the condition key filled with its parameters.
    void WriteNullHypothesis(BpCategory& category, const Test* test) const;
    // The "Sig." cell with its cell footnotes, and the column's footnotes.
    void WriteSignificance(BpCategory& category, const Test* test, const Lilliefors* lill,
                           int mode) const;
    BpAnnotation MessageNote(const Stats::ConditionMessage& message) const;
    // The fields of a test as a heading text, or null when it has none.
    std::unique_ptr<BpCellText> FieldHeadingText(const Test* test) const;

    // Parameter writers: each adds parts for parameter `i` of a condition.
    void AddVariables(BpComposite& text, const Condition& condition, int i, bool sublist) const;
    void AddValues(BpComposite& text, const Condition& condition, int i,
                   const VEXA_Variable* variable, bool sublist) const;
    // `notInCategories` is consumed from `cursor` on, for codes outside the
    // field's categories.
    void AddCategories(BpComposite& text, const Condition& condition, int i, int j,
                       const std::vector<std::string>& notInCategories, std::size_t& cursor,
                       bool sublist) const;

    // The standard deviation of a normal distribution (parameter 2) in the
    // format of the tested variable; date and time deviations in seconds.
    void AddStandardDeviation(BpComposite& text, const Test* test,
                              const VEXA_Variable* variable) const;

    // Indices into the model's Lilliefors tests that accompany `test`.
    std::vector<int> FindLillieforsTests(const Test* test) const;
    // The test's field indices from its condition.
    static std::vector<int> GetTestFields(const Test* test);
    // The statistics rows of a table; with `monteCarlo` only the simulated
    // significance and its interval, under "MonteCarloSig2Tailed".
    void WriteMonteCarloRows(BpGroup& parent, const StatisticsRows& rows, bool monteCarlo);

    // A test's title, refined by distribution for the one-sample
    // Kolmogorov-Smirnov test.
    static std::string TestTitle(const Test* test);
    // One row dimension per split variable when splits share one heading.
    void AddSplitDimensions(BpPivotTable& table) const;

    // Whether charts are made: off when DEBUG_MODEL_VIEWER is exactly "2".
    static bool ViewsFromEnvironment();

    BpProcedure* fProcedure;
    BpHeading fHeading;
    VEXA_DataSource* fDataSource;
    NOPROutputStats* fStats;
    double fMissingValue;
    std::int32_t fMCSamples;
    std::int32_t fSeed;
    bool fNormalFromSample;
    bool fUniformFromSample;
    bool fExponentialFromSample;
    bool fMakeViews; // from the environment; the tests may switch it

private:
    const Stats::FieldInfoRecord* FieldRecord(int fieldIndex) const;
    const VEXA_Variable* FieldVariable(int fieldIndex) const;
    const VEXA_Variable* FirstFieldVariable(const Test* test) const;
    void WriteStatisticsGroups(BpDimension& dimension, const Test* test, bool monteCarlo);
    // The host's parser-message translator: the key's text with "^N" replaced
    // by the N-th argument.
    std::string TranslateMessage(const std::string& key,
                                 const std::vector<std::string>& args) const;
    std::unique_ptr<BpCellText> SampleName(const Test* test, int sample) const;
    BpComposite TestFieldTitle(const std::string& pattern, const Test* test,
                               const Stats::MultipleComparison& comparison) const;

    std::string fSuffix;
    bool fAppendSuffix = false;
    std::optional<BpGroup> fMonteCarloGroup; // the last "MonteCarloSig2Tailed" group
};
