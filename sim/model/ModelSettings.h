// The settings of a board's thermal model, and its readings. Plain data.
#pragma once

#include <optional>
#include <vector>

namespace gputune::sim {

// The values of all of a board's sensors at one moment.
struct Readings {
    double load = 0;                // percent
    double engineClock = 0;         // MHz
    double memoryClock = 0;         // MHz
    double voltage = 0;             // mV
    double temperature = 0;         // degrees Celsius
    double hotspotTemperature = 0;  // degrees Celsius
    double memoryTemperature = 0;   // degrees Celsius
    double fanRpm = 0;
    double fanPercent = 0;
    double power = 0;       // W
    double memoryUsed = 0;  // MB
    double framesPerSecond = 0;
    double energy = 0;    // J since the start
    double activity = 0;  // seconds of full load since the start
    // The value of the Overdrive 5 fan entry point, when it differs from fanRpm.
    std::optional<double> olderFanRpm;
};

// One of the readings; null stands for none.
using Quantity = double Readings::*;

// The readings that can be stuck.
constexpr Quantity kStuckQuantities[] = {&Readings::temperature, &Readings::hotspotTemperature,
                                         &Readings::memoryTemperature, &Readings::load, &Readings::fanRpm};

// One step of the load profile, which starts again after its last step.
struct LoadStep {
    double seconds = 0;
    double percent = 0;
};

struct ModelSettings {
    // When set, every reading is constant and the rest of this record is ignored.
    std::optional<Readings> fixed{};

    double ambientTemperature = 24;  // degrees Celsius
    std::vector<LoadStep> load = {{8, 5}, {45, 98}, {15, 60}, {30, 100}, {20, 10}};
    // The temperature above ambient at the default power limit and half the fan speed, in kelvin.
    double fullLoadRise = 52;
    // What full load at default clocks would draw, as a multiple of what the default power limit allows.
    double powerDemand = 1.15;
    double boardPower = 185;     // W at the default power limit
    double hotspotOffset = 11;   // kelvin at full load
    double memoryOffset = 6;     // likewise
    double fanMaximum = 3300;    // RPM
    double framesPerSecond = 0;  // at full load and default clocks
    double memoryIdle = 600;     // MB in use without load
    double memoryLoaded = 4000;  // MB in use at full load

    // Time constants of the first-order lags, in seconds.
    double temperatureSeconds = 18;
    double fanSeconds = 2.5;
    double loadSeconds = 1.5;
    double memorySeconds = 4;
};

}  // namespace gputune::sim
