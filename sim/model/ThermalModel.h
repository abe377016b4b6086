// How a board's readings move: load, clocks, power, temperature and fan, each following its cause with a first-order
// lag. Deterministic: the same settings, controls and times give the same readings.
#pragma once

#include <array>
#include <iterator>
#include <optional>
#include <vector>

#include "sim/model/ModelSettings.h"

namespace gputune::sim {

struct FanCurvePoint {
    double temperature = 0;  // degrees Celsius
    double percent = 0;

    template <class Archive>
    void Exchange(Archive& archive) {
        archive(temperature, percent);
    }
};

// The settings of the driver, in the terms of the model.
struct Controls {
    double idleEngineClock = 300;      // MHz
    double defaultEngineClock = 1340;  // MHz; the clock at which power is what the settings say
    double engineClock = 1340;         // MHz under load when nothing limits it
    double idleMemoryClock = 300;      // MHz
    double memoryClock = 2000;         // MHz under load
    double idleVoltage = 750;          // mV
    double voltage = 1150;             // mV under load
    double powerLimit = 1;             // relative to the default
    double temperatureLimit = 90;      // degrees Celsius; clocks go down near it
    std::optional<double> fanPercent;  // a fixed speed; without it, the curve decides
    std::vector<FanCurvePoint> fanCurve = {{40, 20}, {60, 35}, {75, 60}, {90, 100}};  // rising temperatures
    bool zeroRpm = false;  // the fan stands still below the curve's first temperature
};

class ThermalModel {
public:
    // Starts at time 0, idle and settled.
    ThermalModel(ModelSettings settings, Controls controls);

    // Moves on to a time in seconds since the start. A time in the past changes nothing. Of a longer time than a day,
    // the last day counts.
    void AdvanceTo(double seconds);

    // They hold from the present time on.
    void SetControls(Controls controls) { controls_ = std::move(controls); }

    Readings Read() const;

    // From now on, one of kStuckQuantities keeps its present value, whatever the board does; or it no longer does.
    void SetStuck(std::size_t quantity, bool stuck);

    // What moves: the readings' causes and the time, not settings and controls.
    template <class Archive>
    void Exchange(Archive& archive) {
        archive(now_, load_, temperature_, fan_, memoryUsed_, energy_, activity_, stuck_);
    }

private:
    void Step(double seconds);
    double ProfileLoad() const;
    double FanTarget() const;
    double EngineClock() const;
    double Power() const;
    Readings Moving() const;

    ModelSettings settings_;
    Controls controls_;
    double now_ = 0;
    double load_ = 0;         // 0 to 1
    double temperature_ = 0;  // degrees Celsius
    double fan_ = 0;          // percent
    double memoryUsed_ = 0;   // MB
    double energy_ = 0;       // J
    double activity_ = 0;     // seconds of full load
    std::array<std::optional<double>, std::size(kStuckQuantities)> stuck_;
};

}  // namespace gputune::sim
