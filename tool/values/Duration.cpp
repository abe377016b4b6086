#include "tool/values/Duration.h"

#include <charconv>
#include <cmath>

namespace gputune::tool {

std::optional<double> ParseSeconds(std::string_view text) {
    double value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || !std::isfinite(value)) {
        return std::nullopt;
    }
    std::string_view const unit = text.substr(static_cast<std::size_t>(end - text.data()));
    if (unit.empty() || unit == "s") {
        return value;
    }
    return unit == "m" ? std::optional(value * 60) : unit == "h" ? std::optional(value * 3600) : std::nullopt;
}

}  // namespace gputune::tool
