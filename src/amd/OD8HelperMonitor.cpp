// Overdrive8: monitored values and the frame rate.
#include <array>
#include <limits>

#include "amd/OD8Helper.h"
#include "platform/DisplayAdapter.h"
#include "platform/text.h"

namespace gputune::amd {

namespace {

constexpr log::Tag kFetchTag{"[OD8Helper::FetchHwmValues()]"};

struct SensorReading {
    PmLogSensor sensor;
    std::string_view name;
    GputuneHwmKey key;
};

// In the order in which they are read; the sensors' units are the keys'.
constexpr std::array<SensorReading, 6> kReadings = {{
    {kPmLogGfxClock, "PMLOG_CLK_GFXCLK", GPUTUNE_HWM_GPU_CORE_CLOCK},
    {kPmLogMemoryClock, "PMLOG_CLK_MEMCLK", GPUTUNE_HWM_GPU_MEMORY_CLOCK},
    {kPmLogFanRpm, "PMLOG_FAN_RPM", GPUTUNE_HWM_FAN_SPEED_RPM},
    {kPmLogGfxActivity, "PMLOG_INFO_ACTIVITY_GFX", GPUTUNE_HWM_GPU_LOAD},
    {kPmLogEdgeTemperature, "PMLOG_TEMPERATURE_EDGE", GPUTUNE_HWM_GPU_TEMPERATURE},
    {kPmLogHotspotTemperature, "PMLOG_TEMPERATURE_HOTSPOT", GPUTUNE_HWM_GPU_HOTSPOT_TEMPERATURE},
}};

}  // namespace

void OD8Helper::FetchHwmValues() {
    ADLPMLogDataOutput output;
    if (!QueryPmLog(kFetchTag, output)) {
        return;
    }
    for (SensorReading const& reading : kReadings) {
        ADLSingleSensorData const& sensor = output.sensors[reading.sensor];
        if (sensor.supported != 0) {
            log::Entry(kFetchTag / reading.name, sensor.value);
            HwmValues().Store(reading.key, sensor.value);
        }
    }
    HwmValues().Store(GPUTUNE_HWM_MEMORY_USAGE, ReadMemoryUsage());
}

// Megabytes of video memory in use, 0 when unknown.
int OD8Helper::ReadMemoryUsage() const {
    int vramUsage = 0;
    if (m_Adl.Ask(&AdlFunctions::ADL2_Adapter_VRAMUsage_Get, &vramUsage) != kAdlOk) {
        return vramUsage;
    }
    ADLMemoryInfo memory{};
    if (m_Adl.Ask(&AdlFunctions::ADL2_Adapter_MemoryInfo_Get, &memory) != kAdlOk) {
        return vramUsage;
    }
    long long const memorySizeMB = memory.iMemorySize / 1024 / 1024;
    log::Entry(kFetchTag / "memory size", memorySizeMB);
    log::Entry(kFetchTag / "vram usage", vramUsage);
    if (vramUsage > memorySizeMB) {
        log::Entry(kFetchTag, "vramUsage > (ADLMemoryInfoStruct.iMemorySize/1024/1024), failed");
        return 0;
    }
    return vramUsage;
}

int OD8Helper::GetFrameRate() {
    constexpr log::Tag kTag{"[OD8Helper::GetFrameRate()]"};
    int numAdapters = 0;
    AdlList<AdapterInfo> adapters;
    m_Adl.Ask(&AdlFunctions::ADL2_Adapter_AdapterInfoX3_Get, &numAdapters, adapters.Out());
    if (*adapters.Out() == nullptr) {
        numAdapters = 0;
    }
    log::Entry(kTag / "numAdapters", numAdapters);

    // The first display that opens is asked about, whichever adapter it belongs to.
    constexpr std::uint32_t kNoSource = 0xFFFFFFFF;
    std::uint32_t source = kNoSource;
    for (AdapterInfo const& adapter : adapters.First(numAdapters)) {
        std::wstring const displayName = platform::ToWide(log::Bounded(adapter.strDisplayName));
        log::WideEntry(kTag / "dispDeviceName", displayName);
        platform::DisplayAdapter const display(displayName);
        if (auto const opened = display.VideoPresentSource()) {
            log::Entry(kTag / "D3DKMTOpenAdapterFromGdiDisplayName", "0");
            source = *opened;
            break;
        }
    }

    float fps = 0.0F;
    if (m_Adl.Ask(&AdlFunctions::ADL2_Adapter_FrameMetrics_Get, static_cast<int>(source), &fps) != kAdlOk) {
        return kNotAvailable;
    }
    log::Entry(kTag / "current fps", fps);
    constexpr auto kBeyond = static_cast<float>(std::numeric_limits<int>::max());
    return fps > -kBeyond && fps < kBeyond ? static_cast<int>(fps) : kNotAvailable;
}

}  // namespace gputune::amd
