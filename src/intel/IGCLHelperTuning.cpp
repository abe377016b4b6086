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
        // In the log, too, it is the other operation alone.
        return SetPowerLimitDefault();
    }
    constexpr log::Tag tag{"[IGCLHelper::SetPowerLimit(int,int)]"};
    log::Entry(tag, "begin");
    ctl_oc_properties_t properties;
    if (!ReadOcProperties(tag, properties)) {
        return false;
    }
    double const defaultLimit = properties.powerLimit.Default;  // W
    if (!SetLimit(tag, Device(), (powerLimit / 100.0 + 1.0) * defaultLimit * kMilliwatts)) {
        return false;
    }
    double current = 0;  // mW
    if (Succeeded(tag / "ctlOverclockPowerLimitGet", ctlOverclockPowerLimitGet(Device(), &current))) {
        log::Entry(tag / "(verify) Current Sustained Power Limit Percent",
                   -(1.0 - current / (defaultLimit * kMilliwatts)) * 100.0, " %");
    }
    return true;
}

bool IGCLHelper::SetPowerLimitDefault() {
    constexpr log::Tag tag{"[IGCLHelper::SetPowerLimitDefault()]"};
    log::Entry(tag, "begin");
    ctl_oc_properties_t properties;
    return ReadOcProperties(tag, properties) && SetLimit(tag, Device(), properties.powerLimit.Default * kMilliwatts);
}

bool IGCLHelper::SetPerformanceUser(int gpuClock, int /*gpuVoltage*/, int memClock, int /*memVoltage*/) {
    constexpr log::Tag tag{"[IGCLHelper::SetPerformanceUser()]"};
    log::Entry(tag, "begin");
    auto const gpuOffset = [&](std::string_view subject) {
        double megahertz = 0;
        if (!Succeeded(tag / "ctlOverclockGpuFrequencyOffsetGet",
                       ctlOverclockGpuFrequencyOffsetGet(Device(), &megahertz))) {
            return false;
        }
        log::Entry(tag / subject, megahertz, " MHz");
        return true;
    };
    auto const vramOffset = [&](std::string_view subject) {
        double megahertz = 0;
        if (!Succeeded(tag / "ctlOverclockVramFrequencyOffsetGet",
                       ctlOverclockVramFrequencyOffsetGet(Device(), &megahertz))) {
            return false;
        }
        log::Entry(tag / subject, megahertz, " MHz");
        return true;
    };
    return gpuOffset("current gpu frequency offset") &&
           Succeeded(tag / "ctlOverclockWaiverSet", ctlOverclockWaiverSet(Device())) &&
           Succeeded(tag / "ctlOverclockGpuFrequencyOffsetSet",
                     ctlOverclockGpuFrequencyOffsetSet(Device(), gpuClock)) &&
           gpuOffset("(verify) new current gpu frequency offset") && vramOffset("current vram frequency offset") &&
           Succeeded(tag / "ctlOverclockVramFrequencyOffsetSet",
                     ctlOverclockVramFrequencyOffsetSet(Device(), memClock)) &&
           vramOffset("(verify) new current vram frequency offset");
}

bool IGCLHelper::SetPerformanceOC() {
    constexpr log::Tag tag{"[IGCLHelper::SetPerformanceOC()]"};
    log::Entry(tag, "begin");
    if (!GetExternalPerformanceParameter(kAnyBoard).Valid) {
        log::Entry(tag, "Get predefined performance parameter failed");
    }
    // A profile that was found is not applied, and the answer is the same: deliberate, callers rely on it.
    return false;
}

}  // namespace gputune::intel
