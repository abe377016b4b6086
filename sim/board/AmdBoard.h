// What AMD's library says of a board, as the board file describes it. Plain data; docs/board-files.md tells the meaning
// of each entry.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sim/model/ModelSettings.h"

namespace gputune::sim {

struct Adapter {
    int index = 0;
    std::string udid;
    std::string name;
    std::string displayName;
    int busNumber = 0;
    bool present = true;
    bool exists = true;
    bool active = true;
};

struct Range {
    int min = 0;
    int max = 0;
    int step = 0;
    int defaultValue = 0;

    bool Contains(int value) const { return value >= min && value <= max; }
};

struct Level {
    int clock = 0;    // 10 kHz
    int voltage = 0;  // mV
    int enabled = 1;
    int control = 0;

    template <class Archive>
    void Exchange(Archive& archive) {
        archive(clock, voltage, enabled, control);
    }
};

struct ThermalController {
    int domain = 1;
    int flags = 0;
    bool fan = true;  // whether its fan can be read and set
    int result = 0;   // the result of its enumeration
};

struct OverdriveN {
    int levelCount = 0;
    int flags = 0;
    Range engineClock, memoryClock, voltage, power, temperature, fanTemperature, fanSpeed;
    Range minimumPerformanceClock, throttleNotification, autoSystemClock;
    std::vector<Level> engineLevels;  // levelCount at most
    std::vector<Level> memoryLevels;
    std::vector<ThermalController> thermalControllers;
    int targetTemperature = 0;  // degrees Celsius
    int targetFanSpeed = 0;     // RPM
    int minimumFanSpeed = 0;    // RPM
    int powerLimit = 0;         // percent, in force at first
    int temperatureLimit = 0;   // degrees Celsius, in force at first
};

struct Setting {
    int feature = 0;
    int min = 0;
    int max = 0;
    int defaultValue = 0;
    int current = 0;
};

struct Sensor {
    int id = 0;
    bool supported = true;
    Quantity quantity = nullptr;
    int value = 0;  // constant; without a quantity
};

struct Overdrive8 {
    int capabilities = 0;
    int count = 0;                  // how many settings the driver reports
    std::vector<Setting> settings;  // by id; 39 or more
    bool newerEntryPoints = true;   // those that hand out a list
    bool olderEntryPoints = true;
    std::vector<Sensor> sensors;
};

struct Memory {
    int megabytes = 0;
    std::string type;
    int bandwidth = 0;  // MB/s
};

struct AmdBoard {
    std::vector<Adapter> adapters;
    int overdriveVersion = 0;
    std::optional<OverdriveN> overdriveN;
    std::optional<Overdrive8> overdrive8;
    Memory memory;
    bool frameMetricsRunning = false;
};

}  // namespace gputune::sim
