// Relabels of chart variables, found by value through the document's index.
#include "host/chart/ViZNode.h"

#include <mutex>

namespace {
struct Registry {
    std::mutex fLock;
    std::unordered_map<const void*, ViZRelabelIndex*> fByDocument;
};

Registry& TheRegistry() {
    static Registry registry;
    return registry;
}
} // namespace

ViZRelabelIndex::ViZRelabelIndex(const pugi::xml_document& document)
    : fDocument(document.internal_object()) {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.fLock);
    registry.fByDocument[fDocument] = this;
}

ViZRelabelIndex::~ViZRelabelIndex() {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.fLock);
    registry.fByDocument.erase(fDocument);
}

ViZRelabelIndex* ViZRelabelIndex::Of(pugi::xml_node node) {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.fLock);
    const auto found = registry.fByDocument.find(node.root().internal_object());
    return found == registry.fByDocument.end() ? nullptr : found->second;
}

std::unordered_map<std::string, pugi::xml_node>&
ViZRelabelIndex::Relabels(pugi::xml_node variable) {
    const auto [at, added] = fByVariable.try_emplace(variable.internal_object());
    if (added) {
        // The first relabel of a value is the one that counts.
        for (pugi::xml_node relabel : variable.children("relabel")) {
            at->second.try_emplace(relabel.attribute("value").value(), relabel);
        }
    }
    return at->second;
}

bool AddViZRelabel(pugi::xml_node variable, double value, const ChartString& text) {
    if (!variable) {
        return false;
    }
    ChartString number;
    number.assignDouble(value, 17);
    if (number.empty()) {
        return false;
    }
    ViZRelabelIndex* index = ViZRelabelIndex::Of(variable);
    if (index) {
        std::unordered_map<std::string, pugi::xml_node>& relabels = index->Relabels(variable);
        const auto found = relabels.find(number.str());
        if (found != relabels.end()) {
            return found->second.attribute("text").set_value(text.xc_str());
        }
    } else {
        for (pugi::xml_node relabel : variable.children("relabel")) {
            if (number.equals(std::string_view(relabel.attribute("value").value()))) {
                return relabel.attribute("text").set_value(text.xc_str());
            }
        }
    }
    pugi::xml_node relabel = variable.append_child("relabel");
    if (index) {
        index->Relabels(variable).emplace(number.str(), relabel);
    }
    relabel.append_attribute("value").set_value(number.xc_str());
    return relabel.append_attribute("text").set_value(text.xc_str());
}
