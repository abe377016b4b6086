// What the exporter knows, as JSON for programs and for its page. schema/gputunectl.schema.json describes it.
#pragma once

#include <string>

#include "tool/serve/Snapshot.h"

namespace gputune::tool {

// The answer of /api/readings, indented. `now`: the time of the answer, in seconds since 1970.
std::string ReadingsJson(Snapshot const& snapshot, double now);

// The same on one line without its end: the data of an event of /api/events. The page wants one at every moment of
// sampling, also when there is no sample, and takes the exporter for gone when none has come for long.
std::string EventJson(Snapshot const& snapshot, double now);

}  // namespace gputune::tool
