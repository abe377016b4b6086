// What the host's steps do on a healthy board: cells are made from it, and compared with it.
#pragma once

#include <map>
#include <string>

#include "Machine.h"

namespace gputune::matrix {

// How often the step of a cell is run with the fault.
constexpr int kRuns = 3;

struct Healthy {
    bool worked = false;
    int allocations = 0;               // of the library under test
    std::map<std::string, int> calls;  // by entry point
    test::Lines log;
    // Answers of the step and then of all operations, a line each:
    test::Lines after;     // after kRuns runs of the step
    test::Lines afterOne;  // after a single start; of InitVGAHelper alone
};

// By the steps' names.
using Reference = std::map<std::string, Healthy>;

// To hand a result from process to process; without afterOne.
std::string Pack(Healthy const& healthy);
Healthy Unpack(std::string const& text);

}  // namespace gputune::matrix
