// A chart document: a chart template loaded into an XML DOM, edited by the
// chart code, given its data and description, and sent to the output under
// the active procedure's current heading.
#pragma once

#include <memory>
#include <pugixml.hpp>
#include <string>

#include "host/bp/BpTree.h"
#include "host/chart/ChartString.h"
#include "host/chart/ViZNode.h"
#include "host/chart/XGraph.h"

class ViZVisualization;
class VarDataProcessor;

class XDocument final {
public:
    // The text of a chart template by its file name ("NPARBoxplot.viztemplate")
    // from the templates folder; empty when there is no such template or the
    // name is not a plain file name.
    static std::string fetchTemplateFile(const std::string& name);
    // The templates folder: PathFactory's kind 2 unless set here (empty: back
    // to the default).
    static void setTemplateFolder(std::string folder);
    static std::string templateFolder();

    // Whether series are to be told apart by colour only (no fill patterns):
    // a setting of the host for every chart; off by default.
    static bool useColorsOnly();
    static void setUseColorsOnly(bool colorsOnly);

    // Parses the template text. A text that is not XML with a
    // `<visualization>` root gives a document that is not valid: its edits do
    // nothing and it is never sent.
    explicit XDocument(const std::string& templateText);
    ~XDocument();
    XDocument(const XDocument&) = delete;
    XDocument& operator=(const XDocument&) = delete;

    bool isValid() const { return static_cast<bool>(fRoot); }
    // The editor that may open the chart in the host (kept on the document).
    void setEditor(int editor);
    // Marks the document with the output language.
    void setLanguage();
    // The chart's (first) graph.
    XGraph getExternalGraph() const;
    ViZVisualization getVisualization() const;
    void SetDescription(const ChartString& description);
    // Takes a copy of the chart's data sources.
    void SetChartData(const VarDataProcessor* data);
    // Applies the host's chart look: the default palette and font, where the
    // template sets none (`replace`: also where it does). True when applied.
    bool applyCTemplate(bool replace);
    // Appends the chart to the output (the flags are kept for the host's use).
    // False when the document is not valid or no procedure is writing output.
    bool SendChart(bool show, bool editable, bool replace);

    // The chart as SendChart appends it.
    std::unique_ptr<BpChartNode> MakeChartNode() const;
    // The document as XML text.
    std::string toXML() const;

private:
    pugi::xml_document fDocument;
    ViZRelabelIndex fRelabels{fDocument};
    pugi::xml_node fRoot;
    std::string fDescription;
    std::vector<BpChartNode::Source> fSources;
};
