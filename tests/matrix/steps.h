// What a host does: the exported operations with arguments that make them work, and the initialisation.
#pragma once

#include <string>
#include <vector>

#include "operations.h"

namespace gputune::matrix {

// A predefined mode of the profile file: factors of the default clocks, and percent.
struct ModeValues {
    double gpu;
    double memory;
    int power;
};
constexpr ModeValues kOverclockMode{1.05, 1.1, 10};
constexpr ModeValues kSilentMode{0.9, 0.95, -10};
// The file that has them.
std::string ProfileText();

// An operation with arguments; without an operation, the initialisation.
struct Step {
    std::string name;
    test::Operation const* operation = nullptr;
    test::Arguments arguments{};

    bool IsInitialisation() const { return operation == nullptr; }
};

Step const& Initialisation();

// All operations, in one order; those with arguments as often as there are ways for them to go.
std::vector<Step> const& Steps();

struct StepAnswer : test::Answer {
    // What the answer stands for: false also from a record that is not valid, and from a number that is not available.
    bool worked = true;
    bool threw = false;  // the one exception that is promised, from the initialisation alone
};

StepAnswer Run(test::Exports const& api, Step const& step);

}  // namespace gputune::matrix
