// Counts what the process holds, to find what grows when something is done many times.
#pragma once

#include <functional>
#include <string>

namespace gputune::test {

struct Resources {
    long long bytes = 0;    // of memory from the heap
    long long blocks = 0;   // of that memory; natively not counted, always 0
    long long handles = 0;  // open files, threads, synchronisation objects and so on
    long long modules = 0;
    long long threads = 0;
};

Resources ResourcesNow();

// Runs `round` with the numbers from 0 to `rounds` - 1, after a tenth as many rounds to warm up. Returns lines that say
// what has grown; empty when nothing has.
std::string LeftBehindBy(int rounds, std::function<void(int number)> const& round);

}  // namespace gputune::test
