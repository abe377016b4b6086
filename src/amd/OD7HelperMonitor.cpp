// OverdriveN: monitored values.
#include "amd/OD7Helper.h"

namespace gputune::amd {

namespace {

constexpr log::Tag kTag{"[OD7Helper::FetchHwmValues()]"};

// A fan reading that stays exactly the same for too long counts as stuck and reads as 0. Kept for the
// process, not for one adapter object.
struct StuckFanReading {
    static constexpr int kTolerated = 7;

    int lastSpeed = 0;
    int repeats = 0;

    int Filter(int speed) {
        if (speed != lastSpeed) {
            lastSpeed = speed;
            repeats = 0;
            return speed;
        }
        if (++repeats > kTolerated) {
            repeats = kTolerated + 1;
            return 0;
        }
        return speed;
    }
};
constinit StuckFanReading g_stuckFanReading;

}  // namespace

void OD7Helper::FetchHwmValues() {
    log::Entry(kTag, "begin");
    FetchPerformanceStatus();
    FetchFanSpeed();
    FetchMemoryUsage();
    FetchTemperature();
    FetchLimits();
}

void OD7Helper::FetchPerformanceStatus() {
    ADLODNPerformanceStatus status{};
    if (m_Adl.Call(kTag, &AdlFunctions::ADL2_OverdriveN_PerformanceStatus_Get, &status)) {
        HwmValues().Store(GPUTUNE_HWM_GPU_CORE_CLOCK, static_cast<float>(status.iCoreClock) / 100.0F);
        HwmValues().Store(GPUTUNE_HWM_GPU_MEMORY_CLOCK, static_cast<float>(status.iMemoryClock) / 100.0F);
        HwmValues().Store(GPUTUNE_HWM_GPU_LOAD, status.iGPUActivityPercent);
    }
}

void OD7Helper::FetchFanSpeed() {
    // When the OverdriveN reading fails or is 0, the Overdrive 5 reading is taken.
    int speed = 0;
    ADLODNFanControl control{};
    if (m_Adl.Call(kTag, &AdlFunctions::ADL2_OverdriveN_FanControl_Get, &control)) {
        speed = g_stuckFanReading.Filter(control.iCurrentFanSpeed);
        HwmValues().Store(GPUTUNE_HWM_FAN_SPEED_RPM, speed);
    }
    if (speed == 0) {
        constexpr int kFirstThermalController = 0;
        ADLFanSpeedValue value{
            .iSize = sizeof(ADLFanSpeedValue), .iSpeedType = kFanSpeedTypeRpm, .iFanSpeed = 0, .iFlags = 0};
        if (m_Adl.Call(kTag, &AdlFunctions::ADL2_Overdrive5_FanSpeed_Get, kFirstThermalController, &value)) {
            HwmValues().Store(GPUTUNE_HWM_FAN_SPEED_RPM, value.iFanSpeed);
        }
    }
}

void OD7Helper::FetchMemoryUsage() {
    int megabytes = 0;
    if (m_Adl.Call(kTag, &AdlFunctions::ADL2_Adapter_VRAMUsage_Get, &megabytes)) {
        HwmValues().Store(GPUTUNE_HWM_MEMORY_USAGE, megabytes);
    }
}

void OD7Helper::FetchTemperature() {
    int millidegrees = 0;
    if (m_Adl.Call(kTag, &AdlFunctions::ADL2_OverdriveN_Temperature_Get, kOdnTemperatureType, &millidegrees)) {
        HwmValues().Store(GPUTUNE_HWM_GPU_TEMPERATURE, static_cast<float>(millidegrees) / 1000.0F);
    }
}

void OD7Helper::FetchLimits() {
    ADLODNPowerLimitSetting power{};
    if (m_Adl.Call(kTag, &AdlFunctions::ADL2_OverdriveN_PowerLimit_Get, &power)) {
        HwmValues().Store(GPUTUNE_HWM_TEMPERATURE_LIMIT, power.iMaxOperatingTemperature);
        HwmValues().Store(GPUTUNE_HWM_TDP_LIMIT, power.iTDPLimit);
    }
}

}  // namespace gputune::amd
