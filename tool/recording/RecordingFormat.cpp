#include "tool/recording/RecordingFormat.h"

#include <cmath>

#include "tool/recording/Csv.h"
#include "tool/values/FanCurve.h"
#include "tool/values/Numbers.h"

namespace gputune::tool {

namespace {

std::string Number(std::optional<double> const& value) {
    return value && std::isfinite(*value) ? FormatExactNumber(*value) : "";
}

}  // namespace

std::string ColumnName(char const* code, Unit unit) {
    return std::string(code) + "_" + UnitName(unit).code;
}

std::string RecordingFormat::Heading() const {
    std::string line = kTimeColumn;
    for (SensorName const& sensor : kSensorNames) {
        line += "," + ColumnName(sensor.code, SensorUnit(sensor, board_.vendor));
    }
    if (board_.frameRate) {
        line += "," + ColumnName(kFrameRateName.code, Unit::FramesPerSecond);
    }
    if (board_.fanCanBeUnsure) {
        line += std::string(",") + kFanUnsureColumn;
    }
    return line + "," + kAdapterColumn + "," + kFanCurveColumn;
}

std::string RecordingFormat::Line(std::string const& time, Readings const& readings, std::optional<int> frameRate) {
    std::string line = time;
    for (std::optional<double> const& reading : readings) {
        line += "," + Number(reading);
    }
    if (board_.frameRate) {
        line += "," + Number(frameRate);
    }
    if (board_.fanCanBeUnsure) {
        line += std::string(",") + (readings.fanUnsure ? kUnsureFan.code : "");
    }
    line += "," + (isFirst_ ? CsvQuote(board_.name) : "") + "," + (isFirst_ ? FanCurveText(board_.fanCurve) : "");
    isFirst_ = false;
    return line;
}

}  // namespace gputune::tool
