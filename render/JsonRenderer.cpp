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

// Builds the nested item lists: one open list per heading being walked.
class JsonBuilder final : public OutputVisitor {
public:
    JsonBuilder() { fOpen.push_back(Json::array()); }

    void EnterHeading(const BpHeadingNode&, const std::vector<int>&) override {
        fOpen.push_back(Json::array());
    }
    void LeaveHeading(const BpHeadingNode& heading) override {
        Json item = Json::object();
        item["kind"] = "heading";
        item["text"] = heading.fText;
        item["items"] = std::move(fOpen.back());
        fOpen.pop_back();
        fOpen.back().push_back(std::move(item));
    }
    void VisitTable(const BpTableNode& table) override { fOpen.back().push_back(Table(table)); }
    void VisitChart(const BpChartNode& chart) override { fOpen.back().push_back(Chart(chart)); }

    Json TakeItems() { return std::move(fOpen.front()); }

private:
    std::vector<Json> fOpen;
};
} // namespace

std::string JsonRenderer::Render(const BpHeadingNode& root,
                                 const std::vector<CFMessage>& messages) const {
    JsonBuilder builder;
    WalkOutput(root, builder);
    Json out = Json::object();
    out["procedure"] = root.fText;
    out["items"] = builder.TakeItems();
    Json list = Json::array();
    for (const CFMessage& message : messages) {
        Json entry = Json::object();
        entry["kind"] = message.fKind == CFMessage::kWarning ? "warning" : "error";
        entry["text"] = message.fText;
        list.push_back(std::move(entry));
    }
    out["messages"] = std::move(list);
    std::string text = out.dump(2, ' ', false, Json::error_handler_t::replace);
    text += '\n';
    return text;
}
