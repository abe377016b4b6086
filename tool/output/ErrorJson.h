// An error as JSON.
#pragma once

#include <string>

#include "tool/values/Errors.h"

namespace gputune::tool {

// One line: an object "error" with code, message and details. All keys are always there.
std::string ErrorJson(ErrorDetails const& details, std::string const& message);

}  // namespace gputune::tool
