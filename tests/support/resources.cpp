#include "resources.h"

#include <algorithm>

namespace gputune::test {

namespace {

// A container that doubles its size may do so once, and the tests' own records of loads grow by a word in a round. A
// round that loses memory loses more than that.
constexpr long long kMostBytesInARound = 16;
constexpr long long kMostBytes = 4096;

std::string Growth(char const* what, long long before, long long after, long long allowed) {
    return after - before <= allowed
               ? ""
               : std::string(what) + " grew from " + std::to_string(before) + " to " + std::to_string(after) + "\n";
}

}  // namespace

std::string LeftBehindBy(int rounds, std::function<void(int number)> const& round) {
    int const warmUp = std::max(rounds / 10, 3);
    for (int number = 0; number < warmUp; ++number) {
        round(number);
    }
    Resources const before = ResourcesNow();
    for (int number = 0; number < rounds; ++number) {
        round(number);
    }
    Resources const after = ResourcesNow();
    return Growth("memory", before.bytes, after.bytes, kMostBytes + kMostBytesInARound * rounds) +
           Growth("the number of memory blocks", before.blocks, after.blocks, rounds / 20) +
           Growth("the number of handles", before.handles, after.handles, rounds / 100) +
           Growth("the number of modules", before.modules, after.modules, 0) +
           Growth("the number of threads", before.threads, after.threads, 0);
}

}  // namespace gputune::test
