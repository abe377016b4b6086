// The driver behind the AMD stand-in: what is set is in force and read back, and what does not fit is refused whole.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "sim/amd/AmdDriver.h"

namespace {

using namespace gputune::amd;
using namespace gputune::sim;

struct Table {
    ADLODNPerformanceLevelsX2 head{.iSize = sizeof(Table), .iMode = 0, .iNumberOfPerformanceLevels = 3};
    ADLODNPerformanceLevelX2 levels[3]{};
};
static_assert(sizeof(Table) == 12 + 3 * 16);

OverdriveN SomeOverdriveN() {
    OverdriveN part;
    part.levelCount = 3;
    part.engineClock = {.min = 30000, .max = 200000, .step = 100, .defaultValue = 134000};
    part.memoryClock = {.min = 30000, .max = 225000, .step = 100, .defaultValue = 200000};
    part.voltage = {.min = 750, .max = 1200, .step = 1, .defaultValue = 1150};
    part.power = {.min = -50, .max = 50, .step = 1, .defaultValue = 0};
    part.temperature = {.min = 50, .max = 90, .step = 1, .defaultValue = 84};
    part.fanSpeed = {.min = 0, .max = 3000, .step = 1, .defaultValue = 2100};
    part.engineLevels = {{.clock = 30000, .voltage = 750}, {.clock = 134000, .voltage = 1150}};
    part.memoryLevels = {{.clock = 200000, .voltage = 950}};
    part.thermalControllers = {{}, {.domain = 2, .fan = false, .result = -1}};
    part.temperatureLimit = 84;
    part.targetFanSpeed = 2100;
    return part;
}

TEST(SimOverdriveN, ManualClocksAreReadBackAndDefaultsStay) {
    OverdriveN const part = SomeOverdriveN();
    OverdriveNState state(part);
    Table table;
    ASSERT_EQ(state.GetEngineClocks(table.head), kAdlOk);
    EXPECT_EQ(table.levels[1].iClock, 134000);
    EXPECT_EQ(table.levels[2].iClock, 0);
    table.levels[1] = {.iClock = 150000, .iVddc = 1175, .iEnabled = 3, .iControl = 0};
    table.head.iMode = kOdnModeManual;
    ASSERT_EQ(state.SetEngineClocks(table.head), kAdlOk);

    Table current;
    ASSERT_EQ(state.GetEngineClocks(current.head), kAdlOk);
    EXPECT_EQ(current.levels[1].iClock, 150000);
    EXPECT_EQ(current.levels[1].iEnabled, 3);
    Table defaults;
    defaults.head.iMode = kOdnModeDefault;
    ASSERT_EQ(state.GetEngineClocks(defaults.head), kAdlOk);
    EXPECT_EQ(defaults.levels[1].iClock, 134000);
    EXPECT_EQ(state.ModelControls().engineClock, 1500);

    ASSERT_EQ(state.SetEngineClocks(defaults.head), kAdlOk);
    ASSERT_EQ(state.GetEngineClocks(current.head), kAdlOk);
    EXPECT_EQ(current.levels[1].iClock, 134000);
}

TEST(SimOverdriveN, ClocksThatDoNotFitAreRefusedWhole) {
    OverdriveN const part = SomeOverdriveN();
    OverdriveNState state(part);
    Table table;
    ASSERT_EQ(state.GetEngineClocks(table.head), kAdlOk);
    table.head.iMode = kOdnModeManual;
    Table const good = table;
    auto const refused = [&] { return state.SetEngineClocks(table.head) == kAdlInvalidParameter; };
    table.levels[0].iClock = 40000;
    table.levels[1].iClock = 200001;
    EXPECT_TRUE(refused()) << "a clock above the range";
    table = good;
    table.levels[1].iVddc = 749;
    EXPECT_TRUE(refused()) << "a voltage below the range";
    table = good;
    table.head.iMode = kOdnModeCurrent;
    EXPECT_TRUE(refused()) << "no mode for setting";
    table = good;
    table.head.iSize = 16;
    EXPECT_TRUE(refused()) << "another size";
    table = good;
    table.head.iNumberOfPerformanceLevels = INT_MAX;
    EXPECT_TRUE(refused()) << "another number of levels";
    Table current;
    ASSERT_EQ(state.GetEngineClocks(current.head), kAdlOk);
    EXPECT_EQ(current.levels[0].iClock, 30000);
}

TEST(SimOverdriveN, PowerLimitIsSetAndRestored) {
    OverdriveN const part = SomeOverdriveN();
    OverdriveNState state(part);
    EXPECT_EQ(state.SetPowerLimit({.iMode = kOdnModeManual, .iTDPLimit = 51, .iMaxOperatingTemperature = 84}),
              kAdlInvalidParameter);
    EXPECT_EQ(state.SetPowerLimit({.iMode = kOdnModeManual, .iTDPLimit = 50, .iMaxOperatingTemperature = 49}),
              kAdlInvalidParameter);
    EXPECT_EQ(state.SetPowerLimit({.iMode = kOdnModeManual, .iTDPLimit = 50, .iMaxOperatingTemperature = 90}), kAdlOk);
    ADLODNPowerLimitSetting limit{};
    ASSERT_EQ(state.GetPowerLimit(limit), kAdlOk);
    EXPECT_EQ(limit.iTDPLimit, 50);
    EXPECT_EQ(limit.iMaxOperatingTemperature, 90);
    EXPECT_EQ(state.ModelControls().powerLimit, 1.5);
    limit.iMode = kOdnModeDefault;
    ASSERT_EQ(state.SetPowerLimit(limit), kAdlOk);
    ASSERT_EQ(state.GetPowerLimit(limit), kAdlOk);
    EXPECT_EQ(limit.iTDPLimit, 0);
    EXPECT_EQ(limit.iMaxOperatingTemperature, 84);
}

TEST(SimOverdriveN, BothFamiliesGovernTheSameFan) {
    OverdriveN const part = SomeOverdriveN();
    OverdriveNState state(part);
    EXPECT_EQ(state.ModelControls().fanPercent, std::nullopt);
    ASSERT_EQ(state.SetFanSpeed(0, {.iSize = 16, .iSpeedType = kFanSpeedTypePercent, .iFanSpeed = 40, .iFlags = 1}),
              kAdlOk);
    EXPECT_EQ(state.ModelControls().fanPercent, 40);
    ADLODNFanControl fan{};
    fan.iMode = kOdnModeManual;
    fan.iTargetFanSpeed = fan.iMinFanLimit = 1500;
    ASSERT_EQ(state.SetFan(fan), kAdlOk);
    EXPECT_EQ(state.ModelControls().fanPercent, 50);
    ASSERT_EQ(state.ResetFanSpeed(0), kAdlOk);
    EXPECT_EQ(state.ModelControls().fanPercent, std::nullopt);
    fan.iTargetFanSpeed = 3001;
    EXPECT_EQ(state.SetFan(fan), kAdlInvalidParameter);
}

TEST(SimOverdriveN, FanSpeedIsToldInTheUnitAskedFor) {
    OverdriveN const part = SomeOverdriveN();
    OverdriveNState const state(part);
    Readings readings;
    readings.fanRpm = 1200;
    readings.fanPercent = 40;
    ADLFanSpeedValue value{.iSize = 16, .iSpeedType = kFanSpeedTypeRpm, .iFanSpeed = 0, .iFlags = 0};
    ASSERT_EQ(state.GetFanSpeed(0, value, readings), kAdlOk);
    EXPECT_EQ(value.iFanSpeed, 1200);
    value.iSpeedType = kFanSpeedTypePercent;
    ASSERT_EQ(state.GetFanSpeed(0, value, readings), kAdlOk);
    EXPECT_EQ(value.iFanSpeed, 40);
    value.iSpeedType = 0;
    EXPECT_EQ(state.GetFanSpeed(0, value, readings), kAdlInvalidParameter);
    EXPECT_EQ(state.GetFanSpeed(1, value, readings), kAdlNotSupported) << "a controller without a fan";
    EXPECT_EQ(state.GetFanSpeed(2, value, readings), kAdlInvalidParameter) << "no such controller";
}

TEST(SimOverdriveN, EnumerationEndsAfterTheLastController) {
    OverdriveN const part = SomeOverdriveN();
    OverdriveNState const state(part);
    ADLThermalControllerInfo info{};
    EXPECT_EQ(state.EnumerateController(0, info), kAdlOk);
    EXPECT_EQ(info.iThermalDomain, kThermalDomainGpu);
    EXPECT_EQ(state.EnumerateController(1, info), -1);
    EXPECT_EQ(info.iThermalDomain, 2);
    EXPECT_EQ(state.EnumerateController(2, info), kAdlWarningNoData);
}

TEST(SimOverdriveN, ReadingsAreInTheVendorsUnits) {
    OverdriveN const part = SomeOverdriveN();
    OverdriveNState const state(part);
    Readings readings;
    readings.engineClock = 1340.5;
    readings.memoryClock = 2000;
    readings.temperature = 65.5;
    ADLODNPerformanceStatus status{};
    ASSERT_EQ(state.GetStatus(status, readings), kAdlOk);
    EXPECT_EQ(status.iCoreClock, 134050);
    EXPECT_EQ(status.iMemoryClock, 200000);
    int temperature = 0;
    ASSERT_EQ(state.GetTemperature(kOdnTemperatureType, temperature, readings), kAdlOk);
    EXPECT_EQ(temperature, 65500);
}

Overdrive8 SomeOverdrive8() {
    Overdrive8 part;
    part.count = 45;
    part.settings.resize(45);
    part.settings[0] = {.feature = 1, .min = 500, .max = 2100, .defaultValue = 2000, .current = 2000};
    part.settings[9] = {.feature = 8, .min = -20, .max = 50, .defaultValue = 0, .current = 5};
    part.settings[44] = {.feature = 9, .min = 0, .max = 1, .defaultValue = 1, .current = 1};
    part.capabilities = 0x9;
    return part;
}

TEST(SimOverdrive8, OnlyRequestedSettingsChange) {
    Overdrive8 const part = SomeOverdrive8();
    Overdrive8State state(part);
    ADLOD8SetSetting request{};
    request.count = kOd8Count;
    request.od8SettingTable[0] = {.value = 1900, .requested = 1, .reset = 0};
    request.od8SettingTable[9] = {.value = 20, .requested = 0, .reset = 0};
    ADLOD8CurrentSetting current{};
    ASSERT_EQ(state.Set(request, current), kAdlOk);
    EXPECT_EQ(current.count, kOd8Count);
    EXPECT_EQ(current.Od8SettingTable[0], 1900);
    EXPECT_EQ(current.Od8SettingTable[9], 5);
    EXPECT_EQ(state.ModelControls().engineClock, 1900);
}

TEST(SimOverdrive8, ResetRestoresTheDefaultWhateverTheValue) {
    Overdrive8 const part = SomeOverdrive8();
    Overdrive8State state(part);
    ADLOD8SetSetting request{};
    request.count = kOd8Count;
    request.od8SettingTable[9] = {.value = 999, .requested = 1, .reset = 1};
    ADLOD8CurrentSetting current{};
    ASSERT_EQ(state.Set(request, current), kAdlOk);
    EXPECT_EQ(current.Od8SettingTable[9], 0);
}

TEST(SimOverdrive8, OneSettingOutOfRangeRefusesAll) {
    Overdrive8 const part = SomeOverdrive8();
    Overdrive8State state(part);
    ADLOD8SetSetting request{};
    request.count = kOd8Count;
    request.od8SettingTable[0] = {.value = 1900, .requested = 1, .reset = 0};
    request.od8SettingTable[9] = {.value = 51, .requested = 1, .reset = 0};
    ADLOD8CurrentSetting current{};
    EXPECT_EQ(state.Set(request, current), kAdlInvalidParameter);
    EXPECT_EQ(state.CurrentSettings()[0], 2000);
    request.count = 0;
    EXPECT_EQ(state.Set(request, current), kAdlInvalidParameter);
}

TEST(SimOverdrive8, OlderRecordsHoldTheFirst39OfMoreSettings) {
    Overdrive8 const part = SomeOverdrive8();
    Overdrive8State const state(part);
    EXPECT_EQ(state.InitSettings().size(), 45u);
    EXPECT_EQ(state.CurrentSettings().at(44), 1);
    ADLOD8InitSetting init{};
    ASSERT_EQ(state.GetInit(init), kAdlOk);
    EXPECT_EQ(init.count, kOd8Count);
    EXPECT_EQ(init.overdrive8Capabilities, 0x9);
    EXPECT_EQ(init.od8SettingTable[9].maxValue, 50);
}

Board TwoBoards() {
    Board board;
    board.vendor = Vendor::Amd;
    board.amd.adapters = {{.index = 0, .udid = std::string(300, 'x'), .name = "a", .displayName = "", .busNumber = 1},
                          {.index = 3, .udid = "", .name = "b", .displayName = "", .busNumber = 1},
                          {.index = 5, .udid = "", .name = "c", .displayName = "", .busNumber = 2}};
    board.amd.overdriveN = SomeOverdriveN();
    return board;
}

TEST(SimDriver, AdapterListIsOfOneBusOrOfAll) {
    AmdDriver const driver(TwoBoards());
    EXPECT_EQ(driver.AdapterInfos(-1).size(), 3u);
    EXPECT_EQ(driver.AdapterInfos(3).size(), 2u);
    ASSERT_EQ(driver.AdapterInfos(5).size(), 1u);
    EXPECT_EQ(driver.AdapterInfos(5)[0].iAdapterIndex, 5);
    EXPECT_EQ(std::string(driver.AdapterInfos(-1)[0].strUDID).size(), 255u) << "the terminator stays";
}

TEST(SimDriver, AdaptersHaveTheirOwnState) {
    AmdDriver driver(TwoBoards());
    auto const set = [](OverdriveNState& state, Readings const&) {
        return state.SetPowerLimit({.iMode = kOdnModeManual, .iTDPLimit = 10, .iMaxOperatingTemperature = 80});
    };
    ADLODNPowerLimitSetting limit{};
    auto const get = [&](OverdriveNState& state, Readings const&) { return state.GetPowerLimit(limit); };
    ASSERT_EQ(driver.With<OverdriveNState>(5, 0, set), kAdlOk);
    ASSERT_EQ(driver.With<OverdriveNState>(0, 0, get), kAdlOk);
    EXPECT_EQ(limit.iTDPLimit, 0);
    ASSERT_EQ(driver.With<OverdriveNState>(5, 0, get), kAdlOk);
    EXPECT_EQ(limit.iTDPLimit, 10);
}

TEST(SimDriver, UnknownAdapterAndMissingGenerationAreRefused) {
    AmdDriver driver(TwoBoards());
    auto const nothing = [](auto&, Readings const&) { return kAdlOk; };
    EXPECT_EQ(driver.With<OverdriveNState>(1, 0, nothing), kAdlInvalidAdapterIndex);
    EXPECT_EQ(driver.With<Overdrive8State>(0, 0, nothing), kAdlNotSupported);
    EXPECT_EQ(driver.WithReadings(-1, 0, [](Readings const&) { return kAdlOk; }), kAdlInvalidAdapterIndex);
}

TEST(SimDriver, SetFanChangesTheCourse) {
    AmdDriver driver(TwoBoards());
    double temperature[2] = {};
    for (int adapter : {0, 5}) {
        auto const set = [&](OverdriveNState& state, Readings const&) {
            ADLFanSpeedValue const full{.iSize = 16, .iSpeedType = kFanSpeedTypePercent, .iFanSpeed = 100, .iFlags = 1};
            return adapter == 5 ? state.SetFanSpeed(0, full) : kAdlOk;
        };
        ASSERT_EQ(driver.With<OverdriveNState>(adapter, 0, set), kAdlOk);
        driver.WithReadings(adapter, 50, [&](Readings const& readings) {
            temperature[adapter == 5] = readings.temperature;
            return kAdlOk;
        });
    }
    EXPECT_LT(temperature[1], temperature[0] - 3);
}

}  // namespace
