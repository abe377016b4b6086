// The scripted AMD Display Library.
#include <cstring>

#include "ScriptedCore.h"

namespace {

using gputune::test::kSizeInRecord;
using gputune::test::ScriptedAdl;
using gputune::test::ScriptedCore;
using gputune::test::Signature;

// Entered by hand from the library's published interface, not from the product's declarations.
std::map<std::string, Signature> const kSignatures = {
    {"ADL2_Main_ControlX2_Create", {4}},
    {"ADL2_Adapter_AdapterInfoX4_Get", {4}},
    {"ADL2_Adapter_AdapterInfoX3_Get", {4}},
    {"ADL2_Adapter_Active_Get", {3, 2, 4}},
    {"ADL2_Overdrive_Caps", {5}},
    {"ADL2_Overdrive5_ThermalDevices_Enum", {4, 3, 16}},
    {"ADL2_Overdrive5_FanSpeed_Get", {4, 3, 16}},
    {"ADL2_Overdrive5_FanSpeed_Set", {4, 3, 16}},
    {"ADL2_Overdrive5_FanSpeedToDefault_Set", {3}},
    {"ADL2_OverdriveN_CapabilitiesX2_Get", {3, 2, 208}},
    {"ADL2_OverdriveN_SystemClocksX2_Get", {3, 2, kSizeInRecord}},
    {"ADL2_OverdriveN_SystemClocksX2_Set", {3, 2, kSizeInRecord}},
    {"ADL2_OverdriveN_MemoryClocksX2_Get", {3, 2, kSizeInRecord}},
    {"ADL2_OverdriveN_MemoryClocksX2_Set", {3, 2, kSizeInRecord}},
    {"ADL2_OverdriveN_FanControl_Get", {3, 2, 32}},
    {"ADL2_OverdriveN_FanControl_Set", {3, 2, 32}},
    {"ADL2_OverdriveN_PowerLimit_Get", {3, 2, 12}},
    {"ADL2_OverdriveN_PowerLimit_Set", {3, 2, 12}},
    {"ADL2_OverdriveN_PerformanceStatus_Get", {3, 2, 72}},
    {"ADL2_OverdriveN_Temperature_Get", {4, 3, 4}},
    {"ADL2_Adapter_VRAMUsage_Get", {3, 2, 4}},
    {"ADL2_Adapter_MemoryInfo_Get", {3, 2, 272}},
    {"ADL2_Overdrive8_Init_Setting_Get", {3, 2, 632}},
    {"ADL2_Overdrive8_Init_SettingX2_Get", {5, 3, 4}},
    {"ADL2_Overdrive8_Current_Setting_Get", {3, 2, 160}},
    {"ADL2_Overdrive8_Current_SettingX2_Get", {4, 2, 4}},
    {"ADL2_Overdrive8_Setting_Set", {4, 2, 472}},
    {"ADL2_New_QueryPMLogData_Get", {3, 2, 2052}},
    {"ADL2_Adapter_FrameMetrics_Get", {4, 3, 4}},
};

int Answer(char const* name, int const* words) {
    if (std::strcmp(name, "ADL2_Main_ControlX2_Create") == 0) {
        ScriptedAdl().SetAllocator(reinterpret_cast<ScriptedCore::Allocator>(words[0]));
    }
    return ScriptedAdl().Answer(name, words);
}

}  // namespace

#define ADL_FUNCTION(name, ...) SCRIPTED_FUNCTION(extern "C", name)
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
