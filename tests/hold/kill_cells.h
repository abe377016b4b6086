// The cells of the kill matrix: a board, a step of a hold on it, and what happens there.
#pragma once

#include <string>
#include <vector>

namespace gputune::test {

// A call of the vendor's library by the first worker of a hold.
struct Step {
    std::string entryPoint{};
    int call = 0;  // of this entry point, counted from 1

    bool IsWrite() const;
};

enum class Strike {
    KillWorker,
    KillSupervisor,
    KillBoth,  // and the next start
    SuspendWorker,
    SuspendSupervisor,
    Hang,
    Crash,
    Fail,    // this one call
    Forget,  // the driver loses all settings with this call
    // Without a step of the hold, in its first seconds or while it holds:
    Absent,       // from kFaultBegins on, the temperature cannot be read
    Implausible,  // from then on, it is nonsense
    Restart,      // from then on until kFaultEnds, every call fails, and the settings are lost
    Stuck,        // from then on, the temperature stays while the load rises
    Drop,         // the driver drops other settings with every change of the fan
    Resume,       // both processes stand still for some seconds
    Interrupt,    // Ctrl+C
};

// Seconds of the board's time.
constexpr double kFaultBegins = 8;
constexpr double kFaultEnds = 13;

char const* StrikeName(Strike strike);

struct Cell {
    std::string board{};  // the name of its file
    Step step{};
    bool before = true;  // the call has no effect yet; or it has had it
    Strike strike = Strike::KillWorker;
    bool ending = false;                     // the hold was told to end before this step
    std::vector<std::string> entryPoints{};  // of Restart: those that the hold calls

    // Whether it happens at a step.
    bool HasStep() const { return strike < Strike::Absent; }
    // Whether the board file makes it happen.
    bool IsFault() const { return strike >= Strike::Crash && strike <= Strike::Drop; }
    std::string Name() const;
};

// A run that nothing disturbed: the calls until the settings are in force, and those behind the order to end.
struct Reference {
    std::vector<std::string> held{};
    std::vector<std::string> ending{};
};

// All cells of a board: at every write all strikes, before and after it; between them, where the fan may be held, two
// strikes at every step in turn; one at every step before the first write; and what needs no step.
std::vector<Cell> CellsOf(std::string const& board, Reference const& reference);

}  // namespace gputune::test
