#include "tool/serve/Snapshot.h"

#include <algorithm>

#include "tool/values/Numbers.h"

namespace gputune::tool {

void DurationHistogram::Add(double seconds) {
    auto const* const bucket = std::lower_bound(kBounds.begin(), kBounds.end(), seconds);
    ++counts[static_cast<std::size_t>(bucket - kBounds.begin())];
    sum += seconds;
}

bool DropStaleSample(Snapshot& snapshot, Moment const& now) {
    if (!snapshot.sample) {
        return false;
    }
    // Should one clock stand still while the machine sleeps, the other does not.
    double const age = std::max(now.steady - snapshot.sample->steadyTime, now.wall - snapshot.sample->time);
    if (age <= snapshot.longestAge) {
        return false;
    }
    snapshot.sample.reset();
    snapshot.problem = "The last sample is " + FormatNumber(age) + " s old.";
    snapshot.problemCode = "stale";
    ++snapshot.revision;
    return true;
}

Snapshot AsOf(Snapshot snapshot, Moment const& now) {
    DropStaleSample(snapshot, now);
    return snapshot;
}

}  // namespace gputune::tool
