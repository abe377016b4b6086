// The cost of a bound NVAPI function, between its floors and a call that asks for the address every time.
#include <benchmark/benchmark.h>

#include <atomic>

#include "BenchMachine.h"
#include "nvidia/Nvapi.h"

namespace gputune::bench {
namespace {

constexpr std::uint32_t kIdentifier = 0xE3640A56;
using QueryInterface = void*(NVAPI_CDECL*)(std::uint32_t);
using GetThermalSettings = int(NVAPI_CDECL*)(nvidia::NvPhysicalGpuHandle, std::uint32_t,
                                             nvidia::NV_GPU_THERMAL_SETTINGS*);

BenchMachine& Machine() {
    static BenchMachine machine(GPUTUNE_LOG_NONE, BenchMachine::kNvidia);
    return machine;
}

void FloorDirectNvapiCall(benchmark::State& state) {
    auto const query = Machine().VendorFunction<QueryInterface>("nvapi_QueryInterface");
    auto const direct = reinterpret_cast<GetThermalSettings>(query(kIdentifier));
    nvidia::NV_GPU_THERMAL_SETTINGS settings{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(direct(nullptr, nvidia::kThermalTargetAll, &settings));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(FloorDirectNvapiCall);

// The library counts every bound call while it runs, with two interlocked operations.
void FloorCountedNvapiCall(benchmark::State& state) {
    auto const query = Machine().VendorFunction<QueryInterface>("nvapi_QueryInterface");
    auto const direct = reinterpret_cast<GetThermalSettings>(query(kIdentifier));
    nvidia::NV_GPU_THERMAL_SETTINGS settings{};
    std::atomic<int> inUse = 0;
    for (auto _ : state) {
        ++inUse;
        benchmark::DoNotOptimize(direct(nullptr, nvidia::kThermalTargetAll, &settings));
        --inUse;
        benchmark::ClobberMemory();
    }
}
BENCHMARK(FloorCountedNvapiCall);

void BoundNvapiCall(benchmark::State& state) {
    Machine();
    static nvidia::Nvapi nvapi;
    nvidia::NV_GPU_THERMAL_SETTINGS settings{};
    if (nvapi.NvAPI_GPU_GetThermalSettings(nullptr, nvidia::kThermalTargetAll, &settings) != nvidia::kNvapiOk) {
        state.SkipWithError("the library does not open");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(nvapi.NvAPI_GPU_GetThermalSettings(nullptr, nvidia::kThermalTargetAll, &settings));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BoundNvapiCall);

void QueryAtEachNvapiCall(benchmark::State& state) {
    auto const query = Machine().VendorFunction<QueryInterface>("nvapi_QueryInterface");
    nvidia::NV_GPU_THERMAL_SETTINGS settings{};
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            reinterpret_cast<GetThermalSettings>(query(kIdentifier))(nullptr, nvidia::kThermalTargetAll, &settings));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(QueryAtEachNvapiCall);

}  // namespace
}  // namespace gputune::bench

BENCHMARK_MAIN();
