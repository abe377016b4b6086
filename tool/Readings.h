// Sensor readings as the monitor shows and records them. Independent of the operating system.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "Names.h"
#include "Report.h"

namespace gputune::tool {

// By key; nothing where the sensor is not available.
using Readings = std::array<std::optional<double>, GPUTUNE_HWM_KEY_COUNT>;

// The lowest and highest reading of each sensor so far.
class Extremes {
public:
    void Add(Readings const& readings);
    Readings const& Minimum() const { return minimum_; }
    Readings const& Maximum() const { return maximum_; }

private:
    Readings minimum_{};
    Readings maximum_{};
};

// All sensors, or only those available. The JSON form tells the unit beside the value.
Section SensorSection(Readings const& readings, std::uint32_t vendor, bool all);
std::size_t CountAvailable(Readings const& readings);

// "GPU Core Clock 1500 MHz, GPU Temperature 65.5 °C": the available readings in one line.
std::string ReadingsLine(Readings const& readings, std::uint32_t vendor);
// The available readings as a table with a heading, one line a string.
std::vector<std::string> MonitorTable(Readings const& readings, Extremes const& extremes, std::uint32_t vendor);

// Comma-separated values without line ends: every sensor has its column, empty where not available. The heading names
// sensor and unit, "gpu_core_clock_mhz". `time` is put first.
std::string CsvHeading(std::uint32_t vendor);
std::string CsvLine(std::string const& time, Readings const& readings);

}  // namespace gputune::tool
