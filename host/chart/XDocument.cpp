// XDocument: template files, the DOM, and the hand-over to the output tree.
#include "host/chart/XDocument.h"

#include <atomic>
#include <cstdio>
#include <mutex>

#include "host/bp/BpOutput.h"
#include "host/chart/VarDataProcessor.h"
#include "host/chart/ViZVisualization.h"
#include "host/fac/FacSTDictionary.h"

namespace {

std::atomic<bool> gColorsOnly{false};
std::mutex gFolderMutex;
std::string gTemplateFolder;

// Chart look applied by applyCTemplate.
constexpr const char* kPalette = "#1f77b4 #ff7f0e #2ca02c #d62728 #9467bd #8c564b #e377c2 "
                                 "#7f7f7f #bcbd22 #17becf";
constexpr const char* kFont = "sans-serif";

bool IsPlainFileName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of("/\\") == std::string::npos;
}

} // namespace

void XDocument::setTemplateFolder(std::string folder) {
    std::lock_guard lock(gFolderMutex);
    gTemplateFolder = std::move(folder);
}

std::string XDocument::templateFolder() {
    {
        std::lock_guard lock(gFolderMutex);
        if (!gTemplateFolder.empty()) {
            return gTemplateFolder;
        }
    }
    return PathFactory::getPathInstance(PathFactory::kTemplates).getPath();
}

std::string XDocument::fetchTemplateFile(const std::string& name) {
    if (!IsPlainFileName(name)) {
        return {};
    }
    const std::string path = templateFolder() + "/" + name;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) {
        return {};
    }
    std::string text;
    char buffer[8192];
    size_t read = 0;
    while ((read = std::fread(buffer, 1, sizeof buffer, file)) > 0) {
        text.append(buffer, read);
    }
    std::fclose(file);
    return text;
}

bool XDocument::useColorsOnly() {
    return gColorsOnly.load(std::memory_order_relaxed);
}

void XDocument::setUseColorsOnly(bool colorsOnly) {
    gColorsOnly.store(colorsOnly, std::memory_order_relaxed);
}

XDocument::XDocument(const std::string& templateText) {
    const pugi::xml_parse_result parsed = fDocument.load_buffer(
        templateText.data(), templateText.size(), pugi::parse_default, pugi::encoding_utf8);
    pugi::xml_node root = fDocument.document_element();
    if (parsed && std::string_view(root.name()) == "visualization") {
        fRoot = root;
    }
}

XDocument::~XDocument() = default;

void XDocument::setEditor(int editor) {
    ChartString text;
    ViZNode(fRoot).setAttribute("editor", text.assignInteger(editor).str());
}

void XDocument::setLanguage() {
    ViZNode(fRoot).setAttribute("lang", "en");
}

XGraph XDocument::getExternalGraph() const {
    return XGraph(fRoot.child("graph"), fRoot);
}

ViZVisualization XDocument::getVisualization() const {
    return ViZVisualization(fRoot);
}

void XDocument::SetDescription(const ChartString& description) {
    fDescription = description.toUTF8();
}

void XDocument::SetChartData(const VarDataProcessor* data) {
    if (data) {
        fSources = data->Sources();
    }
}

bool XDocument::applyCTemplate(bool replace) {
    if (!fRoot) {
        return false;
    }
    const ViZNode root(fRoot);
    if (replace || !fRoot.attribute("palette")) {
        root.setAttribute("palette", kPalette);
    }
    if (replace || !fRoot.attribute("font")) {
        root.setAttribute("font", kFont);
    }
    return true;
}

std::string XDocument::toXML() const {
    struct Writer final : pugi::xml_writer {
        std::string fText;
        void write(const void* data, size_t size) override {
            fText.append(static_cast<const char*>(data), size);
        }
    } writer;
    fDocument.save(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return writer.fText;
}

std::unique_ptr<BpChartNode> XDocument::MakeChartNode() const {
    if (!fRoot) {
        return nullptr;
    }
    auto chart = std::make_unique<BpChartNode>();
    chart->fTemplate = fRoot.attribute("template").value();
    chart->fTitle = ViZNode(fRoot.child("title")).getText();
    const std::string subtitle = ViZNode(fRoot.child("subtitle")).getText();
    if (!subtitle.empty()) {
        chart->fSubtitle = subtitle;
    }
    chart->fDescription = fDescription;
    chart->fSources = fSources;
    chart->fDocument = toXML();
    return chart;
}

bool XDocument::SendChart(bool, bool, bool) {
    BpProcedure* procedure = BpProcedure::Active();
    if (!fRoot || !procedure) {
        return false;
    }
    BpHeading heading = procedure->CurrentHeading();
    if (!heading) {
        return false;
    }
    heading.AddChart(MakeChartNode());
    return true;
}
