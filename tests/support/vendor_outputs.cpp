#include "vendor_outputs.h"

#include <climits>
#include <map>
#include <string_view>

#include "ScriptedCore.h"

namespace gputune::test {

namespace {

using Kind = VendorOutput::Kind;

constexpr int kPointer = sizeof(void*);

// Entered by hand from the published interfaces.
std::map<std::string_view, std::vector<VendorOutput>> const kOutputs = {
    {"ADL2_Main_ControlX2_Create", {{2, kPointer}}},
    {"ADL2_Adapter_AdapterInfoX4_Get", {{2, 4}, {3, 1580, Kind::List}}},
    {"ADL2_Adapter_AdapterInfoX3_Get", {{2, 4}, {3, 1572, Kind::List}}},
    {"ADL2_Adapter_Active_Get", {{2, 4}}},
    {"ADL2_Overdrive_Caps", {{2, 4}, {3, 4}, {4, 4}}},
    {"ADL2_Overdrive5_ThermalDevices_Enum", {{3, 16}}},
    {"ADL2_Overdrive5_FanSpeed_Get", {{3, 16}}},
    {"ADL2_OverdriveN_CapabilitiesX2_Get", {{2, 208}}},
    {"ADL2_OverdriveN_SystemClocksX2_Get", {{2, kSizeInRecord}}},
    {"ADL2_OverdriveN_SystemClocksX2_Set", {{2, kSizeInRecord}}},
    {"ADL2_OverdriveN_MemoryClocksX2_Get", {{2, kSizeInRecord}}},
    {"ADL2_OverdriveN_MemoryClocksX2_Set", {{2, kSizeInRecord}}},
    {"ADL2_OverdriveN_FanControl_Get", {{2, 32}}},
    {"ADL2_OverdriveN_PowerLimit_Get", {{2, 12}}},
    {"ADL2_OverdriveN_PerformanceStatus_Get", {{2, 72}}},
    {"ADL2_OverdriveN_Temperature_Get", {{3, 4}}},
    {"ADL2_Adapter_VRAMUsage_Get", {{2, 4}}},
    {"ADL2_Adapter_MemoryInfo_Get", {{2, 272}}},
    {"ADL2_Overdrive8_Init_Setting_Get", {{2, 632}}},
    {"ADL2_Overdrive8_Init_SettingX2_Get", {{2, 4}, {3, 4}, {4, 16, Kind::List}}},
    {"ADL2_Overdrive8_Current_Setting_Get", {{2, 160}}},
    {"ADL2_Overdrive8_Current_SettingX2_Get", {{2, 4}, {3, 4, Kind::List}}},
    {"ADL2_Overdrive8_Setting_Set", {{3, 160}}},
    {"ADL2_New_QueryPMLogData_Get", {{2, 2052}}},
    {"ADL2_Adapter_FrameMetrics_Get", {{3, 4}}},

    {"ctlInit", {{0, 36}, {1, kPointer}}},
    {"ctlEnumerateDevices", {{1, 4}, {2, kPointer, Kind::Handles}}},
    {"ctlGetDeviceProperties", {{1, kPointer == 4 ? 312 : 320}}},
    {"ctlOverclockGetProperties", {{1, 296}}},
    {"ctlPowerTelemetryGet", {{1, 808}}},
    {"ctlEnumFans", {{1, 4}, {2, kPointer, Kind::Handles}}},
    {"ctlFanGetProperties", {{1, 24}}},
    {"ctlFanGetConfig", {{1, 936}}},
    {"ctlOverclockPowerLimitGet", {{1, 8}}},
    {"ctlOverclockGpuFrequencyOffsetGet", {{1, 8}}},
    {"ctlOverclockVramFrequencyOffsetGet", {{1, 8}}},

    {"NvAPI_GetErrorMessage", {{1, 64}}},
    {"NvAPI_GetInterfaceVersionString", {{0, 64}}},
    {"NvAPI_EnumPhysicalGPUs", {{0, 64 * kPointer}, {1, 4}}},
    {"NvAPI_GPU_GetFullName", {{1, 64}}},
    {"NvAPI_GPU_GetThermalSettings", {{2, 68}}},
};

std::map<std::string_view, std::vector<VendorCount>> const kCounts = {
    {"ADL2_Adapter_AdapterInfoX4_Get", {{2, 0}}},
    {"ADL2_Adapter_AdapterInfoX3_Get", {{2, 0}}},
    {"ADL2_OverdriveN_CapabilitiesX2_Get", {{2, 0}}},
    {"ADL2_OverdriveN_SystemClocksX2_Get", {{2, 0}, {2, 8}}},
    {"ADL2_OverdriveN_SystemClocksX2_Set", {{2, 0}, {2, 8}}},
    {"ADL2_OverdriveN_MemoryClocksX2_Get", {{2, 0}, {2, 8}}},
    {"ADL2_OverdriveN_MemoryClocksX2_Set", {{2, 0}, {2, 8}}},
    {"ADL2_Overdrive8_Init_Setting_Get", {{2, 0}}},
    {"ADL2_Overdrive8_Init_SettingX2_Get", {{3, 0}}},
    {"ADL2_Overdrive8_Current_Setting_Get", {{2, 0}}},
    {"ADL2_Overdrive8_Current_SettingX2_Get", {{2, 0}}},
    {"ADL2_Overdrive8_Setting_Set", {{3, 0}}},

    {"ctlEnumerateDevices", {{1, 0}}},
    {"ctlEnumFans", {{1, 0}}},
    {"ctlFanGetProperties", {{1, 20}}},
    {"ctlFanGetConfig", {{1, 36}}},

    {"NvAPI_EnumPhysicalGPUs", {{1, 0}}},
    {"NvAPI_GPU_GetThermalSettings", {{2, 4}}},
};

std::map<std::string_view, std::vector<VendorText>> const kTexts = {
    {"ADL2_Adapter_AdapterInfoX4_Get", {{3, 8, 256}, {3, 280, 256}, {3, 536, 256}}},
    {"ADL2_Adapter_AdapterInfoX3_Get", {{3, 8, 256}, {3, 280, 256}, {3, 536, 256}}},
    {"ctlGetDeviceProperties", {{1, kPointer == 4 ? 80 : 88, 100}}},
    {"NvAPI_GetErrorMessage", {{1, 0, 64}}},
    {"NvAPI_GetInterfaceVersionString", {{0, 0, 64}}},
    {"NvAPI_GPU_GetFullName", {{1, 0, 64}}},
};

std::vector<int> Range(int first, int last) {
    std::vector<int> codes;
    for (int code = first; code <= last; ++code) {
        codes.push_back(code);
    }
    return codes;
}

template <class... More>
std::vector<int> Joined(std::vector<int> codes, More const&... more) {
    (codes.insert(codes.end(), more.begin(), more.end()), ...);
    return codes;
}

// For every vendor.
std::vector<int> const kExtremeCodes = {-1, INT_MIN, INT_MAX};

// 1 to 4 are warnings.
std::vector<int> const kAdlCodes = Joined(Range(-21, -2), Range(1, 4), std::vector{-100}, kExtremeCodes);

std::vector<int> const kControlCodes =
    Joined(Range(0x40000000, 0x40000010), std::vector{0x40000015, 0x40000019, 0x4000001A, 0x4000FFFF, 1},
           Range(0x44000001, 0x44000008), kExtremeCodes);

// 1 is no published status.
std::vector<int> const kNvapiCodes = Joined(Range(-14, -2), Range(-140, -100), std::vector{1}, kExtremeCodes);

template <class Item>
std::vector<Item> const& Of(std::map<std::string_view, std::vector<Item>> const& items, char const* entryPoint) {
    static std::vector<Item> const none;
    auto const found = items.find(entryPoint);
    return found == items.end() ? none : found->second;
}

}  // namespace

std::vector<VendorOutput> const& VendorOutputs(char const* entryPoint) {
    return Of(kOutputs, entryPoint);
}

std::vector<VendorCount> const& VendorCounts(char const* entryPoint) {
    return Of(kCounts, entryPoint);
}

std::vector<VendorText> const& VendorTexts(char const* entryPoint) {
    return Of(kTexts, entryPoint);
}

std::vector<int> const& FailureCodes(char const* entryPoint) {
    std::string_view const name = entryPoint;
    return name.starts_with("ADL2_") ? kAdlCodes : name.starts_with("ctl") ? kControlCodes : kNvapiCodes;
}

}  // namespace gputune::test
