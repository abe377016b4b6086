#include "tool/values/Names.h"

namespace gputune::tool {

namespace {

struct NumberName {
    std::uint32_t number;
    Name name;
};

constexpr NumberName vendorNames[] = {
    {GPUTUNE_VENDOR_UNKNOWN, {"none", "none"}},
    {GPUTUNE_VENDOR_AMD, {"AMD", "amd"}},
    {GPUTUNE_VENDOR_INTEL, {"Intel", "intel"}},
    {GPUTUNE_VENDOR_NVIDIA, {"NVIDIA", "nvidia"}},
};

constexpr NumberName apiNames[] = {
    {GPUTUNE_API_NONE, {"none", "none"}},
    {GPUTUNE_API_OVERDRIVE8, {"AMD Overdrive8", "overdrive8"}},
    {GPUTUNE_API_OVERDRIVEN, {"AMD OverdriveN", "overdriven"}},
    {GPUTUNE_API_IGCL, {"Intel Graphics Control Library", "igcl"}},
    {GPUTUNE_API_NVAPI, {"NVIDIA NVAPI", "nvapi"}},
};

Name Find(std::span<NumberName const> names, std::uint32_t number) {
    for (NumberName const& entry : names) {
        if (entry.number == number) {
            return entry.name;
        }
    }
    return {"unknown", "unknown"};
}

}  // namespace

constexpr std::array<SensorName, GPUTUNE_HWM_KEY_COUNT> sensorNames{{
    {GPUTUNE_HWM_GPU_CORE_CLOCK, "GPU Core Clock", "gpu_core_clock", Unit::Megahertz, Quantity::Clock},
    {GPUTUNE_HWM_GPU_MEMORY_CLOCK, "GPU Memory Clock", "gpu_memory_clock", Unit::Megahertz, Quantity::Clock},
    {GPUTUNE_HWM_GPU_TEMPERATURE, "GPU Temperature", "gpu_temperature", Unit::Celsius, Quantity::Temperature},
    {GPUTUNE_HWM_GPU_HOTSPOT_TEMPERATURE, "GPU HotSpot Temperature", "gpu_hotspot_temperature", Unit::Celsius,
     Quantity::Temperature},
    {GPUTUNE_HWM_GPU_MEMORY_TEMPERATURE, "GPU Memory Temperature", "gpu_memory_temperature", Unit::Celsius,
     Quantity::Temperature},
    {GPUTUNE_HWM_FAN_SPEED_PERCENT, "Fan Speed(%)", "fan_duty", Unit::Percent, Quantity::Fan},
    {GPUTUNE_HWM_FAN_SPEED_RPM, "Fan Speed(RPM)", "fan_speed", Unit::Rpm, Quantity::Fan},
    {GPUTUNE_HWM_GPU_LOAD, "GPU Load", "gpu_load", Unit::Percent, Quantity::Load},
    {GPUTUNE_HWM_MEMORY_CONTROLLER_LOAD, "Memory Controller Load", "memory_controller_load", Unit::Percent,
     Quantity::Load},
    {GPUTUNE_HWM_GPU_POWER, "GPU only Power Draw", "gpu_power", Unit::Watt, Quantity::Power},
    {GPUTUNE_HWM_VDDC_POWER, "VDDC Power Draw", "vddc_power", Unit::Watt, Quantity::Power},
    {GPUTUNE_HWM_VDDCI_POWER, "VDDCI Power Draw", "vddci_power", Unit::Watt, Quantity::Power},
    {GPUTUNE_HWM_VRM_EFFICIENCY, "VRM Efficiency", "vrm_efficiency", Unit::Percent, Quantity::Power},
    {GPUTUNE_HWM_MEMORY_USAGE, "Memory Usage", "memory_usage", Unit::Megabyte, Quantity::Memory},
    {GPUTUNE_HWM_MEMORY_USAGE_DEDICATED, "Memory Usage (Dedicated)", "memory_usage_dedicated", Unit::Megabyte,
     Quantity::Memory},
    {GPUTUNE_HWM_MEMORY_USAGE_DYNAMIC, "Memory Usage (Dynamic)", "memory_usage_dynamic", Unit::Megabyte,
     Quantity::Memory},
    {GPUTUNE_HWM_VDDC, "VDDC", "vddc", Unit::Millivolt, Quantity::Voltage},
    {GPUTUNE_HWM_CPU_USAGE, "CPU Usage", "cpu_usage", Unit::Percent, Quantity::Load},
    {GPUTUNE_HWM_CPU_FREQUENCY, "CPU Frequency", "cpu_frequency", Unit::Megahertz, Quantity::Clock},
    {GPUTUNE_HWM_TEMPERATURE_LIMIT, "Temperature Limit", "temperature_limit", Unit::Celsius, Quantity::Temperature},
    {GPUTUNE_HWM_TDP_LIMIT, "TDP Limit", "tdp_limit", Unit::Percent, Quantity::Power},
}};

Name UnitName(Unit unit) {
    switch (unit) {
        case Unit::None:
            return {"", ""};
        case Unit::Megahertz:
            return {"MHz", "mhz"};
        case Unit::Celsius:
            return {"\u00b0C", "celsius"};
        case Unit::Percent:
            return {"%", "percent"};
        case Unit::Rpm:
            return {"rpm", "rpm"};
        case Unit::Watt:
            return {"W", "watts"};
        case Unit::Megabyte:
            return {"MB", "megabytes"};
        case Unit::Millivolt:
            return {"mV", "millivolts"};
        case Unit::FramesPerSecond:
            return {"fps", "fps"};
        case Unit::Raw:
            return {"(raw counter)", "raw"};
    }
    return {"", ""};
}

Name QuantityName(Quantity quantity) {
    switch (quantity) {
        case Quantity::Clock:
            return {"Clocks", "clocks"};
        case Quantity::Temperature:
            return {"Temperatures", "temperatures"};
        case Quantity::Fan:
            return {"Fan", "fan"};
        case Quantity::Load:
            return {"Load", "load"};
        case Quantity::Power:
            return {"Power", "power"};
        case Quantity::Memory:
            return {"Memory in use", "memory"};
        case Quantity::Voltage:
            return {"Voltage", "voltage"};
        case Quantity::FrameRate:
            return {"Frame rate", "frame_rate"};
    }
    return {"", ""};
}

Name VendorName(std::uint32_t vendor) {
    return Find(vendorNames, vendor);
}

Name ApiName(std::uint32_t api) {
    return Find(apiNames, api);
}

std::span<char const* const> ControlLibraryFiles(std::uint32_t vendor) {
    static constexpr char const* amd[] = {"atiadlxx.dll", "atiadlxy.dll"};
    static constexpr char const* intel[] = {"ControlLib32.dll"};
    static constexpr char const* nvidia[] = {"nvapi.dll"};
    switch (vendor) {
        case GPUTUNE_VENDOR_AMD:
            return amd;
        case GPUTUNE_VENDOR_INTEL:
            return intel;
        case GPUTUNE_VENDOR_NVIDIA:
            return nvidia;
        default:
            return {};
    }
}

std::string ControlLibraryNames(std::uint32_t vendor) {
    std::string names;
    for (char const* file : ControlLibraryFiles(vendor)) {
        names += names.empty() ? "" : " or ";
        names += file;
    }
    return names;
}

char const* DriverName(std::uint32_t vendor) {
    switch (vendor) {
        case GPUTUNE_VENDOR_AMD:
            return "AMD's driver for Radeon graphics";
        case GPUTUNE_VENDOR_INTEL:
            return "Intel's driver for Arc graphics";
        case GPUTUNE_VENDOR_NVIDIA:
            return "NVIDIA's graphics driver";
        default:
            return "the vendor's graphics driver";
    }
}

Unit SensorUnit(SensorName const& sensor, std::uint32_t vendor) {
    return sensor.key == GPUTUNE_HWM_GPU_LOAD && vendor == GPUTUNE_VENDOR_INTEL ? Unit::Raw : sensor.unit;
}

}  // namespace gputune::tool
