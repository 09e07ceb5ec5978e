// DOM handles over pugixml.
#include "host/xml/SDOMXMLWrapper.h"

#include "host/xml/XMLText.h"

#include <algorithm>
#include <cstring>
#include <vector>

struct SDOMXMLWrapper::Document {
    std::string fText;
    pugi::xml_document fDoc;
};

namespace {
bool IsElement(pugi::xml_node node) {
    return node.type() == pugi::node_element;
}

pugi::xml_node FirstChildElement(pugi::xml_node parent, std::string_view name) {
    for (pugi::xml_node child = parent.first_child(); child; child = child.next_sibling()) {
        if (IsElement(child) && (name.empty() || name == child.name())) {
            return child;
        }
    }
    return {};
}

pugi::xml_node NextElement(pugi::xml_node node, std::string_view name) {
    for (node = node.next_sibling(); node; node = node.next_sibling()) {
        if (IsElement(node) && (name.empty() || name == node.name())) {
            return node;
        }
    }
    return {};
}

// Follows the steps of a slash path. Sets `ok` to false for a malformed path
// (an empty step); returns the element reached or an empty node.
pugi::xml_node Walk(pugi::xml_node from, std::string_view path, bool& ok) {
    ok = true;
    pugi::xml_node node = from;
    while (!path.empty()) {
        size_t slash = path.find('/');
        std::string_view step = path.substr(0, slash);
        if (step.empty()) {
            ok = false;
            return {};
        }
        node = FirstChildElement(node, step);
        if (!node) {
            return {};
        }
        path = slash == std::string_view::npos ? std::string_view() : path.substr(slash + 1);
    }
    return node;
}

pugi::xml_attribute FindAttribute(pugi::xml_node node, std::string_view name) {
    for (pugi::xml_attribute a = node.first_attribute(); a; a = a.next_attribute()) {
        if (name == a.name()) {
            return a;
        }
    }
    return {};
}
// What makes a parsed document not well-formed beyond what the parser
// checks: a second root element, an attribute given twice on one element,
// and (with `rawReferences`, a parse that kept entity references as
// written) a reference to an entity XML does not define. Empty when there
// is none of them.
std::string WellFormedness(const pugi::xml_document& document, bool rawReferences) {
    int roots = 0;
    for (pugi::xml_node child : document.children()) {
        if (child.type() == pugi::node_element && ++roots == 2) {
            return std::string("a second root element <") + child.name() + ">";
        }
    }
    const auto undefinedEntity = [](std::string_view text) -> std::string {
        for (size_t at = text.find('&'); at != std::string_view::npos;
             at = text.find('&', at + 1)) {
            const size_t end = text.find(';', at);
            const std::string_view name =
                text.substr(at + 1, end == std::string_view::npos ? end : end - at - 1);
            if (end == std::string_view::npos || name.empty() ||
                (name.front() != '#' && name != "lt" && name != "gt" && name != "amp" &&
                 name != "apos" && name != "quot")) {
                return "an undefined entity &" + std::string(name.substr(0, 40)) + ";";
            }
        }
        return {};
    };
    std::string problem;
    std::vector<std::string_view> names;
    document.find_node([&](pugi::xml_node node) {
        if (rawReferences) {
            problem = undefinedEntity(node.value());
        }
        size_t count = 0;
        for (pugi::xml_attribute attribute : node.attributes()) {
            ++count;
            if (rawReferences && problem.empty()) {
                problem = undefinedEntity(attribute.value());
            }
        }
        // Elements have few attributes, compared pairwise; many are sorted.
        const char* twice = nullptr;
        if (count > 1 && count <= 16) {
            for (pugi::xml_attribute a = node.first_attribute(); a && !twice;
                 a = a.next_attribute()) {
                for (pugi::xml_attribute b = a.next_attribute(); b && !twice;
                     b = b.next_attribute()) {
                    twice = std::strcmp(a.name(), b.name()) == 0 ? a.name() : nullptr;
                }
            }
        } else if (count > 16) {
            names.clear();
            for (pugi::xml_attribute attribute : node.attributes()) {
                names.emplace_back(attribute.name());
            }
            std::sort(names.begin(), names.end());
            const auto at = std::adjacent_find(names.begin(), names.end());
            twice = at != names.end() ? at->data() : nullptr;
        }
        if (twice && problem.empty()) {
            problem =
                std::string("the attribute ") + twice + " given twice on <" + node.name() + ">";
        }
        return !problem.empty();
    });
    return problem;
}
} // namespace

bool SDOMXMLWrapper::LoadFromString(std::string text) {
    // A reference to an undefined entity is kept as written by the parser;
    // only a text with a reference in it is parsed a second time, keeping
    // every reference as written, to find one.
    if (text.find('&') != std::string::npos) {
        pugi::xml_document raw;
        const unsigned options =
            (pugi::parse_default | pugi::parse_ws_pcdata_single | pugi::parse_embed_pcdata) &
            ~pugi::parse_escapes;
        if (raw.load_buffer(text.data(), text.size(), options)) {
            const std::string problem = WellFormedness(raw, true);
            if (!problem.empty()) {
                fDocument.reset();
                fNode = {};
                fError = "not well-formed XML: " + problem;
                return false;
            }
        }
    }
    auto doc = std::make_shared<Document>();
    doc->fText = std::move(text);
    // A text that is an element's first child is kept on the element itself
    // rather than in a node of its own: a third fewer nodes for documents
    // made of tables, and the same text for GetTextBody.
    pugi::xml_parse_result result = doc->fDoc.load_buffer_inplace(
        doc->fText.data(), doc->fText.size(),
        pugi::parse_default | pugi::parse_ws_pcdata_single | pugi::parse_embed_pcdata);
    fDocument.reset();
    fNode = {};
    if (!result) {
        fError = std::string(result.description()) + " at offset " + std::to_string(result.offset);
        return false;
    }
    pugi::xml_node root = doc->fDoc.document_element();
    if (!root) {
        fError = "no root element";
        return false;
    }
    if (const std::string problem = WellFormedness(doc->fDoc, false); !problem.empty()) {
        fError = "not well-formed XML: " + problem;
        return false;
    }
    fError.clear();
    fDocument = std::move(doc);
    fNode = root;
    return true;
}

std::string_view SDOMXMLWrapper::GetName() const {
    return fNode ? fNode.name() : "";
}

bool SDOMXMLWrapper::GetAttribute(std::string_view name, std::string& out) const {
    pugi::xml_attribute a = FindAttribute(fNode, name);
    if (!a) {
        return false;
    }
    out.assign(a.value());
    return true;
}

bool SDOMXMLWrapper::GetAttribute(std::string_view name, int& out) const {
    pugi::xml_attribute a = FindAttribute(fNode, name);
    if (!a) {
        return false;
    }
    out = String2Integer(a.value());
    return true;
}

bool SDOMXMLWrapper::GetAttribute(std::string_view name, double& out) const {
    pugi::xml_attribute a = FindAttribute(fNode, name);
    if (!a) {
        return false;
    }
    out = String2Double(a.value());
    return true;
}

bool SDOMXMLWrapper::GetFirstElement(std::string_view path, SDOMXMLWrapper& out, bool) const {
    out = SDOMXMLWrapper();
    if (!fNode || path.empty()) {
        return false;
    }
    bool ok = true;
    pugi::xml_node found = Walk(fNode, path, ok);
    out.fNode = found;
    return ok;
}

bool SDOMXMLWrapper::GetElementIterator(std::string_view path, SDOMXMLIterator& out, bool) const {
    out = SDOMXMLIterator();
    if (!fNode) {
        return false;
    }
    size_t slash = path.rfind('/');
    std::string_view parentPath =
        slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
    std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
    if (slash != std::string_view::npos && name.empty()) {
        return false;
    }
    bool ok = true;
    pugi::xml_node parent = Walk(fNode, parentPath, ok);
    if (!ok) {
        return false;
    }
    out = SDOMXMLIterator(parent ? FirstChildElement(parent, name) : pugi::xml_node(),
                          std::string(name));
    return true;
}

bool SDOMXMLWrapper::GetTextBody(std::string& out) const {
    if (!fNode) {
        return false;
    }
    out.assign(fNode.text().get());
    return true;
}

SDOMXMLIterator::SDOMXMLIterator(pugi::xml_node first, std::string name)
    : fNext(first), fName(std::move(name)) {}

bool SDOMXMLIterator::Next(SDOMXMLWrapper& out) {
    if (!fNext) {
        out = SDOMXMLWrapper();
        return false;
    }
    out = SDOMXMLWrapper(fNext);
    fNext = NextElement(fNext, fName);
    return true;
}
