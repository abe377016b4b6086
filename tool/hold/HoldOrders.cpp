// What a hold orders its worker to do, and when.
#include <algorithm>

#include "tool/hold/Hold.h"

namespace gputune::tool {

void Hold::Continue(double now) {
    if (!link_.IsReady()) {
        return;
    }
    switch (phase_) {
        case Phase::Opening:
        case Phase::Ended:
            return;
        case Phase::Restoring:
        case Phase::Ending:
            if (now >= retryAt_) {
                SendTakeBack(now);
            }
            return;
        case Phase::Looking:
            SendSample(now);
            return;
        case Phase::Holding:
            break;
    }
    if (!isArmed_) {
        link_.Send({.order = Order::Arm, .takeBack = takeBack_}, now);
    } else if (mustRelease_ && now >= retryAt_) {
        link_.Send({.order = Order::AutomaticFan}, now);
    } else if (mustRelease_ || !inForce_ || !SendChange(now)) {
        SendSample(now);
    }
}

// The changes that are due, in their order: a profile has a power limit of its own, and the fan comes last because some
// drivers drop other settings with it.
bool Hold::SendChange(double now) {
    if (mustSetProfile_) {
        link_.Send({.order = Order::Profile, .profile = settings_->profile}, now);
    } else if (mustSetPower_) {
        link_.Send({.order = Order::PowerLimit, .percent = *settings_->power}, now);
    } else if (ClaimOf(Setting::Fan).IsHeld() && ownCurve_ && !curveIsSet_) {
        SetFanIsTouched(true);
        link_.Send({.order = Order::FanCurve, .curve = settings_->law.points}, now);
    } else if (ClaimOf(Setting::Fan).IsHeld() && !ownCurve_ && wantedSpeed_ != speed_) {
        SetFanIsTouched(true);
        link_.Send({.order = Order::FanSpeed, .percent = *wantedSpeed_}, now);
    } else {
        return false;
    }
    return true;
}

void Hold::SendTakeBack(double now) {
    link_.Send({.order = Order::TakeBack, .takeBack = takeBack_ ? *takeBack_ : left_->takeBack}, now);
}

void Hold::SendSample(double now) {
    if (now < nextSample_) {
        return;
    }
    nextSample_ = std::max(nextSample_ + settings_->interval, now);
    link_.Send({.order = Order::Sample}, now);
}

}  // namespace gputune::tool
