// The related-samples tests on large data already in memory, each timed
// beside std::sort of as many doubles in the same run: Friedman's test on
// 2.5 million cases of 4 fields, and the Wilcoxon signed-rank test (and the
// sign test) on 10 million pairs. Prints the best of --runs runs (default 3)
// in milliseconds of processor time and the ratio to the sort.
//
//   build/release/bin/engine_related [--runs N] [--scale F]
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "engine/stats/RelatedKSamples.h"
#include "engine/stats/RelatedPairs.h"

namespace {

// Processor time of this process in milliseconds: the work is single-threaded,
// and other work on a shared machine does not inflate it as it does wall time.
double CpuMs() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

// Best processor time of `runs` calls, in milliseconds; `prepare` runs before
// each call, untimed.
double BestMs(int runs, const std::function<void()>& prepare, const std::function<void()>& work) {
    double best = 1e300;
    for (int r = 0; r < runs; ++r) {
        prepare();
        const double start = CpuMs();
        work();
        best = std::min(best, CpuMs() - start);
    }
    return best;
}

// Doubles as measurements come: a normal variable on a grid of 0.01, so
// that ties occur as in real data.
std::vector<double> Measurements(std::mt19937_64& random, std::size_t n, double mean) {
    std::normal_distribution<double> normal(mean, 10.0);
    std::vector<double> values(n);
    for (double& v : values) {
        v = std::round(normal(random) * 100.0) / 100.0;
    }
    return values;
}

double SortMs(int runs, const std::vector<double>& values) {
    std::vector<double> copy;
    return BestMs(
        runs, [&] { copy = values; }, [&] { std::sort(copy.begin(), copy.end()); });
}

volatile double gSink = 0; // keeps results alive

} // namespace

int main(int argc, char** argv) {
    int runs = 3;
    double scale = 1.0;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--runs") == 0) {
            runs = std::max(1, std::atoi(argv[i + 1]));
        } else if (std::strcmp(argv[i], "--scale") == 0) {
            scale = std::atof(argv[i + 1]);
        }
    }
    std::mt19937_64 random(42);
    std::printf("| test | size | test ms | std::sort ms (same count) | ratio |\n");
    std::printf("|---|---|---|---|---|\n");

    {
        const std::size_t n = static_cast<std::size_t>(2'500'000 * scale);
        const std::size_t k = 4;
        std::vector<std::vector<double>> fields;
        for (std::size_t j = 0; j < k; ++j) {
            fields.push_back(Measurements(random, n, static_cast<double>(j) * 0.1));
        }
        const std::vector<std::span<const double>> columns(fields.begin(), fields.end());
        std::vector<double> all;
        for (const auto& f : fields) {
            all.insert(all.end(), f.begin(), f.end());
        }
        const double sortMs = SortMs(runs, all);
        const double testMs = BestMs(
            runs, [] {}, [&] { gSink = Friedman(columns).fStatistic; });
        const double pairsMs = BestMs(
            runs, [] {},
            [&] {
                const FriedmanResult result = Friedman(columns);
                gSink = FriedmanPairwise(result).front().fSig +
                        FriedmanStepwise(columns, result, 0.05).fRows.front().fSig;
            });
        std::printf("| Friedman | %zu x %zu | %.0f | %.0f | %.2f |\n", n, k, testMs, sortMs,
                    testMs / sortMs);
        std::printf("| Friedman + pairwise + stepwise | %zu x %zu | %.0f | %.0f | %.2f |\n", n, k,
                    pairsMs, sortMs, pairsMs / sortMs);
    }
    {
        const std::size_t n = static_cast<std::size_t>(10'000'000 * scale);
        const std::vector<double> first = Measurements(random, n, 0.0);
        const std::vector<double> second = Measurements(random, n, 0.05);
        const double sortMs = SortMs(runs, first);
        const double wilcoxonMs = BestMs(
            runs, [] {}, [&] { gSink = WilcoxonSignedRank(first, second).fStatistic; });
        const double signMs = BestMs(
            runs, [] {}, [&] { gSink = SignTest(first, second).fStatistic; });
        std::printf("| Wilcoxon signed rank | %zu pairs | %.0f | %.0f | %.2f |\n", n, wilcoxonMs,
                    sortMs, wilcoxonMs / sortMs);
        std::printf("| sign test | %zu pairs | %.0f | %.0f | %.2f |\n", n, signMs, sortMs,
                    signMs / sortMs);
        const std::size_t hlN = n / 10;
        const std::span<const double> a(first.data(), hlN);
        const std::span<const double> b(second.data(), hlN);
        const double hlMs = BestMs(
            runs, [] {}, [&] { gSink = HodgesLehmannPaired(a, b, 0.95).fEstimate; });
        const double hlSortMs = SortMs(runs, std::vector<double>(a.begin(), a.end()));
        std::printf(
            "| Hodges-Lehmann (Walsh averages selected) | %zu pairs | %.0f | %.0f | %.2f |\n", hlN,
            hlMs, hlSortMs, hlMs / hlSortMs);
    }
    return 0;
}
