#pragma once

#include <limits>

namespace gputune {

// Toward zero. What an int cannot hold, not-a-number included, becomes the lowest int, which every range check and
// every driver refuses.
constexpr int Truncate(float value) {
    constexpr float kBeyond = 2147483648.0F;
    return value > -kBeyond && value < kBeyond ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

}  // namespace gputune
