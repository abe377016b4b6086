// The cost of one log entry, after its floor: the same bytes written and flushed without the library. A program of its
// own, because the log mode of a process cannot be changed.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string_view>

#include "BenchMachine.h"

namespace gputune::bench {
namespace {

BenchMachine& Machine() {
    static BenchMachine machine(GPUTUNE_LOG_FILE);
    return machine;
}

void FloorWriteAndFlush(benchmark::State& state) {
    constexpr std::string_view kEntry =
        "[ADL::SetActiveAdapterIndex()] ... already using the specified adapter index\n";
    std::FILE* const file = std::fopen("floor.log", "w");
    for (auto _ : state) {
        std::fwrite(kEntry.data(), 1, kEntry.size(), file);
        std::fflush(file);
    }
    std::fclose(file);
    std::remove("floor.log");
}
BENCHMARK(FloorWriteAndFlush);

// Selecting the adapter that is selected already only writes this entry.
void LogEntry(benchmark::State& state) {
    auto const select = Machine().Export<decltype(&::SetActiveAdapterIndex)>("SetActiveAdapterIndex");
    for (auto _ : state) {
        benchmark::DoNotOptimize(select(0));
    }
}
BENCHMARK(LogEntry);

}  // namespace
}  // namespace gputune::bench

BENCHMARK_MAIN();
