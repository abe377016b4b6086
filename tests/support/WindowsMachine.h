// What only tests against the real library under Windows can reach.
#pragma once

#include <windows.h>

#include "wmi/WmiStandIn.h"

namespace gputune::test {

// The process's WMI locator.
sim::WmiStandIn& Wmi();

// The loaded gputune.dll.
HMODULE LibraryUnderTest();

}  // namespace gputune::test
