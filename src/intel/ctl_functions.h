// The control library's functions, as this library exports them and its adapter calls them: each passes the call on to
// the library that ctlInit loaded, and returns CTL_RESULT_ERROR_NOT_INITIALIZED where there is none, or none of that
// name in it.
#pragma once

#include "intel/ctl_records.h"

namespace gputune::intel {

extern "C" {

// A name without a signature in the list is declared without parameters, and never called from here.
#define CTL_FORWARD(name, ...) ctl_result_t CTL_CDECL name(__VA_ARGS__);
#include "intel/ctl_functions.inc"

}  // extern "C"

}  // namespace gputune::intel
