// What a board shows after a change, compared with what was asked for.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tool/values/Names.h"

namespace gputune::tool {

// A change is done unless something shows that it is not; it is confirmed when everything that was asked for is shown.
class ReadBack {
public:
    // `what` names the setting: "power limit". `shown` is nothing when the board does not report it. Values are equal
    // when they differ by `tolerance` at most.
    void Compare(std::string what, double asked, std::optional<double> shown, Unit unit, double tolerance = 0);
    // The board does not report this setting.
    void AddUnreported(std::string const& what);
    // Another sign that the setting was not taken, as a sentence.
    void AddProblem(std::string sentence);

    bool IsDone() const { return differences_.empty() && problems_.empty(); }
    // Nothing when the change is done and the board does not report all of it, or when nothing was compared.
    std::optional<bool> Confirmed() const;
    // "The board shows 0 % instead of 10 % (power limit).", and the sentences of AddProblem.
    std::vector<std::string> Problems() const;
    // "the memory clock": the settings that the board does not report; empty when it reports none at all.
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

// For clocks and voltages: on their way they become whole megahertz and ratios in single precision, so fractions are
// lost.
constexpr double kClockTolerance = 1;

}  // namespace gputune::tool
