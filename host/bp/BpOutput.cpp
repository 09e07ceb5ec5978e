// Writing the output tree through handles.
#include "host/bp/BpOutput.h"

#include <algorithm>
#include <cmath>

#include "host/cf/CFErrorChannel.h"
#include "host/fac/FacSTDictionary.h"
#include "host/vexa/VEXA_DataSource.h"

namespace {
thread_local BpProcedure* gActive = nullptr;
}

BpHeading::~BpHeading() = default;

BpHeading BpHeading::Heading(const BpCellText& text) {
    if (!fNode) {
        return {};
    }
    auto node = std::make_unique<BpHeadingNode>();
    node->fText = text.Resolve(*fProcedure).fText;
    node->fParent = fNode;
    BpHeadingNode* raw = node.get();
    fNode->fChildren.push_back(std::move(node));
    fProcedure->NoteHeadingCreated(raw);
    return {fProcedure, raw};
}

BpPivotTable BpHeading::PivotTable(const BpCellText& title, const BpCellText& subtype, bool) {
    if (!fNode) {
        return {};
    }
    auto node = std::make_unique<BpTableNode>();
    node->fTitle = title.Resolve(*fProcedure).fText;
    node->fSubtype = subtype.Resolve(*fProcedure).fText;
    node->fParent = fNode;
    BpTableNode* raw = node.get();
    fNode->fChildren.push_back(std::move(node));
    return {fProcedure, raw};
}

void BpHeading::AddChart(std::unique_ptr<BpChartNode> chart) {
    if (!fNode || !chart) {
        return;
    }
    chart->fParent = fNode;
    fNode->fChildren.push_back(std::move(chart));
}

void BpHeading::Remove() {
    if (!fNode || !fNode->fParent) {
        return;
    }
    fProcedure->NoteHeadingRemoved(fNode);
    auto& siblings = fNode->fParent->fChildren;
    auto it = std::find_if(siblings.begin(), siblings.end(),
                           [this](const auto& item) { return item.get() == fNode; });
    if (it != siblings.end()) {
        siblings.erase(it);
    }
    fNode = nullptr;
}

BpProcedure::BpProcedure(std::string title, const FacSTDictionary* dictionary,
                         const VEXA_DataSource* dataSource)
    : fRoot(std::make_unique<BpHeadingNode>()), fDictionary(dictionary), fDataSource(dataSource),
      fPreviousActive(gActive) {
    fRoot->fText = std::move(title);
    fProcedure = this;
    fNode = fRoot.get();
    fCurrent = fRoot.get();
    gActive = this;
}

BpProcedure::~BpProcedure() {
    if (gActive == this) {
        gActive = fPreviousActive;
    }
}

BpProcedure* BpProcedure::Active() {
    return gActive;
}

BpFormatSpec BpProcedure::Count() {
    return {BpFormatSpec::kFixed, 0};
}
BpFormatSpec BpProcedure::Significance() {
    return {BpFormatSpec::kSignificance, 3};
}
BpFormatSpec BpProcedure::Coefficient() {
    return {BpFormatSpec::kFixed, 3};
}
BpFormatSpec BpProcedure::Percent() {
    return {BpFormatSpec::kPercent, 1};
}
BpFormatSpec BpProcedure::SigDigit(double) {
    return {BpFormatSpec::kSignificant, 0};
}

BpFormatSpec BpProcedure::CountOrCoefficent(double value) {
    return std::isfinite(value) && value == std::trunc(value) && std::fabs(value) < 1e15
               ? Count()
               : Coefficient();
}

BpFormatSpec BpProcedure::StdDev(int index) const {
    const VEXA_Variable* variable = fDataSource ? fDataSource->GetVariable(index) : nullptr;
    if (!variable) {
        return Coefficient();
    }
    const VEXA_Format& format = variable->GetFormat();
    if (VEXA_Format::IsDateTime(format.fType)) {
        return Count();
    }
    return {BpFormatSpec::kFixed, std::clamp(format.fDecimals + 1, 1, 15)};
}

std::string BpProcedure::Translate(const std::string& key) const {
    return fDictionary ? fDictionary->LookUp(key) : key;
}

BpHeading BpProcedure::CurrentHeading() {
    return {this, fCurrent};
}

void BpProcedure::SetCurrentHeading(const BpHeading& heading) {
    if (heading.Procedure() == this && heading.Node()) {
        fCurrent = heading.Node();
    }
}

void BpProcedure::DropItemsAfter(size_t count) {
    if (count < fRoot->fChildren.size()) {
        fRoot->fChildren.resize(count);
    }
    fCurrent = fRoot.get();
}

void BpProcedure::NoteHeadingRemoved(const BpHeadingNode* node) {
    for (const BpHeadingNode* walk = fCurrent; walk; walk = walk->fParent) {
        if (walk == node) {
            fCurrent = node->fParent ? node->fParent : fRoot.get();
            return;
        }
    }
}

BpGroup::~BpGroup() = default;

namespace {
std::string IndexKey(int parent, char kind, const std::string& label) {
    std::string key = std::to_string(parent);
    key += kind;
    key += label;
    return key;
}

int FindOrAdd(BpTableDimension& dim, int parent, bool isGroup, std::string label) {
    const std::string key = IndexKey(parent, isGroup ? 'g' : 'c', label);
    auto it = dim.fIndex.find(key);
    if (it != dim.fIndex.end()) {
        return it->second;
    }
    const int node = static_cast<int>(dim.fNodes.size());
    BpTableCategory category;
    category.fLabel = std::move(label);
    category.fParent = parent;
    category.fIsGroup = isGroup;
    dim.fNodes.push_back(std::move(category));
    if (parent < 0) {
        dim.fTop.push_back(node);
    } else {
        dim.fNodes[static_cast<size_t>(parent)].fChildren.push_back(node);
    }
    dim.fIndex.emplace(key, node);
    return node;
}

void AddNote(std::vector<int>& notes, int number) {
    if (std::find(notes.begin(), notes.end(), number) == notes.end()) {
        notes.push_back(number);
    }
}

int NoteNumber(const BpProcedure& procedure, BpTableNode& table, const BpAnnotation& note) {
    if (!note.Text()) {
        return -1;
    }
    return table.Footnote(note.Text()->Resolve(procedure).fText);
}
} // namespace

BpCategory BpGroup::Category(const BpCellText& text) {
    if (!fTable) {
        return {};
    }
    BpTableDimension& dim = fTable->fDimensions[static_cast<size_t>(fDimension)];
    const int node = FindOrAdd(dim, fNode, false, text.Resolve(*fProcedure).fText);
    dim.fCurrent = node;
    return {fProcedure, fTable, fDimension, node};
}

BpGroup BpGroup::Group(const BpCellText& text, bool, Sort) {
    if (!fTable) {
        return {};
    }
    BpTableDimension& dim = fTable->fDimensions[static_cast<size_t>(fDimension)];
    const int node = FindOrAdd(dim, fNode, true, text.Resolve(*fProcedure).fText);
    return {fProcedure, fTable, fDimension, node};
}

void BpGroup::Note(const BpAnnotation& note) {
    if (!fTable) {
        return;
    }
    const int number = NoteNumber(*fProcedure, *fTable, note);
    if (number < 0) {
        return;
    }
    if (fNode < 0) {
        AddNote(fTable->fTitleNotes, number);
        return;
    }
    AddNote(fTable->fDimensions[static_cast<size_t>(fDimension)]
                .fNodes[static_cast<size_t>(fNode)]
                .fNotes,
            number);
}

void BpDimension::Position(Place place, int level, bool showName, bool) {
    if (!fTable) {
        return;
    }
    BpTableDimension& dim = fTable->fDimensions[static_cast<size_t>(fDimension)];
    dim.fPlace = place;
    dim.fLevel = level;
    dim.fShowName = showName;
}

std::vector<int> BpCategory::CurrentCoordinates() {
    fTable->fDimensions[static_cast<size_t>(fDimension)].fCurrent = fNode;
    std::vector<int> coordinates;
    coordinates.reserve(fTable->fDimensions.size());
    for (const BpTableDimension& dim : fTable->fDimensions) {
        coordinates.push_back(dim.fCurrent);
    }
    return coordinates;
}

void BpCategory::Cell(const BpCellText& text) {
    if (!fTable) {
        return;
    }
    std::vector<int> coordinates = CurrentCoordinates();
    BpTableCell& cell = fTable->fCells[BpTableNode::Key(coordinates)];
    cell.fText = text.Resolve(*fProcedure);
    cell.fCoordinates = std::move(coordinates);
}

void BpCategory::Note(const BpAnnotation& note) {
    if (!fTable) {
        return;
    }
    const int number = NoteNumber(*fProcedure, *fTable, note);
    if (number >= 0) {
        AddNote(fTable->fDimensions[static_cast<size_t>(fDimension)]
                    .fNodes[static_cast<size_t>(fNode)]
                    .fNotes,
                number);
    }
}

void BpCategory::CellNote(const BpAnnotation& note) {
    if (!fTable) {
        return;
    }
    const int number = NoteNumber(*fProcedure, *fTable, note);
    if (number < 0) {
        return;
    }
    std::vector<int> coordinates = CurrentCoordinates();
    BpTableCell& cell = fTable->fCells[BpTableNode::Key(coordinates)];
    if (cell.fCoordinates.empty()) {
        cell.fCoordinates = std::move(coordinates);
    }
    AddNote(cell.fNotes, number);
}

void BpPivotTable::Caption(const BpCellText& text) {
    if (fTable) {
        fTable->fCaption = text.Resolve(*fProcedure).fText;
    }
}

void BpPivotTable::MinDataColumnWidth(int width) {
    if (fTable) {
        fTable->fMinDataColumnWidth = width;
    }
}

void BpPivotTable::MaxDataColumnWidth(int width) {
    if (fTable) {
        fTable->fMaxDataColumnWidth = width;
    }
}

BpDimension BpPivotTable::Dimension(const BpCellText& name, BpGroup::Sort sort) {
    if (!fTable) {
        return {};
    }
    BpTableDimension dim;
    dim.fName = name.Resolve(*fProcedure).fText;
    dim.fSort = sort;
    fTable->fDimensions.push_back(std::move(dim));
    return {fProcedure, fTable, static_cast<int>(fTable->fDimensions.size() - 1), -1};
}

void BpPivotTable::Note(const BpAnnotation& note) {
    if (!fTable) {
        return;
    }
    const int number = NoteNumber(*fProcedure, *fTable, note);
    if (number >= 0) {
        AddNote(fTable->fTitleNotes, number);
    }
}

void BpError::Error(const std::string& text) {
    CFErrorChannel::Error(text);
}
void BpError::Warning(const std::string& text) {
    CFErrorChannel::Warning(text);
}
