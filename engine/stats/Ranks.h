// Mid-ranks of a sample and the tie terms that rank tests need. A field is
// ranked once per set of cases and the ranking is shared by every test on it.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

struct Ranking {
    std::vector<double> fRanks; // rank of each value in input order; ties share their mean rank
    double fTieSum = 0;         // sum of t^3 - t over the groups of t tied values
    std::size_t fTieGroups = 0; // number of groups of two or more tied values
};

// Ranks `values` (no missing values; NaN is not allowed) from 1 to n.
Ranking RankValues(std::span<const double> values);
