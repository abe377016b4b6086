// An error as JSON. Independent of the operating system.
#pragma once

#include <string>

#include "tool/values/Errors.h"

namespace gputune::tool {

// One line: an object "error" with the code, the message and the details, all keys at every time.
std::string ErrorJson(ErrorDetails const& details, std::string const& message);

}  // namespace gputune::tool
