// Overdrive8: fan speed, fan curve and the way back to automatic control.
#include <climits>

#include "overdrive8_traffic.h"

namespace gputune::test {
namespace {

std::string const kSpeedTag = "[OD8Helper::SetFanSpeed(int)]";
std::string const kTableTag = "[OD8Helper::SetFanSpeedTable(arr,int)]";
std::string const kDefaultTag = "[OD8Helper::SetFanToDefault()]";
std::string const kManualTag = "[OD8Helper::SetOptimizedPowerToManualMode()]";
std::string const kRead = "Current_SettingX2_Get 5";
Lines const kManual = Entries(kManualTag, {"Set Optimized Power mode to Manual"});
Lines const kManualFailed = Entries(kManualTag, {"Failed when set Optimized Power mode to Manual"});

std::string const kCurveReset = " 19=195! 20=205! 21=215! 22=225! 23=235! 24=245! 25=255! 26=265! 27=275! 28=285!";

// The curve at 204 %: temperatures as they are.
std::string const kFlat = " 19=193 20=204 21=213 22=204 23=233 24=204 25=253 26=204 27=273 28=204";

TEST(Overdrive8FanSpeed, FlattensTheCurveAndSetsWhatTheBoardCan) {
    struct Row {
        int capabilities;
        Lines messages;
        std::string request;
    };
    Lines const plain = {"Begin", "Success"};
    Lines const zeroRpm = {"Begin", "plan set ZeroRPM off", "Success"};
    Row const rows[] = {
        {kFanCurve, plain, kFlat},
        {kFanCurve | kZeroRpm, zeroRpm, " 15=0" + kFlat},
        {kFanCurve | kTarget, plain, " 12=120" + kFlat},
        {kFanCurve | kMinSpeed, plain, " 10=100" + kFlat},
        {kFanCurve | kAcoustic, plain, " 11=119" + kFlat},
        {kFanCurve | kZeroRpm | kTarget | kMinSpeed | kAcoustic, zeroRpm, " 10=100 11=119 12=120 15=0" + kFlat},
        // Flags that have nothing to do with fans.
        {kFanCurve | kLimits | kCurve | kMemory | kPower, plain, kFlat},
    };
    Machine machine = Overdrive8Board(0);
    for (Row const& row : rows) {
        SCOPED_TRACE(row.capabilities);
        BecomeBoardWith(machine, row.capabilities);
        EXPECT_TRUE(machine.Api().SetFanSpeed(204));
        EXPECT_EQ(machine.TakeLog(), Entries(kSpeedTag, row.messages));
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, "Setting_Set 5:" + row.request}));
    }
}

TEST(Overdrive8FanSpeed, IsBoundByTheFirstPointOfTheCurve) {
    Machine machine = Overdrive8Board(kFanCurve).Started();
    for (int const percent : {0, 100, 199, 210, INT_MAX}) {
        SCOPED_TRACE(percent);
        EXPECT_FALSE(machine.Api().SetFanSpeed(percent));
        EXPECT_EQ(machine.TakeLog(), Entries(kSpeedTag, {"Begin", "Percent should be in Min: 200, Max: 209"}));
        EXPECT_EQ(machine.CountOf("ADL2_Overdrive8_Setting_Set"), 0);
    }
    for (int const percent : {200, 209}) {
        SCOPED_TRACE(percent);
        EXPECT_TRUE(machine.Api().SetFanSpeed(percent));
        EXPECT_EQ(machine.Sent<SettingRequest>().settings[setting::kLastFanSpeed].value, percent);
    }
}

TEST(Overdrive8FanSpeed, WithoutAFanCurveIsRefused) {
    Machine machine = Overdrive8Board(0xFFFF & ~kFanCurve).Started();
    EXPECT_FALSE(machine.Api().SetFanSpeed(204));
    EXPECT_EQ(machine.TakeLog(), Entries(kSpeedTag, {"Begin", "ADL_OD8_FAN_CURVE not supported"}));
    EXPECT_EQ(machine.CountOf("ADL2_Overdrive8_Setting_Set"), 0);
}

TEST(Overdrive8FanSpeed, ReportsTheDriversRefusal) {
    Machine machine = Overdrive8Board(kFanCurve).Started();
    for (int const result : {-1, 1, INT_MIN}) {
        SCOPED_TRACE(result);
        machine.Result("ADL2_Overdrive8_Setting_Set", result);
        EXPECT_FALSE(machine.Api().SetFanSpeed(204));
        EXPECT_EQ(machine.TakeLog(), Entries(kSpeedTag, {"Begin", "Failed"}));
        EXPECT_FALSE(machine.Api().SetFanSpeed(-1));
        EXPECT_EQ(machine.TakeLog(),
                  Entries(kSpeedTag, {"Begin"}) + Entries(kDefaultTag, {"plan reset fan curve", "Failed"}));
        FanTablePoint const table[5] = {};
        EXPECT_FALSE(machine.Api().SetFanSpeedTable(table, 5));
        EXPECT_EQ(machine.TakeLog().back(), kTableTag + " ... Failed");
    }
}

TEST(Overdrive8FanSpeed, WithoutTheCurrentTemperaturesIsNotSet) {
    Machine machine = Overdrive8Board(kFanCurve | kZeroRpm).Started();
    // The curve's last temperature is setting 27, its last setting 28.
    BecomeCurrent(machine, First(Overdrive8Current(), 28));
    EXPECT_FALSE(machine.Api().SetFanSpeed(204));
    EXPECT_EQ(machine.TakeLog(), Entries(kSpeedTag, {"Begin", "plan set ZeroRPM off", "too few current settings"}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead}));

    machine.Result("ADL2_Overdrive8_Current_SettingX2_Get", -1);
    EXPECT_FALSE(machine.Api().SetFanSpeed(204));
    EXPECT_EQ(machine.TakeLog(), Entries(kSpeedTag, {"Begin", "plan set ZeroRPM off"}) + kCurrentFailed);
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead}));
    // A curve brings its own temperatures.
    FanTablePoint const table[5] = {};
    EXPECT_TRUE(machine.Api().SetFanSpeedTable(table, 5));
}

TEST(Overdrive8FanSpeed, WithoutTheModeIsNotSetAndStillReset) {
    Machine machine =
        Overdrive8Board(kFanCurve | kOptimized).Result("ADL2_Overdrive8_Current_SettingX2_Get", -1).Started();
    Lines const unread = Entries(kSpeedTag, {"Begin"}) + kCurrentFailed;
    EXPECT_FALSE(machine.Api().SetFanSpeed(204));
    EXPECT_EQ(machine.TakeLog(), unread);
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead}));

    EXPECT_TRUE(machine.Api().SetFanSpeed(-1));
    EXPECT_EQ(machine.TakeLog(), unread + Entries(kDefaultTag, {"plan reset fan curve"}) + kCurrentFailed +
                                     Entries(kDefaultTag, {"Success"}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, kRead, "Setting_Set 5:" + kCurveReset}));
}

TEST(Overdrive8Fan, WithoutTheRangesIsResetAlone) {
    // The curve's first speed is setting 20.
    Machine machine = Overdrive8Board(kFanCurve | kTarget | kAcoustic | kMinSpeed | kZeroRpm);
    FanTablePoint const table[5] = {};
    for (int const count : {20, 11, 0, -1}) {
        SCOPED_TRACE(count);
        machine.Reports(RangeCount{count});
        ASSERT_TRUE(machine.InitAndForget());
        EXPECT_FALSE(machine.Api().SetFanSpeed(0));
        EXPECT_EQ(machine.TakeLog(), Entries(kSpeedTag, {"Begin", "ADL_OD8_FAN_CURVE not supported"}));
        EXPECT_FALSE(machine.Api().SetFanSpeedTable(table, 5));
        EXPECT_EQ(machine.TakeLog(), Entries(kTableTag, {"Begin", "fan curve not supported"}));
        EXPECT_EQ(machine.CountOf("ADL2_Overdrive8_Setting_Set"), 0);
        // With the reset mark the driver takes its own default. The target temperature goes without.
        EXPECT_TRUE(machine.Api().SetFanSpeed(-1));
        SettingRequest const request = machine.Sent<SettingRequest>();
        EXPECT_EQ(request.settings[setting::kFirstFanSpeed].reset, 1);
        EXPECT_EQ(request.settings[setting::kTargetTemperature].requested, count > 12 ? 1 : 0);
        machine.TakeLog();
        machine.TakeCalls();
    }
}

TEST(Overdrive8FanSpeed, FirstTakesTheBoardOutOfOptimizedPower) {
    Machine machine = Overdrive8Board(kFanCurve | kOptimized).Started();

    // Manual already: nothing to send.
    EXPECT_TRUE(machine.Api().SetFanSpeed(204));
    EXPECT_EQ(machine.TakeLog(), Entries(kSpeedTag, {"Begin"}) + kManual + Entries(kSpeedTag, {"Success"}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, kRead, "Setting_Set 5:" + kFlat}));

    BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPowerMode, 2}}));
    EXPECT_TRUE(machine.Api().SetFanSpeed(204));
    EXPECT_EQ(machine.TakeLog(), Entries(kSpeedTag, {"Begin"}) + kManual + Entries(kSpeedTag, {"Success"}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, "Setting_Set 5: 36=3", kRead, "Setting_Set 5:" + kFlat}));

    // Also on the way to automatic control, and before the board turns out to have no curve.
    EXPECT_TRUE(machine.Api().SetFanSpeed(-1));
    EXPECT_EQ(machine.TakeLog(),
              Entries(kSpeedTag, {"Begin"}) + kManual + Entries(kDefaultTag, {"plan reset fan curve", "Success"}));
    EXPECT_EQ(TakeAmdTraffic(machine).front(), kRead);
    BecomeBoardWith(machine, kOptimized);
    EXPECT_FALSE(machine.Api().SetFanSpeed(204));
    EXPECT_EQ(machine.TakeLog(),
              Entries(kSpeedTag, {"Begin"}) + kManual + Entries(kSpeedTag, {"ADL_OD8_FAN_CURVE not supported"}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, "Setting_Set 5: 36=3"}));
}

TEST(Overdrive8FanSpeed, StopsWhenTheBoardStaysInOptimizedPower) {
    Machine machine = Overdrive8Board(kFanCurve | kOptimized).Result("ADL2_Overdrive8_Setting_Set", 1).Started();
    BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPowerMode, 0}}));
    for (int const percent : {204, -1, 5}) {
        SCOPED_TRACE(percent);
        EXPECT_FALSE(machine.Api().SetFanSpeed(percent));
        EXPECT_EQ(machine.TakeLog(), Entries(kSpeedTag, {"Begin"}) + kManualFailed);
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, "Setting_Set 5: 36=3"}));
    }
}

TEST(Overdrive8FanDefault, ResetsWhatTheBoardCan) {
    struct Row {
        int capabilities;
        Lines messages;
        std::string request;
    };
    Row const rows[] = {
        {0, {"Success"}, ""},
        {kFanCurve, {"plan reset fan curve", "Success"}, kCurveReset},
        {kZeroRpm, {"plan reset OD8_FAN_ZERORPM_CONTROL", "Success"}, " 15=155!"},
        {kTarget, {"Success"}, " 12=125"},
        {kAcoustic, {"plan reset OD8_FAN_ACOUSTIC_LIMIT", "Success"}, " 11=115!"},
        {kMinSpeed, {"plan reset OD8_FAN_MIN_SPEED", "Success"}, " 10=105!"},
        {kFanCurve | kZeroRpm | kTarget | kAcoustic | kMinSpeed,
         {"plan reset fan curve", "plan reset OD8_FAN_ZERORPM_CONTROL", "plan reset OD8_FAN_ACOUSTIC_LIMIT",
          "plan reset OD8_FAN_MIN_SPEED", "Success"},
         " 10=105! 11=115! 12=125 15=155!" + kCurveReset},
    };
    Machine machine = Overdrive8Board(0);
    for (Row const& row : rows) {
        SCOPED_TRACE(row.capabilities);
        BecomeBoardWith(machine, row.capabilities);
        for (int const percent : {-1, INT_MIN}) {
            EXPECT_TRUE(machine.Api().SetFanSpeed(percent));
            EXPECT_EQ(machine.TakeLog(), Entries(kSpeedTag, {"Begin"}) + Entries(kDefaultTag, row.messages));
            EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, "Setting_Set 5:" + row.request}));
        }
    }
}

// Read to its end by the library whatever the count says, and no further.
constexpr FanTablePoint kTable[5] = {{20, 40}, {35, 55}, {50, 65}, {70, 80}, {90, 95}};
std::string const kTableRequest = " 19=40 20=20 21=55 22=35 23=65 24=50 25=80 26=70 27=95 28=90";
Lines const kTableLog = {
    "[OD8Helper::SetFanSpeedTable(arr,int)] ... Begin",
    "[OD8Helper::SetFanSpeedTable(arr,int)] OD8_FAN_SPEED_ID[0] FanSpeed =20",
    "[OD8Helper::SetFanSpeedTable(arr,int)] OD8_FAN_TEMP_ID[0] FanTemperature=40",
    "[OD8Helper::SetFanSpeedTable(arr,int)] OD8_FAN_SPEED_ID[1] FanSpeed =35",
    "[OD8Helper::SetFanSpeedTable(arr,int)] OD8_FAN_TEMP_ID[1] FanTemperature=55",
    "[OD8Helper::SetFanSpeedTable(arr,int)] OD8_FAN_SPEED_ID[2] FanSpeed =50",
    "[OD8Helper::SetFanSpeedTable(arr,int)] OD8_FAN_TEMP_ID[2] FanTemperature=65",
    "[OD8Helper::SetFanSpeedTable(arr,int)] OD8_FAN_SPEED_ID[3] FanSpeed =70",
    "[OD8Helper::SetFanSpeedTable(arr,int)] OD8_FAN_TEMP_ID[3] FanTemperature=80",
    "[OD8Helper::SetFanSpeedTable(arr,int)] OD8_FAN_SPEED_ID[4] FanSpeed =90",
    "[OD8Helper::SetFanSpeedTable(arr,int)] OD8_FAN_TEMP_ID[4] FanTemperature=95",
};

TEST(Overdrive8FanTable, SendsFivePointsWhateverTheCount) {
    Machine machine = Overdrive8Board(kFanCurve | kOptimized | kTarget).Started();
    BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPowerMode, 0}}));  // the mode is not touched
    for (int const count : {1, 4, 5, 6, INT_MAX}) {
        SCOPED_TRACE(count);
        EXPECT_TRUE(machine.Api().SetFanSpeedTable(kTable, count));
        EXPECT_EQ(machine.TakeLog(), kTableLog + Entries(kTableTag, {"Success"}));
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({"Setting_Set 5:" + kTableRequest}));
    }
}

TEST(Overdrive8FanTable, WithoutATableIsRefused) {
    Machine machine = Overdrive8Board(kFanCurve).Started();
    struct Row {
        FanTablePoint const* table;
        int count;
    };
    for (Row const& row : {Row{nullptr, 5}, Row{kTable, 0}, Row{kTable, -1}, Row{kTable, INT_MIN}, Row{nullptr, 0}}) {
        SCOPED_TRACE(row.count);
        EXPECT_FALSE(machine.Api().SetFanSpeedTable(row.table, row.count));
        EXPECT_EQ(machine.TakeLog(), Entries(kTableTag, {"Begin", "pass in node not valid"}));
    }
    EXPECT_EQ(TakeAmdTraffic(machine), Lines());

    BecomeBoardWith(machine, 0xFFFF & ~kFanCurve);
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(kTable, 5));
    EXPECT_EQ(machine.TakeLog(), Entries(kTableTag, {"Begin", "fan curve not supported"}));
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(nullptr, 5));
    EXPECT_EQ(machine.TakeLog(), Entries(kTableTag, {"Begin", "pass in node not valid"}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines());
}

// Minimum and maximum of the minimum speed and of the acoustic limit.
std::vector<SettingRange> LimitRanges(std::pair<int, int> minSpeed, std::pair<int, int> acoustic) {
    return WithRange({setting::kAcousticLimit, acoustic.first, acoustic.second, 115},
                     WithRange({setting::kFanMinimum, minSpeed.first, minSpeed.second, 105}));
}

// A range in percent takes the end point's speed, one in RPM that share of its maximum; both stay within the range.
TEST(Overdrive8FanTable, LetsTheLimitsFollowTheEndsOfTheCurve) {
    struct Row {
        int capabilities;
        std::pair<int, int> minSpeed;
        std::pair<int, int> acoustic;
        std::string request;
    };
    int const both = kMinSpeed | kAcoustic;
    Row const rows[] = {
        {kMinSpeed, {0, 100}, {0, 100}, " 10=20"},
        {kAcoustic, {0, 100}, {0, 100}, " 11=90"},
        {both, {0, 100}, {0, 100}, " 10=20 11=90"},
        {both, {30, 60}, {30, 60}, " 10=30 11=60"},
        {both, {0, 3300}, {500, 3251}, " 10=660 11=2925"},  // 20 % of 3300; 90 % of 3251 is 2925.9
        {both, {700, 3300}, {500, 2000}, " 10=700 11=1800"},
        {both, {0, 101}, {0, 101}, " 10=20 11=90"},  // 20.2 and 90.9
        {both, {0, 0}, {0, 0}, " 10=0 11=0"},
    };
    Machine machine = Overdrive8Board(0).Started();
    for (Row const& row : rows) {
        SCOPED_TRACE(row.request);
        BecomeBoardWith(machine, kFanCurve | row.capabilities, LimitRanges(row.minSpeed, row.acoustic));
        EXPECT_TRUE(machine.Api().SetFanSpeedTable(kTable, 5));
        EXPECT_EQ(machine.TakeLog(), kTableLog + Entries(kTableTag, {"Success"}));
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({"Setting_Set 5:" + row.request + kTableRequest}));
    }
    // Speeds beyond all sense reach the driver as they are, the limits as the ends of their ranges.
    FanTablePoint const wild[5] = {{INT_MIN, INT_MAX}, {-1, -1}, {0, 0}, {0, 0}, {INT_MAX, INT_MIN}};
    BecomeBoardWith(machine, kFanCurve | both);
    for (auto const& range : {std::pair(0, 100), std::pair(400, INT_MAX)}) {
        BecomeBoardWith(machine, kFanCurve | both, LimitRanges(range, {0, range.second}));
        EXPECT_TRUE(machine.Api().SetFanSpeedTable(wild, 5));
        EXPECT_EQ(
            TakeAmdTraffic(machine),
            Lines({"Setting_Set 5: 10=" + std::to_string(range.first) + " 11=" + std::to_string(range.second) +
                   " 19=2147483647 20=-2147483648 21=-1 22=-1 23=0 24=0 25=0 26=0 27=-2147483648 28=2147483647"}));
    }
}

TEST(Overdrive8FanTable, SwitchesZeroRpmOff) {
    Machine machine = Overdrive8Board(kFanCurve | kZeroRpm).Started();
    EXPECT_TRUE(machine.Api().SetFanSpeedTable(kTable, 5));
    EXPECT_EQ(machine.TakeLog(), kTableLog + Entries(kTableTag, {"plan set ZeroRPM off", "Success"}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({"Setting_Set 5: 15=0" + kTableRequest}));
}

TEST(Overdrive8Fan, FailsWithoutTheDriversSetter) {
    Machine machine = Overdrive8Board(kFanCurve).Hide("ADL2_Overdrive8_Setting_Set").Started();
    EXPECT_FALSE(machine.Api().SetFanSpeed(204));
    EXPECT_EQ(machine.TakeLog(), Entries(kSpeedTag, {"Begin", "Failed"}));
    EXPECT_FALSE(machine.Api().SetFanSpeed(-1));
    EXPECT_EQ(machine.TakeLog(),
              Entries(kSpeedTag, {"Begin"}) + Entries(kDefaultTag, {"plan reset fan curve", "Failed"}));
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(kTable, 5));
    EXPECT_EQ(machine.TakeLog(), kTableLog + Entries(kTableTag, {"Failed"}));

    BecomeBoardWith(machine, kFanCurve | kOptimized);
    BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPowerMode, 1}}));
    EXPECT_FALSE(machine.Api().SetFanSpeed(204));
    EXPECT_EQ(machine.TakeLog(), Entries(kSpeedTag, {"Begin"}) + kManualFailed);
}

}  // namespace
}  // namespace gputune::test
