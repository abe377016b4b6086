// The driver behind Intel's stand-in: what is set is in force and read back, and what does not fit is refused.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <string>
#include <vector>

#include "sim/intel/IntelDriver.h"
#include "sim/intel/hand_out.h"

namespace {

using namespace gputune::intel;
using namespace gputune::sim;

IntelDevice SomeDevice() {
    IntelDevice device;
    device.name = "A board";
    device.vendorId = 0x8086;
    device.luidLow = -1;
    device.luidHigh = 5;
    device.idleEngineClock = 600;
    device.engineClock = 2000;
    device.memoryClock = 2100;
    IntelFan fan;
    fan.modes = 3;
    fan.maxRpm = 3000;
    fan.maxPoints = 4;
    device.fans = {fan, fan};
    device.overclock.supported = true;
    auto const control = [](double min, double max, double standard) {
        OverclockControl range;
        range.supported = true;
        range.min = min;
        range.max = max;
        range.defaultValue = standard;
        return range;
    };
    device.overclock.gpuFrequencyOffset = control(-50, 300, 0);
    device.overclock.vramFrequencyOffset = control(0, 150, 0);
    device.overclock.powerLimit = control(100, 240, 200);
    return device;
}

ctl_fan_speed_t Percent(int speed) {
    return {.Size = 16, .Version = 0, .speed = speed, .units = 1};
}

ctl_fan_speed_table_t Table(std::vector<std::pair<std::uint32_t, int>> const& points) {
    ctl_fan_speed_table_t table{};
    table.Size = sizeof(table);
    table.numPoints = static_cast<int>(points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        table.table[i] = {.Size = 28, .Version = 0, .temperature = points[i].first, .speed = Percent(points[i].second)};
    }
    return table;
}

TEST(SimIntelDevice, PropertiesTellTheIdentity) {
    IntelDevice const device = SomeDevice();
    IntelDeviceState const state(device);
    CtlLuid luid{};
    ctl_device_adapter_properties_t properties{};
    properties.pDeviceID = &luid;
    properties.device_id_size = 7;
    EXPECT_EQ(state.GetProperties(properties), kCtlInvalidSize);
    properties.device_id_size = 8;
    ASSERT_EQ(state.GetProperties(properties), kCtlSuccess);
    EXPECT_EQ(luid.low, 0xFFFFFFFF);
    EXPECT_EQ(luid.high, 5);
    EXPECT_EQ(properties.device_type, 1u);
    EXPECT_EQ(properties.pci_vendor_id, 0x8086u);
    EXPECT_STREQ(properties.name, "A board");
}

TEST(SimIntelDevice, PowerLimitIsInMilliwattsAndKeptToItsRange) {
    IntelDevice const device = SomeDevice();
    IntelDeviceState state(device);
    double limit = 0;
    ASSERT_EQ(state.GetPowerLimit(limit), kCtlSuccess);
    EXPECT_EQ(limit, 200000);
    ASSERT_EQ(state.SetPowerLimit(230000), kCtlSuccess);
    ASSERT_EQ(state.GetPowerLimit(limit), kCtlSuccess);
    EXPECT_EQ(limit, 230000);
    EXPECT_DOUBLE_EQ(state.ModelControls().powerLimit, 1.15);
    for (double const wrong : {240001.0, 99999.0, 0.0, -1.0, std::nan(""), HUGE_VAL}) {
        EXPECT_EQ(state.SetPowerLimit(wrong), kCtlPowerOutsideRange) << wrong;
    }
    ASSERT_EQ(state.GetPowerLimit(limit), kCtlSuccess);
    EXPECT_EQ(limit, 230000);
}

TEST(SimIntelDevice, OffsetsNeedTheWaiver) {
    IntelDevice const device = SomeDevice();
    IntelDeviceState state(device);
    EXPECT_EQ(state.SetGpuFrequencyOffset(100), kCtlWaiverNotSet);
    EXPECT_EQ(state.SetVramFrequencyOffset(100), kCtlWaiverNotSet);
    ASSERT_EQ(state.SetWaiver(), kCtlSuccess);
    ASSERT_EQ(state.SetGpuFrequencyOffset(100), kCtlSuccess);
    ASSERT_EQ(state.SetVramFrequencyOffset(50), kCtlSuccess);
    double offset = 0;
    ASSERT_EQ(state.GetGpuFrequencyOffset(offset), kCtlSuccess);
    EXPECT_EQ(offset, 100);
    ASSERT_EQ(state.GetVramFrequencyOffset(offset), kCtlSuccess);
    EXPECT_EQ(offset, 50);
    EXPECT_EQ(state.ModelControls().engineClock, 2100);
    EXPECT_EQ(state.ModelControls().defaultEngineClock, 2000);
    EXPECT_EQ(state.ModelControls().memoryClock, 2150);
    EXPECT_EQ(state.SetGpuFrequencyOffset(300.5), kCtlFrequencyOutsideRange);
    EXPECT_EQ(state.SetVramFrequencyOffset(-1), kCtlFrequencyOutsideRange);
}

TEST(SimIntelDevice, BoardSaysWhatTheWaiverIsFor) {
    IntelDevice device = SomeDevice();
    device.overclock.waiver = WaiverFor::Everything;
    IntelDeviceState strict(device);
    EXPECT_EQ(strict.SetPowerLimit(200000), kCtlWaiverNotSet);
    ASSERT_EQ(strict.SetWaiver(), kCtlSuccess);
    EXPECT_EQ(strict.SetPowerLimit(200000), kCtlSuccess);
    IntelDevice free = SomeDevice();
    free.overclock.waiver = WaiverFor::Nothing;
    IntelDeviceState lenient(free);
    EXPECT_EQ(lenient.SetGpuFrequencyOffset(100), kCtlSuccess);
}

TEST(SimIntelDevice, ControlThatIsNotSupportedIsRefused) {
    IntelDevice device = SomeDevice();
    device.overclock.vramFrequencyOffset.supported = false;
    IntelDeviceState part(device);
    ASSERT_EQ(part.SetWaiver(), kCtlSuccess);
    double value = 0;
    EXPECT_EQ(part.GetVramFrequencyOffset(value), kCtlOverclockNotSupported);
    EXPECT_EQ(part.SetVramFrequencyOffset(0), kCtlOverclockNotSupported);
    IntelDevice none = SomeDevice();
    none.overclock.supported = false;
    IntelDeviceState nothing(none);
    EXPECT_EQ(nothing.SetWaiver(), kCtlOverclockNotSupported);
    EXPECT_EQ(nothing.SetPowerLimit(200000), kCtlOverclockNotSupported);
    ctl_oc_properties_t properties{};
    ASSERT_EQ(nothing.GetOverclockProperties(properties), kCtlSuccess);
    EXPECT_EQ(properties.bSupported, 0);
}

TEST(SimIntelDevice, OverclockPropertiesAreTheBoards) {
    IntelDevice device = SomeDevice();
    device.overclock.gpuFrequencyOffset.relative = true;
    device.overclock.gpuFrequencyOffset.reference = 2000;
    IntelDeviceState const state(device);
    ctl_oc_properties_t properties{};
    ASSERT_EQ(state.GetOverclockProperties(properties), kCtlSuccess);
    EXPECT_EQ(properties.bSupported, 1);
    EXPECT_EQ(properties.gpuFrequencyOffset.bRelative, 1);
    EXPECT_EQ(properties.gpuFrequencyOffset.bReference, 1);
    EXPECT_EQ(properties.gpuFrequencyOffset.reference, 2000);
    EXPECT_EQ(properties.powerLimit.Default, 200);
    EXPECT_EQ(properties.powerLimit.max, 240);
    EXPECT_EQ(properties.powerLimit.bReference, 0);
    EXPECT_EQ(properties.temperatureLimit.bSupported, 0);
}

TEST(SimIntelDevice, FixedSpeedIsReadBackAndGoverns) {
    IntelDevice const device = SomeDevice();
    IntelDeviceState state(device);
    ASSERT_EQ(state.SetFanFixed(1, Percent(40)), kCtlSuccess);
    ctl_fan_config_t config{};
    ASSERT_EQ(state.GetFanConfig(1, config), kCtlSuccess);
    EXPECT_EQ(config.mode, 1);
    EXPECT_EQ(config.speedFixed.speed, 40);
    EXPECT_EQ(config.speedFixed.units, 1u);
    EXPECT_EQ(state.ModelControls().fanPercent, 40);
    ASSERT_EQ(state.GetFanConfig(0, config), kCtlSuccess);
    EXPECT_EQ(config.mode, 0) << "the other fan was not set";
    ASSERT_EQ(state.SetFanDefault(0), kCtlSuccess);
    EXPECT_EQ(state.ModelControls().fanPercent, std::nullopt);
}

TEST(SimIntelDevice, TableIsReadBackAndGoverns) {
    IntelDevice const device = SomeDevice();
    IntelDeviceState state(device);
    ASSERT_EQ(state.SetFanTable(0, Table({{40, 20}, {60, 50}, {80, 100}})), kCtlSuccess);
    ctl_fan_config_t config{};
    ASSERT_EQ(state.GetFanConfig(0, config), kCtlSuccess);
    EXPECT_EQ(config.mode, 2);
    EXPECT_EQ(config.speedTable.numPoints, 3);
    EXPECT_EQ(config.speedTable.table[1].temperature, 60u);
    EXPECT_EQ(config.speedTable.table[1].speed.speed, 50);
    EXPECT_EQ(config.speedTable.table[1].speed.units, 1u);
    ASSERT_EQ(state.ModelControls().fanCurve.size(), 3u);
    EXPECT_EQ(state.ModelControls().fanCurve[2].percent, 100);
}

TEST(SimIntelDevice, FlatTableWithoutTemperaturesAndInnerSizesIsTaken) {
    IntelDevice const device = SomeDevice();
    IntelDeviceState state(device);
    auto table = Table({{0, 40}, {0, 40}, {0, 40}, {0, 40}});
    for (auto& point : table.table) {
        point.speed.Size = 0;
    }
    ASSERT_EQ(state.SetFanTable(0, table), kCtlSuccess);
    ThermalModel model({}, state.ModelControls());
    EXPECT_NEAR(model.Read().fanPercent, 40, 0.1);
}

TEST(SimIntelDevice, FanSettingThatDoesNotFitIsRefused) {
    IntelDevice const device = SomeDevice();
    IntelDeviceState state(device);
    ASSERT_EQ(state.SetFanFixed(0, Percent(55)), kCtlSuccess);
    for (int const speed : {-1, 101, 150, INT_MAX}) {
        EXPECT_EQ(state.SetFanFixed(0, Percent(speed)), kCtlInvalidArgument) << speed;
        EXPECT_EQ(state.SetFanTable(0, Table({{40, speed}})), kCtlInvalidArgument) << speed;
    }
    auto otherUnits = Percent(50);
    otherUnits.units = 2;
    EXPECT_EQ(state.SetFanFixed(0, otherUnits), kCtlInvalidArgument);
    EXPECT_EQ(state.SetFanTable(0, Table({{60, 50}, {40, 20}})), kCtlInvalidArgument) << "temperatures that fall";
    for (int const count : {0, -1, 5, 33, INT_MAX}) {
        auto table = Table({{40, 20}});
        table.numPoints = count;
        EXPECT_EQ(state.SetFanTable(0, table), kCtlInvalidArgument) << count << " points";
    }
    EXPECT_EQ(state.ModelControls().fanPercent, 55);
}

TEST(SimIntelDevice, BoardWithMorePointsThanARecordHoldsIsNotReadBeyondIt) {
    IntelDevice device = SomeDevice();
    device.fans[0].maxPoints = 1000;
    IntelDeviceState state(device);
    auto table = Table(std::vector<std::pair<std::uint32_t, int>>(32, {50, 50}));
    EXPECT_EQ(state.SetFanTable(0, table), kCtlSuccess);
    table.numPoints = 33;
    EXPECT_EQ(state.SetFanTable(0, table), kCtlInvalidArgument);
    ctl_fan_properties_t properties{};
    ASSERT_EQ(state.GetFanProperties(0, properties), kCtlSuccess);
    EXPECT_EQ(properties.maxPoints, 1000);
}

TEST(SimIntelDevice, FanTakesOnlyTheModesItHas) {
    IntelDevice device = SomeDevice();
    device.fans[0].modes = 1;
    device.fans[1].modes = 2;
    IntelDeviceState state(device);
    EXPECT_EQ(state.SetFanFixed(0, Percent(40)), kCtlSuccess);
    EXPECT_EQ(state.SetFanTable(0, Table({{40, 20}})), kCtlUnsupportedFeature);
    EXPECT_EQ(state.SetFanFixed(1, Percent(40)), kCtlUnsupportedFeature);
    EXPECT_EQ(state.SetFanTable(1, Table({{40, 20}})), kCtlSuccess);
    device.fans[0].canControl = false;
    EXPECT_EQ(state.SetFanFixed(0, Percent(40)), kCtlUnsupportedFeature);
    EXPECT_EQ(state.SetFanDefault(0), kCtlUnsupportedFeature);
}

TEST(SimIntelDevice, TelemetryIsTheModelsOrTheFiles) {
    IntelDevice device = SomeDevice();
    auto const item = [&](Telemetry name) -> TelemetryItem& {
        return device.telemetry[static_cast<std::size_t>(name)];
    };
    item(Telemetry::timeStamp).supported = true;
    item(Telemetry::gpuVoltage).supported = true;
    item(Telemetry::globalActivityCounter).supported = true;
    item(Telemetry::vramVoltage) = {.supported = true, .value = 1.35};
    item(Telemetry::gpuCurrentTemperature) = {.supported = false, .value = 70};
    item(Telemetry::fanSpeed).supported = true;
    IntelDeviceState const state(device);
    Readings readings;
    readings.voltage = 950;
    readings.activity = 7.5;
    readings.engineClock = 1234;
    readings.fanRpm = 1500;
    ctl_power_telemetry_t telemetry{};
    ASSERT_EQ(state.GetTelemetry(telemetry, readings, 12), kCtlSuccess);
    EXPECT_EQ(telemetry.timeStamp.value, 12);
    EXPECT_DOUBLE_EQ(telemetry.gpuVoltage.value, 0.95);
    EXPECT_EQ(telemetry.globalActivityCounter.value, 7.5);
    EXPECT_EQ(telemetry.vramVoltage.value, 1.35);
    EXPECT_EQ(telemetry.gpuCurrentTemperature.bSupported, 0);
    EXPECT_EQ(telemetry.gpuCurrentTemperature.value, 70);
    EXPECT_EQ(telemetry.gpuCurrentClockFrequency.bSupported, 0);
    EXPECT_EQ(telemetry.gpuCurrentClockFrequency.value, 0) << "the board does not tell it";
    EXPECT_EQ(telemetry.fanSpeed[1].value, 1500);
    EXPECT_EQ(telemetry.fanSpeed[2].bSupported, 0) << "the board has two fans";
}

Board TwoDevices() {
    Board board;
    board.vendor = Vendor::Intel;
    board.intel.devices = {SomeDevice(), std::nullopt, SomeDevice()};
    return board;
}

TEST(SimIntelDriver, NullHandlesStandWhereTheBoardHasThem) {
    IntelDriver driver(TwoDevices());
    auto const devices = driver.Devices();
    ASSERT_EQ(devices.size(), 3u);
    EXPECT_NE(devices[0], nullptr);
    EXPECT_EQ(devices[1], nullptr);
    EXPECT_NE(devices[2], devices[0]);
    EXPECT_EQ(driver.Fans(devices[0]).size(), 2u);
    EXPECT_TRUE(driver.Fans(nullptr).empty());
    auto const nothing = [](IntelDeviceState&, auto const&) { return kCtlSuccess; };
    EXPECT_EQ(driver.WithDevice(devices[2], 0, nothing), kCtlSuccess);
    EXPECT_EQ(driver.WithDevice(nullptr, 0, nothing), kCtlInvalidArgument);
    EXPECT_EQ(driver.WithFan(driver.Fans(devices[2])[1], 0, nothing), kCtlSuccess);
    EXPECT_EQ(driver.WithFan(reinterpret_cast<ctl_fan_handle_t>(devices[0]), 0, nothing), kCtlInvalidArgument);
}

TEST(SimIntelDriver, SettingsChangeTheCourseOfTheirDeviceAlone) {
    Board board = TwoDevices();
    for (auto& device : board.intel.devices) {
        if (device) {
            device->model.load = {{.seconds = 1, .percent = 100}};
        }
    }
    IntelDriver driver(board);
    auto const devices = driver.Devices();
    auto const fan = driver.Fans(devices[2])[0];
    ASSERT_EQ(driver.WithFan(fan, 0,
                             [](IntelDeviceState& state, std::size_t i) { return state.SetFanFixed(i, Percent(100)); }),
              kCtlSuccess);
    ASSERT_EQ(driver.WithDevice(devices[2], 0,
                                [](IntelDeviceState& state, auto const&) { return state.SetPowerLimit(240000); }),
              kCtlSuccess);
    auto const after = [&](ctl_device_adapter_handle_t device) {
        Readings seen;
        driver.WithDevice(device, 200, [&](IntelDeviceState&, Readings const& readings) {
            seen = readings;
            return kCtlSuccess;
        });
        return seen;
    };
    Readings const untouched = after(devices[0]);
    Readings const tuned = after(devices[2]);
    EXPECT_GT(tuned.fanRpm, untouched.fanRpm + 500);
    EXPECT_GT(tuned.engineClock, untouched.engineClock + 50);
    EXPECT_GT(tuned.energy, untouched.energy);
    EXPECT_NEAR(tuned.fanRpm, 3000, 10) << "the fan's own top speed";
}

constexpr std::uint32_t kRoom = 8;

TEST(SimIntelHandOut, CountFirstThenAsManyAsFit) {
    int things[3];
    std::vector<int*> const list = {&things[0], &things[1], &things[2]};
    std::uint32_t count = 99;
    HandOut<int*>(list, count, nullptr, Garbage::None);
    EXPECT_EQ(count, 3u);
    int* storage[kRoom] = {};
    count = 2;
    HandOut(list, count, storage, Garbage::None);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(storage[1], &things[1]);
    EXPECT_EQ(storage[2], nullptr) << "no further than there is room";
}

TEST(SimIntelHandOut, GarbageIsInTheCountAndNotBehindTheStorage) {
    int things[3];
    std::vector<int*> const list = {&things[0], &things[1], &things[2]};
    auto const second = [&](Garbage garbage, int*(&storage)[kRoom]) {
        std::uint32_t count = 3;
        std::fill(std::begin(storage), std::end(storage), nullptr);
        HandOut(list, count, storage, garbage);
        EXPECT_EQ(storage[3], nullptr);
        return count;
    };
    int* storage[kRoom];
    EXPECT_EQ(second(Garbage::GrowingCount, storage), 4u);
    EXPECT_EQ(storage[2], &things[2]);
    EXPECT_EQ(second(Garbage::ShrinkingCount, storage), 2u);
    EXPECT_EQ(storage[2], nullptr);
    EXPECT_EQ(second(Garbage::NegativeCount, storage), UINT32_MAX);
    EXPECT_EQ(second(Garbage::NullHandles, storage), 3u);
    EXPECT_EQ(storage[0], nullptr);
    std::uint32_t count = 0;
    HandOut<int*>(list, count, nullptr, Garbage::HugeCount);
    EXPECT_EQ(count, 4096u);
}

}  // namespace
