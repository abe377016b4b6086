// What the log has to say about a fault: the rules, and the exceptions.
#pragma once

#include <optional>
#include <string>

#include "Machine.h"
#include "faults.h"
#include "matrix_boards.h"
#include "steps.h"

namespace gputune::matrix {

struct Incident {
    Board const& board;
    Step const& step;
    std::string const& entryPoint;
    Fault const& fault;
    bool worked;         // although the fault was met
    bool workedHealthy;  // what the step does on the healthy board
};

// What is missing in `lines`, the log of the step (of a step whose initialisation met the fault: of both), compared
// with `healthy`, the lines that the healthy board's has; empty when nothing is.
std::string MissingReason(Incident const& incident, test::Lines const& lines, test::Lines const& healthy);

}  // namespace gputune::matrix
