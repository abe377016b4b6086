// What a command throws when it cannot do its work; main turns it into a message on standard error and an exit code.
#pragma once

#include <stdexcept>
#include <string>

namespace gputune::tool {

// Exit codes of the program.
constexpr int exitSuccess = 0;
constexpr int exitFailure = 1;
constexpr int exitUsage = 2;
constexpr int exitUnsupported = 3;

// The command was understood and could not be carried out. The text is for the user, UTF-8, and may have several lines.
class ToolError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The board does not have what the command is for, or the library has no way to it: nothing went wrong. `why` completes
// the sentence: "it has no fan curve."
class UnsupportedError : public ToolError {
public:
    explicit UnsupportedError(std::string const& why) : ToolError("Not supported by this board: " + why) {}
};

// The command line asks for something that no board could do.
class UsageError : public ToolError {
public:
    using ToolError::ToolError;
};

}  // namespace gputune::tool
