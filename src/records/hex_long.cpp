#include "records/hex_long.h"

#include <charconv>
#include <limits>

namespace gputune {

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

bool SkipOneOf(std::string_view& text, std::string_view characters) {
    bool const found = !text.empty() && characters.find(text.front()) != std::string_view::npos;
    text.remove_prefix(found ? 1 : 0);
    return found;
}

}  // namespace

// Written out because libraries differ on "0x" without a digit behind it, which some read as the number 0.
std::int32_t ParseHexLong(std::string_view text) {
    while (SkipOneOf(text, kWhiteSpace)) {
    }
    bool const negative = !text.empty() && text.front() == '-';
    SkipOneOf(text, "+-");
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
    }
    std::uint32_t magnitude = 0;
    auto const parsed = std::from_chars(text.data(), text.data() + text.size(), magnitude, 16);
    if (parsed.ec == std::errc::invalid_argument) {
        throw HexLongError("invalid stol argument");
    }
    constexpr std::uint32_t kLargest = std::numeric_limits<std::int32_t>::max();
    if (parsed.ec == std::errc::result_out_of_range || magnitude > kLargest + (negative ? 1U : 0U)) {
        throw HexLongError("stol argument out of range");
    }
    return static_cast<std::int32_t>(negative ? 0U - magnitude : magnitude);
}

}  // namespace gputune
