#include "tool/profile/ProfileValues.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace gputune::tool {

namespace {

constexpr std::string_view whiteSpace = " \t\n\v\f\r";

// What a number may begin with, taken off the text.
struct Prefix {
    bool negative = false;
    bool hexadecimal = false;
};

Prefix TakePrefix(std::string_view& text) {
    std::size_t const start = text.find_first_not_of(whiteSpace);
    text.remove_prefix(start == std::string_view::npos ? text.size() : start);
    Prefix prefix;
    prefix.negative = text.starts_with('-');
    if (prefix.negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    prefix.hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (prefix.hexadecimal) {
        text.remove_prefix(2);
    }
    return prefix;
}

Reading JudgeRest(std::from_chars_result const& parsed, std::string_view text) {
    if (parsed.ec == std::errc::invalid_argument) {
        return Reading::NotANumber;
    }
    if (parsed.ec != std::errc{}) {
        return Reading::OutOfRange;
    }
    std::string_view const rest = text.substr(static_cast<std::size_t>(parsed.ptr - text.data()));
    return rest.find_first_not_of(whiteSpace) == std::string_view::npos ? Reading::Clean : Reading::Trailing;
}

// The digits of a 32-bit signed number whose sign was taken off; `value` is set when they are read.
Reading JudgeMagnitude(std::string_view text, Prefix prefix, int base, long& value) {
    std::uint32_t magnitude = 0;
    Reading const reading = JudgeRest(std::from_chars(text.data(), text.data() + text.size(), magnitude, base), text);
    if (reading == Reading::NotANumber || reading == Reading::OutOfRange) {
        return reading;
    }
    constexpr std::uint32_t largest = std::numeric_limits<std::int32_t>::max();
    if (magnitude > largest + (prefix.negative ? 1U : 0U)) {
        return Reading::OutOfRange;
    }
    value = static_cast<std::int32_t>(prefix.negative ? 0U - magnitude : magnitude);
    return reading;
}

}  // namespace

Reading JudgeFloat(std::string_view text) {
    Prefix const prefix = TakePrefix(text);
    constexpr std::string_view hexadecimalStart = ".0123456789abcdefABCDEF";
    bool const startsWell =
        !text.empty() &&
        (prefix.hexadecimal ? hexadecimalStart.find(text.front()) != std::string_view::npos : text.front() != '-');
    if (!startsWell) {
        return Reading::NotANumber;
    }
    float value = 0;
    Reading const reading =
        JudgeRest(std::from_chars(text.data(), text.data() + text.size(), value,
                                  prefix.hexadecimal ? std::chars_format::hex : std::chars_format::general),
                  text);
    bool const isRead = reading == Reading::Clean || reading == Reading::Trailing;
    // Whether a number of reduced precision is read depends on the C library.
    if (isRead && std::fpclassify(value) == FP_SUBNORMAL) {
        return Reading::OutOfRange;
    }
    if (isRead && !std::isfinite(value)) {
        return Reading::NotFinite;
    }
    return isRead && std::fabs(value) > static_cast<float>(largestValue) ? Reading::TooLarge : reading;
}

Reading JudgeInteger(std::string_view text) {
    Prefix const prefix = TakePrefix(text);
    long value = 0;
    return JudgeMagnitude(text, prefix, prefix.hexadecimal ? 16 : 10, value);
}

Reading JudgeIdentifier(std::string_view text, long& id) {
    Prefix const prefix = TakePrefix(text);
    return JudgeMagnitude(text, prefix, 16, id);
}

}  // namespace gputune::tool
