// The key of one aesthetic (`<legend>`): which variable's values the
// colours (or patterns, sizes) stand for, under a title.
#pragma once

#include "host/chart/ViZNode.h"

class ViZLegend final : public ViZNode {
public:
    using ViZNode::ViZNode;
    bool setVariable(std::string_view variable) const { return setAttribute("variable", variable); }
    // "color", "pattern" or "size".
    bool setAesthetic(std::string_view aesthetic) const {
        return setAttribute("aesthetic", aesthetic);
    }
    bool setTitle(const ChartString& title) const {
        if (!fNode) {
            return false;
        }
        pugi::xml_node node = fNode.child("title");
        if (!node) {
            node = fNode.prepend_child("title");
        }
        return ViZNode(node).setText(title);
    }
};
