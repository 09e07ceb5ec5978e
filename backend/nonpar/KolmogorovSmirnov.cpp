// One-sample Kolmogorov-Smirnov histogram. The distribution follows the
// condition key; its parameters are the condition's parameters 1 (and 2):
// normal mean and standard deviation, uniform minimum and maximum, the
// Poisson mean, the exponential mean. The fitted line carries the numbers in
// the data's own units, so that the chart can draw it; a date field's
// location parameters (normal mean, uniform minimum and maximum, Poisson and
// exponential mean) are written there as date-time values
// ("yyyy-MM-ddThh:mm:ss", from days since 1970-01-01), its standard
// deviation as days. The parameter note shows them as the field shows its
// values (dates as dates; the standard deviation of a date field in days).
#include "backend/nonpar/KolmogorovSmirnov.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "host/bp/BpCellText.h"
#include "host/chart/XDocument.h"
#include "host/vexa/VEXA_DataSource.h"

using Stats = NOPROutputStats;

namespace {

// Days since 1970-01-01 as "yyyy-MM-ddThh:mm:ss" (seconds rounded).
std::string DateTimeText(double days) {
    using namespace std::chrono;
    const double wholeDays = std::floor(days);
    const auto seconds = static_cast<long long>(std::llround((days - wholeDays) * 86400.0));
    const sys_days day{std::chrono::days{static_cast<long long>(wholeDays)}};
    const year_month_day date{day + std::chrono::days{seconds / 86400}};
    const long long clock = seconds % 86400;
    char text[48];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02lld:%02lld:%02lld",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), clock / 3600, clock / 60 % 60, clock % 60);
    return text;
}

} // namespace

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
    const VEXA_Variable* variable = FieldVariable(fFieldIndex);
    const bool isDate = variable && VEXA_Format::IsDateTime(variable->GetFormat().fType);
    // Dates within the years a calendar can name; others stay numbers.
    const auto parameterText = [&](double value, bool spread) {
        if (isDate && !spread && std::abs(value) < 3.0e6) {
            return DateTimeText(value);
        }
        ChartString number;
        return number.assignDouble(value, 16).str();
    };
    if (known) {
        std::string line = "<line><distributionStatistic distribution=\"" +
                           std::string(form.fName) + "\" parameter=\"" +
                           parameterText(first, false) + "\" ";
        if (twoParameters) {
            line +=
                "secondaryParameter=\"" + parameterText(second, fDistribution == kNormal) + "\"";
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
