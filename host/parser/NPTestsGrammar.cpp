// The grammar of the NPTESTS command, as a table.
#include "host/parser/NPTestsGrammar.h"

#include <limits>

namespace {
using P = ParamDescriptor;

constexpr double kMaxInt = std::numeric_limits<int>::max();

// A distribution of the one-sample Kolmogorov-Smirnov test: estimated from
// the sample (SAMPLE, SAMPLE=TRUE|FALSE) or with given parameters
// (CUSTOM(...)), one or the other.
P Distribution(const char* name, std::vector<P> parameters) {
    return P::Qualifiers(name,
                         {P::Words("SAMPLE", {"TRUE", "FALSE"}).OrBare(),
                          P::Qualifiers("CUSTOM", std::move(parameters))},
                         true);
}
} // namespace

CommandDescriptor NPTestsCommandDescriptor() {
    const double inf = std::numeric_limits<double>::infinity();
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
                {P::VarList("TEST", "test variable list"), P::Opaque("CHISQUARE"),
                 P::Opaque("BINOMIAL"), P::Opaque("RUNS"),
                 P::Qualifiers("KOLMOGOROV_SMIRNOV",
                               {P::Integer("NSAMPLES", 1, kMaxInt),
                                P::Number("MC_CILEVEL", 0, 100, true),
                                Distribution("NORMAL", {P::Number("MEAN", -inf, inf, false),
                                                        P::Number("SD", 0, inf, true)}),
                                Distribution("UNIFORM", {P::Number("MIN", -inf, inf, false),
                                                         P::Number("MAX", -inf, inf, false)}),
                                Distribution("EXPONENTIAL", {P::Number("MEAN", 0, inf, true)}),
                                Distribution("POISSON", {P::Number("MEAN", 0, inf, true)})}),
                 P::Opaque("WILCOXON")}),
            SubComDescriptor("INDEPENDENT",
                             {P::VarList("TEST", "test variable list"),
                              P::Variable("GROUP", "grouping variable"), P::Opaque("MANN_WHITNEY"),
                              P::Opaque("WALD_WOLFOWITZ"), P::Opaque("KOLMOGOROV_SMIRNOV"),
                              P::Opaque("MOSES"), P::Opaque("HODGES_LEHMAN"),
                              P::Opaque("KRUSKAL_WALLIS"), P::Opaque("MEDIAN"),
                              P::Opaque("JONCKHEERE_TERPSTRA")}),
            SubComDescriptor("RELATED", {P::VarList("TEST", "test variable list"),
                                         P::Opaque("SIGN"), P::Opaque("WILCOXON"),
                                         P::Opaque("MCNEMAR"), P::Opaque("MARGINAL_HOMOGENEITY"),
                                         P::Opaque("COCHRAN"), P::Opaque("FRIEDMAN"),
                                         P::Opaque("KENDALL"), P::Opaque("HODGES_LEHMAN")}),
            SubComDescriptor("PRINT", {P::Flag("SUMMARY"), P::Flag("NONE")}),
        });
}
