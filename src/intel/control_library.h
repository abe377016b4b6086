// The loaded Intel Graphics Control Library, one for the process, shared by the adapter and by hosts that call the
// exported ctl functions. Not locked: no other call may run while it is loaded or unloaded.
#pragma once

#include "intel/ctl_records.h"

namespace gputune::intel {

// The result of a call through this layer when no library is loaded, or the library has no function of that name.
constexpr ctl_result_t kCtlNotInitialized = 0x40000001;

namespace control_library {

bool IsLoaded();

// Load the library from a path, or by its name from the system's own directory; entry points of an earlier one are
// forgotten. False when that fails.
bool Load(wchar_t const* path);

// Unload it; entry points found in it are forgotten.
void Unload();

// The address of a function in the loaded library, null when there is none.
void* Find(char const* name);

}  // namespace control_library

}  // namespace gputune::intel
