// Whether the log gives the reason of a failure.
#pragma once

#include <string>

#include "Machine.h"
#include "cells.h"

namespace gputune::matrix {

// What is missing in `log`, which the cell's step has left; empty when nothing is. `worked`: the step did with the
// fault what it does without.
std::string MissingReason(Cell const& cell, bool worked, test::Lines const& log, Healthy const& healthy);

}  // namespace gputune::matrix
