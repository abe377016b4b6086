#include "tool/serve/ActivityLoad.h"

#include <algorithm>
#include <cmath>

namespace gputune::tool {

namespace {

constexpr double kShortestTime =
    0.8;  // between two readings, in seconds: drivers refresh the counter now and then only
constexpr double kMostUncertain = 0.2;  // of the time between two readings
constexpr double kFasterThanTime = 1.1;

}  // namespace

std::optional<double> ActivityLoad::Add(double counter, double begin, double end) {
    if (isOtherUnit_) {
        return std::nullopt;
    }
    // It never shrinks: it was reset, or went over its end, of which nobody says where it is.
    if (!std::isfinite(counter) || (!earlier_.empty() && counter < earlier_.back().counter)) {
        Reset();
    }
    while (!earlier_.empty() && end - earlier_.front().begin > longestTime_) {
        earlier_.pop_front();
    }
    if (!std::isfinite(counter)) {
        return std::nullopt;
    }
    // The latest reading that is far enough back.
    std::optional<double> load;
    auto const base = std::find_if(earlier_.rbegin(), earlier_.rend(), [&](Reading const& earlier) {
        double const shortest = begin - earlier.end;
        return shortest >= kShortestTime && (end - earlier.begin) - shortest <= kMostUncertain * shortest;
    });
    if (base != earlier_.rend()) {
        double const growth = counter - base->counter;
        double const shortest = begin - base->end;
        double const longest = end - base->begin;
        if (growth > kFasterThanTime * longest) {
            isOtherUnit_ = true;
            Reset();
            return std::nullopt;
        }
        load = std::min(growth / ((shortest + longest) / 2), 1.0);
    }
    earlier_.push_back({counter, begin, end});
    return load;
}

}  // namespace gputune::tool
