#include "sim/board/FaultRules.h"

namespace gputune::sim {

namespace {

using enum Garbage;

constexpr std::string_view kAmdEntryPoints[] = {
#define ADL_FUNCTION(name, ...) #name,
#include "amd/adl_functions.inc"
};

constexpr GarbageFit kAmdGarbage[] = {
    {"ADL2_Adapter_AdapterInfoX4_Get", Kinds(NegativeCount, HugeCount, NullList, UnterminatedStrings)},
    {"ADL2_Adapter_AdapterInfoX3_Get", Kinds(NegativeCount, HugeCount, NullList, UnterminatedStrings)},
    {"ADL2_Adapter_MemoryInfo_Get", Kinds(UnterminatedStrings, ExtremeValues)},
    {"ADL2_Adapter_VRAMUsage_Get", Kinds(ExtremeValues)},
    {"ADL2_Adapter_FrameMetrics_Get", Kinds(ExtremeValues)},
    {"ADL2_Overdrive_Caps", Kinds(ExtremeValues)},
    {"ADL2_Overdrive5_ThermalDevices_Enum", Kinds(EndlessEnumeration)},
    {"ADL2_Overdrive5_FanSpeed_Get", Kinds(ExtremeValues)},
    {"ADL2_OverdriveN_CapabilitiesX2_Get", Kinds(NegativeCount, HugeCount, ExtremeValues)},
    {"ADL2_OverdriveN_SystemClocksX2_Get", Kinds(ExtremeValues)},
    {"ADL2_OverdriveN_MemoryClocksX2_Get", Kinds(ExtremeValues)},
    {"ADL2_OverdriveN_FanControl_Get", Kinds(ExtremeValues)},
    {"ADL2_OverdriveN_PowerLimit_Get", Kinds(ExtremeValues)},
    {"ADL2_OverdriveN_Temperature_Get", Kinds(ExtremeValues)},
    {"ADL2_OverdriveN_PerformanceStatus_Get", Kinds(ExtremeValues)},
    {"ADL2_Overdrive8_Init_Setting_Get", Kinds(NegativeCount, HugeCount, ExtremeValues)},
    {"ADL2_Overdrive8_Current_Setting_Get", Kinds(NegativeCount, HugeCount, ExtremeValues)},
    {"ADL2_New_QueryPMLogData_Get", Kinds(ExtremeValues)},
    {"ADL2_Overdrive8_Init_SettingX2_Get", Kinds(NegativeCount, HugeCount, NullList, ShortList)},
    {"ADL2_Overdrive8_Current_SettingX2_Get", Kinds(NegativeCount, HugeCount, NullList, ShortList)},
};

constexpr std::string_view kIntelEntryPoints[] = {
#define CTL_FORWARD(name, ...) #name,
#include "intel/ctl_functions.inc"
};

constexpr GarbageFit kIntelGarbage[] = {
    {"ctlEnumerateDevices", Kinds(NegativeCount, HugeCount, NullHandles, GrowingCount, ShrinkingCount)},
    {"ctlEnumFans", Kinds(NegativeCount, HugeCount, NullHandles, GrowingCount, ShrinkingCount)},
    {"ctlGetDeviceProperties", Kinds(UnterminatedStrings, ExtremeValues)},
    {"ctlFanGetProperties", Kinds(NegativeCount, HugeCount, OneTooMany, ExtremeValues)},
    {"ctlFanGetConfig", Kinds(NegativeCount, HugeCount, OneTooMany, ExtremeValues)},
    {"ctlOverclockGetProperties", Kinds(ExtremeValues)},
    {"ctlOverclockPowerLimitGet", Kinds(ExtremeValues)},
    {"ctlOverclockGpuFrequencyOffsetGet", Kinds(ExtremeValues)},
    {"ctlOverclockVramFrequencyOffsetGet", Kinds(ExtremeValues)},
    {"ctlPowerTelemetryGet", Kinds(ExtremeValues)},
};

constexpr std::string_view kQueryInterface = "nvapi_QueryInterface";

constexpr std::string_view kNvidiaEntryPoints[] = {
    kQueryInterface,
#define SIM_NVAPI(name, identifier) #name,
#include "sim/board/nvapi_entry_points.inc"
};

// It returns an address: a client would call whatever it is given.
constexpr std::string_view kNvidiaWithoutResult[] = {kQueryInterface};

constexpr GarbageFit kNvidiaGarbage[] = {
    {"NvAPI_EnumPhysicalGPUs", Kinds(NegativeCount, HugeCount, OneTooMany, NullHandles)},
    {"NvAPI_GetErrorMessage", Kinds(UnterminatedStrings)},
    {"NvAPI_GetInterfaceVersionString", Kinds(UnterminatedStrings)},
    {"NvAPI_GPU_GetFullName", Kinds(UnterminatedStrings)},
    {"NvAPI_GPU_GetThermalSettings", Kinds(NegativeCount, HugeCount, OneTooMany, ExtremeValues)},
};

}  // namespace

FaultRules AmdFaultRules() {
    return {.entryPoints = kAmdEntryPoints, .withoutResult = {}, .garbage = kAmdGarbage};
}
FaultRules IntelFaultRules() {
    return {.entryPoints = kIntelEntryPoints, .withoutResult = {}, .garbage = kIntelGarbage};
}
FaultRules NvidiaFaultRules() {
    return {.entryPoints = kNvidiaEntryPoints, .withoutResult = kNvidiaWithoutResult, .garbage = kNvidiaGarbage};
}

}  // namespace gputune::sim
