// The base-16 conversion of board identifiers.
#pragma once

#include <cstdint>
#include <string_view>

namespace gputune {

// A signed 32-bit number in base 16, as the standard library converts it: leading white space, a sign and "0x" are
// accepted, what follows the digits is ignored. Throws std::invalid_argument ("invalid stol argument") when there is no
// digit, also behind a lone "0x", and std::out_of_range ("stol argument out of range") beyond 32 bits signed.
std::int32_t ParseHexLong(std::string_view text);

}  // namespace gputune
