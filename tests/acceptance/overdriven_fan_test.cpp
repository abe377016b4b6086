// OverdriveN: the fan. The Overdrive 5 way for every GPU thermal controller, the OverdriveN way when that fails.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <new>

#include "boards.h"

namespace gputune::test {
namespace {

constexpr char const* kOd5Set = "ADL2_Overdrive5_FanSpeed_Set";
constexpr char const* kOd5Reset = "ADL2_Overdrive5_FanSpeedToDefault_Set";
constexpr char const* kOdnGet = "ADL2_OverdriveN_FanControl_Get";
constexpr char const* kOdnSet = "ADL2_OverdriveN_FanControl_Set";
constexpr char const* kThermal = "ADL2_Overdrive5_ThermalDevices_Enum";
constexpr char const* kBegin = "[OD7Helper::SetFanSpeed(int)] ... begin";
constexpr char const* kOd5 = "[OD7Helper::SetOD5FanSpeed(int)] ";
constexpr char const* kOdn = "[OD7Helper::SetODNFanSpeed(int)] ";

std::string Controller(int index) {
    return std::string(kOd5) + "current thermal controller index ... " + std::to_string(index);
}

std::string Od5Line(std::string const& entryPoint, std::string const& message) {
    return kOd5 + entryPoint + " ... " + message;
}

std::string OdnLine(std::string const& entryPoint, std::string const& message) {
    return kOdn + entryPoint + " ... " + message;
}

// A board whose thermal controllers are these records: size, domain, domain index, flags.
Machine BoardWithControllers(std::vector<std::vector<int>> const& controllers) {
    Machine machine = AmdBoard(7);
    machine.Write("ADL2_OverdriveN_CapabilitiesX2_Get", 2, Ints(OverdriveNCapabilities()));
    for (std::vector<int> const& controller : controllers) {
        machine.Write(kThermal, 3, Ints(controller)).Then(kThermal);
    }
    machine.Result(kThermal, -100);
    return machine;
}

// Only the OverdriveN way is left; the fan control record reads 11, 12, ... 18.
Machine BoardWithoutControllers() {
    Machine machine = BoardWithControllers({});
    machine.Write(kOdnGet, 2, Ints({11, 12, 13, 14, 15, 16, 17, 18}));
    return machine;
}

Lines const kOdnOnly = {kBegin, "[OD7Helper::SetOD5FanSpeed(int)] ... ThermalControllers is empty",
                        "[OD7Helper::SetODNFanSpeed(int)] ... begin"};

Lines AfterOdnBegin(Lines const& more) {
    Lines lines = kOdnOnly;
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

TEST(OverdriveNFan, PercentGoesToTheController) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.InitAndForget());

    EXPECT_TRUE(machine.Api().SetFanSpeed(40));

    EXPECT_EQ(machine.TakeLog(), Lines({kBegin, Controller(0), Od5Line(kOd5Set, "set")}));
    std::vector<Call> const calls = machine.TakeCalls();
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].entryPoint, kOd5Set);
    EXPECT_EQ(calls[0].args[0], kContext);
    EXPECT_EQ(calls[0].args[1], 5);
    EXPECT_EQ(calls[0].args[2], 0);
    EXPECT_EQ(calls[0].record, Ints({16, 1, 40, 1}));  // size, percent, speed, user-defined
}

TEST(OverdriveNFan, NegativeReturnsTheControllerToItsDefault) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.InitAndForget());
    for (int const percent : {-1, INT_MIN}) {
        SCOPED_TRACE(percent);
        EXPECT_TRUE(machine.Api().SetFanSpeed(percent));
        EXPECT_EQ(machine.TakeLog(), Lines({kBegin, Controller(0), Od5Line(kOd5Reset, "set")}));
        std::vector<Call> const calls = machine.TakeCalls();
        ASSERT_EQ(calls.size(), 1U);
        EXPECT_EQ(calls[0].entryPoint, kOd5Reset);
        EXPECT_EQ(calls[0].args, std::vector<int>({kContext, 5, 0}));
    }
}

TEST(OverdriveNFan, ControllerIsNotCheckedAgainstHundredPercentNorAgainstZero) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.InitAndForget());
    for (int const percent : {0, 100, 250, INT_MAX}) {
        SCOPED_TRACE(percent);
        EXPECT_TRUE(machine.Api().SetFanSpeed(percent));
        EXPECT_EQ(machine.LastCall(kOd5Set).record, Ints({16, 1, percent, 1}));
    }
}

TEST(OverdriveNFan, ControllersAreNumberedByPosition) {
    Machine machine = BoardWithControllers({{16, 2, 0, 0}, {16, 1, 8, 0}, {16, 2, 1, 0}, {16, 1, 9, 0}});
    ASSERT_TRUE(machine.InitAndForget());

    EXPECT_TRUE(machine.Api().SetFanSpeed(40));

    EXPECT_EQ(machine.TakeLog(),
              Lines({kBegin, Controller(0), Od5Line(kOd5Set, "set"), Controller(1), Od5Line(kOd5Set, "set")}));
    std::vector<Call> const calls = machine.TakeCalls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].args[2], 0);
    EXPECT_EQ(calls[1].args[2], 1);
}

TEST(OverdriveNFan, OneControllerOfTwoIsSuccess) {
    struct Case {
        int percent;
        char const* entryPoint;
        int first;
        int second;
    };
    std::vector<Case> const cases = {{-1, kOd5Reset, -5, 0}, {40, kOd5Set, 0, 3}};
    Machine machine = BoardWithControllers({{16, 1, 0, 0}, {16, 1, 1, 0}});
    for (Case const& known : cases) {
        machine.Result(known.entryPoint, known.first).Then(known.entryPoint).Result(known.entryPoint, known.second);
    }
    ASSERT_TRUE(machine.InitAndForget());

    EXPECT_TRUE(machine.Api().SetFanSpeed(-1));
    EXPECT_EQ(machine.TakeLog(), Lines({kBegin, Controller(0), Od5Line(kOd5Reset, "failed: -5"), Controller(1),
                                        Od5Line(kOd5Reset, "set")}));
    EXPECT_TRUE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.TakeLog(),
              Lines({kBegin, Controller(0), Od5Line(kOd5Set, "set"), Controller(1), Od5Line(kOd5Set, "failed: 3")}));
    EXPECT_EQ(machine.CountOf(kOdnGet), 0);
    EXPECT_EQ(machine.CountOf(kOdnSet), 0);
}

TEST(OverdriveNFan, FailureOfEveryControllerLeadsToTheOverdriveNWay) {
    Machine machine = BoardWithControllers({{16, 1, 0, 0}, {16, 1, 1, 0}});
    machine.Write(kOdnGet, 2, Ints({11, 12, 13, 14, 15, 16, 17, 18}));
    machine.Result(kOd5Set, -1);
    ASSERT_TRUE(machine.InitAndForget());

    EXPECT_TRUE(machine.Api().SetFanSpeed(40));

    EXPECT_EQ(machine.TakeLog(), Lines({kBegin, Controller(0), Od5Line(kOd5Set, "failed: -1"), Controller(1),
                                        Od5Line(kOd5Set, "failed: -1"), "[OD7Helper::SetODNFanSpeed(int)] ... begin",
                                        "[OD7Helper::SetODNFanSpeed(int)] ADL2_OverdriveN_FanControl_Set ... set"}));
    std::vector<Call> const calls = machine.TakeCalls();
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[2].entryPoint, kOdnGet);
    EXPECT_EQ(calls[2].args[0], kContext);
    EXPECT_EQ(calls[2].args[1], 5);
    EXPECT_EQ(calls[2].record, Bytes(32));
    EXPECT_EQ(calls[3].entryPoint, kOdnSet);
    EXPECT_EQ(calls[3].args[0], kContext);
    EXPECT_EQ(calls[3].args[1], 5);
    // Manual; target and minimum 40 percent of 3,300 RPM; the rest as read.
    EXPECT_EQ(calls[3].record, Ints({3, 12, 13, 14, 1320, 16, 17, 1320}));
}

TEST(OverdriveNFan, MissingControllerFunctionsLeadToTheOverdriveNWay) {
    Machine machine = OverdriveNBoard();
    machine.Hide(kOd5Set).Hide(kOd5Reset);
    ASSERT_TRUE(machine.InitAndForget());

    EXPECT_TRUE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.TakeLog(), Lines({kBegin, Controller(0), Od5Line(kOd5Set, "null ptr"),
                                        "[OD7Helper::SetODNFanSpeed(int)] ... begin", OdnLine(kOdnSet, "set")}));
    EXPECT_TRUE(machine.Api().SetFanSpeed(-1));
    EXPECT_EQ(machine.TakeLog(), Lines({kBegin, Controller(0), Od5Line(kOd5Reset, "null ptr"),
                                        "[OD7Helper::SetODNFanSpeed(int)] ... begin", OdnLine(kOdnSet, "set")}));
}

TEST(OverdriveNFan, NegativeOnTheOverdriveNWayChangesTheModeAlone) {
    Machine machine = BoardWithoutControllers();
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_TRUE(machine.Api().SetFanSpeed(-1));
    EXPECT_EQ(machine.TakeLog(), AfterOdnBegin({OdnLine(kOdnSet, "set")}));
    EXPECT_EQ(machine.LastCall(kOdnSet).record, Ints({2, 12, 13, 14, 15, 16, 17, 18}));
}

TEST(OverdriveNFan, ZeroPercentCommandsOnePercent) {
    Machine machine = BoardWithoutControllers();
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_TRUE(machine.Api().SetFanSpeed(0));
    EXPECT_EQ(machine.LastCall(kOdnSet).record, Ints({3, 12, 13, 14, 33, 16, 17, 33}));
    EXPECT_TRUE(machine.Api().SetFanSpeed(1));
    EXPECT_EQ(machine.LastCall(kOdnSet).record, Ints({3, 12, 13, 14, 33, 16, 17, 33}));
}

// In single precision 13 / 100 x 3300 is 428.99997, where 429 would be exact; 29 / 100 x 3300 comes out exact, where
// double precision stays below 957.
TEST(OverdriveNFan, SpeedIsTruncatedFromSinglePrecision) {
    struct Case {
        int maximum;
        int percent;
        int speed;
    };
    std::vector<Case> const cases = {
        {3300, 13, 428},
        {3300, 26, 857},
        {3300, 29, 957},
        {3300, 52, 1715},
        {3300, 53, 1748},
        {3300, 59, 1946},
        {3300, 60, 1980},
        {3300, 100, 3300},
        {3300, 120, 3960},
        {2999, 1, 29},
        {2999, 40, 1199},
        // Never 0, however few turns the fan has.
        {99, 0, 1},
        {99, 1, 1},
        {99, 2, 1},
        {99, 3, 2},
        {1, 99, 1},
        {1, 0, 1},
    };
    Machine machine = BoardWithoutControllers();
    for (Case const& known : cases) {
        SCOPED_TRACE(std::to_string(known.percent) + " percent of " + std::to_string(known.maximum));
        std::vector<int> capabilities = OverdriveNCapabilities();
        capabilities[capability::kFanSpeed + 2] = known.maximum;
        machine.Write("ADL2_OverdriveN_CapabilitiesX2_Get", 2, Ints(capabilities));
        ASSERT_TRUE(machine.Init());
        EXPECT_TRUE(machine.Api().SetFanSpeed(known.percent));
        Call const call = machine.LastCall(kOdnSet);
        EXPECT_EQ(call.Int(16), known.speed);
        EXPECT_EQ(call.Int(28), known.speed);
    }
}

TEST(OverdriveNFan, WithoutARangeIsNotGivenATarget) {
    Machine machine = BoardWithoutControllers();
    for (int const maximum : {0, -1, -2999, INT_MIN}) {
        SCOPED_TRACE(maximum);
        std::vector<int> capabilities = OverdriveNCapabilities();
        capabilities[capability::kFanSpeed + 2] = maximum;
        machine.Write("ADL2_OverdriveN_CapabilitiesX2_Get", 2, Ints(capabilities));
        ASSERT_TRUE(machine.InitAndForget());
        for (int const percent : {0, 40, 100}) {
            EXPECT_FALSE(machine.Api().SetFanSpeed(percent));
            EXPECT_EQ(machine.TakeLog(), AfterOdnBegin({"[OD7Helper::SetODNFanSpeed(int)] ... no fan speed range"}));
        }
        EXPECT_EQ(machine.CountOf(kOdnSet), 0);
        // The way back needs none.
        EXPECT_TRUE(machine.Api().SetFanSpeed(-1));
        EXPECT_EQ(machine.LastCall(kOdnSet).record, Ints({2, 12, 13, 14, 15, 16, 17, 18}));
        machine.TakeLog();
        machine.TakeCalls();
    }
}

TEST(OverdriveNFan, SpeedThatNoIntHoldsIsRefused) {
    Machine machine = BoardWithoutControllers();
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_FALSE(machine.Api().SetFanSpeed(INT_MAX));
    EXPECT_EQ(machine.TakeLog(), AfterOdnBegin({"[OD7Helper::SetODNFanSpeed(int)] ... fan speed out of range"}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kOdnGet}));
}

TEST(OverdriveNFan, MissingReadOfTheFanControlFails) {
    Machine machine = BoardWithoutControllers();
    machine.Hide(kOdnGet);
    ASSERT_TRUE(machine.InitAndForget());
    for (int const percent : {40, -1}) {
        EXPECT_FALSE(machine.Api().SetFanSpeed(percent));
        EXPECT_EQ(machine.TakeLog(), AfterOdnBegin({OdnLine(kOdnGet, "null ptr")}));
    }
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

TEST(OverdriveNFan, MissingWriteOfTheFanControlFails) {
    Machine machine = BoardWithoutControllers();
    machine.Hide(kOdnSet);
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_FALSE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.TakeLog(), AfterOdnBegin({OdnLine(kOdnSet, "null ptr")}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kOdnGet}));
}

TEST(OverdriveNFan, FailingReadOrWriteOfTheFanControlFails) {
    Machine machine = BoardWithoutControllers();
    ASSERT_TRUE(machine.InitAndForget());

    machine.Result(kOdnSet, 2);
    EXPECT_FALSE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.TakeLog(), AfterOdnBegin({OdnLine(kOdnSet, "failed: 2")}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kOdnGet, kOdnSet}));

    machine.Result(kOdnGet, -8);
    EXPECT_FALSE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.TakeLog(), AfterOdnBegin({OdnLine(kOdnGet, "failed: -8")}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kOdnGet}));
}

TEST(OverdriveNFan, CurvesAreNotOffered) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.InitAndForget());
    FanTablePoint const points[5] = {{20, 30}, {30, 50}, {40, 60}, {60, 70}, {90, 80}};
    Lines const expected = {"[OD7Helper::SetFanSpeedTable(obj,int)] ... begin",
                            "[OD7Helper::SetFanSpeedTable(obj,int)] ... *** NOT IMPLEMENT YET ***"};
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(points, 5));
    EXPECT_EQ(machine.TakeLog(), expected);
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(nullptr, INT_MAX));
    EXPECT_EQ(machine.TakeLog(), expected);
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(points, -1));
    EXPECT_EQ(machine.TakeLog(), expected);
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

TEST(OverdriveNFan, SettingHasOnePointThatKeepsTheCallersValues) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.InitAndForget());
    // The record is built in the storage itself, so what it held before shows where nothing is written.
    alignas(FanSetting) unsigned char storage[sizeof(FanSetting)];
    std::memset(storage, 0x5A, sizeof storage);
    volatile unsigned char const* const keep = storage;
    ASSERT_EQ(keep[8], 0x5A);

    auto const* const setting = ::new (static_cast<void*>(storage)) FanSetting(machine.Api().GetFanSetting());

    EXPECT_TRUE(setting->Valid);
    EXPECT_EQ(keep[0], 1);
    EXPECT_EQ(setting->PointCount, 1);
    for (std::size_t i = 8; i < sizeof storage; ++i) {
        ASSERT_EQ(keep[i], 0x5A) << i;
    }
    EXPECT_EQ(machine.TakeLog(), Lines{});
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

}  // namespace
}  // namespace gputune::test
