// The export table of this library in memory. The loader searches its sorted list of names, so that a name taken out of
// the list is not found. The file is not changed.
#pragma once

#include <set>
#include <string>

namespace gputune::sim {

// Takes out exactly these names and puts back all others. Ignores names without an export. False when the system does
// not let the table be written.
bool HideExports(std::set<std::string> const& hidden);

}  // namespace gputune::sim
