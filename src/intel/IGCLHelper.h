// The adapter for Intel boards, by way of the Intel Graphics Control Library.
#pragma once

#include <cstdint>
#include <vector>

#include "adapter/LimitedAdapter.h"
#include "intel/HandleArray.h"
#include "intel/ctl_records.h"
#include "log/DebugLog.h"

namespace gputune::intel {

// Performance modes and the getters keep their fixed answers: the interface has no identity and no ranges to read.
class IGCLHelper final : public LimitedAdapter {
public:
    // Opens the control library and lists its devices; the first graphics device becomes the active adapter, and what
    // it can do is logged. IsInitOk tells the outcome.
    IGCLHelper();

    // Closes the control library, for all its clients in this process. At the end of the process it is left alone.
    ~IGCLHelper() override;

    bool IsInitOk() const override { return isInitOk_; }

    // By the position among all devices, graphics or not; only graphics devices can be selected.
    bool SetActiveAdapterIndex(int index) override;
    int GetActiveAdapterIndex() const override { return activeAdapterIndex_; }

    // All fans, whatever the percentage: the driver judges it. False only when the fans cannot be listed.
    bool SetFanSpeed(int percent) override;

    // False when `count` is not the number of points that a fan takes, and when no fan accepted the curve.
    bool SetFanSpeedTable(FanTablePoint const* table, int count) override;

    // The temperature is ignored; the driver judges the percentage, which is relative to the default limit.
    bool SetPowerLimit(int temperatureLimit, int powerLimit) override;
    bool SetPowerLimitDefault() override;

    // Frequency offsets in MHz, 0 included; the voltages are ignored.
    bool SetPerformanceUser(int gpuClock, int gpuVoltage, int memClock, int memVoltage) override;

    // Always false: tells in the log when there is no profile, and applies none.
    bool SetPerformanceOC() override;

    void FetchHwmValues() override;

private:
    enum class Walk { Continue, Stop };

    bool OpenControlLibrary();
    bool EnumerateDevices();
    bool SelectGraphicsDevices();  // false without memory
    void CloseControlLibrary();

    // The active adapter's handle, null when there is none.
    ctl_device_adapter_handle_t Device() const;

    bool RetrieveOcProperties();
    void PrintProperties() const;

    // Call `act(position, fan, properties)` for each fan of the active adapter; false when they cannot be listed.
    template <class Act>
    bool ForEachFan(log::Tag tag, Act&& act) const;
    bool SetFanDefault();

    // Fresh readings of the active adapter. On failure the record holds whatever the library wrote.
    bool ReadOcProperties(log::Tag tag, ctl_oc_properties_t& properties) const;
    bool ReadTelemetry(log::Tag tag, ctl_power_telemetry_t& telemetry) const;

    ctl_api_handle_t api_ = nullptr;
    HandleArray<ctl_device_adapter_handle_t> hDevices_;
    std::uint32_t deviceCount_ = 0;
    std::vector<int> graphicsAdapters_;  // positions in hDevices_, in enumeration order
    int activeAdapterIndex_ = 0;         // a position in hDevices_
    ctl_oc_properties_t ocProperties_{};
    bool isInitOk_ = false;
};

// The error line: the code and its name.
void LogResult(log::Tag tag, ctl_result_t result);

// True for success; otherwise the error line is logged.
bool Succeeded(log::Tag tag, ctl_result_t result);

}  // namespace gputune::intel
