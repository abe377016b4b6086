// Single-precision arithmetic on the way to the int that a driver takes.
#pragma once

#include <limits>

namespace gputune {

// Toward zero. What an int cannot hold, not-a-number included, becomes the lowest int, which every range check and
// every driver refuses.
constexpr int Truncate(float value) {
    constexpr float kBeyond = 2147483648.0F;
    return value > -kBeyond && value < kBeyond ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

// Above the maximum becomes the maximum, else below the minimum the minimum.
constexpr float ClampInto(int min, int max, float value) {
    auto const highest = static_cast<float>(max);
    auto const lowest = static_cast<float>(min);
    return value > highest ? highest : value < lowest ? lowest : value;
}

}  // namespace gputune
