// The calls of each vendor's library that a reading of the sensors makes, without the library.
#pragma once

#include <functional>
#include <string_view>

#include "BenchMachine.h"

namespace gputune::bench {

// A backend to measure.
struct Backend {
    std::string_view name;
    BenchMachine::Vendor vendor;
    // The vendor's calls of one FetchHwmValues, in its order, with the entry points looked up beforehand.
    std::function<void()> (*bareFetch)(BenchMachine const& machine);
};

// The backend of this name: overdriven, overdrive8, intel or nvidia. Throws std::invalid_argument for any other.
Backend const& BackendOf(std::string_view name);

// The backend that the environment variable GPUTUNE_BENCH_BACKEND names; null_adl.cpp reads it, too.
Backend const& BackendOfThisProcess();

}  // namespace gputune::bench
