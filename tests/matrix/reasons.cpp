#include "reasons.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace gputune::matrix {

namespace {

using Kind = Fault::Kind;
using test::Lines;

// What tells of an entry point's failure: a part of a line, one of these. "*" is the entry point, "{}" the code. None
// where nothing is written, and nothing has to be.
using Texts = std::array<std::string_view, 3>;
constexpr Texts kSilent = {};

struct Rule {
    std::string_view entryPoint;  // "*": all others
    Texts texts;
    std::string_view step = {};  // in these alone, by the beginning of their name
    std::optional<Kind> kind = std::nullopt;
};

// The first rule that fits holds.
constexpr Rule kAmdRules[] = {
    {"library", {"[ADL::InitADL()] ... load adl dll failed"}},
    {"ADL2_Main_ControlX2_Create", {"[ADL::InitADL()] ... ADL2_Main_ControlX2_Create failed"}},
    {"ADL2_Adapter_AdapterInfoX4_Get", {"[ADL::InitADL()] ... Unable to get Adapter count"}},
    // The adapter counts as inactive, and the count is told.
    {"ADL2_Adapter_Active_Get", {"[ADL::InitADL()] number of active adapter ... 0"}},
    {"ADL2_Overdrive_Caps", {"[ADL::GetSdkVersionSupported()] ... ADL2_Overdrive_Caps failed"}},
};

constexpr Rule kOverdriveNRules[] = {
    // Only a missing entry point is an error: whatever the result, what reports a GPU's domain counts.
    {"ADL2_Overdrive5_ThermalDevices_Enum", {"ADL2_Overdrive5_ThermalDevices_Enum ... null ptr"}, "", Kind::Missing},
    {"ADL2_Overdrive5_ThermalDevices_Enum", kSilent},
    {"ADL2_OverdriveN_SystemClocksX2_Get", {"!ADL2_OverdriveN_MemoryClocksX2_Get ... null ptr"}, "", Kind::Missing},
    {"ADL2_OverdriveN_MemoryClocksX2_Get", {"!ADL2_OverdriveN_MemoryClocksX2_Get ... null ptr"}, "", Kind::Missing},
    {"ADL2_OverdriveN_PowerLimit_Get",
     {"PowerLimit_Get || ADL2_OverdriveN_PowerLimit_Set ... null ptr"},
     "SetPowerLimitDefault",
     Kind::Missing},
    {"ADL2_OverdriveN_PowerLimit_Set",
     {"PowerLimit_Get || ADL2_OverdriveN_PowerLimit_Set ... null ptr"},
     "SetPowerLimitDefault",
     Kind::Missing},
    {"ADL2_OverdriveN_PowerLimit_Get",
     {"PowerLimit_Get || ADL2_OverdriveN_PowerLimit_Set ... null ptr"},
     "SetPerformanceDefault",
     Kind::Missing},
    {"ADL2_OverdriveN_PowerLimit_Set",
     {"PowerLimit_Get || ADL2_OverdriveN_PowerLimit_Set ... null ptr"},
     "SetPerformanceDefault",
     Kind::Missing},
    {"*", {"* ... null ptr"}, "", Kind::Missing},
    {"*", {"* ... failed: {}"}},
};

constexpr Rule kOverdrive8Rules[] = {
    // The older entry point takes its place; where both are missing, the tables stay empty.
    {"ADL2_Overdrive8_Init_SettingX2_Get", kSilent, "", Kind::Missing},
    {"ADL2_Overdrive8_Init_Setting_Get", kSilent, "", Kind::Missing},
    {"ADL2_Overdrive8_Current_SettingX2_Get", kSilent, "", Kind::Missing},
    {"ADL2_Overdrive8_Current_Setting_Get", kSilent, "", Kind::Missing},
    {"ADL2_Overdrive8_Init_SettingX2_Get", {"[OD8Helper::GetInitSetting()] ... * is failed"}},
    {"ADL2_Overdrive8_Init_Setting_Get", {"[OD8Helper::GetInitSetting()] ... * is failed"}},
    {"ADL2_Overdrive8_Current_SettingX2_Get", {"[OD8Helper::GetCurrentSetting()] ... * is failed"}},
    {"ADL2_Overdrive8_Current_Setting_Get", {"[OD8Helper::GetCurrentSetting()] ... * is failed"}},
    {"ADL2_New_QueryPMLogData_Get", {" ... ADL2_New_QueryPMLogData_Get failed"}},
    // The readings are left out, and the frame rate is -1.
    {"ADL2_Adapter_VRAMUsage_Get", kSilent},
    {"ADL2_Adapter_MemoryInfo_Get", kSilent},
    {"ADL2_Adapter_FrameMetrics_Get", kSilent},
    // Its result does not count, only the list.
    {"ADL2_Adapter_AdapterInfoX3_Get", kSilent},
    // This one operation, and only this one, says nothing when it cannot set.
    {"ADL2_Overdrive8_Setting_Set", kSilent, "SetPowerLimit(", Kind::Missing},
    {"ADL2_Overdrive8_Setting_Set", {"... Reset all settings failed"}, "SetPerformanceDefault"},
    {"ADL2_Overdrive8_Setting_Set",
     {" ... Failed", " ... Fail to reset Optimized Power mode to Manual", " ... ADL2_Overdrive8_Setting_Set failed"}},
};

constexpr Rule kIntelRules[] = {
    // What opens and closes the library logs nothing.
    {"library", kSilent},
    {"ctlInit", kSilent},
    {"ctlClose", kSilent},
    {"ctlEnumFans",
     {"Fan component not supported ... error: 1073741825 ([CTL_RESULT_ERROR_NOT_INITIALIZED])"},
     "",
     Kind::Missing},
    {"*", {"* ... error: 1073741825 ([CTL_RESULT_ERROR_NOT_INITIALIZED])"}, "", Kind::Missing},
    {"*", {"* ... error: {} (", "Fan component not supported ... error: {} ("}},
};

constexpr Rule kNvidiaRules[] = {
    // The texts are shown as they are, empty ones too.
    {"NvAPI_GetInterfaceVersionString", kSilent},
    {"NvAPI_GetErrorMessage", kSilent},
    // Hooks are an offer.
    {"BeforeCallHook", kSilent},
    {"AfterCallHook", kSilent},
    // Without it there is no text for the status either.
    {"library", {"NvAPI_Initialize ... error: "}},
    {"nvapi_QueryInterface", {"NvAPI_Initialize ... error: "}},
    {"NvAPI_Initialize", {"NvAPI_Initialize ... error: "}},
    {"NvAPI_GPU_GetFullName", {"NvAPI_GPU_GetFullName #0 ... error: NVAPI_-3"}, "", Kind::Missing},
    {"NvAPI_GPU_GetFullName",
     {"NvAPI_GPU_GetFullName #0 ... error: NVAPI_{}", "NvAPI_GPU_GetFullName #1 ... error: NVAPI_{}"}},
    {"*", {"* ... error: NVAPI_-3"}, "", Kind::Missing},
    {"*", {"* ... error: NVAPI_{}"}},
};

template <std::size_t N>
Rule const* Find(Rule const (&rules)[N], Incident const& incident) {
    auto const fits = [&](Rule const& rule) {
        return (rule.entryPoint == "*" || rule.entryPoint == incident.entryPoint) &&
               incident.step.name.starts_with(rule.step) && (!rule.kind || *rule.kind == incident.fault.kind);
    };
    auto const* const found = std::find_if(std::begin(rules), std::end(rules), fits);
    return found == std::end(rules) ? nullptr : found;
}

Rule const* RuleFor(Incident const& incident) {
    switch (incident.board.backend) {
        case Backend::OverdriveN:
            if (Rule const* const rule = Find(kAmdRules, incident)) {
                return rule;
            }
            return Find(kOverdriveNRules, incident);
        case Backend::Overdrive8:
            if (Rule const* const rule = Find(kAmdRules, incident)) {
                return rule;
            }
            return Find(kOverdrive8Rules, incident);
        case Backend::Intel:
            return Find(kIntelRules, incident);
        case Backend::Nvidia:
            return Find(kNvidiaRules, incident);
    }
    return nullptr;
}

void Replace(std::string& text, std::string_view what, std::string const& with) {
    if (std::size_t const place = text.find(what); place != std::string::npos) {
        text.replace(place, what.size(), with);
    }
}

// Words that give a reason; the names of what failed stand before them.
constexpr std::string_view kReasons[] = {
    "fail",
    "too few",
    "Fail",
    "error: ",
    "null ptr",
    "out of bound",
    " range",
    "not found",
    "no table",
    "not supported",
    "unknown hwid",
    "No available adapter",
    "UNKNOWN",
    "should be in",
    "not match",
    "no level",
    "is same as",
    "are same as",
    "*** NOT IMPLEMENT",
    "bad_alloc",
    "is empty",
    "?????",
    "not a Graphics",
    "numAdapters ... 0",
    "num of thermal controller: 0",
    "current fps",
};

bool GivesReason(std::string const& line) {
    return std::any_of(std::begin(kReasons), std::end(kReasons),
                       [&](std::string_view word) { return line.find(word) != std::string::npos; });
}

}  // namespace

std::string MissingReason(Incident const& incident, Lines const& lines, Lines const& healthy) {
    Kind const kind = incident.fault.kind;
    bool const isOne = incident.entryPoint != kEveryEntryPoint;
    bool const entryFailed = isOne && (kind == Kind::Missing || kind == Kind::Code || kind == Kind::CodeAndOutputs);
    if (entryFailed) {
        Rule const* const rule = RuleFor(incident);
        if (rule == nullptr) {
            return "no rule says what the log has to say";
        }
        if (rule->texts == kSilent) {
            return "";
        }
        std::string wanted;
        for (std::string_view const part : rule->texts) {
            if (part.empty()) {
                continue;
            }
            std::string text(part);
            Replace(text, "*", incident.entryPoint);
            Replace(text, "{}", std::to_string(incident.fault.value));
            if (std::any_of(lines.begin(), lines.end(),
                            [&](std::string const& line) { return line.find(text) != std::string::npos; })) {
                return "";
            }
            wanted += (wanted.empty() ? "\"" : " or \"") + text + "\"";
        }
        return "no line of the log has " + wanted;
    }
    if (incident.worked || !incident.workedHealthy || kind == Kind::NoMoreMemory) {
        return "";  // without any memory there is no log either
    }
    bool const isOpening = incident.board.backend == Backend::Intel && incident.step.IsInitialisation();
    if (!isOne && (isOpening || incident.step.name == "GetFrameRate")) {
        return "";  // as where ctlInit alone fails, or the frame metrics
    }
    if (incident.entryPoint == "ctlEnumerateDevices") {
        return "";  // without a device there is nothing to say
    }
    if (incident.entryPoint == "memory" && isOpening) {
        return "";  // no room for a device's identifier ends the initialisation without a word
    }
    bool const explained = std::any_of(lines.begin(), lines.end(), [&](std::string const& line) {
        return GivesReason(line) && std::find(healthy.begin(), healthy.end(), line) == healthy.end();
    });
    return explained ? "" : "it failed, and no line of the log says why";
}

}  // namespace gputune::matrix
