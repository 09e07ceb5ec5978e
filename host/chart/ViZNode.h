// The base of the chart document handles: a pugixml element that may be
// empty. Like pugixml's own handles, an empty handle is valid; accessors
// then give empty results and mutators return false.
#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

#include "host/chart/ChartString.h"

class ViZNode {
public:
    ViZNode() = default;
    explicit ViZNode(pugi::xml_node node) : fNode(node) {}

    explicit operator bool() const { return static_cast<bool>(fNode); }
    pugi::xml_node node() const { return fNode; }
    std::string id() const { return fNode.attribute("id").value(); }

    // Sets (or adds) an attribute.
    bool setAttribute(const char* name, std::string_view value) const {
        if (!fNode) {
            return false;
        }
        pugi::xml_attribute attribute = fNode.attribute(name);
        if (!attribute) {
            attribute = fNode.append_attribute(name);
        }
        return attribute.set_value(std::string(value).c_str());
    }
    // Replaces the element's `<text>` children by one holding `text`.
    bool setText(const ChartString& text) const {
        if (!fNode) {
            return false;
        }
        while (pugi::xml_node old = fNode.child("text")) {
            fNode.remove_child(old);
        }
        return fNode.append_child("text").text().set(text.xc_str());
    }
    // The text of the element's `<text>` children, or its own text.
    std::string getText() const {
        std::string out;
        for (pugi::xml_node text : fNode.children("text")) {
            out += text.text().get();
        }
        return out.empty() ? std::string(fNode.text().get()) : out;
    }

protected:
    mutable pugi::xml_node fNode; // a handle: const handles still edit the document
};

// Adds (or replaces) `<relabel value="..." text="..."/>`: the text shown for
// one value of a variable.
inline bool AddViZRelabel(pugi::xml_node variable, double value, const ChartString& text) {
    if (!variable) {
        return false;
    }
    ChartString number;
    number.assignDouble(value, 17);
    if (number.empty()) {
        return false;
    }
    for (pugi::xml_node relabel : variable.children("relabel")) {
        if (number.equals(std::string_view(relabel.attribute("value").value()))) {
            return relabel.attribute("text").set_value(text.xc_str());
        }
    }
    pugi::xml_node relabel = variable.append_child("relabel");
    relabel.append_attribute("value").set_value(number.xc_str());
    return relabel.append_attribute("text").set_value(text.xc_str());
}
