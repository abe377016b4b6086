// OverdriveN: temperature and power limits.
#include <gtest/gtest.h>

#include <climits>

#include "boards.h"

namespace gputune::test {
namespace {

constexpr char const* kGet = "ADL2_OverdriveN_PowerLimit_Get";
constexpr char const* kSet = "ADL2_OverdriveN_PowerLimit_Set";
constexpr char const* kBegin = "[OD7Helper::SetPowerLimit(int,int)] ... begin";
constexpr char const* kDefaultBegin = "[OD7Helper::SetPowerLimitDefault()] ... begin";

Machine Board() {
    Machine machine = OverdriveNBoard();
    machine.Reports(PowerLimits{.mode = kModeCurrent, .power = 12, .temperature = 80});
    return machine;
}

Lines const kReadAndWritten = {"OverdriveN_PowerLimit_Get 5", "OverdriveN_PowerLimit_Set 5"};

Lines const kUpToPlan = {kBegin, "[OD7Helper::SetPowerLimit(int,int)] current power value ... max_temp: 80, power: 12",
                         "[OD7Helper::SetPowerLimit(int,int)] plan power value ... max_temp: 85, power: -20"};

Lines Planned(std::string const& last) {
    return kUpToPlan + Lines{"[OD7Helper::SetPowerLimit(int,int)] ADL2_OverdriveN_PowerLimit_Set ... " + last};
}

TEST(OverdriveNPower, LimitsAreWrittenInManualMode) {
    Machine machine = Board().Started();

    EXPECT_TRUE(machine.Api().SetPowerLimit(85, -20));

    EXPECT_EQ(machine.TakeLog(), Planned("set"));
    EXPECT_EQ(machine.Sent<PowerLimits>(), (PowerLimits{.mode = kModeManual, .power = -20, .temperature = 85}));
    EXPECT_EQ(TakeAmdTraffic(machine), kReadAndWritten);
}

TEST(OverdriveNPower, BothEndsOfTheRangesAreAllowed) {
    struct Case {
        int temperature;
        int power;
    };
    Machine machine = Board().Started();
    for (Case const known : {Case{50, -50}, Case{90, 50}, Case{50, 50}, Case{90, -50}}) {
        SCOPED_TRACE(std::to_string(known.temperature) + " " + std::to_string(known.power));
        EXPECT_TRUE(machine.Api().SetPowerLimit(known.temperature, known.power));
        EXPECT_EQ(machine.Sent<PowerLimits>(), (PowerLimits{kModeManual, known.power, known.temperature}));
    }
}

TEST(OverdriveNPower, ValuesOutsideTheRangesAreRefusedBeforeAnyCall) {
    struct Case {
        int temperature;
        int power;
        char const* message;
    };
    constexpr char const* kTemperature = "temp value out of bound: should be 50 to 90";
    constexpr char const* kPower = "tdp value out of bound: should be -50 to 50";
    std::vector<Case> const cases = {
        {49, 0, kTemperature},      {91, 0, kTemperature},  {-75, 0, kTemperature}, {INT_MAX, 0, kTemperature},
        {INT_MIN, 0, kTemperature}, {75, -51, kPower},      {75, 51, kPower},       {75, INT_MAX, kPower},
        {75, INT_MIN, kPower},      {49, 51, kTemperature},  // the temperature is tested first
    };
    Machine machine = Board().Started();
    for (Case const& known : cases) {
        SCOPED_TRACE(std::to_string(known.temperature) + " " + std::to_string(known.power));
        EXPECT_FALSE(machine.Api().SetPowerLimit(known.temperature, known.power));
        EXPECT_EQ(machine.TakeLog(),
                  Lines({kBegin, std::string("[OD7Helper::SetPowerLimit(int,int)] ... ") + known.message}));
    }
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

TEST(OverdriveNPower, EmptyRangeRefusesEverything) {
    Machine machine = Board().Reports(Capabilities{.power = {.minimum = 10, .maximum = -10}}).Started();
    for (int const power : {-10, 0, 10}) {
        EXPECT_FALSE(machine.Api().SetPowerLimit(75, power));
        EXPECT_EQ(machine.TakeLog().back(),
                  "[OD7Helper::SetPowerLimit(int,int)] ... tdp value out of bound: should be 10 to -10");
    }
}

TEST(OverdriveNPower, FailingReadOrWriteFails) {
    Machine machine = Board().Started();

    machine.Result(kSet, 4);
    EXPECT_FALSE(machine.Api().SetPowerLimit(85, -20));
    EXPECT_EQ(machine.TakeLog(), Planned("failed: 4"));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kGet, kSet}));

    machine.Result(kGet, -8);
    EXPECT_FALSE(machine.Api().SetPowerLimit(85, -20));
    EXPECT_EQ(machine.TakeLog(),
              Lines({kBegin, "[OD7Helper::SetPowerLimit(int,int)] ADL2_OverdriveN_PowerLimit_Get ... failed: -8"}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kGet}));
}

TEST(OverdriveNPower, MissingReadIsRefusedByBoth) {
    Machine machine = Board().Hide(kGet).Started();
    EXPECT_FALSE(machine.Api().SetPowerLimit(85, -20));
    EXPECT_EQ(machine.TakeLog(),
              Lines({kBegin, "[OD7Helper::SetPowerLimit(int,int)] ADL2_OverdriveN_PowerLimit_Get ... null ptr"}));
    EXPECT_EQ(machine.TakeCalls().size(), 0U);

    EXPECT_FALSE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(machine.TakeLog(), Lines({kDefaultBegin,
                                        "[OD7Helper::SetPowerLimitDefault()] ADL2_OverdriveN_PowerLimit_Get || "
                                        "ADL2_OverdriveN_PowerLimit_Set ... null ptr"}));
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

TEST(OverdriveNPower, MissingWriteFailsAndIsSeenByTheDefaultBeforeTheRead) {
    Machine machine = Board().Hide(kSet).Started();
    EXPECT_FALSE(machine.Api().SetPowerLimit(85, -20));
    EXPECT_EQ(machine.TakeLog(), Planned("null ptr"));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kGet}));

    EXPECT_FALSE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(machine.TakeLog(), Lines({kDefaultBegin,
                                        "[OD7Helper::SetPowerLimitDefault()] ADL2_OverdriveN_PowerLimit_Get || "
                                        "ADL2_OverdriveN_PowerLimit_Set ... null ptr"}));
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

TEST(OverdriveNPower, DefaultWritesWhatWasReadInDefaultMode) {
    Machine machine = Board().Started();

    EXPECT_TRUE(machine.Api().SetPowerLimitDefault());

    EXPECT_EQ(
        machine.TakeLog(),
        Lines({kDefaultBegin, "[OD7Helper::SetPowerLimitDefault()] ADL2_OverdriveN_PowerLimit_Set ... set default"}));
    EXPECT_EQ(machine.Sent<PowerLimits>(), (PowerLimits{.mode = kModeDefault, .power = 12, .temperature = 80}));
    EXPECT_EQ(TakeAmdTraffic(machine), kReadAndWritten);
}

TEST(OverdriveNPower, DefaultFailsWithItsReadOrItsWrite) {
    Machine machine = Board().Started();

    machine.Result(kSet, -2);
    EXPECT_FALSE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(
        machine.TakeLog(),
        Lines({kDefaultBegin, "[OD7Helper::SetPowerLimitDefault()] ADL2_OverdriveN_PowerLimit_Set ... failed: -2"}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kGet, kSet}));

    machine.Result(kGet, -1);
    EXPECT_FALSE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(
        machine.TakeLog(),
        Lines({kDefaultBegin, "[OD7Helper::SetPowerLimitDefault()] ADL2_OverdriveN_PowerLimit_Get ... failed: -1"}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kGet}));
}

TEST(OverdriveNPower, SettingIsTheRangeWithoutACurrentValue) {
    Machine machine = Board().Reports(Capabilities{.power = {.minimum = -51, .maximum = 52, .standard = 3}}).Started();

    PowerLimitSetting const setting = machine.Api().GetPowerLimitSetting();

    EXPECT_TRUE(setting.Valid);
    EXPECT_EQ(setting.Default, 3);
    EXPECT_EQ(setting.Max, 52);
    EXPECT_EQ(setting.Min, -51);
    EXPECT_EQ(setting.Current, -1);
    EXPECT_EQ(machine.TakeLog(), Lines{});
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

}  // namespace
}  // namespace gputune::test
