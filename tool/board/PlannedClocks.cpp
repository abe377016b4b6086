#include "tool/board/PlannedClocks.h"

namespace gputune::tool {

PlannedClocks ReadPlannedClocks(LogEntries const& entries) {
    PlannedClocks clocks{};
    for (LogEntry const& entry : entries) {
        if (entry.message.starts_with("plan GpuClock=") || entry.message.starts_with("GpuClock=")) {
            clocks = {NumberBehind(entry.message, "GpuClock="), NumberBehind(entry.message, ", MemClock=")};
        }
    }
    return clocks;
}

}  // namespace gputune::tool
