// What the exported functions cost with the log off, each behind its floor: the least that any library in its place
// would have to do.
#include <benchmark/benchmark.h>

#include <cstring>

#include "BenchMachine.h"
#include "amd/adl_records.h"

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
        std::memcpy(&copy, &source, sizeof copy);
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

void FloorVendorCallsOfAFetch(benchmark::State& state) {
    using namespace amd;
    BenchMachine& machine = Machine();
    auto const status = machine.VendorFunction<int(ADL_CDECL*)(AdlContext, int, ADLODNPerformanceStatus*)>(
        "ADL2_OverdriveN_PerformanceStatus_Get");
    auto const fan =
        machine.VendorFunction<int(ADL_CDECL*)(AdlContext, int, ADLODNFanControl*)>("ADL2_OverdriveN_FanControl_Get");
    auto const memory = machine.VendorFunction<int(ADL_CDECL*)(AdlContext, int, int*)>("ADL2_Adapter_VRAMUsage_Get");
    auto const temperature =
        machine.VendorFunction<int(ADL_CDECL*)(AdlContext, int, int, int*)>("ADL2_OverdriveN_Temperature_Get");
    auto const power = machine.VendorFunction<int(ADL_CDECL*)(AdlContext, int, ADLODNPowerLimitSetting*)>(
        "ADL2_OverdriveN_PowerLimit_Get");
    for (auto _ : state) {
        ADLODNPerformanceStatus statusRecord{};
        ADLODNFanControl fanRecord{};
        ADLODNPowerLimitSetting powerRecord{};
        int megabytes = 0;
        int millidegrees = 0;
        benchmark::DoNotOptimize(status(nullptr, 0, &statusRecord));
        benchmark::DoNotOptimize(fan(nullptr, 0, &fanRecord));
        benchmark::DoNotOptimize(memory(nullptr, 0, &megabytes));
        benchmark::DoNotOptimize(temperature(nullptr, 0, kOdnTemperatureType, &millidegrees));
        benchmark::DoNotOptimize(power(nullptr, 0, &powerRecord));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(FloorVendorCallsOfAFetch);

void FetchHwmValues(benchmark::State& state) {
    auto const fetchHwmValues = Machine().Export<decltype(&::FetchHwmValues)>("FetchHwmValues");
    for (auto _ : state) {
        fetchHwmValues();
        benchmark::ClobberMemory();
    }
}
BENCHMARK(FetchHwmValues);

}  // namespace
}  // namespace gputune::bench

BENCHMARK_MAIN();
