// The cost of an exported function that returns a value from memory, after its floor: the least that any library would
// have to do.
#include <benchmark/benchmark.h>

#include <cstring>

#include "BenchMachine.h"

namespace gputune::bench {
namespace {

BenchMachine& Machine() {
    static BenchMachine machine(GPUTUNE_LOG_NONE);
    return machine;
}

void FloorCopyOf272Bytes(benchmark::State& state) {
    HwmValue source{};
    HwmValue copy;
    for (auto _ : state) {
        benchmark::DoNotOptimize(&source);
        std::memcpy(&copy, &source, sizeof(copy));
        benchmark::DoNotOptimize(&copy);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(FloorCopyOf272Bytes);

void GetHwmValue(benchmark::State& state) {
    auto const getHwmValue = Machine().Export<decltype(&::GetHwmValue)>("GetHwmValue");
    Machine().Export<decltype(&::FetchHwmValues)>("FetchHwmValues")();
    for (auto _ : state) {
        HwmValue value = getHwmValue(GPUTUNE_HWM_GPU_TEMPERATURE);
        benchmark::DoNotOptimize(&value);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(GetHwmValue);

}  // namespace
}  // namespace gputune::bench

BENCHMARK_MAIN();
