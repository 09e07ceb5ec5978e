// Seeded test data of the one-sample statistics' tests.
#pragma once

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "engine/stats/Random.h"

// `n` values rounded to `step`, normal around `mean` with deviation `sd`: with a coarse step
// the data have ties, as real data do.
inline std::vector<double> NormalData(Random& random, std::size_t n, double mean, double sd,
                                      double step) {
    std::vector<double> values(n);
    for (double& v : values) {
        v = std::round((mean + sd * random.Normal()) / step) * step;
    }
    return values;
}
