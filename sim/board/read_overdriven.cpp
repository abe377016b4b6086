#include "sim/board/board_readers.h"

namespace gputune::sim {

namespace {

constexpr int kMaxLevels = 64;

Range ReadRange(JsonValue const& value) {
    JsonObject object(value);
    Range range;
    range.min = object.Required("min").Int();
    range.max = object.Required("max").Int(range.min);
    object.Read("step", range.step, 0);
    range.defaultValue = object.Required("default").Int(range.min, range.max);
    object.Finish();
    return range;
}

// The range of something that can be set on every board.
Range ReadSettableRange(JsonValue const& value) {
    Range const range = ReadRange(value);
    if (range.min == 0 && range.max == 0) {
        value.Fail("a range other than 0 to 0");
    }
    return range;
}

void ReadRanges(JsonValue const& value, OverdriveN& part) {
    JsonObject object(value);
    part.engineClock = ReadSettableRange(object.Required("engineClock"));
    part.memoryClock = ReadSettableRange(object.Required("memoryClock"));
    part.voltage = ReadSettableRange(object.Required("voltage"));
    part.power = ReadSettableRange(object.Required("power"));
    part.temperature = ReadSettableRange(object.Required("temperature"));
    part.fanSpeed = ReadSettableRange(object.Required("fanSpeed"));
    object.ReadWith("fanTemperature", part.fanTemperature, ReadRange);
    object.ReadWith("minimumPerformanceClock", part.minimumPerformanceClock, ReadRange);
    object.ReadWith("throttleNotification", part.throttleNotification, ReadRange);
    object.ReadWith("autoSystemClock", part.autoSystemClock, ReadRange);
    object.Finish();
}

std::vector<Level> ReadLevels(JsonValue const& value, int levelCount) {
    std::vector<Level> levels;
    value.ForEach([&](JsonValue const& entry) {
        JsonObject object(entry);
        Level level;
        level.clock = object.Required("clock").Int(0);
        level.voltage = object.Required("voltage").Int(0);
        object.Read("enabled", level.enabled);
        object.Read("control", level.control);
        object.Finish();
        levels.push_back(level);
        if (levels.size() > static_cast<std::size_t>(levelCount)) {
            entry.Fail("no more levels than \"levels\" says (" + std::to_string(levelCount) + ")");
        }
    });
    return levels;
}

ThermalController ReadController(JsonValue const& value) {
    JsonObject object(value);
    ThermalController controller;
    object.Read("domain", controller.domain);
    object.Read("flags", controller.flags);
    object.Read("fan", controller.fan);
    object.Read("result", controller.result);
    object.Finish();
    return controller;
}

void ReadFan(JsonValue const& value, OverdriveN& part) {
    JsonObject object(value);
    object.Read("targetTemperature", part.targetTemperature);
    object.Read("targetSpeed", part.targetFanSpeed);
    object.Read("minimumSpeed", part.minimumFanSpeed);
    object.Finish();
}

void ReadPowerLimit(JsonValue const& value, OverdriveN& part) {
    JsonObject object(value);
    object.Read("power", part.powerLimit);
    object.Read("temperature", part.temperatureLimit);
    object.Finish();
}

}  // namespace

OverdriveN ReadOverdriveN(JsonValue const& value) {
    JsonObject object(value);
    OverdriveN part;
    part.levelCount = object.Required("levels").Int(0, kMaxLevels);
    object.ReadWith("flags", part.flags, &JsonValue::Mask);
    ReadRanges(object.Required("ranges"), part);
    part.engineLevels = ReadLevels(object.Required("engineLevels"), part.levelCount);
    part.memoryLevels = ReadLevels(object.Required("memoryLevels"), part.levelCount);
    object.ReadWith("thermalControllers", part.thermalControllers,
                    [](JsonValue const& list) { return list.List(ReadController); });
    part.targetTemperature = part.fanTemperature.defaultValue;
    part.targetFanSpeed = part.fanSpeed.defaultValue;
    part.minimumFanSpeed = part.fanSpeed.min;
    if (auto const fan = object.Optional("fan")) {
        ReadFan(*fan, part);
    }
    part.powerLimit = part.power.defaultValue;
    part.temperatureLimit = part.temperature.defaultValue;
    if (auto const limit = object.Optional("powerLimit")) {
        ReadPowerLimit(*limit, part);
    }
    object.Finish();
    return part;
}

}  // namespace gputune::sim
