// What a fuzz target holds to be true of every input.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace gputune::fuzz {

// Stops the process, which the fuzzer takes for a finding.
inline void Require(bool condition, char const* what) {
    if (!condition) {
        std::fprintf(stderr, "violated: %s\n", what);
        std::abort();
    }
}

}  // namespace gputune::fuzz
