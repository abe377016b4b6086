// The law by which a held fan's speed follows a temperature. A pure function of readings and time: no clock, no input
// or output, no state but what is given and returned.
//
// What it promises, for any readings:
//   - Between two points the curve is linear; below the first point it is the first's speed, above the last the last's.
//   The
//     speed is a whole percentage, as boards take it. While the fan turns, it is never below `floor` and never above
//     `ceiling`.
//   - It rises at once, with the reading that asks for more.
//   - It falls when every reading of the last `spinDownDelay` seconds was more than `hysteresis` below the temperature
//     that set the present speed. It then falls to what the highest of these readings asks for, which sets it from then
//     on; so it follows a cooling board in steps.
//   - It settles: when no reading of the last `spinDownDelay` + kSettleSeconds seconds reached the temperature that set
//     the present speed, it falls to what the highest of these readings asks for, inside the hysteresis too. With a
//     steady temperature the speed therefore is the curve's after twice this time at the latest.
//   - Its direction changes at most kMostTurns times in any kTurnWindow seconds. A rise never waits for that; a fall
//   after a
//     rise does, until there is room for it and for the rise that may have to follow.
//   - With `zeroRpm`, the fan stands below its `start` temperature once it stands. It starts at `start`; it stops when
//     every reading of the last `spinDownDelay` seconds was at `stop` or below and it has turned for
//     `leastRunningTime`.
#pragma once

#include <array>
#include <limits>
#include <optional>
#include <vector>

#include "gputune.h"

namespace gputune::tool {

// A fan that stands while the board is cool.
struct ZeroRpm {
    double start = 0;              // degrees Celsius: a standing fan starts at this temperature or above
    double stop = 0;               // degrees Celsius, below `start`: a turning fan stops at this temperature or below
    double leastRunningTime = 30;  // seconds
};

struct FanLawSettings {
    // One at least; temperatures and speeds do not fall from point to point (ParseFanCurve).
    std::vector<FanTablePoint> points{};
    double hysteresis = 3;     // kelvin, 0 or more
    double spinDownDelay = 8;  // seconds, 0 or more
    std::optional<ZeroRpm> zeroRpm{};
    int floor = 0;  // percent: the least speed at which the board's fan may turn
    int ceiling = 100;
};

constexpr double kSettleSeconds = 30;
constexpr double kTurnWindow = 60;  // seconds
constexpr int kMostTurns = 4;

// What the law remembers from one reading to the next. A caller begins with FanLawState(), hands each answer's state to
// the next call, and begins anew after a time without readings. `speed` alone is of use to others.
struct FanLawState {
    // The time since when something has been so, and the highest reading since then.
    struct Spell {
        double since = 0;
        double peak = 0;
    };
    enum class Direction { None, Up, Down };

    bool begun = false;
    int speed = 0;                      // percent; 0 while it stands
    bool standing = false;              // by zeroRpm
    double setTemperature = 0;          // degrees Celsius: the reading that set the speed
    double turningSince = 0;            // seconds; while it does not stand
    std::optional<Spell> settling{};    // below setTemperature
    std::optional<Spell> below{};       // below it by more than the hysteresis
    std::optional<double> coolSince{};  // at zeroRpm->stop or below
    Direction direction = Direction::None;
    // When the direction last changed, oldest first.
    std::array<double, kMostTurns - 1> turns = {-std::numeric_limits<double>::infinity(),
                                                -std::numeric_limits<double>::infinity(),
                                                -std::numeric_limits<double>::infinity()};
};

// What the points say, within floor and ceiling, in percent; zeroRpm plays no part. NaN counts as the highest of
// temperatures.
double SpeedOnCurve(FanLawSettings const& settings, double temperature);

// The speed from this reading on. temperature: degrees Celsius; NaN counts as the highest of temperatures, though a
// caller should not come with a reading that it does not believe. seconds: on any clock that does not go back.
FanLawState NextFanSpeed(FanLawSettings const& settings, FanLawState state, double temperature, double seconds);

}  // namespace gputune::tool
