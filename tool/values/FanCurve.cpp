#include "tool/values/FanCurve.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "tool/values/Numbers.h"
#include "tool/values/Text.h"

namespace gputune::tool {

FanTablePoint ParseFanPoint(std::string const& text) {
    std::string_view const view = text;
    std::size_t const colon = std::min(view.find(':'), view.size());
    std::optional<int> const temperature = ParseNumber<int>(view.substr(0, colon));
    std::optional<int> const speed = ParseNumber<int>(view.substr(std::min(colon + 1, view.size())));
    if (!temperature || !speed) {
        throw FanCurveError("\"" + text + "\" is no point of a fan curve: write TEMPERATURE:SPEED, for example 60:45.");
    }
    if (*speed < 0 || *speed > 100) {
        throw FanCurveError("\"" + text + "\": the speed must be 0 to 100 %.");
    }
    return {*speed, *temperature};
}

std::vector<FanTablePoint> ParseFanCurve(std::vector<std::string> const& points) {
    std::vector<FanTablePoint> curve(points.size());
    std::transform(points.begin(), points.end(), curve.begin(), ParseFanPoint);
    auto const requireAscending = [&curve](std::size_t i, char const* what, int FanTablePoint::*field) {
        if (curve[i].*field < curve[i - 1].*field) {
            throw FanCurveError(std::string("The ") + what + " of " + FanPointName(i) + " is below that of " +
                                FanPointName(i - 1) + ".");
        }
    };
    for (std::size_t i = 1; i < curve.size(); ++i) {
        requireAscending(i, "temperature", &FanTablePoint::FanTemperature);
        requireAscending(i, "speed", &FanTablePoint::FanSpeed);
    }
    return curve;
}

std::string FanCurveText(std::vector<FanTablePoint> const& curve) {
    std::vector<std::string> points;
    points.reserve(curve.size());
    for (FanTablePoint const& point : curve) {
        points.push_back(std::to_string(point.FanTemperature) + ":" + std::to_string(point.FanSpeed));
    }
    return Joined(points, " ");
}

std::string FanPointName(std::size_t index) {
    return "point " + std::to_string(index + 1);
}

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

}  // namespace gputune::tool
