// The clocks that the library computed from a profile. It logs them before it sends them.
#pragma once

#include <optional>

#include "tool/board/LogEntries.h"

namespace gputune::tool {

// MHz; nothing when the log does not tell.
struct PlannedClocks {
    std::optional<int> gpu;
    std::optional<int> memory;
};

PlannedClocks ReadPlannedClocks(LogEntries const& entries);

}  // namespace gputune::tool
