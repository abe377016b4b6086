// What the control library's result codes are called in the log.
#pragma once

#include <string_view>

#include "intel/ctl_records.h"

namespace gputune::intel {

// The bracketed name of a code, "[Unknown Error]" for one without a name here.
std::string_view CtlResultName(ctl_result_t result);

}  // namespace gputune::intel
