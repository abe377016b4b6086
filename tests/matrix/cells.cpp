#include "cells.h"

namespace gputune::matrix {

namespace {

using Kind = Fault::Kind;

// The faults that are also tried in the first call alone and in all later calls alone, so that an entry point's answers
// contradict each other.
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

}  // namespace

std::string Cell::Name() const {
    return std::string(board->name) + " / " + step->name + " / " + entryPoint + " / " + NameOf(fault) + " / " +
           NameOf(calls);
}

bool Cell::IsFromStart() const {
    return step == &Initialisation() || fault.kind == Kind::Missing;
}

std::vector<Cell> CellsOf(Board const& board, Reference const& reference) {
    std::vector<Cell> cells;
    for (Step const* const step : AllSteps()) {
        Healthy const& healthy = reference.at(step->name);
        auto const add = [&](std::string const& entryPoint, Fault const& fault, Calls calls = Calls::Every) {
            cells.push_back({&board, step, entryPoint, fault, calls});
        };
        if (step == &Initialisation()) {
            add(kWholeLibrary, {.kind = Kind::Missing});
        }
        for (auto const& [entryPoint, count] : healthy.calls) {
            for (Fault const& fault : FaultsOf(entryPoint)) {
                add(entryPoint, fault);
                if (count > 1 && ComesAndGoes(fault)) {
                    add(entryPoint, fault, Calls::First);
                    add(entryPoint, fault, Calls::Later);
                }
            }
        }
        if (!healthy.calls.empty()) {
            for (Fault const& fault : FaultsOfEverything()) {
                add(kEveryEntryPoint, fault);
                if (ComesAndGoes(fault)) {
                    add(kEveryEntryPoint, fault, Calls::Later);  // after the first call of each entry point
                }
            }
        }
        for (int number = 1; number <= healthy.allocations; ++number) {
            add(kMemory, {.kind = Kind::NoMemory, .value = number});
            add(kMemory, {.kind = Kind::NoMoreMemory, .value = number});
        }
    }
    return cells;
}

}  // namespace gputune::matrix
