// What a process holds, counted before and after something that is done many times over.
#pragma once

#include <functional>
#include <string>

namespace gputune::test {

struct Resources {
    long long bytes = 0;    // of memory from the heap
    long long blocks = 0;   // their number; 0 where it is not known
    long long handles = 0;  // files, threads, synchronisation objects and so on that are open
    long long modules = 0;
    long long threads = 0;
};

Resources ResourcesNow();

// What `round` leaves behind when it is run with the numbers from 0 to `rounds` - 1, after as many again to warm up as
// a tenth of them: lines that say what has grown; none when all stays as it was.
std::string LeftBehindBy(int rounds, std::function<void(int number)> const& round);

}  // namespace gputune::test
