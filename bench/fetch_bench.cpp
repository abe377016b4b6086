// The cost of a reading of the sensors, after its floor: the vendor's calls alone. GPUTUNE_BENCH_BACKEND names the
// backend, GPUTUNE_BENCH_LOG the log mode: 0 off, 2 into the file. With the log on, the floor writes and flushes the
// same lines. A process cannot change its backend or its log mode.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "vendor_calls.h"

namespace gputune::bench {
namespace {

int LogMode() {
    char const* const mode = std::getenv("GPUTUNE_BENCH_LOG");
    return mode == nullptr ? GPUTUNE_LOG_NONE : std::atoi(mode);
}

std::vector<std::string> LogLines() {
    std::ifstream file("debug.log");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line + "\n");
    }
    return lines;
}

struct Stage {
    Backend const& backend = BackendOfThisProcess();
    BenchMachine machine{LogMode(), backend.vendor};
    decltype(&::FetchHwmValues) fetchHwmValues = machine.Export<decltype(&::FetchHwmValues)>("FetchHwmValues");
    std::vector<std::string> lines = LinesOfAFetch();  // the log lines of one reading

private:
    // Called once, while the log is short.
    std::vector<std::string> LinesOfAFetch() const {
        if (LogMode() == GPUTUNE_LOG_NONE) {
            return {};
        }
        auto const before = static_cast<std::ptrdiff_t>(LogLines().size());
        fetchHwmValues();
        auto written = LogLines();
        written.erase(written.begin(), std::next(written.begin(), before));
        return written;
    }
};

Stage& TheStage() {
    static Stage stage;
    return stage;
}

void FloorOfAFetch(benchmark::State& state) {
    Stage& stage = TheStage();
    auto const vendorCalls = stage.backend.bareFetch(stage.machine);
    std::FILE* const file = std::fopen("floor.log", "w");
    for (auto _ : state) {
        vendorCalls();
        for (std::string const& line : stage.lines) {
            std::fwrite(line.data(), 1, line.size(), file);
            std::fflush(file);
        }
        benchmark::ClobberMemory();
    }
    std::fclose(file);
    std::remove("floor.log");
}
BENCHMARK(FloorOfAFetch);

void FetchHwmValues(benchmark::State& state) {
    auto const fetchHwmValues = TheStage().fetchHwmValues;
    for (auto _ : state) {
        fetchHwmValues();
        benchmark::ClobberMemory();
    }
}
BENCHMARK(FetchHwmValues);

}  // namespace
}  // namespace gputune::bench

BENCHMARK_MAIN();
