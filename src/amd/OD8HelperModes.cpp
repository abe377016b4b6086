// Overdrive8: clocks, performance modes and the clock settings' read-back.
#include "amd/OD8Helper.h"

#include "amd/single_precision.h"

namespace gputune::amd {

namespace {

constexpr log::Tag kUserTag{"[OD8Helper::SetPerformanceUser(int,int,int,int)]"};

}  // namespace

// The values of a predefined mode. A given clock (MHz) replaces the factor of the default clock unless it is 0.
struct OD8Helper::Mode {
    float power;  // percent
    float gpuFactor;
    float gpuGivenClock;
    float memFactor;
    float memGivenClock;
};

bool OD8Helper::SetPerformanceUser(int gpuClock, int /*gpuVoltage*/, int memClock, int /*memVoltage*/) {
    bool const needsMode = Has(kOd8HasOptimizedPowerMode) && !Has(kOd8HasGfxClockCurve);
    auto const current = CurrentSettings(kUserTag, needsMode ? kOd8OptimizedPowerMode : kOd8MemoryClockMax);
    if (!current) {
        return false;
    }
    Request request;
    // Clocks and curve go along unchanged.
    for (int setting = kOd8GfxClockMin; setting <= kOd8MemoryClockMax; ++setting) {
        request.Set(setting, current->Od8SettingTable[setting]);
    }
    if (!RequestClocks(request, *current, gpuClock, memClock)) {
        return false;
    }
    bool const set = Send(request, *current);
    log::Entry(kUserTag, set ? "ADL2_Overdrive8_Setting_Set OK" : "ADL2_Overdrive8_Setting_Set failed");
    return set;
}

// False, with the reason logged, when there is nothing to send. A memory clock is requested only where the board has
// one.
bool OD8Helper::RequestClocks(Request& request, ADLOD8CurrentSetting const& current, int gpuClock, int memClock) const {
    auto const is = [&](Od8Setting setting, int value) { return current.Od8SettingTable[setting] == value; };
    bool const hasMemory = Has(kOd8HasMemoryClock);
    bool const sameMemory = !hasMemory || is(kOd8MemoryClockMax, memClock);

    if (!Has(kOd8HasGfxClockLimits)) {
        log::Entry(kUserTag, "ADL_OD8_GFXCLK_LIMITS & ADL_OD8_GFXCLK_CURVE not supported");
        return false;
    }
    if (Has(kOd8HasGfxClockCurve)) {
        if (is(kOd8GfxClockMax, gpuClock) && is(kOd8GfxClock3, gpuClock) && sameMemory) {
            log::Entry(log::Tag{"[OD8Helper::SetPerformanceUser(int,int,int,int)]1"},
                       hasMemory ? "current gpu/mem clock are same as the given value"
                                 : "current gpu clock is same as the given value");
            return false;
        }
        request.Set(kOd8GfxClock3, gpuClock);
    } else {
        if (Has(kOd8HasOptimizedPowerMode) && !is(kOd8OptimizedPowerMode, kOd8OptimizedPowerManual)) {
            Request manual;
            manual.Set(kOd8OptimizedPowerMode, kOd8OptimizedPowerManual);
            if (!Send(manual, current)) {
                log::Entry(kUserTag, "Fail to reset Optimized Power mode to Manual");
                return false;
            }
        }
        if (is(kOd8GfxClockMax, gpuClock) && sameMemory) {
            log::Entry(log::Tag{"[OD8Helper::SetPerformanceUser(int,int,int,int)]2"},
                       hasMemory ? "current gpu/mem clock are same as the given value"
                                 : "current gpu clock are same as the given value");
            return false;
        }
    }
    request.Set(kOd8GfxClockMax, gpuClock);
    if (hasMemory) {
        request.Set(kOd8MemoryClockMax, memClock);
    }
    return true;
}

bool OD8Helper::SetPerformanceOC() {
    constexpr log::Tag kTag{"[OD8Helper::SetPerformanceOC()]"};
    auto const profile = ReadProfile(kTag);
    if (!profile) {
        return false;
    }
    return ApplyMode(kTag, {.power = profile->PowerOC,
                            .gpuFactor = profile->GpuOC,
                            .gpuGivenClock = profile->GpuOCGivenValue,
                            .memFactor = profile->MemOC,
                            .memGivenClock = profile->MemOCGivenValue});
}

bool OD8Helper::SetPerformanceSilent() {
    constexpr log::Tag kTag{"[OD8Helper::SetPerformanceSilent()]"};
    auto const profile = ReadProfile(kTag);
    if (!profile) {
        return false;
    }
    return ApplyMode(kTag, {.power = profile->PowerSilent,
                            .gpuFactor = profile->GpuSilent,
                            .gpuGivenClock = 0.0F,
                            .memFactor = profile->MemSilent,
                            .memGivenClock = 0.0F});
}

bool OD8Helper::ApplyMode(log::Tag tag, Mode const& mode) {
    if (!IsRangeRead(kOd8PowerPercentage)) {
        log::Entry(tag, "no ranges of clocks and power limit");
        return false;
    }
    int const curveTop = Range(kOd8GfxClock3).defaultValue;
    int const baseGpuClock = curveTop != 0 ? curveTop : Range(kOd8GfxClockMax).defaultValue;
    int const baseMemClock = Range(kOd8MemoryClockMax).defaultValue;

    ADLOD8SingleInitSetting const& power = Range(kOd8PowerPercentage);
    auto const powerLimit = Truncate(ClampInto(power.minValue, power.maxValue, mode.power));
    auto const plan = [](float given, int base, float factor) {
        return Truncate(given != 0.0F ? given : static_cast<float>(base) * factor);
    };
    auto const gpuClock = plan(mode.gpuGivenClock, baseGpuClock, mode.gpuFactor);
    auto const memClock = plan(mode.memGivenClock, baseMemClock, mode.memFactor);
    // All or nothing: the power limit does not go out for clocks that cannot.
    if (!powerLimit || !gpuClock || !memClock) {
        log::Entry(tag, kNoNumber);
        return false;
    }
    SetPowerLimit(0, *powerLimit);  // the clocks are set also when this fails
    log::Entry(tag, "GpuClock=", *gpuClock, ", MemClock=", *memClock);
    return SetPerformanceUser(*gpuClock, 0, *memClock, 0);
}

bool OD8Helper::SetPerformanceDefault() {
    constexpr log::Tag kTag{"[OD8Helper::SetPerformanceDefault()]"};
    log::Entry(kTag, "begin");
    ADLOD8CurrentSetting current;
    GetCurrentSetting(current);  // the reset goes out also when this fails
    Request request;
    for (int setting = 0; setting < kOd8Count; ++setting) {
        request.Reset(setting, Range(setting).defaultValue);
    }
    bool const reset = Send(request, current);
    log::Entry(kTag, reset ? "Reset all settings OK" : "Reset all settings failed");
    return reset;
}

void OD8Helper::GetGpuClockSetting(ClockSetting& setting) {
    ADLOD8CurrentSetting const current = ShownSettings();
    if (!Has(kOd8HasGfxClockLimits)) {
        setting.Valid = false;
        return;
    }
    bool const hasCurve = Has(kOd8HasGfxClockCurve);
    Od8Setting const clock = hasCurve ? kOd8GfxClock3 : kOd8GfxClockMax;
    Od8Setting const lowestClock = hasCurve ? kOd8GfxClock3 : kOd8GfxClockMin;
    Od8Setting const voltage = hasCurve ? kOd8GfxVoltage3 : kOd8VoltageOffset;
    setting.DefaultClock = Range(clock).defaultValue;
    setting.DefaultVoltage = Range(voltage).defaultValue;
    setting.MaxClock = Range(clock).maxValue;
    setting.MinClock = Range(lowestClock).minValue;
    setting.MaxVoltage = Range(voltage).maxValue;
    setting.MinVoltage = Range(voltage).minValue;
    setting.CurrentClock = current.Od8SettingTable[clock];
    setting.CurrentVoltage = current.Od8SettingTable[voltage];
    setting.Valid = true;
}

void OD8Helper::GetMemClockSetting(ClockSetting& setting) {
    ADLOD8CurrentSetting const current = ShownSettings();
    if (!Has(kOd8HasMemoryClock)) {
        setting.Valid = false;
        return;
    }
    setting.DefaultClock = Range(kOd8MemoryClockMax).defaultValue;
    setting.MaxClock = Range(kOd8MemoryClockMax).maxValue;
    setting.MinClock = Range(kOd8MemoryClockMax).minValue;
    setting.CurrentClock = current.Od8SettingTable[kOd8MemoryClockMax];
    setting.DefaultVoltage = kNotAvailable;
    setting.MaxVoltage = kNotAvailable;
    setting.MinVoltage = kNotAvailable;
    setting.CurrentVoltage = kNotAvailable;
    setting.Valid = true;
}

}  // namespace gputune::amd
