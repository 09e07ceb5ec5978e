// The chart document handles that need more than one line.
#include "host/chart/ViZGraph.h"
#include "host/chart/ViZVisualization.h"

namespace {

// The first element below `root` named `tag` whose "id" is `id`.
pugi::xml_node FindById(pugi::xml_node root, const char* tag, std::string_view id) {
    return root.find_node([&](pugi::xml_node node) {
        return std::string_view(node.name()) == tag && id == node.attribute("id").value();
    });
}

} // namespace

bool ViZElement::setAesthetic(const char* aesthetic, std::string_view variable) const {
    if (!fNode) {
        return false;
    }
    pugi::xml_node node = fNode.child(aesthetic);
    if (!node) {
        node = fNode.append_child(aesthetic);
    }
    return ViZNode(node).setAttribute("variable", variable);
}

ViZLineGuide ViZGraph::addLineGuide(int axis, const ChartString& value,
                                    std::string_view styleId) const {
    if (!fNode) {
        return {};
    }
    ViZLineGuide guide(fNode.append_child("lineGuide"));
    guide.setValue(axis, value);
    if (!styleId.empty()) {
        guide.setStyle(styleId);
    }
    return guide;
}

ViZGraph ViZVisualization::getGraph(int index) const {
    int at = 0;
    for (pugi::xml_node graph : fNode.children("graph")) {
        if (at++ == index) {
            return ViZGraph(graph);
        }
    }
    return {};
}

XVariable ViZVisualization::findVariable(std::string_view id) const {
    if (!fNode) {
        return {};
    }
    pugi::xml_node found = FindById(fNode, "variable", id);
    return XVariable(found ? found : FindById(fNode, "derivedVariable", id));
}

ViZStyle ViZVisualization::addStyle(std::string_view id) const {
    if (!fNode) {
        return {};
    }
    std::string name(id);
    for (int n = 1; name.empty(); ++n) {
        ChartString candidate("chartStyle");
        candidate.appendInteger(n);
        if (!FindById(fNode, "style", candidate.str())) {
            name = candidate.str();
        }
    }
    pugi::xml_node anchor = fNode.child("graph");
    ViZStyle style(anchor ? fNode.insert_child_before("style", anchor)
                          : fNode.append_child("style"));
    style.setAttribute("id", name);
    return style;
}

ViZLabelFrame ViZVisualization::addLabelFrame(std::string_view id) const {
    if (!fNode) {
        return {};
    }
    ViZLabelFrame frame(fNode.append_child("labelFrame"));
    frame.setAttribute("id", id);
    return frame;
}

ViZLegend ViZVisualization::addFirstLegend(std::string_view id) const {
    if (!fNode) {
        return {};
    }
    pugi::xml_node first = fNode.child("legend");
    ViZLegend legend(first ? fNode.insert_child_before("legend", first)
                           : fNode.append_child("legend"));
    legend.setAttribute("id", id);
    return legend;
}

ViZDerivedVariable ViZVisualization::addDerivedVariable(std::string_view id) const {
    if (!fNode) {
        return {};
    }
    pugi::xml_node anchor = fNode.child("graph");
    ViZDerivedVariable variable(anchor ? fNode.insert_child_before("derivedVariable", anchor)
                                       : fNode.append_child("derivedVariable"));
    variable.setAttribute("id", id);
    return variable;
}

bool ViZVisualization::hasSubtitle() const {
    return !ViZNode(fNode.child("subtitle")).getText().empty();
}
