// A variable of a chart document (`<variable>` or `<derivedVariable>`):
// what it is bound to in the data dictionary, its label, whether it is
// categorical, texts for its values and its number format.
#pragma once

#include <string_view>

#include "host/chart/ViZFormat.h"
#include "host/chart/ViZNode.h"

class VEXA_Variable;

class XVariable final : public ViZNode {
public:
    enum NumberKind {
        kGeneralNumber = 0, // as many decimals as the value needs
        kFixedNumber = 1,   // the decimals of the current format
    };
    using ViZNode::ViZNode;

    // Binds the variable to a variable of the data: its name, label and
    // measurement level.
    bool setVexaVariable(const VEXA_Variable* variable) const;
    // Gives the variable the display format of a data variable.
    bool setFormatBasedOnVexaVariable(const VEXA_Variable* variable) const;
    bool setLabel(const ChartString& label) const { return setAttribute("label", label.str()); }
    bool setCategorical(bool categorical) const {
        return setAttribute("categorical", categorical ? "true" : "false");
    }
    // Shows `text` for `value` (replacing an earlier text for it).
    bool addRelabel(double value, const ChartString& text) const {
        return AddViZRelabel(fNode, value, text);
    }
    // A number format of a kind, with or without grouping, and an optional
    // prefix and suffix.
    bool SetNumberFormat(int kind, bool grouping, const ChartString* prefix,
                         const ChartString* suffix) const;
    // A text written before every value (the format is kept otherwise).
    bool SetFormatPrefix(const ChartString& prefix) const;

    ViZFormat getFormat() const { return ViZFormat(fNode.child("format")); }

private:
    // The `<format>` child, emptied, or a new one.
    ViZFormat resetFormat() const;
};
