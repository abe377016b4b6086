// The healthy boards of the matrix: between them, every operation goes every way it can.
#pragma once

#include <span>

#include "FaultyVendor.h"
#include "Machine.h"

namespace gputune::matrix {

enum class Backend { OverdriveN, Overdrive8, Intel, Nvidia };

struct Board {
    char const* name;
    Backend backend;
    test::Machine::Library library;
    wchar_t const* caption;
    test::Machine (*make)();
    int thermalControllers;
};

std::span<Board const> Boards();
char const* NameOf(Backend backend);

}  // namespace gputune::matrix
