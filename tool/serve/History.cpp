#include "tool/serve/History.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "tool/values/Numbers.h"

namespace gputune::tool {

namespace {

using Json = nlohmann::ordered_json;

Json UnitsJson() {
    Json units = Json::object();
    for (SensorName const& sensor : kSensorNames) {
        units[UnitName(sensor.unit).code] = UnitName(sensor.unit).text;
    }
    units[UnitName(Unit::Raw).code] = UnitName(Unit::Raw).text;
    return units;
}

}  // namespace

History::Point History::Gap(double time) {
    Point point{time};
    point.values.fill(std::numeric_limits<float>::quiet_NaN());
    return point;
}

History::Point History::ToPoint(Snapshot const& snapshot, double now) {
    if (!snapshot.sample) {
        return Gap(now);
    }
    Sample const& sample = *snapshot.sample;
    Point point = Gap(sample.time);
    for (SensorName const& sensor : kSensorNames) {
        if (sensor.key == GPUTUNE_HWM_FAN_SPEED_RPM && sample.readings.fanUnsure) {
            continue;
        }
        bool const isRaw = snapshot.board && SensorUnit(sensor, snapshot.board->vendor) == Unit::Raw;
        std::optional<double> const& value = isRaw ? sample.load : sample.readings[sensor.key];
        if (value) {
            point.values[sensor.key] = static_cast<float>(isRaw ? *value * 100 : *value);
        }
    }
    return point;
}

bool History::IsGap(Point const& point) {
    return std::none_of(point.values.begin(), point.values.end(), [](float value) { return std::isfinite(value); });
}

void History::Add(Snapshot const& snapshot, double now) {
    Point const point = ToPoint(snapshot, now);
    // The clock was set back, or this sample is known.
    while (!points_.empty() && points_.back().time >= point.time) {
        points_.pop_back();
    }
    if (points_.empty()) {
        if (IsGap(point)) {
            return;
        }
    } else {
        double const pause = point.time - points_.back().time;
        bool const afterGap = IsGap(points_.back());
        if (IsGap(point) ? afterGap : !afterGap && pause < kSpacing) {
            return;
        }
        if (!afterGap && pause > std::max(3 * interval_, 5.0)) {
            points_.push_back(Gap(points_.back().time + pause / 2));
        }
    }
    points_.push_back(point);
    while (points_.front().time < point.time - kSeconds || points_.size() > kMaximum) {
        points_.pop_front();
    }
}

std::string History::HistoryJson() const {
    Json times = Json::array();
    for (Point const& point : points_) {
        times.push_back(std::round(point.time * 1000) / 1000);
    }
    Json sensors = Json::array();
    for (Quantity const quantity : kQuantityOrder) {
        for (SensorName const& sensor : kSensorNames) {
            if (sensor.quantity != quantity) {
                continue;
            }
            Json values = Json::array();
            bool any = false;
            for (Point const& point : points_) {
                auto const value = double{point.values[sensor.key]};
                any = any || std::isfinite(value);
                values.push_back(std::isfinite(value) ? Json(FewestDigits(value)) : Json(nullptr));
            }
            sensors.push_back({{"sensor", sensor.code},
                               {"title", sensor.text},
                               {"quantity", QuantityName(quantity)},
                               {"unit", UnitName(sensor.unit).code},
                               {"limit", IsLimit(sensor.code)},
                               {"values", any ? std::move(values) : Json(nullptr)}});
        }
    }
    Json const history = {{"interval_seconds", interval_},
                          {"spacing_seconds", kSpacing},
                          {"units", UnitsJson()},
                          {"doubts", {{kUnsureFan.code, kUnsureFan.text}}},
                          {"times_seconds", std::move(times)},
                          {"sensors", std::move(sensors)}};
    return history.dump() + "\n";
}

}  // namespace gputune::tool
