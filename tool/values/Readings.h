// One reading of all sensors.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

#include "gputune.h"

namespace gputune::tool {

// By key; nothing where the sensor is not available.
struct Readings : std::array<std::optional<double>, GPUTUNE_HWM_KEY_COUNT> {
    bool fanUnsure = false;  // whether the fan's speed may be wrong (StuckFanWatch)

    std::size_t CountAvailable() const {
        return size() - static_cast<std::size_t>(std::count(begin(), end(), std::nullopt));
    }
};

}  // namespace gputune::tool
