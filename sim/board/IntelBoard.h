// What Intel's control library says of the devices of a board, as the board file describes them. Plain data;
// docs/board-files.md tells the meaning of each entry.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "sim/model/ModelSettings.h"

namespace gputune::sim {

// The items of a telemetry record.
enum class Telemetry : std::size_t {
#define SIM_TELEMETRY(name, ...) name,
#include "sim/board/telemetry_items.inc"
    Count
};

struct TelemetryItem {
    bool supported = false;
    std::optional<double> value;  // constant; without it, the model's value
};

struct OverclockControl {
    bool supported = false;
    bool relative = false;
    int units = 0;
    double min = 0;
    double max = 0;
    double step = 0;
    double defaultValue = 0;
    std::optional<double> reference;

    // False for NaN.
    bool Contains(double value) const { return value >= min && value <= max; }
};

// Which settings are refused before the waiver is set.
enum class WaiverFor { Nothing, Offsets, Everything };

struct Overclocking {
    bool supported = false;
    WaiverFor waiver = WaiverFor::Offsets;
    OverclockControl gpuFrequencyOffset;   // MHz
    OverclockControl gpuVoltageOffset;     // mV
    OverclockControl vramFrequencyOffset;  // MHz
    OverclockControl vramVoltageOffset;    // mV
    OverclockControl powerLimit;           // W
    OverclockControl temperatureLimit;     // degrees Celsius
};

struct IntelFan {
    bool canControl = true;
    int modes = 0;
    int units = 0;
    int maxRpm = 0;
    int maxPoints = 0;
};

struct IntelDevice {
    int type = 1;  // 1: graphics
    std::string name;
    int vendorId = 0;
    int deviceId = 0;
    int revision = 0;
    int luidLow = 0;
    int luidHigh = 0;
    // Without and with load, when no offset is set.
    double idleEngineClock = 600;   // MHz
    double engineClock = 2100;      // MHz
    double idleMemoryClock = 1093;  // MHz
    double memoryClock = 2187;      // MHz
    std::vector<IntelFan> fans;
    Overclocking overclock;
    std::array<TelemetryItem, static_cast<std::size_t>(Telemetry::Count)> telemetry{};
    ModelSettings model;
};

struct IntelBoard {
    std::vector<std::optional<IntelDevice>> devices;  // without a value: a null handle
};

}  // namespace gputune::sim
