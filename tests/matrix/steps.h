// What a host does: InitVGAHelper, and the exported operations with arguments that make them work.
#pragma once

#include <string>
#include <vector>

#include "operations.h"

namespace gputune::matrix {

// A predefined mode of the profile file.
struct ModeValues {
    double gpu;     // factor of the default GPU clock
    double memory;  // factor of the default memory clock
    int power;      // limit in percent
};
constexpr ModeValues kOverclockMode{1.05, 1.1, 10};
constexpr ModeValues kSilentMode{0.9, 0.95, -10};
// The profile file with these modes.
std::string ProfileText();

struct Step {
    std::string name;
    test::Operation const* operation = nullptr;  // null: InitVGAHelper
    test::Arguments arguments{};

    bool IsInitialisation() const { return operation == nullptr; }
};

Step const& Initialisation();
// InitVGAHelper on an initialised library.
Step const& SecondInitialisation();

// All exported functions but InitVGAHelper; those with arguments once for every way that these make them go.
std::vector<Step> const& Operations();

// Both initialisations, and all operations.
std::vector<Step const*> const& AllSteps();

struct StepAnswer : test::Answer {
    bool worked = true;  // false also for a record that is not valid, and for a number that says "not available"
    bool threw = false;  // std::bad_alloc, which only InitVGAHelper may let through
};

StepAnswer Run(test::Exports const& api, Step const& step);

}  // namespace gputune::matrix
