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

// Its limits read mode 0, power 12 %, temperature 80 degrees.
Machine Board() {
    Machine machine = OverdriveNBoard();
    machine.Write(kGet, 2, Ints({0, 12, 80}));
    return machine;
}

Lines const kUpToPlan = {kBegin, "[OD7Helper::SetPowerLimit(int,int)] current power value ... max_temp: 80, power: 12",
                         "[OD7Helper::SetPowerLimit(int,int)] plan power value ... max_temp: 85, power: -20"};

Lines Planned(std::string const& last) {
    Lines lines = kUpToPlan;
    lines.push_back("[OD7Helper::SetPowerLimit(int,int)] ADL2_OverdriveN_PowerLimit_Set ... " + last);
    return lines;
}

TEST(OverdriveNPower, LimitsAreWrittenInManualMode) {
    Machine machine = Board();
    ASSERT_TRUE(machine.InitAndForget());

    EXPECT_TRUE(machine.Api().SetPowerLimit(85, -20));

    EXPECT_EQ(machine.TakeLog(), Planned("set"));
    std::vector<Call> const calls = machine.TakeCalls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].entryPoint, kGet);
    EXPECT_EQ(calls[0].args[0], kContext);
    EXPECT_EQ(calls[0].args[1], 5);
    EXPECT_EQ(calls[0].record, Ints({0, 0, 0}));
    EXPECT_EQ(calls[1].entryPoint, kSet);
    EXPECT_EQ(calls[1].args[0], kContext);
    EXPECT_EQ(calls[1].args[1], 5);
    EXPECT_EQ(calls[1].record, Ints({3, -20, 85}));
}

TEST(OverdriveNPower, BothEndsOfTheRangesAreAllowed) {
    struct Case {
        int temperature;
        int power;
    };
    Machine machine = Board();
    ASSERT_TRUE(machine.InitAndForget());
    for (Case const known : {Case{50, -50}, Case{90, 50}, Case{50, 50}, Case{90, -50}}) {
        SCOPED_TRACE(std::to_string(known.temperature) + " " + std::to_string(known.power));
        EXPECT_TRUE(machine.Api().SetPowerLimit(known.temperature, known.power));
        EXPECT_EQ(machine.LastCall(kSet).record, Ints({3, known.power, known.temperature}));
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
    Machine machine = Board();
    ASSERT_TRUE(machine.InitAndForget());
    for (Case const& known : cases) {
        SCOPED_TRACE(std::to_string(known.temperature) + " " + std::to_string(known.power));
        EXPECT_FALSE(machine.Api().SetPowerLimit(known.temperature, known.power));
        EXPECT_EQ(machine.TakeLog(),
                  Lines({kBegin, std::string("[OD7Helper::SetPowerLimit(int,int)] ... ") + known.message}));
    }
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

TEST(OverdriveNPower, EmptyRangeRefusesEverything) {
    std::vector<int> capabilities = OverdriveNCapabilities();
    capabilities[capability::kPower + 1] = 10;   // minimum
    capabilities[capability::kPower + 2] = -10;  // maximum
    Machine machine = Board();
    machine.Write("ADL2_OverdriveN_CapabilitiesX2_Get", 2, Ints(capabilities));
    ASSERT_TRUE(machine.InitAndForget());
    for (int const power : {-10, 0, 10}) {
        EXPECT_FALSE(machine.Api().SetPowerLimit(75, power));
        EXPECT_EQ(machine.TakeLog().back(),
                  "[OD7Helper::SetPowerLimit(int,int)] ... tdp value out of bound: should be 10 to -10");
    }
}

TEST(OverdriveNPower, FailingReadOrWriteFails) {
    Machine machine = Board();
    ASSERT_TRUE(machine.InitAndForget());

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
    Machine machine = Board();
    machine.Hide(kGet);
    ASSERT_TRUE(machine.InitAndForget());
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
    Machine machine = Board();
    machine.Hide(kSet);
    ASSERT_TRUE(machine.InitAndForget());
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
    Machine machine = Board();
    ASSERT_TRUE(machine.InitAndForget());

    EXPECT_TRUE(machine.Api().SetPowerLimitDefault());

    EXPECT_EQ(
        machine.TakeLog(),
        Lines({kDefaultBegin, "[OD7Helper::SetPowerLimitDefault()] ADL2_OverdriveN_PowerLimit_Set ... set default"}));
    std::vector<Call> const calls = machine.TakeCalls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].entryPoint, kGet);
    EXPECT_EQ(calls[0].args[0], kContext);
    EXPECT_EQ(calls[0].args[1], 5);
    EXPECT_EQ(calls[0].record, Ints({0, 0, 0}));
    EXPECT_EQ(calls[1].entryPoint, kSet);
    EXPECT_EQ(calls[1].args[0], kContext);
    EXPECT_EQ(calls[1].args[1], 5);
    EXPECT_EQ(calls[1].record, Ints({1, 12, 80}));
}

TEST(OverdriveNPower, DefaultFailsWithItsReadOrItsWrite) {
    Machine machine = Board();
    ASSERT_TRUE(machine.InitAndForget());

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
    std::vector<int> capabilities = OverdriveNCapabilities();
    capabilities[capability::kPower + 1] = -51;  // minimum
    capabilities[capability::kPower + 2] = 52;   // maximum
    capabilities[capability::kPower + 4] = 3;    // default
    Machine machine = Board();
    machine.Write("ADL2_OverdriveN_CapabilitiesX2_Get", 2, Ints(capabilities));
    ASSERT_TRUE(machine.InitAndForget());

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
