// The records of the related-samples tests: each test of the plan run on the
// cases valid on all of its fields, written as one Algorithm element with its
// condition, statistics, the tables its chart draws (differences histogram,
// category-by-category table, success percentages, rank counts) and its
// pairwise or stepwise comparisons.
#include "engine/doc/Builders.h"
#include "engine/doc/Messages.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "engine/stats/Numerics.h"
#include "engine/stats/RelatedCategories.h"
#include "engine/stats/RelatedKSamples.h"
#include "engine/stats/RelatedPairs.h"

namespace {

// The complete cases of `fields` as one column per field.
struct Columns {
    std::vector<std::vector<double>> fValues;
    std::vector<std::span<const double>> Spans() const { return {fValues.begin(), fValues.end()}; }
};

Columns CompleteCases(const SplitData& data, std::span<const int> fields) {
    const std::vector<std::size_t> cases = data.ValidCases(fields);
    Columns columns;
    for (int field : fields) {
        const std::span<const double> values = data.Values(field);
        std::vector<double>& column = columns.fValues.emplace_back();
        column.reserve(cases.size());
        for (std::size_t row : cases) {
            column.push_back(values[row]);
        }
    }
    return columns;
}

Param FieldParam(const SplitData& data, int field) {
    return Param(data.DocumentIndex(field));
}

Param FieldListParam(const SplitData& data, std::span<const int> fields) {
    std::vector<double> indices;
    for (int field : fields) {
        indices.push_back(data.DocumentIndex(field));
    }
    return Param(std::move(indices));
}

// The ordinal fields among `fields`, which the rank tests treat as continuous.
std::vector<int> OrdinalFields(const SplitData& data, std::span<const int> fields) {
    std::vector<int> ordinal;
    for (int field : fields) {
        if (data.GetVariable(field).fLevel == MeasureLevel::kOrdinal) {
            ordinal.push_back(data.DocumentIndex(field));
        }
    }
    return ordinal;
}

bool AnyNominal(const SplitData& data, std::span<const int> fields) {
    return std::any_of(fields.begin(), fields.end(), [&](int field) {
        return data.GetVariable(field).fLevel == MeasureLevel::kNominal;
    });
}

bool AnyContinuous(const SplitData& data, std::span<const int> fields) {
    return std::any_of(fields.begin(), fields.end(), [&](int field) {
        return data.GetVariable(field).fLevel == MeasureLevel::kContinuous;
    });
}

// The name of a category in the document's tables: its position in the
// field's category list, or the position past the list for a value that is
// no category of the field.
std::string CategoryName(const SplitData& data, int field, double value) {
    const int position = data.CategoryPosition(field, value);
    return std::to_string(position >= 0 ? static_cast<std::size_t>(position)
                                        : data.Categories(field).size());
}

// The positions of values, named as CategoryName names them.
std::vector<double> CategoryPositions(const SplitData& data, int field,
                                      std::span<const double> values) {
    std::vector<double> positions;
    for (double value : values) {
        const int position = data.CategoryPosition(field, value);
        positions.push_back(position >= 0 ? static_cast<double>(position)
                                          : static_cast<double>(data.Categories(field).size()));
    }
    return positions;
}

// The success values of a selection: the values listed (texts resolved to
// their category's value), or the first value met in the first field.
std::vector<double> SuccessValues(const SplitData& data, int field,
                                  const CategorySelection& selection,
                                  std::span<const double> firstColumn) {
    std::vector<double> values;
    if (selection.fFirst) {
        if (!firstColumn.empty()) {
            values.push_back(firstColumn.front());
        }
        return values;
    }
    for (const CommandValue& value : selection.fList) {
        if (!value.fIsText) {
            values.push_back(value.fNumber);
            continue;
        }
        for (const Category& category : data.Categories(field)) {
            if (category.fText == value.fText) {
                values.push_back(category.fValue);
            }
        }
    }
    return values;
}

// The fields of a related-samples test and what its records need.
struct FieldsRun {
    const SplitData& fData;
    std::span<const int> fFields;
    const RelatedPlan& fPlan;
    const Criteria& fCriteria;
    Document& fDoc;
    Columns fColumns;                       // the complete cases of the fields
    std::vector<int>* fOrdinalAsContinuous; // ordinal fields a test treated as continuous

    int First() const { return fFields[0]; }
    int Second() const { return fFields[1]; }
    std::span<const double> Column(std::size_t j) const { return fColumns.fValues[j]; }

    // The Algorithm of `test` with its condition: the two fields of a
    // two-field test, the list of fields of a k-field test.
    Algorithm Add(Test test, Decision decision, std::string_view key = {}) const {
        Algorithm algorithm = fDoc.AddAlgorithm(test, decision);
        const std::string_view conditionKey = key.empty() ? NamesOf(test).fKey : key;
        // Rank tests on ordinal fields treat them as continuous.
        const bool ranks = test != Test::kMcNemar && test != Test::kCochran &&
                           test != Test::kMarginalHomogeneity && test != Test::kPairsHodgesLehmann;
        const std::vector<int> ordinal = ranks ? OrdinalFields(fData, fFields) : std::vector<int>();
        fOrdinalAsContinuous->insert(fOrdinalAsContinuous->end(), ordinal.begin(), ordinal.end());
        if (fFields.size() == 2 && IsTwoField(test)) {
            algorithm.Condition(conditionKey,
                                {FieldParam(fData, First()), FieldParam(fData, Second())},
                                std::nullopt, ordinal);
        } else {
            algorithm.Condition(conditionKey, {FieldListParam(fData, fFields)}, std::nullopt,
                                ordinal);
        }
        return algorithm;
    }
    Algorithm Add(Test test, double sig, std::string_view key = {}) const {
        return Add(test, Decide(sig, fCriteria.fAlpha), key);
    }

    // When a test of these fields with `outcome` cannot be computed, writes
    // its record with the message that says why and returns true. A test that
    // orders the values (`ordered`) cannot be computed on a nominal field,
    // whose codes have no order.
    bool Unable(Test test, Outcome outcome, bool ordered, std::string_view key = {}) const {
        int code = MessageCode(outcome);
        if (fFields.size() == 2 && First() == Second()) {
            code = message::kCannotCompute;
        } else if (ordered && AnyNominal(fData, fFields)) {
            code = message::kNominal;
        }
        if (code == 0) {
            return false;
        }
        Add(test, Decision::kUnableToCompute, key).Unable(code);
        return true;
    }

    static bool IsTwoField(Test test) {
        return test != Test::kCochran && test != Test::kFriedman && test != Test::kKendall;
    }
};

void WriteDifferences(Algorithm& algorithm, std::span<const double> first,
                      std::span<const double> second) {
    const std::vector<double> differences = PairedDifferences(first, second);
    const DifferenceCounts counts = CountDifferenceSigns(differences);
    StructuredTable table = algorithm.Table("ContinuousDistribution");
    table.Attribute("NegativeDifferences", static_cast<double>(counts.fNegative));
    table.Attribute("Ties", static_cast<double>(counts.fTies));
    table.Attribute("PositiveDifferences", static_cast<double>(counts.fPositive));
    // The ties are counted above and drawn in no bin, so that zero is a bin
    // edge and no bin mixes positive and negative differences.
    std::vector<double> nonZero;
    std::copy_if(differences.begin(), differences.end(), std::back_inserter(nonZero),
                 [](double d) { return d != 0; });
    WriteHistogram(table, BinValues(nonZero, HistogramBinWidth(nonZero)));
}

// The sign test and the Wilcoxon signed-rank test write the same record: the
// statistic with its standard error and standardized value, the asymptotic
// significance, the exact one where it is reported, and the histogram of the
// differences. `Result` is SignTestResult or WilcoxonResult.
template <typename Result>
void WritePairedRankTest(const FieldsRun& run, Test test, const Result& result,
                         bool exactReported) {
    if (run.Unable(test, result.fOutcome, true)) {
        return;
    }
    Algorithm algorithm = run.Add(test, exactReported ? result.fExactSig : result.fAsymptoticSig);
    StatisticsResult stats = algorithm.Statistics();
    stats.Value("TotalN", static_cast<double>(result.fTotalN))
        .Value("TestStatistic", result.fStatistic)
        .Value("StandardError", result.fStandardError)
        .Value("StandardizedTestStatistic", result.fStandardized)
        .Value("AsymptoticSig2Tailed", result.fAsymptoticSig);
    if (exactReported) {
        stats.Value("ExactSig2Tailed", result.fExactSig);
    }
    WriteDifferences(algorithm, run.Column(0), run.Column(1));
}

void WriteSign(const FieldsRun& run) {
    const SignTestResult result = SignTest(run.Column(0), run.Column(1));
    WritePairedRankTest(run, Test::kSign, result, result.fExactReported);
}

void WriteWilcoxon(const FieldsRun& run) {
    const WilcoxonResult result = WilcoxonSignedRank(run.Column(0), run.Column(1));
    WritePairedRankTest(run, Test::kPairedWilcoxon, result, result.fHasExact);
}

void WriteHodgesLehmann(const FieldsRun& run) {
    const PairedHodgesLehmannResult result =
        HodgesLehmannPaired(run.Column(0), run.Column(1), run.fCriteria.fCILevel / 100.0);
    if (run.Unable(Test::kPairsHodgesLehmann, result.fOutcome, true)) {
        return;
    }
    Algorithm algorithm = run.Add(Test::kPairsHodgesLehmann, Decision::kNone);
    if (!result.fIntervalReachable) {
        const Message message{message::kIntervalNotReached, MessageType::kWarning, {}, {}};
        algorithm.Messages(std::span<const Message>(&message, 1));
    }
    algorithm.Statistics()
        .Value("Estimate", result.fEstimate)
        .Group("Asymptotic", {{"LowerBound", result.fLower}, {"UpperBound", result.fUpper}});
}

void WriteCategoryTable(Algorithm& algorithm, const SplitData& data, int a, int b,
                        const CategoryCrosstab& table,
                        const std::vector<std::vector<double>>& lists = {}) {
    StructuredTable comparison = algorithm.Table("CategoryFieldsComparison");
    comparison.Attribute("RowNames", data.DocumentIndex(a));
    comparison.Attribute("ColumnNames", data.DocumentIndex(b));
    const char* listNames[] = {"RowSuccessList", "RowFailList", "ColumnSuccessList",
                               "ColumnFailList"};
    for (std::size_t i = 0; i < lists.size() && i < 4; ++i) {
        comparison.Attribute(listNames[i], CategoryPositions(data, i < 2 ? a : b, lists[i]));
    }
    std::vector<std::string> rowNames;
    std::vector<std::string> columnNames;
    for (double category : table.fCategories) {
        rowNames.push_back(CategoryName(data, a, category));
        columnNames.push_back(CategoryName(data, b, category));
    }
    SimpleTable crosstab = comparison.Simple("Crosstab", rowNames, columnNames);
    const std::size_t k = table.fCategories.size();
    for (std::size_t r = 0; r < k; ++r) {
        crosstab.Row(std::span<const double>(table.fCounts.data() + r * k, k));
    }
}

void WriteMcNemar(const FieldsRun& run) {
    const McNemarOptions& options = *run.fPlan.fMcNemar;
    const std::vector<double> success =
        SuccessValues(run.fData, run.First(), options.fSuccess, run.Column(0));
    const McNemarResult result = McNemar(run.Column(0), run.Column(1), success);
    const std::string_view key =
        options.fSuccess.fFirst ? std::string_view() : "CategoryListsAreSpecified_R_McNemar_2";
    if (run.Unable(Test::kMcNemar, result.fOutcome, false, key)) {
        return;
    }
    Algorithm algorithm = run.Add(
        Test::kMcNemar, result.fExactReported ? result.fExactSig : result.fAsymptoticSig, key);
    StatisticsResult stats = algorithm.Statistics();
    stats.Value("TotalN", static_cast<double>(result.fTotalN))
        .Value("TestStatistic", result.fStatistic)
        .Value("DegreeOfFreedom", result.fDegreesOfFreedom)
        .Value("AsymptoticSig2Tailed", result.fAsymptoticSig);
    if (result.fExactReported) {
        stats.Value("ExactSig2Tailed", result.fExactSig);
    }
    // The two-by-two table: failure then success, each named by one of its
    // values (the first failure value met).
    double failure = kSysMis;
    for (const auto& column : run.fColumns.fValues) {
        for (double value : column) {
            if (failure == kSysMis &&
                std::find(success.begin(), success.end(), value) == success.end()) {
                failure = value;
            }
        }
    }
    CategoryCrosstab table;
    table.fCategories = {failure, success.empty() ? kSysMis : success.front()};
    table.fCounts = {result.fCounts[0][0], result.fCounts[0][1], result.fCounts[1][0],
                     result.fCounts[1][1]};
    const std::vector<double> failures{failure};
    WriteCategoryTable(algorithm, run.fData, run.First(), run.Second(), table,
                       {success, failures, success, failures});
}

void WriteMarginalHomogeneity(const FieldsRun& run) {
    const MarginalHomogeneityResult result = MarginalHomogeneity(run.Column(0), run.Column(1));
    if (run.Unable(Test::kMarginalHomogeneity, result.fOutcome, true)) {
        return;
    }
    Algorithm algorithm = run.Add(Test::kMarginalHomogeneity, result.fAsymptoticSig);
    algorithm.Statistics()
        .Value("TotalN", static_cast<double>(result.fTotalN))
        .Value("TestStatistic", result.fStatistic)
        .Value("StandardError", result.fStandardError)
        .Value("StandardizedTestStatistic", result.fStandardized)
        .Value("AsymptoticSig2Tailed", result.fAsymptoticSig);
    WriteCategoryTable(algorithm, run.fData, run.First(), run.Second(), result.fCrosstab);
}

// ---------------------------------------------------------------------------
// k fields

// Pairwise rows name their fields by their index in the document.
std::vector<ComparisonResult> DocumentRows(const SplitData& data, std::span<const int> fields,
                                           std::vector<ComparisonResult> rows) {
    for (ComparisonResult& row : rows) {
        row.fFirst = static_cast<std::size_t>(data.DocumentIndex(fields[row.fFirst]));
        row.fSecond = static_cast<std::size_t>(data.DocumentIndex(fields[row.fSecond]));
    }
    return rows;
}

// The pairwise or stepwise table of a k-sample test over `values` (one per
// field), when asked for and when there are more than two fields.
void WriteComparisons(Algorithm& algorithm, const SplitData& data, std::span<const int> fields,
                      Compare compare, std::string_view valueName,
                      const std::vector<double>& values,
                      const std::vector<ComparisonResult>& pairwise,
                      const RelatedStepwise& stepwise) {
    if (compare == Compare::kNone || fields.size() < 3) {
        return;
    }
    const bool isPairwise = compare == Compare::kPairwise;
    std::vector<std::size_t> order = stepwise.fOrder;
    if (isPairwise) {
        order.resize(fields.size());
        for (std::size_t j = 0; j < order.size(); ++j) {
            order[j] = j;
        }
        std::stable_sort(order.begin(), order.end(),
                         [&](std::size_t x, std::size_t y) { return values[x] < values[y]; });
    }
    std::vector<double> samples;
    std::vector<double> shown;
    for (std::size_t j : order) {
        samples.push_back(data.DocumentIndex(fields[j]));
        shown.push_back(values[j]);
    }
    const std::vector<ComparisonResult> rows =
        isPairwise ? DocumentRows(data, fields, pairwise) : stepwise.fRows;
    WriteComparison(algorithm, isPairwise ? ComparisonKind::kPairwise : ComparisonKind::kStepwise,
                    valueName, samples, shown, rows);
}

void WriteCochran(const FieldsRun& run) {
    const CochranOptions& options = *run.fPlan.fCochran;
    const std::vector<double> success =
        SuccessValues(run.fData, run.First(), options.fSuccess,
                      run.fColumns.fValues.empty() ? std::span<const double>() : run.Column(0));
    const CochranResult result = CochranQ(run.fColumns.Spans(), success);
    const std::string_view key =
        options.fSuccess.fFirst ? std::string_view() : "CategoryListsAreSpecified_R_CochransQ_1";
    if (run.Unable(Test::kCochran, result.fOutcome, false, key)) {
        return;
    }
    Algorithm algorithm = run.Add(Test::kCochran, result.fAsymptoticSig, key);
    algorithm.Statistics()
        .Value("TotalN", static_cast<double>(result.fTotalN))
        .Value("TestStatistic", result.fStatistic)
        .Value("DegreeOfFreedom", result.fDegreesOfFreedom)
        .Value("AsymptoticSig2Tailed", result.fAsymptoticSig);
    // Percent of successes and failures per field.
    std::vector<std::string> rowNames;
    for (int field : run.fFields) {
        rowNames.push_back(std::to_string(run.fData.DocumentIndex(field)));
    }
    const std::string columnNames[] = {"Success", "Failure"};
    SimpleTable content =
        algorithm.Table("TwoClassComparison").Simple("Content", rowNames, columnNames);
    const double n = static_cast<double>(result.fTotalN);
    for (std::size_t j = 0; j < run.fFields.size(); ++j) {
        const double successes = j < result.fSuccesses.size() ? result.fSuccesses[j] : 0.0;
        content.Row({n > 0 ? 100.0 * successes / n : kSysMis,
                     n > 0 ? 100.0 * (n - successes) / n : kSysMis});
    }
    const RelatedStepwise stepwise =
        options.fCompare == Compare::kStepwise
            ? CochranStepwise(run.fColumns.Spans(), success, result, run.fCriteria.fAlpha)
            : RelatedStepwise{};
    WriteComparisons(algorithm, run.fData, run.fFields, options.fCompare, "Successes",
                     result.fSuccesses, CochranPairwise(result), stepwise);
}

// Friedman's test, or Kendall's W of the same ranks.
void WriteFriedman(const FieldsRun& run, Test test, const FriedmanOptions& options) {
    const FriedmanResult result = Friedman(run.fColumns.Spans());
    if (run.Unable(test, result.fOutcome, true)) {
        return;
    }
    Algorithm algorithm = run.Add(test, result.fAsymptoticSig);
    StatisticsResult stats = algorithm.Statistics();
    stats.Value("TotalN", static_cast<double>(result.fTotalN));
    if (test == Test::kKendall) {
        stats.Value("KendallsW", result.fKendallW);
    }
    stats.Value("TestStatistic", result.fStatistic)
        .Value("DegreeOfFreedom", result.fDegreesOfFreedom)
        .Value("AsymptoticSig2Tailed", result.fAsymptoticSig);
    for (std::size_t j = 0; j < run.fFields.size() && j < result.fRankCounts.size(); ++j) {
        StructuredTable info = algorithm.Table("VariableInformation");
        info.Attribute("GroupIndex", run.fData.DocumentIndex(run.fFields[j]));
        info.Attribute("MeanOfRank", result.fMeanRanks[j]);
        SimpleTable counts = info.Simple("RankCounts", {}, {"Rank", "Count"});
        for (const RankCount& count : result.fRankCounts[j]) {
            counts.Row({count.fRank, count.fCount});
        }
    }
    const RelatedStepwise stepwise =
        options.fCompare == Compare::kStepwise
            ? FriedmanStepwise(run.fColumns.Spans(), result, run.fCriteria.fAlpha)
            : RelatedStepwise{};
    WriteComparisons(algorithm, run.fData, run.fFields, options.fCompare, "MeanRank",
                     result.fMeanRanks, FriedmanPairwise(result), stepwise);
}

// The tests of the family in the order of their records, with whether the
// plan asks for each and its writer; the two-field tests compare the first
// field with the second and run only on two fields.
struct RelatedTest {
    Test fTest;
    bool fTwoFields;
    bool (*fAsked)(const RelatedPlan& plan);
    void (*fWrite)(const FieldsRun& run);
};

constexpr RelatedTest kRelatedTests[] = {
    {Test::kSign, true, [](const RelatedPlan& p) { return p.fSign; }, WriteSign},
    {Test::kPairedWilcoxon, true, [](const RelatedPlan& p) { return p.fWilcoxon; }, WriteWilcoxon},
    {Test::kMcNemar, true, [](const RelatedPlan& p) { return p.fMcNemar.has_value(); },
     WriteMcNemar},
    {Test::kMarginalHomogeneity, true, [](const RelatedPlan& p) { return p.fMarginalHomogeneity; },
     WriteMarginalHomogeneity},
    {Test::kCochran, false, [](const RelatedPlan& p) { return p.fCochran.has_value(); },
     WriteCochran},
    {Test::kFriedman, false, [](const RelatedPlan& p) { return p.fFriedman.has_value(); },
     [](const FieldsRun& run) { WriteFriedman(run, Test::kFriedman, *run.fPlan.fFriedman); }},
    {Test::kKendall, false, [](const RelatedPlan& p) { return p.fKendall.has_value(); },
     [](const FieldsRun& run) { WriteFriedman(run, Test::kKendall, *run.fPlan.fKendall); }},
    {Test::kPairsHodgesLehmann, true, [](const RelatedPlan& p) { return p.fHodgesLehmann; },
     WriteHodgesLehmann},
};

} // namespace

std::vector<int> WriteRelatedTests(const SplitData& data, const RelatedPlan& plan,
                                   const Criteria& criteria, Document& doc) {
    std::vector<int> ordinalAsContinuous;
    const std::vector<int>& fields = plan.fFields;
    if (fields.size() < 2) {
        return ordinalAsContinuous;
    }
    RelatedPlan chosen = plan;
    if (plan.fChooseTests) {
        // Nominal fields: McNemar (two) or Cochran's Q; ordinal fields only:
        // marginal homogeneity (two) or Friedman; otherwise Wilcoxon (two)
        // or Friedman.
        if (AnyNominal(data, fields)) {
            if (fields.size() == 2) {
                chosen.fMcNemar = McNemarOptions{};
            } else {
                chosen.fCochran = CochranOptions{};
            }
        } else if (!AnyContinuous(data, fields) && fields.size() == 2) {
            chosen.fMarginalHomogeneity = true;
        } else if (fields.size() == 2) {
            chosen.fWilcoxon = true;
        } else {
            chosen.fFriedman = FriedmanOptions{};
        }
    }
    for (const RelatedTest& test : kRelatedTests) {
        if (!test.fAsked(chosen) || (test.fTwoFields && fields.size() != 2)) {
            continue;
        }
        const std::span<const int> tested =
            test.fTwoFields ? std::span<const int>(fields).first(2) : std::span<const int>(fields);
        test.fWrite({data, tested, chosen, criteria, doc, CompleteCases(data, tested),
                     &ordinalAsContinuous});
    }
    return ordinalAsContinuous;
}
