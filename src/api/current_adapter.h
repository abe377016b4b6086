// The one current adapter and what the last detection found.
#pragma once

#include <cstdint>
#include <memory>

#include "adapter/IVideoAdapter.h"

namespace gputune::api {

// Detect the vendor and make the backend for it current. False, with the current adapter unchanged, when there is none.
// Lets allocation failures through.
bool InitializeAdapter(int logMode);

// Null before the first successful initialisation.
IVideoAdapter* CurrentAdapter();

// Vendor in the low 32 bits, interface type in the high 32 bits, as the last initialisation left them; 0 before any.
std::uint64_t VendorInfo();

}  // namespace gputune::api
