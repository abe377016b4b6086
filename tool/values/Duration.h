// Times as people write and read them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace gputune::tool {

// Seconds: "90", "90s", "1.5m", "2h". Nothing for anything else, also for "nan" and "0,5".
std::optional<double> ParseSeconds(std::string_view text);

// "1:02:05", without the hours "2:05".
std::string ElapsedText(double seconds);

}  // namespace gputune::tool
