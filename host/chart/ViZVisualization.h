// The whole chart document (`<visualization>`): its graphs, styles, label
// frames, legends and derived variables.
#pragma once

#include "host/chart/ViZDerivedVariable.h"
#include "host/chart/ViZGraph.h"
#include "host/chart/ViZLabelFrame.h"
#include "host/chart/ViZLegend.h"
#include "host/chart/ViZStyle.h"
#include "host/chart/XVariable.h"

class ViZVisualization final : public ViZNode {
public:
    using ViZNode::ViZNode;
    // The graph at a position (0 for the first), or an empty one.
    ViZGraph getGraph(int index) const;
    // The data or derived variable of that id, or an empty one.
    XVariable findVariable(std::string_view id) const;
    // Adds a style; an empty id gets one that the document does not use yet.
    ViZStyle addStyle(std::string_view id = {}) const;
    ViZLabelFrame addLabelFrame(std::string_view id) const;
    // Adds a legend before every other legend, so that it is shown first.
    ViZLegend addFirstLegend(std::string_view id) const;
    ViZDerivedVariable addDerivedVariable(std::string_view id) const;
    // Whether the chart shows a line under its title.
    bool hasSubtitle() const;
};
