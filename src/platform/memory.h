#pragma once

#include <cstddef>

namespace gputune::platform {

// How many bytes can be read from an address on without a fault, as far as 16 MB; 0 when none can.
std::size_t ReadableBytes(void const* address);

}  // namespace gputune::platform
