// The matrix against the library's code compiled for this system with sanitizers, each cell in a process of its own.
//
//     matrix                     all cells
//     matrix PART OF             the PART-th (from 0) of every OF cells
//     matrix --only TEXT         those whose names hold the text; a red cell's name is printed
//     matrix --list              their names
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "NativeSurroundings.h"
#include "Trial.h"
#include "child_process.h"
#include "forwarding.h"
#include "machine_native.h"
#include "totals.h"

// Functions of the sanitizers, whose headers are not installed with every compiler.
extern "C" int __lsan_do_recoverable_leak_check();

// Quicker without the call stacks of allocations. Try a red cell again with ASAN_OPTIONS=malloc_context_size=30 to see
// them.
extern "C" char const* __asan_default_options();
extern "C" char const* __asan_default_options() {
    return "malloc_context_size=0";
}

// Leaks are looked for by NoLoadsAndLeaks.
extern "C" char const* __lsan_default_options();
extern "C" char const* __lsan_default_options() {
    return "leak_check_at_exit=0";
}

namespace gputune::matrix {

namespace {

struct Choice {
    int part = 0;
    int of = 1;
    char const* only = nullptr;
    bool listOnly = false;

    bool Takes(Cell const& cell, std::size_t position) const {
        return (position % static_cast<std::size_t>(of)) == static_cast<std::size_t>(part) &&
               (only == nullptr || cell.Name().find(only) != std::string::npos);
    }
};

// What is wrong at the end of a child, when the library under test has cleaned up. AMD's and NVIDIA's libraries may
// stay loaded for the life of the process.
int g_mayStayLoaded = 0;
std::string NoLoads() {
    int const loaded = test::LoadedLibraries();
    return loaded <= g_mayStayLoaded ? "" : "    " + std::to_string(loaded) + " libraries loaded at the end\n";
}
std::string NoLoadsAndLeaks() {
    return NoLoads() + (__lsan_do_recoverable_leak_check() == 0 ? "" : "    memory leaked\n");
}

constexpr unsigned kMostSecondsOfBoard = 3600;
constexpr unsigned kMostSecondsOfCell = 60;

template <class Work>
void InOwnProcess(char const* name, Work const& work) {
    ChildResult const result = RunInChild(kMostSecondsOfBoard, [&] {
        work();
        return std::string();
    });
    if (!result.death.empty()) {
        Report(name, result.death);
    }
}

class BoardMatrix {
public:
    BoardMatrix(Board const& board, Choice const& choice)
        : board_(board),
          choice_(choice),
          machine_(board.make()),
          surroundings_(machine_, LibraryOf(board)),
          trial_(board, machine_, surroundings_) {
        test::SetDisplay(L"\\\\.\\DISPLAY1", 0);
        g_mayStayLoaded = board.backend == Backend::Intel ? 0 : 1;
    }

    void Run() {
        reference_ = trial_.Observe(ObserveInChild);
        cells_ = CellsOf(board_, reference_);
        for (Cell const& cell : cells_) {
            ++SharedTotals().cells[cell.entryPoint == kMemory ? kMemoryCells : static_cast<int>(board_.backend)];
            if (choice_.listOnly) {
                Say(cell.Name() + "\n");
            }
        }
        if (choice_.listOnly) {
            return;
        }
        Try(true);
        // The other cells are tried in copies of a process that has initialised the library.
        InOwnProcess(board_.name, [this] {
            trial_.Initialise();
            Try(false);
        });
    }

private:
    static test::Machine::Library LibraryOf(Board const& board) {
        return board.backend == Backend::Intel    ? test::Machine::Library::Intel
               : board.backend == Backend::Nvidia ? test::Machine::Library::Nvidia
                                                  : test::Machine::Library::AmdNewer;
    }

    static Healthy ObserveInChild(Trial::Observation const& observe) {
        ChildResult const result = RunInChild(kMostSecondsOfCell, [&] { return Pack(observe()); });
        if (!result.death.empty()) {
            std::fprintf(stderr, "on the healthy board: %s\n", result.death.c_str());
            std::exit(1);
        }
        return Unpack(result.answer);
    }

    void Try(bool fromStart) {
        for (std::size_t position = 0; position < cells_.size(); ++position) {
            Cell const& cell = cells_[position];
            if (cell.IsFromStart() != fromStart || !choice_.Takes(cell, position)) {
                continue;
            }
            // Looking for leaks takes longer than the cell itself: it is done once for every step and entry point.
            bool const isFirst = position == 0 || cells_[position - 1].entryPoint != cell.entryPoint ||
                                 cells_[position - 1].step != cell.step;
            ChildResult const result = RunInChild(
                kMostSecondsOfCell, [&] { return trial_.Try(cell, reference_); },
                isFirst || choice_.only != nullptr ? NoLoadsAndLeaks : NoLoads);
            ++SharedTotals().tried;
            if (!result.death.empty() || !result.answer.empty()) {
                Report(cell.Name(), result.death.empty() ? result.answer : "    " + result.death);
            }
        }
    }

    Board const& board_;
    Choice const& choice_;
    test::Machine machine_;
    NativeSurroundings surroundings_;
    Trial trial_;
    Reference reference_;
    std::vector<Cell> cells_;
};

void TryForwardings(Choice const& choice) {
    test::Machine machine(test::Machine::Library::Intel);
    NativeSurroundings surroundings(machine, test::Machine::Library::Intel);
    for (std::string const& function : ForwardedFunctions()) {
        bool const isTaken =
            choice.only == nullptr || ("Forwarding / " + function).find(choice.only) != std::string::npos;
        if (choice.listOnly || !isTaken) {
            continue;
        }
        ChildResult const result = RunInChild(
            kMostSecondsOfCell, [&] { return TryForwarding(machine, surroundings, function); }, NoLoadsAndLeaks);
        SharedTotals().tried += ForwardingCells(function);
        if (!result.death.empty() || !result.answer.empty()) {
            Report("Forwarding / " + function, result.answer + result.death);
        }
    }
}

Choice Parse(int argc, char** argv) {
    Choice choice;
    if (argc == 2 && std::strcmp(argv[1], "--list") == 0) {
        choice.listOnly = true;
    } else if (argc == 3 && std::strcmp(argv[1], "--only") == 0) {
        choice.only = argv[2];
    } else if (argc == 3 && std::atoi(argv[2]) > 0) {
        choice.part = std::atoi(argv[1]);
        choice.of = std::atoi(argv[2]);
        std::printf("part %d of %d\n", choice.part, choice.of);
        std::fflush(stdout);
    } else if (argc != 1) {
        std::fprintf(stderr, "usage: %s [PART OF | --only TEXT | --list]\n", argv[0]);
        std::exit(2);
    }
    return choice;
}

int Main(int argc, char** argv) {
    Choice const choice = Parse(argc, argv);
    PrepareChildren();
    ShareTotals();
    for (Board const& board : Boards()) {
        // A process has one machine.
        InOwnProcess(board.name, [&] { BoardMatrix(board, choice).Run(); });
    }
    for (std::string const& function : ForwardedFunctions()) {
        SharedTotals().cells[kForwardingCells] += ForwardingCells(function);
    }
    InOwnProcess("Forwarding", [&] { TryForwardings(choice); });
    bool const isComplete = PrintTotals();
    bool const isGreen = SharedTotals().red == 0 && (choice.listOnly || SharedTotals().tried > 0);
    return isComplete && isGreen ? 0 : 1;
}

}  // namespace

}  // namespace gputune::matrix

int main(int argc, char** argv) {
    return gputune::matrix::Main(argc, argv);
}
