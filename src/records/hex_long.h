// The base-16 conversion of board identifiers.
#pragma once

#include <cstdint>
#include <exception>
#include <string_view>

namespace gputune {

// Not std::invalid_argument and std::out_of_range, whose strings would make up a fifth of the library.
class HexLongError : public std::exception {
public:
    // Refers to the text.
    explicit HexLongError(char const* text) : text_(text) {}
    char const* what() const noexcept override { return text_; }

private:
    char const* text_;
};

// A signed 32-bit number in base 16, as the standard library converts it: leading white space, a sign and "0x" are
// accepted, what follows the digits is ignored. Throws HexLongError: "invalid stol argument" when there is no digit,
// also behind a lone "0x", and "stol argument out of range" beyond 32 bits signed.
std::int32_t ParseHexLong(std::string_view text);

}  // namespace gputune
