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
