// The one-sample tests against R (tests/engine/reference/onesample.R): one
// line per case, on R's data sets and on seeded random data.
#include "ReferenceCases.h"
#include "engine/stats/OneSample.h"
#include "engine/stats/OneSampleBinomial.h"
#include "engine/stats/OneSampleChiSquare.h"
#include "engine/stats/OneSampleKolmogorov.h"
#include "engine/stats/OneSampleRuns.h"
#include "engine/stats/OneSampleWilcoxon.h"

namespace {

std::vector<double> Part(const std::vector<double>& p, std::size_t from, std::size_t count) {
    if (count == 0) {
        return {};
    }
    return {p.begin() + static_cast<std::ptrdiff_t>(from),
            p.begin() + static_cast<std::ptrdiff_t>(from + count)};
}

Named ChiSquare(const Columns& c, const std::vector<double>& p) {
    const std::size_t k = p.empty() ? 0 : static_cast<std::size_t>(p[0]);
    const OneSampleChiSquareResult r =
        ChiSquareGoodnessOfFit(c[0], Part(p, p.empty() ? 0 : 1, k), Part(p, 1 + k, k));
    Named out{{"n", static_cast<double>(r.fTotalN)},
              {"statistic", r.fStatistic},
              {"df", r.fDegreesOfFreedom},
              {"sig", r.fAsymptoticSig}};
    for (std::size_t i = 0; i < r.fExpected.size(); ++i) {
        out["expected" + std::to_string(i + 1)] = r.fExpected[i];
    }
    return out;
}

Named Binomial(const Columns& c, const std::vector<double>& p) {
    const BinomialCounts counts = CountByCutPoint(c[0], p[0]);
    const std::size_t n = counts.fSuccesses + counts.fFailures;
    const BinomialResult r = BinomialTest(counts.fSuccesses, n, p[1]);
    const SuccessRateIntervals i = SuccessRateIntervalsOf(counts.fSuccesses, n, p[2]);
    return {{"n.successes", static_cast<double>(counts.fSuccesses)},
            {"sig", r.fExactSig2Tailed},
            {"sig.minlik", r.fExactSigMinLikelihood},
            {"sig.less", r.fExactSigLess},
            {"sig.greater", r.fExactSigGreater},
            {"z", r.fStandardized},
            {"cp.lower", i.fClopperPearson.fLower},
            {"cp.upper", i.fClopperPearson.fUpper},
            {"jeffreys.lower", i.fJeffreys.fLower},
            {"jeffreys.upper", i.fJeffreys.fUpper},
            {"lr.lower", i.fLikelihoodRatio.fLower},
            {"lr.upper", i.fLikelihoodRatio.fUpper}};
}

Named RunsOf(const OneSampleRunsResult& r) {
    return {{"n.first", static_cast<double>(r.fFirstCount)},
            {"n.second", static_cast<double>(r.fSecondCount)},
            {"n.runs", r.fRuns},
            {"mean", r.fMean},
            {"sd", r.fStdDev},
            {"z", r.fStandardized},
            {"sig", r.fAsymptoticSig2Tailed},
            {"sig.less", r.fExactSigLess},
            {"sig.greater", r.fExactSigGreater}};
}

Named Runs(const Columns& c, const std::vector<double>& p) {
    const RunsCut kind = p[0] == 0   ? RunsCut::kMedian
                         : p[0] == 1 ? RunsCut::kMean
                                     : RunsCut::kValue;
    const double cut = RunsCutPoint(c[0], kind, p.size() > 1 ? p[1] : 0);
    Named out = RunsOf(RunsTestByCutPoint(c[0], cut));
    out["cut"] = cut;
    return out;
}

Named RunsCategories(const Columns& c, const std::vector<double>& p) {
    const std::size_t k = static_cast<std::size_t>(p[0]);
    const OneSampleRunsResult r =
        RunsTestByCategories(c[0], Part(p, 1, k), Part(p, 1 + k, p.size() - 1 - k));
    Named out = RunsOf(r);
    out["n.excluded"] = static_cast<double>(r.fExcluded);
    return out;
}

Named Wilcoxon(const Columns& c, const std::vector<double>& p) {
    const OneSampleWilcoxonResult r = OneSampleWilcoxon(c[0], p[0]);
    return {{"statistic", r.fStatistic},
            {"z", r.fStandardized},
            {"sig", r.fAsymptoticSig2Tailed},
            {"sig.exact", r.fExactSig2Tailed},
            {"median", r.fObservedMedian}};
}

Named Kolmogorov(const Columns& c, const std::vector<double>& p) {
    const KsDistribution kinds[] = {KsDistribution::kNormal, KsDistribution::kUniform,
                                    KsDistribution::kPoisson, KsDistribution::kExponential};
    const KsDistribution kind = kinds[static_cast<std::size_t>(p[0])];
    std::optional<KsParameters> given;
    if (p.size() > 1) {
        given = KsParameters{p[1], p.size() > 2 ? p[2] : 0};
    }
    const OneSampleKsResult r = OneSampleKolmogorovSmirnov(c[0], kind, given);
    Named out{{"absolute", r.fAbsolute},
              {"positive", r.fPositive},
              {"negative", r.fNegative},
              {"sig", r.fAsymptoticSig2Tailed}};
    if (kind == KsDistribution::kPoisson) {
        out["parameter1"] = r.fParameters.fFirst;
    } else if (kind == KsDistribution::kNormal && !given) {
        out["sig.lilliefors"] = r.fLillieforsSig;
        out["parameter1"] = r.fParameters.fFirst;
        out["parameter2"] = r.fParameters.fSecond;
    }
    return out;
}

Named Limit(const Columns& c, const std::vector<double>&) {
    Named out;
    for (std::size_t i = 0; i < c[0].size(); ++i) {
        out["tail" + std::to_string(i + 1)] = KolmogorovLimitSf(c[0][i]);
    }
    return out;
}

Named Descriptive(const Columns& c, const std::vector<double>&) {
    const Descriptives d = Describe(c[0]);
    return {{"n", static_cast<double>(d.fN)},
            {"mean", d.fMean},
            {"sd", d.fStdDev},
            {"min", d.fMin},
            {"max", d.fMax},
            {"median", d.fMedian},
            {"lower", d.fLowerQuartile},
            {"upper", d.fUpperQuartile}};
}

// Seeded random data in R.
std::string Random(const char* expression, int seed) {
    std::ostringstream text;
    text << "{set.seed(" << seed << "); " << expression << "}";
    return text.str();
}

} // namespace

TEST(OneSample, MatchesR) {
    const double kNormal = 0, kUniform = 1, kPoisson = 2, kExponential = 3;
    const std::vector<RCase> cases{
        // Chi-square: equal frequencies over the distinct values, or given
        // frequencies over listed categories (a category 9 no case has).
        {"chisquare", {"InsectSprays$count"}, {}},
        {"chisquare", {"as.integer(InsectSprays$spray)"}, {}},
        {"chisquare", {"precip %/% 10"}, {7, 0, 1, 2, 3, 4, 5, 6, 1, 1, 1, 1, 1, 1, 1}},
        {"chisquare",
         {"warpbreaks$breaks %/% 10"},
         {7, 1, 2, 3, 4, 5, 6, 7, 20, 30, 25, 12, 6, 4, 3}},
        {"chisquare", {"warpbreaks$breaks %/% 10"}, {3, 4, 2, 3, 1, 2, 2}},
        {"chisquare", {"as.integer(faithful$eruptions > 3)"}, {2, 0, 1, 1, 2}},
        {"chisquare",
         {Random("floor(runif(30) * runif(30) * 6)", 11)},
         {7, 0, 1, 2, 3, 4, 5, 9, 1, 1, 1, 1, 1, 1, 1}},
        // Binomial: successes at or below a cut point against p0, and the
        // intervals at a level; counts as rep(0:1, c(successes, failures)).
        {"binomial", {"rep(0:1, c(7, 13))"}, {0, 0.5, 0.95}},
        {"binomial", {"rep(0:1, c(10, 10))"}, {0, 0.5, 0.9}},
        {"binomial", {"rep(0:1, c(3, 22))"}, {0, 0.3, 0.95}},
        {"binomial", {"rep(1, 12)"}, {0, 0.2, 0.95}},
        {"binomial", {"rep(0, 12)"}, {0, 0.2, 0.95}},
        {"binomial", {"c(0)"}, {0, 0.5, 0.95}},
        {"binomial", {"rep(0:1, c(31, 9))"}, {0, 0.65, 0.99}},
        {"binomial", {"rep(0:1, c(2, 48))"}, {0, 0.01, 0.8}},
        {"binomial", {"rep(0:1, c(498, 502))"}, {0, 0.52, 0.95}},
        {"binomial", {"rep(0:1, c(30512, 69488))"}, {0, 0.3, 0.95}},
        {"binomial", {"precip"}, {30, 0.25, 0.95}},
        {"binomial", {"faithful$eruptions"}, {3, 0.5, 0.99}},
        // Runs about the median, the mean or a value, of series in time order.
        {"runs", {"Nile"}, {0}},
        {"runs", {"lynx"}, {1}},
        {"runs", {"LakeHuron"}, {0}},
        {"runs", {"LakeHuron[1:30]"}, {1}},
        {"runs", {"nhtemp"}, {1}},
        {"runs", {"airmiles"}, {0}},
        {"runs", {"precip"}, {2, 30}},
        {"runs", {"faithful$waiting"}, {0}},
        {"runs_categories", {"mtcars$am"}, {1, 0, 1}},
        {"runs_categories", {"mtcars$cyl"}, {1, 4, 8}},
        // Wilcoxon signed rank: ties, zero differences, exact and asymptotic.
        {"wilcoxon", {"precip"}, {35}},
        {"wilcoxon", {"islands"}, {100}},
        {"wilcoxon", {"faithful$eruptions"}, {3.5}},
        {"wilcoxon", {"InsectSprays$count"}, {8}},
        {"wilcoxon", {"mtcars$mpg"}, {20}},
        {"wilcoxon", {"morley$Speed[1:20]"}, {850}},
        {"wilcoxon", {"women$height"}, {60.5}},
        {"wilcoxon", {"warpbreaks$breaks[1:9]"}, {30}},
        {"wilcoxon", {"c(0.1, 0.5, 0.7, 0.9, 1.3)"}, {0.3}},
        {"wilcoxon", {Random("rnorm(25)", 3)}, {0.2}},
        {"wilcoxon", {Random("rnorm(50)", 4)}, {0.2}},
        {"wilcoxon", {Random("rnorm(51)", 5)}, {0.2}},
        // Kolmogorov-Smirnov with given parameters, estimated ones (with
        // Lilliefors' significance for the normal), and the Poisson's steps.
        {"ks", {"precip"}, {kNormal, 34, 13.7}},
        {"ks", {"log(islands)"}, {kNormal, 4, 1.5}},
        {"ks", {"faithful$eruptions"}, {kUniform, 1.5, 5.2}},
        {"ks", {"rivers"}, {kExponential, 600}},
        {"ks", {"discoveries"}, {kExponential, 3.1}},
        {"ks", {"precip"}, {kNormal}},
        {"ks", {"faithful$waiting"}, {kNormal}},
        {"ks", {"mtcars$mpg"}, {kNormal}},
        {"ks", {"Nile"}, {kNormal}},
        {"ks", {Random("round(rnorm(9, 10, 2), 6)", 17)}, {kNormal}},
        {"ks", {Random("round(rnorm(150, 10, 2), 6)", 18)}, {kNormal}},
        {"ks", {Random("round(rnorm(1000, 10, 2), 6)", 19)}, {kNormal}},
        {"ks", {"women$weight"}, {kUniform}},
        {"ks", {"rivers"}, {kExponential}},
        {"ks", {"discoveries"}, {kPoisson}},
        {"ks", {"InsectSprays$count"}, {kPoisson}},
        {"ks", {"c(0, 0, 1, 7)"}, {kPoisson}},
        {"ks", {"discoveries"}, {kPoisson, 2.5}},
        {"limit", {"0.02 * 1.07^(0:120)"}, {}},
        // Descriptive numbers and type-6 quartiles.
        {"describe", {"precip"}, {}},
        {"describe", {"islands"}, {}},
        {"describe", {"c(3.5)"}, {}},
        {"describe", {"c(2, 1)"}, {}},
        {"describe", {"mtcars$mpg"}, {}},
    };
    CompareWithR("onesample", cases,
                 {{"chisquare", ChiSquare},
                  {"binomial", Binomial},
                  {"runs", Runs},
                  {"runs_categories", RunsCategories},
                  {"wilcoxon", Wilcoxon},
                  {"ks", Kolmogorov},
                  {"limit", Limit},
                  {"describe", Descriptive}});
}
