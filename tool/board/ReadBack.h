// What a board shows after a change, beside what was asked for. Independent of the operating system.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tool/values/Names.h"

namespace gputune::tool {

// A change is done unless something shows that it is not; it is confirmed when everything that was asked for is shown.
class ReadBack {
public:
    // `what` names the setting: "power limit". Without `shown` the board does not tell it. Values count as equal when
    // they are no further apart than `tolerance`.
    void Compare(std::string what, double asked, std::optional<double> shown, Unit unit, double tolerance = 0);
    // The board does not tell this setting.
    void AddUnreported(std::string const& what);
    // Something else says that the setting was not taken: a sentence.
    void AddProblem(std::string sentence);

    bool IsDone() const { return differences_.empty() && problems_.empty(); }
    // Nothing when it is done and the board does not tell all of it, or nothing was asked for.
    std::optional<bool> Confirmed() const;
    // "The board shows 0 % instead of 10 % (power limit).", and what was added.
    std::vector<std::string> Problems() const;
    // The settings that the board does not tell; empty when it tells none at all.
    std::string Unreported() const;

private:
    struct Difference {
        std::string what;
        double asked;
        double shown;
        Unit unit;
    };

    std::vector<Difference> differences_;
    std::vector<std::string> problems_;
    std::vector<std::string> unreported_;
    bool hasEqual_ = false;
};

// Clocks and voltages come back through whole megahertz and single-precision ratios, which cut off fractions.
constexpr double kClockTolerance = 1;

}  // namespace gputune::tool
