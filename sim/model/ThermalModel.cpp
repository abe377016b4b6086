#include "sim/model/ThermalModel.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace gputune::sim {

namespace {

constexpr double kStepSeconds = 0.25;
// In this range below the temperature limit, clocks go down to this part of what they would be.
constexpr double kThrottleRange = 4;  // kelvin
constexpr double kThrottleFloor = 0.5;

double Lag(double value, double target, double seconds, double timeConstant) {
    return target + (value - target) * std::exp(-seconds / timeConstant);
}

// How warm the board gets, relative to half the fan speed.
double Cooling(double fanPercent) {
    return 1.6 - 1.2 * fanPercent / 100 + 0.3 * fanPercent * fanPercent / 10000;
}

double OnCurve(std::vector<FanCurvePoint> const& curve, double temperature) {
    if (curve.empty()) {
        return 0;
    }
    if (temperature <= curve.front().temperature) {
        return curve.front().percent;
    }
    for (std::size_t i = 1; i < curve.size(); ++i) {
        auto const& low = curve[i - 1];
        auto const& high = curve[i];
        if (temperature < high.temperature && high.temperature > low.temperature) {
            double const part = (temperature - low.temperature) / (high.temperature - low.temperature);
            return low.percent + part * (high.percent - low.percent);
        }
    }
    return curve.back().percent;
}

}  // namespace

ThermalModel::ThermalModel(ModelSettings settings, Controls controls)
    : settings_(std::move(settings)), controls_(std::move(controls)) {
    load_ = ProfileLoad();
    temperature_ = settings_.ambientTemperature;
    memoryUsed_ = settings_.memoryIdle + load_ * (settings_.memoryLoaded - settings_.memoryIdle);
    // Temperature and fan depend on each other; a few rounds settle them.
    for (int i = 0; i < 64; ++i) {
        fan_ = FanTarget();
        double const settled = settings_.ambientTemperature + settings_.fullLoadRise * Power() * Cooling(fan_);
        temperature_ += (settled - temperature_) / 2;
    }
}

void ThermalModel::AdvanceTo(double seconds) {
    constexpr double kMostSeconds = 86400;
    if (settings_.fixed) {
        return;
    }
    now_ = std::max(now_, seconds - kMostSeconds);
    while (now_ + kStepSeconds <= seconds) {
        Step(kStepSeconds);
    }
    if (seconds > now_) {
        Step(seconds - now_);
    }
}

void ThermalModel::Step(double seconds) {
    now_ += seconds;
    load_ = Lag(load_, ProfileLoad(), seconds, settings_.loadSeconds);
    double const memory = settings_.memoryIdle + load_ * (settings_.memoryLoaded - settings_.memoryIdle);
    memoryUsed_ = Lag(memoryUsed_, memory, seconds, settings_.memorySeconds);
    fan_ = Lag(fan_, FanTarget(), seconds, settings_.fanSeconds);
    double const settled = settings_.ambientTemperature + settings_.fullLoadRise * Power() * Cooling(fan_);
    temperature_ = Lag(temperature_, settled, seconds, settings_.temperatureSeconds);
    energy_ += settings_.boardPower * Power() * seconds;
    activity_ += load_ * seconds;
}

double ThermalModel::ProfileLoad() const {
    double length = 0;
    for (auto const& step : settings_.load) {
        length += step.seconds;
    }
    if (length <= 0) {
        return 0;
    }
    double time = std::fmod(now_, length);
    for (auto const& step : settings_.load) {
        if (time < step.seconds) {
            return step.percent / 100;
        }
        time -= step.seconds;
    }
    return settings_.load.back().percent / 100;
}

double ThermalModel::FanTarget() const {
    if (controls_.fanPercent) {
        return *controls_.fanPercent;
    }
    if (controls_.zeroRpm && !controls_.fanCurve.empty() && temperature_ < controls_.fanCurve.front().temperature) {
        return 0;
    }
    return OnCurve(controls_.fanCurve, temperature_);
}

// The clock for the load, reduced by the power limit and the temperature limit.
double ThermalModel::EngineClock() const {
    double const wanted = std::min(1.0, load_ / 0.6);
    double clock = controls_.idleEngineClock + wanted * (controls_.engineClock - controls_.idleEngineClock);
    double const ratio = clock / controls_.defaultEngineClock;
    double const power = settings_.powerDemand * load_ * ratio * ratio;
    if (power > controls_.powerLimit && power > 0) {
        clock *= std::sqrt(std::max(controls_.powerLimit, 0.05) / power);
    }
    double const excess = (temperature_ - (controls_.temperatureLimit - kThrottleRange)) / kThrottleRange;
    clock *= 1 - (1 - kThrottleFloor) * std::clamp(excess, 0.0, 1.0);
    return std::max(clock, std::min(controls_.idleEngineClock, controls_.engineClock));
}

// Relative to the default power limit.
double ThermalModel::Power() const {
    constexpr double kIdle = 0.08;
    double const ratio = EngineClock() / controls_.defaultEngineClock;
    return kIdle + (1 - kIdle) * settings_.powerDemand * load_ * ratio * ratio;
}

void ThermalModel::SetStuck(std::size_t quantity, bool stuck) {
    if (stuck != stuck_.at(quantity).has_value()) {
        stuck_.at(quantity) = stuck ? std::optional(Read().*kStuckQuantities[quantity]) : std::nullopt;
    }
}

Readings ThermalModel::Read() const {
    Readings readings = settings_.fixed ? *settings_.fixed : Moving();
    for (std::size_t i = 0; i < stuck_.size(); ++i) {
        readings.*kStuckQuantities[i] = stuck_[i].value_or(readings.*kStuckQuantities[i]);
    }
    return readings;
}

Readings ThermalModel::Moving() const {
    double const wanted = std::min(1.0, load_ / 0.6);
    Readings readings;
    readings.load = 100 * load_;
    readings.engineClock = EngineClock();
    // Memory has these two clocks only.
    readings.memoryClock = load_ > 0.2 ? controls_.memoryClock : controls_.idleMemoryClock;
    readings.voltage = controls_.idleVoltage + wanted * (controls_.voltage - controls_.idleVoltage);
    readings.temperature = temperature_;
    readings.hotspotTemperature = temperature_ + settings_.hotspotOffset * load_;
    readings.memoryTemperature = temperature_ + settings_.memoryOffset * load_;
    readings.fanPercent = fan_;
    // The speed of a turning fan is never steady.
    double const ripple = fan_ > 1 ? 5 * std::sin(2.3 * now_) : 0;
    readings.fanRpm = std::max(0.0, settings_.fanMaximum * fan_ / 100 + ripple);
    readings.power = settings_.boardPower * Power();
    readings.memoryUsed = memoryUsed_;
    readings.energy = energy_;
    readings.activity = activity_;
    readings.framesPerSecond = settings_.framesPerSecond * readings.engineClock / controls_.defaultEngineClock;
    return readings;
}

}  // namespace gputune::sim
