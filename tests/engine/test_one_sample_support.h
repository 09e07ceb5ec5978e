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

// The numbers of several R expressions with one run of R.
inline std::vector<std::vector<double>> RDataSets(const std::vector<std::string>& expressions) {
    std::string script;
    for (const std::string& e : expressions) {
        script += "x <- " + e + "\ncat(length(x), x, '\\n')\n";
    }
    const std::vector<double> numbers = RunR(script);
    std::vector<std::vector<double>> sets;
    std::size_t at = 0;
    while (at < numbers.size() && sets.size() < expressions.size()) {
        const std::size_t n = static_cast<std::size_t>(numbers[at]);
        if (at + 1 + n > numbers.size()) {
            break;
        }
        sets.emplace_back(numbers.begin() + static_cast<std::ptrdiff_t>(at + 1),
                          numbers.begin() + static_cast<std::ptrdiff_t>(at + 1 + n));
        at += 1 + n;
    }
    EXPECT_EQ(sets.size(), expressions.size());
    sets.resize(expressions.size());
    return sets;
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
