// Sensor readings as the monitor shows and records them. Independent of the operating system.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "tool/output/Result.h"
#include "tool/values/Names.h"

namespace gputune::tool {

// By key; nothing where the sensor is not available.
struct Readings : std::array<std::optional<double>, GPUTUNE_HWM_KEY_COUNT> {
    bool fanUnsure = false;  // whether the fan's speed may be another one (StuckFanWatch)
};

// Finds the fan readings of OverdriveN boards that may be wrong. Where the driver gives the same speed for the ninth
// time in a row, and from then on, the library takes the reading for stuck and makes it 0. A 0 after eight equal
// readings thus comes from a fan that stopped, or from one that runs at a steady speed, and from outside nobody can
// tell which.
class StuckFanWatch {
public:
    // Takes every reading of the process in its order, and tells whether this one is such a 0.
    bool IsUnsure(std::optional<double> const& speed);

private:
    double last_ = 0;  // the last speed but 0
    int equal_ = 0;    // how often it came in a row
    bool isZero_ = false;
};

// All sensors, or only those available. The JSON form tells the unit beside the value.
Section SensorSection(Readings const& readings, std::uint32_t vendor, bool all);
std::size_t CountAvailable(Readings const& readings);

// "1 reading", "2 readings".
std::string CountText(std::size_t readings);
// "1:02:05", without the hours "2:05".
std::string ElapsedText(double seconds);
// So many characters, filled up to the part (0 to 1), and the percentage.
std::string ProgressBar(double part, std::size_t width);

// "GPU Core Clock 1500 MHz, GPU Temperature 65.5 °C": the available readings in one line.
std::string ReadingsLine(Readings const& readings, std::uint32_t vendor);

}  // namespace gputune::tool
