// Rows of numbers as short text for the script of a page. Independent of the operating system.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace gputune::tool {

// Whole numbers in the variable-length form of source maps: a sign bit, then five bits a character, the lowest first,
// with a sixth for "another one follows", in the alphabet of Base64. Lines end anywhere.
struct PackedNumbers {
    // Each number was multiplied by this power of ten and rounded: 3 is thousandths, which no chart shows finer. Less
    // where that is exact, or where numbers are too large to be kept that finely.
    int decimals = 0;
    // Differences from the number before, at first from 0. Behind a difference of 0 stands how many more follow it.
    std::vector<std::string> values;
    // Where numbers are missing: how many there are before the gap, since the last one, and how many it takes. In
    // `values` they equal the one before.
    std::vector<std::string> gaps;
};

// The numbers are finite.
PackedNumbers PackNumbers(std::span<std::optional<double> const> numbers);

}  // namespace gputune::tool
