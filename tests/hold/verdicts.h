// What a strike does to a hold, and whether the fan is under automatic control or a hold lives afterwards.
#pragma once

#include <string>

#include "HoldRun.h"
#include "kill_cells.h"

namespace gputune::test {

struct Verdict {
    std::string problem{};  // empty: green
    double seconds = 0;     // from the strike to automatic control or a living hold
};

// The first worker is at the cell's step.
Verdict StrikeAt(HoldRun& run, Cell const& cell);

// What needs no step.
Verdict Disturb(HoldRun& run, Cell const& cell);

}  // namespace gputune::test
