// The readings of the last hour.
#pragma once

#include <array>
#include <cstddef>
#include <deque>
#include <string>

#include "tool/serve/Snapshot.h"

namespace gputune::tool {

// Not for several threads at once: the caller sees to that.
class History {
public:
    static constexpr double kSeconds = 3600;
    // Samples that follow the one before sooner are left out, so that a short interval needs no more memory.
    static constexpr double kSpacing = 0.75;
    static constexpr std::size_t kMaximum = 4800;  // of points, about 100 bytes each

    // The interval of the samples in seconds: when they stay away for longer than three of them, that is a gap.
    explicit History(double interval) : interval_(interval) {}

    // To be called at every moment of sampling. A snapshot without a sample begins a gap. `now`: in seconds since 1970.
    void Add(Snapshot const& snapshot, double now);

    std::size_t Count() const { return points_.size(); }

    // The answer of /api/history, on one line. Has all sensors, in the order in which they are shown; "values" is null
    // for those that were not read in this hour. An unsure fan speed, and a counter that no load could be made of,
    // count as not read.
    std::string HistoryJson() const;

private:
    struct Point {
        double time = 0;
        std::array<float, GPUTUNE_HWM_KEY_COUNT> values{};  // no number where there is none
    };

    static Point Gap(double time);
    static Point ToPoint(Snapshot const& snapshot, double now);
    static bool IsGap(Point const& point);

    double interval_;
    std::deque<Point> points_;  // ascending in time
};

}  // namespace gputune::tool
