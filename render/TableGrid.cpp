// Laying out a pivot table as a grid of labelled rows and columns.
#include "render/TableGrid.h"

#include <algorithm>
#include <unordered_map>

#include "host/bp/BpTree.h"

namespace {
GridPath PathOf(const BpTableNode& table, const std::vector<int>& dimensions,
                const std::vector<int>& tuple) {
    GridPath path;
    for (size_t k = 0; k < dimensions.size() && k < tuple.size(); ++k) {
        const BpTableDimension& dim = table.fDimensions[static_cast<size_t>(dimensions[k])];
        int node = tuple[k];
        const size_t start = path.size();
        while (node >= 0 && static_cast<size_t>(node) < dim.fNodes.size()) {
            path.push_back({&dim.fNodes[static_cast<size_t>(node)], node, static_cast<int>(k)});
            node = dim.fNodes[static_cast<size_t>(node)].fParent;
        }
        std::reverse(path.begin() + static_cast<std::ptrdiff_t>(start), path.end());
    }
    return path;
}

// The part of a cell's coordinates that lies on the given dimensions.
std::string TupleKey(const BpTableCell& cell, const std::vector<int>& dimensions) {
    std::vector<int> tuple;
    tuple.reserve(dimensions.size());
    for (int d : dimensions) {
        const size_t i = static_cast<size_t>(d);
        tuple.push_back(i < cell.fCoordinates.size() ? cell.fCoordinates[i] : -1);
    }
    return BpTableNode::Key(tuple);
}
} // namespace

TableGrid TableGrid::Of(const BpTableNode& table) {
    const BpTableLayout layout = BpTableLayout::Of(table);
    TableGrid grid;
    for (int d : layout.fRowDimensions) {
        grid.fRowDimensions.push_back(&table.fDimensions[static_cast<size_t>(d)]);
    }
    for (int d : layout.fColumnDimensions) {
        grid.fColumnDimensions.push_back(&table.fDimensions[static_cast<size_t>(d)]);
    }
    std::unordered_map<std::string, size_t> rowIndex;
    std::unordered_map<std::string, size_t> columnIndex;
    rowIndex.reserve(layout.fRows.size());
    columnIndex.reserve(layout.fColumns.size());
    grid.fColumns.reserve(layout.fColumns.size());
    for (const std::vector<int>& tuple : layout.fColumns) {
        columnIndex.emplace(BpTableNode::Key(tuple), grid.fColumns.size());
        grid.fColumns.push_back(PathOf(table, layout.fColumnDimensions, tuple));
    }
    grid.fRows.reserve(layout.fRows.size());
    for (const std::vector<int>& tuple : layout.fRows) {
        rowIndex.emplace(BpTableNode::Key(tuple), grid.fRows.size());
        Row row;
        row.fLabels = PathOf(table, layout.fRowDimensions, tuple);
        row.fCells.assign(grid.fColumns.size(), nullptr);
        grid.fRows.push_back(std::move(row));
    }
    for (const auto& [key, cell] : table.fCells) {
        auto r = rowIndex.find(TupleKey(cell, layout.fRowDimensions));
        auto c = columnIndex.find(TupleKey(cell, layout.fColumnDimensions));
        if (r != rowIndex.end() && c != columnIndex.end()) {
            grid.fRows[r->second].fCells[c->second] = &cell;
        }
    }
    return grid;
}

std::vector<std::string> FootnoteMarks(const std::vector<int>& notes) {
    std::vector<std::string> marks;
    marks.reserve(notes.size());
    for (int note : notes) {
        if (note >= 0) {
            marks.push_back(BpTableNode::Mark(note));
        }
    }
    return marks;
}
