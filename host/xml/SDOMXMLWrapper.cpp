// DOM handles over pugixml.
#include "host/xml/SDOMXMLWrapper.h"

#include "host/xml/XMLText.h"

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
} // namespace

bool SDOMXMLWrapper::LoadFromString(std::string text) {
    auto doc = std::make_shared<Document>();
    doc->fText = std::move(text);
    pugi::xml_parse_result result = doc->fDoc.load_buffer_inplace(
        doc->fText.data(), doc->fText.size(), pugi::parse_default | pugi::parse_ws_pcdata_single);
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
