#include "tool/hold/Json.h"

namespace gputune::tool {

Json ToJson(std::optional<double> const& value) {
    return value ? Json(*value) : Json(nullptr);
}

std::optional<double> OptionalNumber(Json const& json) {
    return json.is_null() ? std::nullopt : std::optional(json.get<double>());
}

namespace {

Json CurveToJson(std::vector<FanTablePoint> const& curve) {
    Json json = Json::array();
    for (FanTablePoint const& point : curve) {
        json.push_back({point.FanTemperature, point.FanSpeed});
    }
    return json;
}

std::vector<FanTablePoint> CurveFrom(Json const& json) {
    std::vector<FanTablePoint> curve;
    for (Json const& point : json) {
        curve.push_back({.FanSpeed = point.at(1).get<int>(), .FanTemperature = point.at(0).get<int>()});
    }
    return curve;
}

}  // namespace

Json ToJson(BoardSettings const& settings) {
    return {{"fan_curve", CurveToJson(settings.fanCurve)},
            {"power_limit", ToJson(settings.powerLimit)},
            {"temperature_limit", ToJson(settings.temperatureLimit)},
            {"gpu_clock", ToJson(settings.gpuClock)},
            {"gpu_voltage", ToJson(settings.gpuVoltage)},
            {"memory_clock", ToJson(settings.memoryClock)}};
}

BoardSettings BoardSettingsFrom(Json const& json) {
    return {.fanCurve = CurveFrom(json.at("fan_curve")),
            .powerLimit = OptionalNumber(json.at("power_limit")),
            .temperatureLimit = OptionalNumber(json.at("temperature_limit")),
            .gpuClock = OptionalNumber(json.at("gpu_clock")),
            .gpuVoltage = OptionalNumber(json.at("gpu_voltage")),
            .memoryClock = OptionalNumber(json.at("memory_clock"))};
}

Json ToJson(TakeBack const& takeBack) {
    return {{"fan", takeBack.fan},
            {"power", takeBack.power},
            {"clocks", takeBack.clocks},
            {"before", ToJson(takeBack.before)},
            {"journal", takeBack.journalFile}};
}

TakeBack TakeBackFrom(Json const& json) {
    return {.fan = json.at("fan").get<bool>(),
            .power = json.at("power").get<bool>(),
            .clocks = json.at("clocks").get<bool>(),
            .before = BoardSettingsFrom(json.at("before")),
            .journalFile = json.at("journal").get<std::string>()};
}

std::string OneLine(Json const& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace gputune::tool
