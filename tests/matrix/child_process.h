// Runs work in a child process and reports how it ended.
#pragma once

#include <functional>
#include <string>

namespace gputune::matrix {

struct ChildResult {
    std::string answer;  // what the work returned
    std::string death;   // how the process ended without an answer, and its output; empty when it answered
};

// To be called once, before any object is made that is destroyed at the end of the process.
void PrepareChildren();

// Runs `work` in a copy of this process, for at most so many seconds. `last` runs at the end of the child, behind the
// destructors of static objects, and its result is appended to the answer.
ChildResult RunInChild(unsigned seconds, std::function<std::string()> const& work, std::string (*last)() = nullptr);

}  // namespace gputune::matrix
