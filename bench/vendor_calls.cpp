#include "vendor_calls.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "amd/adl_records.h"
#include "intel/ctl_records.h"
#include "nvidia/nvapi_records.h"

namespace gputune::bench {

namespace {

// Looks an entry point up in the vendor's library.
template <class... Params>
auto Find(BenchMachine const& machine, char const* name) {
    return machine.VendorFunction<int(__cdecl*)(Params...)>(name);
}

std::function<void()> FetchOverdriveN(BenchMachine const& machine) {
    using namespace amd;
    auto const status =
        Find<AdlContext, int, ADLODNPerformanceStatus*>(machine, "ADL2_OverdriveN_PerformanceStatus_Get");
    auto const fan = Find<AdlContext, int, ADLODNFanControl*>(machine, "ADL2_OverdriveN_FanControl_Get");
    auto const memory = Find<AdlContext, int, int*>(machine, "ADL2_Adapter_VRAMUsage_Get");
    auto const temperature = Find<AdlContext, int, int, int*>(machine, "ADL2_OverdriveN_Temperature_Get");
    auto const power = Find<AdlContext, int, ADLODNPowerLimitSetting*>(machine, "ADL2_OverdriveN_PowerLimit_Get");
    return [=] {
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
    };
}

std::function<void()> FetchOverdrive8(BenchMachine const& machine) {
    using namespace amd;
    auto const log = Find<AdlContext, int, ADLPMLogDataOutput*>(machine, "ADL2_New_QueryPMLogData_Get");
    auto const usage = Find<AdlContext, int, int*>(machine, "ADL2_Adapter_VRAMUsage_Get");
    auto const size = Find<AdlContext, int, ADLMemoryInfo*>(machine, "ADL2_Adapter_MemoryInfo_Get");
    return [=] {
        ADLPMLogDataOutput sensors{};
        ADLMemoryInfo memory{};
        int megabytes = 0;
        benchmark::DoNotOptimize(log(nullptr, 0, &sensors));
        benchmark::DoNotOptimize(usage(nullptr, 0, &megabytes));
        benchmark::DoNotOptimize(size(nullptr, 0, &memory));
    };
}

std::function<void()> FetchIntel(BenchMachine const& machine) {
    using namespace intel;
    auto const read = Find<ctl_device_adapter_handle_t, ctl_power_telemetry_t*>(machine, "ctlPowerTelemetryGet");
    return [=] {
        ctl_power_telemetry_t telemetry{};
        telemetry.Size = sizeof(telemetry);
        benchmark::DoNotOptimize(read(nullptr, &telemetry));
    };
}

std::function<void()> FetchNvidia(BenchMachine const& machine) {
    using namespace nvidia;
    constexpr std::uint32_t kGetThermalSettings = 0xE3640A56;
    auto const query = machine.VendorFunction<void*(NVAPI_CDECL*)(std::uint32_t)>("nvapi_QueryInterface");
    auto const read = reinterpret_cast<int(NVAPI_CDECL*)(NvPhysicalGpuHandle, std::uint32_t, NV_GPU_THERMAL_SETTINGS*)>(
        query(kGetThermalSettings));
    return [=] {
        NV_GPU_THERMAL_SETTINGS settings{};
        settings.version = kThermalSettingsVersion2;
        benchmark::DoNotOptimize(read(nullptr, kThermalTargetAll, &settings));
    };
}

Backend const kBackends[] = {
    {.name = "overdriven", .vendor = BenchMachine::kAmd, .bareFetch = FetchOverdriveN},
    {.name = "overdrive8", .vendor = BenchMachine::kAmd, .bareFetch = FetchOverdrive8},
    {.name = "intel", .vendor = BenchMachine::kIntel, .bareFetch = FetchIntel},
    {.name = "nvidia", .vendor = BenchMachine::kNvidia, .bareFetch = FetchNvidia},
};

}  // namespace

Backend const& BackendOf(std::string_view name) {
    auto const* const found = std::ranges::find(kBackends, name, &Backend::name);
    if (found == std::end(kBackends)) {
        throw std::invalid_argument("no backend " + std::string(name));
    }
    return *found;
}

Backend const& BackendOfThisProcess() {
    char const* const name = std::getenv("GPUTUNE_BENCH_BACKEND");
    return BackendOf(name == nullptr ? "" : name);
}

}  // namespace gputune::bench
