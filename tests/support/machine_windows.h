// What only tests of the real gputune.dll can use.
#pragma once

#include <windows.h>

#include "Machine.h"
#include "sim/wmi/WmiStandIn.h"

namespace gputune::test {

// The process's WMI locator.
sim::WmiStandIn& Wmi();

// The loaded gputune.dll.
HMODULE LibraryUnderTest();

// The exports of a gputune.dll that the test loaded itself, which from then on finds no vendor's library but those of
// the tests. Throws std::runtime_error when one is missing.
Exports FindExports(HMODULE library);

}  // namespace gputune::test
