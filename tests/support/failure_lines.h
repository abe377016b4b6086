// What the log says when a vendor's entry point is missing or fails.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace gputune::test {

enum class Backend { OverdriveN, Overdrive8, Intel, Nvidia };

struct Failure {
    Backend backend;
    std::string_view operation;   // what the host calls; its name, or a text that begins with it
    std::string_view entryPoint;  // or "library": the vendor's library is not on the machine
    bool isMissing;
    int code;  // that the entry point returns
};

// One of these texts is in a line of the log; none: the log says nothing. Without a value: no rule is known.
std::optional<std::vector<std::string>> FailureLines(Failure const& failure);

}  // namespace gputune::test
