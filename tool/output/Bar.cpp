#include "tool/output/Bar.h"

#include <algorithm>

#include "tool/values/Text.h"

namespace gputune::tool {

std::string Bar(std::size_t full, std::size_t width) {
    std::string bar;
    for (std::size_t i = 0; i < width; ++i) {
        bar += i < full ? "\u2588" : "\u2591";
    }
    return bar;
}

std::string ProgressBar(double part, std::size_t width) {
    double const shown = std::clamp(part, 0.0, 1.0);
    return Bar(static_cast<std::size_t>(shown * static_cast<double>(width)), width) +
           PadLeft(std::to_string(static_cast<int>(shown * 100)), 4) + " %";
}

}  // namespace gputune::tool
