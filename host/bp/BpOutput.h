// Handles through which a procedure writes the output tree: the procedure
// (the root heading, with the number formats and the string dictionary),
// headings, pivot tables with their dimensions, groups and categories. A
// handle is a cheap value pointing into the tree, which the procedure owns.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/bp/BpCellText.h"
#include "host/bp/BpFormat.h"
#include "host/bp/BpTree.h"

class BpProcedure;
class FacSTDictionary;
class VEXA_DataSource;
class BpPivotTable;

class BpHeading {
public:
    BpHeading() = default;
    BpHeading(BpProcedure* procedure, BpHeadingNode* node) : fProcedure(procedure), fNode(node) {}
    virtual ~BpHeading();
    BpHeading(const BpHeading&) = default;
    BpHeading& operator=(const BpHeading&) = default;

    // A heading nested under this one.
    BpHeading Heading(const BpCellText& text);
    // A pivot table under this heading, with its title and its subtype (the
    // table's identifier); the flag is kept for the host's use.
    BpPivotTable PivotTable(const BpCellText& title, const BpCellText& subtype, bool flag);
    // Appends a chart under this heading.
    void AddChart(std::unique_ptr<BpChartNode> chart);
    // Takes this heading and everything under it out of the output.
    void Remove();

    BpProcedure* Procedure() const { return fProcedure; }
    BpHeadingNode* Node() const { return fNode; }
    explicit operator bool() const { return fNode != nullptr; }

protected:
    BpProcedure* fProcedure = nullptr;
    BpHeadingNode* fNode = nullptr;
};

// The output of one procedure run: its root heading and the settings every
// text of it is resolved with.
class BpProcedure final : public BpHeading {
public:
    // `dictionary` translates the texts that ask for it (none: keys show as
    // themselves); `dataSource` gives the variables' formats.
    BpProcedure(std::string title, const FacSTDictionary* dictionary,
                const VEXA_DataSource* dataSource);
    ~BpProcedure() override;
    BpProcedure(const BpProcedure&) = delete;
    BpProcedure& operator=(const BpProcedure&) = delete;

    const BpHeadingNode& Root() const { return *fRoot; }
    const std::string& Title() const { return fRoot->fText; }
    // Takes out every item under the root after the first `count` (what a
    // split that failed part way wrote); the root becomes the current heading.
    void DropItemsAfter(size_t count);

    // Number formats.
    static BpFormatSpec Count();        // whole numbers
    static BpFormatSpec Significance(); // three decimals, "<.001" below
    static BpFormatSpec Coefficient();  // three decimals
    static BpFormatSpec Percent();      // a percentage such as 95%
    // A standard deviation of the variable at `index` of the data source: one
    // decimal more than the variable shows; whole numbers for date and time
    // variables (their deviations are in seconds).
    BpFormatSpec StdDev(int index) const;
    // A number with as many significant digits as it needs.
    static BpFormatSpec SigDigit(double level);
    // Whole numbers as counts, others as coefficients.
    static BpFormatSpec CountOrCoefficent(double value);

    // The text of a key in the string dictionary, or the key itself.
    std::string Translate(const std::string& key) const;
    const FacSTDictionary* Dictionary() const { return fDictionary; }
    const VEXA_DataSource* DataSource() const { return fDataSource; }

    // The procedure whose output is being written on this thread: the one
    // most recently constructed and not yet destroyed (charts are sent to it).
    static BpProcedure* Active();

    // Where charts go that are sent without a heading: the heading most
    // recently created or made current.
    BpHeading CurrentHeading();
    void SetCurrentHeading(const BpHeading& heading);
    void NoteHeadingCreated(BpHeadingNode* node) { fCurrent = node; }
    void NoteHeadingRemoved(const BpHeadingNode* node);

private:
    std::unique_ptr<BpHeadingNode> fRoot;
    const FacSTDictionary* fDictionary;
    const VEXA_DataSource* fDataSource;
    BpHeadingNode* fCurrent;
    BpProcedure* fPreviousActive;
};

class BpGroup;
class BpCategory;

// A group of categories (or a dimension's top level, for BpDimension).
class BpGroup {
public:
    enum Sort { kAscending = 0, kDescending = 1, kNone = 2 };

    BpGroup() = default;
    BpGroup(BpProcedure* procedure, BpTableNode* table, int dimension, int node)
        : fProcedure(procedure), fTable(table), fDimension(dimension), fNode(node) {}
    virtual ~BpGroup();
    BpGroup(const BpGroup&) = default;
    BpGroup& operator=(const BpGroup&) = default;

    // The category of that text in this group, made when it is new; it
    // becomes the dimension's current category.
    BpCategory Category(const BpCellText& text);
    // The group of that text in this group, made when it is new.
    BpGroup Group(const BpCellText& text, bool flag, Sort sort);
    // Attaches a footnote to the group's label.
    void Note(const BpAnnotation& note);

protected:
    BpProcedure* fProcedure = nullptr;
    BpTableNode* fTable = nullptr;
    int fDimension = -1;
    int fNode = -1; // -1: the dimension's top level
};

class BpDimension final : public BpGroup {
public:
    enum Place { kRows = 0, kColumns = 1, kLayers = 2 };
    using BpGroup::BpGroup;
    // Where the dimension goes: rows, columns or layers, at a level (outer
    // dimensions first among those of the same place).
    void Position(Place place, int level, bool showName, bool flag);
};

class BpCategory final {
public:
    BpCategory() = default;
    BpCategory(BpProcedure* procedure, BpTableNode* table, int dimension, int node)
        : fProcedure(procedure), fTable(table), fDimension(dimension), fNode(node) {}

    // Writes the cell at this category and the current categories of the
    // other dimensions; this category becomes its dimension's current one.
    void Cell(const BpCellText& text);
    // Attaches a footnote to the category's label.
    void Note(const BpAnnotation& note);
    // Attaches a footnote to the cell at this category and the current ones.
    void CellNote(const BpAnnotation& note);

private:
    std::vector<int> CurrentCoordinates();
    BpProcedure* fProcedure = nullptr;
    BpTableNode* fTable = nullptr;
    int fDimension = -1;
    int fNode = -1;
};

class BpPivotTable final {
public:
    BpPivotTable() = default;
    BpPivotTable(BpProcedure* procedure, BpTableNode* table)
        : fProcedure(procedure), fTable(table) {}

    void Caption(const BpCellText& text);
    void MinDataColumnWidth(int width);
    void MaxDataColumnWidth(int width);
    // A new dimension; categories are added through it.
    BpDimension Dimension(const BpCellText& name, BpGroup::Sort sort);
    // Attaches a footnote to the title.
    void Note(const BpAnnotation& note);

    BpTableNode* Node() const { return fTable; }

private:
    BpProcedure* fProcedure = nullptr;
    BpTableNode* fTable = nullptr;
};

// Errors and warnings of the output, reported through the host's error channel.
class BpError final {
public:
    static void Error(const std::string& text);
    static void Warning(const std::string& text);
};
