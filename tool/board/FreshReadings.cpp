#include "tool/board/FreshReadings.h"

#include <algorithm>
#include <array>
#include <initializer_list>

namespace gputune::tool {

namespace {

// A reading of a board that logs what it read: the end of the tag under which it does.
struct LoggedReading {
    char const* tagEnd;
    GputuneHwmKey key;
};

constexpr std::array<LoggedReading, 7> kOverdrive8Readings = {{
    {" PMLOG_CLK_GFXCLK", GPUTUNE_HWM_GPU_CORE_CLOCK},
    {" PMLOG_CLK_MEMCLK", GPUTUNE_HWM_GPU_MEMORY_CLOCK},
    {" PMLOG_FAN_RPM", GPUTUNE_HWM_FAN_SPEED_RPM},
    {" PMLOG_INFO_ACTIVITY_GFX", GPUTUNE_HWM_GPU_LOAD},
    {" PMLOG_TEMPERATURE_EDGE", GPUTUNE_HWM_GPU_TEMPERATURE},
    {" PMLOG_TEMPERATURE_HOTSPOT", GPUTUNE_HWM_GPU_HOTSPOT_TEMPERATURE},
    {" vram usage", GPUTUNE_HWM_MEMORY_USAGE},
}};
constexpr std::array<LoggedReading, 1> kNvidiaReadings = {{{" sensor # 0", GPUTUNE_HWM_GPU_TEMPERATURE}}};

// A function of AMD's library, and the readings that are lost with it.
struct Source {
    char const* function;
    std::initializer_list<GputuneHwmKey> keys;
};

std::initializer_list<Source> const kOverdriveNSources = {
    {"ADL2_OverdriveN_PerformanceStatus_Get",
     {GPUTUNE_HWM_GPU_CORE_CLOCK, GPUTUNE_HWM_GPU_MEMORY_CLOCK, GPUTUNE_HWM_GPU_LOAD}},
    {"ADL2_Adapter_VRAMUsage_Get", {GPUTUNE_HWM_MEMORY_USAGE}},
    {"ADL2_OverdriveN_Temperature_Get", {GPUTUNE_HWM_GPU_TEMPERATURE}},
    {"ADL2_OverdriveN_PowerLimit_Get", {GPUTUNE_HWM_TEMPERATURE_LIMIT, GPUTUNE_HWM_TDP_LIMIT}},
};

template <class Logged>
void KeepLogged(Readings& readings, LogEntries const& entries, Logged const& logged) {
    Readings fresh;
    fresh.fanUnsure = readings.fanUnsure;
    for (LoggedReading const& reading : logged) {
        if (LastMessage(entries, reading.tagEnd)) {
            fresh[reading.key] = readings[reading.key];
        }
    }
    readings = fresh;
}

bool Failed(LogEntries const& entries, char const* function) {
    std::vector<FailedCall> const calls = FailedCalls(entries);
    return std::any_of(calls.begin(), calls.end(), [&](FailedCall const& call) { return call.function == function; });
}

void RemoveOverdriveN(Readings& readings, LogEntries const& entries) {
    for (Source const& source : kOverdriveNSources) {
        if (Failed(entries, source.function)) {
            for (GputuneHwmKey const key : source.keys) {
                readings[key].reset();
            }
        }
    }
    // The second function is asked when the first one fails or answers 0. A 0 of the first one is a reading.
    if (Failed(entries, "ADL2_OverdriveN_FanControl_Get") && Failed(entries, "ADL2_Overdrive5_FanSpeed_Get")) {
        readings[GPUTUNE_HWM_FAN_SPEED_RPM].reset();
    }
}

bool HasBegun(LogEntries const& entries) {
    return std::any_of(entries.begin(), entries.end(), [](LogEntry const& entry) {
        return entry.tag.ends_with("FetchHwmValues()]") && entry.message == "begin";
    });
}

}  // namespace

void RemoveStale(Readings& readings, std::uint32_t api, LogEntries const& entries) {
    switch (api) {
        case GPUTUNE_API_OVERDRIVE8:
            KeepLogged(readings, entries, kOverdrive8Readings);
            return;
        case GPUTUNE_API_NVAPI:
            KeepLogged(readings, entries, kNvidiaReadings);
            return;
        case GPUTUNE_API_OVERDRIVEN:
        case GPUTUNE_API_IGCL:
            // Intel's telemetry is read by one call.
            if (!HasBegun(entries) || (api == GPUTUNE_API_IGCL && !FailedCalls(entries).empty())) {
                readings = Readings();
            } else if (api == GPUTUNE_API_OVERDRIVEN) {
                RemoveOverdriveN(readings, entries);
            }
            return;
        default:
            readings = Readings();
    }
}

std::vector<FailedCall> FailedCalls(LogEntries const& entries) {
    constexpr std::string_view kFailed = " failed";
    std::vector<FailedCall> calls;
    for (LogEntry const& entry : entries) {
        if (entry.message == "null ptr" || entry.message.starts_with("failed: ") ||
            entry.message.starts_with("error: ")) {
            calls.push_back({entry.tag.substr(entry.tag.rfind(' ') + 1), entry.message});
        } else if (entry.message.starts_with("ADL2_") && entry.message.ends_with(kFailed)) {
            calls.push_back({entry.message.substr(0, entry.message.size() - kFailed.size()), "failed"});
        }
    }
    return calls;
}

}  // namespace gputune::tool
