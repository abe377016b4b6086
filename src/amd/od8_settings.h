// The Overdrive8 settings, capability flags and sensors that the adapter uses, in ADL's numbering.
#pragma once

#include <array>

namespace gputune::amd {

// Settings: index into the setting tables.
enum Od8Setting : int {
    kOd8GfxClockMax = 0,      // MHz
    kOd8GfxClockMin = 1,      // MHz
    kOd8GfxClock3 = 6,        // MHz, the top of the clock curve
    kOd8GfxVoltage3 = 7,      // mV, likewise
    kOd8MemoryClockMax = 8,   // MHz
    kOd8PowerPercentage = 9,  // percent relative to the default
    kOd8FanMinSpeed = 10,
    kOd8FanAcousticLimit = 11,
    kOd8FanTargetTemperature = 12,  // degrees Celsius
    kOd8FanZeroRpm = 15,            // 1 on, 0 off
    kOd8FanCurveFirst = 19,
    kOd8FanCurveLast = 28,
    kOd8OptimizedPowerMode = 36,
    kOd8VoltageOffset = 37,  // mV
};

constexpr int kOd8OptimizedPowerManual = 3;

// The fan curve: five points, each a temperature (degrees Celsius) and a speed (percent).
constexpr int kOd8FanCurvePoints = 5;
constexpr int Od8FanTemperature(int point) {
    return 19 + 2 * point;
}
constexpr int Od8FanSpeed(int point) {
    return 20 + 2 * point;
}

// Capability flags.
enum Od8Flag : int {
    kOd8HasGfxClockLimits = 0x1,
    kOd8HasGfxClockCurve = 0x2,
    kOd8HasMemoryClock = 0x4,
    kOd8HasPowerLimit = 0x8,
    kOd8HasAcousticLimit = 0x10,
    kOd8HasFanMinSpeed = 0x20,
    kOd8HasFanTargetTemperature = 0x40,
    kOd8HasZeroRpm = 0x200,
    kOd8HasFanCurve = 0x2000,
    kOd8HasOptimizedPowerMode = 0x10000,
    kOd8LastListedFlag = 0x40000,
};

// Sensors of the PMLOG record.
enum PmLogSensor : int {
    kPmLogGfxClock = 1,             // MHz
    kPmLogMemoryClock = 2,          // MHz
    kPmLogEdgeTemperature = 8,      // degrees Celsius
    kPmLogFanRpm = 14,              // revolutions per minute
    kPmLogGfxActivity = 19,         // percent
    kPmLogHotspotTemperature = 27,  // degrees Celsius
    kPmLogFirstListed = 1,
    kPmLogLastListed = 45,
};

}  // namespace gputune::amd
