#include "tool/values/Duration.h"

#include <cmath>

#include "tool/values/Numbers.h"

namespace gputune::tool {

std::optional<double> ParseSeconds(std::string_view text) {
    std::optional<double> const value = TakeNumber<double>(text);
    if (!value || !std::isfinite(*value)) {
        return std::nullopt;
    }
    double const factor = text.empty() || text == "s" ? 1 : text == "m" ? 60 : text == "h" ? 3600 : 0;
    return factor == 0 ? std::nullopt : std::optional(*value * factor);
}

std::string ElapsedText(double seconds) {
    auto const whole = static_cast<long long>(std::llround(seconds));
    auto const twoDigits = [](long long number) { return (number < 10 ? "0" : "") + std::to_string(number); };
    bool const hasHours = whole >= 3600;
    std::string const minutes = hasHours ? twoDigits(whole / 60 % 60) : std::to_string(whole / 60);
    return (hasHours ? std::to_string(whole / 3600) + ":" : "") + minutes + ":" + twoDigits(whole % 60);
}

}  // namespace gputune::tool
