// Writing the output tree as JSON.
#include "render/JsonRenderer.h"

#include <cmath>

#include <nlohmann/json.hpp>

#include "host/bp/BpTree.h"
#include "host/cf/CFErrorChannel.h"
#include "render/OutputWalk.h"
#include "render/TableGrid.h"

namespace {
using Json = nlohmann::ordered_json;

Json Marks(const std::vector<int>& notes) {
    Json marks = Json::array();
    for (std::string& mark : FootnoteMarks(notes)) {
        marks.push_back(std::move(mark));
    }
    return marks;
}

Json Label(const GridLabel& label) {
    Json out = Json::object();
    out["text"] = label.fCategory->fLabel;
    out["footnotes"] = Marks(label.fCategory->fNotes);
    return out;
}

Json Labels(const GridPath& path) {
    Json out = Json::array();
    for (const GridLabel& label : path) {
        out.push_back(Label(label));
    }
    return out;
}

Json Number(double value) {
    return std::isfinite(value) ? Json(value) : Json(nullptr);
}

Json Cell(const BpTableCell* cell) {
    if (!cell) {
        return nullptr;
    }
    Json out = Json::object();
    out["text"] = cell->fText.fText;
    out["value"] = cell->fText.fValue ? Number(*cell->fText.fValue) : Json(nullptr);
    out["footnotes"] = Marks(cell->fNotes);
    return out;
}

Json Table(const BpTableNode& table) {
    const TableGrid grid = TableGrid::Of(table);
    Json out = Json::object();
    out["kind"] = "table";
    out["title"] = table.fTitle;
    out["subtype"] = table.fSubtype;
    out["caption"] = table.fCaption ? Json(*table.fCaption) : Json(nullptr);
    Json columns = Json::array();
    for (const GridPath& column : grid.fColumns) {
        columns.push_back(Labels(column));
    }
    out["columns"] = std::move(columns);
    Json rows = Json::array();
    for (const TableGrid::Row& row : grid.fRows) {
        Json cells = Json::array();
        for (const BpTableCell* cell : row.fCells) {
            cells.push_back(Cell(cell));
        }
        Json entry = Json::object();
        entry["labels"] = Labels(row.fLabels);
        entry["cells"] = std::move(cells);
        rows.push_back(std::move(entry));
    }
    out["rows"] = std::move(rows);
    Json footnotes = Json::array();
    for (size_t i = 0; i < table.fFootnotes.size(); ++i) {
        Json note = Json::object();
        note["mark"] = BpTableNode::Mark(static_cast<int>(i));
        note["text"] = table.fFootnotes[i];
        footnotes.push_back(std::move(note));
    }
    out["footnotes"] = std::move(footnotes);
    return out;
}

Json ChartValue(const BpChartNode::Value& value) {
    if (const double* number = std::get_if<double>(&value)) {
        return Number(*number);
    }
    if (const std::string* text = std::get_if<std::string>(&value)) {
        return *text;
    }
    return nullptr;
}

Json Chart(const BpChartNode& chart) {
    Json out = Json::object();
    out["kind"] = "chart";
    out["template"] = chart.fTemplate;
    out["title"] = chart.fTitle;
    out["subtitle"] = chart.fSubtitle ? Json(*chart.fSubtitle) : Json(nullptr);
    out["description"] = chart.fDescription;
    Json data = Json::object();
    for (const BpChartNode::Source& source : chart.fSources) {
        Json variables = Json::object();
        for (const BpChartNode::Variable& variable : source.fVariables) {
            Json values = Json::array();
            for (const BpChartNode::Value& value : variable.fValues) {
                values.push_back(ChartValue(value));
            }
            variables[variable.fName] = std::move(values);
        }
        data[source.fName] = std::move(variables);
    }
    out["data"] = std::move(data);
    out["document"] = chart.fDocument;
    return out;
}

// Appends values to a text as nlohmann's two-space pretty print of a whole
// document would place them at a given depth.
class IndentedAppender final {
public:
    explicit IndentedAppender(std::string& out)
        : fSerializer(nlohmann::detail::output_adapter<char, std::string>(out), ' ',
                      Json::error_handler_t::replace) {}

    void Append(const Json& json, unsigned indent) {
        fSerializer.dump(json, true, false, 2, indent);
    }

private:
    nlohmann::detail::serializer<Json> fSerializer;
};

// Writes the document as it walks: each table and chart is made into a JSON
// value, written and dropped, so that the output never exists twice; with a
// file, the text goes there a megabyte at a time. The text is the pretty
// print of the whole document, byte for byte.
class JsonWriter final : public OutputVisitor {
public:
    // Opens the item list that is a member of the object at `indent`.
    JsonWriter(std::string& out, IndentedAppender& appender, std::FILE* file, size_t indent)
        : fOut(out), fAppender(appender), fFile(file) {
        Open(indent);
    }

    void EnterHeading(const BpHeadingNode& heading, const std::vector<int>&) override {
        const size_t indent = StartItem();
        fOut += "{\n";
        fOut.append(indent + 2, ' ');
        fOut += "\"kind\": \"heading\",\n";
        fOut.append(indent + 2, ' ');
        fOut += "\"text\": ";
        fAppender.Append(Json(heading.fText), 0);
        fOut += ",\n";
        fOut.append(indent + 2, ' ');
        fOut += "\"items\": ";
        Open(indent + 2);
    }
    void LeaveHeading(const BpHeadingNode&) override {
        Close();
        fOut += '\n';
        fOut.append(fOpen.back().fIndent + 2, ' ');
        fOut += '}';
    }
    void VisitTable(const BpTableNode& table) override {
        const size_t indent = StartItem();
        fAppender.Append(Table(table), static_cast<unsigned>(indent));
        Flush(false);
    }
    void VisitChart(const BpChartNode& chart) override {
        const size_t indent = StartItem();
        fAppender.Append(Chart(chart), static_cast<unsigned>(indent));
        Flush(false);
    }

    // Closes the outermost list.
    void Finish() { Close(); }

    // Moves the text made so far to the file, when there is one and, unless
    // `all`, once there is enough of it; false after a write failed.
    bool Flush(bool all) {
        constexpr size_t kChunk = size_t{1} << 20;
        if (fFile && (all || fOut.size() >= kChunk)) {
            fOk = fOk && std::fwrite(fOut.data(), 1, fOut.size(), fFile) == fOut.size();
            fOut.clear();
        }
        return fOk;
    }

private:
    struct List {
        size_t fIndent; // of the object the list is a member of
        bool fEmpty = true;
    };

    void Open(size_t indent) { fOpen.push_back({indent}); }

    // Separates an item from the one before and indents it; its indent.
    size_t StartItem() {
        List& list = fOpen.back();
        fOut += list.fEmpty ? "[\n" : ",\n";
        list.fEmpty = false;
        fOut.append(list.fIndent + 2, ' ');
        return list.fIndent + 2;
    }

    void Close() {
        const List list = fOpen.back();
        fOpen.pop_back();
        if (list.fEmpty) {
            fOut += "[]";
        } else {
            fOut += '\n';
            fOut.append(list.fIndent, ' ');
            fOut += ']';
        }
    }

    std::string& fOut;
    IndentedAppender& fAppender;
    std::FILE* fFile;
    bool fOk = true;
    std::vector<List> fOpen;
};
} // namespace

namespace {
// The document into `text`, or with a file, through `text` into the file.
bool WriteJson(const BpHeadingNode& root, const std::vector<CFMessage>& messages, std::string& text,
               std::FILE* file) {
    text = "{\n  \"procedure\": ";
    IndentedAppender appender(text);
    appender.Append(Json(root.fText), 0);
    text += ",\n  \"items\": ";
    JsonWriter writer(text, appender, file, 2);
    WalkOutput(root, writer);
    writer.Finish();
    Json list = Json::array();
    for (const CFMessage& message : messages) {
        Json entry = Json::object();
        entry["kind"] = message.fKind == CFMessage::kWarning ? "warning" : "error";
        entry["text"] = message.fText;
        entry["document"] = message.fDocument.empty() ? Json(nullptr) : Json(message.fDocument);
        list.push_back(std::move(entry));
    }
    text += ",\n  \"messages\": ";
    appender.Append(list, 2);
    text += "\n}\n";
    return writer.Flush(true);
}
} // namespace

std::string JsonRenderer::Render(const BpHeadingNode& root,
                                 const std::vector<CFMessage>& messages) const {
    std::string text;
    WriteJson(root, messages, text, nullptr);
    return text;
}

bool JsonRenderer::RenderTo(const BpHeadingNode& root, const std::vector<CFMessage>& messages,
                            std::FILE* out) const {
    std::string text;
    return WriteJson(root, messages, text, out);
}
