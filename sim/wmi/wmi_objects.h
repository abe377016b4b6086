// The COM objects behind the WMI stand-in.
#pragma once

#include "sim/wmi/wmi_state.h"

struct IClassFactory;

namespace gputune::sim {

// The class object of the locator, with one reference; never null.
IClassFactory* NewLocatorFactory(SharedWmiState state);

}  // namespace gputune::sim
