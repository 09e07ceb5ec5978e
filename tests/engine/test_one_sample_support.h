// Shared by the one-sample statistics tests: R's datasets fetched through R,
// the agreement asked of statistics and significances, seeded test data.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "engine/RReference.h"
#include "engine/stats/Random.h"

// Statistics agree with R to 1e-9 (relative above 1), significances to 1e-6.
#define EXPECT_STAT(actual, expected)                                                              \
    EXPECT_NEAR(actual, expected, 1e-9 * std::max(1.0, std::fabs(expected)))
#define EXPECT_SIG(actual, expected) EXPECT_NEAR(actual, expected, 1e-6)

#define REQUIRE_R()                                                                                \
    if (!HaveR()) {                                                                                \
        GTEST_SKIP() << "Rscript is not installed";                                                \
    }

// The numbers of an R expression (a dataset column, for instance), exactly.
inline std::vector<double> RData(const std::string& expression) {
    return RunR("cat(" + expression + ")");
}

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
