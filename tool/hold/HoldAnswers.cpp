// What a hold makes of its worker's answers.
#include <algorithm>
#include <cmath>

#include "tool/board/ReadBack.h"
#include "tool/hold/Hold.h"
#include "tool/values/Errors.h"
#include "tool/values/FanCurve.h"
#include "tool/values/Numbers.h"

namespace gputune::tool {

namespace {

constexpr int kNeededReadings = 3;  // in a row, before the fan is taken from its driver
constexpr int kMostUnread = 5;      // in a row, before the worker is replaced

bool Differ(std::optional<double> const& held, std::optional<double> const& shown, double tolerance) {
    return held && shown && std::fabs(*held - *shown) > tolerance;
}

bool IsFlat(std::vector<FanTablePoint> const& curve, int speed) {
    return std::all_of(curve.begin(), curve.end(),
                       [speed](FanTablePoint const& point) { return point.FanSpeed == speed; });
}

bool IsSame(std::vector<FanTablePoint> const& one, std::vector<FanTablePoint> const& other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](FanTablePoint const& a, FanTablePoint const& b) {
                          return a.FanSpeed == b.FanSpeed && a.FanTemperature == b.FanTemperature;
                      });
}

std::string Instead(std::string const& what, double shown, double held, Unit unit) {
    return "The board shows " + what + " " + WithUnit(shown, unit) + " instead of " + WithUnit(held, unit) + ".";
}

}  // namespace

// Before anything is set: what the board shows is what will be taken back.
void Hold::Prepare(double now) {
    takeBack_ = TakeBack{.fan = settings_->HoldsFan(),
                         .power = ClaimOf(Setting::Power).IsHeld() && !settings_->keep,
                         .clocks = ClaimOf(Setting::Clocks).IsHeld() && !settings_->keep,
                         .before = shown_};
    try {
        port_.WriteJournal(*takeBack_);
        phase_ = Phase::Holding;
        retryAt_ = now;
    } catch (ToolError const& error) {
        takeBack_.reset();
        End(kExitFailure, error.what(), error.Details().code);
    }
}

void Hold::OnSample(Answer const& answer, double now) {
    std::optional<double> const& temperature = answer.readings[settings_->sensor];
    std::optional<double> const load = board_->vendor == GPUTUNE_VENDOR_INTEL ? std::nullopt  // a counter
                                                                              : answer.readings[GPUTUNE_HWM_GPU_LOAD];
    std::optional<std::string> const why =
        judge_.Judge({.time = now, .duration = link_.LastDuration(), .temperature = temperature, .load = load});
    valid_ = why ? 0 : valid_ + 1;
    unread_ = temperature ? 0 : unread_ + 1;
    if (why && inForce_) {
        Release(*why, HoldEvent::Released);
    }
    shown_ = answer.shown;
    if (phase_ == Phase::Looking) {
        if (answer.failedCalls.empty() || ++looks_ >= kMostLooks) {
            Prepare(now);
        }
    } else if (phase_ == Phase::Holding) {
        if (!inForce_ && !mustRelease_ && valid_ >= kNeededReadings) {
            PutInForce(answer.shown);
        }
        if (inForce_) {
            CompareFan(answer.shown, now);
            CompareOthers(answer.shown, HoldEvent::ForeignChange, now);
        }
        // Not of a fan that has just been given up.
        if (inForce_ && ClaimOf(Setting::Fan).IsHeld()) {
            law_ = NextFanSpeed(settings_->law, law_, temperature.value_or(0), now);
            wantedSpeed_ = static_cast<int>(std::lround(law_.speed));
        }
    }
    if (IsEnded()) {
        return;
    }
    port_.Report({.event = HoldEvent::Reading, .readings = answer.readings, .held = inForce_, .speed = speed_});
    if (unread_ >= kMostUnread) {
        OnLost("the driver does not answer");
        link_.Replace(now);
    }
}

void Hold::PutInForce(BoardSettings const& shown) {
    inForce_ = true;
    law_ = FanLawState();
    // What survived the worker is not set again: Overdrive8 boards refuse the clocks that are in effect.
    bool const differs = Differ(power_, shown.powerLimit, 0) || Differ(gpuClock_, shown.gpuClock, kClockTolerance) ||
                         Differ(memoryClock_, shown.memoryClock, kClockTolerance);
    bool const isShown = power_ && !differs && shown.powerLimit;
    mustSetProfile_ = ClaimOf(Setting::Clocks).IsHeld() && !isShown;
    mustSetPower_ = ClaimOf(Setting::Power).IsHeld() && settings_->power && !isShown;
    Report(HoldEvent::Held, "Held: " + Describe(*settings_) + ".");
}

void Hold::Release(std::string const& why, HoldEvent event) {
    inForce_ = false;
    valid_ = 0;
    speed_.reset();
    wantedSpeed_.reset();
    curveIsSet_ = false;
    mustRelease_ = ClaimOf(Setting::Fan).IsHeld() || isTouched_;
    retryAt_ = 0;
    Report(event, (mustRelease_ ? "The fan goes back to automatic control: " : "") + why + ".");
}

void Hold::OnReleased(Answer const& answer, double now) {
    if (answer.done) {
        mustRelease_ = false;
        refused_ = 0;
        SetFanIsTouched(false);
        if (NothingIsHeld()) {
            BeginEnd("Nothing is held any more.", kExitFailure, now);
        }
        return;
    }
    retryAt_ = now + 0.5;
    if (refused_++ == 0) {
        Report(HoldEvent::Refused, "The driver does not take the fan back; this is tried again. " + answer.problem);
    } else if (refused_ % 5 == 0) {
        OnLost("the driver does not take the fan back");
        link_.Replace(now);
    }
}

void Hold::OnFanSet(Answer const& answer, double now) {
    if (!answer.done && ownCurve_ && board_->api == GPUTUNE_API_IGCL) {
        ownCurve_ = false;  // the fan takes fixed speeds only, or another number of points
        return;
    }
    if (!answer.done) {
        SetAgain(Setting::Fan, answer.problem, HoldEvent::Refused, now);
        return;
    }
    curveIsSet_ = ownCurve_;
    speed_ = ownCurve_ ? std::nullopt : wantedSpeed_;
    CompareOthers(answer.shown, HoldEvent::Dropped, now);
    shown_ = answer.shown;
}

void Hold::OnPowerSet(Answer const& answer, double now) {
    mustSetPower_ = false;
    if (!answer.done) {
        SetAgain(Setting::Power, answer.problem, HoldEvent::Refused, now);
        return;
    }
    power_ = answer.shown.powerLimit;
    shown_ = answer.shown;
}

void Hold::OnProfileSet(Answer const& answer, double now) {
    mustSetProfile_ = false;
    if (!answer.done) {
        SetAgain(Setting::Clocks, answer.problem, HoldEvent::Refused, now);
        return;
    }
    gpuClock_ = answer.shown.gpuClock;
    memoryClock_ = answer.shown.memoryClock;
    power_ = answer.shown.powerLimit;
    mustSetPower_ = settings_->power.has_value();
    shown_ = answer.shown;
}

void Hold::CompareFan(BoardSettings const& shown, double now) {
    if (!ClaimOf(Setting::Fan).IsHeld() || shown.fanCurve.empty()) {
        return;
    }
    bool const isForeign = ownCurve_ ? curveIsSet_ && !IsSame(shown.fanCurve, settings_->law.points)
                                     : speed_ && !IsFlat(shown.fanCurve, *speed_);
    if (isForeign) {
        SetAgain(Setting::Fan,
                 "The board shows the fan curve " + FanCurveText(shown.fanCurve) + " instead of " +
                     (ownCurve_ ? FanCurveText(settings_->law.points) : WithUnit(*speed_, Unit::Percent)) + ".",
                 HoldEvent::ForeignChange, now);
    }
}

// Compares power limit and clocks with what was set, after a fan write also with what was there before it.
void Hold::CompareOthers(BoardSettings const& shown, HoldEvent event, double now) {
    bool const afterFan = event == HoldEvent::Dropped;
    std::string const cause = afterFan ? "When the fan was set, the driver dropped a setting. " : "";
    auto const compare = [&](std::optional<double> const& held, std::optional<double> const& before,
                             std::optional<double> const& seen, char const* what, Unit unit, Setting setting,
                             double tolerance) {
        if (held && ClaimOf(setting).IsHeld()) {
            if (Differ(held, seen, tolerance)) {
                SetAgain(setting, cause + Instead(what, *seen, *held, unit), event, now);
            }
        } else if (afterFan && Differ(before, seen, tolerance)) {
            Report(event, cause + Instead(what, *seen, *before, unit));
        }
    };
    compare(power_, shown_.powerLimit, shown.powerLimit, "the power limit", Unit::Percent, Setting::Power, 0);
    compare(gpuClock_, shown_.gpuClock, shown.gpuClock, "the GPU clock", Unit::Megahertz, Setting::Clocks,
            kClockTolerance);
    compare(memoryClock_, shown_.memoryClock, shown.memoryClock, "the memory clock", Unit::Megahertz, Setting::Clocks,
            kClockTolerance);
}

void Hold::SetAgain(Setting setting, std::string const& text, HoldEvent event, double now) {
    Claim& claim = ClaimOf(setting);
    if (!claim.IsHeld()) {
        return;
    }
    if (!claim.TryAgain(now)) {
        GiveUp(setting, event == HoldEvent::ForeignChange);
        Report(HoldEvent::Yielded, text + " This setting is held no longer.");
        if (NothingIsHeld() && !mustRelease_) {
            BeginEnd("Nothing is held any more.", kExitFailure, now);
        }
        return;
    }
    switch (setting) {
        case Setting::Fan:
            speed_.reset();
            curveIsSet_ = false;
            break;
        case Setting::Power:
            mustSetPower_ = settings_->power.has_value();
            mustSetProfile_ = !settings_->power && !settings_->profile.empty();
            break;
        case Setting::Clocks:
            mustSetProfile_ = true;
            break;
    }
    Report(event, text + " It is set again (" + claim.Count() + ").");
}

// keepAtEnd: the value is another program's, so it is not taken back.
void Hold::GiveUp(Setting setting, bool keepAtEnd) {
    ClaimOf(setting).GiveUp();
    if (setting == Setting::Fan) {
        speed_.reset();
        curveIsSet_ = false;
        mustRelease_ = true;
        retryAt_ = 0;
        return;
    }
    mustSetPower_ = mustSetPower_ && setting != Setting::Power;
    mustSetProfile_ = mustSetProfile_ && setting != Setting::Clocks;
    if (keepAtEnd) {
        (setting == Setting::Power ? takeBack_->power : takeBack_->clocks) = false;
        isArmed_ = false;
        try {
            port_.WriteJournal(*takeBack_);
        } catch (ToolError const&) {
            // Deliberate: the journal that is there takes back more, which is the safer side.
        }
    }
}

}  // namespace gputune::tool
