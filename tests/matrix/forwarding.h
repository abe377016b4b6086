// The functions of the control library that are passed on: each with the library missing, the function missing, every
// failure that the library can answer, and after the end.
#pragma once

#include <string>
#include <vector>

#include "Trial.h"

namespace gputune::matrix {

std::vector<std::string> ForwardedFunctions();

// How many cells `TryForwarding` has for this function.
int ForwardingCells(std::string const& function);

// On a control library that is not loaded. What is wrong, line by line, each with the name of its cell.
std::string TryForwarding(test::Machine& machine, Surroundings& surroundings, std::string const& function);

}  // namespace gputune::matrix
