// The lowest, average, highest and last of readings, taken in one after the other.
#pragma once

#include <algorithm>
#include <cstddef>

namespace gputune::tool {

struct Summary {
    std::size_t count = 0;  // the others are valid when it is not 0
    double minimum = 0;
    double average = 0;  // each reading counts the same, whatever the time between them
    double maximum = 0;
    double last = 0;

    void Add(double reading) {
        minimum = count == 0 ? reading : std::min(minimum, reading);
        maximum = count == 0 ? reading : std::max(maximum, reading);
        // No sum is kept: it could overflow. And rounding cannot make the average smaller than the minimum or larger
        // than the maximum.
        ++count;
        average += (reading - average) / static_cast<double>(count);
        last = reading;
    }
};

}  // namespace gputune::tool
