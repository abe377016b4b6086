// Tries cells on a board: the fault, what is expected with it, and what is expected when it is gone.
#pragma once

#include <functional>
#include <string>

#include "FaultyVendor.h"
#include "LogTail.h"
#include "cells.h"

namespace gputune::matrix {

// What differs between the native machine and Windows.
class Surroundings {
public:
    virtual test::Exports const& Api() = 0;
    // Installs the vendor's library on the machine, or takes it away.
    virtual void PutLibrary(bool isThere) = 0;

    // The memory of the library under test, in bytes; 0 where it is not known.
    virtual std::size_t MemoryInUse() { return 0; }
    virtual void CountAllocations() {}
    // Since CountAllocations.
    virtual int Allocations() { return 0; }
    // Allocation `first` since CountAllocations, counted from 1, fails; with `thenAll` all later ones fail, too. 0:
    // none fails.
    virtual void RefuseMemory(int first, bool thenAll) = 0;

protected:
    ~Surroundings() = default;
};

class Trial {
public:
    // `machine` is what the board's `make` has made.
    Trial(Board const& board, test::Machine& machine, Surroundings& surroundings);

    void Initialise() { Do(Initialisation()); }

    // `onFreshLibrary` runs what it is given on a library that was not initialised before.
    using Observation = std::function<Healthy()>;
    Reference Observe(std::function<Healthy(Observation const&)> const& onFreshLibrary);

    // What is wrong, line by line. The library under test must be initialised, but for Cell::IsFromStart.
    std::string Try(Cell const& cell, Reference const& reference);

private:
    StepAnswer Do(Step const& step);
    Healthy Observe(Step const& step);
    test::Lines AnswersAfter(Step const& step);
    void PutFault(Cell const& cell);
    void RemoveFault(Cell const& cell);
    void ExpectMemoryStays(std::function<StepAnswer()> const& run);
    void ExpectRecovery(Cell const& cell, Reference const& reference, bool hasBackend);
    void ExpectSame(std::string const& answer, std::string const& healthy);
    void Expect(bool holds, std::string const& otherwise);

    Surroundings& surroundings_;
    FaultyVendor vendor_;
    LogTail log_;
    std::string failures_;
};

}  // namespace gputune::matrix
