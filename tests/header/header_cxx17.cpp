// The public header alone, in C++17: it compiles, and the layouts are those that C sees.
#include "gputune.h"

#include <cstddef>
#include <type_traits>

static_assert(sizeof(HwmValue) == 272 && offsetof(HwmValue, Name) == 8 && offsetof(HwmValue, Valid) == 264);
static_assert(sizeof(VgaInfo) == 264 && offsetof(VgaInfo, BusNumber) == 260);
static_assert(sizeof(FanPoint) == 32);
static_assert(sizeof(FanSetting) == 1608 && offsetof(FanSetting, Points) == 8);
static_assert(sizeof(PowerLimitSetting) == 20);
static_assert(sizeof(ClockSetting) == 36);
static_assert(sizeof(FanTablePoint) == 8);
static_assert(sizeof(PredefinedPerformanceParameter) == 44);

template <class... Records>
constexpr bool kArePlain = ((std::is_trivially_copyable_v<Records> && std::is_standard_layout_v<Records>)&&...);
static_assert(kArePlain<HwmValue, VgaInfo, FanPoint, FanSetting, PowerLimitSetting, ClockSetting, FanTablePoint,
                        PredefinedPerformanceParameter>);

// The signatures, with which hosts declare their pointers.
template <class Function, class Expected>
constexpr bool kIs = std::is_same_v<Function*, Expected>;
static_assert(kIs<decltype(InitVGAHelper), bool(GPUTUNE_CALL*)(int)>);
static_assert(kIs<decltype(IsInitOk), bool(GPUTUNE_CALL*)()>);
static_assert(kIs<decltype(GetVendorInfo), uint64_t(GPUTUNE_CALL*)()>);
static_assert(kIs<decltype(SetActiveAdapterIndex), bool(GPUTUNE_CALL*)(int)>);
static_assert(kIs<decltype(GetActiveAdapterIndex), int(GPUTUNE_CALL*)()>);
static_assert(kIs<decltype(GetVGAInfo), VgaInfo(GPUTUNE_CALL*)()>);
static_assert(kIs<decltype(FetchHwmValues), void(GPUTUNE_CALL*)()>);
static_assert(kIs<decltype(GetHwmValue), HwmValue(GPUTUNE_CALL*)(int)>);
static_assert(kIs<decltype(GetFrameRate), int(GPUTUNE_CALL*)()>);
static_assert(kIs<decltype(SetFanSpeed), bool(GPUTUNE_CALL*)(int)>);
static_assert(kIs<decltype(SetFanSpeedTable), bool(GPUTUNE_CALL*)(FanTablePoint const*, int)>);
static_assert(kIs<decltype(GetFanSetting), FanSetting(GPUTUNE_CALL*)()>);
static_assert(kIs<decltype(SetPowerLimit), bool(GPUTUNE_CALL*)(int, int)>);
static_assert(kIs<decltype(SetPowerLimitDefault), bool(GPUTUNE_CALL*)()>);
static_assert(kIs<decltype(GetPowerLimitSetting), PowerLimitSetting(GPUTUNE_CALL*)()>);
static_assert(kIs<decltype(SetPerformanceUser), bool(GPUTUNE_CALL*)(int, int, int, int)>);
static_assert(kIs<decltype(SetPerformanceOC), bool(GPUTUNE_CALL*)()>);
static_assert(kIs<decltype(SetPerformanceDefault), bool(GPUTUNE_CALL*)()>);
static_assert(kIs<decltype(SetPerformanceSilent), bool(GPUTUNE_CALL*)()>);
static_assert(kIs<decltype(GetGpuClockSetting), ClockSetting(GPUTUNE_CALL*)()>);
static_assert(kIs<decltype(GetMemClockSetting), ClockSetting(GPUTUNE_CALL*)()>);
static_assert(kIs<decltype(GetExternalPerformanceParameter), PredefinedPerformanceParameter(GPUTUNE_CALL*)(uint32_t)>);
