// What only tests against the real library under Windows can reach.
#pragma once

#include <windows.h>

#include "Machine.h"
#include "sim/wmi/WmiStandIn.h"

namespace gputune::test {

// The process's WMI locator.
sim::WmiStandIn& Wmi();

// The loaded gputune.dll.
HMODULE LibraryUnderTest();

// The exports of a library that was loaded otherwise. Throws std::runtime_error when one is missing.
Exports FindExports(HMODULE library);

}  // namespace gputune::test
