#include "tool/board/ReadBack.h"

#include <cmath>

#include "tool/output/Result.h"

namespace gputune::tool {

namespace {

// "a, b and c"
void Append(std::string& list, std::string const& item, bool isLast) {
    list += list.empty() ? "" : isLast ? " and " : ", ";
    list += item;
}

}  // namespace

void ReadBack::Compare(std::string what, double asked, std::optional<double> shown, Unit unit, double tolerance) {
    if (!shown) {
        CannotTell(std::move(what));
    } else if (std::fabs(*shown - asked) <= tolerance) {
        hasEqual_ = true;
    } else {
        differences_.push_back({std::move(what), asked, *shown, unit});
    }
}

void ReadBack::CannotTell(std::string what) {
    untold_.push_back(std::move(what));
}

void ReadBack::AddProblem(std::string sentence) {
    problems_.push_back(std::move(sentence));
}

std::optional<bool> ReadBack::Confirmed() const {
    if (!IsDone()) {
        return false;
    }
    return hasEqual_ && untold_.empty() ? std::optional(true) : std::nullopt;
}

std::vector<std::string> ReadBack::Problems() const {
    std::vector<std::string> problems;
    std::string list;
    for (std::size_t i = 0; i < differences_.size(); ++i) {
        Difference const& difference = differences_[i];
        Append(list,
               FormatValue(difference.shown, difference.unit) + " instead of " +
                   FormatValue(difference.asked, difference.unit) + " (" + difference.what + ")",
               i + 1 == differences_.size());
    }
    if (!list.empty()) {
        problems.push_back("The board shows " + list + ".");
    }
    problems.insert(problems.end(), problems_.begin(), problems_.end());
    return problems;
}

std::string ReadBack::Untold() const {
    std::string list;
    for (std::size_t i = 0; hasEqual_ && i < untold_.size(); ++i) {
        Append(list, "the " + untold_[i], i + 1 == untold_.size());
    }
    return list;
}

}  // namespace gputune::tool
