// The calls that a reading of the sensors makes of each vendor's library, with nothing around them.
#pragma once

#include <functional>
#include <string_view>

#include "BenchMachine.h"

namespace gputune::bench {

// A way to talk to a board that a benchmark is about.
struct Backend {
    std::string_view name;
    BenchMachine::Vendor vendor;
    // The vendor's calls of one FetchHwmValues, in its order, with the entry points looked up beforehand.
    std::function<void()> (*bareFetch)(BenchMachine const& machine);
};

// The backend of this name: overdriven, overdrive8, intel or nvidia. Throws std::invalid_argument for any other.
Backend const& BackendOf(std::string_view name);

// The one this process is about, from the environment variable GPUTUNE_BENCH_BACKEND, which null_adl.cpp reads, too.
Backend const& BackendOfThisProcess();

}  // namespace gputune::bench
