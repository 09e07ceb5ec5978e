// A variable computed from a source variable by a rule
// (`<derivedVariable>`), with labels for its values.
#pragma once

#include "host/chart/ViZNode.h"

class ViZDerivedVariable final : public ViZNode {
public:
    using ViZNode::ViZNode;
    bool setSource(std::string_view variable) const { return setAttribute("variable", variable); }
    // "match" (0 where the source equals `value`, 1 elsewhere) or "sign"
    // (1 for positive values, 2 for negative ones, 0 for zero).
    bool setRule(std::string_view rule, std::string_view value = {}) const {
        return setAttribute("rule", rule) && (value.empty() || setAttribute("value", value));
    }
    bool setCategorical(bool categorical) const {
        return setAttribute("categorical", categorical ? "true" : "false");
    }
    // Shows `text` for the derived value `value`.
    bool addRelabel(double value, const ChartString& text) const {
        return AddViZRelabel(fNode, value, text);
    }
};
