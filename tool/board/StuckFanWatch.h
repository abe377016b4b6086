// Which readings of a fan may be wrong. Independent of the operating system.
#pragma once

#include <optional>

namespace gputune::tool {

// Finds the fan readings of OverdriveN boards that may be wrong. Where the driver gives the same speed for the ninth
// time in a row, and from then on, the library takes the reading for stuck and makes it 0. A 0 after eight equal
// readings thus comes from a fan that stopped, or from one that runs at a steady speed, and from outside nobody can
// tell which.
class StuckFanWatch {
public:
    // Takes every reading of the process in its order, and tells whether this one is such a 0.
    bool IsUnsure(std::optional<double> const& speed);

private:
    double last_ = 0;  // the last speed but 0
    int equal_ = 0;    // how often it came in a row
    bool isZero_ = false;
};

}  // namespace gputune::tool
