#include "tool/values/Numbers.h"

#include <cmath>
#include <cstdio>
#include <limits>

namespace gputune::tool {

namespace {

std::string AddUnit(std::string const& number, Unit unit) {
    return unit == Unit::None ? number : number + " " + UnitName(unit).text;
}

}  // namespace

std::string FormatNumber(double value) {
    if (!std::isfinite(value)) {
        return kNotAvailable;
    }
    char buffer[400];  // the largest double has 309 digits before the point
    auto const [end, error] = std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::fixed, 2);
    std::string text(buffer, error == std::errc{} ? end : buffer);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) {
        text.pop_back();
    }
    return text == "-0" ? "0" : text;
}

std::string WithUnit(double value, Unit unit) {
    return std::isfinite(value) ? AddUnit(FormatNumber(value), unit) : kNotAvailable;
}

std::string WithUnit(std::int64_t value, Unit unit) {
    return AddUnit(std::to_string(value), unit);
}

std::string WithUnit(int value, Unit unit) {
    return WithUnit(std::int64_t{value}, unit);
}

double FewestDigits(double value) {
    // Whole numbers are exact already; numbers beyond the range of a float do not come from one.
    if (value == std::trunc(value) || !(std::abs(value) <= double{std::numeric_limits<float>::max()}) ||
        double{static_cast<float>(value)} != value) {
        return value;
    }
    char buffer[32];
    char const* const end = std::to_chars(buffer, buffer + sizeof(buffer), static_cast<float>(value)).ptr;
    double shortest = value;
    std::from_chars(buffer, end, shortest);
    return shortest;
}

std::string FormatExactNumber(double value) {
    char buffer[64];
    auto const [end, error] = std::to_chars(buffer, buffer + sizeof(buffer), FewestDigits(value));
    return std::string(buffer, error == std::errc{} ? end : buffer);
}

std::string HexId(std::uint32_t id) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08X", static_cast<unsigned>(id));
    return text;
}

}  // namespace gputune::tool
