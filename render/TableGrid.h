// A pivot table laid out for rendering: the label path of every data column
// and every row, and the cell at each row and column. Renderers of every
// format read tables through this grid.
#pragma once

#include <string>
#include <vector>

struct BpTableNode;
struct BpTableDimension;
struct BpTableCategory;
struct BpTableCell;

// One label of a path: a group or category of one dimension.
struct GridLabel {
    const BpTableCategory* fCategory; // its text and footnote numbers
    int fNode;                        // the category's node in its dimension
    int fDimension;                   // which row (or column) dimension, outer first
};
using GridPath = std::vector<GridLabel>;

struct TableGrid {
    struct Row {
        GridPath fLabels;                       // outer dimension first, groups before members
        std::vector<const BpTableCell*> fCells; // one per column; null where there is none
    };
    std::vector<const BpTableDimension*> fRowDimensions;    // outer first
    std::vector<const BpTableDimension*> fColumnDimensions; // outer first
    std::vector<GridPath> fColumns;                         // in display order
    std::vector<Row> fRows;                                 // in display order

    static TableGrid Of(const BpTableNode& table);
};

// Footnote marks of a list of footnote numbers: "a", "b", ... in list order.
std::vector<std::string> FootnoteMarks(const std::vector<int>& notes);
