// Which Windows this is, as far as it tells this process: hosts without a compatibility manifest are told an older one.
#pragma once

#include <cstdint>

namespace gputune::platform {

bool IsWindowsAtLeast(std::uint32_t major, std::uint32_t minor);

// False also when the system is newer than it says.
bool IsBuildAtLeast(std::uint32_t build);

}  // namespace gputune::platform
