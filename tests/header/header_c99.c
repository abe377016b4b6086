/*
 * The public header alone, in C99: it compiles, and every size and place a host relies on is what it was. C99 has no
 * static assertion; an array of a negative size serves.
 */
#include "gputune.h"

#include <stddef.h>

#define PIN(name, condition) typedef char pin_##name[(condition) ? 1 : -1]
#define PIN_SIZE(record, size) PIN(record, sizeof(record) == (size))
#define PIN_FIELD(record, field, offset) PIN(record##_##field, offsetof(record, field) == (offset))

PIN(bool, sizeof(bool) == 1);

PIN_SIZE(HwmValue, 272);
PIN_FIELD(HwmValue, Value, 0);
PIN_FIELD(HwmValue, Name, 8);
PIN_FIELD(HwmValue, Valid, 264);
PIN_FIELD(HwmValue, Reserved, 265);

PIN_SIZE(VgaInfo, 264);
PIN_FIELD(VgaInfo, SubsystemId, 0);
PIN_FIELD(VgaInfo, AdapterName, 4);
PIN_FIELD(VgaInfo, BusNumber, 260);

PIN_SIZE(FanPoint, 32);
PIN_FIELD(FanPoint, DefaultSpeed, 0);
PIN_FIELD(FanPoint, DefaultTemperature, 4);
PIN_FIELD(FanPoint, MaxSpeed, 8);
PIN_FIELD(FanPoint, MinSpeed, 12);
PIN_FIELD(FanPoint, MaxTemperature, 16);
PIN_FIELD(FanPoint, MinTemperature, 20);
PIN_FIELD(FanPoint, CurrentSpeed, 24);
PIN_FIELD(FanPoint, CurrentTemperature, 28);

PIN_SIZE(FanSetting, 1608);
PIN_FIELD(FanSetting, Valid, 0);
PIN_FIELD(FanSetting, PointCount, 4);
PIN_FIELD(FanSetting, Points, 8);

PIN_SIZE(PowerLimitSetting, 20);
PIN_FIELD(PowerLimitSetting, Valid, 0);
PIN_FIELD(PowerLimitSetting, Default, 4);
PIN_FIELD(PowerLimitSetting, Max, 8);
PIN_FIELD(PowerLimitSetting, Min, 12);
PIN_FIELD(PowerLimitSetting, Current, 16);

PIN_SIZE(ClockSetting, 36);
PIN_FIELD(ClockSetting, Valid, 0);
PIN_FIELD(ClockSetting, DefaultClock, 4);
PIN_FIELD(ClockSetting, DefaultVoltage, 8);
PIN_FIELD(ClockSetting, MaxClock, 12);
PIN_FIELD(ClockSetting, MinClock, 16);
PIN_FIELD(ClockSetting, MaxVoltage, 20);
PIN_FIELD(ClockSetting, MinVoltage, 24);
PIN_FIELD(ClockSetting, CurrentClock, 28);
PIN_FIELD(ClockSetting, CurrentVoltage, 32);

PIN_SIZE(FanTablePoint, 8);
PIN_FIELD(FanTablePoint, FanSpeed, 0);
PIN_FIELD(FanTablePoint, FanTemperature, 4);

PIN_SIZE(PredefinedPerformanceParameter, 44);
PIN_FIELD(PredefinedPerformanceParameter, Valid, 0);
PIN_FIELD(PredefinedPerformanceParameter, GpuOC, 4);
PIN_FIELD(PredefinedPerformanceParameter, GpuOCGivenValue, 8);
PIN_FIELD(PredefinedPerformanceParameter, MemOC, 12);
PIN_FIELD(PredefinedPerformanceParameter, MemOCGivenValue, 16);
PIN_FIELD(PredefinedPerformanceParameter, PowerOC, 20);
PIN_FIELD(PredefinedPerformanceParameter, GpuSilent, 24);
PIN_FIELD(PredefinedPerformanceParameter, MemSilent, 28);
PIN_FIELD(PredefinedPerformanceParameter, PowerSilent, 32);
PIN_FIELD(PredefinedPerformanceParameter, Watt, 36);
PIN_FIELD(PredefinedPerformanceParameter, NewestVBIOS, 40);

PIN(LogModes, GPUTUNE_LOG_NONE == 0 && GPUTUNE_LOG_STDOUT == 1 && GPUTUNE_LOG_FILE == 2 && GPUTUNE_LOG_BOTH == 3);
PIN(Vendors,
    GPUTUNE_VENDOR_UNKNOWN == 0 && GPUTUNE_VENDOR_AMD == 1 && GPUTUNE_VENDOR_INTEL == 2 && GPUTUNE_VENDOR_NVIDIA == 3);
PIN(ApiTypes, GPUTUNE_API_NONE == 0 && GPUTUNE_API_OVERDRIVE8 == 2 && GPUTUNE_API_OVERDRIVEN == 3 &&
                  GPUTUNE_API_IGCL == 4 && GPUTUNE_API_NVAPI == 5);
PIN(HwmKeys, GPUTUNE_HWM_GPU_CORE_CLOCK == 0 && GPUTUNE_HWM_GPU_MEMORY_CLOCK == 1 && GPUTUNE_HWM_GPU_TEMPERATURE == 2 &&
                 GPUTUNE_HWM_GPU_HOTSPOT_TEMPERATURE == 3 && GPUTUNE_HWM_GPU_MEMORY_TEMPERATURE == 4 &&
                 GPUTUNE_HWM_FAN_SPEED_PERCENT == 5 && GPUTUNE_HWM_FAN_SPEED_RPM == 6 && GPUTUNE_HWM_GPU_LOAD == 7 &&
                 GPUTUNE_HWM_MEMORY_CONTROLLER_LOAD == 8 && GPUTUNE_HWM_GPU_POWER == 9 &&
                 GPUTUNE_HWM_VDDC_POWER == 10 && GPUTUNE_HWM_VDDCI_POWER == 11 && GPUTUNE_HWM_VRM_EFFICIENCY == 12 &&
                 GPUTUNE_HWM_MEMORY_USAGE == 13 && GPUTUNE_HWM_MEMORY_USAGE_DEDICATED == 14 &&
                 GPUTUNE_HWM_MEMORY_USAGE_DYNAMIC == 15 && GPUTUNE_HWM_VDDC == 16 && GPUTUNE_HWM_CPU_USAGE == 17 &&
                 GPUTUNE_HWM_CPU_FREQUENCY == 18 && GPUTUNE_HWM_TEMPERATURE_LIMIT == 19 &&
                 GPUTUNE_HWM_TDP_LIMIT == 20 && GPUTUNE_HWM_KEY_COUNT == 21);
