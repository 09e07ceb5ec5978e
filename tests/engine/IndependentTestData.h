// Grouped samples for the independent-samples tests: seeded random ones.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "engine/stats/IndependentSamples.h"

// Values with their group codes, ranked once, as the engine hands them over.
struct Grouped {
    std::vector<double> fValues;
    std::vector<int> fGroups;
    std::size_t fGroupCount = 0;
    Ranking fRanking;

    Grouped(std::vector<double> values, std::vector<int> groups, std::size_t groupCount)
        : fValues(std::move(values)), fGroups(std::move(groups)), fGroupCount(groupCount),
          fRanking(RankValues(fValues)) {}

    GroupedValues View() const { return {fValues, fGroups, &fRanking, fGroupCount}; }
};

// Random samples: `sizes[g]` cases in group g, values drawn from a normal
// distribution shifted by `shift` per group, rounded to `step` (0: not
// rounded, so no ties).
inline Grouped RandomGroups(std::mt19937& random, const std::vector<std::size_t>& sizes,
                            double shift, double step) {
    std::normal_distribution<double> normal;
    std::vector<double> values;
    std::vector<int> groups;
    for (std::size_t g = 0; g < sizes.size(); ++g) {
        for (std::size_t i = 0; i < sizes[g]; ++i) {
            double v = normal(random) + shift * static_cast<double>(g);
            if (step > 0) {
                v = std::round(v / step) * step;
            }
            values.push_back(v);
            groups.push_back(static_cast<int>(g));
        }
    }
    // Interleave the cases so that groups are not in blocks.
    std::vector<std::size_t> order(values.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i] = i;
    }
    std::shuffle(order.begin(), order.end(), random);
    std::vector<double> v2;
    std::vector<int> g2;
    for (const std::size_t i : order) {
        v2.push_back(values[i]);
        g2.push_back(groups[i]);
    }
    return Grouped(std::move(v2), std::move(g2), sizes.size());
}
