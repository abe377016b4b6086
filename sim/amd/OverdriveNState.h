// The OverdriveN (and Overdrive 5 fan) side of one adapter: what is set in the driver, and the answers to its entry
// points. Every operation returns the vendor's result code and changes nothing when that is not 0.
#pragma once

#include <optional>
#include <vector>

#include "amd/adl_records.h"
#include "sim/board/Board.h"
#include "sim/model/ThermalModel.h"

namespace gputune::sim {

class OverdriveNState {
public:
    // The description must outlive the state.
    explicit OverdriveNState(OverdriveN const& description);

    // What the settings in force ask of the board.
    Controls ModelControls() const;

    int GetCapabilities(amd::ADLODNCapabilitiesX2& out) const;

    // The table's levels follow its head, as many as the head says.
    int GetEngineClocks(amd::ADLODNPerformanceLevelsX2& table) const;
    int GetMemoryClocks(amd::ADLODNPerformanceLevelsX2& table) const;
    int SetEngineClocks(amd::ADLODNPerformanceLevelsX2 const& table);
    int SetMemoryClocks(amd::ADLODNPerformanceLevelsX2 const& table);

    int GetFan(amd::ADLODNFanControl& fan, Readings const& readings) const;
    int SetFan(amd::ADLODNFanControl const& fan);
    int GetPowerLimit(amd::ADLODNPowerLimitSetting& limit) const;
    int SetPowerLimit(amd::ADLODNPowerLimitSetting const& limit);
    int GetTemperature(int type, int& value, Readings const& readings) const;
    int GetStatus(amd::ADLODNPerformanceStatus& out, Readings const& readings) const;

    int EnumerateController(int index, amd::ADLThermalControllerInfo& out) const;
    int GetFanSpeed(int controller, amd::ADLFanSpeedValue& value, Readings const& readings) const;
    int SetFanSpeed(int controller, amd::ADLFanSpeedValue const& value);
    int ResetFanSpeed(int controller);

private:
    struct Fan {
        int mode = amd::kOdnModeAutomatic;
        int targetSpeed = 0;        // RPM
        int targetTemperature = 0;  // degrees Celsius
        int minimumSpeed = 0;       // RPM
    };

    bool Fits(amd::ADLODNPerformanceLevelsX2 const& table) const;
    int GetClocks(amd::ADLODNPerformanceLevelsX2& table, std::vector<Level> const& current,
                  std::vector<Level> const& defaults) const;
    int SetClocks(amd::ADLODNPerformanceLevelsX2 const& table, Range const& clocks, std::vector<Level>& current,
                  std::vector<Level> const& defaults) const;
    // 0, or why the controller has no fan to be had.
    int ControllerResult(int controller) const;
    Fan DefaultFan() const;

    OverdriveN const& description_;
    std::vector<Level> defaultEngine_, defaultMemory_;  // levelCount each, the last ones zero
    std::vector<Level> engine_, memory_;                // in force
    Fan fan_;
    std::optional<int> userPercent_;  // by the Overdrive 5 entry points
    int powerLimit_ = 0;              // percent
    int temperatureLimit_ = 0;        // degrees Celsius
};

}  // namespace gputune::sim
