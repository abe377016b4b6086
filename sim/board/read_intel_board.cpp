#include <algorithm>
#include <iterator>

#include "sim/board/board_readers.h"

namespace gputune::sim {

namespace {

constexpr std::size_t kNameBytes = 99;  // what the vendor's record holds beside the terminator
constexpr std::size_t kMostDevices = 64;
constexpr std::size_t kMostFans = 5;  // as many as the telemetry record has items for
constexpr double kMaxClock = 1e6;     // MHz
constexpr double kMaxSetting = 1e9;

struct TelemetryName {
    char const* name;
    bool inModel;
};

constexpr TelemetryName kTelemetryNames[] = {
#define SIM_TELEMETRY(name, ...) {#name, false __VA_OPT__(|| true)},
#include "sim/board/telemetry_items.inc"
};

OverclockControl ReadControl(JsonValue const& value) {
    JsonObject object(value);
    OverclockControl control;
    control.supported = true;
    object.Read("supported", control.supported);
    object.Read("relative", control.relative);
    object.Read("units", control.units, 0);
    control.min = object.Required("min").Number(-kMaxSetting, kMaxSetting);
    control.max = object.Required("max").Number(control.min, kMaxSetting);
    object.Read("step", control.step, 0, kMaxSetting);
    control.defaultValue = object.Required("default").Number(control.min, control.max);
    object.ReadWith("reference", control.reference,
                    [](JsonValue const& entry) { return entry.Number(-kMaxSetting, kMaxSetting); });
    object.Finish();
    return control;
}

Overclocking ReadOverclock(JsonValue const& value) {
    JsonObject object(value);
    Overclocking overclock;
    overclock.supported = true;
    object.Read("supported", overclock.supported);
    if (auto const waiver = object.Optional("waiver")) {
        overclock.waiver = static_cast<WaiverFor>(waiver->Choice({"nothing", "offsets", "everything"}));
    }
    object.ReadWith("gpuFrequencyOffset", overclock.gpuFrequencyOffset, ReadControl);
    object.ReadWith("gpuVoltageOffset", overclock.gpuVoltageOffset, ReadControl);
    object.ReadWith("vramFrequencyOffset", overclock.vramFrequencyOffset, ReadControl);
    object.ReadWith("vramVoltageOffset", overclock.vramVoltageOffset, ReadControl);
    object.ReadWith("powerLimit", overclock.powerLimit, ReadControl);
    object.ReadWith("temperatureLimit", overclock.temperatureLimit, ReadControl);
    object.Finish();
    return overclock;
}

IntelFan ReadFan(JsonValue const& value) {
    constexpr int kPercent = 2;
    JsonObject object(value);
    IntelFan fan;
    fan.units = kPercent;
    object.Read("canControl", fan.canControl);
    fan.modes = object.Required("modes").Int(0);
    object.Read("units", fan.units, 0);
    object.Read("maxRpm", fan.maxRpm, 0);
    object.Read("maxPoints", fan.maxPoints);
    object.Finish();
    return fan;
}

TelemetryItem ReadItem(JsonValue const& value, bool inModel) {
    JsonObject object(value);
    TelemetryItem item{.supported = true, .value = std::nullopt};
    object.Read("supported", item.supported);
    if (auto const constant = object.Optional("value")) {
        item.value = constant->Number(-1e300, 1e300);
    } else if (!inModel && item.supported) {
        value.Fail("a \"value\", as the model has none for this item");
    }
    object.Finish();
    return item;
}

void ReadTelemetry(JsonValue const& value, IntelDevice& device) {
    JsonObject object(value);
    for (std::size_t i = 0; i < std::size(kTelemetryNames); ++i) {
        if (auto const item = object.Optional(kTelemetryNames[i].name)) {
            device.telemetry[i] = ReadItem(*item, kTelemetryNames[i].inModel);
        }
    }
    object.Finish();
}

void ReadClocks(JsonValue const& value, IntelDevice& device) {
    JsonObject object(value);
    object.Read("engineIdle", device.idleEngineClock, 0, kMaxClock);
    object.Read("engine", device.engineClock, 1, kMaxClock);
    object.Read("memoryIdle", device.idleMemoryClock, 0, kMaxClock);
    object.Read("memory", device.memoryClock, 1, kMaxClock);
    object.Finish();
}

void ReadLuid(JsonValue const& value, IntelDevice& device) {
    JsonObject object(value);
    device.luidLow = object.Required("low").Mask();
    device.luidHigh = object.Required("high").Int();
    object.Finish();
}

IntelDevice ReadDevice(JsonValue const& value, ModelSettings const& model) {
    constexpr int kIntel = 0x8086;
    JsonObject object(value);
    IntelDevice device;
    object.Read("type", device.type, 0);
    device.name = object.Required("name").String(kNameBytes);
    device.vendorId = kIntel;
    object.ReadWith("vendorId", device.vendorId, &JsonValue::Mask);
    object.ReadWith("deviceId", device.deviceId, &JsonValue::Mask);
    object.ReadWith("revision", device.revision, &JsonValue::Mask);
    if (auto const luid = object.Optional("luid")) {
        ReadLuid(*luid, device);
    }
    if (auto const clocks = object.Optional("clocks")) {
        ReadClocks(*clocks, device);
    }
    object.ReadWith("fans", device.fans, [](JsonValue const& fans) { return fans.List(ReadFan, kMostFans, "fans"); });
    object.ReadWith("overclock", device.overclock, ReadOverclock);
    if (auto const telemetry = object.Optional("telemetry")) {
        ReadTelemetry(*telemetry, device);
    }
    device.model = ReadOwnModel(object, model);
    object.Finish();
    return device;
}

}  // namespace

void ReadIntel(JsonObject& object, Board& board) {
    board.library = "ControlLib32";
    board.model = ReadOwnModel(object, {});
    auto const read = [&](JsonValue const& device) {
        return device.IsNull() ? std::nullopt : std::optional(ReadDevice(device, board.model));
    };
    board.intel.devices = object.Required("devices").List(read, kMostDevices, "devices");
    board.faults = ReadFaults(object, IntelFaultRules());
}

}  // namespace gputune::sim
