// The cells of a board, from what its operations were seen to use.
#include <algorithm>

#include "Trial.h"

namespace gputune::matrix {

namespace {

using Kind = Fault::Kind;

// Some calls of an entry point but not all: for the faults in which the calls could contradict one another.
bool ComesAndGoes(Fault const& fault) {
    switch (fault.kind) {
        case Kind::Code:
            return fault.value == -1;
        case Kind::CodeAndOutputs:
        case Kind::Silent:
        case Kind::OffBy:
        case Kind::NullList:
        case Kind::ForeignList:
            return true;
        case Kind::Word:
            return fault.value == 0 || fault.value == 1024 || fault.value == 100000;
        default:
            return false;
    }
}

void AddMemory(std::vector<Cell>& cells, Board const& board, Step const& step, int allocations) {
    for (int number = 1; number <= allocations; ++number) {
        for (Kind const kind : {Kind::NoMemory, Kind::NoMoreMemory}) {
            cells.push_back({&board, &step, "memory", {.kind = kind, .value = number}, Calls::Every});
        }
    }
}

}  // namespace

std::string Cell::Name() const {
    return std::string(board->name) + " / " + step->name + " / " + entryPoint + " / " + NameOf(fault) + " / " +
           NameOf(calls);
}

bool Cell::IsFromStart() const {
    return step == &Initialisation() || fault.kind == Kind::Missing;
}

Step const& SecondInitialisation() {
    static Step const again{"InitVGAHelper once more"};
    return again;
}

std::vector<Step const*> MatrixSteps() {
    std::vector<Step const*> steps{&Initialisation(), &SecondInitialisation()};
    for (Step const& step : Steps()) {
        steps.push_back(&step);
    }
    return steps;
}

std::vector<Cell> CellsOf(Board const& board, Reference const& reference) {
    std::vector<Cell> cells;
    for (Step const* const step : MatrixSteps()) {
        Healthy const& healthy = reference.at(step->name);
        if (step == &Initialisation()) {
            cells.push_back({&board, step, "library", {.kind = Kind::Missing}, Calls::Every});
        }
        for (auto const& [entryPoint, count] : healthy.calls) {
            for (Fault const& fault : FaultsOf(entryPoint)) {
                cells.push_back({&board, step, entryPoint, fault, Calls::Every});
                if (count > 1 && ComesAndGoes(fault)) {
                    cells.push_back({&board, step, entryPoint, fault, Calls::First});
                    cells.push_back({&board, step, entryPoint, fault, Calls::Later});
                }
            }
        }
        if (!healthy.calls.empty()) {
            for (Fault const& fault : FaultsOfEverything()) {
                cells.push_back({&board, step, kEveryEntryPoint, fault, Calls::Every});
                if (ComesAndGoes(fault)) {
                    // After the first call of each.
                    cells.push_back({&board, step, kEveryEntryPoint, fault, Calls::Later});
                }
            }
        }
        AddMemory(cells, board, *step, healthy.allocations);
    }
    return cells;
}

}  // namespace gputune::matrix
