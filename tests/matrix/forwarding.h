// Cells of the functions that gputune.dll passes on to Intel's control library: each without the library, without the
// function, with every result that is a failure, and after ctlClose.
#pragma once

#include <string>
#include <vector>

#include "Trial.h"

namespace gputune::matrix {

std::vector<std::string> ForwardedFunctions();

// How many cells TryForwarding tries.
int ForwardingCells(std::string const& function);

// What is wrong, line by line, each with the name of its cell. The control library must not be loaded.
std::string TryForwarding(test::Machine& machine, Surroundings& surroundings, std::string const& function);

}  // namespace gputune::matrix
