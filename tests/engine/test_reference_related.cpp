// The related-samples tests against R (tests/engine/reference/related.R):
// one line per case, on R's data sets and seeded random data.
#include "ReferenceCases.h"
#include "engine/stats/RelatedCategories.h"
#include "engine/stats/RelatedKSamples.h"
#include "engine/stats/RelatedPairs.h"

namespace {

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

std::vector<std::span<const double>> Spans(const Columns& c) {
    return {c.begin(), c.end()};
}

Named Paired(const Columns& c, const std::vector<double>& p) {
    const SignTestResult sign = SignTest(c[0], c[1]);
    const WilcoxonResult w = WilcoxonSignedRank(c[0], c[1]);
    const PairedHodgesLehmannResult hl = HodgesLehmannPaired(c[0], c[1], p[0]);
    return {{"n.positive", static_cast<double>(sign.fCounts.fPositive)},
            {"sign.sig", sign.fExactSig},
            {"sign.sig.asymptotic", sign.fAsymptoticSig},
            {"wilcoxon", w.fStatistic},
            {"wilcoxon.sig", w.fAsymptoticSig},
            {"wilcoxon.sig.exact", w.fExactSig},
            {"estimate", hl.fEstimate},
            {"lower", hl.fLower},
            {"upper", hl.fUpper}};
}

Named McNemarOf(const Columns& c, const std::vector<double>& p) {
    const McNemarResult r = McNemar(c[0], c[1], p);
    return {{"statistic", r.fStatistic}, {"sig", r.fAsymptoticSig}, {"sig.exact", r.fExactSig},
            {"n.ff", r.fCounts[0][0]},   {"n.fs", r.fCounts[0][1]}, {"n.sf", r.fCounts[1][0]},
            {"n.ss", r.fCounts[1][1]}};
}

Named Marginal(const Columns& c, const std::vector<double>&) {
    const MarginalHomogeneityResult r = MarginalHomogeneity(c[0], c[1]);
    return {{"z", r.fStandardized}, {"sig", r.fAsymptoticSig}};
}

Named FriedmanOf(const Columns& c, const std::vector<double>&) {
    const FriedmanResult r = Friedman(Spans(c));
    Named out{{"statistic", r.fStatistic},
              {"df", r.fDegreesOfFreedom},
              {"sig", r.fAsymptoticSig},
              {"w", r.fKendallW}};
    for (std::size_t j = 0; j < r.fMeanRanks.size(); ++j) {
        out["meanrank" + std::to_string(j + 1)] = r.fMeanRanks[j];
    }
    AddRows(out, "pair", FriedmanPairwise(r), false);
    AddRows(out, "subset", FriedmanStepwise(Spans(c), r, 0.05).fRows, true);
    return out;
}

Named CochranOf(const Columns& c, const std::vector<double>& p) {
    const CochranResult r = CochranQ(Spans(c), p);
    Named out{{"statistic", r.fStatistic},
              {"df", r.fDegreesOfFreedom},
              {"sig", r.fAsymptoticSig},
              {"se", r.fPairStandardError}};
    for (std::size_t j = 0; j < r.fSuccesses.size(); ++j) {
        out["n.successes" + std::to_string(j + 1)] = r.fSuccesses[j];
    }
    AddRows(out, "pair", CochranPairwise(r), false);
    return out;
}

// Two seeded random fields of n cases, multiples of `step` (ties and zero
// differences), the second shifted by `shift`.
RCase RandomPairs(int seed, int n, double step, double shift) {
    std::ostringstream first, second;
    first << "{set.seed(" << seed << "); round(rnorm(" << n << ") * 3 / " << step << ") * " << step
          << "}";
    second << "{set.seed(" << seed << "); x <- round(rnorm(" << n << ") * 3 / " << step << ") * "
           << step << "; x + round((rnorm(" << n << ") * 2 + " << shift << ") / " << step << ") * "
           << step << "}";
    return {"paired", {first.str(), second.str()}, {0.95}};
}

// k seeded random fields of n cases with `levels` values each, field j
// shifted by floor(j * shift).
RCase RandomFields(const char* test, int seed, int n, int k, int levels, double shift,
                   std::vector<double> parameters = {}) {
    std::vector<std::string> fields;
    for (int j = 0; j < k; ++j) {
        std::ostringstream field;
        field << "{set.seed(" << seed << "); matrix(sample(0:" << levels - 1 << ", " << n * k
              << ", TRUE), ncol = " << k << ")[, " << j + 1 << "] + floor(" << j << " * " << shift
              << ")}";
        fields.push_back(field.str());
    }
    return {test, fields, std::move(parameters)};
}

} // namespace

TEST(Related, MatchesR) {
    const std::string airquality = "na.omit(airquality)";
    const std::vector<RCase> cases{
        {"paired", {"sleep$extra[1:10]", "sleep$extra[11:20]"}, {0.95}},
        {"paired", {airquality + "$Temp", airquality + "$Ozone"}, {0.9}},
        {"paired", {"c(0.1, 1.1, 2.2, 0.7, 3.3)", "c(0.3, 1.3, 2.0, 1.0, 3.0)"}, {0.5}},
        RandomPairs(1, 12, 1, 0.5),
        RandomPairs(2, 30, 0.5, 0),
        RandomPairs(3, 45, 1e-9, 0.7),
        RandomPairs(4, 200, 1, 0.3),
        RandomPairs(5, 1000, 0.25, -0.1),
        {"mcnemar",
         {"rep(c(1, 1, 2, 2), c(794, 86, 150, 570))", "rep(c(1, 2, 1, 2), c(794, 86, 150, 570))"},
         {1}},
        RandomFields("mcnemar", 4, 30, 2, 2, 0, {1}),
        RandomFields("mcnemar", 5, 300, 2, 3, 0, {0, 2}),
        {"marginal",
         {"as.numeric(cut(airquality$Temp, c(0, 70, 80, 90, 200)))",
          "as.numeric(cut(airquality$Wind * 8, c(0, 70, 80, 90, 200)))"},
         {}},
        {"marginal", {"(1:40 %% 4 + 1)^2", "pmin(1:40 %% 5 + 1, 4)^2"}, {}},
        RandomFields("marginal", 8, 140, 2, 4, 0.7),
        {"friedman",
         {"c(5.40, 5.85, 5.20, 5.55, 5.90, 5.45, 5.40, 5.45, 5.25, 5.85, 5.25, 5.65, 5.60, "
          "5.05, 5.50, 5.45, 5.55, 5.45, 5.50, 5.65, 5.70, 6.30)",
          "c(5.50, 5.70, 5.60, 5.50, 5.85, 5.55, 5.40, 5.50, 5.15, 5.80, 5.20, 5.55, 5.35, "
          "5.00, 5.50, 5.55, 5.55, 5.50, 5.45, 5.60, 5.65, 6.30)",
          "c(5.55, 5.75, 5.50, 5.40, 5.70, 5.60, 5.35, 5.35, 5.00, 5.70, 5.10, 5.45, 5.45, "
          "4.95, 5.40, 5.50, 5.35, 5.55, 5.25, 5.40, 5.55, 6.25)"},
         {}},
        {"friedman",
         {airquality + "$Ozone", airquality + "$Solar.R", airquality + "$Wind",
          airquality + "$Temp"},
         {}},
        RandomFields("friedman", 1, 10, 3, 4, 0.3),
        RandomFields("friedman", 2, 50, 5, 3, 0),
        RandomFields("friedman", 3, 400, 4, 1000, 0.4),
        RandomFields("friedman", 4, 7, 8, 2, 0.5),
        RandomFields("friedman", 31, 60, 4, 5, 1.5),
        {"cochran",
         {"1 * (" + airquality + "$Temp > 80)", "1 * (" + airquality + "$Wind > 9)",
          "1 * (" + airquality + "$Solar.R > 200)", "1 * (" + airquality + "$Ozone > 40)"},
         {1}},
        RandomFields("cochran", 5, 1030, 5, 3, 0.4, {0, 2}),
        RandomFields("cochran", 6, 1230, 3, 3, 0.4, {0, 2}),
    };
    CompareWithR("related", cases,
                 {{"paired", Paired},
                  {"mcnemar", McNemarOf},
                  {"marginal", Marginal},
                  {"friedman", FriedmanOf},
                  {"cochran", CochranOf}});
}
