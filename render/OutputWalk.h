// The one walk over the output tree that every renderer shares: headings in
// order with their outline numbers, and the tables and charts under them.
#pragma once

#include <vector>

struct BpHeadingNode;
struct BpTableNode;
struct BpChartNode;

class OutputVisitor {
public:
    virtual ~OutputVisitor();
    // A heading; `number` is its outline number (1-based, outer first), so
    // its size is the heading's depth below the root.
    virtual void EnterHeading(const BpHeadingNode& heading, const std::vector<int>& number) = 0;
    // After everything under the heading.
    virtual void LeaveHeading(const BpHeadingNode& heading) = 0;
    virtual void VisitTable(const BpTableNode& table) = 0;
    virtual void VisitChart(const BpChartNode& chart) = 0;
};

// Visits everything under `root` in output order (not the root itself).
void WalkOutput(const BpHeadingNode& root, OutputVisitor& visitor);
