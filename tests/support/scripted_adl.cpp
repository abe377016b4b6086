// The scripted AMD Display Library.
#include "ScriptedCore.h"

namespace {

using gputune::test::kSizeInRecord;
using gputune::test::ScriptedAdl;
using gputune::test::ScriptedCore;
using gputune::test::Signature;

// Entered by hand from the library's published interface, not from the product's declarations.
std::map<std::string, Signature> const kSignatures = {
    {"ADL2_Main_ControlX2_Create", {"aipi"}},
    {"ADL2_Adapter_AdapterInfoX4_Get", {"pipp"}},
    {"ADL2_Adapter_AdapterInfoX3_Get", {"pipp"}},
    {"ADL2_Adapter_Active_Get", {"pir", 4}},
    {"ADL2_Overdrive_Caps", {"pippp"}},
    {"ADL2_Overdrive5_ThermalDevices_Enum", {"piir", 16}},
    {"ADL2_Overdrive5_FanSpeed_Get", {"piir", 16}},
    {"ADL2_Overdrive5_FanSpeed_Set", {"piir", 16}},
    {"ADL2_Overdrive5_FanSpeedToDefault_Set", {"pii"}},
    {"ADL2_OverdriveN_CapabilitiesX2_Get", {"pir", 208}},
    {"ADL2_OverdriveN_SystemClocksX2_Get", {"pir", kSizeInRecord}},
    {"ADL2_OverdriveN_SystemClocksX2_Set", {"pir", kSizeInRecord}},
    {"ADL2_OverdriveN_MemoryClocksX2_Get", {"pir", kSizeInRecord}},
    {"ADL2_OverdriveN_MemoryClocksX2_Set", {"pir", kSizeInRecord}},
    {"ADL2_OverdriveN_FanControl_Get", {"pir", 32}},
    {"ADL2_OverdriveN_FanControl_Set", {"pir", 32}},
    {"ADL2_OverdriveN_PowerLimit_Get", {"pir", 12}},
    {"ADL2_OverdriveN_PowerLimit_Set", {"pir", 12}},
    {"ADL2_OverdriveN_PerformanceStatus_Get", {"pir", 72}},
    {"ADL2_OverdriveN_Temperature_Get", {"piir", 4}},
    {"ADL2_Adapter_VRAMUsage_Get", {"pir", 4}},
    {"ADL2_Adapter_MemoryInfo_Get", {"pir", 272}},
    {"ADL2_Overdrive8_Init_Setting_Get", {"pir", 632}},
    {"ADL2_Overdrive8_Init_SettingX2_Get", {"piprp", 4}},
    {"ADL2_Overdrive8_Current_Setting_Get", {"pir", 160}},
    {"ADL2_Overdrive8_Current_SettingX2_Get", {"pirp", 4}},
    {"ADL2_Overdrive8_Setting_Set", {"pirp", 472}},
    {"ADL2_New_QueryPMLogData_Get", {"pir", 2052}},
    {"ADL2_Adapter_FrameMetrics_Get", {"piir", 4}},
};

[[maybe_unused]] ScriptedCore& Core() {
    return ScriptedAdl();
}

}  // namespace

#define ADL_FUNCTION(name, ...) SCRIPTED_FUNCTION(name)
#include "amd/adl_functions.inc"

gputune::test::ScriptedCore& gputune::test::ScriptedAdl() {
    static ScriptedCore core({
        .entryPoints =
            {
#define ADL_FUNCTION(name, ...) SCRIPTED_ENTRY(name)
#include "amd/adl_functions.inc"
            },
        .signatures = kSignatures,
    });
    return core;
}
