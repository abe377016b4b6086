// A reading as the integer of a vendor's record; one outside its range becomes the nearest in it.
#pragma once

#include <climits>
#include <cmath>

namespace gputune::sim {

inline int Rounded(double value) {
    return value >= INT_MAX ? INT_MAX : value <= INT_MIN ? INT_MIN : static_cast<int>(std::lround(value));
}

}  // namespace gputune::sim
