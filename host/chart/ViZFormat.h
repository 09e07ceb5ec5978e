// How a chart variable's values are written (axis ticks, popups, labels):
// the `<format>` element of a variable.
#pragma once

#include "host/chart/ViZNode.h"

class ViZFormat final : public ViZNode {
public:
    using ViZNode::ViZNode;
    // "general", "number", "scientific", "date", "time", "datetime", "string".
    bool setType(std::string_view type) const { return setAttribute("type", type); }
    bool setDecimals(int decimals) const {
        ChartString text;
        return setAttribute("decimals", text.assignInteger(decimals).str());
    }
    bool setGrouping(bool grouping) const {
        return setAttribute("grouping", grouping ? "true" : "false");
    }
    bool setPrefix(const ChartString& prefix) const { return setAttribute("prefix", prefix.str()); }
    bool setSuffix(const ChartString& suffix) const { return setAttribute("suffix", suffix.str()); }
    // A date or time pattern such as "dd-MMM-yyyy" (see the templates' README).
    bool setPattern(std::string_view pattern) const { return setAttribute("pattern", pattern); }
    // "days" or "seconds": the unit of date and time values.
    bool setUnit(std::string_view unit) const { return setAttribute("unit", unit); }
};
