// The lowest, average, highest and last of readings, taken in one after the other.
#pragma once

#include <algorithm>
#include <cstddef>

namespace gputune::tool {

struct Summary {
    std::size_t count = 0;  // of 0 the others mean nothing
    double minimum = 0;
    double average = 0;  // of the readings, whatever time lay between them
    double maximum = 0;
    double last = 0;

    void Add(double reading) {
        minimum = count == 0 ? reading : std::min(minimum, reading);
        maximum = count == 0 ? reading : std::max(maximum, reading);
        // Not a sum, which could leave the range of numbers. And rounding cannot carry it beyond the extremes.
        ++count;
        average += (reading - average) / static_cast<double>(count);
        last = reading;
    }
};

}  // namespace gputune::tool
