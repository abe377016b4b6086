// move_time <stand-in library> <board file> <state file> <milliseconds>
//
// Moves on the time of a board whose state is in a file, for all processes that share it; from the first call on, the
// time stands still in between. So a test says when a fault begins and ends, however slow the machine is.
#include <windows.h>

#include <cstdlib>
#include <iostream>

#include "gputune_sim.h"

namespace {

template <class Function>
Function* Find(HMODULE library, char const* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(library, name)));
}

}  // namespace

int main(int count, char** words) {
    char error[512] = "the library is not there, or no stand-in";
    HMODULE const library = count == 5 ? ::LoadLibraryA(words[1]) : nullptr;
    auto const load = Find<decltype(GputuneSim_LoadBoard)>(library, "GputuneSim_LoadBoard");
    auto const keep = Find<decltype(GputuneSim_KeepState)>(library, "GputuneSim_KeepState");
    auto const advance = Find<decltype(GputuneSim_Advance)>(library, "GputuneSim_Advance");
    if (load == nullptr || keep == nullptr || advance == nullptr || load(words[2], error, sizeof(error)) == 0 ||
        keep(words[3], error, sizeof(error)) == 0) {
        std::cerr << "move_time: " << error << '\n';
        return 1;
    }
    advance(std::atoi(words[4]));
    return 0;
}
