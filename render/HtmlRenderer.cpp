// The HTML report of the output tree.
#include "render/HtmlRenderer.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <string_view>

#include <nlohmann/json.hpp>

#include "host/bp/BpFormat.h"
#include "host/xml/XMLText.h"

namespace {

void AppendEscaped(std::string& out, std::string_view text) {
    AppendXmlEscaped(out, text);
}

void AppendInt(std::string& out, size_t value) {
    char buffer[24];
    const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    out.append(buffer, ec == std::errc() ? end : buffer);
}

void AppendId(std::string& out, size_t id) {
    out += "item-";
    AppendInt(out, id);
}

// Script text placed inside <script>: "</script" in it (in any case) would
// end the element early, so it is written "<\/script", which means the same
// inside a string. Other "</" are left alone: in a regular expression literal
// the escape would change its meaning.
void AppendScriptText(std::string& out, std::string_view text) {
    static constexpr std::string_view kEnd = "</script";
    size_t from = 0;
    for (size_t at = text.find("</"); at != std::string_view::npos; at = text.find("</", at + 2)) {
        const std::string_view tag = text.substr(at, kEnd.size());
        bool end = tag.size() == kEnd.size();
        for (size_t i = 2; end && i < kEnd.size(); ++i) {
            end = (tag[i] | 0x20) == kEnd[i];
        }
        if (end) {
            out.append(text.substr(from, at - from));
            out += "<\\/";
            from = at + 2;
        }
    }
    out.append(text.substr(from));
}

// A source map comment would make the browser look for a file that is not there.
std::string_view WithoutSourceMap(std::string_view script) {
    const size_t at = script.rfind("//# sourceMappingURL=");
    return at == std::string_view::npos ? script : script.substr(0, at);
}

void AppendMarks(std::string& out, const std::vector<int>& notes) {
    if (notes.empty()) {
        return;
    }
    out += "<sup class=\"mark\">";
    for (size_t i = 0; i < notes.size(); ++i) {
        if (i > 0) {
            out += ',';
        }
        out += BpTableNode::Mark(notes[i]);
    }
    out += "</sup>";
}

// The items of the output in document order, each with its id (its index).
struct Entry {
    const BpItem* fItem;
    int fDepth; // 0: the procedure
};

void Collect(const BpItem& item, int depth, std::vector<Entry>& entries) {
    entries.push_back({&item, depth});
    if (item.fKind == BpItem::kHeading) {
        for (const auto& child : static_cast<const BpHeadingNode&>(item).fChildren) {
            if (child) {
                Collect(*child, depth + 1, entries);
            }
        }
    }
}

std::string_view ItemTitle(const BpItem& item) {
    switch (item.fKind) {
    case BpItem::kHeading:
        return static_cast<const BpHeadingNode&>(item).fText;
    case BpItem::kTable:
        return static_cast<const BpTableNode&>(item).fTitle;
    case BpItem::kChart:
        return static_cast<const BpChartNode&>(item).fTitle;
    }
    return {};
}

// ---- Outline -------------------------------------------------------------

void AppendOutline(std::string& out, const std::vector<Entry>& entries) {
    static constexpr const char* kKinds[] = {"heading", "table", "chart"};
    out += "<nav class=\"outline\" aria-label=\"Outline\">\n";
    // Entries come in document order, so each is at most one level below the
    // one before it: a deeper entry opens a list inside the open item.
    int open = 0;
    for (size_t i = 1; i < entries.size(); ++i) {
        const int depth = entries[i].fDepth;
        if (depth > open) {
            out += open == 0 ? "<ul>" : "<ul class=\"nested\">";
            ++open;
        } else {
            out += "</li>";
            for (; open > depth; --open) {
                out += "</ul></li>";
            }
        }
        const BpItem& item = *entries[i].fItem;
        out += "<li class=\"";
        out += kKinds[item.fKind];
        out += "\"><a href=\"#";
        AppendId(out, i);
        out += "\">";
        const std::string_view title = ItemTitle(item);
        AppendEscaped(out, title.empty() ? std::string_view("(untitled)") : title);
        out += "</a>";
    }
    if (open > 0) {
        out += "</li>";
        for (; open > 1; --open) {
            out += "</ul></li>";
        }
        out += "</ul>";
    }
    out += "\n</nav>\n";
}

// ---- Pivot tables --------------------------------------------------------

// One label position of the header (or of the row labels) of one column (or
// row): the category shown there, or what covers it.
struct Slot {
    int fDimension = 0; // index into the layout's dimensions of that place
    int fNode = -1;     // category or group; -1: no category
    int fExtent = 1;    // rows (header) or columns (row labels) it spans
    bool fCovered = false;
};

// The label slots of each tuple: one per level of each dimension, outer first.
// A category nearer to the dimension than its deepest sibling spans the levels
// below it.
std::vector<std::vector<Slot>> LabelSlots(const BpTableNode& table, const std::vector<int>& dims,
                                          const std::vector<std::vector<int>>& tuples) {
    std::vector<size_t> depth(dims.size(), 1);
    for (const auto& tuple : tuples) {
        for (size_t k = 0; k < dims.size(); ++k) {
            const auto& dim = table.fDimensions[static_cast<size_t>(dims[k])];
            depth[k] = std::max(depth[k], dim.Path(tuple[k]).size());
        }
    }
    size_t levels = 0;
    for (size_t d : depth) {
        levels += d;
    }
    std::vector<std::vector<Slot>> slots(tuples.size(), std::vector<Slot>(levels));
    for (size_t t = 0; t < tuples.size(); ++t) {
        size_t at = 0;
        for (size_t k = 0; k < dims.size(); ++k) {
            const auto& dim = table.fDimensions[static_cast<size_t>(dims[k])];
            const auto path = dim.Path(tuples[t][k]);
            const size_t shown = std::max<size_t>(path.size(), 1);
            for (size_t j = 0; j < depth[k]; ++j) {
                Slot& slot = slots[t][at + j];
                slot.fDimension = static_cast<int>(k);
                if (j + 1 < shown) {
                    slot.fNode = static_cast<int>(path[j] - dim.fNodes.data());
                } else if (j + 1 == shown) {
                    slot.fNode = path.empty() ? -1 : static_cast<int>(path[j] - dim.fNodes.data());
                    slot.fExtent = static_cast<int>(depth[k] - j);
                } else {
                    slot.fCovered = true;
                }
            }
            at += depth[k];
        }
    }
    return slots;
}

// Whether two tuples show one label at a level: the same categories in the
// dimensions outside it and the same category at that level.
bool SameLabel(const std::vector<std::vector<int>>& tuples,
               const std::vector<std::vector<Slot>>& slots, size_t a, size_t b, size_t level) {
    const Slot& sa = slots[a][level];
    const Slot& sb = slots[b][level];
    if (sa.fCovered || sb.fCovered || sa.fNode != sb.fNode || sa.fExtent != sb.fExtent) {
        return false;
    }
    for (int k = 0; k < sa.fDimension; ++k) {
        if (tuples[a][static_cast<size_t>(k)] != tuples[b][static_cast<size_t>(k)]) {
            return false;
        }
    }
    return true;
}

void AppendLabel(std::string& out, const BpTableNode& table, const std::vector<int>& dims,
                 const Slot& slot) {
    if (slot.fNode < 0) {
        return;
    }
    const auto& dim =
        table.fDimensions[static_cast<size_t>(dims[static_cast<size_t>(slot.fDimension)])];
    const BpTableCategory& category = dim.fNodes[static_cast<size_t>(slot.fNode)];
    AppendEscaped(out, category.fLabel);
    AppendMarks(out, category.fNotes);
}

void AppendSpan(std::string& out, const char* name, size_t span) {
    if (span > 1) {
        out += ' ';
        out += name;
        out += "=\"";
        AppendInt(out, span);
        out += '"';
    }
}

bool IsNumeric(const BpResolvedText& text) {
    return text.fValue.has_value() || text.fText == kBpMissingText;
}

void AppendTable(std::string& out, const BpTableNode& table, size_t id) {
    const BpTableLayout layout = BpTableLayout::Of(table);
    const auto columnSlots = LabelSlots(table, layout.fColumnDimensions, layout.fColumns);
    const auto rowSlots = LabelSlots(table, layout.fRowDimensions, layout.fRows);
    const size_t headerRows = columnSlots.empty() ? 0 : columnSlots.front().size();
    const size_t labelColumns = rowSlots.empty() ? 0 : rowSlots.front().size();
    const size_t columns = layout.fColumns.size();

    out += "<section class=\"item table\" id=\"";
    AppendId(out, id);
    out += "\" data-subtype=\"";
    AppendEscaped(out, table.fSubtype);
    out += "\">\n<div class=\"table-frame\"><table class=\"pivot\">\n<caption>";
    AppendEscaped(out, table.fTitle);
    AppendMarks(out, table.fTitleNotes);
    out += "</caption>\n";

    if (headerRows > 0) {
        out += "<thead>\n";
        for (size_t r = 0; r < headerRows; ++r) {
            out += "<tr>";
            if (r == 0 && labelColumns > 0) {
                out += "<td class=\"corner\"";
                AppendSpan(out, "rowspan", headerRows);
                AppendSpan(out, "colspan", labelColumns);
                out += "></td>";
            }
            for (size_t c = 0; c < columns;) {
                const Slot& slot = columnSlots[c][r];
                if (slot.fCovered) {
                    ++c;
                    continue;
                }
                size_t span = 1;
                while (c + span < columns &&
                       SameLabel(layout.fColumns, columnSlots, c, c + span, r)) {
                    ++span;
                }
                out += span > 1 ? "<th scope=\"colgroup\"" : "<th scope=\"col\"";
                AppendSpan(out, "colspan", span);
                AppendSpan(out, "rowspan", static_cast<size_t>(slot.fExtent));
                out += '>';
                AppendLabel(out, table, layout.fColumnDimensions, slot);
                out += "</th>";
                c += span;
            }
            out += "</tr>\n";
        }
        out += "</thead>\n";
    }

    out += "<tbody>\n";
    const size_t rows = layout.fRows.size();
    for (size_t r = 0; r < rows; ++r) {
        out += "<tr>";
        for (size_t w = 0; w < labelColumns; ++w) {
            const Slot& slot = rowSlots[r][w];
            if (slot.fCovered || (r > 0 && SameLabel(layout.fRows, rowSlots, r - 1, r, w))) {
                continue;
            }
            size_t span = 1;
            while (r + span < rows && SameLabel(layout.fRows, rowSlots, r, r + span, w)) {
                ++span;
            }
            out += span > 1 ? "<th scope=\"rowgroup\"" : "<th scope=\"row\"";
            AppendSpan(out, "rowspan", span);
            AppendSpan(out, "colspan", static_cast<size_t>(slot.fExtent));
            out += '>';
            AppendLabel(out, table, layout.fRowDimensions, slot);
            out += "</th>";
        }
        for (size_t c = 0; c < columns; ++c) {
            const BpTableCell* cell = layout.Cell(table, r, c);
            if (!cell) {
                out += "<td></td>";
                continue;
            }
            out += IsNumeric(cell->fText) ? "<td class=\"num\">" : "<td>";
            AppendEscaped(out, cell->fText.fText);
            AppendMarks(out, cell->fNotes);
            out += "</td>";
        }
        out += "</tr>\n";
    }
    out += "</tbody>\n</table></div>\n";

    if (table.fCaption && !table.fCaption->empty()) {
        out += "<p class=\"table-caption\">";
        AppendEscaped(out, *table.fCaption);
        out += "</p>\n";
    }
    if (!table.fFootnotes.empty()) {
        out += "<ul class=\"footnotes\">";
        for (size_t i = 0; i < table.fFootnotes.size(); ++i) {
            out += "<li><sup class=\"mark\">";
            out += BpTableNode::Mark(static_cast<int>(i));
            out += "</sup> ";
            AppendEscaped(out, table.fFootnotes[i]);
            out += "</li>";
        }
        out += "</ul>\n";
    }
    out += "</section>\n";
}

// ---- Charts --------------------------------------------------------------

nlohmann::ordered_json ChartJson(const BpChartNode& chart) {
    nlohmann::ordered_json data = nlohmann::ordered_json::object();
    for (const BpChartNode::Source& source : chart.fSources) {
        nlohmann::ordered_json variables = nlohmann::ordered_json::object();
        for (const BpChartNode::Variable& variable : source.fVariables) {
            nlohmann::ordered_json values = nlohmann::ordered_json::array();
            for (const BpChartNode::Value& value : variable.fValues) {
                if (const double* number = std::get_if<double>(&value)) {
                    values.push_back(*number);
                } else if (const std::string* text = std::get_if<std::string>(&value)) {
                    values.push_back(*text);
                } else {
                    values.push_back(nullptr);
                }
            }
            variables[variable.fName] = std::move(values);
        }
        data[source.fName] = std::move(variables);
    }
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    json["template"] = chart.fTemplate;
    json["title"] = chart.fTitle;
    json["subtitle"] =
        chart.fSubtitle ? nlohmann::ordered_json(*chart.fSubtitle) : nlohmann::ordered_json();
    json["description"] = chart.fDescription;
    json["data"] = std::move(data);
    json["document"] = chart.fDocument;
    return json;
}

void AppendChart(std::string& out, const BpChartNode& chart, size_t id,
                 const std::string& missing) {
    out += "<figure class=\"item chart\" id=\"";
    AppendId(out, id);
    out += "\" data-template=\"";
    AppendEscaped(out, chart.fTemplate);
    out += "\">\n<div class=\"chart-view\" role=\"img\" aria-label=\"";
    AppendEscaped(out, chart.fDescription.empty() ? chart.fTitle : chart.fDescription);
    out += "\"><p class=\"chart-pending\">";
    if (missing.empty()) {
        AppendEscaped(out, chart.fTitle);
    } else {
        out += "This chart cannot be drawn: ";
        AppendEscaped(out, missing);
    }
    out += "</p></div>\n<script type=\"application/json\" class=\"chart-data\">";
    // Every "<" of the data is escaped so that no text in it can end the
    // element; JSON.parse reads the escape back.
    const std::string json =
        ChartJson(chart).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    for (const char c : json) {
        if (c == '<') {
            out += "\\u003c";
        } else {
            out += c;
        }
    }
    out += "</script>\n<figcaption>";
    AppendEscaped(out, chart.fDescription);
    out += "</figcaption>\n</figure>\n";
}

// ---- The page ------------------------------------------------------------

void AppendMessages(std::string& out, const std::vector<CFMessage>& messages) {
    if (messages.empty()) {
        return;
    }
    out += "<section class=\"messages\" aria-label=\"Messages\">\n<h2>Messages</h2>\n<ul>";
    for (const CFMessage& message : messages) {
        const bool error = message.fKind == CFMessage::kError;
        out += error ? "<li class=\"error\"><span class=\"kind\">Error</span> "
                     : "<li class=\"warning\"><span class=\"kind\">Warning</span> ";
        AppendEscaped(out, message.WithSource());
        out += "</li>";
    }
    out += "</ul>\n</section>\n";
}

// `missing`: why charts cannot be drawn (empty when they can). `drain` is
// called after each item, so that a writer can pass on what is held.
void AppendBody(std::string& out, const std::vector<Entry>& entries, const std::string& missing,
                const std::function<void()>& drain) {
    // Headings open a section closed when an entry at their depth or above
    // follows.
    std::vector<int> open;
    for (size_t i = 1; i < entries.size(); ++i) {
        const int depth = entries[i].fDepth;
        while (!open.empty() && open.back() >= depth) {
            out += "</section>\n";
            open.pop_back();
        }
        const BpItem& item = *entries[i].fItem;
        switch (item.fKind) {
        case BpItem::kHeading: {
            const int level = std::min(depth + 1, 6);
            const char digit = static_cast<char>('0' + level);
            out += "<section class=\"heading\" id=\"";
            AppendId(out, i);
            out += "\">\n<h";
            out += digit;
            out += '>';
            AppendEscaped(out, static_cast<const BpHeadingNode&>(item).fText);
            out += "</h";
            out += digit;
            out += ">\n";
            open.push_back(depth);
            break;
        }
        case BpItem::kTable:
            AppendTable(out, static_cast<const BpTableNode&>(item), i);
            break;
        case BpItem::kChart:
            AppendChart(out, static_cast<const BpChartNode&>(item), i, missing);
            break;
        }
        drain();
    }
    for (size_t k = 0; k < open.size(); ++k) {
        out += "</section>\n";
    }
}

} // namespace

HtmlRenderer::HtmlRenderer(std::string webFolder) : fWebFolder(std::move(webFolder)) {
    static constexpr const char* kScripts[] = {"vega.min.js", "vega-lite.min.js",
                                               "vega-embed.min.js", "charts.js"};
    ReadWebFile("report.css", fStyle);
    for (const char* name : kScripts) {
        if (!ReadWebFile(name, fScripts.emplace_back())) {
            fScripts.clear();
            break;
        }
    }
}

std::string HtmlRenderer::DefaultWebFolder() {
    if (const char* resources = std::getenv("NPTESTS_RESOURCES"); resources && *resources) {
        return std::string(resources) + "/web";
    }
    return NPTESTS_WEB_DIR;
}

bool HtmlRenderer::ReadWebFile(const std::string& name, std::string& text) {
    const std::string path = fWebFolder + "/" + name;
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        if (fError.empty()) {
            fError = "cannot read " + path + " (run scripts/setup, then build again)";
        }
        return false;
    }
    text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return true;
}

std::string HtmlRenderer::Render(const BpHeadingNode& root,
                                 const std::vector<CFMessage>& messages) const {
    std::string out;
    Write(root, messages, out, [] {});
    return out;
}

bool HtmlRenderer::RenderTo(const BpHeadingNode& root, const std::vector<CFMessage>& messages,
                            std::FILE* file) const {
    std::string out;
    bool ok = true;
    const auto drain = [&] {
        ok = ok && std::fwrite(out.data(), 1, out.size(), file) == out.size();
        out.clear();
    };
    Write(root, messages, out, drain);
    drain();
    return ok;
}

void HtmlRenderer::Write(const BpHeadingNode& root, const std::vector<CFMessage>& messages,
                         std::string& out, const std::function<void()>& drain) const {
    std::vector<Entry> entries;
    Collect(root, 0, entries);
    bool hasCharts = false;
    for (const Entry& entry : entries) {
        hasCharts = hasCharts || entry.fItem->fKind == BpItem::kChart;
    }

    const std::string_view title =
        root.fText.empty() ? std::string_view("Output") : std::string_view(root.fText);
    out += "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
           "<title>";
    AppendEscaped(out, title);
    out += "</title>\n<style>\n";
    out += fStyle;
    out += "</style>\n";
    // The chart scripts come first so that charts on the first screen are
    // drawn while the rest of a long report is still being read.
    if (hasCharts) {
        for (const std::string& script : fScripts) {
            out += "<script>";
            AppendScriptText(out, WithoutSourceMap(script));
            out += "</script>\n";
        }
    }
    out += "</head>\n<body>\n<header class=\"report-header\"><h1>";
    AppendEscaped(out, title);
    out += "</h1></header>\n<div class=\"report\">\n";
    out += "<main>\n";
    AppendMessages(out, messages);
    AppendBody(out, entries, fScripts.empty() ? fError : std::string(), drain);
    out += "</main>\n";
    // The outline follows the output in the page (the style puts it first on
    // the screen), so that a long outline does not hold up the first screen.
    AppendOutline(out, entries);
    out += "</div>\n</body>\n</html>\n";
}
