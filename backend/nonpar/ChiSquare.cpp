// Chi-square chart. The frequency table has one row per category: the
// category's position among the field's categories, the observed and the
// hypothesized frequency (columns found by the names "Category", "Observed"
// and "Hypothesized" or "Expected", else in that order); a category of -1
// (values outside the categories) is skipped. "graphSource" holds two rows
// per category, "Type" 0 (observed) and 1 (hypothesized), whose "Frequency"
// is drawn; both carry "Observed", "Hypothesized" and "Residual" (observed
// minus hypothesized) for the popup. "Category" is relabelled with the
// categories' texts.
#include "backend/nonpar/ChiSquare.h"

#include <algorithm>
#include <cmath>

#include "host/chart/VarDataProcessor.h"
#include "host/chart/XDocument.h"
#include "host/xml/XMLText.h"

using Stats = NOPROutputStats;

namespace {

const std::string kSource = "graphSource";

int ColumnOf(const NumericTableData& table, std::initializer_list<const char*> names,
             int fallback) {
    for (size_t i = 0; i < table.fColumnNames.size(); ++i) {
        for (const char* name : names) {
            if (table.fColumnNames[i] == name) {
                return static_cast<int>(i);
            }
        }
    }
    return fallback;
}

} // namespace

ChiSquare::ChiSquare(FacSTDictionary* dictionary, NOPROutputStats* stats,
                     const Stats::HTOChiSquare* test)
    : NOPRChartContext(dictionary, stats), fTest(test) {
    fTitle = Text("One-Sample Chi-Square Test");
    const std::vector<int> fields = TestFields(test);
    fField = fields.empty() ? -1 : fields.front();
}

ChiSquare::~ChiSquare() = default;

bool ChiSquare::MakeChart(const std::string& suffix, bool appendSuffix) {
    if (!fTest) {
        return false;
    }
    const NumericTableData& table = fTest->fTable;
    const size_t category = static_cast<size_t>(ColumnOf(table, {"Category"}, 0));
    const size_t observed = static_cast<size_t>(ColumnOf(table, {"Observed"}, 1));
    const size_t expected = static_cast<size_t>(ColumnOf(table, {"Hypothesized", "Expected"}, 2));
    VarDataProcessor data;
    data.AddDataSource(kSource, 0);
    for (const char* name :
         {"Category", "Frequency", "Observed", "Hypothesized", "Type", "Residual"}) {
        data.AddVariable(kSource, name, nullptr);
    }
    std::vector<int> categories;
    int row = 0;
    for (const std::vector<double>& numbers : table.fRows) {
        if (numbers.size() <= std::max({category, observed, expected})) {
            continue;
        }
        const int code = TruncateToInt(numbers[category]);
        if (code == -1 || CFIsSysmis(numbers[category])) {
            continue;
        }
        categories.push_back(code);
        const double o = numbers[observed];
        const double e = numbers[expected];
        const double residual = CFIsSysmis(o) || CFIsSysmis(e) ? kCFSysmis : o - e;
        for (int type = 0; type < 2; ++type) {
            data.SetVariableValue(kSource, "Category", row, code);
            data.SetVariableValue(kSource, "Frequency", row, type == 0 ? o : e);
            data.SetVariableValue(kSource, "Observed", row, o);
            data.SetVariableValue(kSource, "Hypothesized", row, e);
            data.SetVariableValue(kSource, "Type", row, type);
            data.SetVariableValue(kSource, "Residual", row, residual);
            ++row;
        }
    }
    if (row == 0) {
        return false;
    }
    std::string text = XDocument::fetchTemplateFile("NPARChiSquareTest.viztemplate");
    if (text.empty()) {
        return false;
    }
    const std::string fieldLabel = TemplateText(FieldLabel(fField));
    ReplaceFirst(text, "titleText", TemplateText(fTitle));
    ReplaceFirst(text, "xAxisText", fieldLabel);
    ReplaceFirst(text, "yAxisText", TemplateText(Text("Frequency")));
    ReplaceFirst(text, "legendTitle", TemplateText(Text("Frequency")));
    const size_t popup = text.find("<popup");
    if (popup != std::string::npos && popup + 7 <= text.size()) {
        const std::string tokens = "tokenTemplate=\"" + fieldLabel + "=$[category]$&#10;" +
                                   TemplateText(Text("Observed")) + "=$[observed]$&#10;" +
                                   TemplateText(Text("Hypothesized")) + "=$[hypothesized]$&#10;" +
                                   TemplateText(Text("E61605")) + "=$[residual]$\" ";
        text.insert(popup + 7, tokens);
    }
    XDocument document(text);
    document.setEditor(2);
    document.setLanguage();
    document.SetChartData(&data);
    const XGraph graph = document.getExternalGraph();
    const XVariable type = graph.getVariable("Type", 0);
    type.addRelabel(0, Text("Observed"));
    type.addRelabel(1, Text("Hypothesized"));
    const XVariable categoryVariable = graph.getVariable("Category", 0);
    for (int code : categories) {
        categoryVariable.addRelabel(code, CategoryLabel(fField, code));
    }
    return Send(document, nullptr, suffix, appendSuffix, true);
}
