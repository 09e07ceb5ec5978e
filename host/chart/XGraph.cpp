// XGraph: frame sizes on `<outerFrame>`, titles on the visualization.
#include "host/chart/XGraph.h"

#include "host/chart/ViZVisualization.h"

XVariable XGraph::getVariable(std::string_view name, int) const {
    if (!fNode) {
        return {};
    }
    return ViZVisualization(fVisualization).findVariable(name);
}

bool XGraph::setFrame(const char* attribute, double value) const {
    if (!fNode) {
        return false;
    }
    pugi::xml_node frame = fNode.child("outerFrame");
    if (!frame) {
        frame = fNode.prepend_child("outerFrame");
    }
    ChartString text;
    text.assignDouble(value, 6);
    return !text.empty() && ViZNode(frame).setAttribute(attribute, text.str());
}

bool XGraph::setChartText(const char* element, const ChartString& text) const {
    if (!fNode || !fVisualization) {
        return false;
    }
    pugi::xml_node node = fVisualization.child(element);
    if (!node) {
        node = fVisualization.insert_child_before(element, fNode);
    }
    if (!node) {
        node = fVisualization.append_child(element);
    }
    return ViZNode(node).setText(text);
}
