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

// Of the numbers that are the same reading in single precision, in which most readings are, the one with the fewest
// digits: 386.67 instead of 386.6700134277344. Other numbers stay as they are.
double FewestDigits(double value);
// FewestDigits as the shortest text that reads back to the same number.
std::string FormatExactNumber(double value);

// A board's identifier as it is shown: "0x12345678".
std::string HexId(std::uint32_t id);

// Takes off the text the number that it begins with; nothing, and no change, when it begins with none. `format` is
// what std::from_chars takes: a base, for example.
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

// The text as a number, with nothing behind it.
template <class Number, class... Format>
std::optional<Number> ParseNumber(std::string_view text, Format... format) {
    std::optional<Number> number = TakeNumber<Number>(text, format...);
    if (!text.empty()) {
        number.reset();
    }
    return number;
}

}  // namespace gputune::tool
