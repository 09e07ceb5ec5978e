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

// Why a test of `fields` with the outcome `outcome` cannot be computed: the
// code of its message, 0 when it can. A test that orders the values (`ordered`)
// cannot be computed on a nominal field, whose codes have no order.
int Blocking(const SplitData& data, std::span<const int> fields, bool ordered, Outcome outcome) {
    if (fields.size() == 2 && fields[0] == fields[1]) {
        return message::kCannotCompute;
    }
    if (ordered && AnyNominal(data, fields)) {
        return message::kNominal;
    }
    return MessageCode(outcome);
}

// Marks an Algorithm as not computable, with the message `code`.
void CannotCompute(Algorithm& algorithm, int code) {
    algorithm.SetDecision(Decision::kUnableToCompute);
    const Message message{code, MessageType::kError, {}, {}};
    algorithm.Messages(std::span<const Message>(&message, 1));
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

// ---------------------------------------------------------------------------
// Two fields

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
void WritePairedRankTest(const SplitData& data, int a, int b, const Criteria& criteria,
                         Document& doc, const char* name, const char* conditionKey,
                         const Columns& columns, const Result& result, bool exactReported) {
    const int pair[] = {a, b};
    const double sig = exactReported ? result.fExactSig : result.fAsymptoticSig;
    Algorithm algorithm =
        doc.AddAlgorithm(name, Classification::kRelated, Decide(sig, criteria.fAlpha));
    const std::vector<int> ordinal = OrdinalFields(data, pair);
    algorithm.Condition(conditionKey, {FieldParam(data, a), FieldParam(data, b)}, std::nullopt,
                        ordinal);
    const int blocking = Blocking(data, pair, true, result.fOutcome);
    if (blocking != 0) {
        CannotCompute(algorithm, blocking);
    }
    StatisticsResult stats = algorithm.Statistics();
    stats.Value("TotalN", static_cast<double>(result.fTotalN));
    if (blocking == 0) {
        stats.Value("TestStatistic", result.fStatistic)
            .Value("StandardError", result.fStandardError)
            .Value("StandardizedTestStatistic", result.fStandardized)
            .Value("AsymptoticSig2Tailed", result.fAsymptoticSig);
        if (exactReported) {
            stats.Value("ExactSig2Tailed", result.fExactSig);
        }
    }
    WriteDifferences(algorithm, columns.fValues[0], columns.fValues[1]);
}

void WriteSign(const SplitData& data, int a, int b, const Criteria& criteria, Document& doc) {
    const int pair[] = {a, b};
    const Columns columns = CompleteCases(data, pair);
    const SignTestResult result = SignTest(columns.fValues[0], columns.fValues[1]);
    WritePairedRankTest(data, a, b, criteria, doc, "RSign", "R_Sign_2", columns, result,
                        result.fExactReported);
}

void WriteWilcoxon(const SplitData& data, int a, int b, const Criteria& criteria, Document& doc) {
    const int pair[] = {a, b};
    const Columns columns = CompleteCases(data, pair);
    const WilcoxonResult result = WilcoxonSignedRank(columns.fValues[0], columns.fValues[1]);
    WritePairedRankTest(data, a, b, criteria, doc, "RWilcoxonSignedRanks",
                        "R_WilcoxonSignedRanks_2", columns, result, result.fHasExact);
}

void WriteHodgesLehmann(const SplitData& data, int a, int b, const Criteria& criteria,
                        Document& doc) {
    const int pair[] = {a, b};
    const Columns columns = CompleteCases(data, pair);
    const PairedHodgesLehmannResult result =
        HodgesLehmannPaired(columns.fValues[0], columns.fValues[1], criteria.fCILevel / 100.0);
    Algorithm algorithm =
        doc.AddAlgorithm("RHodgesLehmannEstimatePairs", Classification::kRelated, Decision::kNone);
    algorithm.Condition("R_HodgesLehman_2", {FieldParam(data, a), FieldParam(data, b)});
    const int blocking = Blocking(data, pair, true, result.fOutcome);
    const bool computed = blocking == 0;
    if (blocking != 0 || !result.fIntervalReachable) {
        const Message message{
            computed ? message::kIntervalNotReached : blocking, MessageType::kWarning, {}, {}};
        algorithm.Messages(std::span<const Message>(&message, 1));
    }
    algorithm.Statistics()
        .Value("Estimate", computed ? result.fEstimate : kSysMis)
        .Group("Asymptotic", {{"LowerBound", computed ? result.fLower : kSysMis},
                              {"UpperBound", computed ? result.fUpper : kSysMis}});
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

void WriteMcNemar(const SplitData& data, int a, int b, const McNemarOptions& options,
                  const Criteria& criteria, Document& doc) {
    const int pair[] = {a, b};
    const Columns columns = CompleteCases(data, pair);
    const std::vector<double> success =
        SuccessValues(data, a, options.fSuccess, columns.fValues[0]);
    const McNemarResult result = McNemar(columns.fValues[0], columns.fValues[1], success);
    const double sig = result.fExactReported ? result.fExactSig : result.fAsymptoticSig;
    Algorithm algorithm =
        doc.AddAlgorithm("RMcNemar", Classification::kRelated, Decide(sig, criteria.fAlpha));
    algorithm.Condition(options.fSuccess.fFirst ? "AllDistinctValuesUsed_R_McNemar_2"
                                                : "CategoryListsAreSpecified_R_McNemar_2",
                        {FieldParam(data, a), FieldParam(data, b)});
    const int blocking = Blocking(data, pair, false, result.fOutcome);
    if (blocking != 0) {
        CannotCompute(algorithm, blocking);
    }
    StatisticsResult stats = algorithm.Statistics();
    stats.Value("TotalN", static_cast<double>(result.fTotalN));
    if (blocking == 0) {
        stats.Value("TestStatistic", result.fStatistic)
            .Value("DegreeOfFreedom", result.fDegreesOfFreedom)
            .Value("AsymptoticSig2Tailed", result.fAsymptoticSig);
        if (result.fExactReported) {
            stats.Value("ExactSig2Tailed", result.fExactSig);
        }
    }
    // The two-by-two table: failure then success, each named by one of its
    // values (the first failure value met).
    double failure = kSysMis;
    for (const auto& column : columns.fValues) {
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
    WriteCategoryTable(algorithm, data, a, b, table, {success, failures, success, failures});
}

void WriteMarginalHomogeneity(const SplitData& data, int a, int b, const Criteria& criteria,
                              Document& doc) {
    const int pair[] = {a, b};
    const Columns columns = CompleteCases(data, pair);
    const MarginalHomogeneityResult result =
        MarginalHomogeneity(columns.fValues[0], columns.fValues[1]);
    Algorithm algorithm = doc.AddAlgorithm("RMarginalHomogeneity", Classification::kRelated,
                                           Decide(result.fAsymptoticSig, criteria.fAlpha));
    algorithm.Condition("AllDistinctValuesUsed_R_MarginalHomogeneity_2",
                        {FieldParam(data, a), FieldParam(data, b)});
    const int blocking = Blocking(data, pair, true, result.fOutcome);
    if (blocking != 0) {
        CannotCompute(algorithm, blocking);
    }
    StatisticsResult stats = algorithm.Statistics();
    stats.Value("TotalN", static_cast<double>(result.fTotalN));
    if (blocking == 0) {
        stats.Value("TestStatistic", result.fStatistic)
            .Value("StandardError", result.fStandardError)
            .Value("StandardizedTestStatistic", result.fStandardized)
            .Value("AsymptoticSig2Tailed", result.fAsymptoticSig);
    }
    WriteCategoryTable(algorithm, data, a, b,
                       result.fCrosstab.fCategories.empty()
                           ? Crosstab(columns.fValues[0], columns.fValues[1])
                           : result.fCrosstab);
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

void WriteCochran(const SplitData& data, std::span<const int> fields, const CochranOptions& options,
                  const Criteria& criteria, Document& doc) {
    const Columns columns = CompleteCases(data, fields);
    const std::vector<double> success = SuccessValues(
        data, fields.front(), options.fSuccess,
        columns.fValues.empty() ? std::span<const double>() : columns.fValues.front());
    const CochranResult result = CochranQ(columns.Spans(), success);
    Algorithm algorithm = doc.AddAlgorithm("RCochransQ", Classification::kRelated,
                                           Decide(result.fAsymptoticSig, criteria.fAlpha));
    algorithm.Condition(options.fSuccess.fFirst ? "DefaultAllDistinctValuesUsed_R_CochransQ_1"
                                                : "CategoryListsAreSpecified_R_CochransQ_1",
                        {FieldListParam(data, fields)});
    const int blocking = Blocking(data, fields, false, result.fOutcome);
    if (blocking != 0) {
        CannotCompute(algorithm, blocking);
    }
    StatisticsResult stats = algorithm.Statistics();
    stats.Value("TotalN", static_cast<double>(result.fTotalN));
    if (blocking == 0) {
        stats.Value("TestStatistic", result.fStatistic)
            .Value("DegreeOfFreedom", result.fDegreesOfFreedom)
            .Value("AsymptoticSig2Tailed", result.fAsymptoticSig);
    }
    // Percent of successes and failures per field.
    std::vector<std::string> rowNames;
    for (int field : fields) {
        rowNames.push_back(std::to_string(data.DocumentIndex(field)));
    }
    const std::string columnNames[] = {"Success", "Failure"};
    SimpleTable content =
        algorithm.Table("TwoClassComparison").Simple("Content", rowNames, columnNames);
    const double n = static_cast<double>(result.fTotalN);
    for (std::size_t j = 0; j < fields.size(); ++j) {
        const double successes = j < result.fSuccesses.size() ? result.fSuccesses[j] : 0.0;
        content.Row({n > 0 ? 100.0 * successes / n : kSysMis,
                     n > 0 ? 100.0 * (n - successes) / n : kSysMis});
    }
    if (blocking == 0) {
        const RelatedStepwise stepwise =
            options.fCompare == Compare::kStepwise
                ? CochranStepwise(columns.Spans(), success, result, criteria.fAlpha)
                : RelatedStepwise{};
        WriteComparisons(algorithm, data, fields, options.fCompare, "Successes", result.fSuccesses,
                         CochranPairwise(result), stepwise);
    }
}

void WriteFriedman(const SplitData& data, std::span<const int> fields,
                   const FriedmanOptions& options, bool kendall, const Criteria& criteria,
                   Document& doc) {
    const Columns columns = CompleteCases(data, fields);
    const FriedmanResult result = Friedman(columns.Spans());
    Algorithm algorithm =
        doc.AddAlgorithm(kendall ? "RKendallsCoefficient" : "RFriedmansTwoWayByRanks",
                         Classification::kRelated, Decide(result.fAsymptoticSig, criteria.fAlpha));
    const std::vector<int> ordinal = OrdinalFields(data, fields);
    algorithm.Condition(kendall ? "R_KendallsCoefficient_1" : "R_FriedmansTwoWayByRanks_1",
                        {FieldListParam(data, fields)}, std::nullopt, ordinal);
    const int blocking = Blocking(data, fields, true, result.fOutcome);
    if (blocking != 0) {
        CannotCompute(algorithm, blocking);
    }
    StatisticsResult stats = algorithm.Statistics();
    stats.Value("TotalN", static_cast<double>(result.fTotalN));
    if (blocking == 0) {
        if (kendall) {
            stats.Value("KendallsW", result.fKendallW);
        }
        stats.Value("TestStatistic", result.fStatistic)
            .Value("DegreeOfFreedom", result.fDegreesOfFreedom)
            .Value("AsymptoticSig2Tailed", result.fAsymptoticSig);
    }
    for (std::size_t j = 0; j < fields.size() && j < result.fRankCounts.size(); ++j) {
        StructuredTable info = algorithm.Table("VariableInformation");
        info.Attribute("GroupIndex", data.DocumentIndex(fields[j]));
        info.Attribute("MeanOfRank", result.fMeanRanks[j]);
        SimpleTable counts = info.Simple("RankCounts", {}, {"Rank", "Count"});
        for (const RankCount& count : result.fRankCounts[j]) {
            counts.Row({count.fRank, count.fCount});
        }
    }
    if (blocking == 0) {
        const RelatedStepwise stepwise =
            options.fCompare == Compare::kStepwise
                ? FriedmanStepwise(columns.Spans(), result, criteria.fAlpha)
                : RelatedStepwise{};
        WriteComparisons(algorithm, data, fields, options.fCompare, "MeanRank", result.fMeanRanks,
                         FriedmanPairwise(result), stepwise);
    }
}

} // namespace

void WriteRelatedTests(const SplitData& data, const RelatedPlan& plan, const Criteria& criteria,
                       Document& doc) {
    const std::vector<int>& fields = plan.fFields;
    if (fields.size() < 2) {
        return;
    }
    RelatedPlan run = plan;
    if (plan.fChooseTests) {
        // Nominal fields: McNemar (two) or Cochran's Q; ordinal fields only:
        // marginal homogeneity (two) or Friedman; otherwise Wilcoxon (two)
        // or Friedman.
        if (AnyNominal(data, fields)) {
            if (fields.size() == 2) {
                run.fMcNemar = McNemarOptions{};
            } else {
                run.fCochran = CochranOptions{};
            }
        } else if (!AnyContinuous(data, fields) && fields.size() == 2) {
            run.fMarginalHomogeneity = true;
        } else if (fields.size() == 2) {
            run.fWilcoxon = true;
        } else {
            run.fFriedman = FriedmanOptions{};
        }
    }
    // Two-field tests: the first field against the second.
    const int a = fields[0];
    const int b = fields[1];
    const bool twoFields = fields.size() == 2;
    if (run.fSign && twoFields) {
        WriteSign(data, a, b, criteria, doc);
    }
    if (run.fWilcoxon && twoFields) {
        WriteWilcoxon(data, a, b, criteria, doc);
    }
    if (run.fMcNemar && twoFields) {
        WriteMcNemar(data, a, b, *run.fMcNemar, criteria, doc);
    }
    if (run.fMarginalHomogeneity && twoFields) {
        WriteMarginalHomogeneity(data, a, b, criteria, doc);
    }
    if (run.fCochran) {
        WriteCochran(data, fields, *run.fCochran, criteria, doc);
    }
    if (run.fFriedman) {
        WriteFriedman(data, fields, *run.fFriedman, false, criteria, doc);
    }
    if (run.fKendall) {
        WriteFriedman(data, fields, *run.fKendall, true, criteria, doc);
    }
    if (run.fHodgesLehmann && twoFields) {
        WriteHodgesLehmann(data, a, b, criteria, doc);
    }
}
