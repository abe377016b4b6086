// What one log entry costs, behind its floor: the same bytes written and flushed with nothing around it. A program of
// its own, because a process's log mode is fixed once.
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
    constexpr std::string_view entry = "[ADL::SetActiveAdapterIndex()] ... already using the specified adapter index\n";
    std::FILE* const file = std::fopen("floor.log", "w");
    for (auto _ : state) {
        std::fwrite(entry.data(), 1, entry.size(), file);
        std::fflush(file);
    }
    std::fclose(file);
    std::remove("floor.log");
}
BENCHMARK(FloorWriteAndFlush);

// Selecting the adapter in use does nothing but write this one entry.
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
