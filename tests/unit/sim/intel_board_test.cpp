// Board files of Intel boards: what is read from a good one, and what is said about a bad one.
#include <gtest/gtest.h>

#include <string>

#include "board_text.h"
#include "sim/board/BoardFile.h"

namespace {

using namespace gputune::sim;

std::string IntelBoardText(std::string const& more = "") {
    return R"({
    "format": 1,
    "captions": ["Intel(R) Arc(TM) A770 Graphics"],
    "vendor": "intel",
    "devices": [
        { "type": 2, "name": "Something else" },
        null,
        {
            "name": "A board", "deviceId": "0x56a0", "revision": 8, "luid": { "low": 4294967295, "high": -2 },
            "clocks": { "engineIdle": 500, "engine": 2000, "memory": 2100.5 },
            "fans": [{ "modes": 2, "maxRpm": 3000, "maxPoints": 8 }, { "modes": 1, "canControl": false, "units": 3 }],
            "overclock": {
                "gpuFrequencyOffset": { "min": -100, "max": 300, "step": 0.5, "default": 0, "relative": true,
                                        "reference": 2000 },
                "powerLimit": { "min": 95, "max": 228.5, "default": 190, "supported": false, "units": 4 }
            },
            "telemetry": {
                "timeStamp": { "value": 12.5 }, "gpuCurrentTemperature": {}, "vramVoltage": { "supported": false }
            },
            "model": { "ambientTemperature": 30 }
        }
    ],
    "model": { "ambientTemperature": 20 })" +
           more + "}";
}

TelemetryItem const& Item(IntelDevice const& device, Telemetry item) {
    return device.telemetry[static_cast<std::size_t>(item)];
}

TEST(SimIntelBoard, DevicesAreReadInTheirOrder) {
    Board const board = ReadBoardText(IntelBoardText(), "some.json");
    EXPECT_EQ(board.vendor, Vendor::Intel);
    EXPECT_EQ(board.library, "ControlLib32");
    ASSERT_EQ(board.intel.devices.size(), 3u);
    ASSERT_TRUE(board.intel.devices[0]);
    EXPECT_EQ(board.intel.devices[0]->type, 2);
    EXPECT_FALSE(board.intel.devices[1]);
    ASSERT_TRUE(board.intel.devices[2]);
    IntelDevice const& device = *board.intel.devices[2];
    EXPECT_EQ(device.type, 1);
    EXPECT_EQ(device.name, "A board");
    EXPECT_EQ(device.vendorId, 0x8086);
    EXPECT_EQ(device.deviceId, 0x56a0);
    EXPECT_EQ(device.revision, 8);
    EXPECT_EQ(device.luidLow, -1);
    EXPECT_EQ(device.luidHigh, -2);
}

TEST(SimIntelBoard, ClocksAndFansAreRead) {
    IntelDevice const device = *ReadBoardText(IntelBoardText(), "some.json").intel.devices[2];
    EXPECT_EQ(device.idleEngineClock, 500);
    EXPECT_EQ(device.engineClock, 2000);
    EXPECT_EQ(device.memoryClock, 2100.5);
    ASSERT_EQ(device.fans.size(), 2u);
    EXPECT_EQ(device.fans[0].modes, 2);
    EXPECT_EQ(device.fans[0].units, 2);
    EXPECT_EQ(device.fans[0].maxRpm, 3000);
    EXPECT_EQ(device.fans[0].maxPoints, 8);
    EXPECT_TRUE(device.fans[0].canControl);
    EXPECT_FALSE(device.fans[1].canControl);
    EXPECT_EQ(device.fans[1].units, 3);
}

TEST(SimIntelBoard, OverclockControlsAreRead) {
    Overclocking const overclock = ReadBoardText(IntelBoardText(), "some.json").intel.devices[2]->overclock;
    EXPECT_TRUE(overclock.supported);
    EXPECT_EQ(overclock.waiver, WaiverFor::Offsets);
    EXPECT_TRUE(overclock.gpuFrequencyOffset.supported);
    EXPECT_TRUE(overclock.gpuFrequencyOffset.relative);
    EXPECT_EQ(overclock.gpuFrequencyOffset.reference, 2000);
    EXPECT_EQ(overclock.gpuFrequencyOffset.min, -100);
    EXPECT_EQ(overclock.gpuFrequencyOffset.max, 300);
    EXPECT_EQ(overclock.gpuFrequencyOffset.step, 0.5);
    EXPECT_FALSE(overclock.vramFrequencyOffset.supported);
    EXPECT_FALSE(overclock.powerLimit.supported);
    EXPECT_EQ(overclock.powerLimit.max, 228.5);
    EXPECT_EQ(overclock.powerLimit.defaultValue, 190);
    EXPECT_EQ(overclock.powerLimit.units, 4);
    EXPECT_EQ(overclock.powerLimit.reference, std::nullopt);
}

TEST(SimIntelBoard, DeviceWithoutOverclockPartSupportsNone) {
    IntelDevice const device = *ReadBoardText(IntelBoardText(), "some.json").intel.devices[0];
    EXPECT_FALSE(device.overclock.supported);
    EXPECT_TRUE(device.fans.empty());
    EXPECT_FALSE(Item(device, Telemetry::gpuCurrentTemperature).supported);
}

TEST(SimIntelBoard, EveryWaiverHasItsName) {
    auto const waiver = [](std::string const& name) {
        std::string const text =
            Replaced(IntelBoardText(), R"("overclock": {)", R"("overclock": { "waiver": ")" + name + "\",");
        return ReadBoardText(text, "some.json").intel.devices[2]->overclock.waiver;
    };
    EXPECT_EQ(waiver("nothing"), WaiverFor::Nothing);
    EXPECT_EQ(waiver("offsets"), WaiverFor::Offsets);
    EXPECT_EQ(waiver("everything"), WaiverFor::Everything);
}

TEST(SimIntelBoard, TelemetryItemsAreConstantOrTheModels) {
    IntelDevice const device = *ReadBoardText(IntelBoardText(), "some.json").intel.devices[2];
    EXPECT_EQ(Item(device, Telemetry::timeStamp).value, 12.5);
    EXPECT_TRUE(Item(device, Telemetry::gpuCurrentTemperature).supported);
    EXPECT_EQ(Item(device, Telemetry::gpuCurrentTemperature).value, std::nullopt);
    EXPECT_FALSE(Item(device, Telemetry::vramVoltage).supported);
    EXPECT_FALSE(Item(device, Telemetry::fanSpeed).supported);
}

TEST(SimIntelBoard, ModelOfADeviceComesBeforeTheBoards) {
    Board const board = ReadBoardText(IntelBoardText(), "some.json");
    EXPECT_EQ(board.intel.devices[0]->model.ambientTemperature, 20);
    EXPECT_EQ(board.intel.devices[2]->model.ambientTemperature, 30);
}

TEST(SimIntelBoard, EveryKindOfGarbageHasItsName) {
    auto const garbage = [](char const* entryPoint, char const* kind) {
        std::string const fault =
            std::string(R"(, "faults": [{ "entryPoint": ")") + entryPoint + R"(", "garbage": ")" + kind + R"(" }])";
        return ReadBoardText(IntelBoardText(fault), "some.json").faults.at(0).garbage;
    };
    EXPECT_EQ(garbage("ctlEnumerateDevices", "null-handles"), Garbage::NullHandles);
    EXPECT_EQ(garbage("ctlEnumerateDevices", "growing-count"), Garbage::GrowingCount);
    EXPECT_EQ(garbage("ctlEnumFans", "shrinking-count"), Garbage::ShrinkingCount);
    EXPECT_EQ(garbage("ctlFanGetProperties", "one-too-many"), Garbage::OneTooMany);
    EXPECT_EQ(garbage("ctlPowerTelemetryGet", "extreme-values"), Garbage::ExtremeValues);
}

TEST(SimIntelBoard, FaultMustFitItsEntryPoint) {
    auto const faultError = [](std::string const& fault) {
        return ErrorOf(IntelBoardText(R"(, "faults": [)" + fault + "]"));
    };
    EXPECT_EQ(faultError(R"({ "entryPoint": "ctlReservedCall", "missing": true })"), "");
    EXPECT_EQ(faultError(R"({ "entryPoint": "ADL2_FPS_Caps", "missing": true })"),
              "some.json: faults[0].entryPoint: expected the name of an entry point of the vendor's library, found "
              "\"ADL2_FPS_Caps\"");
    EXPECT_EQ(faultError(R"({ "entryPoint": "ctlFanGetConfig", "garbage": "null-list" })"),
              "some.json: faults[0].garbage: expected a kind of garbage that ctlFanGetConfig can hand out, found "
              "\"null-list\"");
}

TEST(SimIntelBoard, ErrorsNameTheKeyAndWhatWasExpected) {
    auto const errorWith = [](std::string const& from, std::string const& to) {
        return ErrorOf(Replaced(IntelBoardText(), from, to));
    };
    EXPECT_EQ(errorWith(R"("name": "A board", )", ""), "some.json: devices[2].name: this key is missing");
    EXPECT_EQ(errorWith(R"("name": "A board")", R"("name": ")" + std::string(100, 'x') + "\"").substr(0, 82),
              "some.json: devices[2].name: expected a string of at most 99 bytes without NUL, fou");
    EXPECT_EQ(errorWith(R"({ "modes": 2,)", "{"), "some.json: devices[2].fans[0].modes: this key is missing");
    EXPECT_EQ(errorWith(R"("min": 95, "max": 228.5)", R"("min": 95, "max": 94)"),
              "some.json: devices[2].overclock.powerLimit.max: expected a number from 95.0 to 1000000000.0, found 94");
    EXPECT_EQ(errorWith(R"("vramVoltage": { "supported": false })", R"("vramVoltage": {})"),
              "some.json: devices[2].telemetry.vramVoltage: expected a \"value\", as the model has none for this item, "
              "found an object");
    EXPECT_EQ(errorWith(R"("min": 95, "max": 228.5, "default": 190)", R"("min": 95, "max": 228.5, "default": 230)"),
              "some.json: devices[2].overclock.powerLimit.default: expected a number from 95.0 to 228.5, found 230");
    EXPECT_EQ(errorWith(R"("timeStamp")", R"("time")").substr(0, 51),
              "some.json: devices[2].telemetry.time: unknown key; ");
    EXPECT_EQ(errorWith(R"(, "canControl": false)", R"(, "canControl": 0)"),
              "some.json: devices[2].fans[1].canControl: expected true or false, found 0");
    EXPECT_EQ(errorWith("null,", "7,"), "some.json: devices[1]: expected an object, found 7");
}

TEST(SimIntelBoard, MoreFansThanTheTelemetryHoldsAreRefused) {
    std::string fans = R"("fans": [)";
    for (int i = 0; i < 6; ++i) {
        fans += R"({ "modes": 0 },)";
    }
    fans.back() = ']';
    std::string const board =
        R"({ "format": 1, "captions": [], "vendor": "intel", "devices": [{ "name": "", )" + fans + "}]}";
    EXPECT_EQ(ErrorOf(board), "some.json: devices[0].fans[5]: expected no more than 5 fans, found an object");
}

}  // namespace
