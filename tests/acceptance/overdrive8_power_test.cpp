// Overdrive8: the power limit.
#include <climits>

#include "overdrive8_traffic.h"

namespace gputune::test {
namespace {

std::string const kTag = "[OD8Helper::SetPowerLimit(int,int)]";
std::string const kManualTag = "[OD8Helper::SetOptimizedPowerToManualMode()]";
std::string const kDefaultTag = "[OD8Helper::SetPowerLimitDefault()]";
std::string const kRead = "Current_SettingX2_Get 5";
// Without its closing bracket.
Lines const kUnchanged = {"[OD8Helper::SetPowerLimit(int,int) ... Current value is already the given value"};

TEST(Overdrive8PowerLimit, LeavesThePercentageToTheDriver) {
    Machine machine = Overdrive8Board(kPower).Started();
    for (int const percent : {10, -20, 20, 21, -21, 100, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(percent);
        EXPECT_TRUE(machine.Api().SetPowerLimit(75, percent));
        EXPECT_EQ(machine.TakeLog(), Entries(kTag, {"Success"}));
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, "Setting_Set 5: 9=" + std::to_string(percent)}));
    }
    for (int const result : {-1, 1}) {
        machine.Result("ADL2_Overdrive8_Setting_Set", result);
        EXPECT_FALSE(machine.Api().SetPowerLimit(75, 10));
        EXPECT_EQ(machine.TakeLog(), Entries(kTag, {"Failed"}));
    }
}

TEST(Overdrive8PowerLimit, IgnoresTheTemperature) {
    Machine machine = Overdrive8Board(kPower).Started();
    for (int const temperature : {0, -1, INT_MAX}) {
        EXPECT_TRUE(machine.Api().SetPowerLimit(temperature, 7));
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, "Setting_Set 5: 9=7"}));
    }
}

TEST(Overdrive8PowerLimit, InEffectAlreadyIsSuccessWithoutASetting) {
    Machine machine = Overdrive8Board(kPower).Started();
    EXPECT_TRUE(machine.Api().SetPowerLimit(75, 0));
    EXPECT_EQ(machine.TakeLog(), kUnchanged);
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead}));

    BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPower, -12}}));
    EXPECT_TRUE(machine.Api().SetPowerLimit(75, -12));
    EXPECT_EQ(machine.TakeLog(), kUnchanged);
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead}));
}

TEST(Overdrive8PowerLimit, WithoutItsFlagIsRefused) {
    Machine machine = Overdrive8Board(0x1FFFF & ~kPower).Started();
    EXPECT_FALSE(machine.Api().SetPowerLimit(75, 10));
    EXPECT_EQ(machine.TakeLog(), Entries(kTag, {"Power limit not supported"}));
    EXPECT_FALSE(machine.Api().SetPowerLimit(75, 0));
    EXPECT_EQ(machine.TakeLog(), Entries(kTag, {"Power limit not supported"}));
    EXPECT_FALSE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(machine.TakeLog(), Entries(kDefaultTag, {"power limit not supported"}));
    EXPECT_EQ(machine.CountOf("ADL2_Overdrive8_Setting_Set"), 0);
}

TEST(Overdrive8PowerLimit, SwitchesToManualOnBoardsWithLimitsAndNoCurve) {
    struct Row {
        int capabilities;
        bool switches;
    };
    Row const rows[] = {
        {kPower | kLimits | kOptimized, true},
        {kPower | kLimits | kCurve | kOptimized, false},
        {kPower | kLimits, false},
        {kPower | kOptimized, false},
        {kPower | kCurve | kOptimized, false},
    };
    Lines const manual = Entries(kManualTag, {"Set Optimized Power mode to Manual"});
    Machine machine = Overdrive8Board(0).Started();
    for (Row const& row : rows) {
        SCOPED_TRACE(row.capabilities);
        BecomeBoardWith(machine, row.capabilities);
        BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPowerMode, 2}}));
        EXPECT_TRUE(machine.Api().SetPowerLimit(75, 10));
        EXPECT_EQ(machine.TakeLog(), (row.switches ? manual : Lines()) + Entries(kTag, {"Success"}));
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead}) +
                                               (row.switches ? Lines({kRead, "Setting_Set 5: 36=3"}) : Lines()) +
                                               Lines({"Setting_Set 5: 9=10"}));
    }
    // The switch comes before the look whether anything changes.
    BecomeBoardWith(machine, kPower | kLimits | kOptimized);
    EXPECT_TRUE(machine.Api().SetPowerLimit(75, 0));
    EXPECT_EQ(machine.TakeLog(), manual + kUnchanged);
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, kRead, "Setting_Set 5: 36=3"}));

    // In manual mode already.
    BecomeCurrent(machine, Overdrive8Current());
    EXPECT_TRUE(machine.Api().SetPowerLimit(75, 10));
    EXPECT_EQ(machine.TakeLog(), manual + Entries(kTag, {"Success"}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, kRead, "Setting_Set 5: 9=10"}));

    BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPowerMode, 2}}));
    machine.Result("ADL2_Overdrive8_Setting_Set", -1);
    EXPECT_FALSE(machine.Api().SetPowerLimit(75, 10));
    EXPECT_EQ(machine.TakeLog(), Entries(kManualTag, {"Failed when set Optimized Power mode to Manual"}) +
                                     Entries(kTag, {"Set Asic to Manual mode failed"}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, kRead, "Setting_Set 5: 36=3"}));
}

TEST(Overdrive8PowerLimit, WithoutTheCurrentValueIsNotSet) {
    Machine machine = Overdrive8Board(kPower | kLimits | kOptimized).Started();
    BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPower, 15}, {setting::kPowerMode, 2}}));
    for (int const result : {-1, 1}) {
        machine.Result("ADL2_Overdrive8_Current_SettingX2_Get", result);
        for (int const percent : {15, 0, 10}) {
            SCOPED_TRACE(percent);
            EXPECT_FALSE(machine.Api().SetPowerLimit(75, percent));
            EXPECT_EQ(machine.TakeLog(), kCurrentFailed);
        }
        EXPECT_FALSE(machine.Api().SetPowerLimitDefault());
        EXPECT_EQ(machine.TakeLog(), kCurrentFailed);
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, kRead, kRead, kRead}));
    }
    // Read, but not as far as setting 9.
    BecomeCurrent(machine, First(Overdrive8Current(), 9));
    EXPECT_FALSE(machine.Api().SetPowerLimit(75, 0));
    EXPECT_FALSE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, kRead}));
}

TEST(Overdrive8PowerLimit, WithoutTheModeIsNotSet) {
    Machine machine = Overdrive8Board(kPower | kLimits | kOptimized).Started();
    BecomeCurrent(machine, First(Overdrive8Current(), 36));  // the mode is setting 36
    machine.TakeLog();
    EXPECT_FALSE(machine.Api().SetPowerLimit(75, 10));
    EXPECT_EQ(machine.TakeLog(),
              Entries(kManualTag, {"too few current settings"}) + Entries(kTag, {"Set Asic to Manual mode failed"}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, kRead}));
}

TEST(Overdrive8PowerLimit, WithoutTheDriversSetterFailsInSilence) {
    Machine machine = Overdrive8Board(kPower).Hide("ADL2_Overdrive8_Setting_Set").Started();
    EXPECT_FALSE(machine.Api().SetPowerLimit(75, 10));
    EXPECT_EQ(machine.TakeLog(), Lines());
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead}));
    EXPECT_TRUE(machine.Api().SetPowerLimit(75, 0));
    EXPECT_EQ(machine.TakeLog(), kUnchanged);

    BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPower, 15}, {setting::kPowerMode, 0}}));
    EXPECT_FALSE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(machine.TakeLog(), Entries(kDefaultTag, {"Failed"}));

    BecomeBoardWith(machine, kPower | kLimits | kOptimized);
    EXPECT_FALSE(machine.Api().SetPowerLimit(75, 10));
    EXPECT_EQ(machine.TakeLog(), Entries(kManualTag, {"Failed when set Optimized Power mode to Manual"}) +
                                     Entries(kTag, {"Set Asic to Manual mode failed"}));
}

TEST(Overdrive8PowerLimitDefault, ResetsWhatIsNotZeroAndLeavesTheMode) {
    Machine machine = Overdrive8Board(kPower | kLimits | kOptimized).Started();
    EXPECT_TRUE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(machine.TakeLog(), Entries(kDefaultTag, {"power limit is already the default"}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead}));

    // 0 also where the board's own default is another.
    BecomeBoardWith(machine, kPower | kLimits | kOptimized,
                    WithRange({.feature = setting::kPower, .minimum = -20, .maximum = 20, .standard = 5}));
    for (int const inEffect : {5, -20, 1}) {
        BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPower, inEffect}, {setting::kPowerMode, 0}}));
        EXPECT_TRUE(machine.Api().SetPowerLimitDefault());
        EXPECT_EQ(machine.TakeLog(), Entries(kDefaultTag, {"Success"}));
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, "Setting_Set 5: 9=0!"}));
    }
    for (int const result : {-1, 1}) {
        machine.Result("ADL2_Overdrive8_Setting_Set", result);
        EXPECT_FALSE(machine.Api().SetPowerLimitDefault());
        EXPECT_EQ(machine.TakeLog(), Entries(kDefaultTag, {"Failed"}));
    }
}

}  // namespace
}  // namespace gputune::test
