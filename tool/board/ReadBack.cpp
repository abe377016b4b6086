#include "tool/board/ReadBack.h"

#include <cmath>

#include "tool/values/Numbers.h"
#include "tool/values/Text.h"

namespace gputune::tool {

void ReadBack::Compare(std::string what, double asked, std::optional<double> shown, Unit unit, double tolerance) {
    if (!shown) {
        AddUnreported(what);
    } else if (std::fabs(*shown - asked) <= tolerance) {
        hasEqual_ = true;
    } else {
        differences_.push_back({std::move(what), asked, *shown, unit});
    }
}

void ReadBack::AddUnreported(std::string const& what) {
    unreported_.push_back("the " + what);
}

void ReadBack::AddProblem(std::string sentence) {
    problems_.push_back(std::move(sentence));
}

std::optional<bool> ReadBack::Confirmed() const {
    if (!IsDone()) {
        return false;
    }
    return hasEqual_ && unreported_.empty() ? std::optional(true) : std::nullopt;
}

std::vector<std::string> ReadBack::Problems() const {
    std::vector<std::string> shown;
    for (Difference const& difference : differences_) {
        shown.push_back(WithUnit(difference.shown, difference.unit) + " instead of " +
                        WithUnit(difference.asked, difference.unit) + " (" + difference.what + ")");
    }
    std::vector<std::string> problems;
    if (!shown.empty()) {
        problems.push_back("The board shows " + Enumeration(shown) + ".");
    }
    problems.insert(problems.end(), problems_.begin(), problems_.end());
    return problems;
}

std::string ReadBack::Unreported() const {
    return hasEqual_ ? Enumeration(unreported_) : "";
}

}  // namespace gputune::tool
