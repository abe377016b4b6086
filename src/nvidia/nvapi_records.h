// What NVAPI's functions take and return. The records hold no pointer: they are the same in 32-bit and 64-bit
// processes.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
#define NVAPI_CDECL __cdecl
#else
// The logic's unit tests are 32-bit x86 too, so that calling conventions and layouts agree.
#define NVAPI_CDECL __attribute__((cdecl))
#endif

namespace gputune::nvidia {

// Statuses, of the library itself and of what loads it.
constexpr int kNvapiOk = 0;
constexpr int kNvapiError = -1;
constexpr int kNvapiLibraryNotFound = -2;
constexpr int kNvapiNoImplementation = -3;  // an entry point is missing

// Opaque to its clients; as wide as a pointer.
using NvPhysicalGpuHandle = void*;

constexpr std::size_t kMaxPhysicalGpus = 64;

// The texts that NVAPI writes have room for 64 characters, the terminator included.
using NvShortString = char[64];
static_assert(sizeof(NvShortString) == 64);

constexpr std::uint32_t kThermalTargetAll = 15;
constexpr std::size_t kMaxThermalSensors = 3;

// Temperatures in degrees Celsius.
struct NvThermalSensor {
    std::int32_t controller;
    std::int32_t defaultMinTemp;
    std::int32_t defaultMaxTemp;
    std::int32_t currentTemp;
    std::int32_t target;
};
static_assert(sizeof(NvThermalSensor) == 20);
static_assert(offsetof(NvThermalSensor, currentTemp) == 12);
static_assert(offsetof(NvThermalSensor, target) == 16);

struct NV_GPU_THERMAL_SETTINGS {
    std::uint32_t version;  // kThermalSettingsVersion2
    std::uint32_t count;    // of sensors; as the library wrote it, so perhaps more than there is room for
    NvThermalSensor sensor[kMaxThermalSensors];
};
static_assert(sizeof(NV_GPU_THERMAL_SETTINGS) == 68);
static_assert(offsetof(NV_GPU_THERMAL_SETTINGS, count) == 4);
static_assert(offsetof(NV_GPU_THERMAL_SETTINGS, sensor) == 8);

// NVAPI numbers a record's versions and adds its size.
constexpr std::uint32_t kThermalSettingsVersion2 = sizeof(NV_GPU_THERMAL_SETTINGS) | 2U << 16U;
static_assert(kThermalSettingsVersion2 == 0x00020044);

}  // namespace gputune::nvidia
