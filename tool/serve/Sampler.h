// Samples a board at its own pace through a worker process, and fills the snapshot that the exporter serves. Like Hold,
// this class is told the time and what the worker said, and waits for nothing itself. It changes nothing on the board.
#pragma once

#include <optional>
#include <string>

#include "tool/hold/WorkerLink.h"
#include "tool/serve/ActivityLoad.h"
#include "tool/serve/Snapshot.h"

namespace gputune::tool {

// Between two samples, in seconds.
constexpr double kShortestInterval = 0.2;
constexpr double kLongestInterval = 60;

// What the sampler does outside.
class SamplerPort : public WorkerPort {
public:
    // Whether the board's device has power; nothing when Windows does not tell. Asks Windows, never the device; quick.
    // `vendor` as GputuneVendor, GPUTUNE_VENDOR_UNKNOWN before a board was opened.
    virtual std::optional<bool> IsPowered(std::uint32_t vendor) = 0;
};

class Sampler {
public:
    // interval: in seconds, between the bounds above.
    Sampler(double interval, SamplerPort& port, Moment const& start);

    // The worker's line; the end of its pipe; the time. The caller also calls OnTime after each of the others.
    void OnLine(std::string const& line, Moment const& now);
    void OnGone(Moment const& now);
    void OnTime(Moment const& now);
    // When OnTime is to be called next, at the latest, on the steady clock.
    double NextTime() const;

    // As it was after the last call; another revision when anything has changed.
    Snapshot const& Current() const { return snapshot_; }

private:
    void Handle(WorkerLink::Event const& event, Moment const& now);
    void OnOpened(Answer const& answer, Moment const& now);
    void OnSampled(Answer const& answer, Moment const& now);
    void CountFailures(Answer const& answer);
    void LoseSample(std::string const& problem, std::string const& code);
    void OnLost(std::string const& problem, std::string const& code);
    bool HasPower();
    double DueTime() const;
    bool MayNotStart() const;
    void PlanNextSample(Moment const& now);

    double interval_;
    SamplerPort& port_;
    WorkerLink link_;
    ActivityLoad activity_;
    Snapshot snapshot_;
    double nextSample_;
    double lastTime_;
    double sentAt_ = 0;  // the order for the last sample, on the fine clock
    int unread_ = 0;     // samples in a row that read nothing
};

}  // namespace gputune::tool
