// Grouped samples for the independent-samples tests: R's own data sets read
// through Rscript, seeded random ones, and the R vectors of them.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "engine/RReference.h"
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

    // R assignments x (values) and g (factor of codes, every category a level).
    std::string RData() const {
        std::vector<double> codes(fGroups.begin(), fGroups.end());
        return "x <- " + RVector(fValues) + "\ng <- factor(" + RVector(codes) +
               ", levels = 0:" + std::to_string(fGroupCount - 1) + ")\n";
    }
};

// An R data set's `value` column split by its `group` column (a factor or
// numbers; codes in the order of its sorted levels), cases with a missing
// value left out. `frame` is an R expression.
inline Grouped FromR(const std::string& frame, const std::string& value, const std::string& group) {
    const std::vector<double> numbers =
        RunR("d <- " + frame + "\nd <- d[!is.na(d$" + value + "), ]\nf <- factor(d$" + group +
             ")\ncat(nlevels(f), length(f), d$" + value + ", as.integer(f) - 1)");
    const auto levels = static_cast<std::size_t>(numbers.at(0));
    const auto n = static_cast<std::size_t>(numbers.at(1));
    std::vector<double> values(numbers.begin() + 2, numbers.begin() + 2 + static_cast<long>(n));
    std::vector<int> groups;
    for (std::size_t i = 0; i < n; ++i) {
        groups.push_back(static_cast<int>(numbers.at(2 + n + i)));
    }
    return Grouped(std::move(values), std::move(groups), levels);
}

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
