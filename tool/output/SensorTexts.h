// Readings as a section of a result, and in one line.
#pragma once

#include <cstdint>
#include <string>

#include "tool/output/Result.h"
#include "tool/values/Readings.h"

namespace gputune::tool {

// All sensors, or only those available. The JSON form tells the unit beside the value.
Section SensorSection(Readings const& readings, std::uint32_t vendor, bool all);

// "GPU Core Clock 1500 MHz, GPU Temperature 65.5 °C": the available readings.
std::string ReadingsLine(Readings const& readings, std::uint32_t vendor);

}  // namespace gputune::tool
