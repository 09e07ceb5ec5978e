// The graph of a chart document as the chart code sees it: its variables,
// its outer frame, and the chart's title and the line under it.
#pragma once

#include "host/chart/XVariable.h"

class XGraph final : public ViZNode {
public:
    XGraph() = default;
    XGraph(pugi::xml_node graph, pugi::xml_node visualization)
        : ViZNode(graph), fVisualization(visualization) {}

    // The document's variable of that id (a data or derived variable); the
    // second argument is kept for the host's use.
    XVariable getVariable(std::string_view name, int flags) const;
    // The graph's size as a multiple of the chart's default size.
    bool setOuterFrameWidth(double width) const { return setFrame("width", width); }
    bool setOuterFrameHeight(double height) const { return setFrame("height", height); }
    // The chart's title and the line under it.
    bool setTitle(const ChartString& title) const { return setChartText("title", title); }
    bool setSubtitle(const ChartString& subtitle) const {
        return setChartText("subtitle", subtitle);
    }

private:
    bool setFrame(const char* attribute, double value) const;
    bool setChartText(const char* element, const ChartString& text) const;
    mutable pugi::xml_node fVisualization;
};
