// The output tree: what a procedure wrote — headings, pivot tables and charts
// — with every text resolved. The renderers read it; procedures write it
// through the handles of BpOutput.h.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

#include "host/bp/BpCellText.h"

struct BpItem {
    enum Kind { kHeading, kTable, kChart };
    explicit BpItem(Kind kind) : fKind(kind) {}
    virtual ~BpItem();
    const Kind fKind;
    struct BpHeadingNode* fParent = nullptr;
};

struct BpHeadingNode final : BpItem {
    BpHeadingNode() : BpItem(kHeading) {}
    std::string fText;
    std::vector<std::unique_ptr<BpItem>> fChildren;
};

// A category or a group of categories of one dimension.
struct BpTableCategory {
    std::string fLabel;
    std::vector<int> fNotes; // footnote numbers (0 = "a")
    int fParent = -1;        // the group it belongs to; -1: the dimension itself
    bool fIsGroup = false;
    std::vector<int> fChildren; // a group's members, in order
};

struct BpTableDimension {
    enum Place { kRows = 0, kColumns = 1, kLayers = 2 };
    std::string fName;
    int fSort = 2;
    int fPlace = kRows;
    int fLevel = 1;
    bool fShowName = true;
    std::vector<BpTableCategory> fNodes;
    std::vector<int> fTop; // the members directly under the dimension, in order
    int fCurrent = -1;     // the current category (a leaf)
    std::unordered_map<std::string, int> fIndex; // (group, label) -> node

    // The labels from the outermost group down to a category.
    std::vector<const BpTableCategory*> Path(int node) const;
    // The leaves in display order (groups before their members' successors).
    std::vector<int> Leaves() const;
};

struct BpTableCell {
    BpResolvedText fText;
    std::vector<int> fNotes;
    std::vector<int> fCoordinates; // one category per dimension, -1 for none
};

struct BpTableNode final : BpItem {
    BpTableNode() : BpItem(kTable) {}
    std::string fTitle;
    std::vector<int> fTitleNotes;
    std::string fSubtype;
    std::optional<std::string> fCaption;
    int fMinDataColumnWidth = -1;
    int fMaxDataColumnWidth = -1;
    std::vector<BpTableDimension> fDimensions;
    std::vector<std::string> fFootnotes; // by number; lettered a, b, ... in this order
    std::unordered_map<std::string, BpTableCell> fCells; // by the coordinate key below

    // The key of the cell at one category of each dimension (-1 for none).
    static std::string Key(const std::vector<int>& coordinates);
    // The cell at the given categories, or null.
    const BpTableCell* CellAt(const std::vector<int>& coordinates) const;
    // The footnote number of a text, adding it at the end when it is new.
    int Footnote(const std::string& text);
    // "a".."z", "aa", "ab", ...
    static std::string Mark(int number);
};

// What a renderer lays out: the row and column tuples that hold cells, in
// display order. Each tuple holds one category per row (or column) dimension,
// in the order of `fRowDimensions` (or `fColumnDimensions`).
struct BpTableLayout {
    std::vector<int> fRowDimensions;
    std::vector<int> fColumnDimensions;
    std::vector<std::vector<int>> fRows;
    std::vector<std::vector<int>> fColumns;

    static BpTableLayout Of(const BpTableNode& table);
    // The cell of a row and a column of this layout, or null.
    const BpTableCell* Cell(const BpTableNode& table, size_t row, size_t column) const;
};

// One chart: the final chart document with its data, title and description.
struct BpChartNode final : BpItem {
    BpChartNode() : BpItem(kChart) {}
    using Value = std::variant<std::monostate, double, std::string>;
    struct Variable {
        std::string fName;
        std::vector<Value> fValues; // by row; monostate: no value in that row
    };
    struct Source {
        std::string fName;
        std::vector<Variable> fVariables;
    };
    std::string fTemplate;
    std::string fTitle;
    std::optional<std::string> fSubtitle;
    std::string fDescription;
    std::vector<Source> fSources;
    std::string fDocument;
};
