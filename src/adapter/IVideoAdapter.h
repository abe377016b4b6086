// The one interface behind which every vendor's backend stands. The exported functions hold exactly one object of it
// and forward each call to one operation, unchanged.
//
// Common promises
//  - bool results: true is success. A failing operation has logged its reason and leaves what it did not reach as it
//    was; what the vendor library had already accepted stays in force.
//  - Records are written into the caller's storage. An implementation writes only the fields it promises; the others
//  keep
//    what the storage held before.
//  - Nothing is thrown, but for allocation failures and the conversion errors of identifiers (records/hex_long.h).
//  - One caller at a time; nothing is locked.
//
// The order of the operations is fixed.
#pragma once

#include <cstdint>

#include "adapter/HwmValueTable.h"
#include "records/records.h"

namespace gputune {

class IVideoAdapter {
public:
    // 0. Releases what the backend holds of its vendor library.
    virtual ~IVideoAdapter() = default;

    // 1. The backend found and opened a usable adapter.
    virtual bool IsInitOk() const = 0;

    // 2. Choose which of the vendor's adapters later calls act on, in the vendor's numbering. False when there is no
    //    such adapter. Does not read ranges and defaults again.
    virtual bool SetActiveAdapterIndex(int index) = 0;

    // 3. The adapter chosen; -1 when there is none.
    virtual int GetActiveAdapterIndex() const = 0;

    // 4. Fixed fan duty in percent; negative returns the fan to automatic control.
    virtual bool SetFanSpeed(int percent) = 0;

    // 5. Fan curve: `count` points at `table`, which may be null and is only read during the call.
    virtual bool SetFanSpeedTable(FanTablePoint const* table, int count) = 0;

    // 6. Temperature limit (degrees Celsius) and power limit (percent relative to the default).
    virtual bool SetPowerLimit(int temperatureLimit, int powerLimit) = 0;

    // 7. Restore the default power limit.
    virtual bool SetPowerLimitDefault() = 0;

    // 8. User clocks (MHz) and voltages (mV).
    virtual bool SetPerformanceUser(int gpuClock, int gpuVoltage, int memClock, int memVoltage) = 0;

    // 9. Apply the predefined overclock profile of the board.
    virtual bool SetPerformanceOC() = 0;

    // 10. Restore the default clocks.
    virtual bool SetPerformanceDefault() = 0;

    // 11. Apply the predefined silent profile of the board.
    virtual bool SetPerformanceSilent() = 0;

    // 12. Read all sensors once into HwmValues().
    virtual void FetchHwmValues() = 0;

    // 13. Fan capabilities and current values.
    virtual void GetFanSetting(FanSetting& setting) = 0;

    // 14. Power limit range and current value.
    virtual void GetPowerLimitSetting(PowerLimitSetting& setting) = 0;

    // 15. GPU clock and voltage, ranges and current values.
    virtual void GetGpuClockSetting(ClockSetting& setting) = 0;

    // 16. Memory clock, range and current value.
    virtual void GetMemClockSetting(ClockSetting& setting) = 0;

    // 17. Identity of the active adapter.
    virtual void GetVGAInfo(VgaInfo& info) = 0;

    // 18. Frames per second, -1 when not available, as it is on every backend but one.
    virtual int GetFrameRate() { return kNotAvailable; }

    // The profile for a board identifier, the same for every backend (profile/).
    PredefinedPerformanceParameter GetExternalPerformanceParameter(std::uint32_t hwid) const;

    // The readings of the last FetchHwmValues. An entry is never reset: what a later fetch does not produce keeps its
    // last value.
    HwmValueTable& HwmValues() { return hwmValues_; }

    IVideoAdapter(IVideoAdapter const&) = delete;
    IVideoAdapter& operator=(IVideoAdapter const&) = delete;

protected:
    IVideoAdapter() = default;

private:
    HwmValueTable hwmValues_;
};

}  // namespace gputune
