#include "tool/hold/FanLaw.h"

#include <algorithm>
#include <cmath>

namespace gputune::tool {

namespace {

using Direction = FanLawState::Direction;

int WholeSpeed(FanLawSettings const& settings, double temperature) {
    return static_cast<int>(std::lround(SpeedOnCurve(settings, temperature)));
}

void Change(FanLawState& state, Direction direction, int speed, double seconds) {
    if (state.direction != Direction::None && direction != state.direction) {
        std::rotate(state.turns.begin(), state.turns.begin() + 1, state.turns.end());
        state.turns.back() = seconds;
    }
    state.direction = direction;
    state.speed = speed;
}

// Whether a fall leaves room for the rise that may have to follow it at any time.
bool MayFall(FanLawState const& state, double seconds) {
    return state.direction == Direction::Down || seconds - state.turns.front() >= kTurnWindow;
}

void SetBy(FanLawState& state, double temperature) {
    state.setTemperature = temperature;
    state.settling.reset();
    state.below.reset();
}

// The spell goes on, begins, or is over.
void Note(std::optional<FanLawState::Spell>& spell, bool isSo, double temperature, double seconds) {
    if (!isSo) {
        spell.reset();
        return;
    }
    spell = spell.value_or(FanLawState::Spell{.since = seconds, .peak = temperature});
    spell->peak = std::max(spell->peak, temperature);
}

bool HasLasted(std::optional<FanLawState::Spell> const& spell, double length, double seconds) {
    return spell && seconds - spell->since >= length;
}

// The speed falls to what this temperature asks for, which lies below the one that set it.
void FallTo(FanLawSettings const& settings, FanLawState& state, double temperature, double seconds) {
    int const speed = WholeSpeed(settings, temperature);
    if (speed < state.speed) {
        if (!MayFall(state, seconds)) {
            return;
        }
        Change(state, Direction::Down, speed, seconds);
    }
    SetBy(state, temperature);
}

void Start(FanLawSettings const& settings, FanLawState& state, double temperature, double seconds) {
    state.standing = false;
    state.turningSince = seconds;
    state.coolSince.reset();
    SetBy(state, temperature);
    Change(state, Direction::Up, WholeSpeed(settings, temperature), seconds);
}

// True when the fan stopped.
bool Stop(FanLawSettings const& settings, FanLawState& state, double temperature, double seconds) {
    if (!settings.zeroRpm || !(temperature <= settings.zeroRpm->stop)) {
        state.coolSince.reset();
        return false;
    }
    state.coolSince = state.coolSince.value_or(seconds);
    if (seconds - *state.coolSince < settings.spinDownDelay ||
        seconds - state.turningSince < settings.zeroRpm->leastRunningTime || !MayFall(state, seconds)) {
        return false;
    }
    state.standing = true;
    Change(state, Direction::Down, 0, seconds);
    return true;
}

void Turn(FanLawSettings const& settings, FanLawState& state, double temperature, double seconds) {
    if (temperature >= state.setTemperature) {
        if (int const speed = WholeSpeed(settings, temperature); speed > state.speed) {
            Change(state, Direction::Up, speed, seconds);
        }
        SetBy(state, temperature);
        return;
    }
    Note(state.settling, true, temperature, seconds);
    Note(state.below, temperature < state.setTemperature - settings.hysteresis, temperature, seconds);
    if (HasLasted(state.below, settings.spinDownDelay, seconds)) {
        FallTo(settings, state, state.below->peak, seconds);
    } else if (HasLasted(state.settling, settings.spinDownDelay + kSettleSeconds, seconds)) {
        FallTo(settings, state, state.settling->peak, seconds);
    }
}

}  // namespace

double SpeedOnCurve(FanLawSettings const& settings, double temperature) {
    auto const& points = settings.points;
    auto const above = std::find_if(points.begin(), points.end(),
                                    [&](FanTablePoint const& point) { return temperature < point.FanTemperature; });
    double speed = 0;
    if (above == points.begin()) {
        speed = points.empty() ? settings.ceiling : above->FanSpeed;
    } else if (above == points.end()) {
        speed = points.back().FanSpeed;
    } else {
        FanTablePoint const& low = *(above - 1);
        double const part = (temperature - low.FanTemperature) / (above->FanTemperature - low.FanTemperature);
        speed = low.FanSpeed + part * (above->FanSpeed - low.FanSpeed);
    }
    return std::clamp<double>(speed, settings.floor, std::max(settings.floor, settings.ceiling));
}

FanLawState NextFanSpeed(FanLawSettings const& settings, FanLawState state, double temperature, double seconds) {
    if (std::isnan(temperature)) {
        temperature = std::numeric_limits<double>::infinity();
    }
    if (!state.begun) {
        state.begun = true;
        state.standing = settings.zeroRpm && temperature <= settings.zeroRpm->stop;
        state.speed = state.standing ? 0 : WholeSpeed(settings, temperature);
        state.turningSince = seconds;
        SetBy(state, temperature);
    } else if (state.standing) {
        if (temperature >= settings.zeroRpm->start) {
            Start(settings, state, temperature, seconds);
        }
    } else if (!Stop(settings, state, temperature, seconds)) {
        Turn(settings, state, temperature, seconds);
    }
    return state;
}

}  // namespace gputune::tool
