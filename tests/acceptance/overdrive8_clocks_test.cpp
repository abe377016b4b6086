// Overdrive8: user clocks and the reset of everything.
#include <climits>

#include "overdrive8_traffic.h"

namespace gputune::test {
namespace {

std::string const kTag = "[OD8Helper::SetPerformanceUser(int,int,int,int)]";
std::string const kDefaultTag = "[OD8Helper::SetPerformanceDefault()]";
std::string const kRead = "Current_SettingX2_Get 5";
Lines const kOk = Entries(kTag, {"ADL2_Overdrive8_Setting_Set OK"});

// Settings 1 to 7 go along with their current values.
std::string const kSame = " 1=13 2=23 3=33 4=43 5=53 6=63 7=73";
std::string const kSameButCurve = " 1=13 2=23 3=33 4=43 5=53";

struct Row {
    std::string name;
    int capabilities;
    std::vector<std::pair<int, int>> changes;  // of the current settings
    int gpuClock;
    int memClock;
    Lines log;
    Lines requests;  // empty: nothing is sent, false
};

void Check(std::vector<Row> const& rows) {
    Machine machine = Overdrive8Board(0).Started();
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        BecomeBoardWith(machine, row.capabilities);
        BecomeCurrent(machine, With(Overdrive8Current(), row.changes));
        // The voltages have no say.
        EXPECT_EQ(machine.Api().SetPerformanceUser(row.gpuClock, 1100, row.memClock, -5), row.log == kOk);
        EXPECT_EQ(machine.TakeLog(), row.log);
        Lines traffic = {kRead};
        for (std::string const& request : row.requests) {
            traffic.push_back("Setting_Set 5:" + request);
        }
        EXPECT_EQ(TakeAmdTraffic(machine), traffic);
    }
}

TEST(Overdrive8UserClocks, OnABoardWithACurveMoveItsTopAlong) {
    int const gpu = kLimits | kCurve;
    int const both = kLimits | kCurve | kMemory;
    Lines const sameGpu = Entries(kTag + "1", {"current gpu clock is same as the given value"});
    Lines const sameBoth = Entries(kTag + "1", {"current gpu/mem clock are same as the given value"});
    Check({
        {"new clock", gpu, {}, 1400, 900, kOk, {" 0=1400" + kSameButCurve + " 6=1400 7=73 8=83"}},
        {"new clocks", both, {}, 1400, 900, kOk, {" 0=1400" + kSameButCurve + " 6=1400 7=73 8=900"}},
        {"new clock, same memory", both, {}, 1400, 83, kOk, {" 0=1400" + kSameButCurve + " 6=1400 7=73 8=83"}},
        {"maximum in effect, top of the curve not", gpu, {}, 3, 900, kOk, {" 0=3" + kSameButCurve + " 6=3 7=73 8=83"}},
        {"top of the curve in effect, maximum not",
         gpu,
         {},
         63,
         900,
         kOk,
         {" 0=63" + kSameButCurve + " 6=63 7=73 8=83"}},
        {"same clock", gpu, {{setting::kGpuMaximum, 63}}, 63, 900, sameGpu, {}},
        {"same clock, same memory", gpu, {{setting::kGpuMaximum, 63}}, 63, 83, sameGpu, {}},
        {"same clocks", both, {{setting::kGpuMaximum, 63}}, 63, 83, sameBoth, {}},
        {"same clock, new memory",
         both,
         {{setting::kGpuMaximum, 63}},
         63,
         900,
         kOk,
         {" 0=63" + kSameButCurve + " 6=63 7=73 8=900"}},
        {"optimized power",
         both | kOptimized,
         {{setting::kPowerMode, 0}},
         9,
         9,
         kOk,
         {" 0=9" + kSameButCurve + " 6=9 7=73 8=9"}},
        {"out of every range",
         both,
         {},
         INT_MAX,
         INT_MIN,
         kOk,
         {" 0=2147483647" + kSameButCurve + " 6=2147483647 7=73 8=-2147483648"}},
        {"zero", both, {}, 0, 0, kOk, {" 0=0" + kSameButCurve + " 6=0 7=73 8=0"}},
    });
}

TEST(Overdrive8UserClocks, OnABoardWithoutACurveSetTheMaximum) {
    int const gpu = kLimits;
    int const both = kLimits | kMemory;
    Lines const sameGpu = Entries(kTag + "2", {"current gpu clock are same as the given value"});
    Lines const sameBoth = Entries(kTag + "2", {"current gpu/mem clock are same as the given value"});
    Check({
        {"new clock", gpu, {}, 1400, 900, kOk, {" 0=1400" + kSame + " 8=83"}},
        {"new clocks", both, {}, 1400, 900, kOk, {" 0=1400" + kSame + " 8=900"}},
        {"new clock, same memory", both, {}, 1400, 83, kOk, {" 0=1400" + kSame + " 8=83"}},
        {"same clock", gpu, {}, 3, 900, sameGpu, {}},
        {"same clocks", both, {}, 3, 83, sameBoth, {}},
        {"same clock, new memory", both, {}, 3, 900, kOk, {" 0=3" + kSame + " 8=900"}},
        {"the top of a curve does not count", gpu, {{setting::kCurveTop, 1400}}, 3, 900, sameGpu, {}},
        {"manual mode", both | kOptimized, {}, 1400, 900, kOk, {" 0=1400" + kSame + " 8=900"}},
        {"optimized power",
         both | kOptimized,
         {{setting::kPowerMode, 2}},
         1400,
         900,
         kOk,
         {" 36=3", " 0=1400" + kSame + " 8=900"}},
        {"optimized power, same clocks", both | kOptimized, {{setting::kPowerMode, 2}}, 3, 83, sameBoth, {" 36=3"}},
        {"mode not under control", both, {{setting::kPowerMode, 2}}, 1400, 900, kOk, {" 0=1400" + kSame + " 8=900"}},
    });
}

TEST(Overdrive8UserClocks, WithoutClockLimitsAreRefused) {
    Lines const refused = Entries(kTag, {"ADL_OD8_GFXCLK_LIMITS & ADL_OD8_GFXCLK_CURVE not supported"});
    Check({
        {"nothing", 0, {}, 1400, 900, refused, {}},
        {"a curve alone", kCurve | kMemory, {}, 1400, 900, refused, {}},
        {"memory alone", kMemory, {}, 3, 900, refused, {}},
        {"optimized power", kMemory | kPower | kOptimized, {{setting::kPowerMode, 0}}, 1400, 900, refused, {}},
    });
}

TEST(Overdrive8UserClocks, ReportTheDriversRefusal) {
    Machine machine = Overdrive8Board(0).Result("ADL2_Overdrive8_Setting_Set", 1).Started();
    Lines const failed = Entries(kTag, {"ADL2_Overdrive8_Setting_Set failed"});
    for (int const capabilities : {kLimits, kLimits | kMemory, kLimits | kCurve, kLimits | kCurve | kMemory}) {
        SCOPED_TRACE(capabilities);
        BecomeBoardWith(machine, capabilities);
        EXPECT_FALSE(machine.Api().SetPerformanceUser(1400, 0, 900, 0));
        EXPECT_EQ(machine.TakeLog(), failed);
    }
    BecomeBoardWith(machine, kLimits | kOptimized);
    BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPowerMode, 0}}));
    EXPECT_FALSE(machine.Api().SetPerformanceUser(1400, 0, 900, 0));
    EXPECT_EQ(machine.TakeLog(), Entries(kTag, {"Fail to reset Optimized Power mode to Manual"}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, "Setting_Set 5: 36=3"}));
}

TEST(Overdrive8UserClocks, ReportARefusalBehindTheSwitchToManual) {
    Machine machine = Overdrive8Board(kLimits | kOptimized)
                          .Then("ADL2_Overdrive8_Setting_Set")
                          .Result("ADL2_Overdrive8_Setting_Set", -1)
                          .Started();
    BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPowerMode, 0}}));
    EXPECT_FALSE(machine.Api().SetPerformanceUser(1400, 0, 900, 0));
    EXPECT_EQ(machine.TakeLog(), Entries(kTag, {"ADL2_Overdrive8_Setting_Set failed"}));
    EXPECT_EQ(TakeAmdTraffic(machine),
              Lines({kRead, "Setting_Set 5: 36=3", "Setting_Set 5: 0=1400" + kSame + " 8=83"}));
}

TEST(Overdrive8UserClocks, WithoutTheCurrentSettingsAreNotSet) {
    Lines const tooFew = Entries(kTag, {"too few current settings"});
    Machine machine = Overdrive8Board(0).Started();
    struct Need {
        int capabilities;
        std::size_t needed;
    };
    // Settings 1 to 8 go along; the mode is setting 36.
    for (Need const& row : {Need{kLimits, 9}, Need{kLimits | kMemory | kOptimized, 37},
                            Need{kLimits | kCurve | kMemory | kOptimized, 9}}) {
        SCOPED_TRACE(row.capabilities);
        BecomeBoardWith(machine, row.capabilities);
        BecomeCurrent(machine, First(Overdrive8Current(), row.needed - 1));
        EXPECT_FALSE(machine.Api().SetPerformanceUser(1400, 0, 900, 0));
        EXPECT_EQ(machine.TakeLog(), tooFew);
        machine.Result("ADL2_Overdrive8_Current_SettingX2_Get", -1);
        EXPECT_FALSE(machine.Api().SetPerformanceUser(0, 0, 0, 0));
        EXPECT_EQ(machine.TakeLog(), kCurrentFailed);
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, kRead}));
        BecomeCurrent(machine, First(With(Overdrive8Current(), {{setting::kPowerMode, 3}}), row.needed));
        EXPECT_TRUE(machine.Api().SetPerformanceUser(1400, 0, 900, 0));
        machine.TakeLog();
        machine.TakeCalls();
    }
}

// A table of zeros where the library has no entry point that would tell.
TEST(Overdrive8UserClocks, WithoutAnyEntryPointForTheCurrentSettingsStartFromZeros) {
    Machine machine = Overdrive8Board(kLimits)
                          .Hide("ADL2_Overdrive8_Current_SettingX2_Get")
                          .Hide("ADL2_Overdrive8_Current_Setting_Get")
                          .Started();
    EXPECT_TRUE(machine.Api().SetPerformanceUser(1400, 0, 900, 0));
    EXPECT_EQ(machine.TakeLog(), kOk);
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({"Setting_Set 5: 0=1400 1=0 2=0 3=0 4=0 5=0 6=0 7=0 8=0"}));
}

// 39 settings, the power limit (9) with its own range.
std::string const kAllReset =
    " 0=5! 1=15! 2=25! 3=35! 4=45! 5=55! 6=65! 7=75! 8=85! 9=0! 10=105! 11=115! 12=125! 13=135! 14=145! 15=155! "
    "16=165! "
    "17=175! 18=185! 19=195! 20=205! 21=215! 22=225! 23=235! 24=245! 25=255! 26=265! 27=275! 28=285! 29=295! 30=305! "
    "31=315! 32=325! 33=335! 34=345! 35=355! 36=365! 37=375! 38=385!";

TEST(Overdrive8DefaultClocks, ResetEverySetting) {
    Machine machine = Overdrive8Board(0).Started();
    for (int const capabilities : {0, kLimits | kCurve | kMemory | kPower | kFanCurve | kOptimized}) {
        BecomeBoardWith(machine, capabilities);
        EXPECT_TRUE(machine.Api().SetPerformanceDefault());
        EXPECT_EQ(machine.TakeLog(), Entries(kDefaultTag, {"begin", "Reset all settings OK"}));
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, "Setting_Set 5:" + kAllReset}));
    }
    for (int const result : {-1, 1}) {
        machine.Result("ADL2_Overdrive8_Setting_Set", result);
        EXPECT_FALSE(machine.Api().SetPerformanceDefault());
        EXPECT_EQ(machine.TakeLog(), Entries(kDefaultTag, {"begin", "Reset all settings failed"}));
    }
    machine.Result("ADL2_Overdrive8_Setting_Set", 0).Result("ADL2_Overdrive8_Current_SettingX2_Get", -1);
    EXPECT_TRUE(machine.Api().SetPerformanceDefault());
    EXPECT_EQ(machine.TakeLog(),
              Entries(kDefaultTag, {"begin"}) + kCurrentFailed + Entries(kDefaultTag, {"Reset all settings OK"}));
}

TEST(Overdrive8Clocks, FailWithoutTheDriversSetter) {
    Machine machine = Overdrive8Board(kLimits | kCurve).Hide("ADL2_Overdrive8_Setting_Set").Started();
    EXPECT_FALSE(machine.Api().SetPerformanceUser(1400, 0, 900, 0));
    EXPECT_EQ(machine.TakeLog(), Entries(kTag, {"ADL2_Overdrive8_Setting_Set failed"}));
    EXPECT_FALSE(machine.Api().SetPerformanceDefault());
    EXPECT_EQ(machine.TakeLog(), Entries(kDefaultTag, {"begin", "Reset all settings failed"}));

    BecomeBoardWith(machine, kLimits | kOptimized);
    BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPowerMode, 0}}));
    EXPECT_FALSE(machine.Api().SetPerformanceUser(1400, 0, 900, 0));
    EXPECT_EQ(machine.TakeLog(), Entries(kTag, {"Fail to reset Optimized Power mode to Manual"}));
}

// What the record for the driver's answer says of its own room.
class CountOfTheAnswer final : public Interceptor {
public:
    explicit CountOfTheAnswer(ScriptedLibrary& library) : library_(library) { library_.AnswerBy(this); }
    ~CountOfTheAnswer() { library_.AnswerBy(nullptr); }
    CountOfTheAnswer(CountOfTheAnswer const&) = delete;
    CountOfTheAnswer& operator=(CountOfTheAnswer const&) = delete;

    int Answer(char const* entryPoint, Word const* words) override {
        if (std::string(entryPoint) == "ADL2_Overdrive8_Setting_Set") {
            counts_.push_back(*reinterpret_cast<int const*>(words[3]));
        }
        return library_.AsOrdered(entryPoint, words);
    }

    std::vector<int> const& Counts() const { return counts_; }

private:
    ScriptedLibrary& library_;
    std::vector<int> counts_;
};

TEST(Overdrive8Requests, SayThatTheAnswerHasRoomFor39SettingsWhateverWasRead) {
    auto const sendEverything = [](Machine& machine) {
        FanTablePoint const table[5] = {};
        machine.Api().SetFanSpeed(204);
        machine.Api().SetFanSpeed(-1);
        machine.Api().SetFanSpeedTable(table, 5);
        machine.Api().SetPowerLimit(75, 7);
        machine.Api().SetPowerLimitDefault();
        machine.Api().SetPerformanceUser(1400, 0, 900, 0);
        machine.Api().SetPerformanceDefault();
    };
    Machine machine = Overdrive8Board(kLimits | kPower | kFanCurve).Started();
    BecomeCurrent(machine, First(With(Overdrive8Current(), {{setting::kPower, 4}}), 29));
    CountOfTheAnswer const newer(machine.Scripted());
    sendEverything(machine);
    EXPECT_EQ(newer.Counts(), std::vector<int>(7, 39));

    machine.Hide("ADL2_Overdrive8_Current_SettingX2_Get");
    for (int const count : {27, 0, -1, INT_MAX}) {
        SCOPED_TRACE(count);
        OrderOlderCurrent(machine, count, With(Overdrive8Current(), {{setting::kPower, 4}}));
        CountOfTheAnswer const older(machine.Scripted());
        sendEverything(machine);
        EXPECT_EQ(older.Counts(), std::vector<int>(7, 39));
    }
}

TEST(Overdrive8Requests, HaveRoomForTheSettingsThatTheDriverAnswersWith) {
    // The whole record, in bytes; one more is found by the sanitizer.
    Machine machine = Overdrive8Board(kLimits | kPower | kFanCurve | kOptimized)
                          .Write("ADL2_Overdrive8_Setting_Set", 3, Bytes(160, 0xEE))
                          .Started();
    BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPower, 4}, {setting::kPowerMode, 0}}));
    FanTablePoint const table[5] = {};
    EXPECT_TRUE(machine.Api().SetFanSpeed(204));
    EXPECT_TRUE(machine.Api().SetFanSpeed(-1));
    EXPECT_TRUE(machine.Api().SetFanSpeedTable(table, 5));
    EXPECT_TRUE(machine.Api().SetPowerLimit(75, 7));
    EXPECT_TRUE(machine.Api().SetPowerLimitDefault());
    EXPECT_TRUE(machine.Api().SetPerformanceUser(1400, 0, 900, 0));
    EXPECT_TRUE(machine.Api().SetPerformanceDefault());
    // What the driver answers with is not what a later request starts from.
    TakeAmdTraffic(machine);
    EXPECT_TRUE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, "Setting_Set 5: 9=0!"}));
}

}  // namespace
}  // namespace gputune::test
