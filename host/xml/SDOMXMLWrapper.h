// A small DOM interface over pugixml: SDOMXMLWrapper is a handle to one
// element, SDOMXMLIterator a cursor over child elements. Handles are cheap
// values and are valid when empty; every query on an empty handle fails.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <pugixml.hpp>

class SDOMXMLIterator;

class SDOMXMLWrapper final {
public:
    SDOMXMLWrapper() = default;
    explicit SDOMXMLWrapper(pugi::xml_node node) : fNode(node) {}

    // Parses a whole document held in `text` (taken over, parsed in place);
    // this handle becomes its root element. False when the text is not
    // well-formed XML or holds no element; `Error` then says why.
    bool LoadFromString(std::string text);
    const std::string& Error() const { return fError; }

    bool IsNull() const { return fNode.empty(); }
    explicit operator bool() const { return !fNode.empty(); }

    // The element's tag name; empty for an empty handle.
    std::string_view GetName() const;

    // An attribute's text; false when the attribute is absent (out unchanged).
    bool GetAttribute(std::string_view name, std::string& out) const;
    // An attribute converted to a number; false when absent (out unchanged).
    bool GetAttribute(std::string_view name, int& out) const;
    bool GetAttribute(std::string_view name, double& out) const;

    // The first element at a slash-separated path of child names below this
    // one ("Extension/NPAROutput/DataDictionary"). Returns false only when the
    // lookup cannot be made (empty handle or malformed path); when no element
    // lies at the path it returns true with `out` empty. `deep` is accepted
    // for compatibility and does not change the search.
    bool GetFirstElement(std::string_view path, SDOMXMLWrapper& out, bool deep = true) const;

    // A cursor over the child elements named by the last step of `path`
    // (below the element that the steps before it lead to); an empty path
    // means every child element. False only when the lookup cannot be made;
    // a path that leads nowhere gives an exhausted cursor.
    bool GetElementIterator(std::string_view path, SDOMXMLIterator& out, bool deep = true) const;

    // The element's text content (the first text or CDATA child).
    bool GetTextBody(std::string& out) const;

    pugi::xml_node Node() const { return fNode; }

private:
    struct Document;
    std::shared_ptr<Document> fDocument; // set on a handle that loaded a document
    pugi::xml_node fNode;
    std::string fError;
};

class SDOMXMLIterator final {
public:
    SDOMXMLIterator() = default;
    SDOMXMLIterator(pugi::xml_node first, std::string name);

    // Moves to the next element and hands it out; false when there is none.
    bool Next(SDOMXMLWrapper& out);

private:
    pugi::xml_node fNext;
    std::string fName; // empty: every element
};
