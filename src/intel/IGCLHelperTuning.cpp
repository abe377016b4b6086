// Power limit, clock offsets, performance modes.
#include "intel/IGCLHelper.h"
#include "intel/ctl_functions.h"

namespace gputune::intel {

namespace {

constexpr double kMilliwatts = 1000.0;  // in a watt
constexpr std::uint32_t kAnyBoard = 0xFFFFFFFF;

bool SetLimit(log::Tag tag, ctl_device_adapter_handle_t device, double milliwatts) {
    if (!Succeeded(tag / "ctlOverclockPowerLimitSet", ctlOverclockPowerLimitSet(device, milliwatts))) {
        return false;
    }
    log::Entry(tag / "Power limit", "set to ", milliwatts / kMilliwatts, " W");
    return true;
}

}  // namespace

bool IGCLHelper::SetPowerLimit(int /*temperatureLimit*/, int powerLimit) {
    if (powerLimit == 0) {
        // Logged as SetPowerLimitDefault only: deliberate.
        return SetPowerLimitDefault();
    }
    constexpr log::Tag kTag{"[IGCLHelper::SetPowerLimit(int,int)]"};
    log::Entry(kTag, "begin");
    ctl_oc_properties_t properties;
    if (!ReadOcProperties(kTag, properties)) {
        return false;
    }
    double const defaultLimit = properties.powerLimit.Default;  // W
    if (!SetLimit(kTag, Device(), (powerLimit / 100.0 + 1.0) * defaultLimit * kMilliwatts)) {
        return false;
    }
    double current = 0;  // mW
    if (Succeeded(kTag / "ctlOverclockPowerLimitGet", ctlOverclockPowerLimitGet(Device(), &current))) {
        log::Entry(kTag / "(verify) Current Sustained Power Limit Percent",
                   -(1.0 - current / (defaultLimit * kMilliwatts)) * 100.0, " %");
    }
    return true;
}

bool IGCLHelper::SetPowerLimitDefault() {
    constexpr log::Tag kTag{"[IGCLHelper::SetPowerLimitDefault()]"};
    log::Entry(kTag, "begin");
    ctl_oc_properties_t properties;
    return ReadOcProperties(kTag, properties) && SetLimit(kTag, Device(), properties.powerLimit.Default * kMilliwatts);
}

bool IGCLHelper::SetPerformanceUser(int gpuClock, int /*gpuVoltage*/, int memClock, int /*memVoltage*/) {
    constexpr log::Tag kTag{"[IGCLHelper::SetPerformanceUser()]"};
    log::Entry(kTag, "begin");
    auto const logOffset = [&](log::Tag call, auto get, std::string_view subject) {
        double megahertz = 0;
        if (!Succeeded(call, get(Device(), &megahertz))) {
            return false;
        }
        log::Entry(kTag / subject, megahertz, " MHz");
        return true;
    };
    auto const gpuOffset = [&](std::string_view subject) {
        return logOffset(kTag / "ctlOverclockGpuFrequencyOffsetGet", ctlOverclockGpuFrequencyOffsetGet, subject);
    };
    auto const vramOffset = [&](std::string_view subject) {
        return logOffset(kTag / "ctlOverclockVramFrequencyOffsetGet", ctlOverclockVramFrequencyOffsetGet, subject);
    };
    return gpuOffset("current gpu frequency offset") &&
           Succeeded(kTag / "ctlOverclockWaiverSet", ctlOverclockWaiverSet(Device())) &&
           Succeeded(kTag / "ctlOverclockGpuFrequencyOffsetSet",
                     ctlOverclockGpuFrequencyOffsetSet(Device(), gpuClock)) &&
           gpuOffset("(verify) new current gpu frequency offset") && vramOffset("current vram frequency offset") &&
           Succeeded(kTag / "ctlOverclockVramFrequencyOffsetSet",
                     ctlOverclockVramFrequencyOffsetSet(Device(), memClock)) &&
           vramOffset("(verify) new current vram frequency offset");
}

bool IGCLHelper::SetPerformanceOC() {
    constexpr log::Tag kTag{"[IGCLHelper::SetPerformanceOC()]"};
    log::Entry(kTag, "begin");
    if (!GetExternalPerformanceParameter(kAnyBoard).Valid) {
        log::Entry(kTag, "Get predefined performance parameter failed");
    }
    // A profile that was found is not applied, and the answer is the same: deliberate, callers rely on it.
    return false;
}

}  // namespace gputune::intel
