#include "sim/board/board_readers.h"

namespace gputune::sim {

namespace {

constexpr double kMaxReading = 1e6;
constexpr double kMinTime = 0.01;  // seconds
constexpr double kMaxTime = 1e5;

Readings ReadReadings(JsonValue const& value) {
    JsonObject object(value);
    Readings readings;
    object.Read("load", readings.load, 0, 100);
    object.Read("engineClock", readings.engineClock, 0, kMaxReading);
    object.Read("memoryClock", readings.memoryClock, 0, kMaxReading);
    object.Read("voltage", readings.voltage, 0, kMaxReading);
    object.Read("temperature", readings.temperature, -100, 1000);
    object.Read("hotspotTemperature", readings.hotspotTemperature, -100, 1000);
    object.Read("memoryTemperature", readings.memoryTemperature, -100, 1000);
    object.Read("fanRpm", readings.fanRpm, 0, kMaxReading);
    object.Read("fanPercent", readings.fanPercent, 0, 100);
    object.Read("power", readings.power, 0, kMaxReading);
    object.Read("memoryUsed", readings.memoryUsed, 0, 1e9);
    object.Read("energy", readings.energy, 0, 1e12);
    object.Read("activity", readings.activity, 0, 1e12);
    object.ReadWith("olderFanRpm", readings.olderFanRpm,
                    [](JsonValue const& entry) { return entry.Number(0, kMaxReading); });
    object.Finish();
    return readings;
}

void ReadTimes(JsonValue const& value, ModelSettings& model) {
    JsonObject object(value);
    object.Read("temperature", model.temperatureSeconds, kMinTime, kMaxTime);
    object.Read("fan", model.fanSeconds, kMinTime, kMaxTime);
    object.Read("load", model.loadSeconds, kMinTime, kMaxTime);
    object.Read("memory", model.memorySeconds, kMinTime, kMaxTime);
    object.Finish();
}

LoadStep ReadLoadStep(JsonValue const& value) {
    JsonObject object(value);
    LoadStep step;
    step.seconds = object.Required("seconds").Number(kMinTime, kMaxTime);
    step.percent = object.Required("percent").Number(0, 100);
    object.Finish();
    return step;
}

void ReadMovingModel(JsonObject& object, ModelSettings& model) {
    object.Read("ambientTemperature", model.ambientTemperature, -50, 100);
    object.Read("fullLoadRise", model.fullLoadRise, 0, 500);
    object.Read("powerDemand", model.powerDemand, 0, 10);
    object.Read("boardPower", model.boardPower, 0, 5000);
    object.Read("hotspotOffset", model.hotspotOffset, 0, 100);
    object.Read("memoryOffset", model.memoryOffset, 0, 100);
    object.Read("fanMaximum", model.fanMaximum, 0, 100000);
    if (auto const times = object.Optional("timeConstants")) {
        ReadTimes(*times, model);
    }
    if (auto const load = object.Optional("load")) {
        model.load = load->List(ReadLoadStep);
        if (model.load.empty()) {
            load->Fail("at least one step");
        }
    }
}

}  // namespace

ModelSettings ReadModel(JsonValue const& value) {
    JsonObject object(value);
    ModelSettings model;
    bool fixed = false;
    object.Read("fixed", fixed);
    if (fixed) {
        model.fixed = ReadReadings(object.Required("readings"));
    } else {
        ReadMovingModel(object, model);
    }
    object.Finish();
    return model;
}

ModelSettings ReadOwnModel(JsonObject& object, ModelSettings const& defaultModel) {
    ModelSettings model = defaultModel;
    object.ReadWith("model", model, ReadModel);
    return model;
}

}  // namespace gputune::sim
