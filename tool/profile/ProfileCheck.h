// What is wrong with a profile file, measured by what the library reads from it (docs/profile-file.md).
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

// In the order of their lines.
std::vector<Problem> CheckProfile(std::string_view text);

bool HasError(std::vector<Problem> const& problems);

// FILE:LINE: error: message
std::string FormatProblem(std::string_view file, Problem const& problem);

}  // namespace gputune::tool
