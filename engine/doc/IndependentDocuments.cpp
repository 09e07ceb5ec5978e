// The records of the independent-samples tests: for every test field of the
// plan, the cases valid on it and on the grouping field are ranked once and
// every requested test is written from them, with its statistics, its group
// tables or box plots, and its pairwise or stepwise comparisons.
#include "engine/doc/Builders.h"
#include "engine/doc/Messages.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "engine/stats/IndependentKSample.h"
#include "engine/stats/IndependentTwoSample.h"
#include "engine/stats/Numerics.h"

namespace {

// A test field split by the grouping field.
struct FieldCases {
    std::vector<double> fValues;
    std::vector<int> fGroups; // category position in the grouping field
    std::vector<double> fCaseNumbers;
    std::size_t fGroupCount = 0;
    Ranking fRanking;

    GroupedValues View() const { return {fValues, fGroups, &fRanking, fGroupCount}; }
};

FieldCases Collect(const SplitData& data, int field, int groupField) {
    FieldCases cases;
    cases.fGroupCount = data.Categories(groupField).size();
    const int fields[] = {field, groupField};
    const std::span<const double> values = data.Values(field);
    const std::span<const double> groups = data.Values(groupField);
    const std::span<const double> caseNumbers = data.CaseNumbers();
    const std::vector<std::size_t> valid = data.ValidCases(fields);
    cases.fValues.reserve(valid.size());
    cases.fGroups.reserve(valid.size());
    cases.fCaseNumbers.reserve(valid.size());
    for (const std::size_t i : valid) {
        const int position = data.CategoryPosition(groupField, groups[i]);
        if (position < 0) {
            continue;
        }
        cases.fValues.push_back(values[i]);
        cases.fGroups.push_back(position);
        cases.fCaseNumbers.push_back(caseNumbers[i]);
    }
    cases.fRanking = RankValues(cases.fValues);
    return cases;
}

// The values (and case numbers) of one group.
std::vector<double> Of(const FieldCases& cases, std::size_t group,
                       const std::vector<double>& from) {
    std::vector<double> out;
    for (std::size_t i = 0; i < from.size(); ++i) {
        if (static_cast<std::size_t>(cases.fGroups[i]) == group) {
            out.push_back(from[i]);
        }
    }
    return out;
}

// The cases of every group, in one pass: `order` lists the positions of the
// cases group by group (ascending within a group), group g from starts[g] to
// starts[g + 1].
struct GroupOrder {
    std::vector<std::size_t> fStarts;
    std::vector<std::size_t> fOrder;

    std::vector<double> Of(std::size_t group, const std::vector<double>& from) const {
        std::vector<double> out;
        out.reserve(fStarts[group + 1] - fStarts[group]);
        for (std::size_t k = fStarts[group]; k < fStarts[group + 1]; ++k) {
            out.push_back(from[fOrder[k]]);
        }
        return out;
    }
};

GroupOrder OrderByGroup(const FieldCases& cases) {
    GroupOrder order;
    order.fStarts.assign(cases.fGroupCount + 1, 0);
    for (const int g : cases.fGroups) {
        ++order.fStarts[static_cast<std::size_t>(g) + 1];
    }
    for (std::size_t g = 0; g < cases.fGroupCount; ++g) {
        order.fStarts[g + 1] += order.fStarts[g];
    }
    std::vector<std::size_t> next(order.fStarts.begin(), order.fStarts.end() - 1);
    order.fOrder.resize(cases.fGroups.size());
    for (std::size_t i = 0; i < cases.fGroups.size(); ++i) {
        order.fOrder[next[static_cast<std::size_t>(cases.fGroups[i])]++] = i;
    }
    return order;
}

// Histogram bins common to the groups of a field: a width of 1, 2, 2.5 or 5
// times a power of ten that gives ten to twenty-odd bins, aligned on zero.
ValueHistogram CommonBins(const std::vector<double>& values) {
    double width = 1;
    if (!values.empty()) {
        const auto [low, high] = std::minmax_element(values.begin(), values.end());
        const double range = *high - *low;
        if (range > 0 && std::isfinite(range)) {
            constexpr double kSteps[] = {1.0, 2.0, 2.5, 5.0};
            width = NiceWidth(range / 15, kSteps);
        }
    }
    return BinValues(values, width);
}

// "Group" tables of a two-sample test: size, mean rank (when given) and a
// histogram of each of its two groups on common bins.
void WriteGroupTables(Algorithm& algorithm, const FieldCases& cases, const TwoSamples& two,
                      const double* meanRanks) {
    const ValueHistogram bins = CommonBins(cases.fValues);
    const std::size_t groups[] = {two.fFirst, two.fSecond};
    const std::size_t sizes[] = {two.fN1, two.fN2};
    for (int k = 0; k < 2; ++k) {
        StructuredTable table = algorithm.Table("Group" + std::to_string(groups[k]));
        table.Attribute("GroupIndex", static_cast<double>(groups[k]));
        table.Attribute("N", static_cast<double>(sizes[k]));
        if (meanRanks != nullptr) {
            table.Attribute("MeanOfRank", meanRanks[k]);
        }
        WriteHistogram(table, BinLike(Of(cases, groups[k], cases.fValues), bins));
    }
}

// The "BoxPlotInfo" table of the groups with cases.
void WriteBoxPlots(Algorithm& algorithm, int groupField, const FieldCases& cases,
                   const std::vector<std::size_t>& samples, const std::vector<double>* meanRanks,
                   const MedianTestResult* median) {
    std::vector<BoxPlotGroup> groups;
    const GroupOrder order = OrderByGroup(cases);
    for (const std::size_t g : samples) {
        const std::vector<double> values = order.Of(g, cases.fValues);
        const std::vector<double> caseNumbers = order.Of(g, cases.fCaseNumbers);
        const BoxPlotNumbers numbers = BoxPlot(values, caseNumbers);
        BoxPlotGroup& group = groups.emplace_back();
        group.fGroupIndex = static_cast<int>(g);
        group.fN = static_cast<int>(values.size());
        if (meanRanks != nullptr) {
            group.fMeanRank = (*meanRanks)[g];
        }
        if (median != nullptr) {
            group.fAboveMedian = static_cast<double>(median->fAbove[g]);
            group.fAtOrBelowMedian = static_cast<double>(median->fAtOrBelow[g]);
        }
        group.fBox = {numbers.fLowerWhisker,  numbers.fLowerQuartile, numbers.fMedian,
                      numbers.fUpperQuartile, numbers.fUpperWhisker,  numbers.fOutliers};
    }
    WriteBoxPlotInfo(algorithm, groupField, groups,
                     median != nullptr ? std::optional<double>(median->fMedian) : std::nullopt);
}

// A test that cannot be computed keeps its record with the reason's message.
void WriteCannotCompute(Document& doc, std::string_view name, std::string_view conditionKey,
                        int field, int groupField, int code) {
    Algorithm algorithm =
        doc.AddAlgorithm(name, Classification::kIndependent, Decision::kUnableToCompute);
    algorithm.Condition(conditionKey, {Param(field), Param(groupField)});
    const Message message{code, MessageType::kError, {Param(field)}, ""};
    algorithm.Messages(std::span<const Message>(&message, 1));
}

// A two-sample test on a field whose cases fall in another number of groups
// than two keeps its record with the number of groups it found.
void WriteNotTwoGroups(Document& doc, std::string_view name, std::string_view conditionKey,
                       int field, int groupField, std::size_t groups) {
    Algorithm algorithm =
        doc.AddAlgorithm(name, Classification::kIndependent, Decision::kUnableToCompute);
    algorithm.Condition(conditionKey, {Param(field), Param(groupField)});
    const Message message{message::kNotTwoGroups, MessageType::kError, {Param(groups)}, ""};
    algorithm.Messages(std::span<const Message>(&message, 1));
}

std::string Key(std::string_view test) {
    return "DefaultAllDistinctValuesUsed_I_" + std::string(test) + "_2";
}

// Comparisons of a k-sample test, as the document writes them, with the
// messages about single pairs.
struct Comparisons {
    ComparisonKind fKind = ComparisonKind::kPairwise;
    std::vector<double> fSamples;
    std::vector<double> fValues;
    std::vector<ComparisonResult> fRows;
    std::vector<Message> fMessages;
};

Comparisons MakeComparisons(Compare compare, const std::vector<std::size_t>& samples,
                            const std::vector<double>& shown,
                            const std::vector<ComparisonResult>& rows) {
    Comparisons out;
    out.fKind =
        compare == Compare::kStepwise ? ComparisonKind::kStepwise : ComparisonKind::kPairwise;
    const std::vector<std::size_t> listed =
        compare == Compare::kStepwise ? OrderByShownValue(samples, shown) : samples;
    for (const std::size_t s : listed) {
        out.fSamples.push_back(static_cast<double>(s));
        out.fValues.push_back(shown[s]);
    }
    out.fRows = rows;
    for (const ComparisonResult& row : rows) {
        if (row.fNoVariation && compare == Compare::kPairwise) {
            out.fMessages.push_back(
                {message::kNoVariationInPair,
                 MessageType::kWarning,
                 {},
                 std::to_string(row.fFirst) + ";" + std::to_string(row.fSecond)});
        }
    }
    return out;
}

void WriteComparisons(Algorithm& algorithm, const Comparisons& comparisons,
                      std::string_view valueName, int field) {
    WriteComparison(algorithm, comparisons.fKind, valueName, comparisons.fSamples,
                    comparisons.fValues, comparisons.fRows, field);
}

void MannWhitneyRecord(Document& doc, const FieldCases& cases, int field, int groupField,
                       double alpha) {
    const MannWhitneyResult r = MannWhitney(cases.View());
    if (!r.Computed()) {
        WriteCannotCompute(doc, "IMannWhitneyU", Key("MannWhitneyU"), field, groupField,
                           MessageCode(r.fOutcome));
        return;
    }
    const double sig = r.fHasExact ? r.fExactSig : r.fAsymptoticSig;
    Algorithm a =
        doc.AddAlgorithm("IMannWhitneyU", Classification::kIndependent, Decide(sig, alpha));
    a.Condition(Key("MannWhitneyU"), {Param(field), Param(groupField)});
    StatisticsResult stats = a.Statistics();
    stats.Value("TotalN", static_cast<double>(r.fN1 + r.fN2))
        .Value("TestStatistic", r.fU)
        .Value("WilcoxonW", r.fWilcoxonW)
        .Value("StandardError", r.fStdError)
        .Value("StandardizedTestStatistic", r.fStdStatistic)
        .Value("AsymptoticSig2Tailed", r.fAsymptoticSig);
    if (r.fHasExact) {
        stats.Value("ExactSig2Tailed", r.fExactSig);
    }
    const double meanRanks[] = {r.fMeanRank1, r.fMeanRank2};
    WriteGroupTables(a, cases, r, meanRanks);
}

void KolmogorovSmirnovRecord(Document& doc, const FieldCases& cases, int field, int groupField,
                             double alpha) {
    const KolmogorovSmirnovResult r = KolmogorovSmirnovTwoSample(cases.View());
    if (!r.Computed()) {
        WriteCannotCompute(doc, "IKolmogorovSmirnov", Key("KolmogorovSmirnov"), field, groupField,
                           MessageCode(r.fOutcome));
        return;
    }
    Algorithm a = doc.AddAlgorithm("IKolmogorovSmirnov", Classification::kIndependent,
                                   Decide(r.fAsymptoticSig, alpha));
    a.Condition(Key("KolmogorovSmirnov"), {Param(field), Param(groupField)});
    a.Statistics()
        .Value("TotalN", static_cast<double>(r.fN1 + r.fN2))
        .Group("MostExtremeDifferences",
               {{"Absolute", r.fAbsolute}, {"Positive", r.fPositive}, {"Negative", r.fNegative}})
        .Value("TestStatistic", r.fZ)
        .Value("AsymptoticSig2Tailed", r.fAsymptoticSig);
    WriteGroupTables(a, cases, r, nullptr);
}

void WaldWolfowitzRecord(Document& doc, const FieldCases& cases, int field, int groupField,
                         double alpha) {
    const WaldWolfowitzResult r = WaldWolfowitz(cases.View());
    if (!r.Computed()) {
        WriteCannotCompute(doc, "IWaldWolfowitzRuns", Key("WaldWolfowitzRuns"), field, groupField,
                           MessageCode(r.fOutcome));
        return;
    }
    // The most runs give the largest significance: reject only when even
    // the ordering of ties least favourable to rejection rejects.
    Algorithm a = doc.AddAlgorithm("IWaldWolfowitzRuns", Classification::kIndependent,
                                   Decide(r.fMaximum.fExactSig, alpha));
    a.Condition(Key("WaldWolfowitzRuns"), {Param(field), Param(groupField)});
    a.Statistics()
        .Value("TotalN", static_cast<double>(r.fN1 + r.fN2))
        .Group("MinimumPossible", {{"TestStatistic", r.fMinimum.fRuns},
                                   {"StandardizedTestStatistic", r.fMinimum.fStdStatistic},
                                   {"ExactSig1Tailed", r.fMinimum.fExactSig}})
        .Group("MaximumPossible", {{"TestStatistic", r.fMaximum.fRuns},
                                   {"StandardizedTestStatistic", r.fMaximum.fStdStatistic},
                                   {"ExactSig1Tailed", r.fMaximum.fExactSig}})
        .Group("TestStatistic",
               {{"MinimumPossible", r.fMinimum.fRuns}, {"MaximumPossible", r.fMaximum.fRuns}});
    WriteGroupTables(a, cases, r, nullptr);
}

void MosesRecord(Document& doc, const FieldCases& cases, int field, int groupField,
                 const MosesOptions& options, double alpha) {
    const MosesTrim trim{options.fTrimFromSample,
                         static_cast<std::size_t>(std::max(0, options.fTrim))};
    // The control group is the first category with cases.
    const MosesResult r = Moses(cases.View(), 0, trim);
    if (!r.Computed()) {
        WriteCannotCompute(doc, "IMoses", Key("Moses"), field, groupField, MessageCode(r.fOutcome));
        return;
    }
    Algorithm a =
        doc.AddAlgorithm("IMoses", Classification::kIndependent, Decide(r.fTrimmedSig, alpha));
    a.Condition(Key("Moses"), {Param(field), Param(groupField)});
    a.Statistics()
        .Value("TotalN", static_cast<double>(r.fN1 + r.fN2))
        .Group("ObservedControlGroup",
               {{"TestStatistic", r.fObservedSpan}, {"ExactSig1Tailed", r.fObservedSig}})
        .Group("TrimmedControlGroup",
               {{"TestStatistic", r.fTrimmedSpan}, {"ExactSig1Tailed", r.fTrimmedSig}})
        .Group("TestStatistic", {{"ObservedControlGroup", r.fObservedSpan},
                                 {"TrimmedControlGroup", r.fTrimmedSpan}});
    WriteBoxPlots(a, groupField, cases, {r.fControl, r.fExperimental}, nullptr, nullptr);
}

void HodgesLehmannRecord(Document& doc, const FieldCases& cases, int field, int groupField,
                         double ciLevel) {
    const HodgesLehmannResult r = HodgesLehmann(cases.View(), ciLevel / 100);
    Algorithm a = doc.AddAlgorithm("IHodgesLehmannEstimateGroups", Classification::kIndependent,
                                   r.Computed() ? Decision::kNone : Decision::kUnableToCompute);
    a.Condition("AllDistinctValuesUsed_I_HodgesLehman_2", {Param(field), Param(groupField)});
    if (!r.Computed()) {
        const Message message{MessageCode(r.fOutcome), MessageType::kError, {Param(field)}, ""};
        a.Messages(std::span<const Message>(&message, 1));
        return;
    }
    if (!r.fHasInterval) {
        const Message message{message::kIntervalNotReached, MessageType::kWarning, {}, ""};
        a.Messages(std::span<const Message>(&message, 1));
    }
    a.Statistics()
        .Value("Estimate", r.fEstimate)
        .Group("Asymptotic", {{"LowerBound", r.fLower}, {"UpperBound", r.fUpper}});
}

void KruskalWallisRecord(Document& doc, const FieldCases& cases, int field, int groupField,
                         const KruskalWallisOptions& options, double alpha) {
    const KruskalWallisResult r = KruskalWallis(cases.View());
    if (!r.Computed()) {
        WriteCannotCompute(doc, "IKruskalWallis", Key("KruskalWallis"), field, groupField,
                           MessageCode(r.fOutcome));
        return;
    }
    Comparisons comparisons;
    if (options.fCompare != Compare::kNone) {
        comparisons = MakeComparisons(options.fCompare, r.fSamples, r.fMeanRank,
                                      options.fCompare == Compare::kStepwise
                                          ? KruskalWallisSubsets(cases.View(), r, alpha)
                                          : KruskalWallisPairwise(r));
    }
    Algorithm a =
        doc.AddAlgorithm("IKruskalWallis", Classification::kIndependent, Decide(r.fSig, alpha));
    a.Condition(Key("KruskalWallis"), {Param(field), Param(groupField)});
    a.Messages(comparisons.fMessages);
    a.Statistics()
        .Value("TotalN", static_cast<double>(r.fTotalN))
        .Value("TestStatistic", r.fStatistic)
        .Value("DegreeOfFreedom", r.fDf)
        .Value("AsymptoticSig2Tailed", r.fSig);
    WriteBoxPlots(a, groupField, cases, r.fSamples, &r.fMeanRank, nullptr);
    if (options.fCompare != Compare::kNone) {
        WriteComparisons(a, comparisons, "MeanRank", field);
    }
}

void JonckheereRecord(Document& doc, const FieldCases& cases, int field, int groupField,
                      const JonckheereOptions& options, double alpha) {
    const JonckheereResult r = JonckheereTerpstra(cases.View(), !options.fAscending);
    if (!r.Computed()) {
        WriteCannotCompute(doc, "IJonckheereTerpstra", Key("JonckheereTerpstra"), field, groupField,
                           MessageCode(r.fOutcome));
        return;
    }
    Comparisons comparisons;
    if (options.fCompare != Compare::kNone) {
        comparisons = MakeComparisons(options.fCompare, r.fSamples, r.fMeanRank,
                                      options.fCompare == Compare::kStepwise
                                          ? JonckheereSubsets(cases.View(), r, alpha)
                                          : JonckheerePairwise(cases.View(), r));
    }
    Algorithm a = doc.AddAlgorithm("IJonckheereTerpstra", Classification::kIndependent,
                                   Decide(r.fSig, alpha));
    a.Condition(Key("JonckheereTerpstra"), {Param(field), Param(groupField)});
    a.Messages(comparisons.fMessages);
    a.Statistics()
        .Value("TotalN", static_cast<double>(r.fTotalN))
        .Value("TestStatistic", r.fStatistic)
        .Value("StandardError", r.fStdError)
        .Value("StandardizedTestStatistic", r.fStdStatistic)
        .Value("AsymptoticSig2Tailed", r.fSig);
    WriteBoxPlots(a, groupField, cases, r.fSamples, &r.fMeanRank, nullptr);
    if (options.fCompare != Compare::kNone) {
        WriteComparisons(a, comparisons, "MeanRank", field);
    }
}

void MedianRecord(Document& doc, const FieldCases& cases, int field, int groupField,
                  const MedianOptions& options, double alpha) {
    const std::optional<double> testValue =
        options.fSampleMedian ? std::nullopt : std::optional<double>(options.fValue);
    const MedianTestResult r = MedianTest(cases.View(), testValue);
    if (!r.Computed()) {
        WriteCannotCompute(doc, "IMedian", Key("Median"), field, groupField,
                           MessageCode(r.fOutcome));
        return;
    }
    // Fisher's exact significance decides for two groups.
    const double sig = r.fTwoSamples ? r.fFisherSig : r.fSig;
    Comparisons comparisons;
    if (options.fCompare != Compare::kNone) {
        comparisons = MakeComparisons(options.fCompare, r.fSamples, r.fSampleMedian,
                                      options.fCompare == Compare::kStepwise
                                          ? MedianSubsets(cases.View(), r, testValue, alpha)
                                          : MedianPairwise(cases.View(), r, testValue));
    }
    Algorithm a = doc.AddAlgorithm("IMedian", Classification::kIndependent, Decide(sig, alpha));
    a.Condition(Key("Median"), {Param(field), Param(groupField)});
    a.Messages(comparisons.fMessages);
    StatisticsResult stats = a.Statistics();
    stats.Value("TotalN", static_cast<double>(r.fTotalN))
        .Value("Median", r.fMedian)
        .Value("TestStatistic", r.fChiSquare)
        .Value("DegreeOfFreedom", r.fDf)
        .Value("AsymptoticSig2Tailed", r.fSig);
    if (r.fTwoSamples) {
        stats
            .Group("YatesContinuityCorrection", {{"TestStatistic", r.fYatesChiSquare},
                                                 {"DegreeOfFreedom", 1.0},
                                                 {"AsymptoticSig2Tailed", r.fYatesSig}})
            .Value("FisherExactSig", r.fFisherSig);
    }
    WriteBoxPlots(a, groupField, cases, r.fSamples, nullptr, &r);
    if (options.fCompare != Compare::kNone) {
        WriteComparisons(a, comparisons, "Median", field);
    }
}

std::size_t GroupsWithCases(const FieldCases& cases) {
    std::vector<char> seen(cases.fGroupCount, 0);
    for (const int g : cases.fGroups) {
        seen[static_cast<std::size_t>(g)] = 1;
    }
    return static_cast<std::size_t>(std::count(seen.begin(), seen.end(), 1));
}

} // namespace

void WriteIndependentTests(const SplitData& data, const IndependentPlan& plan,
                           const Criteria& criteria, Document& doc) {
    const int groupField = plan.fGroupField;
    if (groupField < 0 || groupField >= data.FieldCount()) {
        return;
    }
    const double alpha = criteria.fAlpha;
    for (const int field : plan.fFields) {
        if (field < 0 || field >= data.FieldCount() || field == groupField) {
            continue;
        }
        const FieldCases cases = Collect(data, field, groupField);
        // Every test of the family orders the values; a nominal field has no order.
        const bool nominal = data.GetVariable(field).fLevel == MeasureLevel::kNominal;
        const auto run = [&](std::string_view name, std::string_view test, auto&& write) {
            if (nominal) {
                WriteCannotCompute(doc, name, Key(test), field, groupField, message::kNominal);
            } else {
                write();
            }
        };
        // The two-sample tests need the cases in exactly two groups (a field
        // without cases says so in its own message).
        const std::size_t groups = GroupsWithCases(cases);
        const bool notTwo = !nominal && groups != 2 && groups != 0;
        const auto runTwo = [&](std::string_view name, std::string_view test, auto&& write) {
            if (notTwo) {
                WriteNotTwoGroups(doc, name, Key(test), field, groupField, groups);
            } else {
                run(name, test, write);
            }
        };
        bool mannWhitney = plan.fMannWhitney;
        bool kruskalWallis = plan.fKruskalWallis.has_value();
        if (plan.fChooseTests) {
            (groups == 2 ? mannWhitney : kruskalWallis) = true;
        }
        if (mannWhitney) {
            runTwo("IMannWhitneyU", "MannWhitneyU",
                   [&] { MannWhitneyRecord(doc, cases, field, groupField, alpha); });
        }
        if (plan.fWaldWolfowitz) {
            runTwo("IWaldWolfowitzRuns", "WaldWolfowitzRuns",
                   [&] { WaldWolfowitzRecord(doc, cases, field, groupField, alpha); });
        }
        if (plan.fKolmogorovSmirnov) {
            runTwo("IKolmogorovSmirnov", "KolmogorovSmirnov",
                   [&] { KolmogorovSmirnovRecord(doc, cases, field, groupField, alpha); });
        }
        if (plan.fMoses) {
            runTwo("IMoses", "Moses",
                   [&] { MosesRecord(doc, cases, field, groupField, *plan.fMoses, alpha); });
        }
        if (kruskalWallis) {
            const KruskalWallisOptions options =
                plan.fKruskalWallis.value_or(KruskalWallisOptions{});
            run("IKruskalWallis", "KruskalWallis",
                [&] { KruskalWallisRecord(doc, cases, field, groupField, options, alpha); });
        }
        if (plan.fMedian) {
            run("IMedian", "Median",
                [&] { MedianRecord(doc, cases, field, groupField, *plan.fMedian, alpha); });
        }
        if (plan.fJonckheere) {
            run("IJonckheereTerpstra", "JonckheereTerpstra",
                [&] { JonckheereRecord(doc, cases, field, groupField, *plan.fJonckheere, alpha); });
        }
        if (plan.fHodgesLehmann) {
            if (nominal) {
                WriteCannotCompute(doc, "IHodgesLehmannEstimateGroups",
                                   "AllDistinctValuesUsed_I_HodgesLehman_2", field, groupField,
                                   message::kNominal);
            } else if (notTwo) {
                WriteNotTwoGroups(doc, "IHodgesLehmannEstimateGroups",
                                  "AllDistinctValuesUsed_I_HodgesLehman_2", field, groupField,
                                  groups);
            } else {
                HodgesLehmannRecord(doc, cases, field, groupField, criteria.fCILevel);
            }
        }
    }
}
