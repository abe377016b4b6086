// What the active adapter can do, for the log.
#include "intel/IGCLHelper.h"
#include "intel/ctl_functions.h"

namespace gputune::intel {

namespace {

constexpr log::Tag kPrintTag{"[PrintProperties()]"};

std::string_view TrueOrFalse(std::uint8_t flag) {
    return flag != 0 ? "true" : "false";
}

struct OcControl {
    std::string_view label;
    ctl_oc_control_info_t ctl_oc_properties_t::*control;
    bool hasReference;
};

constexpr OcControl kOcControls[] = {
    {"Gpu Frequency Offset Supported?", &ctl_oc_properties_t::gpuFrequencyOffset, true},
    {"Gpu Voltage Offset Supported?", &ctl_oc_properties_t::gpuVoltageOffset, true},
    {"VRAM Frequency Offset Supported?", &ctl_oc_properties_t::vramFrequencyOffset, true},
    {"VRAM Voltage Offset Supported?", &ctl_oc_properties_t::vramVoltageOffset, true},
    {"Power Limit Supported?", &ctl_oc_properties_t::powerLimit, false},
    {"Temperature Limit Supported?", &ctl_oc_properties_t::temperatureLimit, false},
};

struct TelemetryItem {
    std::string_view label;
    ctl_telemetry_item_t ctl_power_telemetry_t::*item;
};

constexpr TelemetryItem kTelemetryItems[] = {
    {"TimeStamp Supported?", &ctl_power_telemetry_t::timeStamp},
    {"Gpu Energy Counter Supported?", &ctl_power_telemetry_t::gpuEnergyCounter},
    {"Gpu Voltage Supported?", &ctl_power_telemetry_t::gpuVoltage},
    {"Gpu Current Frequency Supported?", &ctl_power_telemetry_t::gpuCurrentClockFrequency},
    {"Gpu Current Temperature Supported?", &ctl_power_telemetry_t::gpuCurrentTemperature},
    {"Gpu Activity Counter Supported?", &ctl_power_telemetry_t::globalActivityCounter},
    {"Render Activity Counter Supported?", &ctl_power_telemetry_t::renderComputeActivityCounter},
    {"Media Activity Counter Supported?", &ctl_power_telemetry_t::mediaActivityCounter},
    {"VRAM Energy Counter Supported?", &ctl_power_telemetry_t::vramEnergyCounter},
    {"VRAM Voltage Supported?", &ctl_power_telemetry_t::vramVoltage},
    {"VRAM Frequency Supported?", &ctl_power_telemetry_t::vramCurrentClockFrequency},
    {"VRAM Effective Frequency Supported?", &ctl_power_telemetry_t::vramCurrentEffectiveFrequency},
    {"VRAM Read Bandwidth Supported?", &ctl_power_telemetry_t::vramReadBandwidthCounter},
    {"VRAM Write Bandwidth Supported?", &ctl_power_telemetry_t::vramWriteBandwidthCounter},
    {"VRAM Temperature Supported?", &ctl_power_telemetry_t::vramCurrentTemperature},
};

void PrintOcProperties(ctl_oc_properties_t const& properties) {
    log::Entry({"Oc Supported?"}, TrueOrFalse(properties.bSupported));
    for (OcControl const& row : kOcControls) {
        ctl_oc_control_info_t const& control = properties.*row.control;
        log::Entry({row.label}, TrueOrFalse(control.bSupported));
        if (row.hasReference && control.bRelative != 0 && control.bReference != 0) {
            log::Entry({"  - reference value"}, control.reference);
        }
    }
}

void PrintTelemetryItems(ctl_power_telemetry_t const& telemetry) {
    for (TelemetryItem const& row : kTelemetryItems) {
        log::Entry({row.label}, TrueOrFalse((telemetry.*row.item).bSupported));
    }
    log::Entry({"Fan Speed Supported?"}, TrueOrFalse(telemetry.fanSpeed[0].bSupported));
}

}  // namespace

bool IGCLHelper::RetrieveOcProperties() {
    constexpr log::Tag kTag{"[IGCLHelper::RetrieveOcProperties()]"};
    log::Entry(kTag, "begin");
    if (!ReadOcProperties(kTag, ocProperties_)) {
        return false;
    }
    log::Entry(kTag / "retrieve", "successfully");
    return true;
}

bool IGCLHelper::ReadOcProperties(log::Tag tag, ctl_oc_properties_t& properties) const {
    properties = {};
    properties.Size = sizeof properties;
    return Succeeded(tag / "ctlOverclockGetProperties", ctlOverclockGetProperties(Device(), &properties));
}

bool IGCLHelper::ReadTelemetry(log::Tag tag, ctl_power_telemetry_t& telemetry) const {
    telemetry = {};
    telemetry.Size = sizeof telemetry;
    return Succeeded(tag / "ctlPowerTelemetryGet", ctlPowerTelemetryGet(Device(), &telemetry));
}

void IGCLHelper::PrintProperties() const {
    log::Entry(kPrintTag, "begin");
    log::Line(kPrintTag.method, " >>>>>>> Overclock properties");
    PrintOcProperties(ocProperties_);
    log::Line(kPrintTag.method, " <<<<<<< Overclock properties");

    ctl_power_telemetry_t telemetry;
    // The tag names another method: deliberate.
    if (!ReadTelemetry(log::Tag{"[IGCLHelper::SetFanSpeed(int)]"}, telemetry)) {
        return;
    }
    log::Line(kPrintTag.method, " >>>>>>> HWM features");
    PrintTelemetryItems(telemetry);
    log::Line(kPrintTag.method, " <<<<<<< HWM features");
}

}  // namespace gputune::intel
