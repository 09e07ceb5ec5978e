// Helpers shared by the related-samples tests: comparing with R's numbers,
// and random paired data with ties and zero differences.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// The largest difference from R seen per kind of number ("what" after its
// last '|'), printed after the tests: relative above magnitude 1 for
// statistics, absolute for significances.
inline std::map<std::string, double>& LargestRelatedDifferences() {
    static std::map<std::string, double> largest;
    return largest;
}

inline void RecordDifference(const std::string& what, double difference) {
    const std::size_t bar = what.rfind('|');
    double& largest =
        LargestRelatedDifferences()[bar == std::string::npos ? what : what.substr(bar + 1)];
    largest = std::max(largest, difference);
}

class DifferenceReport final : public testing::Environment {
public:
    void TearDown() override {
        for (const auto& [what, difference] : LargestRelatedDifferences()) {
            std::printf("largest difference from R: %-40s %.3g\n", what.c_str(), difference);
        }
    }
};
inline const bool kDifferenceReport =
    (testing::AddGlobalTestEnvironment(new DifferenceReport), true);

// Statistics agree within 1e-9, relative above magnitude 1.
inline void ExpectStatistic(double actual, double expected, const std::string& what) {
    const double scale = std::max(1.0, std::fabs(expected));
    EXPECT_NEAR(actual, expected, 1e-9 * scale) << what;
    RecordDifference(what, std::fabs(actual - expected) / scale);
}
// Significances agree within 1e-6.
inline void ExpectSig(double actual, double expected, const std::string& what) {
    EXPECT_NEAR(actual, expected, 1e-6) << what;
    RecordDifference(what, std::fabs(actual - expected));
}

// `count` numbers from R's output starting at `at`, advancing `at`.
inline std::vector<double> Take(const std::vector<double>& numbers, std::size_t& at,
                                std::size_t count) {
    std::vector<double> out;
    for (std::size_t i = 0; i < count && at < numbers.size(); ++i) {
        out.push_back(numbers[at++]);
    }
    return out;
}

// Two fields of n cases whose values are multiples of `step`, so that ties
// and zero differences occur; the second is shifted by `shift` on average.
inline std::pair<std::vector<double>, std::vector<double>> RandomPairs(unsigned seed, std::size_t n,
                                                                       double step, double shift) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal(0.0, 1.0);
    std::vector<double> first(n);
    std::vector<double> second(n);
    for (std::size_t i = 0; i < n; ++i) {
        first[i] = std::round(normal(random) * 3.0 / step) * step;
        second[i] = first[i] + std::round((normal(random) * 2.0 + shift) / step) * step;
    }
    return {first, second};
}

// k fields of n cases of small integers (ties within cases), field j
// shifted by j * shift.
inline std::vector<std::vector<double>> RandomFields(unsigned seed, std::size_t n, std::size_t k,
                                                     int levels, double shift) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> draw(0, levels - 1);
    std::vector<std::vector<double>> fields(k, std::vector<double>(n));
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < k; ++j) {
            fields[j][i] = draw(random) + std::floor(static_cast<double>(j) * shift);
        }
    }
    return fields;
}
