// Trying a cell of the matrix: one operation with one fault, what is expected of it, and how it recovers.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "FaultyVendor.h"
#include "LogTail.h"
#include "matrix_boards.h"
#include "steps.h"

namespace gputune::matrix {

// What a step does on the healthy board.
struct Healthy {
    bool worked = false;
    int allocations = 0;
    std::map<std::string, int> calls;  // by entry point
    test::Lines log;
    // The answers of the step itself and of all steps then, after the step was done kRepeats times; and of an
    // initialisation, after it was not done before.
    test::Lines after;
    test::Lines afterOne;
};

// By the steps' names.
using Reference = std::map<std::string, Healthy>;

// How often a step meets its fault: in the first the answer is judged, and in the others nothing may be left behind.
constexpr int kRepeats = 3;

struct Cell {
    Board const* board;
    Step const* step;
    std::string entryPoint;  // or what else is faulty
    Fault fault;
    Calls calls;

    std::string Name() const;
    // Whether it has to be tried on a library that is not initialised yet.
    bool IsFromStart() const;
};

// The steps of the matrix: the initialisation, the same once more, and all operations.
std::vector<Step const*> MatrixSteps();
Step const& SecondInitialisation();

// All cells of a board.
std::vector<Cell> CellsOf(Board const& board, Reference const& reference);

// The surroundings of the library under test, as far as they differ from system to system.
class Surroundings {
public:
    virtual test::Exports const& Api() = 0;
    virtual std::size_t MemoryInUse() { return 0; }
    // From the library's allocation `first` (from 1) on none succeed, or that one alone; 0: all do. It counts from
    // CountAllocations.
    virtual void RefuseMemory(int first, bool thenAll) = 0;
    virtual void CountAllocations() {}
    virtual int Allocations() { return 0; }
    // The vendor's library is on the machine or not.
    virtual void PutLibrary(bool isThere) = 0;

protected:
    ~Surroundings() = default;
};

class Trial {
public:
    Trial(Surroundings& surroundings, FaultyVendor& vendor) : surroundings_(surroundings), vendor_(vendor) {}

    void Initialise() { Do(Initialisation()); }

    // What a step does; `initialised`: on a library that is.
    Healthy Observe(Step const& step, bool initialised);
    // The answers after one initialisation.
    Healthy ObserveOne();

    // What is wrong, line by line.
    std::string Try(Cell const& cell, Reference const& reference);

private:
    StepAnswer Do(Step const& step);
    test::Lines Answers(Step const& step);
    void Break(Cell const& cell);
    void Mend(Cell const& cell);
    void Meet(Cell const& cell, Healthy const& healthy);
    void MeetAgain(Cell const& cell);
    void Recover(Cell const& cell, Reference const& reference);
    void CompareUnaffected(Cell const& cell, Reference const& reference, test::Lines const& answers);
    void Compare(test::Lines const& answers, test::Lines const& expected);
    void Complain(std::string const& what);

    Surroundings& surroundings_;
    FaultyVendor& vendor_;
    LogTail log_;
    test::Lines startLog_;
    bool hasBackend_ = false;
    std::string complaints_;
};

}  // namespace gputune::matrix
