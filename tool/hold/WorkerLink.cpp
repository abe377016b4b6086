#include "tool/hold/WorkerLink.h"

#include <algorithm>
#include <array>

#include "tool/values/Errors.h"
#include "tool/values/Quoted.h"

namespace gputune::tool {

namespace {

// Before the next worker, in seconds. The first worker that is lost is replaced at once: until then a fan may stand at
// its last speed.
constexpr std::array<double, 7> kPauses = {0, 0.5, 1, 2, 5, 10, 30};
// A worker that was open for so long has served well.
constexpr double kServedWell = 60;

}  // namespace

void WorkerLink::Put(Request const& request, double now, double limit) {
    asked_ = request.order;
    sentAt_ = now;
    deadline_ = now + limit;
    port_.SendToWorker(ToLine(request));
}

void WorkerLink::Send(Request const& request, double now) {
    state_ = State::Busy;
    Put(request, now, kAnswerLimit);
}

void WorkerLink::EndAndPause(double now) {
    bool const hadServed = state_ != State::Opening && now - openedAt_ >= kServedWell;
    port_.EndWorker();
    failures_ = hadServed ? 0 : std::min<int>(failures_ + 1, kPauses.size());
    double const pause = failures_ == 0 ? 0 : kPauses[static_cast<std::size_t>(failures_) - 1];
    startAt_ = now + std::min(pause, longestPause_);
    state_ = State::Stopped;
    ++restarts_;
}

WorkerLink::Event WorkerLink::Lost(std::string why, double now) {
    EndAndPause(now);
    return {.kind = Event::Kind::Lost, .why = std::move(why)};
}

void WorkerLink::Replace(double now) {
    EndAndPause(now);
}

void WorkerLink::Excuse(double now) {
    deadline_ = std::max(deadline_, now + kAnswerLimit);
}

WorkerLink::Event WorkerLink::OnLine(std::string const& line, double now) {
    if (state_ == State::Stopped) {
        return {};  // of a worker that was ended
    }
    std::optional<Answer> answer = ReadAnswer(line);
    bool const isOwed = state_ == State::Opening || state_ == State::Busy;
    if (!answer || !isOwed || answer->order != asked_) {
        return Lost("the worker process said " + Quoted(line), now);
    }
    lastDuration_ = now - sentAt_;
    if (state_ == State::Opening) {
        openedAt_ = now;
    }
    state_ = State::Ready;
    sentAt_ = now;
    if (answer->order == Order::Ping) {
        return {};
    }
    return {.kind = Event::Kind::Answered, .answer = std::move(answer)};
}

WorkerLink::Event WorkerLink::OnGone(double now) {
    if (state_ == State::Stopped) {
        return {};
    }
    return Lost(
        state_ == State::Busy ? "the worker process ended during " + OrderName(asked_) : "the worker process ended",
        now);
}

WorkerLink::Event WorkerLink::OnTime(double now) {
    switch (state_) {
        case State::Stopped:
            if (now >= startAt_) {
                state_ = State::Opening;
                try {
                    port_.StartWorker();
                    Put({.order = Order::Open}, now, kOpenLimit);
                } catch (ToolError const& error) {
                    return Lost(error.what(), now);
                }
            }
            break;
        case State::Opening:
        case State::Busy:
            if (now >= deadline_) {
                return Lost("the driver did not answer in time (" + OrderName(asked_) + ")", now);
            }
            break;
        case State::Ready:
            if (now >= sentAt_ + kPingInterval) {
                state_ = State::Busy;
                Put({.order = Order::Ping}, now, kAnswerLimit);
            }
            break;
    }
    return {};
}

double WorkerLink::NextTime() const {
    switch (state_) {
        case State::Stopped:
            return startAt_;
        case State::Opening:
        case State::Busy:
            return deadline_;
        case State::Ready:
            break;
    }
    return sentAt_ + kPingInterval;
}

}  // namespace gputune::tool
