// The adapter for AMD boards of the OverdriveN generation (the driver reports Overdrive version 7).
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "amd/AmdAdapter.h"
#include "amd/PerformanceLevels.h"

namespace gputune::amd {

class OD7Helper final : public AmdAdapter {
public:
    // Reads the capabilities, default clock tables and thermal controllers of the adapter that is current now; they
    // are not read again when another one is selected. IsInitOk tells the outcome.
    explicit OD7Helper(ADL& adl);

    bool IsInitOk() const override;

    // The Overdrive 5 way first, for every GPU thermal controller; the OverdriveN way only when that fails entirely.
    // The latter commands a share of the highest fan speed, at least 1 RPM, and refuses where none was read.
    bool SetFanSpeed(int percent) override;

    // Not offered by this generation: always false.
    bool SetFanSpeedTable(FanTablePoint const* table, int count) override;

    // Refused without any driver call when a value lies outside the board's range, or when no range was read.
    bool SetPowerLimit(int temperatureLimit, int powerLimit) override;
    bool SetPowerLimitDefault() override;

    // 0 keeps the current value. The memory clock is not touched when the engine clock fails.
    bool SetPerformanceUser(int gpuClock, int gpuVoltage, int memClock, int memVoltage) override;
    bool SetPerformanceOC() override;
    bool SetPerformanceDefault() override;
    bool SetPerformanceSilent() override;

    void FetchHwmValues() override;

    // Writes Valid and PointCount only.
    void GetFanSetting(FanSetting& setting) override;
    void GetPowerLimitSetting(PowerLimitSetting& setting) override;
    void GetGpuClockSetting(ClockSetting& setting) override;
    void GetMemClockSetting(ClockSetting& setting) override;

private:
    enum class ClockKind { Engine, Memory };
    struct ClockWords;
    struct Mode;

    // What every level that changes becomes, and its ratios to the default.
    struct LevelPlan {
        float clockRatio;
        float voltageRatio;
        int clock;    // 10 kHz
        int voltage;  // mV
    };

    static constexpr std::string_view kNoLevel = "no performance level";

    bool InitAdapter();
    bool ReadDefaultClocks();
    bool EnumerateThermalControllers();

    // The level table of a kind, as the mode (a kOdnMode value) selects it. Nothing on failure, which is logged.
    std::optional<PerformanceLevels> GetClockInfo(ClockKind kind, int mode) const;

    bool SetOD5FanSpeed(int percent);
    bool SetODNFanSpeed(int percent);

    void FetchPerformanceStatus();
    void FetchFanSpeed();
    void FetchMemoryUsage();
    void FetchTemperature();
    void FetchLimits();

    // MHz and mV; 0 keeps what the top level has. Every level but the lowest that has a clock gets the same values.
    bool SetGpuClock(int clock, int voltage);
    bool SetMemoryClock(int clock, int voltage);
    bool SetClock(ClockKind kind, ClockWords const& words, int clock, int voltage);
    bool WriteClocks(log::Tag method, ClockKind kind, PerformanceLevels& levels, std::string_view success) const;

    bool ApplyMode(log::Tag tag, Mode const& mode);
    bool RestoreClocks(log::Tag tag, ClockKind kind, std::optional<PerformanceLevels> const& defaults,
                       std::string_view defaultsName, std::string_view currentName, std::string_view clocksSet,
                       std::string_view allSet) const;

    static int ToMegahertz(int clock);
    // Nothing when one of the numbers does not fit.
    static std::optional<LevelPlan> PlanLevels(ADLODNPerformanceLevelX2 const& standard, int clock, int voltage);

    // The last level with a non-zero default clock: its position (-1 without one), and the default table's.
    int TopPosition(ClockKind kind) const;
    ADLODNPerformanceLevelX2 const* DefaultTopLevel(ClockKind kind) const;

    bool m_InitOk = false;
    ADLODNCapabilitiesX2 m_Capabilities{};
    bool m_HasCapabilities = false;  // they were read; else they are zero, and no limits
    std::optional<PerformanceLevels> m_DefaultSystemClock;
    std::optional<PerformanceLevels> m_DefaultMemoryClock;
    std::vector<ADLThermalControllerInfo> m_ThermalControllers;  // those of the GPU domain
    int m_MaxGpuLevels = 0;
    int m_MaxMemLevels = 0;
};

}  // namespace gputune::amd
