// Work in a process of its own, a copy of this one: whatever it does to itself, this process learns of it.
#pragma once

#include <functional>
#include <string>

namespace gputune::matrix {

struct ChildResult {
    std::string answer;  // of the work
    std::string death;   // how the process ended instead, with what it said; empty when it answered
};

// Called once, before anything that has a destructor of its own at the end of the process.
void PrepareChildren();

// The work's answer, which it has this many seconds for; `last` adds to it when all of the process's own destructors
// have run.
ChildResult InChild(unsigned seconds, std::function<std::string()> const& work, std::string (*last)() = nullptr);

}  // namespace gputune::matrix
