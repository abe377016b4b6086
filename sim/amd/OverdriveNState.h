// The OverdriveN part of one adapter, with its Overdrive 5 fan: the present settings, and the operations behind the
// entry points. Every operation returns the vendor's result code and changes nothing when that is not 0.
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

    // The present settings, in the terms of the model.
    Controls ModelControls() const;

    // Back to the defaults, as when the driver starts anew; without the fan's settings, or with them.
    void Forget(bool fanToo);
    bool FanIsAutomatic() const { return fan_.mode == amd::kOdnModeAutomatic && !userPercent_; }

    // The present settings.
    template <class Archive>
    void Exchange(Archive& archive) {
        archive(engine_, memory_, fan_, userPercent_, powerLimit_, temperatureLimit_);
    }

    int GetCapabilities(amd::ADLODNCapabilitiesX2& out) const;

    // The levels follow the head in memory, as many as the head says.
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

        template <class Archive>
        void Exchange(Archive& archive) {
            archive(mode, targetSpeed, targetTemperature, minimumSpeed);
        }
    };

    bool Fits(amd::ADLODNPerformanceLevelsX2 const& table) const;
    int GetClocks(amd::ADLODNPerformanceLevelsX2& table, std::vector<Level> const& current,
                  std::vector<Level> const& defaults) const;
    int SetClocks(amd::ADLODNPerformanceLevelsX2 const& table, Range const& clocks, std::vector<Level>& current,
                  std::vector<Level> const& defaults) const;
    // 0, or the result for a controller without a fan that can be set.
    int ControllerResult(int controller) const;
    Fan DefaultFan() const;

    OverdriveN const& description_;
    std::vector<Level> defaultEngine_,
        defaultMemory_;                   // levelCount each; those that the board file leaves out are zero
    std::vector<Level> engine_, memory_;  // at present
    Fan fan_;
    std::optional<int> userPercent_;  // set by the Overdrive 5 entry points
    int powerLimit_ = 0;              // percent
    int temperatureLimit_ = 0;        // degrees Celsius
};

}  // namespace gputune::sim
