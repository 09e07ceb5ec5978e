// A box of labels placed by its locations (`<labelFrame>`): legends drawn
// by hand, notes beside the graph.
#pragma once

#include "host/chart/ViZLabel.h"
#include "host/chart/ViZLocation.h"

class ViZLabelFrame final : public ViZNode {
public:
    using ViZNode::ViZNode;
    ViZLocation addLocation(int part, int method, std::string_view value = {},
                            std::string_view target = {}) const {
        return AddViZLocation(fNode, part, method, value, target);
    }
    ViZLabel addLabel(const ChartString& text, std::string_view styleId = {}) const {
        return AddViZLabel(fNode, text, styleId);
    }
};
