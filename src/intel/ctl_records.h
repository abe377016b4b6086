// The records of the Intel Graphics Control Library that this backend and the simulated board read or write. All fields
// are little-endian. Most records begin with their own size in bytes and a version. Two hold a pointer, and so differ
// between 32-bit and 64-bit processes.
//
// One-byte flags are integers: a library may write more than 0 and 1 into them.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
#define CTL_CDECL __cdecl
#else
// The logic's unit tests are 32-bit x86, so that calling conventions and layouts agree.
#define CTL_CDECL __attribute__((cdecl))
#endif

namespace gputune::intel {

using ctl_result_t = std::int32_t;

// A size or an offset: in a 32-bit process, and in a 64-bit one.
constexpr std::size_t CtlWidth(std::size_t in32Bits, std::size_t in64Bits) {
    return sizeof(void*) == 4 ? in32Bits : in64Bits;
}

// Opaque to their clients.
using ctl_api_handle_t = struct ctl_api*;
using ctl_device_adapter_handle_t = struct ctl_device_adapter*;
using ctl_fan_handle_t = struct ctl_fan*;

// Initialisation -----------------------------------------------------------------------------------------------------

constexpr std::uint32_t kCtlInitUseLevelZero = 1;

constexpr std::uint32_t CtlVersion(std::uint32_t major, std::uint32_t minor) {
    return major << 16 | minor;
}
constexpr std::uint32_t CtlMajorVersion(std::uint32_t version) {
    return version >> 16;
}

struct ctl_init_args_t {
    std::uint32_t Size;
    std::uint8_t Version;
    std::uint32_t AppVersion;  // as CtlVersion packs it
    std::uint32_t flags;
    std::uint32_t SupportedVersion;  // filled by the library
    std::uint8_t ApplicationUID[16];
};
static_assert(sizeof(ctl_init_args_t) == 36);
static_assert(offsetof(ctl_init_args_t, AppVersion) == 8);
static_assert(offsetof(ctl_init_args_t, flags) == 12);
static_assert(offsetof(ctl_init_args_t, SupportedVersion) == 16);
static_assert(offsetof(ctl_init_args_t, ApplicationUID) == 20);

struct ctl_runtime_path_args_t {
    std::uint32_t Size;
    std::uint8_t Version;
    std::uint8_t UnlockID[16];
    wchar_t const* pRuntimePath;
    std::uint16_t DeviceID;
    std::uint8_t RevID;
};
static_assert(sizeof(ctl_runtime_path_args_t) == CtlWidth(32, 40));
static_assert(offsetof(ctl_runtime_path_args_t, pRuntimePath) == 24);
static_assert(offsetof(ctl_runtime_path_args_t, DeviceID) == CtlWidth(28, 32));

// Devices ------------------------------------------------------------------------------------------------------------

constexpr std::uint32_t kCtlDeviceTypeGraphics = 1;
constexpr std::uint32_t kIntelPciVendorId = 0x8086;

// What a device's identifier buffer holds.
struct CtlLuid {
    std::uint32_t low;
    std::int32_t high;
};
static_assert(sizeof(CtlLuid) == 8);

struct ctl_device_adapter_properties_t {
    std::uint32_t Size;
    std::uint8_t Version;
    void* pDeviceID;  // the caller's buffer
    std::uint32_t device_id_size;
    std::uint32_t device_type;
    std::uint32_t supported_subfunction_flags;
    alignas(8) std::uint64_t driver_version;
    alignas(8) std::uint64_t firmware_version[3];
    std::uint32_t pci_vendor_id;
    std::uint32_t pci_device_id;
    std::uint32_t rev_id;
    std::uint32_t num_eus_per_sub_slice;
    std::uint32_t num_sub_slices_per_slice;
    std::uint32_t num_slices;
    char name[100];
    std::uint32_t graphics_adapter_properties;
    std::uint32_t Frequency;
    std::uint16_t pci_subsys_id;
    std::uint16_t pci_subsys_vendor_id;
    std::uint8_t bus;
    std::uint8_t device;
    std::uint8_t function;
    std::uint32_t num_xe_cores;
    char reserved[112];
};
static_assert(sizeof(ctl_device_adapter_properties_t) == CtlWidth(312, 320));
static_assert(offsetof(ctl_device_adapter_properties_t, pDeviceID) == 8);
static_assert(offsetof(ctl_device_adapter_properties_t, device_id_size) == CtlWidth(12, 16));
static_assert(offsetof(ctl_device_adapter_properties_t, device_type) == CtlWidth(16, 20));
static_assert(offsetof(ctl_device_adapter_properties_t, driver_version) == CtlWidth(24, 32));
static_assert(offsetof(ctl_device_adapter_properties_t, pci_vendor_id) == CtlWidth(56, 64));
static_assert(offsetof(ctl_device_adapter_properties_t, pci_device_id) == CtlWidth(60, 68));
static_assert(offsetof(ctl_device_adapter_properties_t, rev_id) == CtlWidth(64, 72));
static_assert(offsetof(ctl_device_adapter_properties_t, name) == CtlWidth(80, 88));

// Overclocking -------------------------------------------------------------------------------------------------------

struct ctl_oc_control_info_t {
    std::uint8_t bSupported;
    std::uint8_t bRelative;
    std::uint8_t bReference;
    std::uint32_t units;
    alignas(8) double min;
    alignas(8) double max;
    alignas(8) double step;
    alignas(8) double Default;
    alignas(8) double reference;
};
static_assert(sizeof(ctl_oc_control_info_t) == 48);
static_assert(offsetof(ctl_oc_control_info_t, bRelative) == 1);
static_assert(offsetof(ctl_oc_control_info_t, bReference) == 2);
static_assert(offsetof(ctl_oc_control_info_t, Default) == 32);
static_assert(offsetof(ctl_oc_control_info_t, reference) == 40);

struct ctl_oc_properties_t {
    std::uint32_t Size;
    std::uint8_t Version;
    std::uint8_t bSupported;
    ctl_oc_control_info_t gpuFrequencyOffset;   // MHz
    ctl_oc_control_info_t gpuVoltageOffset;     // mV
    ctl_oc_control_info_t vramFrequencyOffset;  // MHz
    ctl_oc_control_info_t vramVoltageOffset;    // mV
    ctl_oc_control_info_t powerLimit;           // W
    ctl_oc_control_info_t temperatureLimit;     // degrees Celsius
};
static_assert(sizeof(ctl_oc_properties_t) == 296);
static_assert(offsetof(ctl_oc_properties_t, bSupported) == 5);
static_assert(offsetof(ctl_oc_properties_t, gpuFrequencyOffset) == 8);
static_assert(offsetof(ctl_oc_properties_t, powerLimit) == 200);

// Telemetry ----------------------------------------------------------------------------------------------------------

struct ctl_telemetry_item_t {
    std::uint8_t bSupported;
    std::uint32_t units;
    std::uint32_t type;
    alignas(8) double value;
};
static_assert(sizeof(ctl_telemetry_item_t) == 24);
static_assert(offsetof(ctl_telemetry_item_t, value) == 16);

struct ctl_psu_info_t {
    std::uint8_t bSupported;
    std::uint32_t psuType;
    ctl_telemetry_item_t energyCounter;
    ctl_telemetry_item_t voltage;
};
static_assert(sizeof(ctl_psu_info_t) == 56);

constexpr int kCtlFanCount = 5;
constexpr int kCtlPsuCount = 5;

struct ctl_power_telemetry_t {
    std::uint32_t Size;
    std::uint8_t Version;
    ctl_telemetry_item_t timeStamp;
    ctl_telemetry_item_t gpuEnergyCounter;
    ctl_telemetry_item_t gpuVoltage;
    ctl_telemetry_item_t gpuCurrentClockFrequency;
    ctl_telemetry_item_t gpuCurrentTemperature;
    ctl_telemetry_item_t globalActivityCounter;
    ctl_telemetry_item_t renderComputeActivityCounter;
    ctl_telemetry_item_t mediaActivityCounter;
    std::uint8_t gpuPowerLimited;
    std::uint8_t gpuTemperatureLimited;
    std::uint8_t gpuCurrentLimited;
    std::uint8_t gpuVoltageLimited;
    std::uint8_t gpuUtilizationLimited;
    ctl_telemetry_item_t vramEnergyCounter;
    ctl_telemetry_item_t vramVoltage;
    ctl_telemetry_item_t vramCurrentClockFrequency;
    ctl_telemetry_item_t vramCurrentEffectiveFrequency;
    ctl_telemetry_item_t vramReadBandwidthCounter;
    ctl_telemetry_item_t vramWriteBandwidthCounter;
    ctl_telemetry_item_t vramCurrentTemperature;
    std::uint8_t vramPowerLimited;
    std::uint8_t vramTemperatureLimited;
    std::uint8_t vramCurrentLimited;
    std::uint8_t vramVoltageLimited;
    std::uint8_t vramUtilizationLimited;
    ctl_telemetry_item_t totalCardEnergyCounter;
    ctl_psu_info_t psu[kCtlPsuCount];
    ctl_telemetry_item_t fanSpeed[kCtlFanCount];
};
static_assert(sizeof(ctl_power_telemetry_t) == 808);
static_assert(offsetof(ctl_power_telemetry_t, timeStamp) == 8);
static_assert(offsetof(ctl_power_telemetry_t, gpuCurrentClockFrequency) == 80);
static_assert(offsetof(ctl_power_telemetry_t, gpuCurrentTemperature) == 104);
static_assert(offsetof(ctl_power_telemetry_t, globalActivityCounter) == 128);
static_assert(offsetof(ctl_power_telemetry_t, vramEnergyCounter) == 208);
static_assert(offsetof(ctl_power_telemetry_t, vramCurrentClockFrequency) == 256);
static_assert(offsetof(ctl_power_telemetry_t, vramCurrentTemperature) == 352);
static_assert(offsetof(ctl_power_telemetry_t, totalCardEnergyCounter) == 384);
static_assert(offsetof(ctl_power_telemetry_t, fanSpeed) == 688);

// Fans ---------------------------------------------------------------------------------------------------------------

constexpr std::uint32_t kCtlFanUnitsPercent = 1;

// What supportedModes is compared with, as a whole number. Deliberate: a fan that reports both modes, 3, has neither.
constexpr std::uint32_t kCtlFanModeFixed = 1;
constexpr std::uint32_t kCtlFanModeTable = 2;

struct ctl_fan_properties_t {
    std::uint32_t Size;
    std::uint8_t Version;
    std::uint8_t canControl;
    std::uint32_t supportedModes;
    std::uint32_t supportedUnits;
    std::int32_t maxRPM;
    std::int32_t maxPoints;
};
static_assert(sizeof(ctl_fan_properties_t) == 24);
static_assert(offsetof(ctl_fan_properties_t, canControl) == 5);
static_assert(offsetof(ctl_fan_properties_t, supportedModes) == 8);
static_assert(offsetof(ctl_fan_properties_t, maxPoints) == 20);

struct ctl_fan_speed_t {
    std::uint32_t Size;
    std::uint8_t Version;
    std::int32_t speed;
    std::uint32_t units;
};
static_assert(sizeof(ctl_fan_speed_t) == 16);
static_assert(offsetof(ctl_fan_speed_t, speed) == 8);

struct ctl_fan_temp_speed_t {
    std::uint32_t Size;
    std::uint8_t Version;
    std::uint32_t temperature;  // degrees Celsius
    ctl_fan_speed_t speed;
};
static_assert(sizeof(ctl_fan_temp_speed_t) == 28);
static_assert(offsetof(ctl_fan_temp_speed_t, temperature) == 8);
static_assert(offsetof(ctl_fan_temp_speed_t, speed) == 12);

constexpr int kCtlFanTableSize = 32;

struct ctl_fan_speed_table_t {
    std::uint32_t Size;
    std::uint8_t Version;
    std::int32_t numPoints;
    ctl_fan_temp_speed_t table[kCtlFanTableSize];
};
static_assert(sizeof(ctl_fan_speed_table_t) == 908);
static_assert(offsetof(ctl_fan_speed_table_t, numPoints) == 8);
static_assert(offsetof(ctl_fan_speed_table_t, table) == 12);

struct ctl_fan_config_t {
    std::uint32_t Size;
    std::uint8_t Version;
    std::int32_t mode;
    ctl_fan_speed_t speedFixed;
    ctl_fan_speed_table_t speedTable;
};
static_assert(sizeof(ctl_fan_config_t) == 936);
static_assert(offsetof(ctl_fan_config_t, mode) == 8);
static_assert(offsetof(ctl_fan_config_t, speedTable) == 28);

}  // namespace gputune::intel
