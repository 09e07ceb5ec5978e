// The grammar of the NPTESTS command, as a table.
#include "host/parser/NPTestsGrammar.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "host/parser/ParamObj.h"

namespace {
using P = ParamDescriptor;

constexpr double kMaxInt = std::numeric_limits<int>::max();
constexpr double kInf = std::numeric_limits<double>::infinity();

// A distribution of the one-sample Kolmogorov-Smirnov test: estimated from
// the sample (SAMPLE, SAMPLE=TRUE|FALSE) or with given parameters
// (CUSTOM(...)), one or the other.
P Distribution(const char* name, std::vector<P> parameters) {
    return P::Qualifiers(name,
                         {P::Words("SAMPLE", {"TRUE", "FALSE"}).OrBare(),
                          P::Qualifiers("CUSTOM", std::move(parameters))},
                         true);
}

// Any number, or one of `words`: TESTVALUE=SAMPLE or TESTVALUE=12.5.
P NumberOr(const char* name, std::vector<std::string> words) {
    P desc = P::Number(name, -kInf, kInf, true);
    desc.fWords = std::move(words);
    return desc;
}

// Which categories are successes: the first one met in the data, or a list.
P Categories(const char* name, const char* first) {
    return P::Qualifiers(name, {P::Flag(first), P::ValueList("LIST")}, true);
}

// A cut point of a continuous field: CUTPOINT(MIDPOINT), CUTPOINT(VALUE=x), ...
P CutPoint(const char* name, std::vector<const char*> words) {
    std::vector<P> choices;
    for (const char* word : words) {
        choices.push_back(P::Flag(word));
    }
    choices.push_back(P::Number("VALUE", -kInf, kInf, true));
    return P::Qualifiers(name, {P::Qualifiers("CUTPOINT", std::move(choices), true)}, true);
}

P Compare() {
    return P::Words("COMPARE", {"PAIRWISE", "STEPWISE", "NONE"});
}
} // namespace

CommandDescriptor NPTestsCommandDescriptor() {
    return CommandDescriptor(
        "NPTESTS", "Nonparametric Tests",
        {
            SubComDescriptor("MISSING", {P::Words("SCOPE", {"ANALYSIS", "LISTWISE"}),
                                         P::Words("USERMISSING", {"EXCLUDE", "INCLUDE"})}),
            SubComDescriptor("CRITERIA",
                             {P::Number("ALPHA", 0, 1, true), P::Number("CILEVEL", 0, 100, true),
                              P::Integer("SEED", 1, 2000000000, {"RANDOM"})}),
            SubComDescriptor(
                "ONESAMPLE",
                {P::VarList("TEST", "test variable list"),
                 P::Qualifiers(
                     "CHISQUARE",
                     {P::Qualifiers(
                         "EXPECTED",
                         {P::Flag("EQUAL"), P::Qualifiers("CUSTOM", {P::ValueList("FREQUENCIES"),
                                                                     P::ValueList("CATEGORIES")})},
                         true)}),
                 P::Qualifiers("BINOMIAL", {P::Number("TESTVALUE", 0, 1, true),
                                            Categories("SUCCESSCATEGORICAL", "FIRST"),
                                            CutPoint("SUCCESSCONTINUOUS", {"MIDPOINT"}),
                                            P::Flag("CLOPPER_PEARSON"), P::Flag("JEFFREYS"),
                                            P::Flag("LIKELIHOOD")}),
                 P::Qualifiers("RUNS",
                               {Categories("GROUPCATEGORICAL", "SAMPLE"),
                                CutPoint("GROUPCONTINUOUS", {"SAMPLEMEDIAN", "SAMPLEMEAN"})}),
                 P::Qualifiers("KOLMOGOROV_SMIRNOV",
                               {P::Integer("NSAMPLES", 1, kMaxInt),
                                P::Number("MC_CILEVEL", 0, 100, true),
                                Distribution("NORMAL", {P::Number("MEAN", -kInf, kInf, false),
                                                        P::Number("SD", 0, kInf, true)}),
                                Distribution("UNIFORM", {P::Number("MIN", -kInf, kInf, false),
                                                         P::Number("MAX", -kInf, kInf, false)}),
                                Distribution("EXPONENTIAL", {P::Number("MEAN", 0, kInf, true)}),
                                Distribution("POISSON", {P::Number("MEAN", 0, kInf, true)})}),
                 P::Qualifiers("WILCOXON", {P::Number("TESTVALUE", -kInf, kInf, true)})}),
            SubComDescriptor(
                "INDEPENDENT",
                {P::VarList("TEST", "test variable list"),
                 P::Variable("GROUP", "grouping variable"), P::Flag("MANN_WHITNEY"),
                 P::Flag("WALD_WOLFOWITZ"), P::Flag("KOLMOGOROV_SMIRNOV"),
                 P::Qualifiers("MOSES", {P::Integer("TRIMOUTLIERS", 0, kMaxInt, {"SAMPLE"})}),
                 P::Flag("HODGES_LEHMAN"), P::Qualifiers("KRUSKAL_WALLIS", {Compare()}),
                 P::Qualifiers("MEDIAN", {NumberOr("TESTVALUE", {"SAMPLE"}), Compare()}),
                 P::Qualifiers("JONCKHEERE_TERPSTRA",
                               {P::Words("ORDER", {"ASCENDING", "DESCENDING"}), Compare()})}),
            SubComDescriptor("RELATED",
                             {P::VarList("TEST", "test variable list"), P::Flag("SIGN"),
                              P::Flag("WILCOXON"),
                              P::Qualifiers("MCNEMAR", {Categories("SUCCESS", "FIRST")}),
                              P::Flag("MARGINAL_HOMOGENEITY"),
                              P::Qualifiers("COCHRAN", {Categories("SUCCESS", "FIRST"), Compare()}),
                              P::Qualifiers("FRIEDMAN", {Compare()}),
                              P::Qualifiers("KENDALL", {Compare()}), P::Flag("HODGES_LEHMAN")}),
            SubComDescriptor("PRINT", {P::Flag("SUMMARY"), P::Flag("NONE")}),
        });
}

namespace {
// The value of SAMPLE in capitals ("TRUE"), or "" when it has none.
std::string UpperValue(const ParamObj& sample) {
    std::string text;
    const ParamObj* qualifier = nullptr;
    if (!sample.isStringValueCase() || !sample.getStringAndQual(text, qualifier)) {
        return std::string();
    }
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

// One distribution of the list; false when its qualifier cannot be read.
bool ReadDistribution(const ParamObj& keyword, const std::vector<const ParamObj*>& qualifiers,
                      const char* name, KolmogorovRequest::Distribution& distribution,
                      bool* sampleIgnored) {
    const ParamObj* named = keyword.getParamObj(name, qualifiers);
    if (!named) {
        return true;
    }
    distribution.fNamed = true;
    std::string choice;
    const ParamObj* qualifier = nullptr;
    if (!named->getStringAndQual(choice, qualifier)) {
        return false;
    }
    if (!qualifier) {
        return true;
    }
    if (choice != "SAMPLE") {
        distribution.fCustom = qualifier;
    } else if (sampleIgnored) {
        *sampleIgnored = true;
    } else if (std::string_view(name) != "NORMAL") {
        distribution.fMonteCarlo = true;
    } else {
        distribution.fMonteCarlo = qualifier->isLeadingToken() || UpperValue(*qualifier) == "TRUE";
    }
    return true;
}
} // namespace

bool ReadKolmogorovRequest(const ParamObj& keyword, const ParamDescriptor* descriptor,
                           KolmogorovRequest& request) {
    request = KolmogorovRequest();
    std::vector<const ParamObj*> qualifiers;
    if (!keyword.getStringQualList(descriptor, qualifiers)) {
        return false;
    }
    request.fSamples = keyword.getParamObj("NSAMPLES", qualifiers);
    request.fLevel = keyword.getParamObj("MC_CILEVEL", qualifiers);
    return ReadDistribution(keyword, qualifiers, "NORMAL", request.fNormal, nullptr) &&
           ReadDistribution(keyword, qualifiers, "UNIFORM", request.fUniform, nullptr) &&
           ReadDistribution(keyword, qualifiers, "EXPONENTIAL", request.fExponential, nullptr) &&
           ReadDistribution(keyword, qualifiers, "POISSON", request.fPoisson,
                            &request.fPoissonSampleIgnored);
}
