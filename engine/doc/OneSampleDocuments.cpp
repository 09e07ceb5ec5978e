// The records of the one-sample tests: chi-square, binomial with the
// success-rate intervals, runs, Wilcoxon signed rank, and Kolmogorov-Smirnov
// with its Lilliefors companions. The arithmetic is in engine/stats; this file
// chooses the cases, the categories and the significance to report, and
// writes what the module reads.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "engine/Progress.h"
#include "engine/doc/Builders.h"
#include "engine/doc/Messages.h"
#include "engine/stats/OneSample.h"
#include "engine/stats/OneSampleBinomial.h"
#include "engine/stats/OneSampleChiSquare.h"
#include "engine/stats/OneSampleKolmogorov.h"
#include "engine/stats/OneSampleRuns.h"
#include "engine/stats/OneSampleWilcoxon.h"

namespace {
// A number the statistics left out (NaN) is written as missing.
double Num(double value) {
    return std::isfinite(value) ? value : kSysMis;
}

double Count(std::size_t value) {
    return static_cast<double>(value);
}

bool IsCategorical(const SplitData& data, int field) {
    return data.GetVariable(field).IsCategorical() || data.GetVariable(field).IsString();
}

// The value a command value stands for in a field (a string's category
// position); NaN for a text that is no category of the field.
double ValueOf(const SplitData& data, int field, const CommandValue& value) {
    if (!value.fIsText) {
        return value.fNumber;
    }
    for (const Category& category : data.Categories(field)) {
        if (category.fText == value.fText) {
            return category.fValue;
        }
    }
    return std::nan("");
}

// Category codes of values for a condition: positions in the field's
// categories; a value that is no category gets a code past the last
// position and its text joins `outside`, in the order the module reads them.
std::vector<double> Codes(const SplitData& data, int field, std::span<const double> values,
                          std::span<const CommandValue> written,
                          std::vector<std::string>& outside) {
    std::vector<double> codes;
    const double past = static_cast<double>(data.Categories(field).size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const int at = std::isnan(values[i]) ? -1 : data.CategoryPosition(field, values[i]);
        if (at >= 0) {
            codes.push_back(at);
            continue;
        }
        codes.push_back(past + static_cast<double>(outside.size()));
        outside.push_back(i < written.size() && written[i].fIsText ? written[i].fText
                                                                   : FormatNumber(values[i]));
    }
    return codes;
}

// The distinct values in case order of first appearance.
std::vector<double> InOrderMet(std::span<const double> values) {
    std::vector<double> met;
    for (double value : values) {
        if (std::find(met.begin(), met.end(), value) == met.end()) {
            met.push_back(value);
        }
    }
    return met;
}

// The command values of the field's type (numbers for a numeric field, texts
// for a string field), kept in `store`.
std::span<const CommandValue> OfType(const SplitData& data, int field,
                                     const std::vector<CommandValue>& values,
                                     std::vector<CommandValue>& store) {
    store.clear();
    for (const CommandValue& value : values) {
        if (value.fIsText == data.GetVariable(field).IsString()) {
            store.push_back(value);
        }
    }
    return store;
}

std::vector<double> Sorted(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

class OneSampleWriter final {
public:
    OneSampleWriter(const SplitData& data, const Criteria& criteria, Document& doc)
        : fData(data), fCriteria(criteria), fDoc(doc) {}

    void ChiSquare(int field, const ChiSquareOptions& options);
    void Binomial(int field, const BinomialOptions& options);
    void Runs(int field, const RunsOptions& options);
    void Wilcoxon(int field, const WilcoxonOneSampleOptions& options);
    void Kolmogorov(int field, const KolmogorovSmirnovOptions& options);

private:
    void KolmogorovOne(int field, KsDistribution distribution, const KSDistribution& choice,
                       const KolmogorovSmirnovOptions& options);

    const SplitData& fData;
    const Criteria& fCriteria;
    Document& fDoc;
    std::vector<CommandValue> fWritten; // the command values of the field in hand

public:
    std::vector<int> fOrdinalAsContinuous; // ordinal fields a test treated as continuous
};

void OneSampleWriter::ChiSquare(int field, const ChiSquareOptions& options) {
    const std::vector<double> values = fData.ValidValues(field);
    // Categories of the field's type, each with its frequency.
    std::vector<double> categories;
    std::vector<double> frequencies = options.fFrequencies;
    std::vector<CommandValue> written;
    const auto implied = options.fFieldCategories.find(field);
    const std::vector<CommandValue>& listed =
        options.fCategories.empty() && implied != options.fFieldCategories.end()
            ? implied->second
            : options.fCategories;
    if (!listed.empty()) {
        frequencies.clear();
        for (std::size_t i = 0; i < listed.size(); ++i) {
            const CommandValue& value = listed[i];
            if (value.fIsText == fData.GetVariable(field).IsString()) {
                written.push_back(value);
                categories.push_back(ValueOf(fData, field, value));
                frequencies.push_back(i < options.fFrequencies.size() ? options.fFrequencies[i]
                                                                      : 1.0);
            }
        }
    }
    // A text that is no category stands for a value no case has: a string
    // field's cases hold category positions, 0 and up, so each such text
    // gets a negative value of its own.
    for (std::size_t i = 0; i < categories.size(); ++i) {
        if (std::isnan(categories[i])) {
            categories[i] = -1.0 - static_cast<double>(i);
        }
    }
    const OneSampleChiSquareResult result = ChiSquareGoodnessOfFit(values, categories, frequencies);
    const int index = fData.DocumentIndex(field);
    Algorithm test =
        fDoc.AddAlgorithm(Test::kChiSquare, Decide(Num(result.fAsymptoticSig), fCriteria.fAlpha));
    test.Condition(options.fEqual ? "DefaultEqualProbabilities_O_ChiSquare_1"
                                  : "UserSpecifiesProbabilities_O_ChiSquare_1",
                   {index});
    if (!result.Computed()) {
        test.Unable(MessageCode(result.fOutcome));
        return;
    }
    if (result.fOutsideCount > 0) {
        const Message message{
            message::kOutsideCategories, MessageType::kWarning, {Count(result.fOutsideCount)}, {}};
        test.Messages(std::span<const Message>(&message, 1));
    }
    test.Statistics()
        .Value("TotalN", Count(result.fTotalN))
        .Value("TestStatistic", Num(result.fStatistic))
        .Value("DegreeOfFreedom", Num(result.fDegreesOfFreedom))
        .Value("AsymptoticSig2Tailed", Num(result.fAsymptoticSig));
    std::vector<std::string> outside;
    const std::vector<double> codes = Codes(fData, field, result.fCategories, written, outside);
    std::vector<std::string> columns;
    for (double code : codes) {
        columns.push_back(FormatNumber(code));
    }
    const std::string rows[] = {"Observed", "Hypothesized"};
    SimpleTable table = test.Table("TwoClassComparison").Simple("Content", rows, columns);
    table.Row(result.fObserved);
    table.Row(result.fExpected);
}

void OneSampleWriter::Binomial(int field, const BinomialOptions& options) {
    const std::vector<double> values = fData.ValidValues(field);
    const int index = fData.DocumentIndex(field);
    const double p0 = options.fTestValue;
    BinomialCounts counts;
    std::string key;
    std::string estimateKey;
    std::vector<Param> params;
    std::vector<Param> estimateParams;
    std::vector<std::string> outside;
    if (IsCategorical(fData, field)) {
        std::vector<double> success;
        std::span<const CommandValue> written;
        if (options.fSuccess.fFirst) {
            const std::vector<double> met = InOrderMet(values);
            if (!met.empty()) {
                success.push_back(met.front());
            }
        } else {
            written = OfType(fData, field, options.fSuccess.fList, fWritten);
            for (const CommandValue& value : written) {
                success.push_back(ValueOf(fData, field, value));
            }
        }
        std::vector<double> failure;
        for (double value : Sorted(values)) {
            if (std::find(success.begin(), success.end(), value) == success.end()) {
                failure.push_back(value);
            }
        }
        std::vector<double> successKnown;
        for (double value : success) {
            if (!std::isnan(value)) {
                successKnown.push_back(value);
            }
        }
        counts = CountByCategories(values, successKnown, failure);
        const std::vector<double> successCodes = Codes(fData, field, success, written, outside);
        const std::vector<double> failureCodes = Codes(fData, field, failure, {}, outside);
        if (options.fSuccess.fFirst && success.size() == 1 && failure.size() == 1) {
            key = "ABinaryTestVariableIsSpecified_O_Binomial_5";
            params = {index, successCodes.front(), failureCodes.front(), p0, 1 - p0};
            estimateKey = "ABinaryTestVariableIsSpecified_O_Binomial_2";
            estimateParams = {index, successCodes.front()};
        } else {
            key = "CategoryListsAreSpecified_O_Binomial_5";
            params = {index, successCodes, failureCodes, p0, 1 - p0};
            estimateKey = "CategoryListsAreSpecified_O_Binomial_2";
            estimateParams = {index, successCodes};
        }
    } else {
        double cut = options.fCut.fValue;
        if (options.fCut.fKind != CutPoint::kValue) {
            cut = values.empty() ? kSysMis
                                 : (*std::min_element(values.begin(), values.end()) +
                                    *std::max_element(values.begin(), values.end())) /
                                       2;
        }
        counts = CountByCutPoint(values, cut);
        key = "ACutPointIsSpecified_O_Binomial_4";
        params = {index, cut, p0, 1 - p0};
        estimateKey = "ACutPointIsSpecified_O_Binomial_2";
        estimateParams = {index, cut};
    }
    const std::size_t trials = counts.fSuccesses + counts.fFailures;
    const BinomialResult result = BinomialTest(counts.fSuccesses, trials, p0);
    Algorithm test =
        fDoc.AddAlgorithm(Test::kBinomial, Decide(Num(result.fExactSig2Tailed), fCriteria.fAlpha));
    test.Condition(key, params);
    if (!result.Computed()) {
        test.Unable(MessageCode(result.fOutcome));
    } else {
        test.ValuesNotInCategories(outside);
        test.Statistics()
            .Value("TotalN", Count(trials))
            .Value("TestStatistic", Count(counts.fSuccesses))
            .Value("StandardError", Num(result.fStandardError))
            .Value("StandardizedTestStatistic", Num(result.fStandardized))
            .Value("ExactSig2Tailed", Num(result.fExactSig2Tailed));
        const double n = Count(trials);
        test.Table("TwoClassComparison")
            .Simple("Content", {"Observed", "Hypothesized"}, {"Success", "Failure"})
            .Row({100.0 * Count(counts.fSuccesses) / n, 100.0 * Count(counts.fFailures) / n})
            .Row({100.0 * p0, 100.0 * (1 - p0)});
    }

    if (!options.fClopperPearson && !options.fJeffreys && !options.fLikelihood) {
        return;
    }
    const SuccessRateIntervals intervals =
        SuccessRateIntervalsOf(counts.fSuccesses, trials, fCriteria.fCILevel / 100.0);
    Algorithm estimate = fDoc.AddAlgorithm(Test::kSuccessRate, Decision::kNone);
    estimate.Condition(estimateKey, estimateParams);
    if (!intervals.Computed()) {
        const Message message{MessageCode(intervals.fOutcome), MessageType::kError, {}, {}};
        estimate.Messages(std::span<const Message>(&message, 1));
    }
    estimate.ValuesNotInCategories(outside);
    auto write = [&](const char* table, const char* method, const ProportionInterval& interval) {
        StructuredTable entry = estimate.Table(table);
        entry.Attribute("computeECIMethod", method);
        entry.Attribute("Estimate", Num(interval.fEstimate));
        entry.Table("ConfidenceInterval")
            .Attribute("Lower", Num(interval.fLower))
            .Attribute("Upper", Num(interval.fUpper));
    };
    if (options.fClopperPearson) {
        write("ClopperPearson", "Clopper-Pearson", intervals.fClopperPearson);
    }
    if (options.fJeffreys) {
        write("Jeffreys", "Jeffreys", intervals.fJeffreys);
    }
    if (options.fLikelihood) {
        write("ProfileLikelihood", "Likelihood Ratio", intervals.fLikelihoodRatio);
    }
}

void OneSampleWriter::Runs(int field, const RunsOptions& options) {
    const std::vector<double> values = fData.ValidValues(field);
    const int index = fData.DocumentIndex(field);
    OneSampleRunsResult result;
    std::string key;
    std::vector<Param> params;
    std::vector<std::string> outside;
    if (IsCategorical(fData, field)) {
        std::vector<double> first;
        std::vector<double> second;
        std::span<const CommandValue> written;
        if (options.fGroups.fFirst) {
            // The first category met against every other.
            const std::vector<double> met = InOrderMet(values);
            if (!met.empty()) {
                first.push_back(met.front());
            }
            for (double value : Sorted(values)) {
                if (first.empty() || value != first.front()) {
                    second.push_back(value);
                }
            }
        } else {
            written = OfType(fData, field, options.fGroups.fList, fWritten);
            if (written.size() != 2) {
                Algorithm test = fDoc.AddAlgorithm(Test::kRuns, Decision::kUnableToCompute);
                test.Condition("ACutPointIsSpecified_O_Runs_2", {index, kSysMis});
                test.Unable(MessageCode(Outcome::kBadParameter));
                return;
            }
            first.push_back(ValueOf(fData, field, written[0]));
            second.push_back(ValueOf(fData, field, written[1]));
        }
        std::vector<double> firstKnown, secondKnown;
        for (double v : first) {
            if (!std::isnan(v)) {
                firstKnown.push_back(v);
            }
        }
        for (double v : second) {
            if (!std::isnan(v)) {
                secondKnown.push_back(v);
            }
        }
        result = RunsTestByCategories(values, firstKnown, secondKnown);
        const std::vector<double> firstCodes = Codes(fData, field, first, written, outside);
        const std::vector<double> secondCodes =
            Codes(fData, field, second,
                  written.size() > 1 ? written.subspan(1) : written.subspan(0, 0), outside);
        if (first.size() == 1 && second.size() == 1) {
            key = "ABinaryTestVariableIsSpecified_O_Runs_3";
            params = {index, firstCodes.front(), secondCodes.front()};
        } else {
            key = "CategoryListsAreSpecified_O_Runs_3";
            params = {index, firstCodes, secondCodes};
        }
    } else {
        const RunsCut kind = options.fCut.fKind == CutPoint::kSampleMean ? RunsCut::kMean
                             : options.fCut.fKind == CutPoint::kValue    ? RunsCut::kValue
                                                                         : RunsCut::kMedian;
        const double cut =
            values.empty() ? kSysMis : RunsCutPoint(values, kind, options.fCut.fValue);
        // Values at or below the cut point form the first group, as the condition says.
        result = RunsTestByCutPoint(values, cut);
        key = "ACutPointIsSpecified_O_Runs_2";
        params = {index, cut};
    }
    const double sig =
        result.fExactIsReported ? result.fExactSig2Tailed : result.fAsymptoticSig2Tailed;
    Algorithm test = fDoc.AddAlgorithm(Test::kRuns, Decide(Num(sig), fCriteria.fAlpha));
    test.Condition(key, params);
    if (!result.Computed()) {
        test.Unable(MessageCode(result.fOutcome));
        return;
    }
    if (result.fExcluded > 0) {
        const Message message{
            message::kOutsideCategories, MessageType::kWarning, {Count(result.fExcluded)}, {}};
        test.Messages(std::span<const Message>(&message, 1));
    }
    test.ValuesNotInCategories(outside);
    StatisticsResult stats = test.Statistics();
    stats.Value("TotalN", Count(result.fTotalN))
        .Value("TestStatistic", Num(result.fRuns))
        .Value("StandardError", Num(result.fStdDev))
        .Value("StandardizedTestStatistic", Num(result.fStandardized))
        .Value("AsymptoticSig2Tailed", Num(result.fAsymptoticSig2Tailed));
    if (result.fExactIsReported) {
        stats.Value("ExactSig2Tailed", Num(result.fExactSig2Tailed));
    }
    test.Table("RunsParameters")
        .Attribute("Mean", Num(result.fMean))
        .Attribute("StdDev", Num(result.fStdDev))
        .Attribute("ObservedRunNumber", Num(result.fRuns));
}

void OneSampleWriter::Wilcoxon(int field, const WilcoxonOneSampleOptions& options) {
    const std::vector<double> values = fData.ValidValues(field);
    const int index = fData.DocumentIndex(field);
    const OneSampleWilcoxonResult result = OneSampleWilcoxon(values, options.fTestValue);
    const double sig = result.HasExact() ? result.fExactSig2Tailed : result.fAsymptoticSig2Tailed;
    Algorithm test =
        fDoc.AddAlgorithm(Test::kOneSampleWilcoxon, Decide(Num(sig), fCriteria.fAlpha));
    const int ordinal[] = {index};
    const bool isOrdinal = fData.GetVariable(field).fLevel == MeasureLevel::kOrdinal;
    if (isOrdinal) {
        fOrdinalAsContinuous.push_back(index);
    }
    test.Condition({index, options.fTestValue},
                   isOrdinal ? std::span<const int>(ordinal) : std::span<const int>());
    if (!result.Computed()) {
        test.Unable(MessageCode(result.fOutcome));
        return;
    }
    StatisticsResult stats = test.Statistics();
    stats.Value("TotalN", Count(result.fTotalN))
        .Value("TestStatistic", Num(result.fStatistic))
        .Value("StandardError", Num(result.fStandardError))
        .Value("StandardizedTestStatistic", Num(result.fStandardized))
        .Value("AsymptoticSig2Tailed", Num(result.fAsymptoticSig2Tailed));
    if (result.HasExact()) {
        stats.Value("ExactSig2Tailed", Num(result.fExactSig2Tailed));
    }
    StructuredTable distribution = test.Table("ContinuousDistribution");
    distribution.Attribute("HypotheticalMedian", options.fTestValue)
        .Attribute("ObservedMedian", Num(result.fObservedMedian));
    WriteHistogram(distribution, MakeHistogram(values));
}

void OneSampleWriter::KolmogorovOne(int field, KsDistribution distribution,
                                    const KSDistribution& choice,
                                    const KolmogorovSmirnovOptions& options) {
    const std::vector<double> values = fData.ValidValues(field);
    const int index = fData.DocumentIndex(field);
    std::optional<KsParameters> given;
    if (choice.fParameters == KSDistribution::kGiven) {
        given = KsParameters{choice.fParam1, choice.fParam2};
    }
    const bool lilliefors = choice.fParameters == KSDistribution::kLilliefors;
    const OneSampleKsResult result = OneSampleKolmogorovSmirnov(values, distribution, given);

    std::string name;
    std::vector<Param> params;
    const double p1 = Num(result.fParameters.fFirst);
    const double p2 = Num(result.fParameters.fSecond);
    switch (distribution) {
    case KsDistribution::kNormal:
        name = "NormalDistribution_O_%_3";
        params = {index, p1, p2};
        break;
    case KsDistribution::kUniform:
        name = "UniformDistribution_O_%_3";
        params = {index, p1, p2};
        break;
    case KsDistribution::kPoisson:
        name = "PoissonDistribution_O_%_2";
        params = {index, p1};
        break;
    case KsDistribution::kExponential:
        name = "ExponentialDistribution_O_%_2";
        params = {index, p1};
        break;
    }
    auto keyOf = [&](const char* test) {
        std::string key = name;
        key.replace(key.find('%'), 1, test);
        return key;
    };

    // The significance shown: Lilliefors' for the normal with estimated
    // parameters, Kolmogorov's limiting distribution otherwise; a Monte Carlo
    // companion, when there is one, decides.
    const bool normalLilliefors = lilliefors && distribution == KsDistribution::kNormal;
    const bool tooFewForLilliefors = normalLilliefors && result.fOutcome == Outcome::kTooFewCases &&
                                     std::isfinite(result.fAbsolute);
    double sig = normalLilliefors ? result.fLillieforsSig : result.fAsymptoticSig2Tailed;

    MonteCarloSig monteCarlo;
    const bool companion = choice.fMonteCarlo && result.Computed();
    if (companion) {
        monteCarlo =
            LillieforsMonteCarlo(result, static_cast<std::size_t>(options.fMCSamples),
                                 options.fMCCILevel / 100.0, fCriteria.fSeed, &ReportProgress);
    }
    const bool haveCompanion = companion && monteCarlo.Computed();
    const double decisive = haveCompanion ? monteCarlo.fSig : sig;

    Algorithm test =
        fDoc.AddAlgorithm(Test::kOneSampleKolmogorov, Decide(Num(decisive), fCriteria.fAlpha));
    test.Condition(keyOf("KolmogorovSmirnov"), params, lilliefors);
    if (tooFewForLilliefors) {
        test.SetDecision(Decision::kUnableToCompute);
        const Message message{message::kNoLilliefors, MessageType::kHelp, {}, {}};
        test.Messages(std::span<const Message>(&message, 1));
    } else if (!result.Computed()) {
        test.Unable(MessageCode(result.fOutcome));
        return;
    }
    StatisticsResult stats = test.Statistics();
    stats.Group("TotalN", {{"TotalN", Count(result.fTotalN)}});
    stats.Group("MostExtremeDifferences", {{"Absolute", Num(result.fAbsolute)},
                                           {"Positive", Num(result.fPositive)},
                                           {"Negative", Num(result.fNegative)}});
    stats.Value("TestStatistic", Num(result.fAbsolute));
    stats.Value("AsymptoticSig2Tailed", Num(sig));

    if (!haveCompanion) {
        return;
    }
    Algorithm lill =
        fDoc.AddAlgorithm(Test::kLilliefors, Decide(monteCarlo.fSig, fCriteria.fAlpha));
    lill.Condition(keyOf("Lilliefors"), params, true);
    lill.Statistics()
        .Value("AsymptoticSig2Tailed", monteCarlo.fSig)
        .Value("ConfidenceIntervalLowerBound", Num(monteCarlo.fLower))
        .Value("ConfidenceIntervalUpperBound", Num(monteCarlo.fUpper));
}

void OneSampleWriter::Kolmogorov(int field, const KolmogorovSmirnovOptions& options) {
    if (options.fNormal.fRequested) {
        KolmogorovOne(field, KsDistribution::kNormal, options.fNormal, options);
    }
    if (options.fUniform.fRequested) {
        KolmogorovOne(field, KsDistribution::kUniform, options.fUniform, options);
    }
    if (options.fPoisson.fRequested) {
        KolmogorovOne(field, KsDistribution::kPoisson, options.fPoisson, options);
    }
    if (options.fExponential.fRequested) {
        KolmogorovOne(field, KsDistribution::kExponential, options.fExponential, options);
    }
}
} // namespace

std::vector<int> WriteOneSampleTests(const SplitData& data, const OneSamplePlan& plan,
                                     const Criteria& criteria, Document& doc) {
    OneSampleWriter writer(data, criteria, doc);
    for (int field : plan.fFields) {
        if (plan.fChooseTests) {
            // Two categories: binomial; more: chi-square; a continuous field:
            // Kolmogorov-Smirnov against the normal with the Lilliefors significance.
            if (IsCategorical(data, field)) {
                if (Sorted(data.ValidValues(field)).size() == 2) {
                    writer.Binomial(field, BinomialOptions{});
                } else {
                    writer.ChiSquare(field, ChiSquareOptions{});
                }
            } else {
                KolmogorovSmirnovOptions options;
                options.fNormal.fRequested = true;
                options.fNormal.fParameters = KSDistribution::kLilliefors;
                writer.Kolmogorov(field, options);
            }
            continue;
        }
        if (plan.fChiSquare) {
            writer.ChiSquare(field, *plan.fChiSquare);
        }
        if (plan.fBinomial) {
            writer.Binomial(field, *plan.fBinomial);
        }
        if (plan.fRuns) {
            writer.Runs(field, *plan.fRuns);
        }
        if (plan.fKolmogorovSmirnov) {
            writer.Kolmogorov(field, *plan.fKolmogorovSmirnov);
        }
        if (plan.fWilcoxon) {
            writer.Wilcoxon(field, *plan.fWilcoxon);
        }
    }
    return writer.fOrdinalAsContinuous;
}
