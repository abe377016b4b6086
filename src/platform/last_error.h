#pragma once

#include <cstdint>

namespace gputune::platform {

// The calling thread's last error code; read it before anything else is called.
std::uint32_t LastError();

}  // namespace gputune::platform
