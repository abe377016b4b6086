// From a reading to the integer that the vendor's record holds.
#pragma once

#include <climits>
#include <cmath>

namespace gputune::sim {

inline int Rounded(double value) {
    return value >= INT_MAX ? INT_MAX : value <= INT_MIN ? INT_MIN : static_cast<int>(std::lround(value));
}

}  // namespace gputune::sim
