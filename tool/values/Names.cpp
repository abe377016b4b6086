#include "tool/values/Names.h"

#include <algorithm>

#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

constexpr char const* kAmdFiles[] = {"atiadlxx.dll", "atiadlxy.dll"};
constexpr char const* kIntelFiles[] = {sizeof(void*) == 4 ? "ControlLib32.dll" : "ControlLib.dll"};
constexpr char const* kNvidiaFiles[] = {sizeof(void*) == 4 ? "nvapi.dll" : "nvapi64.dll"};

struct Vendor {
    std::uint32_t number;
    Name name;
    std::span<char const* const> libraryFiles;
    char const* driver;
};

constexpr Vendor kVendors[] = {
    {GPUTUNE_VENDOR_AMD, {"AMD", "amd"}, kAmdFiles, "AMD's driver for Radeon graphics"},
    {GPUTUNE_VENDOR_INTEL, {"Intel", "intel"}, kIntelFiles, "Intel's driver for Arc graphics"},
    {GPUTUNE_VENDOR_NVIDIA, {"NVIDIA", "nvidia"}, kNvidiaFiles, "NVIDIA's graphics driver"},
    {GPUTUNE_VENDOR_UNKNOWN, {"none", "none"}, {}, "the vendor's graphics driver"},
};

struct Api {
    std::uint32_t number;
    Name name;
};

constexpr Api kApis[] = {
    {GPUTUNE_API_NONE, {"none", "none"}},
    {GPUTUNE_API_OVERDRIVE8, {"AMD Overdrive8", "overdrive8"}},
    {GPUTUNE_API_OVERDRIVEN, {"AMD OverdriveN", "overdriven"}},
    {GPUTUNE_API_IGCL, {"Intel Graphics Control Library", "igcl"}},
    {GPUTUNE_API_NVAPI, {"NVIDIA NVAPI", "nvapi"}},
};

// In the order of the enumerations.
constexpr Name kUnitNames[] = {{"", ""},       {"MHz", "mhz"},          {"\u00b0C", "celsius"}, {"%", "percent"},
                               {"rpm", "rpm"}, {"W", "watts"},          {"MB", "megabytes"},    {"mV", "millivolts"},
                               {"fps", "fps"}, {"(raw counter)", "raw"}};
constexpr char const* kQuantityNames[] = {"Clocks", "Temperatures",  "Fan",     "Load",
                                          "Power",  "Memory in use", "Voltage", "Frame rate"};

template <class Entry>
Entry const* Find(std::span<Entry const> entries, std::uint32_t number) {
    auto const found =
        std::find_if(entries.begin(), entries.end(), [number](Entry const& entry) { return entry.number == number; });
    return found == entries.end() ? nullptr : &*found;
}

template <class Entry>
Name NameOf(std::span<Entry const> entries, std::uint32_t number) {
    Entry const* const entry = Find(entries, number);
    return entry != nullptr ? entry->name : Name{"unknown", "unknown"};
}

}  // namespace

constexpr std::array<SensorName, GPUTUNE_HWM_KEY_COUNT> kSensorNames{{
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

constexpr std::array<Quantity, 8> kQuantityOrder{Quantity::Temperature, Quantity::Clock,  Quantity::Load,
                                                 Quantity::Fan,         Quantity::Power,  Quantity::Memory,
                                                 Quantity::FrameRate,   Quantity::Voltage};

bool IsLimit(std::string_view code) {
    return code == kSensorNames[GPUTUNE_HWM_TEMPERATURE_LIMIT].code || code == kSensorNames[GPUTUNE_HWM_TDP_LIMIT].code;
}

Name UnitName(Unit unit) {
    return kUnitNames[static_cast<std::size_t>(unit)];
}

char const* QuantityName(Quantity quantity) {
    return kQuantityNames[static_cast<std::size_t>(quantity)];
}

Name VendorName(std::uint32_t vendor) {
    return NameOf<Vendor>(kVendors, vendor);
}

Name ApiName(std::uint32_t api) {
    return NameOf<Api>(kApis, api);
}

std::span<char const* const> ControlLibraryFiles(std::uint32_t vendor) {
    auto const* const entry = Find<Vendor>(kVendors, vendor);
    return entry != nullptr ? entry->libraryFiles : std::span<char const* const>();
}

std::string ControlLibraryNames(std::uint32_t vendor) {
    std::span<char const* const> const files = ControlLibraryFiles(vendor);
    return Joined({files.begin(), files.end()}, " or ");
}

char const* DriverName(std::uint32_t vendor) {
    auto const* const entry = Find<Vendor>(kVendors, vendor);
    return entry != nullptr ? entry->driver : "the vendor's graphics driver";
}

Unit SensorUnit(SensorName const& sensor, std::uint32_t vendor) {
    return sensor.key == GPUTUNE_HWM_GPU_LOAD && vendor == GPUTUNE_VENDOR_INTEL ? Unit::Raw : sensor.unit;
}

}  // namespace gputune::tool
