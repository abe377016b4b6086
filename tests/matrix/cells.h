// A cell of the fault matrix: one thing that is wrong while a host does one thing on one board. Read this file first.
// How a cell is tried and what is expected of it is Trial::Try (Trial.cpp).
#pragma once

#include <string>
#include <vector>

#include "faults.h"
#include "matrix_boards.h"
#include "reference.h"
#include "steps.h"

namespace gputune::matrix {

struct Cell {
    Board const* board;      // a healthy board (matrix_boards.cpp)
    Step const* step;        // what the host does: InitVGAHelper, or an exported function with arguments (steps.cpp)
    std::string entryPoint;  // what is faulty: an entry point of the vendor's library, or a name from faults.h
    Fault fault;             // what is wrong with it (faults.cpp)
    Calls calls;             // which of the step's calls of it are faulty

    std::string Name() const;
    // Whether it is tried on a library that has not been initialised yet.
    bool IsFromStart() const;
};

// All cells of a board. Nobody writes them down: what a step called on the healthy board, and how often it asked for
// memory, is what can be faulty in it.
std::vector<Cell> CellsOf(Board const& board, Reference const& reference);

}  // namespace gputune::matrix
