#include "failure_lines.h"

#include <algorithm>
#include <array>
#include <span>

namespace gputune::test {

namespace {

struct Rule {
    std::array<std::string_view, 4> entryPoints;  // none: all others
    // Parts of lines: "*" is the entry point, "{}" the code. None: the log says nothing, and need not.
    std::array<std::string_view, 3> texts = {};
    enum { Any, Missing } kind = Any;
    std::array<std::string_view, 2> operations = {};  // none: all
};

constexpr Rule kAmdRules[] = {
    {{"library"}, {"[ADL::InitADL()] ... load adl dll failed"}},
    {{"ADL2_Main_ControlX2_Create"}, {"[ADL::InitADL()] ... ADL2_Main_ControlX2_Create failed"}},
    {{"ADL2_Adapter_AdapterInfoX4_Get"}, {"[ADL::InitADL()] ... Unable to get Adapter count"}},
    // The adapter counts as inactive, and the log has the number of active ones.
    {{"ADL2_Adapter_Active_Get"}, {"[ADL::InitADL()] number of active adapter ... 0"}},
    {{"ADL2_Overdrive_Caps"}, {"[ADL::GetSdkVersionSupported()] ... ADL2_Overdrive_Caps failed"}},
};

constexpr Rule kOverdriveNRules[] = {
    // Only a missing entry point is an error: whatever the result is, a controller that reports a GPU's domain counts.
    {{"ADL2_Overdrive5_ThermalDevices_Enum"}, {"* ... null ptr"}, Rule::Missing},
    {{"ADL2_Overdrive5_ThermalDevices_Enum"}},
    {{"ADL2_OverdriveN_SystemClocksX2_Get", "ADL2_OverdriveN_MemoryClocksX2_Get"},
     {"!ADL2_OverdriveN_MemoryClocksX2_Get ... null ptr"},
     Rule::Missing},
    {{"ADL2_OverdriveN_PowerLimit_Get", "ADL2_OverdriveN_PowerLimit_Set"},
     {"PowerLimit_Get || ADL2_OverdriveN_PowerLimit_Set ... null ptr"},
     Rule::Missing,
     {"SetPowerLimitDefault", "SetPerformanceDefault"}},
    {{}, {"* ... null ptr"}, Rule::Missing},
    {{}, {"* ... failed: {}"}},
};

constexpr Rule kOverdrive8Rules[] = {
    // The older entry point takes the newer one's place; where both are missing, the tables stay empty.
    {{"ADL2_Overdrive8_Init_SettingX2_Get", "ADL2_Overdrive8_Init_Setting_Get", "ADL2_Overdrive8_Current_SettingX2_Get",
      "ADL2_Overdrive8_Current_Setting_Get"},
     {},
     Rule::Missing},
    {{"ADL2_Overdrive8_Init_SettingX2_Get", "ADL2_Overdrive8_Init_Setting_Get"},
     {"[OD8Helper::GetInitSetting()] ... * is failed"}},
    {{"ADL2_Overdrive8_Current_SettingX2_Get", "ADL2_Overdrive8_Current_Setting_Get"},
     {"[OD8Helper::GetCurrentSetting()] ... * is failed"}},
    {{"ADL2_New_QueryPMLogData_Get"}, {" ... * failed"}},
    // The readings are left out; the frame rate is -1, and only the list of adapters counts for it, not the result.
    {{"ADL2_Adapter_VRAMUsage_Get", "ADL2_Adapter_MemoryInfo_Get", "ADL2_Adapter_FrameMetrics_Get",
      "ADL2_Adapter_AdapterInfoX3_Get"}},
    // Only SetPowerLimit logs nothing when it cannot set.
    {{"ADL2_Overdrive8_Setting_Set"}, {}, Rule::Missing, {"SetPowerLimit("}},
    {{"ADL2_Overdrive8_Setting_Set"}, {"... Reset all settings failed"}, Rule::Any, {"SetPerformanceDefault"}},
    {{"ADL2_Overdrive8_Setting_Set"},
     {" ... Failed", " ... Fail to reset Optimized Power mode to Manual", " ... * failed"}},
};

constexpr Rule kIntelRules[] = {
    // Opening and closing the library are not logged.
    {{"library", "ctlInit", "ctlClose"}},
    {{"ctlEnumFans"},
     {"Fan component not supported ... error: 1073741825 ([CTL_RESULT_ERROR_NOT_INITIALIZED])"},
     Rule::Missing},
    {{}, {"* ... error: 1073741825 ([CTL_RESULT_ERROR_NOT_INITIALIZED])"}, Rule::Missing},
    {{}, {"* ... error: {} (", "Fan component not supported ... error: {} ("}},
};

constexpr Rule kNvidiaRules[] = {
    // These texts are shown as they are, empty ones too; and the library works without the hooks.
    {{"NvAPI_GetInterfaceVersionString", "NvAPI_GetErrorMessage", "BeforeCallHook", "AfterCallHook"}},
    // Without it there is no text for the status either.
    {{"library", "nvapi_QueryInterface", "NvAPI_Initialize"}, {"NvAPI_Initialize ... error: "}},
    {{"NvAPI_GPU_GetFullName"}, {"* #0 ... error: NVAPI_-3"}, Rule::Missing},
    {{"NvAPI_GPU_GetFullName"}, {"* #0 ... error: NVAPI_{}", "* #1 ... error: NVAPI_{}"}},
    {{}, {"* ... error: NVAPI_-3"}, Rule::Missing},
    {{}, {"* ... error: NVAPI_{}"}},
};

// The first rule that fits; null when none does.
Rule const* FindRule(std::span<Rule const> rules, Failure const& failure) {
    auto const fits = [&](Rule const& rule) {
        auto const isEntryPoint = [&](std::string_view name) { return !name.empty() && name == failure.entryPoint; };
        auto const isOperation = [&](std::string_view name) {
            return !name.empty() && failure.operation.starts_with(name);
        };
        return (rule.entryPoints[0].empty() || std::ranges::any_of(rule.entryPoints, isEntryPoint)) &&
               (rule.operations[0].empty() || std::ranges::any_of(rule.operations, isOperation)) &&
               (rule.kind == Rule::Any || failure.isMissing);
    };
    auto const found = std::ranges::find_if(rules, fits);
    return found == rules.end() ? nullptr : &*found;
}

Rule const* FindRule(Failure const& failure) {
    switch (failure.backend) {
        case Backend::Intel:
            return FindRule(kIntelRules, failure);
        case Backend::Nvidia:
            return FindRule(kNvidiaRules, failure);
        default:
            break;
    }
    Rule const* const rule = FindRule(kAmdRules, failure);
    return rule != nullptr                          ? rule
           : failure.backend == Backend::OverdriveN ? FindRule(kOverdriveNRules, failure)
                                                    : FindRule(kOverdrive8Rules, failure);
}

void Replace(std::string& text, std::string_view what, std::string_view with) {
    if (std::size_t const place = text.find(what); place != std::string::npos) {
        text.replace(place, what.size(), with);
    }
}

}  // namespace

std::optional<std::vector<std::string>> FailureLines(Failure const& failure) {
    Rule const* const rule = FindRule(failure);
    if (rule == nullptr) {
        return std::nullopt;
    }
    std::vector<std::string> lines;
    for (std::string_view const part : rule->texts) {
        if (!part.empty()) {
            std::string& text = lines.emplace_back(part);
            Replace(text, "*", failure.entryPoint);
            Replace(text, "{}", std::to_string(failure.code));
        }
    }
    return lines;
}

}  // namespace gputune::test
