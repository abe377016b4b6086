// Conditions that must hold for every input of a fuzz target.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace gputune::fuzz {

// Aborts the process when the condition does not hold; the fuzzer reports the input.
inline void Require(bool condition, char const* what) {
    if (!condition) {
        std::fprintf(stderr, "violated: %s\n", what);
        std::abort();
    }
}

}  // namespace gputune::fuzz
