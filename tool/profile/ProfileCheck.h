// Finds mistakes in a profile file: what the library would not read as intended (docs/profile-file.md).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/profile/NumberCheck.h"

namespace gputune::tool {

struct Problem {
    int line;  // from 1
    Severity severity;
    std::string message;
};

// Sorted by line.
std::vector<Problem> CheckProfile(std::string_view text);

bool HasError(std::vector<Problem> const& problems);

// FILE:LINE: error: message
std::string FormatProblem(std::string_view file, Problem const& problem);

}  // namespace gputune::tool
