// OverdriveN: clocks and voltages, set and read.
#include "amd/OD7Helper.h"

#include "amd/single_precision.h"

namespace gputune::amd {

namespace {

constexpr int kUnitsPerMegahertz = 100;  // ADL counts clocks in 10 kHz

float Ratio(int wanted, int standard) {
    return standard == 0 ? 0.0F : static_cast<float>(wanted) / static_cast<float>(standard);
}

// `wanted`, computed from the ratio in single precision, which may give one unit less: deliberate. Without a default
// there is no ratio, and `wanted` is taken as it is.
float Scale(int standard, float ratio, int wanted) {
    return standard == 0 ? static_cast<float>(wanted) : static_cast<float>(standard) * ratio;
}

}  // namespace

std::optional<PerformanceLevels> OD7Helper::GetClockInfo(ClockKind kind, int mode) const {
    constexpr log::Tag kTag{"[OD7Helper::GetClockInfo(obj)]"};
    constexpr auto kEngine = &AdlFunctions::ADL2_OverdriveN_SystemClocksX2_Get;
    constexpr auto kMemory = &AdlFunctions::ADL2_OverdriveN_MemoryClocksX2_Get;

    log::Entry(kTag, "begin");
    // Both, whichever kind is asked for: deliberate.
    if (!m_Adl.Has(kEngine) || !m_Adl.Has(kMemory)) {
        log::Entry(log::Tag{"[OD7Helper::GetClockInfo()] !ADL2_OverdriveN_SystemClocksX2_Get || "
                            "!ADL2_OverdriveN_MemoryClocksX2_Get"},
                   "null ptr");
        return std::nullopt;
    }
    auto levels = PerformanceLevels::Create(m_Capabilities.iMaximumNumberOfPerformanceLevels, mode);
    if (!levels) {
        log::Entry(kTag, "no table for number of levels: ", m_Capabilities.iMaximumNumberOfPerformanceLevels);
        return std::nullopt;
    }
    bool const read = kind == ClockKind::Engine ? m_Adl.Call(kTag, kEngine, levels->Record())
                                                : m_Adl.Call(kTag, kMemory, levels->Record());
    if (!read) {
        return std::nullopt;
    }
    log::Entry(kTag, "get ok");
    return levels;
}

// The two kinds of clock are set alike, in different words.
struct OD7Helper::ClockWords {
    log::Tag method;
    std::string_view clockIsZero;
    std::string_view voltageIsZero;
    std::string_view clockRatio;
    std::string_view voltageRatio;
    std::string_view planClock;
    std::string_view planVoltage;
    int enabled;  // what the enabled field of a changed level becomes
};

bool OD7Helper::SetPerformanceUser(int gpuClock, int gpuVoltage, int memClock, int memVoltage) {
    // The tag names a boolean parameter that this adapter does not have: deliberate.
    log::Entry(log::Tag{"[OD7Helper::SetPerformanceUser(int,int,int,int,bool)]"}, "begin");
    return SetGpuClock(gpuClock, gpuVoltage) && SetMemoryClock(memClock, memVoltage);
}

bool OD7Helper::SetGpuClock(int clock, int voltage) {
    constexpr ClockWords kWords{.method = {"[OD7Helper::SetGpuClock(int,int)]"},
                                .clockIsZero = "iGpuClock == 0",
                                .voltageIsZero = "iGpuVoltage == 0",
                                .clockRatio = "fGpuOCRatio",
                                .voltageRatio = "fGpuOVRatio",
                                .planClock = "plan gpu clock: ",
                                .planVoltage = ", gpu voltage: ",
                                .enabled = 3};
    return SetClock(ClockKind::Engine, kWords, clock, voltage);
}

bool OD7Helper::SetMemoryClock(int clock, int voltage) {
    // Enabled differs from the engine's on purpose.
    constexpr ClockWords kWords{.method = {"[OD7Helper::SetMemoryClock(int,int)]"},
                                .clockIsZero = "iMemClock == 0",
                                .voltageIsZero = "iMemVoltage == 0",
                                .clockRatio = "fMemOCRatio",
                                .voltageRatio = "fMemOVRatio",
                                .planClock = "plan mem clock: ",
                                .planVoltage = ", mem voltage: ",
                                .enabled = 1};
    return SetClock(ClockKind::Memory, kWords, clock, voltage);
}

bool OD7Helper::SetClock(ClockKind kind, ClockWords const& words, int clock, int voltage) {
    log::Tag const tag = words.method;
    log::Entry(tag, "begin");

    std::optional<PerformanceLevels> levels = GetClockInfo(kind, kOdnModeCurrent);
    if (!levels) {
        return false;
    }
    ADLODNPerformanceLevelX2 const* const currentTop = levels->At(TopPosition(kind));
    ADLODNPerformanceLevelX2 const* const defaultTop = DefaultTopLevel(kind);
    if (currentTop == nullptr || defaultTop == nullptr) {
        log::Entry(tag, kNoLevel);
        return false;
    }
    if (clock == 0) {
        clock = ToMegahertz(currentTop->iClock);
        log::Entry(tag / words.clockIsZero, "use current: ", clock);
    }
    if (voltage == 0) {
        voltage = currentTop->iVddc;
        log::Entry(tag / words.voltageIsZero, "use current: ", voltage);
    }

    std::optional<LevelPlan> const plan = PlanLevels(*defaultTop, clock, voltage);
    if (!plan) {
        log::Entry(tag, "clock or voltage out of range");
        return false;
    }
    auto const all = levels->Levels();
    for (std::size_t position = 1; position < all.size(); ++position) {  // the lowest level is never changed
        ADLODNPerformanceLevelX2& level = all[position];
        if (level.iClock != 0) {
            level.iClock = plan->clock;
            level.iVddc = plan->voltage;
            level.iEnabled = words.enabled;
        }
    }
    levels->SetMode(kOdnModeManual);

    log::Entry(tag / "nDefaultClock", ToMegahertz(defaultTop->iClock));
    log::Entry(tag / "nDefaultVoltage", defaultTop->iVddc);
    log::Entry(tag / words.clockRatio, plan->clockRatio);
    log::Entry(tag / words.voltageRatio, plan->voltageRatio);
    log::Entry(tag, words.planClock, plan->clock, words.planVoltage, plan->voltage);
    return WriteClocks(tag, kind, *levels, "set");
}

bool OD7Helper::WriteClocks(log::Tag method, ClockKind kind, PerformanceLevels& levels,
                            std::string_view success) const {
    return kind == ClockKind::Engine
               ? m_Adl.Set(method, success, &AdlFunctions::ADL2_OverdriveN_SystemClocksX2_Set, levels.Record())
               : m_Adl.Set(method, success, &AdlFunctions::ADL2_OverdriveN_MemoryClocksX2_Set, levels.Record());
}

int OD7Helper::ToMegahertz(int clock) {
    return static_cast<int>(static_cast<float>(clock) / kUnitsPerMegahertz);
}

std::optional<OD7Helper::LevelPlan> OD7Helper::PlanLevels(ADLODNPerformanceLevelX2 const& standard, int clock,
                                                          int voltage) {
    int const standardClock = ToMegahertz(standard.iClock);
    float const clockRatio = Ratio(clock, standardClock);
    float const voltageRatio = Ratio(voltage, standard.iVddc);
    auto const planClock = Truncate(Scale(standardClock, clockRatio, clock) * kUnitsPerMegahertz);
    auto const planVoltage = Truncate(Scale(standard.iVddc, voltageRatio, voltage));
    if (!planClock || !planVoltage) {
        return std::nullopt;
    }
    return LevelPlan{clockRatio, voltageRatio, *planClock, *planVoltage};
}

int OD7Helper::TopPosition(ClockKind kind) const {
    return (kind == ClockKind::Engine ? m_MaxGpuLevels : m_MaxMemLevels) - 1;
}

ADLODNPerformanceLevelX2 const* OD7Helper::DefaultTopLevel(ClockKind kind) const {
    auto const& defaults = kind == ClockKind::Engine ? m_DefaultSystemClock : m_DefaultMemoryClock;
    return defaults ? defaults->At(TopPosition(kind)) : nullptr;
}

void OD7Helper::GetGpuClockSetting(ClockSetting& setting) {
    ADLODNParameterRange const& clock = m_Capabilities.sEngineClockRange;
    ADLODNParameterRange const& voltage = m_Capabilities.svddcRange;

    setting.Valid = true;
    std::optional<PerformanceLevels> const current = GetClockInfo(ClockKind::Engine, kOdnModeCurrent);
    setting.DefaultClock = clock.iDefault / kUnitsPerMegahertz;
    setting.DefaultVoltage = voltage.iDefault;
    setting.MaxClock = clock.iMax / kUnitsPerMegahertz;
    setting.MinClock = clock.iMin / kUnitsPerMegahertz;
    setting.MaxVoltage = voltage.iMax;
    setting.MinVoltage = voltage.iMin;
    ADLODNPerformanceLevelX2 const* const top = current ? current->At(TopPosition(ClockKind::Engine)) : nullptr;
    setting.CurrentClock = top != nullptr ? top->iClock / kUnitsPerMegahertz : kNotAvailable;
    setting.CurrentVoltage = top != nullptr ? top->iVddc : kNotAvailable;

    // For diagnosis only: the two places where the default voltage stands.
    std::optional<PerformanceLevels> const defaults = GetClockInfo(ClockKind::Engine, kOdnModeDefault);
    log::Entry(log::Tag{"vddc default"}, voltage.iDefault);
    ADLODNPerformanceLevelX2 const* const defaultTop =
        defaults ? defaults->At(TopPosition(ClockKind::Engine)) : nullptr;
    log::Entry(log::Tag{"vddc perfapi"}, defaultTop != nullptr ? defaultTop->iVddc : kNotAvailable);
}

void OD7Helper::GetMemClockSetting(ClockSetting& setting) {
    ADLODNParameterRange const& clock = m_Capabilities.sMemoryClockRange;

    setting.Valid = true;
    setting.DefaultClock = clock.iDefault / kUnitsPerMegahertz;
    setting.MaxClock = clock.iMax / kUnitsPerMegahertz;
    setting.MinClock = clock.iMin / kUnitsPerMegahertz;
    setting.DefaultVoltage = kNotAvailable;
    setting.MaxVoltage = kNotAvailable;
    setting.MinVoltage = kNotAvailable;
    setting.CurrentVoltage = kNotAvailable;
    // The engine's level count indexes the memory table: deliberate.
    std::optional<PerformanceLevels> const current = GetClockInfo(ClockKind::Memory, kOdnModeCurrent);
    ADLODNPerformanceLevelX2 const* const top = current ? current->At(TopPosition(ClockKind::Engine)) : nullptr;
    setting.CurrentClock = top != nullptr ? top->iClock / kUnitsPerMegahertz : kNotAvailable;
}

}  // namespace gputune::amd
