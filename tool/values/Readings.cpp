#include "tool/values/Readings.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace gputune::tool {

namespace {

Value ToValue(std::optional<double> const& reading) {
    return reading ? Value{*reading} : Value{};
}

}  // namespace

bool StuckFanWatch::IsUnsure(std::optional<double> const& speed) {
    constexpr int believed = 8;
    if (!speed) {
        return false;
    }
    bool const wasZero = std::exchange(isZero_, *speed == 0);
    if (isZero_) {
        return equal_ >= believed;
    }
    equal_ = *speed == last_ && !wasZero ? equal_ + 1 : 1;
    last_ = *speed;
    return false;
}

Section SensorSection(Readings const& readings, std::uint32_t vendor, bool all) {
    Section section{.key = "sensors", .title = "Sensors", .unitForm = Section::UnitForm::BesideValue};
    for (SensorName const& sensor : sensorNames) {
        std::optional<double> const& reading = readings[sensor.key];
        if (reading || all) {
            section.fields.push_back({sensor.code, sensor.text, ToValue(reading), SensorUnit(sensor, vendor)});
            if (sensor.key == GPUTUNE_HWM_FAN_SPEED_RPM) {
                section.fields.back().canBeUnsure = true;
                section.fields.back().unsure = readings.fanUnsure ? &unsureFan : nullptr;
            }
        }
    }
    return section;
}

std::size_t CountAvailable(Readings const& readings) {
    auto const isAvailable = [](std::optional<double> const& reading) { return reading.has_value(); };
    return static_cast<std::size_t>(std::count_if(readings.begin(), readings.end(), isAvailable));
}

std::string CountText(std::size_t readings) {
    return std::to_string(readings) + (readings == 1 ? " reading" : " readings");
}

std::string ElapsedText(double seconds) {
    auto const whole = static_cast<long long>(std::llround(seconds));
    std::string const hours = whole >= 3600 ? std::to_string(whole / 3600) + ":" : "";
    std::string const minutes = std::to_string(whole / 60 % 60);
    std::string const rest = std::to_string(whole % 60);
    return hours + (hours.empty() || minutes.size() > 1 ? "" : "0") + minutes + ":" + (rest.size() > 1 ? "" : "0") +
           rest;
}

std::string ProgressBar(double part, std::size_t width) {
    double const shown = std::clamp(part, 0.0, 1.0);
    auto const full = static_cast<std::size_t>(shown * static_cast<double>(width));
    std::string bar;
    for (std::size_t i = 0; i < width; ++i) {
        bar += i < full ? "\u2588" : "\u2591";
    }
    return bar + PadLeft(std::to_string(static_cast<int>(shown * 100)), 4) + " %";
}

std::string ReadingsLine(Readings const& readings, std::uint32_t vendor) {
    std::string line;
    for (SensorName const& sensor : sensorNames) {
        if (std::optional<double> const& reading = readings[sensor.key]) {
            line += line.empty() ? "" : ", ";
            line += std::string(sensor.text) + " " + FormatValue(*reading, SensorUnit(sensor, vendor));
            if (sensor.key == GPUTUNE_HWM_FAN_SPEED_RPM && readings.fanUnsure) {
                line += std::string(" (") + unsureFan.text + ")";
            }
        }
    }
    return line.empty() ? "no sensor available" : line;
}

}  // namespace gputune::tool
