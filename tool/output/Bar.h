// Bars made of characters.
#pragma once

#include <cstddef>
#include <string>

namespace gputune::tool {

// `width` characters, of which the first `full` are filled.
std::string Bar(std::size_t full, std::size_t width);
// The same, filled up to the part (0 to 1), and the percentage.
std::string ProgressBar(double part, std::size_t width);

}  // namespace gputune::tool
