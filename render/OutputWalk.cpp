// The shared walk over the output tree.
#include "render/OutputWalk.h"

#include "host/bp/BpTree.h"

OutputVisitor::~OutputVisitor() = default;

namespace {
void WalkChildren(const BpHeadingNode& heading, std::vector<int>& number, OutputVisitor& visitor) {
    number.push_back(0);
    for (const auto& item : heading.fChildren) {
        switch (item->fKind) {
        case BpItem::kHeading: {
            const auto& child = static_cast<const BpHeadingNode&>(*item);
            ++number.back();
            visitor.EnterHeading(child, number);
            WalkChildren(child, number, visitor);
            visitor.LeaveHeading(child);
            break;
        }
        case BpItem::kTable:
            visitor.VisitTable(static_cast<const BpTableNode&>(*item));
            break;
        case BpItem::kChart:
            visitor.VisitChart(static_cast<const BpChartNode&>(*item));
            break;
        }
    }
    number.pop_back();
}
} // namespace

void WalkOutput(const BpHeadingNode& root, OutputVisitor& visitor) {
    std::vector<int> number;
    WalkChildren(root, number, visitor);
}
