#include "sim/board/FaultRules.h"

namespace gputune::sim {

namespace {

constexpr std::string_view kEntryPoints[] = {
#define ADL_FUNCTION(name, ...) #name,
#include "amd/adl_functions.inc"
};

constexpr GarbageFit kGarbage[] = {
    {"ADL2_Adapter_AdapterInfoX4_Get", Garbage::NegativeCount},
    {"ADL2_Adapter_AdapterInfoX4_Get", Garbage::HugeCount},
    {"ADL2_Adapter_AdapterInfoX4_Get", Garbage::NullList},
    {"ADL2_Adapter_AdapterInfoX4_Get", Garbage::UnterminatedStrings},
    {"ADL2_Adapter_AdapterInfoX3_Get", Garbage::NegativeCount},
    {"ADL2_Adapter_AdapterInfoX3_Get", Garbage::HugeCount},
    {"ADL2_Adapter_AdapterInfoX3_Get", Garbage::NullList},
    {"ADL2_Adapter_AdapterInfoX3_Get", Garbage::UnterminatedStrings},
    {"ADL2_Adapter_MemoryInfo_Get", Garbage::UnterminatedStrings},
    {"ADL2_Adapter_MemoryInfo_Get", Garbage::ExtremeValues},
    {"ADL2_Adapter_VRAMUsage_Get", Garbage::ExtremeValues},
    {"ADL2_Adapter_FrameMetrics_Get", Garbage::ExtremeValues},
    {"ADL2_Overdrive_Caps", Garbage::ExtremeValues},
    {"ADL2_Overdrive5_ThermalDevices_Enum", Garbage::EndlessEnumeration},
    {"ADL2_Overdrive5_FanSpeed_Get", Garbage::ExtremeValues},
    {"ADL2_OverdriveN_CapabilitiesX2_Get", Garbage::NegativeCount},
    {"ADL2_OverdriveN_CapabilitiesX2_Get", Garbage::HugeCount},
    {"ADL2_OverdriveN_CapabilitiesX2_Get", Garbage::ExtremeValues},
    {"ADL2_OverdriveN_SystemClocksX2_Get", Garbage::ExtremeValues},
    {"ADL2_OverdriveN_MemoryClocksX2_Get", Garbage::ExtremeValues},
    {"ADL2_OverdriveN_FanControl_Get", Garbage::ExtremeValues},
    {"ADL2_OverdriveN_PowerLimit_Get", Garbage::ExtremeValues},
    {"ADL2_OverdriveN_Temperature_Get", Garbage::ExtremeValues},
    {"ADL2_OverdriveN_PerformanceStatus_Get", Garbage::ExtremeValues},
    {"ADL2_Overdrive8_Init_Setting_Get", Garbage::NegativeCount},
    {"ADL2_Overdrive8_Init_Setting_Get", Garbage::HugeCount},
    {"ADL2_Overdrive8_Init_Setting_Get", Garbage::ExtremeValues},
    {"ADL2_Overdrive8_Current_Setting_Get", Garbage::NegativeCount},
    {"ADL2_Overdrive8_Current_Setting_Get", Garbage::HugeCount},
    {"ADL2_Overdrive8_Current_Setting_Get", Garbage::ExtremeValues},
    {"ADL2_New_QueryPMLogData_Get", Garbage::ExtremeValues},
    {"ADL2_Overdrive8_Init_SettingX2_Get", Garbage::NegativeCount},
    {"ADL2_Overdrive8_Init_SettingX2_Get", Garbage::HugeCount},
    {"ADL2_Overdrive8_Init_SettingX2_Get", Garbage::NullList},
    {"ADL2_Overdrive8_Init_SettingX2_Get", Garbage::ShortList},
    {"ADL2_Overdrive8_Current_SettingX2_Get", Garbage::NegativeCount},
    {"ADL2_Overdrive8_Current_SettingX2_Get", Garbage::HugeCount},
    {"ADL2_Overdrive8_Current_SettingX2_Get", Garbage::NullList},
    {"ADL2_Overdrive8_Current_SettingX2_Get", Garbage::ShortList},
};

}  // namespace

FaultRules AmdFaultRules() {
    return {.entryPoints = kEntryPoints, .withoutResult = {}, .garbage = kGarbage};
}

}  // namespace gputune::sim
