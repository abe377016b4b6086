// What is wrong with a profile file, measured by what the library reads from it (docs/profile-file.md). Pure.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace gputune::tool {

// The library refuses longer files. Bytes.
constexpr std::size_t largestProfileFile = 4 * 1024 * 1024;

enum class Severity {
    Error,    // something has no effect, keeps the file from being read, or plans what no board should be sent
    Warning,  // it works, and was perhaps not meant so
};

struct Problem {
    std::size_t line;    // from 1
    std::size_t column;  // from 1, in characters of UTF-8
    Severity severity;
    std::string message;
};

// In the order of their places in the text.
std::vector<Problem> CheckProfile(std::string_view text);

bool HasError(std::vector<Problem> const& problems);

// FILE:LINE:COLUMN: error: message
std::string FormatProblem(std::string_view file, Problem const& problem);

}  // namespace gputune::tool
