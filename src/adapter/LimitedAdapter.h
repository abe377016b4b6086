// The fixed answers of a backend for what its vendor's interface does not offer: settings are refused, getters fill
// their record with zeros. Nothing is logged. A backend overrides what it has.
#pragma once

#include <cstring>

#include "adapter/IVideoAdapter.h"

namespace gputune {

class LimitedAdapter : public IVideoAdapter {
public:
    bool SetFanSpeed(int /*percent*/) override { return false; }
    bool SetFanSpeedTable(FanTablePoint const* /*table*/, int /*count*/) override { return false; }
    bool SetPowerLimit(int /*temperatureLimit*/, int /*powerLimit*/) override { return false; }
    bool SetPowerLimitDefault() override { return false; }
    bool SetPerformanceUser(int /*gpuClock*/, int /*gpuVoltage*/, int /*memClock*/, int /*memVoltage*/) override {
        return false;
    }
    bool SetPerformanceOC() override { return false; }
    bool SetPerformanceDefault() override { return false; }
    bool SetPerformanceSilent() override { return false; }

    // Every byte of the record is cleared.
    void GetFanSetting(FanSetting& setting) override { Clear(setting); }
    void GetPowerLimitSetting(PowerLimitSetting& setting) override { Clear(setting); }
    void GetGpuClockSetting(ClockSetting& setting) override { Clear(setting); }
    void GetMemClockSetting(ClockSetting& setting) override { Clear(setting); }
    void GetVGAInfo(VgaInfo& info) override { Clear(info); }

private:
    template <class Record>
    static void Clear(Record& record) {
        std::memset(&record, 0, sizeof record);
    }
};

}  // namespace gputune
