// The output tree and the layout of a pivot table.
#include "host/bp/BpTree.h"

#include <algorithm>
#include <cstring>
#include <map>

BpItem::~BpItem() = default;

std::vector<const BpTableCategory*> BpTableDimension::Path(int node) const {
    std::vector<const BpTableCategory*> path;
    while (node >= 0 && static_cast<size_t>(node) < fNodes.size()) {
        path.push_back(&fNodes[static_cast<size_t>(node)]);
        node = fNodes[static_cast<size_t>(node)].fParent;
    }
    std::reverse(path.begin(), path.end());
    return path;
}

std::vector<int> BpTableDimension::Leaves() const {
    std::vector<int> leaves;
    leaves.reserve(fNodes.size());
    std::vector<int> stack(fTop.rbegin(), fTop.rend());
    while (!stack.empty()) {
        const int node = stack.back();
        stack.pop_back();
        const BpTableCategory& category = fNodes[static_cast<size_t>(node)];
        if (category.fIsGroup) {
            stack.insert(stack.end(), category.fChildren.rbegin(), category.fChildren.rend());
        } else {
            leaves.push_back(node);
        }
    }
    return leaves;
}

std::string BpTableNode::Key(const std::vector<int>& coordinates) {
    std::string key(coordinates.size() * sizeof(int), '\0');
    if (!coordinates.empty()) {
        std::memcpy(key.data(), coordinates.data(), key.size());
    }
    return key;
}

const BpTableCell* BpTableNode::CellAt(const std::vector<int>& coordinates) const {
    auto it = fCells.find(Key(coordinates));
    return it == fCells.end() ? nullptr : &it->second;
}

int BpTableNode::Footnote(const std::string& text) {
    for (size_t i = 0; i < fFootnotes.size(); ++i) {
        if (fFootnotes[i] == text) {
            return static_cast<int>(i);
        }
    }
    fFootnotes.push_back(text);
    return static_cast<int>(fFootnotes.size() - 1);
}

std::string BpTableNode::Mark(int number) {
    std::string mark;
    int n = number;
    do {
        mark.insert(mark.begin(), static_cast<char>('a' + n % 26));
        n = n / 26 - 1;
    } while (n >= 0);
    return mark;
}

namespace {
// The dimensions of one place, outer first: by level, then in creation order.
std::vector<int> DimensionsAt(const BpTableNode& table, bool rows) {
    std::vector<int> dims;
    for (size_t d = 0; d < table.fDimensions.size(); ++d) {
        const int place = table.fDimensions[d].fPlace;
        if ((place == BpTableDimension::kColumns) != rows) {
            dims.push_back(static_cast<int>(d));
        }
    }
    std::stable_sort(dims.begin(), dims.end(), [&](int a, int b) {
        return table.fDimensions[static_cast<size_t>(a)].fLevel <
               table.fDimensions[static_cast<size_t>(b)].fLevel;
    });
    return dims;
}
} // namespace

BpTableLayout BpTableLayout::Of(const BpTableNode& table) {
    BpTableLayout layout;
    layout.fRowDimensions = DimensionsAt(table, true);
    layout.fColumnDimensions = DimensionsAt(table, false);

    // Display rank of every category of every dimension.
    std::vector<std::vector<int>> rank(table.fDimensions.size());
    for (size_t d = 0; d < table.fDimensions.size(); ++d) {
        const BpTableDimension& dim = table.fDimensions[d];
        rank[d].assign(dim.fNodes.size(), -1);
        int r = 0;
        for (int leaf : dim.Leaves()) {
            rank[d][static_cast<size_t>(leaf)] = r++;
        }
    }
    auto tupleOf = [](const BpTableCell& cell, const std::vector<int>& dims) {
        std::vector<int> tuple;
        tuple.reserve(dims.size());
        for (int d : dims) {
            const size_t i = static_cast<size_t>(d);
            tuple.push_back(i < cell.fCoordinates.size() ? cell.fCoordinates[i] : -1);
        }
        return tuple;
    };
    auto rankedLess = [&](const std::vector<int>& dims) {
        return [&rank, &dims](const std::vector<int>& a, const std::vector<int>& b) {
            for (size_t k = 0; k < dims.size(); ++k) {
                const auto& r = rank[static_cast<size_t>(dims[k])];
                const int ra = a[k] < 0 ? -1 : r[static_cast<size_t>(a[k])];
                const int rb = b[k] < 0 ? -1 : r[static_cast<size_t>(b[k])];
                if (ra != rb) {
                    return ra < rb;
                }
            }
            return false;
        };
    };
    for (const auto& [key, cell] : table.fCells) {
        layout.fRows.push_back(tupleOf(cell, layout.fRowDimensions));
        layout.fColumns.push_back(tupleOf(cell, layout.fColumnDimensions));
    }
    for (auto* tuples : {&layout.fRows, &layout.fColumns}) {
        const auto& dims =
            tuples == &layout.fRows ? layout.fRowDimensions : layout.fColumnDimensions;
        auto less = rankedLess(dims);
        std::sort(tuples->begin(), tuples->end(), less);
        tuples->erase(std::unique(tuples->begin(), tuples->end()), tuples->end());
    }
    return layout;
}

const BpTableCell* BpTableLayout::Cell(const BpTableNode& table, size_t row, size_t column) const {
    if (row >= fRows.size() || column >= fColumns.size()) {
        return nullptr;
    }
    std::vector<int> coordinates(table.fDimensions.size(), -1);
    for (size_t k = 0; k < fRowDimensions.size(); ++k) {
        coordinates[static_cast<size_t>(fRowDimensions[k])] = fRows[row][k];
    }
    for (size_t k = 0; k < fColumnDimensions.size(); ++k) {
        coordinates[static_cast<size_t>(fColumnDimensions[k])] = fColumns[column][k];
    }
    return table.CellAt(coordinates);
}
