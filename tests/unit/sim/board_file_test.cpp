// Board files: what is read from a good one, and what is said about a bad one.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "board_text.h"
#include "sim/board/BoardFile.h"

namespace {

using namespace gputune::sim;

constexpr char const* kOverdriveN = R"({
    "levels": 3,
    "ranges": {
        "engineClock": { "min": 30000, "max": 200000, "step": 100, "default": 134000 },
        "memoryClock": { "min": 30000, "max": 225000, "default": 200000 },
        "voltage": { "min": 750, "max": 1200, "default": 1150 },
        "power": { "min": -50, "max": 50, "default": 0 },
        "temperature": { "min": 50, "max": 90, "default": 84 },
        "fanSpeed": { "min": 0, "max": 3200, "default": 2100 }
    },
    "engineLevels": [{ "clock": 30000, "voltage": 750 }, { "clock": 134000, "voltage": 1150 }],
    "memoryLevels": [{ "clock": 200000, "voltage": 950, "enabled": 0, "control": 2 }],
    "thermalControllers": [{ "domain": 1 }, { "domain": 2, "fan": false, "result": -1 }]
})";

std::string OverdriveNBoard(std::string const& more = "") {
    return R"({
    "format": 1,
    "captions": ["AMD Radeon RX 580 Series", null],
    "vendor": "amd",
    "adapters": [{ "index": 4, "udid": "PCI&SUBSYS_0B361002", "name": "A board", "busNumber": 7, "active": false }],
    "overdriveVersion": 7,
    "overdriveN": )" +
           std::string(kOverdriveN) + more + "}";
}

std::string Overdrive8Board(std::string const& part, std::string const& more = "") {
    return R"({ "format": 1, "captions": [], "vendor": "amd", "adapters": [], "overdriveVersion": 8, "overdrive8": )" +
           part + more + "}";
}

TEST(SimBoardFile, AdapterAndCaptionsAreRead) {
    Board const board = ReadBoardText(OverdriveNBoard(), "some.json");
    EXPECT_EQ(board.vendor, Vendor::Amd);
    EXPECT_EQ(board.library, "atiadlxx");
    ASSERT_EQ(board.captions.size(), 2u);
    EXPECT_EQ(board.captions[0], "AMD Radeon RX 580 Series");
    EXPECT_EQ(board.captions[1], std::nullopt);
    ASSERT_EQ(board.amd.adapters.size(), 1u);
    EXPECT_EQ(board.amd.adapters[0].index, 4);
    EXPECT_EQ(board.amd.adapters[0].udid, "PCI&SUBSYS_0B361002");
    EXPECT_EQ(board.amd.adapters[0].busNumber, 7);
    EXPECT_TRUE(board.amd.adapters[0].present);
    EXPECT_FALSE(board.amd.adapters[0].active);
}

TEST(SimBoardFile, OverdriveNPartIsRead) {
    Board const board = ReadBoardText(OverdriveNBoard(), "some.json");
    ASSERT_TRUE(board.amd.overdriveN);
    EXPECT_EQ(board.amd.overdriveN->levelCount, 3);
    EXPECT_EQ(board.amd.overdriveN->engineClock.step, 100);
    EXPECT_EQ(board.amd.overdriveN->engineLevels.size(), 2u);
    EXPECT_EQ(board.amd.overdriveN->memoryLevels.at(0).control, 2);
    EXPECT_EQ(board.amd.overdriveN->thermalControllers.at(1).result, -1);
    // In force at first: the ranges' defaults.
    EXPECT_EQ(board.amd.overdriveN->temperatureLimit, 84);
    EXPECT_EQ(board.amd.overdriveN->targetFanSpeed, 2100);
}

TEST(SimBoardFile, Overdrive8PartIsRead) {
    Board const board = ReadBoardText(Overdrive8Board(R"({
        "capabilities": "0x40008", "count": 45, "entryPoints": "older",
        "settings": [{ "id": 9, "feature": 8, "min": -20, "max": 50, "default": 0, "current": 10 },
                     { "id": 44, "min": 0, "max": 1, "default": 1 }],
        "sensors": [{ "id": 8, "quantity": "temperature" }, { "id": 20, "value": 33, "supported": false }] })"),
                                      "some.json");
    ASSERT_TRUE(board.amd.overdrive8);
    EXPECT_EQ(board.amd.overdrive8->capabilities, 0x40008);
    EXPECT_EQ(board.amd.overdrive8->count, 45);
    EXPECT_EQ(board.amd.overdrive8->settings.at(9).current, 10);
    EXPECT_EQ(board.amd.overdrive8->settings.at(44).current, 1);
    EXPECT_FALSE(board.amd.overdrive8->newerEntryPoints);
    EXPECT_TRUE(board.amd.overdrive8->olderEntryPoints);
    EXPECT_EQ(board.amd.overdrive8->sensors.at(0).quantity, &Readings::temperature);
    EXPECT_EQ(board.amd.overdrive8->sensors.at(1).value, 33);
    EXPECT_FALSE(board.amd.overdrive8->sensors.at(1).supported);
}

TEST(SimBoardFile, FewerSettingsThanTheRecordsHoldArePadded) {
    Board const board =
        ReadBoardText(Overdrive8Board(R"({ "capabilities": 0, "count": 5, "settings": [] })"), "some.json");
    EXPECT_EQ(board.amd.overdrive8->count, 5);
    EXPECT_EQ(board.amd.overdrive8->settings.size(), 39u);
}

TEST(SimBoardFile, FixedReadingsAndFrameRateAreRead) {
    Board const board = ReadBoardText(OverdriveNBoard(R"(,
        "frameMetrics": { "running": true, "framesPerSecond": 59.9 },
        "model": { "fixed": true, "readings": { "temperature": 65.5, "olderFanRpm": 1200 } })"),
                                      "some.json");
    ASSERT_TRUE(board.model.fixed);
    EXPECT_EQ(board.model.fixed->temperature, 65.5);
    EXPECT_EQ(board.model.fixed->fanRpm, 0);
    EXPECT_EQ(board.model.fixed->olderFanRpm, 1200);
    EXPECT_EQ(board.model.fixed->framesPerSecond, 59.9);
    EXPECT_TRUE(board.amd.frameMetricsRunning);
}

TEST(SimBoardFile, FaultsAreRead) {
    Board const board = ReadBoardText(OverdriveNBoard(R"(, "faults": [
        { "entryPoint": "ADL2_OverdriveN_FanControl_Set", "result": -1 },
        { "entryPoint": "ADL2_FPS_Caps", "missing": true },
        { "entryPoint": "ADL2_Adapter_AdapterInfoX4_Get", "garbage": "null-list" }])"),
                                      "some.json");
    ASSERT_EQ(board.faults.size(), 3u);
    EXPECT_EQ(board.faults[0].result, -1);
    EXPECT_EQ(board.faults[1].kind, FaultKind::Missing);
    EXPECT_EQ(board.faults[2].garbage, Garbage::NullList);
}

TEST(SimBoardFile, EveryKindOfGarbageHasItsName) {
    auto const garbage = [](char const* entryPoint, char const* kind) {
        std::string const fault =
            std::string(R"(, "faults": [{ "entryPoint": ")") + entryPoint + R"(", "garbage": ")" + kind + R"(" }])";
        return ReadBoardText(OverdriveNBoard(fault), "some.json").faults.at(0).garbage;
    };
    EXPECT_EQ(garbage("ADL2_Adapter_AdapterInfoX4_Get", "negative-count"), Garbage::NegativeCount);
    EXPECT_EQ(garbage("ADL2_Adapter_AdapterInfoX4_Get", "huge-count"), Garbage::HugeCount);
    EXPECT_EQ(garbage("ADL2_Overdrive8_Init_SettingX2_Get", "short-list"), Garbage::ShortList);
    EXPECT_EQ(garbage("ADL2_Adapter_MemoryInfo_Get", "unterminated-strings"), Garbage::UnterminatedStrings);
    EXPECT_EQ(garbage("ADL2_Overdrive5_ThermalDevices_Enum", "endless-enumeration"), Garbage::EndlessEnumeration);
    EXPECT_EQ(garbage("ADL2_OverdriveN_FanControl_Get", "extreme-values"), Garbage::ExtremeValues);
}

TEST(SimBoardFile, EveryQuantityHasItsName) {
    auto const quantity = [](std::string const& name) {
        std::string const part = R"({ "capabilities": 0, "settings": [], "sensors": [{ "id": 1, "quantity": ")" + name;
        return ReadBoardText(Overdrive8Board(part + "\" }] }"), "some.json").amd.overdrive8->sensors.at(0).quantity;
    };
    EXPECT_EQ(quantity("engine-clock"), &Readings::engineClock);
    EXPECT_EQ(quantity("memory-clock"), &Readings::memoryClock);
    EXPECT_EQ(quantity("hotspot-temperature"), &Readings::hotspotTemperature);
    EXPECT_EQ(quantity("fan-rpm"), &Readings::fanRpm);
    EXPECT_EQ(quantity("fan-percent"), &Readings::fanPercent);
    EXPECT_EQ(quantity("load"), &Readings::load);
    EXPECT_EQ(quantity("power"), &Readings::power);
    EXPECT_EQ(quantity("voltage"), &Readings::voltage);
}

TEST(SimBoardFile, WrongTypeNamesFileKeyAndExpectation) {
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("PCI&SUBSYS_0B361002")", "3")),
              "some.json: adapters[0].udid: expected a string, found 3");
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("active": false)", R"("active": 1)")),
              "some.json: adapters[0].active: expected true or false, found 1");
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("min": 750)", R"("min": 750.5)")),
              "some.json: overdriveN.ranges.voltage.min: expected an integer, found 750.5");
    EXPECT_EQ(ErrorOf("[]"), "some.json: the file: expected an object, found an array");
}

TEST(SimBoardFile, ValueOutOfRangeNamesTheRange) {
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("busNumber": 7)", R"("busNumber": 256)")),
              "some.json: adapters[0].busNumber: expected an integer from 0 to 255, found 256");
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("min": 750, "max": 1200)", R"("min": 750, "max": 700)")),
              "some.json: overdriveN.ranges.voltage.max: expected an integer of at least 750, found 700");
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("min": 750)", R"("min": 99999999999999999999)")).substr(0, 73),
              "some.json: overdriveN.ranges.voltage.min: expected an integer, found 1e+2");
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("min": 750)", R"("min": 4294967296)")),
              "some.json: overdriveN.ranges.voltage.min: expected an integer, found 4294967296");
    EXPECT_EQ(ErrorOf(OverdriveNBoard(R"(, "model": { "ambientTemperature": 200 })")),
              "some.json: model.ambientTemperature: expected a number from -50.0 to 100.0, found 200");
}

TEST(SimBoardFile, DefaultOutsideItsRangeIsRefused) {
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("max": 90, "default": 84)", R"("max": 90, "default": 91)")),
              "some.json: overdriveN.ranges.temperature.default: expected an integer from 50 to 90, found 91");
    EXPECT_EQ(ErrorOf(Overdrive8Board(
                  R"({ "capabilities": 0, "settings": [{ "id": 9, "min": -50, "max": 50, "default": -51 }] })")),
              "some.json: overdrive8.settings[0].default: expected an integer from -50 to 50, found -51");
}

TEST(SimBoardFile, SettingThatEveryBoardHasNeedsARange) {
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("min": -50, "max": 50)", R"("min": 0, "max": 0)")),
              "some.json: overdriveN.ranges.power: expected a range other than 0 to 0, found an object");
}

TEST(SimBoardFile, SettingOfACapabilityNeedsARange) {
    EXPECT_EQ(ErrorOf(Overdrive8Board(R"({ "capabilities": "0x8", "settings": [] })")),
              "some.json: overdrive8.settings: expected a range other than 0 to 0 for the setting 9, as "
              "\"capabilities\" has 0x8, found an array");
    std::string const zero = R"({ "capabilities": "0x2c", "settings": [{ "id": 8, "min": 1, "max": 2, "default": 1 },
        { "id": 9, "min": -1, "max": 1, "default": 0 }, { "id": 10, "min": 0, "max": 0, "default": 0 }] })";
    EXPECT_EQ(ErrorOf(Overdrive8Board(zero)),
              "some.json: overdrive8.settings: expected a range other than 0 to 0 for the setting 10, as "
              "\"capabilities\" has 0x20, found an array");
    EXPECT_EQ(ErrorOf(Overdrive8Board(Replaced(zero, "0x2c", "0xc"))), "");
}

TEST(SimBoardFile, MissingKeyIsNamed) {
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("name": "A board", )", "")),
              "some.json: adapters[0].name: this key is missing");
    EXPECT_EQ(ErrorOf("{}"), "some.json: format: this key is missing");
}

TEST(SimBoardFile, UnknownKeyIsNamedWithTheKnownOnes) {
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("enabled")", R"("active")")),
              "some.json: overdriveN.memoryLevels[0].active: unknown key; known are clock, control, enabled, voltage");
    EXPECT_EQ(ErrorOf(R"({ "format": 1, "captions": [], "vendor": "none", "adapters": [] })"),
              "some.json: adapters: unknown key; known are captions, description, format, vendor");
}

TEST(SimBoardFile, MistypedKeyIsReportedWithTheOneThatIsMeant) {
    EXPECT_EQ(ErrorOf(R"({ "fromat": 1, "captions": [], "vendor": "none" })"),
              "some.json: unknown key \"fromat\"; did you mean \"format\"?");
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("busNumber")", R"("busnumber")")),
              "some.json: adapters[0]: unknown key \"busnumber\"; did you mean \"busNumber\"?");
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("enabled")", R"("enable")")),
              "some.json: overdriveN.memoryLevels[0]: unknown key \"enable\"; did you mean \"enabled\"?");
}

// Others that are in their place are not taken for a missing one, however much they look like it.
TEST(SimBoardFile, KeyInItsPlaceIsNotTakenForTheMissingOne) {
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("min": 750, )", "")),
              "some.json: overdriveN.ranges.voltage.min: this key is missing");
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("temperature": { "min": 50)", R"("fanTemperature": { "min": 50)")),
              "some.json: overdriveN.ranges.temperature: this key is missing");
}

TEST(SimBoardFile, SameKeyTwiceIsRefused) {
    EXPECT_EQ(ErrorOf(R"({ "format": 1, "captions": [], "captions": [], "vendor": "none" })"),
              "some.json: the key \"captions\" is given twice in the same object");
}

TEST(SimBoardFile, SyntaxErrorTellsLineAndColumn) {
    EXPECT_EQ(ErrorOf("{\n    \"format\": 1,\n    \"captions\" []\n}").substr(0, 46),
              "some.json: line 3, column 16: not valid JSON: ");
    EXPECT_EQ(ErrorOf("").substr(0, 45), "some.json: line 1, column 1: not valid JSON: ");
    EXPECT_EQ(ErrorOf("{}}").substr(0, 45), "some.json: line 1, column 3: not valid JSON: ");
}

TEST(SimBoardFile, OtherFormatIsRefused) {
    EXPECT_EQ(ErrorOf(R"({ "format": 2 })"), "some.json: format: expected 1, found 2");
}

TEST(SimBoardFile, UnknownVendorIsRefused) {
    EXPECT_EQ(ErrorOf(R"({ "format": 1, "captions": [], "vendor": "acme" })"),
              "some.json: vendor: expected one of \"none\", \"amd\", \"intel\", \"nvidia\", found \"acme\"");
}

TEST(SimBoardFile, VersionWithoutItsPartIsRefused) {
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), R"("overdriveVersion": 7)", R"("overdriveVersion": 8)")),
              "some.json: overdriveVersion: expected the part \"overdrive8\" with version 8, found 8");
}

TEST(SimBoardFile, TwoAdaptersWithOneIndexAreRefused) {
    std::string const two = R"([{ "index": 1, "udid": "", "name": "", "busNumber": 0 },
                                { "index": 1, "udid": "", "name": "", "busNumber": 0 }])";
    std::string const board =
        R"({ "format": 1, "captions": [], "vendor": "amd", "overdriveVersion": 0, "adapters": )" + two + "}";
    EXPECT_EQ(ErrorOf(board), "some.json: adapters[1]: expected an index that no other adapter has, found an object");
}

TEST(SimBoardFile, MoreLevelsThanAnnouncedAreRefused) {
    EXPECT_EQ(
        ErrorOf(Replaced(OverdriveNBoard(), R"("levels": 3)", R"("levels": 1)")),
        "some.json: overdriveN.engineLevels[1]: expected no more levels than \"levels\" says (1), found an object");
}

TEST(SimBoardFile, SettingBeyondTheCountIsRefused) {
    EXPECT_EQ(ErrorOf(Overdrive8Board(
                  R"({ "capabilities": 0, "settings": [{ "id": 39, "min": 0, "max": 0, "default": 0 }] })")),
              "some.json: overdrive8.settings[0].id: expected an integer from 0 to 38, found 39");
    EXPECT_EQ(ErrorOf(Overdrive8Board(R"({ "capabilities": 0, "count": 0,
                  "settings": [{ "id": 0, "min": 0, "max": 0, "default": 0 }] })")),
              "some.json: overdrive8.settings[0]: expected no setting, as \"count\" is 0, found an object");
}

TEST(SimBoardFile, MaskThatIsNoneIsRefused) {
    for (char const* mask : {"-1", "4294967296", "\"0x\"", "\"0x123456789\"", "\"12\"", "1.5", "true"}) {
        EXPECT_EQ(ErrorOf(Overdrive8Board(std::string(R"({ "settings": [], "capabilities": )") + mask + "}")),
                  "some.json: overdrive8.capabilities: expected an integer from 0 to 4294967295, or its hexadecimal "
                  "digits as in \"0x201f\", found " +
                      std::string(mask));
    }
}

TEST(SimBoardFile, FaultMustFitItsEntryPoint) {
    auto const faultError = [](std::string const& fault) {
        return ErrorOf(OverdriveNBoard(R"(, "faults": [)" + fault + "]"));
    };
    EXPECT_EQ(faultError(R"({ "entryPoint": "ADL2_Nothing", "result": 1 })"),
              "some.json: faults[0].entryPoint: expected the name of an entry point of the vendor's library, found "
              "\"ADL2_Nothing\"");
    EXPECT_EQ(faultError(R"({ "entryPoint": "ADL2_FPS_Caps", "garbage": "null-list" })"),
              "some.json: faults[0].garbage: expected a kind of garbage that ADL2_FPS_Caps can hand out, found "
              "\"null-list\"");
    EXPECT_EQ(faultError(R"({ "entryPoint": "ADL2_FPS_Caps", "result": 0 },
                            { "entryPoint": "ADL2_FPS_Caps", "missing": true })"),
              "some.json: faults[1]: expected an entry point that has no fault yet, found an object");
    EXPECT_EQ(faultError(R"({ "entryPoint": "ADL2_FPS_Caps" })"),
              "some.json: faults[0]: expected one of \"result\", \"missing\", \"garbage\", \"crash\", \"hang\", "
              "\"forget\" and \"stuck\", found an object");
    EXPECT_EQ(faultError(R"({ "entryPoint": "ADL2_FPS_Caps", "missing": false })"),
              "some.json: faults[0].missing: expected true, found false");
}

TEST(SimBoardFile, FaultsOfATimeAreRead) {
    Board const board = ReadBoardText(OverdriveNBoard(R"(, "faults": [
        { "entryPoint": "ADL2_FPS_Caps", "crash": true, "call": 3 },
        { "entryPoint": "ADL2_FPS_Caps", "hang": 0, "from": 2.5, "until": 4 },
        { "entryPoint": "ADL2_OverdriveN_FanControl_Set", "forget": "other-settings" },
        { "forget": "everything", "from": 9 },
        { "stuck": "load", "from": 1 }])"),
                                      "some.json");
    ASSERT_EQ(board.faults.size(), 5U);
    EXPECT_EQ(board.faults[0].kind, FaultKind::Crash);
    EXPECT_EQ(board.faults[0].when.call, 3);
    EXPECT_EQ(board.faults[1].kind, FaultKind::Hang);
    EXPECT_EQ(board.faults[1].seconds, 0);
    EXPECT_EQ(board.faults[1].when.from, 2.5);
    EXPECT_EQ(board.faults[1].when.until, 4);
    EXPECT_TRUE(board.faults[2].othersOnly);
    EXPECT_FALSE(board.faults[3].othersOnly);
    EXPECT_EQ(board.faults[3].entryPoint, "");
    EXPECT_EQ(board.faults[4].kind, FaultKind::Stuck);
    EXPECT_EQ(kStuckQuantities[board.faults[4].quantity], &Readings::load);
}

TEST(SimBoardFile, FaultsThatMakeNoSenseAreRefused) {
    auto const faultError = [](std::string const& fault) {
        return ErrorOf(OverdriveNBoard(R"(, "faults": [)" + fault + "]"));
    };
    EXPECT_EQ(faultError(R"({ "crash": true })"), "some.json: faults[0]: expected \"entryPoint\", found an object");
    EXPECT_EQ(faultError(R"({ "forget": "everything", "call": 2 })"),
              "some.json: faults[0]: expected \"entryPoint\" beside \"call\", found an object");
    EXPECT_EQ(faultError(R"({ "entryPoint": "ADL2_FPS_Caps", "stuck": "load" })"),
              "some.json: faults[0].entryPoint: expected no entry point beside \"stuck\", found \"ADL2_FPS_Caps\"");
    EXPECT_EQ(faultError(R"({ "entryPoint": "ADL2_FPS_Caps", "missing": true, "from": 1 })"),
              "some.json: faults[0]: expected an entry point that is missing all the time, found an object");
    EXPECT_EQ(faultError(R"({ "entryPoint": "ADL2_FPS_Caps", "crash": true, "call": 1, "until": 4 })"),
              "some.json: faults[0].call: expected either \"call\", or \"from\" and \"until\", found 1");
    EXPECT_EQ(faultError(R"({ "entryPoint": "ADL2_FPS_Caps", "result": 1, "from": 5, "until": 4 })"),
              "some.json: faults[0].until: expected a number from 5.0 to 1000000.0, found 4");
}

TEST(SimBoardFile, DescriptionsThatDifferHaveDifferentIdentities) {
    auto const identity = [](std::string const& more) {
        return ReadBoardText(OverdriveNBoard(more), "some.json").identity;
    };
    EXPECT_EQ(identity(""), identity(""));
    EXPECT_NE(identity(""), identity(R"(, "description": "x")"));
}

TEST(SimBoardFile, TextWithoutRoomForItsTerminatorIsRefused) {
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), "A board", std::string(255, 'x'))), "");
    EXPECT_EQ(ErrorOf(Replaced(OverdriveNBoard(), "A board", std::string(256, 'x'))).substr(0, 84),
              "some.json: adapters[0].name: expected a string of at most 255 bytes without NUL, fou");
}

TEST(SimBoardFile, FileIsReadByItsUtf8Path) {
    std::string const path = "bo\xc3\xa4rd.json";
    std::ofstream(std::filesystem::path(std::u8string(path.begin(), path.end()))) << OverdriveNBoard();
    EXPECT_EQ(ReadBoardFile(path).amd.adapters.size(), 1u);
    std::filesystem::remove(std::filesystem::path(std::u8string(path.begin(), path.end())));
    EXPECT_THROW(ReadBoardFile(path), BoardFileError);
}

// What is found instead is said without looking into it: deeper than any stack.
TEST(SimBoardFile, DeepNestingIsAnErrorLikeAnyOther) {
    constexpr std::size_t kDepth = 200000;
    std::string const lists = std::string(kDepth, '[') + std::string(kDepth, ']');
    EXPECT_EQ(ErrorOf("{\"format\": " + lists + "}"), "some.json: format: expected 1, found an array");
    EXPECT_NE(ErrorOf(std::string(kDepth, '[')).find("not valid JSON"), std::string::npos);
}

TEST(SimBoardFile, NumberBeyondADoubleIsRefused) {
    EXPECT_EQ(ErrorOf("{\"format\": 1e400}"), "some.json: number overflow parsing '1e400'");
}

}  // namespace
