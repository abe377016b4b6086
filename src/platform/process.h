#pragma once

namespace gputune::platform {

// Whether the process is ending and the loader has called this library for the last time. No thread but this one is
// left then, and libraries that were loaded later than this one have ended already: calling into them is not safe any
// more.
bool IsProcessEnding();

}  // namespace gputune::platform
