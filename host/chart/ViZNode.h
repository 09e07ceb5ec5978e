// The base of the chart document handles: a pugixml element that may be
// empty. Like pugixml's own handles, an empty handle is valid; accessors
// then give empty results and mutators return false.
#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <unordered_map>

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

// The relabels of a document's variables by value, kept beside the document
// so that adding a relabel does not scan those already there. A document
// without one (a bare pugixml document) is scanned instead.
class ViZRelabelIndex final {
public:
    explicit ViZRelabelIndex(const pugi::xml_document& document);
    ~ViZRelabelIndex();
    ViZRelabelIndex(const ViZRelabelIndex&) = delete;
    ViZRelabelIndex& operator=(const ViZRelabelIndex&) = delete;

    // The index of the document that holds `node`; null when it has none.
    static ViZRelabelIndex* Of(pugi::xml_node node);
    // The `<relabel>` children of `variable` by their value text (read from
    // the document the first time a variable is asked for).
    std::unordered_map<std::string, pugi::xml_node>& Relabels(pugi::xml_node variable);

private:
    const void* fDocument;
    std::unordered_map<const void*, std::unordered_map<std::string, pugi::xml_node>> fByVariable;
};

// Adds (or replaces) `<relabel value="..." text="..."/>`: the text shown for
// one value of a variable.
bool AddViZRelabel(pugi::xml_node variable, double value, const ChartString& text);
