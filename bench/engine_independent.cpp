// Kruskal-Wallis with its pairwise comparisons on ten million cases in ten
// groups, data in memory, beside std::sort of as many doubles in the same run.
// The rank test includes ranking the field (RankValues), as the engine does.
#include <algorithm>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include "engine/stats/IndependentKSample.h"
#include "engine/stats/Ranks.h"

namespace {

constexpr std::size_t kCases = 10'000'000;
constexpr std::size_t kGroups = 10;

struct Data {
    std::vector<double> fValues;
    std::vector<int> fGroups;
};

// Values rounded to three decimals, so that there are ties as in real data;
// the groups differ a little in location.
const Data& Cases() {
    static const Data data = [] {
        Data d;
        d.fValues.resize(kCases);
        d.fGroups.resize(kCases);
        std::mt19937_64 random(2026);
        std::normal_distribution<double> normal;
        for (std::size_t i = 0; i < kCases; ++i) {
            const auto group = static_cast<int>(random() % kGroups);
            d.fGroups[i] = group;
            d.fValues[i] = std::round((normal(random) + 0.01 * group) * 1000) / 1000;
        }
        return d;
    }();
    return data;
}

void SortDoubles(benchmark::State& state) {
    const Data& data = Cases();
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<double> copy = data.fValues;
        state.ResumeTiming();
        std::sort(copy.begin(), copy.end());
        benchmark::DoNotOptimize(copy.data());
    }
}

void KruskalWallisWithPairwise(benchmark::State& state) {
    const Data& data = Cases();
    for (auto _ : state) {
        const Ranking ranking = RankValues(data.fValues);
        const GroupedValues grouped{data.fValues, data.fGroups, &ranking, kGroups};
        const KruskalWallisResult test = KruskalWallis(grouped);
        const std::vector<ComparisonResult> rows = KruskalWallisPairwise(test);
        benchmark::DoNotOptimize(rows.data());
        state.counters["H"] = test.fStatistic;
        state.counters["pairs"] = static_cast<double>(rows.size());
    }
}

// Ranking alone: the share of the rank test that every test on the field
// shares.
void RankField(benchmark::State& state) {
    const Data& data = Cases();
    for (auto _ : state) {
        const Ranking ranking = RankValues(data.fValues);
        benchmark::DoNotOptimize(ranking.fRanks.data());
    }
}

} // namespace

BENCHMARK(SortDoubles)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(KruskalWallisWithPairwise)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(RankField)->Unit(benchmark::kMillisecond)->Iterations(3);

BENCHMARK_MAIN();
