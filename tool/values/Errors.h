// What a command throws when it cannot do its work; main turns it into a message on standard error and an exit code.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tool/values/Names.h"

namespace gputune::tool {

// Exit codes of the program.
constexpr int kExitSuccess = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;
constexpr int kExitUnsupported = 3;

// What --json prints of an error beside its text. Empty fields do not apply.
struct ErrorDetails {
    struct Range {
        int minimum = 0;
        int maximum = 0;
        Unit unit = Unit::None;
    };

    std::string code{};  // stable, lower case; every class of errors has one of its own
    int exitCode = kExitFailure;
    std::optional<Range> range{};
    std::optional<int> expectedPoints{};
    std::vector<int> adapters{};             // the indices that --adapter takes
    std::vector<std::string> controllers{};  // the system's display controllers, UTF-8
};

// The command was understood and could not be carried out. The text is for the user, UTF-8, and may have several lines.
class ToolError : public std::runtime_error {
public:
    explicit ToolError(std::string const& message, ErrorDetails details = {})
        : ToolError(message, std::move(details), "failed", kExitFailure) {}

    ErrorDetails const& Details() const { return details_; }

protected:
    ToolError(std::string const& message, ErrorDetails details, char const* code, int exitCode)
        : std::runtime_error(message), details_(std::move(details)) {
        if (details_.code.empty()) {
            details_.code = code;
        }
        if (details_.exitCode == kExitFailure) {
            details_.exitCode = exitCode;
        }
    }

private:
    ErrorDetails details_;
};

// The board does not have what the command is for, or the library cannot reach it. `why` is the end of the sentence:
// "it has no fan curve."
class UnsupportedError : public ToolError {
public:
    explicit UnsupportedError(std::string const& why)
        : ToolError("Not supported by this board: " + why, {}, "unsupported", kExitUnsupported) {}
};

// The command line asks for something that no board could do.
class UsageError : public ToolError {
public:
    explicit UsageError(std::string const& message, ErrorDetails details = {})
        : ToolError(message, std::move(details), "usage", kExitUsage) {}
};

}  // namespace gputune::tool
