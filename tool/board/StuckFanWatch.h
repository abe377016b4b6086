// Which readings of a fan's speed may be wrong.
#pragma once

#include <optional>

namespace gputune::tool {

// Finds the fan readings of OverdriveN boards that may be wrong. When the driver reports the same speed nine times in a
// row or more, the library takes the reading for stuck and reports 0. A 0 after eight equal readings therefore means
// either that the fan stopped, or that it runs at a steady speed; the tool cannot know which.
class StuckFanWatch {
public:
    // To be called with every reading of the process, in order. Whether this reading is such a 0.
    bool IsUnsure(std::optional<double> const& speed);

private:
    double last_ = 0;  // the last speed that was not 0
    int equal_ = 0;    // how many times in a row
    bool isZero_ = false;
};

}  // namespace gputune::tool
