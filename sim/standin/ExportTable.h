// The names that this very library exports, as the loader sees them in memory: it finds a name by binary search, so a
// name taken out of the sorted list is one that the library does not have. The file is not touched.
#pragma once

#include <set>
#include <string>

namespace gputune::sim {

// Take out exactly the given names and put back all others. Names without an export are ignored. False when the system
// does not let the table be written.
bool HideExports(std::set<std::string> const& hidden);

}  // namespace gputune::sim
