// One graph of a chart document (`<graph>`): its elements, guides and
// locations.
#pragma once

#include "host/chart/ViZLineGuide.h"
#include "host/chart/ViZLocation.h"

// A graphic element of a graph: `<interval>`, `<point>`, `<line>`,
// `<area>`, `<schema>`, `<edge>` or `<node>`.
class ViZElement final : public ViZNode {
public:
    using ViZNode::ViZNode;
    // Maps a variable to an aesthetic of the element: `<color>`, `<pattern>`,
    // `<label>`, `<size>` (replacing an existing mapping of that aesthetic).
    bool setAesthetic(const char* aesthetic, std::string_view variable) const;
};

class ViZGraph final : public ViZNode {
public:
    using ViZNode::ViZNode;
    // The first element of a type ("schema", "interval", ...), or an empty one.
    ViZElement getElement(const char* type) const { return ViZElement(fNode.child(type)); }
    ViZLineGuide addLineGuide(int axis, const ChartString& value, std::string_view styleId) const;
    ViZLocation addLocation(int part, int method, std::string_view value = {},
                            std::string_view target = {}) const {
        return AddViZLocation(fNode, part, method, value, target);
    }
};
