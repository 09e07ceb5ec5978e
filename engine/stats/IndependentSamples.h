// What every independent-samples test reads: the values of a test field, the
// group (category position of the grouping field) of each case, and the
// field's ranks, computed once and shared by every test on the field.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "engine/stats/Outcome.h"
#include "engine/stats/Ranks.h"

// The cases of one test, split by a grouping field.
struct GroupedValues {
    std::span<const double> fValues;   // test field, one value per case
    std::span<const int> fGroups;      // category position of each case, 0 .. fGroupCount-1
    const Ranking* fRanking = nullptr; // RankValues(fValues)
    std::size_t fGroupCount = 0;       // number of categories of the grouping field
};

// The groups of a test after checking its input.
struct GroupCounts : TestOutcome {
    std::vector<std::size_t> fN;       // cases per category
    std::vector<std::size_t> fSamples; // categories with cases, ascending
};

// Checks the input (sizes agree, codes in range, ranks present) and counts
// the cases per group. Fails when fewer than `minSamples` or more than
// `maxSamples` groups have cases.
GroupCounts CountGroups(const GroupedValues& data, std::size_t minSamples, std::size_t maxSamples);

// The group codes in ascending order of value, and the sizes of the
// successive blocks of equal values, found from the ranks by a counting sort
// in linear time.
struct SortedGroups {
    std::vector<int> fGroups;
    std::vector<std::uint32_t> fBlockSizes;
};
SortedGroups SortGroupsByRank(const GroupedValues& data);

// The numbers of a box plot of one group.
struct BoxPlotNumbers {
    double fLowerWhisker = 0;  // smallest value within 1.5 box lengths below the box
    double fLowerQuartile = 0; // weighted average at position (n+1)/4
    double fMedian = 0;
    double fUpperQuartile = 0;
    double fUpperWhisker = 0;
    std::vector<std::pair<double, double>> fOutliers; // value and case number, ascending by value
};

// Box-plot numbers of `values` (at least one) with the case number of each.
BoxPlotNumbers BoxPlot(std::span<const double> values, std::span<const double> caseNumbers);
