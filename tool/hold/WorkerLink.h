// The one way to talk to a driver: through a worker process that may crash or hang without harm. This class decides
// when a worker is started and ended; it is told the time and what happened, and waits for nothing itself.
#pragma once

#include <optional>
#include <string>

#include "tool/hold/Protocol.h"

namespace gputune::tool {

// In seconds.
constexpr double kAnswerLimit = 3;   // a worker that owes an answer for longer is ended
constexpr double kOpenLimit = 20;    // for the first answer: the process starts, the library looks for the board
constexpr double kPingInterval = 1;  // the longest time without an order
constexpr double kSilenceLimit = 3;  // an armed worker that has had no order for longer takes everything back and ends

// What the link does outside.
class WorkerPort {
public:
    virtual ~WorkerPort() = default;
    // Throws ToolError when no process can be started.
    virtual void StartWorker() = 0;
    // Ends the worker at once, whatever it does.
    virtual void EndWorker() = 0;
    virtual void SendToWorker(std::string const& line) = 0;
};

class WorkerLink {
public:
    explicit WorkerLink(WorkerPort& port) : port_(port) {}

    // What happened, in the words of a message.
    struct Event {
        enum class Kind { Nothing, Answered, Lost };
        Kind kind = Kind::Nothing;
        std::optional<Answer> answer{};  // the first answer of every worker is that to Open
        std::string why{};               // it was lost
    };

    // Whether an order may be sent: a worker runs, has opened the board and owes no answer.
    bool IsReady() const { return state_ == State::Ready; }
    // Whether there is no worker, until OnTime starts one.
    bool IsStopped() const { return state_ == State::Stopped; }
    void Send(Request const& request, double now);

    // A line came from the worker.
    Event OnLine(std::string const& line, double now);
    // The worker has closed its side of the pipe.
    Event OnGone(double now);
    // Time has passed: starts a worker when it is time, finds one that hangs, and keeps an idle one alive.
    Event OnTime(double now);
    // When OnTime is to be called next, at the latest.
    double NextTime() const;

    // Ends the worker, of which the board is not served well; the next one is started after a pause.
    void Replace(double now);
    // Time has passed in which the worker could not answer, because the whole machine stood still.
    void Excuse(double now);
    // From now on, no pause is longer than this.
    void LimitPauses(double seconds) { longestPause_ = seconds; }
    // How many workers were lost or replaced.
    int Restarts() const { return restarts_; }
    // How long the last answer took.
    double LastDuration() const { return lastDuration_; }

private:
    enum class State { Stopped, Opening, Ready, Busy };

    void EndAndPause(double now);
    Event Lost(std::string why, double now);
    void Put(Request const& request, double now, double limit);

    WorkerPort& port_;
    State state_ = State::Stopped;
    double startAt_ = 0;  // while it is stopped
    double openedAt_ = 0;
    double sentAt_ = 0;
    double deadline_ = 0;  // of the answer that is owed
    Order asked_ = Order::Open;
    double lastDuration_ = 0;
    double longestPause_ = 30;
    int failures_ = 0;  // workers in a row that did not serve for a minute
    int restarts_ = 0;
};

}  // namespace gputune::tool
