// Grouped samples for the independent-samples tests: R's own data sets read
// through Rscript, seeded random ones, and the R vectors of them.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
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

// Runs every script in one R process and returns the numbers each printed.
inline std::vector<std::vector<double>> RunREach(const std::vector<std::string>& scripts) {
    std::string all;
    for (const std::string& script : scripts) {
        all +=
            "o <- capture.output(local({\n" + script +
            "\n}))\nw <- scan(text = o, what = \"\", quiet = TRUE)\ncat(length(w), w, \"\\n\")\n";
    }
    const std::vector<double> numbers = RunR(all);
    std::vector<std::vector<double>> each;
    for (std::size_t at = 0; at < numbers.size() && each.size() < scripts.size();) {
        const auto count = static_cast<std::size_t>(numbers[at]);
        if (at + 1 + count > numbers.size()) {
            break;
        }
        each.emplace_back(numbers.begin() + static_cast<long>(at + 1),
                          numbers.begin() + static_cast<long>(at + 1 + count));
        at += 1 + count;
    }
    EXPECT_EQ(each.size(), scripts.size());
    each.resize(scripts.size());
    return each;
}

// R data sets: each a `value` column split by a `group` column (a factor or
// numbers; codes in the order of its sorted levels), cases with a missing
// value left out. Each is {frame (an R expression), value, group}.
inline std::vector<Grouped> FromR(const std::vector<std::array<std::string, 3>>& sets) {
    std::vector<std::string> scripts;
    for (const auto& [frame, value, group] : sets) {
        scripts.push_back("d <- " + frame + "\nd <- d[!is.na(d$" + value + "), ]\nf <- factor(d$" +
                          group + ")\ncat(nlevels(f), length(f), d$" + value +
                          ", as.integer(f) - 1)");
    }
    std::vector<Grouped> out;
    for (const std::vector<double>& numbers : RunREach(scripts)) {
        if (numbers.size() < 2) {
            continue;
        }
        const auto levels = static_cast<std::size_t>(numbers[0]);
        const auto n = static_cast<std::size_t>(numbers[1]);
        std::vector<double> values(numbers.begin() + 2, numbers.begin() + 2 + static_cast<long>(n));
        std::vector<int> groups;
        for (std::size_t i = 0; i < n; ++i) {
            groups.push_back(static_cast<int>(numbers.at(2 + n + i)));
        }
        out.emplace_back(std::move(values), std::move(groups), levels);
    }
    return out;
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
