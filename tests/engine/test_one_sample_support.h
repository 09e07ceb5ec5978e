// Shared by the one-sample statistics tests: R's datasets fetched through R,
// the agreement asked of statistics and significances, seeded test data.
#pragma once

#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "engine/RReference.h"
#include "engine/stats/Random.h"

// The largest differences from the reference seen in a run, per test suite, for statistics
// (relative above 1) and significances; printed when the tests end.
struct ReferenceDifferences {
    double fStatistic = 0;
    double fSignificance = 0;
};

inline std::map<std::string, ReferenceDifferences>& LargestDifferences() {
    static std::map<std::string, ReferenceDifferences> largest;
    return largest;
}

inline void RecordDifference(bool significance, double actual, double expected) {
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    if (!test || std::isnan(actual) || std::isnan(expected)) {
        return;
    }
    ReferenceDifferences& d = LargestDifferences()[test->test_suite_name()];
    const double difference =
        std::fabs(actual - expected) / (significance ? 1.0 : std::max(1.0, std::fabs(expected)));
    double& largest = significance ? d.fSignificance : d.fStatistic;
    largest = std::max(largest, difference);
}

class ReferenceDifferencesReport final : public testing::Environment {
public:
    void TearDown() override {
        for (const auto& [suite, d] : LargestDifferences()) {
            std::printf("[ largest  ] %s: statistics %.3g, significances %.3g\n", suite.c_str(),
                        d.fStatistic, d.fSignificance);
        }
    }
};

inline const bool kReferenceDifferencesReported =
    (testing::AddGlobalTestEnvironment(new ReferenceDifferencesReport), true);

// Statistics agree with R to 1e-9 (relative above 1), significances to 1e-6.
#define EXPECT_STAT(actual, expected)                                                              \
    EXPECT_NEAR((RecordDifference(false, actual, expected), actual), expected,                     \
                1e-9 * std::max(1.0, std::fabs(expected)))
#define EXPECT_SIG(actual, expected)                                                               \
    EXPECT_NEAR((RecordDifference(true, actual, expected), actual), expected, 1e-6)
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
