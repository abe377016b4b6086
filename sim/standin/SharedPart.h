// What of a stand-in belongs to the board's state, before what is the driver's.
#pragma once

#include <cstdint>

#include "sim/board/ActiveFaults.h"
#include "sim/model/TimeSource.h"

namespace gputune::sim {

struct SharedPart {
    TimeSource time{};
    ActiveFaults faults{};
    std::int32_t calls = 0;  // of the vendor's library

    template <class Archive>
    void Exchange(Archive& archive) {
        archive(time, faults, calls);
    }
};

}  // namespace gputune::sim
