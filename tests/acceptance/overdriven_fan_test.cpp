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

Machine BoardWithControllers(std::vector<ThermalController> const& controllers) {
    Machine machine = AmdBoard(7);
    machine.Reports(Capabilities{});
    OrderThermalControllers(machine, controllers);
    return machine;
}

// What it reads.
FanControl const kControl = Numbered<FanControl>(11);

// Manual, with this target and minimum; the rest as read.
FanControl ManualAt(int rpm) {
    FanControl control = kControl;
    control.mode = kModeManual;
    control.targetSpeed = control.minimumLimit = rpm;
    return control;
}

FanControl Automatic() {
    FanControl control = kControl;
    control.mode = kModeAutomatic;
    return control;
}

// Only the OverdriveN way is left.
Machine BoardWithoutControllers() {
    Machine machine = BoardWithControllers({});
    machine.Reports(kControl);
    return machine;
}

FanSpeed Percent(int percent) {
    return {.type = kPercent, .speed = percent, .flags = kUserDefined};
}

Lines const kOdnOnly = {kBegin, "[OD7Helper::SetOD5FanSpeed(int)] ... ThermalControllers is empty",
                        "[OD7Helper::SetODNFanSpeed(int)] ... begin"};

TEST(OverdriveNFan, PercentGoesToTheController) {
    Machine machine = OverdriveNBoard().Started();

    EXPECT_TRUE(machine.Api().SetFanSpeed(40));

    EXPECT_EQ(machine.TakeLog(), Lines({kBegin, Controller(0), Od5Line(kOd5Set, "set")}));
    EXPECT_EQ(machine.Sent<FanSpeed>(), Percent(40));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({"Overdrive5_FanSpeed_Set 5 #0"}));
}

TEST(OverdriveNFan, NegativeReturnsTheControllerToItsDefault) {
    Machine machine = OverdriveNBoard().Started();
    for (int const percent : {-1, INT_MIN}) {
        SCOPED_TRACE(percent);
        EXPECT_TRUE(machine.Api().SetFanSpeed(percent));
        EXPECT_EQ(machine.TakeLog(), Lines({kBegin, Controller(0), Od5Line(kOd5Reset, "set")}));
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({"Overdrive5_FanSpeedToDefault_Set 5 #0"}));
    }
}

TEST(OverdriveNFan, ControllerIsNotCheckedAgainstHundredPercentNorAgainstZero) {
    Machine machine = OverdriveNBoard().Started();
    for (int const percent : {0, 100, 250, INT_MAX}) {
        SCOPED_TRACE(percent);
        EXPECT_TRUE(machine.Api().SetFanSpeed(percent));
        EXPECT_EQ(machine.Sent<FanSpeed>(), Percent(percent));
    }
}

TEST(OverdriveNFan, ControllersAreNumberedByPosition) {
    Machine machine =
        BoardWithControllers({{.domain = 2, .index = 0}, {.index = 8}, {.domain = 2, .index = 1}, {.index = 9}});
    ASSERT_TRUE(machine.InitAndForget());

    EXPECT_TRUE(machine.Api().SetFanSpeed(40));

    EXPECT_EQ(machine.TakeLog(),
              Lines({kBegin, Controller(0), Od5Line(kOd5Set, "set"), Controller(1), Od5Line(kOd5Set, "set")}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({"Overdrive5_FanSpeed_Set 5 #0", "Overdrive5_FanSpeed_Set 5 #1"}));
}

TEST(OverdriveNFan, OneControllerOfTwoIsSuccess) {
    struct Case {
        int percent;
        char const* entryPoint;
        int first;
        int second;
    };
    std::vector<Case> const cases = {{-1, kOd5Reset, -5, 0}, {40, kOd5Set, 0, 3}};
    Machine machine = BoardWithControllers({{.index = 0}, {.index = 1}});
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
    Machine machine =
        BoardWithControllers({{.index = 0}, {.index = 1}}).Reports(kControl).Result(kOd5Set, -1).Started();

    EXPECT_TRUE(machine.Api().SetFanSpeed(40));

    EXPECT_EQ(machine.TakeLog(), Lines({kBegin, Controller(0), Od5Line(kOd5Set, "failed: -1"), Controller(1),
                                        Od5Line(kOd5Set, "failed: -1"), "[OD7Helper::SetODNFanSpeed(int)] ... begin",
                                        "[OD7Helper::SetODNFanSpeed(int)] ADL2_OverdriveN_FanControl_Set ... set"}));
    EXPECT_EQ(machine.Sent<FanControl>(), ManualAt(1320));  // 40 percent of 3,300
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({"Overdrive5_FanSpeed_Set 5 #0", "Overdrive5_FanSpeed_Set 5 #1",
                                              "OverdriveN_FanControl_Get 5", "OverdriveN_FanControl_Set 5"}));
}

TEST(OverdriveNFan, MissingControllerFunctionsLeadToTheOverdriveNWay) {
    Machine machine = OverdriveNBoard().Hide(kOd5Set).Hide(kOd5Reset).Started();

    EXPECT_TRUE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.TakeLog(), Lines({kBegin, Controller(0), Od5Line(kOd5Set, "null ptr"),
                                        "[OD7Helper::SetODNFanSpeed(int)] ... begin", OdnLine(kOdnSet, "set")}));
    EXPECT_TRUE(machine.Api().SetFanSpeed(-1));
    EXPECT_EQ(machine.TakeLog(), Lines({kBegin, Controller(0), Od5Line(kOd5Reset, "null ptr"),
                                        "[OD7Helper::SetODNFanSpeed(int)] ... begin", OdnLine(kOdnSet, "set")}));
}

TEST(OverdriveNFan, NegativeOnTheOverdriveNWayChangesTheModeAlone) {
    Machine machine = BoardWithoutControllers().Started();
    EXPECT_TRUE(machine.Api().SetFanSpeed(-1));
    EXPECT_EQ(machine.TakeLog(), kOdnOnly + Lines({OdnLine(kOdnSet, "set")}));
    EXPECT_EQ(machine.Sent<FanControl>(), Automatic());
}

TEST(OverdriveNFan, ZeroPercentCommandsOnePercent) {
    Machine machine = BoardWithoutControllers().Started();
    EXPECT_TRUE(machine.Api().SetFanSpeed(0));
    EXPECT_EQ(machine.Sent<FanControl>(), ManualAt(33));
    EXPECT_TRUE(machine.Api().SetFanSpeed(1));
    EXPECT_EQ(machine.Sent<FanControl>(), ManualAt(33));
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
        machine.Reports(Capabilities{.fanSpeed = {.minimum = 400, .maximum = known.maximum}});
        ASSERT_TRUE(machine.Init());
        EXPECT_TRUE(machine.Api().SetFanSpeed(known.percent));
        EXPECT_EQ(machine.Sent<FanControl>(), ManualAt(known.speed));
    }
}

TEST(OverdriveNFan, WithoutARangeIsNotGivenATarget) {
    Machine machine = BoardWithoutControllers();
    for (int const maximum : {0, -1, -2999, INT_MIN}) {
        SCOPED_TRACE(maximum);
        machine.Reports(Capabilities{.fanSpeed = {.minimum = 400, .maximum = maximum}});
        ASSERT_TRUE(machine.InitAndForget());
        for (int const percent : {0, 40, 100}) {
            EXPECT_FALSE(machine.Api().SetFanSpeed(percent));
            EXPECT_EQ(machine.TakeLog(), kOdnOnly + Lines({"[OD7Helper::SetODNFanSpeed(int)] ... no fan speed range"}));
        }
        EXPECT_EQ(machine.CountOf(kOdnSet), 0);
        // The way back needs none.
        EXPECT_TRUE(machine.Api().SetFanSpeed(-1));
        EXPECT_EQ(machine.Sent<FanControl>(), Automatic());
        machine.TakeLog();
        machine.TakeCalls();
    }
}

TEST(OverdriveNFan, SpeedThatNoIntHoldsIsRefused) {
    Machine machine = BoardWithoutControllers().Started();
    EXPECT_FALSE(machine.Api().SetFanSpeed(INT_MAX));
    EXPECT_EQ(machine.TakeLog(), kOdnOnly + Lines({"[OD7Helper::SetODNFanSpeed(int)] ... fan speed out of range"}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kOdnGet}));
}

TEST(OverdriveNFan, MissingReadOfTheFanControlFails) {
    Machine machine = BoardWithoutControllers().Hide(kOdnGet).Started();
    for (int const percent : {40, -1}) {
        EXPECT_FALSE(machine.Api().SetFanSpeed(percent));
        EXPECT_EQ(machine.TakeLog(), kOdnOnly + Lines({OdnLine(kOdnGet, "null ptr")}));
    }
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

TEST(OverdriveNFan, MissingWriteOfTheFanControlFails) {
    Machine machine = BoardWithoutControllers().Hide(kOdnSet).Started();
    EXPECT_FALSE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.TakeLog(), kOdnOnly + Lines({OdnLine(kOdnSet, "null ptr")}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kOdnGet}));
}

TEST(OverdriveNFan, FailingReadOrWriteOfTheFanControlFails) {
    Machine machine = BoardWithoutControllers().Started();

    machine.Result(kOdnSet, 2);
    EXPECT_FALSE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.TakeLog(), kOdnOnly + Lines({OdnLine(kOdnSet, "failed: 2")}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kOdnGet, kOdnSet}));

    machine.Result(kOdnGet, -8);
    EXPECT_FALSE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.TakeLog(), kOdnOnly + Lines({OdnLine(kOdnGet, "failed: -8")}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kOdnGet}));
}

TEST(OverdriveNFan, CurvesAreNotOffered) {
    Machine machine = OverdriveNBoard().Started();
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
    Machine machine = OverdriveNBoard().Started();
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
