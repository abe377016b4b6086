// Single-precision arithmetic on the way to the int that a driver takes.
#pragma once

#include <optional>

namespace gputune {

// Toward zero. Nothing for what an int cannot hold, not-a-number included: there is no number that stands for it.
constexpr std::optional<int> Truncate(float value) {
    constexpr float kBeyond = 2147483648.0F;
    return value > -kBeyond && value < kBeyond ? std::optional(static_cast<int>(value)) : std::nullopt;
}

// Above the maximum becomes the maximum, else below the minimum the minimum.
constexpr float ClampInto(int min, int max, float value) {
    auto const highest = static_cast<float>(max);
    auto const lowest = static_cast<float>(min);
    return value > highest ? highest : value < lowest ? lowest : value;
}

}  // namespace gputune
