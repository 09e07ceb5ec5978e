// One-sample Kolmogorov-Smirnov histogram. The distribution follows the
// condition key; its parameters are the condition's parameters 1 (and 2):
// normal mean and standard deviation, uniform minimum and maximum, the
// Poisson mean, the exponential mean. The fitted line carries the numbers in
// the data's own units, so that the chart can draw it; the parameter note
// shows them as the field shows its values (dates as dates; the standard
// deviation of a date field in days).
#include "backend/nonpar/KolmogorovSmirnov.h"

#include <algorithm>
#include <cmath>

#include "host/bp/BpCellText.h"
#include "host/chart/XDocument.h"
#include "host/vexa/VEXA_DataSource.h"

using Stats = NOPROutputStats;

KolmogorovSmirnov::KolmogorovSmirnov(FacSTDictionary* dictionary, NOPROutputStats* stats,
                                     const Stats::BaseHypothesisTest* test)
    : NOPRHistogramChart(dictionary, stats, test, true) {
    const std::string key = test ? test->fConditionKey : std::string();
    const char* title = "One-Sample Kolmogorov-Smirnov Test";
    if (key == "NormalDistribution_O_KolmogorovSmirnov_3") {
        fDistribution = kNormal;
        title = "One-Sample Kolmogorov-Smirnov Normal Test";
    } else if (key == "UniformDistribution_O_KolmogorovSmirnov_3") {
        fDistribution = kUniform;
        title = "One-Sample Kolmogorov-Smirnov Uniform Test";
    } else if (key == "PoissonDistribution_O_KolmogorovSmirnov_2") {
        fDistribution = kPoisson;
        title = "One-Sample Kolmogorov-Smirnov Poisson Test";
    } else if (key == "ExponentialDistribution_O_KolmogorovSmirnov_2") {
        fDistribution = kExponential;
        title = "One-Sample Kolmogorov-Smirnov Exponential Test";
    }
    fTitle = Text(title);
}

bool KolmogorovSmirnov::Parameter(size_t i, double& value) const {
    if (!fTest || i >= fTest->fConditionParameters.size() ||
        fTest->fConditionParameters[i].fValues.empty()) {
        return false;
    }
    value = fTest->fConditionParameters[i].fValues.front();
    return !CFIsSysmis(value) && std::isfinite(value);
}

void KolmogorovSmirnov::CustomizeTemplate(std::string& text) {
    struct Form {
        const char* fName;
        const char* fHeading;
        const char* fFirst;  // caption of the first parameter, or null
        const char* fSecond; // caption of the second parameter, or null for one
    };
    static const Form kForms[] = {
        {"", "", nullptr, nullptr},
        {"normal", "Normal Parameters", "Mean", "Std. Deviation"},
        {"uniform", "Uniform Parameters", "Minimum", "Maximum"},
        {"poisson", "Poisson Parameter", nullptr, nullptr},
        {"exponential", "Exponential Parameter", nullptr, nullptr},
    };
    const Form& form = kForms[fDistribution];
    const bool twoParameters = fDistribution == kNormal || fDistribution == kUniform;
    double first = 0.0;
    double second = 0.0;
    const bool known =
        fDistribution != kNone && Parameter(1, first) && (!twoParameters || Parameter(2, second));
    if (known) {
        ChartString p1;
        p1.assignDouble(first, 16);
        ChartString p2;
        p2.assignDouble(second, 16);
        std::string line = "<line><distributionStatistic distribution=\"" +
                           std::string(form.fName) + "\" parameter=\"" + p1.str() + "\" ";
        if (twoParameters) {
            line += "secondaryParameter=\"" + p2.str() + "\"";
        }
        line += "/><x variable=\"value\"/><y variable=\"count\"/></line>";
        InsertBefore(text, "</graph>", line);
    }
    ReplaceFirst(text, "xAxisLabel", TemplateText(FieldLabel(fFieldIndex)));
    ReplaceFirst(text, "yAxisLabel", TemplateText(Text("Frequency")));
    if (!known) {
        ReplaceFirst(text, "labelText", "");
        return;
    }
    const VEXA_Variable* variable = FieldVariable(fFieldIndex);
    const bool isDate = variable && VEXA_Format::IsDateTime(variable->GetFormat().fType);
    const int decimals = variable ? variable->GetFormat().fDecimals + 1 : 3;
    const auto valueText = [&](double value, bool spread) {
        if (isDate && !spread) {
            return TemplateText(ValueText(variable,
                                          NumericFormatCFToStat(value, variable->GetFormat().fType),
                                          BpDataValue::kValue));
        }
        return FixedText(value, decimals);
    };
    std::string note = TemplateText(Text(form.fHeading));
    if (form.fFirst) {
        note += "&#10;" + TemplateText(Text(form.fFirst)) + " = " + valueText(first, false);
        note += "&#10;" + TemplateText(Text(form.fSecond)) + " = " +
                valueText(second, fDistribution == kNormal);
    } else {
        note += "&#10;" + valueText(first, false);
    }
    ReplaceFirst(text, "labelText", note);
}

void KolmogorovSmirnov::CustomizeDocument(XDocument& document) {
    const XVariable value = document.getExternalGraph().getVariable("value", 0);
    const VEXA_Variable* variable = FieldVariable(fFieldIndex);
    value.setVexaVariable(variable);
    value.setFormatBasedOnVexaVariable(variable);
}
