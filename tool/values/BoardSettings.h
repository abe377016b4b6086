// What a board shows of its settings at one moment.
#pragma once

#include <optional>
#include <vector>

#include "gputune.h"

namespace gputune::tool {

// Nothing where the board does not show it.
struct BoardSettings {
    std::vector<FanTablePoint> fanCurve{};     // percent and degrees Celsius; empty: not shown
    std::optional<double> powerLimit{};        // percent, relative to the default
    std::optional<double> temperatureLimit{};  // degrees Celsius
    std::optional<double> gpuClock{};          // MHz
    std::optional<double> gpuVoltage{};        // mV
    std::optional<double> memoryClock{};       // MHz
};

}  // namespace gputune::tool
