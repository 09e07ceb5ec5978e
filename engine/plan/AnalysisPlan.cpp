// Building the analysis plan from a parsed NPTESTS command.
#include "engine/plan/AnalysisPlan.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "engine/data/Dataset.h"
#include "host/parser/NPTestsGrammar.h"
#include "host/parser/ParsedCommand.h"
#include "host/vexa/VEXA_DataSource.h"

namespace {
// A failure that names the option; thrown inside this file only and turned
// into the error text by MakeAnalysisPlan.
struct PlanError {
    std::string fText;
};

[[noreturn]] void Fail(std::string text) {
    throw PlanError{std::move(text)};
}

std::vector<const ParamObj*> Qualifiers(const ParamObj* keyword) {
    std::vector<const ParamObj*> list;
    if (keyword) {
        keyword->getStringQualList(nullptr, list);
    }
    return list;
}

const ParamObj* Find(const std::vector<const ParamObj*>& list, std::string_view name) {
    for (const ParamObj* q : list) {
        if (q->getParamName() == name) {
            return q;
        }
    }
    return nullptr;
}

// The one qualifier of a keyword of alternatives (EXPECTED=EQUAL), or null.
const ParamObj* Choice(const ParamObj* keyword) {
    const std::vector<const ParamObj*> list = Qualifiers(keyword);
    return list.empty() ? nullptr : list.front();
}

CommandValue ValueOf(const ParamObj::ListValue& value) {
    CommandValue out;
    out.fIsText = value.fIsText;
    out.fNumber = value.fNumber;
    out.fText = value.fText;
    return out;
}

std::vector<CommandValue> Values(const ParamObj* list) {
    std::vector<CommandValue> values;
    for (const ParamObj::ListValue& value : list->getValueList()) {
        values.push_back(ValueOf(value));
    }
    return values;
}

Compare CompareOf(const std::vector<const ParamObj*>& list) {
    const ParamObj* compare = Find(list, "COMPARE");
    if (!compare) {
        return Compare::kPairwise;
    }
    return compare->getText() == "STEPWISE" ? Compare::kStepwise
           : compare->getText() == "NONE"   ? Compare::kNone
                                            : Compare::kPairwise;
}

class Planner final {
public:
    Planner(const CommandSpec& command, const Dataset& data) : fCommand(command), fData(data) {}

    AnalysisPlan Make();

private:
    std::vector<int> Fields(const SubComObj& sub, const char* what);
    int Field(const std::string& name, const std::string& where);
    CategorySelection Selection(const ParamObj* keyword, const char* first, const char* where,
                                const std::vector<int>& fields);
    CutPoint Cut(const ParamObj* keyword, CutPoint::Kind fallback);
    void CheckValues(const std::vector<CommandValue>& values, const std::vector<int>& fields,
                     const std::string& where);
    void RequireOrdered(const std::vector<int>& fields, const std::string& where);
    std::vector<CommandValue> FileCategories(int field) const;

    OneSamplePlan OneSample(const SubComObj& sub);
    IndependentPlan Independent(const SubComObj& sub);
    RelatedPlan Related(const SubComObj& sub);

    const CommandSpec& fCommand;
    const Dataset& fData;
    bool fIncludeUserMissing = false;
};

int Planner::Field(const std::string& name, const std::string& where) {
    const int index = fData.FindVariable(name);
    if (index < 0) {
        Fail(where + ": the variable " + name + " is not in the data");
    }
    return index;
}

std::vector<int> Planner::Fields(const SubComObj& sub, const char* what) {
    const ParamObj* test = sub.getParamObj("TEST");
    std::vector<std::string> names;
    if (!test || !test->getVarList(names) || names.empty()) {
        Fail(sub.getName() + " needs TEST(" + what + ")");
    }
    std::vector<int> fields;
    for (const std::string& name : names) {
        const int index = Field(name, sub.getName() + " TEST");
        if (std::find(fields.begin(), fields.end(), index) == fields.end()) {
            fields.push_back(index);
        }
    }
    return fields;
}

void Planner::CheckValues(const std::vector<CommandValue>& values, const std::vector<int>& fields,
                          const std::string& where) {
    // A list may serve numeric and string fields at once; each field takes the
    // values of its type and needs at least one.
    for (int field : fields) {
        const Variable& variable = fData.GetVariable(field);
        const bool fits = std::any_of(values.begin(), values.end(), [&](const CommandValue& v) {
            return v.fIsText == variable.IsString();
        });
        if (!values.empty() && !fits) {
            Fail(where + ": " + variable.fName + " is a " +
                 (variable.IsString() ? "string variable; quote its values ('a')"
                                      : "numeric variable; give numbers"));
        }
    }
}

CategorySelection Planner::Selection(const ParamObj* keyword, const char* first, const char* where,
                                     const std::vector<int>& fields) {
    CategorySelection selection;
    const ParamObj* choice = Choice(keyword);
    if (!choice || choice->getParamName() == first) {
        return selection;
    }
    selection.fFirst = false;
    selection.fList = Values(choice);
    std::vector<int> categorical;
    for (int field : fields) {
        if (fData.GetVariable(field).IsCategorical() || fData.GetVariable(field).IsString()) {
            categorical.push_back(field);
        }
    }
    CheckValues(selection.fList, categorical, where);
    return selection;
}

CutPoint Planner::Cut(const ParamObj* keyword, CutPoint::Kind fallback) {
    CutPoint cut;
    cut.fKind = fallback;
    const ParamObj* cutpoint = Choice(keyword); // CUTPOINT
    const ParamObj* choice = Choice(cutpoint);
    if (!choice) {
        return cut;
    }
    const std::string& name = choice->getParamName();
    if (name == "VALUE") {
        cut.fKind = CutPoint::kValue;
        cut.fValue = choice->getNumberValue();
    } else if (name == "MIDPOINT") {
        cut.fKind = CutPoint::kMidpoint;
    } else if (name == "SAMPLEMEDIAN") {
        cut.fKind = CutPoint::kSampleMedian;
    } else if (name == "SAMPLEMEAN") {
        cut.fKind = CutPoint::kSampleMean;
    }
    return cut;
}

void Planner::RequireOrdered(const std::vector<int>& fields, const std::string& where) {
    for (int field : fields) {
        const Variable& variable = fData.GetVariable(field);
        if (variable.IsString() || variable.fLevel == MeasureLevel::kNominal) {
            Fail(where + " needs a continuous or ordinal field; " + variable.fName + " is nominal");
        }
    }
}

// The distinct valid values of a field over the whole file, ascending (texts
// in byte order).
std::vector<CommandValue> Planner::FileCategories(int field) const {
    const Column& column = fData.GetColumn(field);
    const auto valid = [&](std::size_t row) {
        return !fData.IsSysMissing(field, row) &&
               (fIncludeUserMissing || !fData.IsUserMissing(field, row));
    };
    std::vector<CommandValue> categories;
    if (column.fVariable.IsString()) {
        std::set<std::string> seen;
        for (std::size_t row = 0; row < column.fTexts.size(); ++row) {
            if (valid(row)) {
                seen.insert(column.fTexts[row]);
            }
        }
        for (const std::string& text : seen) {
            categories.push_back({true, 0, text});
        }
        return categories;
    }
    std::set<double> seen;
    for (std::size_t row = 0; row < column.fNumbers.size(); ++row) {
        if (valid(row)) {
            seen.insert(column.fNumbers[row]);
        }
    }
    for (double value : seen) {
        categories.push_back({false, value, {}});
    }
    return categories;
}

OneSamplePlan Planner::OneSample(const SubComObj& sub) {
    OneSamplePlan plan;
    plan.fFields = Fields(sub, "fields");
    std::vector<int> numeric;
    for (int field : plan.fFields) {
        if (!fData.GetVariable(field).IsString()) {
            numeric.push_back(field);
        }
    }
    if (const ParamObj* keyword = sub.getParamObj("CHISQUARE")) {
        ChiSquareOptions options;
        const ParamObj* expected = Choice(Find(Qualifiers(keyword), "EXPECTED"));
        if (expected && expected->getParamName() == "CUSTOM") {
            options.fEqual = false;
            const std::vector<const ParamObj*> custom = Qualifiers(expected);
            const ParamObj* frequencies = Find(custom, "FREQUENCIES");
            if (!frequencies) {
                Fail("CHISQUARE EXPECTED=CUSTOM needs FREQUENCIES=...");
            }
            for (const CommandValue& value : Values(frequencies)) {
                if (value.fIsText || !(value.fNumber > 0)) {
                    Fail("CHISQUARE FREQUENCIES: each frequency must be a number greater than 0");
                }
                options.fFrequencies.push_back(value.fNumber);
            }
            if (const ParamObj* categories = Find(custom, "CATEGORIES")) {
                options.fCategories = Values(categories);
                CheckValues(options.fCategories, plan.fFields, "CHISQUARE CATEGORIES");
                if (options.fCategories.size() != options.fFrequencies.size()) {
                    Fail("CHISQUARE: FREQUENCIES gives " +
                         std::to_string(options.fFrequencies.size()) +
                         " frequencies and CATEGORIES " +
                         std::to_string(options.fCategories.size()) +
                         " categories; give one frequency per category");
                }
            } else {
                // The same categories in every split, so that a split
                // without cases of one still tests it.
                for (int field : plan.fFields) {
                    std::vector<CommandValue>& categories = options.fFieldCategories[field];
                    categories = FileCategories(field);
                    const std::size_t count = categories.size();
                    if (count != options.fFrequencies.size()) {
                        Fail("CHISQUARE FREQUENCIES gives " +
                             std::to_string(options.fFrequencies.size()) + " frequencies, but " +
                             fData.GetVariable(field).fName + " has " + std::to_string(count) +
                             " categories; give one per category, or CATEGORIES=...");
                    }
                }
            }
        }
        plan.fChiSquare = options;
    }
    if (const ParamObj* keyword = sub.getParamObj("BINOMIAL")) {
        const std::vector<const ParamObj*> list = Qualifiers(keyword);
        BinomialOptions options;
        if (const ParamObj* p = Find(list, "TESTVALUE")) {
            options.fTestValue = p->getNumberValue();
        }
        options.fSuccess = Selection(Find(list, "SUCCESSCATEGORICAL"), "FIRST",
                                     "BINOMIAL SUCCESSCATEGORICAL", plan.fFields);
        const ParamObj* continuous = Find(list, "SUCCESSCONTINUOUS");
        options.fCut = Cut(continuous, CutPoint::kMidpoint);
        if (continuous && numeric.empty()) {
            Fail("BINOMIAL SUCCESSCONTINUOUS: a cut point needs a numeric field; every TEST field "
                 "is a string");
        }
        options.fClopperPearson = Find(list, "CLOPPER_PEARSON") != nullptr;
        options.fJeffreys = Find(list, "JEFFREYS") != nullptr;
        options.fLikelihood = Find(list, "LIKELIHOOD") != nullptr;
        plan.fBinomial = options;
    }
    if (const ParamObj* keyword = sub.getParamObj("RUNS")) {
        const std::vector<const ParamObj*> list = Qualifiers(keyword);
        RunsOptions options;
        options.fGroups = Selection(Find(list, "GROUPCATEGORICAL"), "SAMPLE",
                                    "RUNS GROUPCATEGORICAL", plan.fFields);
        if (!options.fGroups.fFirst && options.fGroups.fList.size() < 2) {
            Fail("RUNS GROUPCATEGORICAL=LIST needs two values, one for each group");
        }
        const ParamObj* continuous = Find(list, "GROUPCONTINUOUS");
        options.fCut = Cut(continuous, CutPoint::kSampleMedian);
        if (continuous && numeric.empty()) {
            Fail("RUNS GROUPCONTINUOUS: a cut point needs a numeric field; every TEST field is a "
                 "string");
        }
        plan.fRuns = options;
    }
    if (const ParamObj* keyword = sub.getParamObj("KOLMOGOROV_SMIRNOV")) {
        RequireOrdered(plan.fFields, "KOLMOGOROV_SMIRNOV");
        // The procedure has read the same request (and accepted it).
        KolmogorovRequest request;
        ReadKolmogorovRequest(*keyword, nullptr, request);
        KolmogorovSmirnovOptions options;
        if (request.fSamples) {
            options.fMCSamples = request.fSamples->getIntegerValue();
        }
        if (request.fLevel) {
            options.fMCCILevel = request.fLevel->getNumberValue();
        }
        auto read = [&](const char* name, const KolmogorovRequest::Distribution& asked,
                        KSDistribution& dist, const char* p1, const char* p2) {
            if (!asked.fNamed) {
                return;
            }
            dist.fRequested = true;
            dist.fMonteCarlo = asked.fMonteCarlo;
            if (!asked.fCustom) {
                dist.fParameters =
                    asked.fMonteCarlo ? KSDistribution::kLilliefors : KSDistribution::kEstimated;
                return;
            }
            dist.fParameters = KSDistribution::kGiven;
            const std::vector<const ParamObj*> params = Qualifiers(asked.fCustom);
            const ParamObj* first = Find(params, p1);
            const ParamObj* second = p2 ? Find(params, p2) : nullptr;
            if (!first || (p2 && !second)) {
                Fail(std::string("KOLMOGOROV_SMIRNOV ") + name + "(CUSTOM(...)) needs " + p1 +
                     (p2 ? std::string(" and ") + p2 : std::string()));
            }
            dist.fParam1 = first->getNumberValue();
            dist.fParam2 = second ? second->getNumberValue() : 0;
        };
        read("NORMAL", request.fNormal, options.fNormal, "MEAN", "SD");
        read("UNIFORM", request.fUniform, options.fUniform, "MIN", "MAX");
        read("EXPONENTIAL", request.fExponential, options.fExponential, "MEAN", nullptr);
        read("POISSON", request.fPoisson, options.fPoisson, "MEAN", nullptr);
        if (options.fUniform.fRequested && options.fUniform.fParameters == KSDistribution::kGiven &&
            !(options.fUniform.fParam1 < options.fUniform.fParam2)) {
            Fail("KOLMOGOROV_SMIRNOV UNIFORM(CUSTOM(MIN= MAX=)): MIN must be less than MAX");
        }
        if (!options.fNormal.fRequested && !options.fUniform.fRequested &&
            !options.fExponential.fRequested && !options.fPoisson.fRequested) {
            // The normal distribution with the Lilliefors significance (and
            // no Monte Carlo significance: SAMPLE does not ask for it).
            options.fNormal.fRequested = true;
            options.fNormal.fParameters = KSDistribution::kLilliefors;
        }
        plan.fKolmogorovSmirnov = options;
    }
    if (const ParamObj* keyword = sub.getParamObj("WILCOXON")) {
        RequireOrdered(plan.fFields, "WILCOXON");
        WilcoxonOneSampleOptions options;
        if (const ParamObj* value = Find(Qualifiers(keyword), "TESTVALUE")) {
            options.fTestValue = value->getNumberValue();
        }
        plan.fWilcoxon = options;
    }
    plan.fChooseTests = !plan.fChiSquare && !plan.fBinomial && !plan.fRuns &&
                        !plan.fKolmogorovSmirnov && !plan.fWilcoxon;
    return plan;
}

IndependentPlan Planner::Independent(const SubComObj& sub) {
    IndependentPlan plan;
    plan.fFields = Fields(sub, "fields");
    const ParamObj* group = sub.getParamObj("GROUP");
    if (!group || group->getVarName().empty()) {
        Fail("INDEPENDENT needs GROUP(field), the field that forms the groups");
    }
    plan.fGroupField = Field(group->getVarName(), "INDEPENDENT GROUP");
    // The groups are the categories of the grouping field; a continuous field
    // has none, and every test would have no cases.
    if (!fData.GetVariable(plan.fGroupField).IsCategorical() &&
        !fData.GetVariable(plan.fGroupField).IsString()) {
        Fail("INDEPENDENT GROUP: " + group->getVarName() +
             " is continuous; the groups come from a nominal or ordinal field (give its "
             "measurement level in the dictionary)");
    }
    if (std::find(plan.fFields.begin(), plan.fFields.end(), plan.fGroupField) !=
        plan.fFields.end()) {
        Fail("INDEPENDENT: the grouping field " + group->getVarName() + " is also a TEST field");
    }
    plan.fMannWhitney = sub.getParamObj("MANN_WHITNEY") != nullptr;
    plan.fWaldWolfowitz = sub.getParamObj("WALD_WOLFOWITZ") != nullptr;
    plan.fKolmogorovSmirnov = sub.getParamObj("KOLMOGOROV_SMIRNOV") != nullptr;
    plan.fHodgesLehmann = sub.getParamObj("HODGES_LEHMAN") != nullptr;
    if (const ParamObj* keyword = sub.getParamObj("MOSES")) {
        MosesOptions options;
        if (const ParamObj* trim = Find(Qualifiers(keyword), "TRIMOUTLIERS");
            trim && !trim->isStringValueCase()) {
            options.fTrimFromSample = false;
            options.fTrim = trim->getIntegerValue();
        }
        plan.fMoses = options;
    }
    if (const ParamObj* keyword = sub.getParamObj("KRUSKAL_WALLIS")) {
        plan.fKruskalWallis = KruskalWallisOptions{CompareOf(Qualifiers(keyword))};
    }
    if (const ParamObj* keyword = sub.getParamObj("MEDIAN")) {
        const std::vector<const ParamObj*> list = Qualifiers(keyword);
        MedianOptions options;
        if (const ParamObj* value = Find(list, "TESTVALUE"); value && !value->isStringValueCase()) {
            options.fSampleMedian = false;
            options.fValue = value->getNumberValue();
        }
        options.fCompare = CompareOf(list);
        plan.fMedian = options;
    }
    if (const ParamObj* keyword = sub.getParamObj("JONCKHEERE_TERPSTRA")) {
        const std::vector<const ParamObj*> list = Qualifiers(keyword);
        JonckheereOptions options;
        if (const ParamObj* order = Find(list, "ORDER")) {
            options.fAscending = order->getText() != "DESCENDING";
        }
        options.fCompare = CompareOf(list);
        plan.fJonckheere = options;
    }
    plan.fChooseTests = !plan.fMannWhitney && !plan.fWaldWolfowitz && !plan.fKolmogorovSmirnov &&
                        !plan.fHodgesLehmann && !plan.fMoses && !plan.fKruskalWallis &&
                        !plan.fMedian && !plan.fJonckheere;
    return plan;
}

RelatedPlan Planner::Related(const SubComObj& sub) {
    RelatedPlan plan;
    // A field named twice would be compared with itself: every difference
    // zero, every pair of ranks tied.
    const ParamObj* test = sub.getParamObj("TEST");
    std::vector<std::string> names;
    if (test && test->getVarList(names)) {
        std::vector<int> seen;
        for (const std::string& name : names) {
            const int index = Field(name, "RELATED TEST");
            if (std::find(seen.begin(), seen.end(), index) != seen.end()) {
                Fail("RELATED TEST names " + fData.GetVariable(index).fName +
                     " twice; the related tests compare different fields");
            }
            seen.push_back(index);
        }
    }
    plan.fFields = Fields(sub, "at least two fields");
    if (plan.fFields.size() < 2) {
        Fail("RELATED TEST names 1 field; the related tests compare two or more fields");
    }
    plan.fSign = sub.getParamObj("SIGN") != nullptr;
    plan.fWilcoxon = sub.getParamObj("WILCOXON") != nullptr;
    plan.fMarginalHomogeneity = sub.getParamObj("MARGINAL_HOMOGENEITY") != nullptr;
    plan.fHodgesLehmann = sub.getParamObj("HODGES_LEHMAN") != nullptr;
    if (const ParamObj* keyword = sub.getParamObj("MCNEMAR")) {
        plan.fMcNemar = McNemarOptions{Selection(Find(Qualifiers(keyword), "SUCCESS"), "FIRST",
                                                 "MCNEMAR SUCCESS", plan.fFields)};
    }
    if (const ParamObj* keyword = sub.getParamObj("COCHRAN")) {
        const std::vector<const ParamObj*> list = Qualifiers(keyword);
        plan.fCochran = CochranOptions{
            Selection(Find(list, "SUCCESS"), "FIRST", "COCHRAN SUCCESS", plan.fFields),
            CompareOf(list)};
    }
    if (const ParamObj* keyword = sub.getParamObj("FRIEDMAN")) {
        plan.fFriedman = FriedmanOptions{CompareOf(Qualifiers(keyword))};
    }
    if (const ParamObj* keyword = sub.getParamObj("KENDALL")) {
        plan.fKendall = FriedmanOptions{CompareOf(Qualifiers(keyword))};
    }
    // The two-field tests compare the first field with the second; with more
    // fields there is no pair to compare.
    const std::pair<const char*, bool> twoField[] = {
        {"SIGN", plan.fSign},
        {"WILCOXON", plan.fWilcoxon},
        {"MCNEMAR", plan.fMcNemar.has_value()},
        {"MARGINAL_HOMOGENEITY", plan.fMarginalHomogeneity},
        {"HODGES_LEHMAN", plan.fHodgesLehmann}};
    for (const auto& [keyword, requested] : twoField) {
        if (requested && plan.fFields.size() != 2) {
            Fail(std::string("RELATED ") + keyword + " compares exactly two fields; TEST names " +
                 std::to_string(plan.fFields.size()) + " fields");
        }
    }
    plan.fChooseTests = !plan.fSign && !plan.fWilcoxon && !plan.fMarginalHomogeneity &&
                        !plan.fHodgesLehmann && !plan.fMcNemar && !plan.fCochran &&
                        !plan.fFriedman && !plan.fKendall;
    return plan;
}

AnalysisPlan Planner::Make() {
    AnalysisPlan plan;
    if (const SubComObj* criteria = fCommand.getSubComObj("CRITERIA")) {
        if (const ParamObj* alpha = criteria->getParamObj("ALPHA")) {
            plan.fCriteria.fAlpha = alpha->getNumberValue();
        }
        if (const ParamObj* level = criteria->getParamObj("CILEVEL")) {
            plan.fCriteria.fCILevel = level->getNumberValue();
        }
    }
    if (const SubComObj* missing = fCommand.getSubComObj("MISSING")) {
        if (const ParamObj* scope = missing->getParamObj("SCOPE")) {
            plan.fMissing.fListwise = scope->getText() == "LISTWISE";
        }
        if (const ParamObj* user = missing->getParamObj("USERMISSING")) {
            plan.fMissing.fIncludeUserMissing = user->getText() == "INCLUDE";
        }
    }
    fIncludeUserMissing = plan.fMissing.fIncludeUserMissing;
    if (const SubComObj* sub = fCommand.getSubComObj("ONESAMPLE")) {
        plan.fOneSample = OneSample(*sub);
    }
    if (const SubComObj* sub = fCommand.getSubComObj("INDEPENDENT")) {
        plan.fIndependent = Independent(*sub);
    }
    if (const SubComObj* sub = fCommand.getSubComObj("RELATED")) {
        plan.fRelated = Related(*sub);
    }
    if (!plan.fOneSample && !plan.fIndependent && !plan.fRelated) {
        Fail("the command asks for no test: give /ONESAMPLE, /INDEPENDENT or /RELATED");
    }
    return plan;
}
} // namespace

std::vector<int> AnalysisPlan::Fields() const {
    std::vector<int> fields;
    if (fOneSample) {
        fields.insert(fields.end(), fOneSample->fFields.begin(), fOneSample->fFields.end());
    }
    if (fIndependent) {
        fields.insert(fields.end(), fIndependent->fFields.begin(), fIndependent->fFields.end());
        fields.push_back(fIndependent->fGroupField);
    }
    if (fRelated) {
        fields.insert(fields.end(), fRelated->fFields.begin(), fRelated->fFields.end());
    }
    std::sort(fields.begin(), fields.end());
    fields.erase(std::unique(fields.begin(), fields.end()), fields.end());
    return fields;
}

namespace {
constexpr int kMostDisplayDecimals = 15;

// The fewest decimals that show `value` as the number it is (at most 15).
int ExactDecimals(double value) {
    double scale = 1;
    for (int k = 0; k < kMostDisplayDecimals; ++k, scale *= 10) {
        if (!std::isfinite(value) || std::nearbyint(value * scale) / scale == value) {
            return k;
        }
    }
    return kMostDisplayDecimals;
}
} // namespace

int DataDecimals(std::span<const double> values) {
    int decimals = 0;
    double scale = 1;
    for (double value : values) {
        while (decimals < kMostDisplayDecimals && value != kSysMis && std::isfinite(value) &&
               std::nearbyint(value * scale) / scale != value) {
            ++decimals;
            scale *= 10;
        }
    }
    return decimals;
}

std::vector<int> AnalysisPlan::DisplayDecimals(const Dataset& data) const {
    std::vector<int> decimals(static_cast<std::size_t>(data.VariableCount()));
    for (int i = 0; i < data.VariableCount(); ++i) {
        decimals[static_cast<std::size_t>(i)] = data.GetVariable(i).fFormatDecimals;
    }
    if (!fOneSample) {
        return decimals;
    }
    const OneSamplePlan& plan = *fOneSample;
    for (int field : plan.fFields) {
        const Variable& variable = data.GetVariable(field);
        if (variable.IsString() || variable.fType == StorageType::kDate ||
            VEXA_Format::IsDateTime(variable.fFormatType)) {
            continue;
        }
        int& shown = decimals[static_cast<std::size_t>(field)];
        const int estimate =
            std::min(kMostDisplayDecimals, DataDecimals(data.GetColumn(field).fNumbers) + 1);
        const auto need = [&](int places) {
            shown = std::max(shown, std::min(places, kMostDisplayDecimals));
        };
        const auto cut = [&](const CutPoint& cut) {
            need(cut.fKind == CutPoint::kValue ? ExactDecimals(cut.fValue) : estimate);
        };
        const bool continuous = !variable.IsCategorical();
        if (plan.fWilcoxon) {
            need(ExactDecimals(plan.fWilcoxon->fTestValue));
        }
        if (plan.fBinomial && continuous) {
            cut(plan.fBinomial->fCut);
        }
        if (plan.fRuns && continuous) {
            cut(plan.fRuns->fCut);
        }
        if (plan.fChooseTests && continuous) {
            need(estimate); // the normal distribution, estimated
        }
        if (plan.fKolmogorovSmirnov) {
            const KolmogorovSmirnovOptions& ks = *plan.fKolmogorovSmirnov;
            for (const KSDistribution* d :
                 {&ks.fNormal, &ks.fUniform, &ks.fExponential, &ks.fPoisson}) {
                if (!d->fRequested) {
                    continue;
                }
                if (d->fParameters != KSDistribution::kGiven) {
                    // The uniform's minimum and maximum are values of the data.
                    need(d == &ks.fUniform ? estimate - 1 : estimate);
                    continue;
                }
                need(ExactDecimals(d->fParam1));
                if (d == &ks.fNormal) {
                    need(ExactDecimals(d->fParam2) - 1);
                } else if (d == &ks.fUniform) {
                    need(ExactDecimals(d->fParam2));
                }
            }
        }
    }
    return decimals;
}

std::optional<AnalysisPlan> MakeAnalysisPlan(const CommandSpec& command, const Dataset& data,
                                             std::string& error) {
    try {
        return Planner(command, data).Make();
    } catch (const PlanError& e) {
        error = e.fText;
        return std::nullopt;
    }
}
