// Intel's activity counter as a load.
#pragma once

#include <deque>
#include <optional>

namespace gputune::tool {

// The counter's unit does not come through the library's functions, and neither does the time at which the driver took
// it. Seconds of full load are assumed until the counter grows faster than time: it has another unit then, and there is
// no load any more. The time is between the order and the answer, which the load allows for.
class ActivityLoad {
public:
    // longestTime: in seconds; an average over more is no load of now.
    explicit ActivityLoad(double longestTime) : longestTime_(longestTime) {}

    // The counter, read between two moments of one steady clock, in seconds. A load from 0 to 1; nothing when there is
    // no earlier reading at a fitting time, or the counter was reset meanwhile.
    std::optional<double> Add(double counter, double begin, double end);
    // Forgets the readings so far, after a time in which nobody knows what happened to the counter.
    void Reset() { earlier_.clear(); }

private:
    struct Reading {
        double counter;
        double begin;
        double end;
    };

    double longestTime_;
    bool isOtherUnit_ = false;
    std::deque<Reading> earlier_;
};

}  // namespace gputune::tool
