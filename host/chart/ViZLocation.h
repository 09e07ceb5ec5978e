// Where a graph or a label frame sits in the chart: one `<location>` element
// fixes one of its edges or sizes.
#pragma once

#include "host/chart/ViZNode.h"

class ViZLocation final : public ViZNode {
public:
    enum Part { kLeft = 0, kRight = 1, kTop = 2, kBottom = 3, kWidth = 4, kHeight = 5 };
    enum Method {
        kFixed = 0,         // at `value`: a percentage of the chart (edges from its left or top)
        kSizeToContent = 1, // as large as the content needs (width and height)
        kSame = 2,          // the same edge as the `target`
        kAttach = 3,        // against the opposite edge of the `target` (beside it)
    };
    using ViZNode::ViZNode;

    static const char* PartName(int part);
    static const char* MethodName(int method);
    bool setPart(int part) const { return setAttribute("part", PartName(part)); }
    bool setMethod(int method) const { return setAttribute("method", MethodName(method)); }
    bool setValue(std::string_view value) const { return setAttribute("value", value); }
    bool setTarget(std::string_view target) const { return setAttribute("target", target); }
};

inline const char* ViZLocation::PartName(int part) {
    static const char* const kNames[] = {"left", "right", "top", "bottom", "width", "height"};
    return part >= 0 && part <= kHeight ? kNames[part] : "left";
}

inline const char* ViZLocation::MethodName(int method) {
    static const char* const kNames[] = {"fixed", "sizeToContent", "same", "attach"};
    return method >= 0 && method <= kAttach ? kNames[method] : "fixed";
}

// Adds a `<location>` child to an element.
inline ViZLocation AddViZLocation(pugi::xml_node parent, int part, int method,
                                  std::string_view value, std::string_view target) {
    if (!parent) {
        return {};
    }
    ViZLocation location(parent.append_child("location"));
    location.setPart(part);
    location.setMethod(method);
    if (!value.empty()) {
        location.setValue(value);
    }
    if (!target.empty()) {
        location.setTarget(target);
    }
    return location;
}
