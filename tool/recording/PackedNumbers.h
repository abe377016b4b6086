// Rows of numbers as short text, for the script of a page.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace gputune::tool {

// Whole numbers in the variable-length form of source maps: a sign bit, then five bits a character, the lowest first,
// with a sixth for "another one follows", in the alphabet of Base64. Lines end anywhere.
struct PackedNumbers {
    // Each number was multiplied by this power of ten and rounded. It is 3 at most, as no chart shows more decimals;
    // less when that loses nothing, or when the numbers are too large.
    int decimals = 0;
    // The difference of each number from the one before; of the first from 0. A difference of 0 is followed by the
    // number of further zeros.
    std::vector<std::string> values;
    // For each gap two numbers: how many values lie between it and the gap before, and how many are missing. In
    // `values` a missing number equals the one before.
    std::vector<std::string> gaps;
};

// The numbers are finite.
PackedNumbers PackNumbers(std::span<std::optional<double> const> numbers);

}  // namespace gputune::tool
