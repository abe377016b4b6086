// The healthy boards of the matrix, chosen so that every operation takes every way it has on one of them.
#pragma once

#include <span>

#include "Machine.h"
#include "failure_lines.h"

namespace gputune::matrix {

using test::Backend;

struct Board {
    char const* name;
    Backend backend;
    test::Machine (*make)();
    int thermalControllers = 0;  // that Overdrive 5 enumerates
};

std::span<Board const> Boards();

}  // namespace gputune::matrix
