#include "tool/hold/Hold.h"

#include <algorithm>

#include "tool/values/Errors.h"
#include "tool/values/Numbers.h"

namespace gputune::tool {

namespace {

// In seconds.
constexpr double kGap = 5;            // a longer time between two looks at the clock: the machine slept
constexpr double kLongestWait = 1;    // so that a gap shows
constexpr double kRetry = 0.5;        // before an order that was refused is sent again
constexpr double kEndLimit = 20;      // for taking everything back
constexpr double kRestoreLimit = 60;  // the same for `restore`, which may run while the driver starts
constexpr double kPauseWhenTouched = 1;
constexpr double kLongestPause = 30;

constexpr int kMostLooks = 3;
constexpr int kMostTakeBacks = 5;
constexpr int kMostRefusals = 4;

}  // namespace

Hold::Hold(std::optional<HoldSettings> settings, HoldPort& port)
    : settings_(std::move(settings)), port_(port), link_(port) {}

void Hold::OnLine(std::string const& line, double now) {
    Handle(link_.OnLine(line, now), now);
}

void Hold::OnGone(double now) {
    Handle(link_.OnGone(now), now);
}

void Hold::OnTime(double now) {
    if (lastTime_ && now - *lastTime_ > kGap) {
        OnGap(now - *lastTime_, now);
    }
    lastTime_ = now;
    if (!settings_ && !endsAt_) {
        endsAt_ = now + kRestoreLimit;
    }
    if (endsAt_ && now >= *endsAt_ && !IsEnded()) {
        End(kExitFailure,
            problem_.empty() ? "The fan could not be returned to automatic control in time; the next start tries again."
                             : problem_,
            problemCode_);
        return;
    }
    Handle(link_.OnTime(now), now);
}

double Hold::NextTime() const {
    double next = link_.NextTime();
    if (link_.IsReady() && (phase_ == Phase::Looking || phase_ == Phase::Holding)) {
        next = std::min(next, nextSample_);
    }
    if (retryAt_ > lastTime_.value_or(0)) {
        next = std::min(next, retryAt_);
    }
    next = std::min(next, lastTime_.value_or(0) + kLongestWait);
    return endsAt_ ? std::min(next, *endsAt_) : next;
}

void Hold::Handle(WorkerLink::Event const& event, double now) {
    if (IsEnded()) {
        return;
    }
    switch (event.kind) {
        case WorkerLink::Event::Kind::Nothing:
            break;
        case WorkerLink::Event::Kind::Lost:
            OnLost(event.why);
            break;
        case WorkerLink::Event::Kind::Answered:
            OnAnswer(*event.answer, now);
            break;
    }
    // Without a last look at the clock, time has passed that is not in `now`.
    if (!IsEnded() && lastTime_) {
        Continue(now);
    }
}

void Hold::OnAnswer(Answer const& answer, double now) {
    switch (answer.order) {
        case Order::Open:
            OnOpened(answer, now);
            break;
        case Order::Ping:
            break;
        case Order::Arm:
            isArmed_ = answer.done;
            break;
        case Order::Sample:
            OnSample(answer, now);
            break;
        case Order::AutomaticFan:
            OnReleased(answer, now);
            break;
        case Order::FanSpeed:
        case Order::FanCurve:
            OnFanSet(answer, now);
            break;
        case Order::PowerLimit:
            OnPowerSet(answer, now);
            break;
        case Order::Profile:
            OnProfileSet(answer, now);
            break;
        case Order::TakeBack:
            OnTakenBack(answer, now);
            break;
    }
}

void Hold::OnOpened(Answer const& answer, double now) {
    if (!answer.done) {
        problem_ = answer.problem;
        problemCode_ = answer.code;
        if (!board_ && settings_) {
            End(answer.exitCode, answer.problem, answer.code);
            return;
        }
        OnLost(answer.problem);
        link_.Replace(now);
        return;
    }
    problem_.clear();
    problemCode_.clear();
    nextSample_ = now;
    if (board_) {
        return;
    }
    board_ = answer.board;
    try {
        if (settings_) {
            FitToBoard(*settings_, *board_);
            ownCurve_ = CanUseOwnCurve(*settings_, *board_);
            mustRelease_ = settings_->HoldsFan();
            for (auto const& [setting, isHeld] :
                 {std::pair(Setting::Fan, settings_->HoldsFan()),
                  std::pair(Setting::Power, settings_->power || !settings_->profile.empty()),
                  std::pair(Setting::Clocks, !settings_->profile.empty())}) {
                if (isHeld) {
                    ClaimOf(setting).Hold();
                }
            }
        }
        left_ = port_.Begin(*board_);
        Report(HoldEvent::Opened, "Opened " + (board_->name.empty() ? "the board" : board_->name) + ", " +
                                      ApiName(board_->api).text + ".");
    } catch (ToolError const& error) {
        End(error.Details().exitCode, error.what(), error.Details().code);
        return;
    }
    lastTime_.reset();  // the user may have taken long to answer
    phase_ = left_ ? Phase::Restoring : Phase::Looking;
    if (!left_ && !settings_) {
        End(kExitSuccess, "", "");
    }
}

void Hold::OnLost(std::string const& why) {
    bool const returnsFan = board_ && ((settings_ && ClaimOf(Setting::Fan).IsHeld()) || isTouched_);
    Report(HoldEvent::WorkerLost,
           why + (returnsFan ? ". A new worker returns the fan to automatic control." : ". A new worker starts."));
    isArmed_ = false;
    inForce_ = false;
    valid_ = 0;
    unread_ = 0;
    speed_.reset();
    wantedSpeed_.reset();
    curveIsSet_ = false;
    mustSetPower_ = false;
    mustSetProfile_ = false;
    mustRelease_ = mustRelease_ || returnsFan;
}

void Hold::OnGap(double seconds, double now) {
    link_.Excuse(now);
    judge_.Reset();
    if (phase_ == Phase::Holding) {
        Release("the machine stood still for " + FormatNumber(seconds) + " s", HoldEvent::Resumed);
    }
}

void Hold::Stop(std::string const& why, double now) {
    if (phase_ != Phase::Ending && phase_ != Phase::Ended) {
        BeginEnd(why, kExitSuccess, now);
    }
    Handle({}, now);
}

void Hold::BeginEnd(std::string const& why, int exitCode, double now) {
    endText_ = why;
    exitCode_ = exitCode;
    if (!takeBack_ && !left_) {
        End(exitCode, exitCode == kExitSuccess ? "" : why, "");
        return;
    }
    phase_ = Phase::Ending;
    inForce_ = false;
    endsAt_ = now + kEndLimit;
    retryAt_ = now;
    link_.LimitPauses(kRetry);
}

void Hold::OnTakenBack(Answer const& answer, double now) {
    if (!answer.done) {
        problem_ = answer.problem;
        problemCode_ = answer.code;
        retryAt_ = now + kRetry;
        if (++takeBackTries_ >= kMostTakeBacks) {
            End(kExitFailure, answer.problem, answer.code);
        }
        return;
    }
    port_.RemoveJournal();
    SetFanIsTouched(false);
    takeBackTries_ = 0;
    problem_ = answer.problem;
    if (phase_ == Phase::Restoring) {
        Report(HoldEvent::Restored,
               "What an earlier hold had left was taken back." + (problem_.empty() ? "" : " " + problem_));
        left_.reset();
        if (settings_) {
            phase_ = Phase::Looking;
        } else {
            End(kExitSuccess, "", "");
        }
        return;
    }
    End(exitCode_, exitCode_ == kExitSuccess ? "" : endText_, exitCode_ == kExitSuccess ? "" : "not_held");
}

void Hold::End(int exitCode, std::string const& problem, std::string const& code) {
    exitCode_ = exitCode;
    problem_ = problem;
    problemCode_ = code.empty() && exitCode != kExitSuccess ? "failed" : code;
    bool const hadBegun = phase_ == Phase::Ending;
    phase_ = Phase::Ended;
    inForce_ = false;
    speed_.reset();
    if (hadBegun) {
        Report(HoldEvent::Ended, endText_ + (exitCode == kExitSuccess ? " Everything was taken back." : ""));
    }
}

void Hold::Report(HoldEvent event, std::string const& text) {
    port_.Report({.event = event, .text = text, .held = inForce_, .speed = speed_});
}

bool Hold::NothingIsHeld() const {
    return std::none_of(std::begin(claims_), std::end(claims_), [](Claim const& claim) { return claim.IsHeld(); });
}

void Hold::SetFanIsTouched(bool isTouched) {
    isTouched_ = isTouched;
    link_.LimitPauses(phase_ == Phase::Ending ? kRetry : isTouched ? kPauseWhenTouched : kLongestPause);
}

}  // namespace gputune::tool
