// The adapter for AMD boards of the Overdrive8 generation (the driver reports Overdrive version 8).
#pragma once

#include <optional>

#include "amd/AmdAdapter.h"
#include "amd/od8_settings.h"

namespace gputune::amd {

class OD8Helper final : public AmdAdapter {
public:
    // Captures capabilities and ranges of the adapter that is current now; they are not read again when another one is
    // selected. A board that does not answer leaves a table of zeros.
    explicit OD8Helper(ADL& adl);

    bool IsInitOk() const override;

    // A setting is built on the current settings. Where these cannot be read, the operations answer false and send
    // nothing, except SetFanSpeed with a negative value and SetPerformanceDefault, which use none of them.

    // Makes the fan curve flat at `percent`, with zero-RPM mode off; negative restores the default fan control.
    bool SetFanSpeed(int percent) override;

    // Exactly five points are read from `table`, whatever `count` beyond 1.
    bool SetFanSpeedTable(FanTablePoint const* table, int count) override;

    // The temperature is ignored; the driver judges the percentage. True without a driver call when it is in effect.
    bool SetPowerLimit(int temperatureLimit, int powerLimit) override;
    bool SetPowerLimitDefault() override;

    // The voltages are ignored. Clocks that are in effect already answer false.
    bool SetPerformanceUser(int gpuClock, int gpuVoltage, int memClock, int memVoltage) override;
    bool SetPerformanceOC() override;
    bool SetPerformanceDefault() override;
    bool SetPerformanceSilent() override;

    void FetchHwmValues() override;

    // Each writes the one byte of Valid and the fields it has values for; -1 for what is in effect and cannot be read.
    void GetFanSetting(FanSetting& setting) override;
    void GetPowerLimitSetting(PowerLimitSetting& setting) override;
    void GetGpuClockSetting(ClockSetting& setting) override;
    void GetMemClockSetting(ClockSetting& setting) override;

    // What the driver measures on the first display that can be opened, if its frame metrics are running.
    int GetFrameRate() override;

private:
    // A list of settings to change in one driver call. What is not requested stays as it is.
    class Request {
    public:
        Request() { m_Record.count = kOd8Count; }

        void Set(int setting, int value) {
            m_Record.od8SettingTable[setting] = {.value = value, .requested = 1, .reset = 0};
        }

        // Ask the driver to restore its default; the value goes along.
        void Reset(int setting, int defaultValue) {
            m_Record.od8SettingTable[setting] = {.value = defaultValue, .requested = 1, .reset = 1};
        }

        // The block as ADL takes it.
        ADLOD8SetSetting* Record() { return &m_Record; }

    private:
        ADLOD8SetSetting m_Record{};
    };
    struct Mode;

    // The readers of the setting tables. `count` becomes the number of settings that were read, the others are zero.
    // True also when the library has neither entry point: a full table of zeros. A failure leaves the same behind.
    bool GetInitSetting(ADLOD8InitSetting& out) const;
    bool GetCurrentSetting(ADLOD8CurrentSetting& out) const;
    template <class Record, class Setting, class Newer, class Older, class... Arguments>
    bool ReadSettings(log::Tag tag, Record& out, Setting (&table)[kOd8Count], Newer newer, Older older,
                      Arguments... arguments) const;

    // The current settings, to build a setting on them. Nothing when they cannot be read up to the setting `last`,
    // which is logged.
    std::optional<ADLOD8CurrentSetting> CurrentSettings(log::Tag tag, int last) const;

    // The current settings to show; -1 where they cannot be read.
    ADLOD8CurrentSetting ShownSettings() const;

    // True when the driver accepts the request. It writes its answer, which is not looked at, over a copy of `answer`.
    bool Send(Request& request, ADLOD8CurrentSetting answer) const;

    void ListUnsupportedFeatures() const;
    void PrintLogDataCapabilities() const;
    bool QueryPmLog(log::Tag tag, ADLPMLogDataOutput& output) const;
    int ReadMemoryUsage() const;

    enum class ManualMode { Set, Refused, Unreadable };
    ManualMode SetOptimizedPowerToManualMode() const;
    bool SetFanToDefault() const;
    bool RequestClocks(Request& request, ADLOD8CurrentSetting const& current, int gpuClock, int memClock) const;
    bool ApplyMode(log::Tag tag, Mode const& mode);

    bool Has(Od8Flag flag) const { return (m_InitSetting.overdrive8Capabilities & flag) != 0; }
    ADLOD8SingleInitSetting const& Range(int setting) const;
    bool IsRangeRead(int setting) const { return setting < m_InitSetting.count; }
    // The curve, and the range that its speeds are held to.
    bool HasFanCurve() const { return Has(kOd8HasFanCurve) && IsRangeRead(Od8FanSpeed(0)); }

    ADLOD8InitSetting m_InitSetting{};
};

}  // namespace gputune::amd
