// OverdriveN: performance modes.
#include "amd/OD7Helper.h"

#include "amd/single_precision.h"

namespace gputune::amd {

// The values of a predefined mode.
struct OD7Helper::Mode {
    float power;          // percent
    float gpuFactor;      // of the default engine clock
    float gpuGivenClock;  // MHz; replaces the factor unless 0
    float memFactor;      // of the default memory clock
};

bool OD7Helper::SetPerformanceOC() {
    constexpr log::Tag kTag{"[OD7Helper::SetPerformanceOC()]"};
    auto const profile = ReadProfile(kTag);
    if (!profile) {
        return false;
    }
    log::Entry(kTag, "pred_GpuClock=", profile->GpuOC, ", pred_MemClock=", profile->MemOC,
               ", pred_PowerOC=", profile->PowerOC);
    // MemOCGivenValue is not used: only the engine clock can be given outright. Deliberate.
    return ApplyMode(kTag, {.power = profile->PowerOC,
                            .gpuFactor = profile->GpuOC,
                            .gpuGivenClock = profile->GpuOCGivenValue,
                            .memFactor = profile->MemOC});
}

bool OD7Helper::SetPerformanceSilent() {
    constexpr log::Tag kTag{"[OD7Helper::SetPerformanceSilent()]"};
    auto const profile = ReadProfile(kTag);
    if (!profile) {
        return false;
    }
    log::Entry(kTag, "pred_GpuClock=", profile->GpuSilent, ", pred_MemClock=", profile->MemSilent);
    return ApplyMode(kTag, {.power = profile->PowerSilent,
                            .gpuFactor = profile->GpuSilent,
                            .gpuGivenClock = 0.0F,
                            .memFactor = profile->MemSilent});
}

bool OD7Helper::ApplyMode(log::Tag tag, Mode const& mode) {
    ADLODNPerformanceLevelX2 const* const engineTop = DefaultTopLevel(ClockKind::Engine);
    ADLODNPerformanceLevelX2 const* const memoryTop = DefaultTopLevel(ClockKind::Memory);
    if (engineTop == nullptr || memoryTop == nullptr) {
        log::Entry(tag, kNoLevel);
        return false;
    }
    int const defaultGpuClock = ToMegahertz(engineTop->iClock);
    int const defaultMemClock = ToMegahertz(memoryTop->iClock);
    int const temperatureLimit = m_Capabilities.powerTuneTemperature.iDefault;
    log::Entry(tag / "default_iGpuClock", defaultGpuClock);
    log::Entry(tag / "default_iGpuVol", engineTop->iVddc);
    log::Entry(tag / "default_iMemClock", defaultMemClock);
    log::Entry(tag / "default_iMemVol", memoryTop->iVddc);
    log::Entry(tag / "default_iTempLimit", temperatureLimit);
    log::Entry(tag / "default_iPowerLimitMax", m_Capabilities.power.iMax);
    log::Entry(tag / "default_iPowerLimitMin", m_Capabilities.power.iMin);

    float const power = ClampInto(m_Capabilities.power.iMin, m_Capabilities.power.iMax, mode.power);
    auto const powerLimit = Truncate(power);
    auto const gpuClock = Truncate(mode.gpuGivenClock != 0.0F ? mode.gpuGivenClock
                                                              : static_cast<float>(defaultGpuClock) * mode.gpuFactor);
    auto const memClock = Truncate(static_cast<float>(defaultMemClock) * mode.memFactor);
    // All or nothing: the power limit does not go out for clocks that cannot.
    if (!powerLimit || !gpuClock || !memClock || !PlanLevels(*engineTop, *gpuClock, engineTop->iVddc) ||
        !PlanLevels(*memoryTop, *memClock, memoryTop->iVddc)) {
        log::Entry(tag, kNoNumber);
        return false;
    }
    log::Entry(tag / "plan power limit", power);
    SetPowerLimit(temperatureLimit, *powerLimit);  // the clocks are set also when this fails
    log::Entry(tag, "plan GpuClock=", *gpuClock, ", GpuVol=", engineTop->iVddc, ", MemClock=", *memClock,
               ", MemVol=", memoryTop->iVddc);
    return SetPerformanceUser(*gpuClock, engineTop->iVddc, *memClock, memoryTop->iVddc);
}

bool OD7Helper::SetPerformanceDefault() {
    constexpr log::Tag kTag{"[OD7Helper::SetPerformanceDefault()]"};
    log::Entry(kTag, "begin");
    SetPowerLimitDefault();  // the clocks are reset also when this fails
    return RestoreClocks(kTag, ClockKind::Engine, m_DefaultSystemClock, "m_DefaultSystemClock",
                         "pCurrentGpuClockStruct", "set gpu clock default", "set gpu clock and voltage to default") &&
           RestoreClocks(kTag, ClockKind::Memory, m_DefaultMemoryClock, "m_DefaultMemoryClock",
                         "pCurrentMemClockStruct", "set memory clock default", "set mem clock and voltage to default");
}

bool OD7Helper::RestoreClocks(log::Tag tag, ClockKind kind, std::optional<PerformanceLevels> const& defaults,
                              std::string_view defaultsName, std::string_view currentName, std::string_view clocksSet,
                              std::string_view allSet) const {
    std::optional<PerformanceLevels> current = GetClockInfo(kind, kOdnModeCurrent);
    if (!current) {
        log::Entry(tag / currentName, "null ptr");
        return false;
    }
    if (!defaults) {
        log::Entry(tag / defaultsName, "null ptr");
        return false;
    }
    // First the clocks alone, then clocks and voltages: the lowest level and all voltages stay current in between.
    auto const levels = current->Levels();
    for (std::size_t position = 1; position < levels.size(); ++position) {
        levels[position].iClock = defaults->At(static_cast<int>(position))->iClock;
    }
    current->SetMode(kOdnModeManual);
    if (!WriteClocks(tag, kind, *current, clocksSet)) {
        return false;
    }
    // A copy: what the driver writes into the table it is given does not become the default.
    std::optional<PerformanceLevels> sent = defaults->Copy();
    if (!sent) {
        log::Entry(tag / defaultsName, "null ptr");
        return false;
    }
    return WriteClocks(tag, kind, *sent, allSet);
}

}  // namespace gputune::amd
