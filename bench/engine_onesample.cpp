// The one-sample tests on ten million values in memory, beside std::sort of
// as many doubles in the same run: the Wilcoxon signed-rank test (its own
// ranking of the absolute differences included), the field's ranking that the
// other rank tests share, the Kolmogorov-Smirnov test against the normal with
// estimated parameters, and the runs test about the median.
#include <algorithm>
#include <cmath>
#include <vector>

#include <benchmark/benchmark.h>

#include "engine/stats/OneSampleKolmogorov.h"
#include "engine/stats/OneSampleRuns.h"
#include "engine/stats/OneSampleWilcoxon.h"
#include "engine/stats/Random.h"
#include "engine/stats/Ranks.h"

namespace {

constexpr std::size_t kValues = 10'000'000;

// Normal values rounded to three decimals, so that there are ties as in real data.
const std::vector<double>& Values() {
    static const std::vector<double> values = [] {
        std::vector<double> v(kValues);
        Random random(2026);
        for (double& x : v) {
            x = std::round((10 + random.Normal()) * 1000) / 1000;
        }
        return v;
    }();
    return values;
}

void SortDoubles(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<double> copy = Values();
        std::sort(copy.begin(), copy.end());
        benchmark::DoNotOptimize(copy.data());
    }
}

void RankField(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(RankValues(Values()).fTieSum);
    }
}

void WilcoxonSignedRank(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(OneSampleWilcoxon(Values(), 10.001).fStandardized);
    }
}

void KolmogorovSmirnovNormal(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            OneSampleKolmogorovSmirnov(Values(), KsDistribution::kNormal).fAbsolute);
    }
}

void RunsAboutTheMedian(benchmark::State& state) {
    for (auto _ : state) {
        const double median = RunsCutPoint(Values(), RunsCut::kMedian);
        benchmark::DoNotOptimize(RunsTestByCutPoint(Values(), median).fExactSig2Tailed);
    }
}

} // namespace

BENCHMARK(SortDoubles)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(RankField)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(WilcoxonSignedRank)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(KolmogorovSmirnovNormal)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(RunsAboutTheMedian)->Unit(benchmark::kMillisecond)->Iterations(3);

BENCHMARK_MAIN();
