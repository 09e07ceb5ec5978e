// A named look (`<style id="...">`): colour, font weight, visibility.
// Elements, guides and labels refer to it by its id.
#pragma once

#include "host/chart/ViZNode.h"

class ViZStyle final : public ViZNode {
public:
    enum FontWeight { kNormal = 1, kBold = 2 };
    using ViZNode::ViZNode;
    // A CSS colour name or "#rrggbb".
    bool setColor(std::string_view color) const { return setAttribute("color", color); }
    bool setFontWeight(int weight) const {
        return setAttribute("fontWeight", weight == kBold ? "bold" : "normal");
    }
    bool setVisible(bool visible) const {
        return setAttribute("visible", visible ? "true" : "false");
    }
};
