#include <algorithm>
#include <sstream>

#include "sim/board/board_readers.h"

namespace gputune::sim {

namespace {

constexpr int kDefaultSettings = 39;
constexpr int kMaxSettings = 64;  // newer drivers have more than the older records hold
constexpr int kSensors = 256;

struct Feature {
    int capability;
    std::size_t firstSetting, lastSetting;
};
// The capability bits that the library reads, and the settings that it uses with each. These need a range;
// docs/board-files.md explains them.
constexpr Feature kFeatures[] = {
    {0x1, 0, 1},    {0x2, 6, 7},    {0x4, 8, 8},     {0x8, 9, 9},      {0x10, 11, 11},
    {0x20, 10, 10}, {0x40, 12, 12}, {0x200, 15, 15}, {0x2000, 19, 28}, {0x10000, 36, 36},
};

void ReadSettings(JsonValue const& value, Overdrive8& part) {
    int const last = static_cast<int>(part.settings.size()) - 1;
    std::vector<bool> given(part.settings.size());
    value.ForEach([&](JsonValue const& entry) {
        if (last < 0) {
            entry.Fail("no setting, as \"count\" is 0");
        }
        JsonObject object(entry);
        JsonValue const idValue = object.Required("id");
        auto const id = static_cast<std::size_t>(idValue.Int(0, last));
        if (given[id]) {
            idValue.Fail("a setting that is not given twice");
        }
        given[id] = true;
        Setting& setting = part.settings[id];
        object.Read("feature", setting.feature);
        setting.min = object.Required("min").Int();
        setting.max = object.Required("max").Int(setting.min);
        setting.defaultValue = object.Required("default").Int(setting.min, setting.max);
        setting.current = setting.defaultValue;
        object.Read("current", setting.current);
        object.Finish();
    });
}

// A real driver reports a range for every setting of a capability that the board has.
void RequireRanges(JsonValue const& settings, Overdrive8 const& part) {
    for (auto const& feature : kFeatures) {
        for (std::size_t id = feature.firstSetting; id <= feature.lastSetting; ++id) {
            Setting const& setting = part.settings[id];
            if ((part.capabilities & feature.capability) != 0 && setting.min == 0 && setting.max == 0) {
                std::ostringstream expected;
                expected << "a range other than 0 to 0 for the setting " << id << ", as \"capabilities\" has 0x"
                         << std::hex << feature.capability;
                settings.Fail(expected.str());
            }
        }
    }
}

Sensor ReadSensor(JsonValue const& value) {
    JsonObject object(value);
    Sensor sensor;
    sensor.id = object.Required("id").Int(0, kSensors - 1);
    object.Read("supported", sensor.supported);
    object.Read("value", sensor.value);
    if (auto const quantity = object.Optional("quantity")) {
        if (object.Optional("value")) {
            quantity->Fail(R"(either "quantity" or "value")");
        }
        constexpr Quantity kQuantities[] = {
            &Readings::engineClock, &Readings::memoryClock, &Readings::temperature, &Readings::hotspotTemperature,
            &Readings::fanRpm,      &Readings::fanPercent,  &Readings::load,        &Readings::power,
            &Readings::voltage};
        sensor.quantity =
            kQuantities[quantity->Choice({"engine-clock", "memory-clock", "temperature", "hotspot-temperature",
                                          "fan-rpm", "fan-percent", "load", "power", "voltage"})];
    }
    object.Finish();
    return sensor;
}

}  // namespace

Overdrive8 ReadOverdrive8(JsonValue const& value) {
    JsonObject object(value);
    Overdrive8 part;
    part.capabilities = object.Required("capabilities").Mask();
    int count = kDefaultSettings;
    object.Read("count", count, 0, kMaxSettings);
    part.settings.resize(static_cast<std::size_t>(count));
    JsonValue const settings = object.Required("settings");
    ReadSettings(settings, part);
    // The older records always have this many settings.
    part.settings.resize(std::max(part.settings.size(), static_cast<std::size_t>(kDefaultSettings)));
    part.count = count;
    RequireRanges(settings, part);
    if (auto const entryPoints = object.Optional("entryPoints")) {
        std::size_t const choice = entryPoints->Choice({"both", "newer", "older", "none"});
        part.newerEntryPoints = choice == 0 || choice == 1;
        part.olderEntryPoints = choice == 0 || choice == 2;
    }
    object.ReadWith("sensors", part.sensors, [](JsonValue const& list) { return list.List(ReadSensor); });
    object.Finish();
    return part;
}

}  // namespace gputune::sim
