#include "tool/recording/Recording.h"

#include <algorithm>
#include <cmath>

#include "tool/board/Checks.h"
#include "tool/recording/RecordingColumns.h"

namespace gputune::tool {

namespace {

std::string Number(std::optional<double> const& value) {
    return value && std::isfinite(*value) ? FormatExactNumber(*value) : "";
}

std::string CurveText(std::vector<FanTablePoint> const& curve) {
    std::string text;
    for (FanTablePoint const& point : curve) {
        text += (text.empty() ? "" : " ") + std::to_string(point.FanTemperature) + ":" + std::to_string(point.FanSpeed);
    }
    return text;
}

}  // namespace

std::vector<FanTablePoint> FanCurveOf(FanSetting const& setting) {
    std::vector<FanTablePoint> curve;
    if (!setting.Valid || setting.PointCount < 2) {
        return curve;
    }
    auto const count = std::min(static_cast<std::size_t>(setting.PointCount), std::size(setting.Points));
    for (std::size_t i = 0; i < count; ++i) {
        FanPoint const& point = setting.Points[i];
        if (!IsKnown(point.CurrentTemperature) || !IsKnown(point.CurrentSpeed)) {
            return {};
        }
        curve.push_back({point.CurrentSpeed, point.CurrentTemperature});
    }
    return curve;
}

std::string RecordingFormat::Heading() const {
    std::string line = timeColumn;
    for (SensorName const& sensor : sensorNames) {
        line += "," + ColumnName(sensor.code, SensorUnit(sensor, board_.vendor));
    }
    if (board_.frameRate) {
        line += "," + ColumnName(frameRateName.code, Unit::FramesPerSecond);
    }
    if (board_.canDoubtFan) {
        line += std::string(",") + fanUnsureColumn;
    }
    return line + "," + adapterColumn + "," + fanCurveColumn;
}

std::string RecordingFormat::Line(std::string const& time, Readings const& readings, std::optional<int> frameRate) {
    std::string line = time;
    for (std::optional<double> const& reading : readings) {
        line += "," + Number(reading);
    }
    if (board_.frameRate) {
        line += "," + Number(frameRate);
    }
    if (board_.canDoubtFan) {
        line += std::string(",") + (readings.fanUnsure ? unsureFan.code : "");
    }
    line += "," + (isFirst_ ? CsvQuote(board_.name) : "") + "," + (isFirst_ ? CurveText(board_.fanCurve) : "");
    isFirst_ = false;
    return line;
}

}  // namespace gputune::tool
