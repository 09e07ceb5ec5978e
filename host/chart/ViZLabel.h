// A text shown in a label frame, a legend or next to a guide: `<label>`.
#pragma once

#include "host/chart/ViZNode.h"

class ViZLabel final : public ViZNode {
public:
    using ViZNode::ViZNode;
    bool setStyle(std::string_view styleId) const { return setAttribute("style", styleId); }
};

// Adds a `<label>` with a text and, when given, a style.
inline ViZLabel AddViZLabel(pugi::xml_node parent, const ChartString& text,
                            std::string_view styleId) {
    if (!parent) {
        return {};
    }
    ViZLabel label(parent.append_child("label"));
    label.setText(text);
    if (!styleId.empty()) {
        label.setStyle(styleId);
    }
    return label;
}
