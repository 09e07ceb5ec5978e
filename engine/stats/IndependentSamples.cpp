// Input checks and the sorted walk shared by the independent-samples tests.
#include "engine/stats/IndependentSamples.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/stats/Numerics.h"

GroupCounts CountGroups(const GroupedValues& data, std::size_t minSamples, std::size_t maxSamples) {
    GroupCounts counts;
    const std::size_t n = data.fValues.size();
    if (data.fGroups.size() != n || data.fRanking == nullptr || data.fRanking->fRanks.size() != n) {
        counts.fOutcome = Outcome::kInconsistentInput;
        return counts;
    }
    if (n == 0) {
        counts.fOutcome = Outcome::kNoCases;
        return counts;
    }
    counts.fN.assign(data.fGroupCount, 0);
    for (const int group : data.fGroups) {
        if (group < 0 || static_cast<std::size_t>(group) >= data.fGroupCount) {
            counts.fOutcome = Outcome::kInconsistentInput;
            return counts;
        }
        ++counts.fN[static_cast<std::size_t>(group)];
    }
    for (std::size_t g = 0; g < data.fGroupCount; ++g) {
        if (counts.fN[g] > 0) {
            counts.fSamples.push_back(g);
        }
    }
    const std::size_t samples = counts.fSamples.size();
    if (samples < minSamples) {
        counts.fOutcome = Outcome::kTooFewGroups;
    } else if (samples > maxSamples) {
        counts.fOutcome = Outcome::kTooManyGroups;
    }
    return counts;
}

SortedGroups SortGroupsByRank(const GroupedValues& data) {
    // A block of t equal values holds the positions first..first+t-1 and has
    // the mid-rank first + (t-1)/2; its floor differs from the floor of every
    // other block's mid-rank, so it is the block's key in 1..n.
    const std::size_t n = data.fValues.size();
    const std::vector<double>& ranks = data.fRanking->fRanks;
    std::vector<std::uint32_t> start(n + 1, 0);
    for (const double rank : ranks) {
        ++start[static_cast<std::size_t>(rank) - 1];
    }
    SortedGroups sorted;
    std::uint32_t position = 0;
    for (std::size_t key = 0; key < n; ++key) {
        const std::uint32_t size = start[key];
        if (size > 0) {
            sorted.fBlockSizes.push_back(size);
        }
        start[key] = position;
        position += size;
    }
    sorted.fGroups.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
        sorted.fGroups[start[static_cast<std::size_t>(ranks[i]) - 1]++] = data.fGroups[i];
    }
    return sorted;
}

BoxPlotNumbers BoxPlot(std::span<const double> values, std::span<const double> caseNumbers) {
    BoxPlotNumbers box;
    if (values.empty() || caseNumbers.size() != values.size()) {
        return box;
    }
    // Only the values are sorted; the outliers, found by a scan, are then
    // ordered with their case numbers.
    std::vector<double> sorted(values.begin(), values.end());
    std::sort(sorted.begin(), sorted.end());
    box.fLowerQuartile = QuantileType6(sorted, 0.25);
    box.fUpperQuartile = QuantileType6(sorted, 0.75);
    const std::size_t n = sorted.size();
    box.fMedian = SortedMedian(sorted);
    const double length = box.fUpperQuartile - box.fLowerQuartile;
    const double low = box.fLowerQuartile - 1.5 * length;
    const double high = box.fUpperQuartile + 1.5 * length;
    box.fLowerWhisker = box.fUpperWhisker = box.fMedian;
    bool inside = false;
    for (std::size_t i = 0; i < n; ++i) {
        const double value = values[i];
        if (value < low || value > high) {
            box.fOutliers.emplace_back(value, caseNumbers[i]);
        } else {
            box.fLowerWhisker = inside ? std::min(box.fLowerWhisker, value) : value;
            box.fUpperWhisker = inside ? std::max(box.fUpperWhisker, value) : value;
            inside = true;
        }
    }
    std::sort(box.fOutliers.begin(), box.fOutliers.end());
    return box;
}
