// Microbenchmarks of the result document reader and the table builders:
// whole documents that grow in the number of tests and in the number of
// pairwise rows, read alone and read and written as pivot tables, and the
// converters that every table goes through.
#include <benchmark/benchmark.h>

#include <fstream>
#include <sstream>
#include <string>

#include "app/DataSourceBuilder.h"
#include "backend/nonpar/NOPROutput.h"
#include "backend/nonpar/NOPROutputStats.h"
#include "backend/nonpar/NOPRParseOutXML.h"
#include "backend/nonpar/NOPRXMLGeneral.h"
#include "host/bp/BpOutput.h"
#include "host/cf/CFErrorChannel.h"
#include "host/cf/CFSysmis.h"
#include "host/vexa/VEXA_DataSource.h"
#include "host/xml/SDOMXMLWrapper.h"
#include "host/xml/XMLText.h"

namespace {
std::string ReadDocument(const std::string& name) {
    std::ifstream in(std::string(NPTESTS_BENCH_DOCS) + "/" + name, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return std::move(text).str();
}

// Reads a whole document into a fresh model, as the procedure does per split.
void ParseDocument(benchmark::State& state, const std::string& name) {
    const std::string xml = ReadDocument(name);
    if (xml.empty()) {
        state.SkipWithError(("missing document " + name).c_str());
        return;
    }
    for (auto _ : state) {
        NOPROutputStats stats;
        OutputXMLParser parser(nullptr, &stats, xml);
        if (!parser.Parse()) {
            state.SkipWithError("document rejected");
            return;
        }
        benchmark::DoNotOptimize(stats.fNumberOfTests);
        CFErrorChannel::Clear();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * xml.size()));
}

void BM_ParseTests(benchmark::State& state) {
    ParseDocument(state, "tests_" + std::to_string(state.range(0)) + ".xml");
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_ParseTests)
    ->Arg(250)
    ->Arg(1000)
    ->Arg(4000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

// One Kruskal-Wallis test with k groups: k(k-1)/2 pairwise rows.
void BM_ParsePairwise(benchmark::State& state) {
    ParseDocument(state, "pairs_" + std::to_string(state.range(0)) + ".xml");
    state.SetComplexityN(state.range(0) * (state.range(0) - 1) / 2);
}
BENCHMARK(BM_ParsePairwise)
    ->Arg(16)
    ->Arg(64)
    ->Arg(256)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oN);

// Reads a document and builds every table of it, timing only the builders.
void BuildTables(benchmark::State& state, const std::string& name) {
    const std::string xml = ReadDocument(name);
    std::string error;
    std::unique_ptr<VEXA_DataSource> dataSource = DataSourceFromDocument(xml, error);
    if (!dataSource) {
        state.SkipWithError(("missing document " + name).c_str());
        return;
    }
    NOPROutputStats stats;
    stats.SetDataSource(dataSource.get());
    OutputXMLParser parser(dataSource.get(), &stats, xml);
    if (!parser.Parse()) {
        state.SkipWithError("document rejected");
        return;
    }
    std::unique_ptr<BpProcedure> procedure;
    for (auto _ : state) {
        // The previous tree's destruction is not the builders' cost.
        state.PauseTiming();
        procedure.reset();
        CFErrorChannel::Clear();
        state.ResumeTiming();
        procedure = std::make_unique<BpProcedure>("Nonparametric Tests", nullptr, dataSource.get());
        NOPROutput output(procedure.get(), nullptr, dataSource.get(), &stats);
        output.MakeOutput();
        benchmark::DoNotOptimize(procedure->Root());
    }
}

void BM_TablesTests(benchmark::State& state) {
    BuildTables(state, "tests_" + std::to_string(state.range(0)) + ".xml");
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_TablesTests)
    ->Arg(250)
    ->Arg(1000)
    ->Arg(4000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

void BM_TablesPairwise(benchmark::State& state) {
    BuildTables(state, "pairs_" + std::to_string(state.range(0)) + ".xml");
    state.SetComplexityN(state.range(0) * (state.range(0) - 1) / 2);
}
BENCHMARK(BM_TablesPairwise)
    ->Arg(16)
    ->Arg(64)
    ->Arg(256)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oNLogN);

void BM_LoadOnly(benchmark::State& state) {
    const std::string xml = ReadDocument("tests_1000.xml");
    for (auto _ : state) {
        SDOMXMLWrapper root;
        benchmark::DoNotOptimize(root.LoadFromString(xml));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * xml.size()));
}
BENCHMARK(BM_LoadOnly)->Unit(benchmark::kMillisecond);

void BM_ToNumericTable(benchmark::State& state) {
    SimpleTableData table;
    table.fName = "Content";
    table.fRowNames = "r0 r1 r2";
    table.fColumnNames = "Sample1 Sample2 TestStatistic StdError StdTestStatistic Sig AdjSig";
    for (int64_t i = 0; i < state.range(0); ++i) {
        table.fRows.push_back("3 7 -12.409871152209663 4.1 -3.0267 0.0024716 __MISSING__");
    }
    NumericTableData out;
    for (auto _ : state) {
        ToNumericTable(table, out, kCFSysmis);
        benchmark::DoNotOptimize(out.fRows.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * 7);
}
BENCHMARK(BM_ToNumericTable)->Arg(64)->Arg(4096);

void BM_String2Double(benchmark::State& state) {
    const std::string_view words[] = {"0.43276707", "45.657746694754536", "-3.0267", "4078",
                                      "1e-300"};
    for (auto _ : state) {
        for (std::string_view word : words) {
            benchmark::DoNotOptimize(String2Double(word));
        }
    }
    state.SetItemsProcessed(state.iterations() * 5);
}
BENCHMARK(BM_String2Double);
} // namespace

BENCHMARK_MAIN();
