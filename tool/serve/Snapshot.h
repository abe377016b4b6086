// What the exporter knows at one moment. Everything that it serves is made from this: the metrics, the page, the
// readings as JSON.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "tool/hold/Protocol.h"

namespace gputune::tool {

// One moment on three clocks, all in seconds.
struct Moment {
    double steady = 0;  // of a clock that nobody sets and that goes on while the machine sleeps
    double wall = 0;    // since 1970
    double fine = 0;    // of a clock that knows microseconds, for durations; may stand still while the machine sleeps
};

// One reading of the board that succeeded, as a whole or in part.
struct Sample {
    double time = 0;        // in seconds since 1970
    double steadyTime = 0;  // the same moment on the steady clock
    Readings readings{};    // what was read just then, nothing else
    BoardSettings shown{};  // the settings that the board showed
    // Intel's activity counter as a load from 0 to 1, where two samples and their times allowed it.
    std::optional<double> load{};
};

// How long the samples took.
struct DurationHistogram {
    // Upper bounds of the buckets, in seconds; the last bucket has none.
    static constexpr std::array<double, 9> kBounds{0.001, 0.005, 0.01, 0.025, 0.05, 0.1, 0.25, 1, 3};
    std::array<std::uint64_t, kBounds.size() + 1> counts{};  // of each bucket alone
    double sum = 0;                                          // in seconds

    void Add(double seconds);
};

struct Snapshot {
    std::optional<BoardFacts> board{};  // since a worker has opened it
    // The last sample, when it succeeded; nothing when it failed, when the worker was lost, when the board has no
    // power. Serve AsOf, which also looks at its age.
    std::optional<Sample> sample{};
    double longestAge = 5;      // of a sample that is served, in seconds
    double lastSampleTime = 0;  // of the last sample that succeeded, in seconds since 1970; 0: none yet
    std::string problem{};      // why there is no sample, in a sentence or more; empty when there is one
    std::string problemCode{};  // as ErrorDetails; or "lost", "unread", "stale", "not_powered", "starting"
    bool powerIsKnown = false;  // Windows tells whether the board has power
    bool isPoweredOff = false;  // the board has no power, so it is not asked
    // By function and answer of the vendor's library: how many calls failed since the start.
    std::map<std::pair<std::string, std::string>, std::uint64_t> readFailures{};
    std::uint64_t workerRestarts = 0;
    DurationHistogram durations{};
    double startTime = 0;        // of the exporter, in seconds since 1970
    std::uint64_t revision = 0;  // another one after every change
};

// Removes the sample when it is older than longestAge on either clock, whoever slept. Whether it did.
bool DropStaleSample(Snapshot& snapshot, Moment const& now);
// What is to be served now: without a stale sample.
Snapshot AsOf(Snapshot snapshot, Moment const& now);

}  // namespace gputune::tool
