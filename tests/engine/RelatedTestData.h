// Random related fields for the related-samples tests: pairs with ties and
// zero differences, and k fields of few values.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

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
