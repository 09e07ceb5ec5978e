// Moses box plot: the first group is the control group. A derived variable
// "mosesGroup" is 0 for the rows of the control group's category and 1 for
// the others; the boxes are coloured by it and the cases labelled.
#include "backend/nonpar/IMoses.h"

#include "host/chart/ViZVisualization.h"
#include "host/chart/XDocument.h"

IMoses::IMoses(FacSTDictionary* dictionary, NOPROutputStats* stats,
               const NOPROutputStats::HTIMoses* test)
    : Boxplot(dictionary, stats, test, test ? &test->fBoxPlot : nullptr,
              "Independent-Samples Moses Test of Extreme Reaction") {}

void IMoses::CustomizeDocument(XDocument& document) {
    const ViZVisualization visualization = document.getVisualization();
    const XVariable label = visualization.findVariable("Label");
    const XVariable category = visualization.findVariable("Category");
    const bool groups = fBoxPlot->fGroupCount > 1 || fBoxPlot->fGroups.size() > 1;
    if (!label || !category || !groups || fBoxPlot->fGroups.empty()) {
        return;
    }
    const ViZElement box = visualization.getGraph(0).getElement("schema");
    box.setAesthetic("label", "Label");
    ChartString control;
    control.assignDouble(CategoryValue(fGroupField, fBoxPlot->fGroups.front().fGroupIndex), 17);
    const ViZDerivedVariable derived = visualization.addDerivedVariable("mosesGroup");
    derived.setSource("Category");
    derived.setRule("match", control.str());
    derived.setCategorical(true);
    box.setAesthetic("color", "mosesGroup");
    const ViZLegend legend = visualization.addFirstLegend("mosesLegend");
    legend.setVariable("mosesGroup");
    legend.setAesthetic("color");
    ChartString controlText = Text("NPAR_BOXPLOT_CONTROLGROUP");
    controlText.replaceSubstring("\\n", "\n");
    ChartString experimentalText = Text("NPAR_BOXPLOT_EXPERIMENTALGROUP");
    experimentalText.replaceSubstring("\\n", "\n");
    derived.addRelabel(0, controlText);
    derived.addRelabel(1, experimentalText);
}
