// Numbers as text, and text as numbers. The decimal point is '.' in every locale.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tool/values/Names.h"

namespace gputune::tool {

inline constexpr char const* kNotAvailable = "not available";

// At most two decimals, no trailing zeros: "65.5", "1500".
std::string FormatNumber(double value);
// The number and its unit: "65.5 °C". kNotAvailable for what is infinite or no number.
std::string WithUnit(double value, Unit unit);
std::string WithUnit(std::int64_t value, Unit unit);
std::string WithUnit(int value, Unit unit);

// Most readings are single-precision numbers. This is the number with the fewest digits that is the same in single
// precision: 386.67 instead of 386.6700134277344. Other numbers are returned unchanged.
double FewestDigits(double value);
// FewestDigits as the shortest text that reads back to the same number.
std::string FormatExactNumber(double value);

// A board's identifier as it is shown: "0x12345678".
std::string HexId(std::uint32_t id);

// Removes a number from the beginning of the text and returns it; nothing when the text does not begin with one.
// `format` is passed to std::from_chars: a base, for example.
template <class Number, class... Format>
std::optional<Number> TakeNumber(std::string_view& text, Format... format) {
    Number number{};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, format...);
    if (error != std::errc{}) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

// The whole text as a number; nothing when anything follows the number.
template <class Number, class... Format>
std::optional<Number> ParseNumber(std::string_view text, Format... format) {
    std::optional<Number> number = TakeNumber<Number>(text, format...);
    if (!text.empty()) {
        number.reset();
    }
    return number;
}

}  // namespace gputune::tool
