// The records that cross the library's boundary are the public header's; their layouts are pinned here.
#pragma once

#include <cstddef>

#include "gputune.h"

namespace gputune {

static_assert(sizeof(bool) == 1);

static_assert(sizeof(HwmValue) == 272);
static_assert(offsetof(HwmValue, Value) == 0);
static_assert(offsetof(HwmValue, Name) == 8);
static_assert(offsetof(HwmValue, Valid) == 264);
#if defined(_WIN32)
static_assert(alignof(HwmValue) == 8);
#endif

static_assert(sizeof(VgaInfo) == 264);
static_assert(offsetof(VgaInfo, SubsystemId) == 0);
static_assert(offsetof(VgaInfo, AdapterName) == 4);
static_assert(offsetof(VgaInfo, BusNumber) == 260);

static_assert(sizeof(FanPoint) == 32);
static_assert(offsetof(FanPoint, DefaultSpeed) == 0);
static_assert(offsetof(FanPoint, DefaultTemperature) == 4);
static_assert(offsetof(FanPoint, MaxSpeed) == 8);
static_assert(offsetof(FanPoint, MinSpeed) == 12);
static_assert(offsetof(FanPoint, MaxTemperature) == 16);
static_assert(offsetof(FanPoint, MinTemperature) == 20);
static_assert(offsetof(FanPoint, CurrentSpeed) == 24);
static_assert(offsetof(FanPoint, CurrentTemperature) == 28);

static_assert(sizeof(FanSetting) == 1608);
static_assert(offsetof(FanSetting, Valid) == 0);
static_assert(offsetof(FanSetting, PointCount) == 4);
static_assert(offsetof(FanSetting, Points) == 8);

static_assert(sizeof(PowerLimitSetting) == 20);
static_assert(offsetof(PowerLimitSetting, Valid) == 0);
static_assert(offsetof(PowerLimitSetting, Default) == 4);
static_assert(offsetof(PowerLimitSetting, Max) == 8);
static_assert(offsetof(PowerLimitSetting, Min) == 12);
static_assert(offsetof(PowerLimitSetting, Current) == 16);

static_assert(sizeof(ClockSetting) == 36);
static_assert(offsetof(ClockSetting, Valid) == 0);
static_assert(offsetof(ClockSetting, DefaultClock) == 4);
static_assert(offsetof(ClockSetting, DefaultVoltage) == 8);
static_assert(offsetof(ClockSetting, MaxClock) == 12);
static_assert(offsetof(ClockSetting, MinClock) == 16);
static_assert(offsetof(ClockSetting, MaxVoltage) == 20);
static_assert(offsetof(ClockSetting, MinVoltage) == 24);
static_assert(offsetof(ClockSetting, CurrentClock) == 28);
static_assert(offsetof(ClockSetting, CurrentVoltage) == 32);

static_assert(sizeof(FanTablePoint) == 8);
static_assert(offsetof(FanTablePoint, FanSpeed) == 0);
static_assert(offsetof(FanTablePoint, FanTemperature) == 4);

static_assert(sizeof(PredefinedPerformanceParameter) == 44);
static_assert(offsetof(PredefinedPerformanceParameter, Valid) == 0);
static_assert(offsetof(PredefinedPerformanceParameter, GpuOC) == 4);
static_assert(offsetof(PredefinedPerformanceParameter, GpuOCGivenValue) == 8);
static_assert(offsetof(PredefinedPerformanceParameter, MemOC) == 12);
static_assert(offsetof(PredefinedPerformanceParameter, MemOCGivenValue) == 16);
static_assert(offsetof(PredefinedPerformanceParameter, PowerOC) == 20);
static_assert(offsetof(PredefinedPerformanceParameter, GpuSilent) == 24);
static_assert(offsetof(PredefinedPerformanceParameter, MemSilent) == 28);
static_assert(offsetof(PredefinedPerformanceParameter, PowerSilent) == 32);
static_assert(offsetof(PredefinedPerformanceParameter, Watt) == 36);
static_assert(offsetof(PredefinedPerformanceParameter, NewestVBIOS) == 40);

// "Not available" in the int fields of the records.
constexpr int kNotAvailable = -1;

}  // namespace gputune
