// Chi-square chart. The frequency table is laid out as host/cf/CFTableLayout.h
// says: the observed counts in the row "Observed", the expected ones in the
// row "Hypothesized" (rows 0 and 1 when the names are missing), one column
// per category named by the category's position; a column whose name is no
// position (values outside the categories, written -1) is skipped.
// "graphSource" holds two rows per category, "Type" 0 (observed) and 1
// (hypothesized), whose "Frequency" is drawn; both carry "Observed",
// "Hypothesized" and "Residual" (observed minus hypothesized) for the popup.
// "Category" is the category's value, relabelled with its text.
#include "backend/nonpar/ChiSquare.h"

#include <algorithm>
#include <cmath>

#include "host/cf/CFTableLayout.h"
#include "host/chart/VarDataProcessor.h"
#include "host/chart/XDocument.h"
#include "host/xml/XMLText.h"

using Stats = NOPROutputStats;

namespace {

const std::string kSource = "graphSource";

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
    using namespace CFTableLayout;
    const size_t observedRow = IndexOfName(table.fRowNames, kObservedRowName, kObservedRow);
    const size_t expectedRow = IndexOfName(table.fRowNames, kHypothesizedRowName, kHypothesizedRow);
    if (std::max(observedRow, expectedRow) >= table.fRows.size()) {
        return false;
    }
    const std::vector<double>& observedCounts = table.fRows[observedRow];
    const std::vector<double>& expectedCounts = table.fRows[expectedRow];
    VarDataProcessor data;
    data.AddDataSource(kSource, 0);
    for (const char* name :
         {"Category", "Frequency", "Observed", "Hypothesized", "Type", "Residual"}) {
        data.AddVariable(kSource, name, nullptr);
    }
    std::vector<double> categories;
    std::vector<int> positions;
    int row = 0;
    const size_t columns = std::min(observedCounts.size(), expectedCounts.size());
    for (size_t column = 0; column < columns; ++column) {
        const int position = column < table.fColumnNames.size()
                                 ? PositionOfName(table.fColumnNames[column])
                                 : static_cast<int>(column);
        if (position < 0) {
            continue;
        }
        const double value = CategoryValue(fField, position);
        categories.push_back(value);
        positions.push_back(position);
        const double o = observedCounts[column];
        const double e = expectedCounts[column];
        const double residual = CFIsSysmis(o) || CFIsSysmis(e) ? kCFSysmis : o - e;
        for (int type = 0; type < 2; ++type) {
            data.SetVariableValue(kSource, "Category", row, value);
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
    for (size_t k = 0; k < categories.size(); ++k) {
        categoryVariable.addRelabel(categories[k], CategoryLabel(fField, positions[k]));
    }
    return Send(document, nullptr, suffix, appendSuffix, true);
}
