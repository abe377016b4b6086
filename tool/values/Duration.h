// Times as people write them. Independent of the operating system.
#pragma once

#include <optional>
#include <string_view>

namespace gputune::tool {

// Seconds: "90", "90s", "1.5m", "2h". Nothing for anything else, also for "nan" and "0,5".
std::optional<double> ParseSeconds(std::string_view text);

}  // namespace gputune::tool
