// Which readings the last fetch has really taken: the library keeps a sensor's last value when a read fails, and only
// its log tells.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/board/LogEntries.h"
#include "tool/values/Readings.h"

namespace gputune::tool {

// A function of the vendor's library that failed.
struct FailedCall {
    std::string function;  // "ADL2_OverdriveN_Temperature_Get"
    std::string answer;    // what the log says of it: "failed: -1", "null ptr"

    bool operator==(FailedCall const&) const = default;
};

// Removes the readings that the fetch, during which the library logged `entries`, did not take. What the log does not
// speak of counts as read only on boards that log failures and nothing else, and only when the log has the fetch's
// beginning.
void RemoveStale(Readings& readings, std::uint32_t api, LogEntries const& entries);

// In the log's order.
std::vector<FailedCall> FailedCalls(LogEntries const& entries);

}  // namespace gputune::tool
