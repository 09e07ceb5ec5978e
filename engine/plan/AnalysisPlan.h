// What an NPTESTS command asks the engine to compute: the tests of each
// family with their options, the criteria (significance level, confidence
// level, seed) and the missing-value rules. Built once from the parsed
// command and the data's variables; the same plan is run on every split.
// Fields are named by their index among the data's variables.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

class CommandSpec;
class Dataset;

// A value written in the command: a number, or a text for string fields.
struct CommandValue {
    bool fIsText = false;
    double fNumber = 0;
    std::string fText;
};

// Which categories count as "success" (binomial, McNemar, Cochran) or make
// the two groups of a runs test: the first category met in the data, or the
// values listed.
struct CategorySelection {
    bool fFirst = true; // false: the values of fList
    std::vector<CommandValue> fList;
};

// A cut point of a continuous field.
struct CutPoint {
    enum Kind { kMidpoint, kSampleMedian, kSampleMean, kValue };
    Kind fKind = kMidpoint;
    double fValue = 0; // kValue
};

// ---------------------------------------------------------------------------
// One sample

struct ChiSquareOptions {
    bool fEqual = true; // EXPECTED=EQUAL; false: EXPECTED=CUSTOM
    // CUSTOM: relative expected frequencies, one per category listed (or per
    // category of the field in ascending order when no categories are listed).
    std::vector<double> fFrequencies;
    std::vector<CommandValue> fCategories;
    // CUSTOM without categories listed: each field's categories, its distinct
    // valid values in the whole file, ascending (by field index).
    std::map<int, std::vector<CommandValue>> fFieldCategories;
};

struct BinomialOptions {
    double fTestValue = 0.5;            // hypothesized proportion of successes
    CategorySelection fSuccess;         // categorical fields
    CutPoint fCut{CutPoint::kMidpoint}; // continuous fields: cases at or below the cut succeed
    bool fClopperPearson = false;       // success-rate intervals (written as estimates)
    bool fJeffreys = false;
    bool fLikelihood = false;
};

struct RunsOptions {
    CategorySelection fGroups;              // categorical fields: SAMPLE (first two met) or LIST
    CutPoint fCut{CutPoint::kSampleMedian}; // continuous fields
};

// One distribution of the Kolmogorov-Smirnov test.
struct KSDistribution {
    // Where the parameters come from: estimated from the sample and the
    // significance from the Kolmogorov distribution (the distribution named
    // alone, or NORMAL(SAMPLE=FALSE)); estimated from the sample with the
    // Lilliefors significance (SAMPLE, or KOLMOGOROV_SMIRNOV without a
    // distribution); or given (CUSTOM(...)).
    enum Parameters { kEstimated, kLilliefors, kGiven };

    bool fRequested = false;
    Parameters fParameters = kEstimated;
    // The Monte Carlo significance of parameters estimated in every sample,
    // as the command asks for it (KolmogorovRequest).
    bool fMonteCarlo = false;
    // Given parameters: NORMAL MEAN SD, UNIFORM MIN MAX, EXPONENTIAL MEAN, POISSON MEAN.
    double fParam1 = 0;
    double fParam2 = 0;
};

struct KolmogorovSmirnovOptions {
    KSDistribution fNormal;
    KSDistribution fUniform;
    KSDistribution fExponential;
    KSDistribution fPoisson;
    int fMCSamples = 10000;   // Monte Carlo samples of the Lilliefors significance
    double fMCCILevel = 99.0; // percent
};

struct WilcoxonOneSampleOptions {
    double fTestValue = 0; // hypothesized median
};

struct OneSamplePlan {
    std::vector<int> fFields;
    // No test keyword: each field gets the test its measurement level calls for.
    bool fChooseTests = false;
    std::optional<ChiSquareOptions> fChiSquare;
    std::optional<BinomialOptions> fBinomial;
    std::optional<RunsOptions> fRuns;
    std::optional<KolmogorovSmirnovOptions> fKolmogorovSmirnov;
    std::optional<WilcoxonOneSampleOptions> fWilcoxon;
};

// ---------------------------------------------------------------------------
// Independent samples

enum class Compare { kPairwise, kStepwise, kNone };

struct MosesOptions {
    bool fTrimFromSample = true; // TRIMOUTLIERS=SAMPLE: 5 % of the control group
    int fTrim = 0;               // TRIMOUTLIERS=VALUE=n: n cases from each end
};

struct MedianOptions {
    bool fSampleMedian = true; // TESTVALUE=SAMPLE: the pooled median
    double fValue = 0;
    Compare fCompare = Compare::kPairwise;
};

struct JonckheereOptions {
    bool fAscending = true; // the order of the groups' categories
    Compare fCompare = Compare::kPairwise;
};

struct KruskalWallisOptions {
    Compare fCompare = Compare::kPairwise;
};

struct IndependentPlan {
    std::vector<int> fFields;
    int fGroupField = -1;
    bool fChooseTests = false;
    bool fMannWhitney = false;
    bool fWaldWolfowitz = false;
    bool fKolmogorovSmirnov = false;
    std::optional<MosesOptions> fMoses;
    bool fHodgesLehmann = false;
    std::optional<KruskalWallisOptions> fKruskalWallis;
    std::optional<MedianOptions> fMedian;
    std::optional<JonckheereOptions> fJonckheere;
};

// ---------------------------------------------------------------------------
// Related samples

struct McNemarOptions {
    CategorySelection fSuccess;
};

struct CochranOptions {
    CategorySelection fSuccess;
    Compare fCompare = Compare::kPairwise;
};

struct FriedmanOptions {
    Compare fCompare = Compare::kPairwise;
};

struct RelatedPlan {
    std::vector<int> fFields;
    bool fChooseTests = false;
    bool fSign = false;
    bool fWilcoxon = false;
    std::optional<McNemarOptions> fMcNemar;
    bool fMarginalHomogeneity = false;
    std::optional<CochranOptions> fCochran;
    std::optional<FriedmanOptions> fFriedman;
    std::optional<FriedmanOptions> fKendall;
    bool fHodgesLehmann = false;
};

// ---------------------------------------------------------------------------

struct Criteria {
    double fAlpha = 0.05;   // significance level of the decisions
    double fCILevel = 95.0; // percent, confidence intervals
    // The seed of the Monte Carlo significances: the procedure chooses it
    // (SEED, or a seed of its own for SEED=RANDOM), and the engine is given it.
    std::uint32_t fSeed = 2000000;
};

struct MissingRules {
    bool fListwise = false; // SCOPE=LISTWISE: a case missing on any field of the command is left
                            // out of every test
    bool fIncludeUserMissing = false; // USERMISSING=INCLUDE: user-missing values are valid
};

struct AnalysisPlan {
    Criteria fCriteria;
    MissingRules fMissing;
    std::optional<OneSamplePlan> fOneSample;
    std::optional<IndependentPlan> fIndependent;
    std::optional<RelatedPlan> fRelated;

    // Every field any test reads, ascending, once each.
    std::vector<int> Fields() const;
    // The decimals of each variable's display format in the output: its own,
    // or more where a one-sample test names a parameter in the field's units.
    // A given test value, cut point or parameter shows as written (up to 15
    // decimals; a standard deviation, which shows one decimal beyond its
    // field, one fewer); an estimate (a mean, a midpoint, a median) shows one
    // decimal beyond the data's own (DataDecimals), so its standard deviation
    // shows two. Dates and strings keep theirs.
    std::vector<int> DisplayDecimals(const Dataset& data) const;
};

// The most decimals that a value of `values` has as the shortest decimal
// that reads back to it (0 for whole numbers), at most 15.
int DataDecimals(std::span<const double> values);

// Builds the plan from a parsed NPTESTS command; `data` resolves the
// names. On an option that does not fit (a cut point for a nominal field, a
// frequency list of the wrong length, an unknown variable) returns nothing
// and sets `error` to a message that names the option.
std::optional<AnalysisPlan> MakeAnalysisPlan(const CommandSpec& command, const Dataset& data,
                                             std::string& error);
