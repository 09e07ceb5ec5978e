// The engine's seeded random numbers. The same seed gives the same numbers on
// every run and platform: the generator is the 64-bit Mersenne Twister, whose
// output sequence the C++ standard fixes, and every conversion to a deviate is
// written here (the standard library's distributions are implementation-defined
// and are not used).
#pragma once

#include <cstdint>
#include <random>

class Random final {
public:
    explicit Random(std::uint64_t seed) : fEngine(seed) {}

    // 64 uniformly distributed bits.
    std::uint64_t Bits() { return fEngine(); }
    // Uniform on the open interval (0, 1): the top 53 bits k give (k + 0.5) / 2^53.
    double Uniform();
    // Standard normal, by inversion of a uniform deviate.
    double Normal();
    // Exponential with mean 1, by inversion of a uniform deviate.
    double Exponential();

private:
    std::mt19937_64 fEngine;
};
