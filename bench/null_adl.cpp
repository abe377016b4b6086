// An AMD library that does next to nothing, so that measurements show the cost of gputune.dll alone: one adapter with
// constant answers, of the OverdriveN generation, or of Overdrive8 when the environment variable GPUTUNE_BENCH_BACKEND
// is "overdrive8".
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "amd/adl_records.h"

using namespace gputune::amd;

#define NULL_ADL extern "C" __declspec(dllexport) int ADL_CDECL

namespace {

int ReadLevels(ADLODNPerformanceLevelsX2* levels) {
    auto* const first = reinterpret_cast<ADLODNPerformanceLevelX2*>(levels + 1);
    for (int i = 0; i < levels->iNumberOfPerformanceLevels; ++i) {
        first[i].iClock = 30000 * (i + 1);
    }
    return 0;
}

}  // namespace

NULL_ADL ADL2_Main_ControlX2_Create(AdlMemoryAllocator allocate, int, AdlContext* context, int) {
    *context = reinterpret_cast<AdlContext>(allocate);
    return 0;
}

NULL_ADL ADL2_Adapter_AdapterInfoX4_Get(AdlContext context, int, int* count, AdapterInfoX2** list) {
    auto const allocate = reinterpret_cast<AdlMemoryAllocator>(context);
    *list = static_cast<AdapterInfoX2*>(allocate(sizeof(AdapterInfoX2)));
    std::memset(*list, 0, sizeof(AdapterInfoX2));
    *count = 1;
    return 0;
}

NULL_ADL ADL2_Adapter_Active_Get(AdlContext, int, int* status) {
    *status = 1;
    return 0;
}

NULL_ADL ADL2_Overdrive_Caps(AdlContext, int, int*, int*, int* version) {
    char const* const backend = std::getenv("GPUTUNE_BENCH_BACKEND");
    *version = backend != nullptr && std::string_view(backend) == "overdrive8" ? 8 : 7;
    return 0;
}

NULL_ADL ADL2_Overdrive5_ThermalDevices_Enum(AdlContext, int, int, ADLThermalControllerInfo*) {
    return kAdlWarningNoData;
}

NULL_ADL ADL2_OverdriveN_CapabilitiesX2_Get(AdlContext, int, ADLODNCapabilitiesX2* capabilities) {
    capabilities->iMaximumNumberOfPerformanceLevels = 8;
    return 0;
}

NULL_ADL ADL2_OverdriveN_SystemClocksX2_Get(AdlContext, int, ADLODNPerformanceLevelsX2* levels) {
    return ReadLevels(levels);
}

NULL_ADL ADL2_OverdriveN_MemoryClocksX2_Get(AdlContext, int, ADLODNPerformanceLevelsX2* levels) {
    return ReadLevels(levels);
}

NULL_ADL ADL2_OverdriveN_PerformanceStatus_Get(AdlContext, int, ADLODNPerformanceStatus* status) {
    status->iCoreClock = 136600;
    status->iMemoryClock = 200000;
    status->iGPUActivityPercent = 97;
    return 0;
}

NULL_ADL ADL2_OverdriveN_FanControl_Get(AdlContext, int, ADLODNFanControl* control) {
    // Never the same twice in a row, so that the reading does not count as stuck.
    static int speed = 1200;
    speed ^= 1;
    control->iCurrentFanSpeed = speed;
    return 0;
}

NULL_ADL ADL2_Adapter_VRAMUsage_Get(AdlContext, int, int* megabytes) {
    *megabytes = 1024;
    return 0;
}

NULL_ADL ADL2_OverdriveN_Temperature_Get(AdlContext, int, int, int* millidegrees) {
    *millidegrees = 65500;
    return 0;
}

NULL_ADL ADL2_OverdriveN_PowerLimit_Get(AdlContext, int, ADLODNPowerLimitSetting* limit) {
    limit->iMaxOperatingTemperature = 75;
    return 0;
}

NULL_ADL ADL2_New_QueryPMLogData_Get(AdlContext, int, ADLPMLogDataOutput* output) {
    for (int const sensor : {1, 2, 8, 14, 19, 27}) {
        output->sensors[sensor] = {.supported = 1, .value = 61};
    }
    return 0;
}

NULL_ADL ADL2_Adapter_MemoryInfo_Get(AdlContext, int, ADLMemoryInfo* memory) {
    memory->iMemorySize = 8LL << 30;
    return 0;
}
