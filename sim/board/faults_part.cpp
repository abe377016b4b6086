#include <algorithm>
#include <array>
#include <string_view>

#include "board/board_parts.h"

namespace gputune::sim {

namespace {

constexpr std::string_view kEntryPoints[] = {
#define ADL_FUNCTION(name, ...) #name,
#include "amd/adl_functions.inc"
};

struct Fits {
    std::string_view entryPoint;
    Garbage garbage;
};

// Which garbage an entry point can hand out at all.
constexpr Fits kFits[] = {
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

bool Fit(std::string_view entryPoint, Garbage garbage) {
    return std::any_of(std::begin(kFits), std::end(kFits),
                       [&](Fits const& fits) { return fits.entryPoint == entryPoint && fits.garbage == garbage; });
}

}  // namespace

Fault ReadFault(JsonValue const& value) {
    JsonObject object(value);
    Fault fault;
    JsonValue const entryPoint = object.Required("entryPoint");
    fault.entryPoint = entryPoint.String(255);
    if (std::find(std::begin(kEntryPoints), std::end(kEntryPoints), fault.entryPoint) == std::end(kEntryPoints)) {
        entryPoint.Fail("the name of an entry point of the vendor's library");
    }
    auto const result = object.Optional("result");
    auto const missing = object.Optional("missing");
    auto const garbage = object.Optional("garbage");
    object.Finish();
    if (result.has_value() + missing.has_value() + garbage.has_value() != 1) {
        value.Fail("one of \"result\", \"missing\" and \"garbage\" beside \"entryPoint\"");
    }
    if (result) {
        fault.kind = FaultKind::Result;
        fault.result = result->Int();
    } else if (missing) {
        fault.kind = FaultKind::Missing;
        if (!missing->Bool()) {
            missing->Fail("true");
        }
    } else {
        fault.kind = FaultKind::Garbage;
        // In the order of Garbage, whose first one has no name.
        fault.garbage = static_cast<Garbage>(
            1 + garbage->Choice({"negative-count", "huge-count", "null-list", "short-list", "unterminated-strings",
                                 "endless-enumeration", "extreme-values"}));
        if (!Fit(fault.entryPoint, fault.garbage)) {
            garbage->Fail("a kind of garbage that " + fault.entryPoint + " can hand out");
        }
    }
    return fault;
}

}  // namespace gputune::sim
