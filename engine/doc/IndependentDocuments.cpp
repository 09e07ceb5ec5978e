// The records of the independent-samples tests: for every test field of the
// plan, the cases valid on it and on the grouping field are ranked once and
// every requested test is written from them, with its statistics, its group
// tables or box plots, and its pairwise or stepwise comparisons.
#include "engine/doc/Builders.h"
#include "engine/doc/Messages.h"

#include <algorithm>
#include <cmath>
#include <functional>
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

// One test field of the independent-samples tests and what its records need.
struct FieldRun {
    Document& fDoc;
    const FieldCases& fCases;
    int fField;
    int fGroupField;
    const IndependentPlan& fPlan;
    const Criteria& fCriteria;

    // The Algorithm of `test` with its condition: the test field and the
    // grouping field.
    Algorithm Add(Test test, Decision decision) const {
        Algorithm algorithm = fDoc.AddAlgorithm(test, decision);
        algorithm.Condition({Param(fField), Param(fGroupField)});
        return algorithm;
    }
    Algorithm Add(Test test, double sig) const { return Add(test, Decide(sig, fCriteria.fAlpha)); }
    // A test that cannot be computed keeps its record with the message that
    // says why.
    void Unable(Test test, int code, std::vector<Param> params = {}) const {
        Add(test, Decision::kUnableToCompute).Unable(code, std::move(params));
    }
};

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

void MannWhitneyRecord(const FieldRun& run) {
    const MannWhitneyResult r = MannWhitney(run.fCases.View());
    if (!r.Computed()) {
        run.Unable(Test::kMannWhitney, MessageCode(r.fOutcome));
        return;
    }
    Algorithm a = run.Add(Test::kMannWhitney, r.fHasExact ? r.fExactSig : r.fAsymptoticSig);
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
    WriteGroupTables(a, run.fCases, r, meanRanks);
}

void KolmogorovSmirnovRecord(const FieldRun& run) {
    const KolmogorovSmirnovResult r = KolmogorovSmirnovTwoSample(run.fCases.View());
    if (!r.Computed()) {
        run.Unable(Test::kTwoSampleKolmogorov, MessageCode(r.fOutcome));
        return;
    }
    Algorithm a = run.Add(Test::kTwoSampleKolmogorov, r.fAsymptoticSig);
    a.Statistics()
        .Value("TotalN", static_cast<double>(r.fN1 + r.fN2))
        .Group("MostExtremeDifferences",
               {{"Absolute", r.fAbsolute}, {"Positive", r.fPositive}, {"Negative", r.fNegative}})
        .Value("TestStatistic", r.fZ)
        .Value("AsymptoticSig2Tailed", r.fAsymptoticSig);
    WriteGroupTables(a, run.fCases, r, nullptr);
}

void WaldWolfowitzRecord(const FieldRun& run) {
    const WaldWolfowitzResult r = WaldWolfowitz(run.fCases.View());
    if (!r.Computed()) {
        run.Unable(Test::kWaldWolfowitz, MessageCode(r.fOutcome));
        return;
    }
    // The most runs give the largest significance: reject only when even
    // the ordering of ties least favourable to rejection rejects.
    Algorithm a = run.Add(Test::kWaldWolfowitz, r.fMaximum.fExactSig);
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
    WriteGroupTables(a, run.fCases, r, nullptr);
}

void MosesRecord(const FieldRun& run) {
    const MosesOptions& options = *run.fPlan.fMoses;
    const MosesTrim trim{options.fTrimFromSample,
                         static_cast<std::size_t>(std::max(0, options.fTrim))};
    // The control group is the first category with cases.
    const MosesResult r = Moses(run.fCases.View(), 0, trim);
    if (!r.Computed()) {
        run.Unable(Test::kMoses, MessageCode(r.fOutcome));
        return;
    }
    Algorithm a = run.Add(Test::kMoses, r.fTrimmedSig);
    a.Statistics()
        .Value("TotalN", static_cast<double>(r.fN1 + r.fN2))
        .Group("ObservedControlGroup",
               {{"TestStatistic", r.fObservedSpan}, {"ExactSig1Tailed", r.fObservedSig}})
        .Group("TrimmedControlGroup",
               {{"TestStatistic", r.fTrimmedSpan}, {"ExactSig1Tailed", r.fTrimmedSig}})
        .Group("TestStatistic", {{"ObservedControlGroup", r.fObservedSpan},
                                 {"TrimmedControlGroup", r.fTrimmedSpan}});
    WriteBoxPlots(a, run.fGroupField, run.fCases, {r.fControl, r.fExperimental}, nullptr, nullptr);
}

void HodgesLehmannRecord(const FieldRun& run) {
    const HodgesLehmannResult r = HodgesLehmann(run.fCases.View(), run.fCriteria.fCILevel / 100);
    if (!r.Computed()) {
        run.Unable(Test::kGroupsHodgesLehmann, MessageCode(r.fOutcome));
        return;
    }
    Algorithm a = run.Add(Test::kGroupsHodgesLehmann, Decision::kNone);
    if (!r.fHasInterval) {
        const Message message{message::kIntervalNotReached, MessageType::kWarning, {}, ""};
        a.Messages(std::span<const Message>(&message, 1));
    }
    a.Statistics()
        .Value("Estimate", r.fEstimate)
        .Group("Asymptotic", {{"LowerBound", r.fLower}, {"UpperBound", r.fUpper}});
}

// A k-sample test's record: its statistics (`stats`), box plots and the
// comparisons the options ask for, whose messages about single pairs come
// before the statistics.
template <typename Result>
void KSampleRecord(const FieldRun& run, Test test, const Result& r, double sig, Compare compare,
                   const std::vector<double>& shown, std::string_view shownName,
                   const std::vector<double>* meanRanks, const MedianTestResult* median,
                   const std::function<std::vector<ComparisonResult>()>& pairwise,
                   const std::function<std::vector<ComparisonResult>()>& stepwise,
                   const std::function<void(StatisticsResult&)>& stats) {
    if (!r.Computed()) {
        run.Unable(test, MessageCode(r.fOutcome));
        return;
    }
    Comparisons comparisons;
    if (compare != Compare::kNone) {
        comparisons = MakeComparisons(compare, r.fSamples, shown,
                                      compare == Compare::kStepwise ? stepwise() : pairwise());
    }
    Algorithm a = run.Add(test, sig);
    a.Messages(comparisons.fMessages);
    StatisticsResult statistics = a.Statistics();
    stats(statistics);
    WriteBoxPlots(a, run.fGroupField, run.fCases, r.fSamples, meanRanks, median);
    if (compare != Compare::kNone) {
        WriteComparisons(a, comparisons, shownName, run.fField);
    }
}

void KruskalWallisRecord(const FieldRun& run) {
    const Compare compare = run.fPlan.fKruskalWallis.value_or(KruskalWallisOptions{}).fCompare;
    const GroupedValues cases = run.fCases.View();
    const KruskalWallisResult r = KruskalWallis(cases);
    KSampleRecord(
        run, Test::kKruskalWallis, r, r.fSig, compare, r.fMeanRank, "MeanRank", &r.fMeanRank,
        nullptr, [&] { return KruskalWallisPairwise(r); },
        [&] { return KruskalWallisSubsets(cases, r, run.fCriteria.fAlpha); },
        [&](StatisticsResult& stats) {
            stats.Value("TotalN", static_cast<double>(r.fTotalN))
                .Value("TestStatistic", r.fStatistic)
                .Value("DegreeOfFreedom", r.fDf)
                .Value("AsymptoticSig2Tailed", r.fSig);
        });
}

void JonckheereRecord(const FieldRun& run) {
    const JonckheereOptions& options = *run.fPlan.fJonckheere;
    const GroupedValues cases = run.fCases.View();
    const JonckheereResult r = JonckheereTerpstra(cases, !options.fAscending);
    KSampleRecord(
        run, Test::kJonckheere, r, r.fSig, options.fCompare, r.fMeanRank, "MeanRank", &r.fMeanRank,
        nullptr, [&] { return JonckheerePairwise(cases, r); },
        [&] { return JonckheereSubsets(cases, r, run.fCriteria.fAlpha); },
        [&](StatisticsResult& stats) {
            stats.Value("TotalN", static_cast<double>(r.fTotalN))
                .Value("TestStatistic", r.fStatistic)
                .Value("StandardError", r.fStdError)
                .Value("StandardizedTestStatistic", r.fStdStatistic)
                .Value("AsymptoticSig2Tailed", r.fSig);
        });
}

void MedianRecord(const FieldRun& run) {
    const MedianOptions& options = *run.fPlan.fMedian;
    const std::optional<double> testValue =
        options.fSampleMedian ? std::nullopt : std::optional<double>(options.fValue);
    const GroupedValues cases = run.fCases.View();
    const MedianTestResult r = MedianTest(cases, testValue);
    // Fisher's exact significance decides for two groups.
    KSampleRecord(
        run, Test::kMedian, r, r.fTwoSamples ? r.fFisherSig : r.fSig, options.fCompare,
        r.fSampleMedian, "Median", nullptr, &r, [&] { return MedianPairwise(cases, r, testValue); },
        [&] { return MedianSubsets(cases, r, testValue, run.fCriteria.fAlpha); },
        [&](StatisticsResult& stats) {
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
        });
}

// The tests of the family in the order of their records, with whether the
// plan asks for each (given the number of groups with cases, for the tests
// chosen without test keywords) and its writer.
struct IndependentTest {
    Test fTest;
    bool fTwoSample;
    bool (*fAsked)(const IndependentPlan& plan, std::size_t groups);
    void (*fWrite)(const FieldRun& run);
};

constexpr IndependentTest kIndependentTests[] = {
    {Test::kMannWhitney, true,
     [](const IndependentPlan& p, std::size_t groups) {
         return p.fMannWhitney || (p.fChooseTests && groups == 2);
     },
     MannWhitneyRecord},
    {Test::kWaldWolfowitz, true,
     [](const IndependentPlan& p, std::size_t) { return p.fWaldWolfowitz; }, WaldWolfowitzRecord},
    {Test::kTwoSampleKolmogorov, true,
     [](const IndependentPlan& p, std::size_t) { return p.fKolmogorovSmirnov; },
     KolmogorovSmirnovRecord},
    {Test::kMoses, true, [](const IndependentPlan& p, std::size_t) { return p.fMoses.has_value(); },
     MosesRecord},
    {Test::kKruskalWallis, false,
     [](const IndependentPlan& p, std::size_t groups) {
         return p.fKruskalWallis.has_value() || (p.fChooseTests && groups != 2);
     },
     KruskalWallisRecord},
    {Test::kMedian, false,
     [](const IndependentPlan& p, std::size_t) { return p.fMedian.has_value(); }, MedianRecord},
    {Test::kJonckheere, false,
     [](const IndependentPlan& p, std::size_t) { return p.fJonckheere.has_value(); },
     JonckheereRecord},
    {Test::kGroupsHodgesLehmann, true,
     [](const IndependentPlan& p, std::size_t) { return p.fHodgesLehmann; }, HodgesLehmannRecord},
};

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
    for (const int field : plan.fFields) {
        if (field < 0 || field >= data.FieldCount() || field == groupField) {
            continue;
        }
        const FieldCases cases = Collect(data, field, groupField);
        const FieldRun run{doc, cases, field, groupField, plan, criteria};
        // Every test of the family orders the values; a nominal field has no
        // order. The two-sample tests need the cases in exactly two groups (a
        // field without cases says so in its own message).
        const bool nominal = data.GetVariable(field).fLevel == MeasureLevel::kNominal;
        const std::size_t groups = GroupsWithCases(cases);
        for (const IndependentTest& test : kIndependentTests) {
            if (!test.fAsked(plan, groups)) {
                continue;
            }
            if (nominal) {
                run.Unable(test.fTest, message::kNominal);
            } else if (test.fTwoSample && groups != 2 && groups != 0) {
                run.Unable(test.fTest, message::kNotTwoGroups, {Param(groups)});
            } else {
                test.fWrite(run);
            }
        }
    }
}
