// The independent-samples tests against R (tests/engine/reference/
// independent.R): one line per case, on R's data sets and seeded random data.
#include <optional>

#include "ReferenceCases.h"
#include "engine/stats/IndependentKSample.h"
#include "engine/stats/IndependentTwoSample.h"

namespace {

// The cases of a case: values, group codes and the number of categories.
struct Cases {
    std::vector<int> fGroups;
    Ranking fRanking;
    std::size_t fCount;
    const Columns& fColumns;

    Cases(const Columns& c, const std::vector<double>& p)
        : fGroups(c[1].begin(), c[1].end()), fRanking(RankValues(c[0])),
          fCount(static_cast<std::size_t>(p[0])), fColumns(c) {}
    GroupedValues View() const { return {fColumns[0], fGroups, &fRanking, fCount}; }
};

void AddRows(Named& out, const std::string& prefix, const std::vector<ComparisonResult>& rows,
             bool stepwise) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const ComparisonResult& row = rows[i];
        const std::string name = prefix + std::to_string(i + 1) + ".";
        out[name + "first"] = static_cast<double>(row.fFirst);
        out[name + "second"] = static_cast<double>(row.fSecond);
        out[name + "statistic"] = row.fStatistic;
        out[name + "sig"] = row.fSig;
        out[name + "adjsig"] = row.fAdjustedSig;
        if (!stepwise) {
            out[name + "se"] = row.fStdError;
            out[name + "z"] = row.fStdStatistic;
        }
    }
}

void AddPerCategory(Named& out, const std::string& prefix, const std::vector<double>& values) {
    for (std::size_t g = 0; g < values.size(); ++g) {
        out[prefix + std::to_string(g + 1)] = values[g];
    }
}

Named MannWhitneyOf(const Columns& c, const std::vector<double>& p) {
    const Cases cases(c, p);
    const MannWhitneyResult r = MannWhitney(cases.View());
    return {{"statistic", r.fU},         {"w", r.fWilcoxonW},        {"se", r.fStdError},
            {"z", r.fStdStatistic},      {"sig", r.fAsymptoticSig},  {"sig.exact", r.fExactSig},
            {"meanrank1", r.fMeanRank1}, {"meanrank2", r.fMeanRank2}};
}

Named KolmogorovOf(const Columns& c, const std::vector<double>& p) {
    const Cases cases(c, p);
    const KolmogorovSmirnovResult r = KolmogorovSmirnovTwoSample(cases.View());
    return {{"absolute", r.fAbsolute},
            {"positive", r.fPositive},
            {"negative", r.fNegative},
            {"z", r.fZ},
            {"sig", r.fAsymptoticSig}};
}

Named HodgesLehmannOf(const Columns& c, const std::vector<double>& p) {
    const Cases cases(c, p);
    const HodgesLehmannResult r = HodgesLehmann(cases.View(), p[1]);
    return {{"estimate", r.fEstimate}, {"lower", r.fLower}, {"upper", r.fUpper}};
}

Named KruskalOf(const Columns& c, const std::vector<double>& p) {
    const Cases cases(c, p);
    const KruskalWallisResult r = KruskalWallis(cases.View());
    Named out{{"statistic", r.fStatistic}, {"df", r.fDf}, {"sig", r.fSig}};
    AddPerCategory(out, "meanrank", r.fMeanRank);
    AddRows(out, "pair", KruskalWallisPairwise(r), false);
    AddRows(out, "subset", KruskalWallisSubsets(cases.View(), r, 0.05), true);
    return out;
}

Named MedianOf(const Columns& c, const std::vector<double>& p) {
    const Cases cases(c, p);
    const std::optional<double> value = p.size() > 1 ? std::optional<double>(p[1]) : std::nullopt;
    const MedianTestResult r = MedianTest(cases.View(), value);
    Named out{{"median", r.fMedian}, {"statistic", r.fChiSquare}, {"df", r.fDf}, {"sig", r.fSig}};
    if (!value) {
        out["coin"] = r.fChiSquare;
    }
    if (r.fTwoSamples) {
        out["yates"] = r.fYatesChiSquare;
        out["yates.sig"] = r.fYatesSig;
        out["fisher.sig"] = r.fFisherSig;
    }
    for (std::size_t s : r.fSamples) {
        out["n.above" + std::to_string(s + 1)] = static_cast<double>(r.fAbove[s]);
        out["n.below" + std::to_string(s + 1)] = static_cast<double>(r.fAtOrBelow[s]);
    }
    AddRows(out, "pair", MedianPairwise(cases.View(), r, value), false);
    return out;
}

Named FisherOf(const Columns&, const std::vector<double>& p) {
    const auto n = [&](std::size_t i) { return static_cast<std::size_t>(p[i]); };
    return {{"sig", FisherExact2x2(n(0), n(1), n(2), n(3))}};
}

// Two groups from R's data sets: the values of `frame$value` by the codes of
// `frame$group` (its sorted levels from 0), cases with a missing value left
// out.
RCase Two(const char* test, const std::string& frame, const std::string& value,
          const std::string& group, std::vector<double> parameters) {
    const std::string kept = "subset(" + frame + ", !is.na(" + value + "))";
    return {test,
            {kept + "$" + value, "as.integer(factor(" + kept + "$" + group + ")) - 1"},
            std::move(parameters)};
}

// Random groups of the given sizes, shifted by `shift` per group and rounded
// to `step` (no rounding for 0), the cases in random order.
RCase Random(const char* test, int seed, const std::string& sizes, double shift, double step,
             std::vector<double> parameters) {
    std::ostringstream codes, values;
    codes << "{set.seed(" << seed << "); sample(rep(seq_along(" << sizes << ") - 1, " << sizes
          << ")) }";
    values << "{set.seed(" << seed << "); g <- sample(rep(seq_along(" << sizes << ") - 1, " << sizes
           << ")); v <- rnorm(length(g)) + " << shift << " * g; if (" << step << " > 0) round(v / "
           << step << ") * " << step << " else v }";
    return {test, {values.str(), codes.str()}, std::move(parameters)};
}

} // namespace

TEST(Independent, MatchesR) {
    const std::vector<RCase> cases{
        Two("mannwhitney", "ToothGrowth", "len", "supp", {2}),
        Two("mannwhitney", "mtcars", "mpg", "am", {2}),
        Two("mannwhitney", "sleep", "extra", "group", {2}),
        Two("mannwhitney", "subset(airquality, Month %in% c(5, 8))", "Ozone", "Month", {2}),
        Random("mannwhitney", 1, "c(8, 11)", 0.7, 0, {2}),
        Random("mannwhitney", 2, "c(10, 14)", 0.4, 0.5, {2}),
        Random("mannwhitney", 3, "c(300, 250)", 0.2, 0.1, {2}),
        Random("mannwhitney", 4, "c(3, 2)", 1, 0, {2}),
        Two("ks2", "ToothGrowth", "len", "supp", {2}),
        Two("ks2", "mtcars", "mpg", "am", {2}),
        Two("ks2", "sleep", "extra", "group", {2}),
        Random("ks2", 2, "c(10, 14)", 0.4, 0.5, {2}),
        Random("ks2", 3, "c(300, 250)", 0.2, 0.1, {2}),
        Two("hodgeslehmann", "ToothGrowth", "len", "supp", {2, 0.95}),
        Two("hodgeslehmann", "mtcars", "mpg", "am", {2, 0.95}),
        Two("hodgeslehmann", "sleep", "extra", "group", {2, 0.9}),
        Random("hodgeslehmann", 1, "c(8, 11)", 0.7, 0, {2, 0.95}),
        Random("hodgeslehmann", 4, "c(3, 2)", 1, 0, {2, 0.95}),
        Random("hodgeslehmann", 3, "c(300, 250)", 0.2, 0.1, {2, 0.99}),
        Two("kruskal", "InsectSprays", "count", "spray", {6}),
        Two("kruskal", "chickwts", "weight", "feed", {6}),
        Two("kruskal", "warpbreaks", "breaks", "tension", {3}),
        Two("kruskal", "airquality", "Ozone", "Month", {5}),
        Two("kruskal", "ToothGrowth", "len", "dose", {3}),
        Two("kruskal", "PlantGrowth", "weight", "group", {3}),
        Random("kruskal", 5, "c(6, 0, 9, 7)", 0.5, 0.25, {4}),
        Random("kruskal", 6, "c(12, 9)", 0.8, 0.5, {2}),
        Random("kruskal", 7, "c(40, 35, 50, 20, 44, 31, 28)", 0.1, 0, {7}),
        Two("median_test", "InsectSprays", "count", "spray", {6}),
        Two("median_test", "chickwts", "weight", "feed", {6}),
        Two("median_test", "warpbreaks", "breaks", "tension", {3}),
        Two("median_test", "airquality", "Ozone", "Month", {5}),
        Two("median_test", "PlantGrowth", "weight", "group", {3}),
        Two("median_test", "warpbreaks", "breaks", "tension", {3, 25}),
        Random("median_test", 5, "c(6, 0, 9, 7)", 0.5, 0.25, {4}),
        Random("median_test", 6, "c(12, 9)", 0.8, 0.5, {2}),
        {"fisher", {"0"}, {3, 1, 1, 3}},
        {"fisher", {"0"}, {0, 5, 6, 0}},
        {"fisher", {"0"}, {10, 2, 3, 15}},
        {"fisher", {"0"}, {1, 0, 0, 0}},
        {"fisher", {"0"}, {7, 7, 7, 7}},
        {"fisher", {"0"}, {120, 95, 80, 130}},
        {"fisher", {"0"}, {2, 9, 14, 3}},
    };
    CompareWithR("independent", cases,
                 {{"mannwhitney", MannWhitneyOf},
                  {"ks2", KolmogorovOf},
                  {"hodgeslehmann", HodgesLehmannOf},
                  {"kruskal", KruskalOf},
                  {"median_test", MedianOf},
                  {"fisher", FisherOf}});
}
