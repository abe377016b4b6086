// How the exports of gputune_sim.h and gputune_sim_host.h report an exception.
#pragma once

#include <algorithm>
#include <exception>

#include "sim/standin/copy_text.h"

namespace gputune::sim {

// Calls work() and returns 1. When it throws, returns 0 and writes the exception's text to error, cut to fit, unless
// error is null.
template <class Work>
int WithErrorText(char* error, int errorSize, Work const& work) {
    try {
        work();
        return 1;
    } catch (std::exception const& failure) {
        CopyText(failure.what(), {error, static_cast<std::size_t>(error != nullptr ? std::max(errorSize, 0) : 0)});
        return 0;
    }
}

}  // namespace gputune::sim
