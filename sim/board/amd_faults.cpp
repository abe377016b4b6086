#include "sim/board/FaultRules.h"

namespace gputune::sim {

namespace {

constexpr std::string_view kEntryPoints[] = {
#define ADL_FUNCTION(name, ...) #name,
#include "amd/adl_functions.inc"
};

using enum Garbage;
constexpr GarbageFit kGarbage[] = {
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

}  // namespace

FaultRules AmdFaultRules() {
    return {.entryPoints = kEntryPoints, .withoutResult = {}, .garbage = kGarbage};
}

}  // namespace gputune::sim
