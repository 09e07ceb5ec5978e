// A reference line across the graph at a value of one axis (`<lineGuide>`).
#pragma once

#include "host/chart/ViZLabel.h"

class ViZLineGuide final : public ViZNode {
public:
    enum Axis { kX = 0, kY = 1 };
    using ViZNode::ViZNode;
    bool setValue(int axis, const ChartString& value) const {
        return setAttribute(axis == kY ? "y" : "x", value.str());
    }
    bool setStyle(std::string_view styleId) const { return setAttribute("style", styleId); }
    ViZLabel addLabel(const ChartString& text, std::string_view styleId = {}) const {
        return AddViZLabel(fNode, text, styleId);
    }
};
