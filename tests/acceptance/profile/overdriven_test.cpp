// OverdriveN: the predefined overclock and silent modes, from the profile file to the driver.
#include <gtest/gtest.h>

#include <algorithm>

#include "boards.h"

namespace gputune::test {
namespace {

constexpr char const* kEngineGet = "ADL2_OverdriveN_SystemClocksX2_Get";
constexpr char const* kEngineSet = "ADL2_OverdriveN_SystemClocksX2_Set";
constexpr char const* kMemoryGet = "ADL2_OverdriveN_MemoryClocksX2_Get";
constexpr char const* kMemorySet = "ADL2_OverdriveN_MemoryClocksX2_Set";
constexpr char const* kPowerGet = "ADL2_OverdriveN_PowerLimit_Get";
constexpr char const* kPowerSet = "ADL2_OverdriveN_PowerLimit_Set";
constexpr char const* kCapabilities = "ADL2_OverdriveN_CapabilitiesX2_Get";

std::string Value(std::string const& name, std::string const& normal, std::string const& given = "") {
    return "<Value Name=\"" + name + "\" Normal=\"" + normal + "\"" +
           (given.empty() ? "" : " Given=\"" + given + "\"") + "/>";
}

std::string Board(std::string const& id, std::string const& values) {
    return "<Boards><Board Id=\"" + id + "\">" + values + "</Board></Boards>";
}

// For OverdriveNBoard's subsystem.
std::string Profile(std::string const& values) {
    return Board("0B361002", values);
}

std::string const kFactors = Value("GpuOC", "1.05") + Value("MemOC", "1.1") + Value("PowerOC", "20") +
                             Value("GpuSilent", "0.9") + Value("MemSilent", "0.8") + Value("PowerSilent", "-10");

// The board, running, with this profile file.
Machine RunningBoard(std::string const& profile) {
    return OverdriveNBoard().WriteProfile(profile).Started();
}

// The lines of the mode itself: without what finding the profile and setting the clocks logs.
Lines ModeLog(Lines const& lines) {
    Lines mode;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(mode), [](std::string const& line) {
        return line.starts_with("[OD7Helper::SetPerformanceOC") ||
               line.starts_with("[OD7Helper::SetPerformanceSilent") || line.starts_with("[OD7Helper::SetPowerLimit") ||
               line.starts_with("[SetPerformance");
    });
    return mode;
}

std::string PlanOf(Machine& machine) {
    for (std::string const& line : machine.TakeLog()) {
        std::size_t const plan = line.find("] ... plan GpuClock=");
        if (plan != std::string::npos) {
            return line.substr(plan + 6);
        }
    }
    return "no plan";
}

void ExpectUnchangedClocks(Machine const& machine) {
    EXPECT_EQ(machine.CountOf(kEngineSet), 0);
    EXPECT_EQ(machine.CountOf(kMemorySet), 0);
}

Lines Identified(std::string const& tag) {
    return {
        tag + " ... begin",
        "[OD7Helper::GetVGASubDeviceID()] UDID ... PCI_VEN_1002&DEV_67DF&SUBSYS_0B361002&REV_E7_6&1A2B3C4D&0&00000008A",
        "[OD7Helper::GetVGASubDeviceID()] hwid ... 0x0B361002"};
}

// Splits a log into what comes before the path of the profile file, which differs from machine to machine, and what
// comes behind it.
void SplitAtPath(Lines const& log, Lines& before, Lines& behind) {
    auto const path = std::find_if(log.begin(), log.end(), [](std::string const& line) {
        return line.starts_with("[IVideoAdapter::GetExternalPerformanceParameter] pred config path ... ");
    });
    ASSERT_NE(path, log.end());
    EXPECT_TRUE(path->ends_with("\\Config\\ConfigModel.xml")) << *path;
    before.assign(log.begin(), path);
    behind.assign(path + 1, log.end());
}

Lines const kFoundProfile = {
    "[IVideoAdapter::GetExternalPerformanceParameter] given hwid ... 188092418",
    "[IVideoAdapter::GetExternalPerformanceParameter] VGA HWID ... found",
    "[IVideoAdapter::GetExternalPerformanceParameter] config used ... ext. custom",
    "[PrintPredefinedPerformanceParameter()] ... Valid: 1",
    "[PrintPredefinedPerformanceParameter()] ... GpuOC: 1.050000",
    "[PrintPredefinedPerformanceParameter()] ... GpuOCGivenValue: 0.000000",
    "[PrintPredefinedPerformanceParameter()] ... GpuSilent: 0.900000",
    "[PrintPredefinedPerformanceParameter()] ... MemOC: 1.100000",
    "[PrintPredefinedPerformanceParameter()] ... MemOCGivenValue: 0.000000",
    "[PrintPredefinedPerformanceParameter()] ... MemSilent: 0.800000",
    "[PrintPredefinedPerformanceParameter()] ... NewestVBIOS: 0",
    "[PrintPredefinedPerformanceParameter()] ... PowerOC: 20.000000",
    "[PrintPredefinedPerformanceParameter()] ... PowerSilent: -10.000000",
    "[PrintPredefinedPerformanceParameter()] ... Watt: 0",
};

// What setting the clocks logs, in its order.
Lines Clocks(Lines const& engine, Lines const& memory) {
    Lines const read = {"[OD7Helper::GetClockInfo(obj)] ... begin", "[OD7Helper::GetClockInfo(obj)] ... get ok"};
    return Lines{"[OD7Helper::SetPerformanceUser(int,int,int,int,bool)] ... begin",
                 "[OD7Helper::SetGpuClock(int,int)] ... begin"} +
           read + engine + Lines{"[OD7Helper::SetGpuClock(int,int)] ADL2_OverdriveN_SystemClocksX2_Set ... set"} +
           Lines{"[OD7Helper::SetMemoryClock(int,int)] ... begin"} + read + memory +
           Lines{"[OD7Helper::SetMemoryClock(int,int)] ADL2_OverdriveN_MemoryClocksX2_Set ... set"};
}

TEST(OverdriveNOverclock, AppliesPowerThenClocksOfTheProfile) {
    Machine machine = RunningBoard(Profile(kFactors));
    machine.Reports(PowerLimits{.power = 7, .temperature = 80});

    EXPECT_TRUE(machine.Api().SetPerformanceOC());

    Lines before;
    Lines behind;
    SplitAtPath(machine.TakeLog(), before, behind);
    EXPECT_EQ(before, Identified("[OD7Helper::SetPerformanceOC()]"));
    EXPECT_EQ(behind,
              kFoundProfile +
                  Lines({
                      "[OD7Helper::SetPerformanceOC()] ... pred_GpuClock=1.050000, pred_MemClock=1.100000, "
                      "pred_PowerOC=20.000000",
                      "[OD7Helper::SetPerformanceOC()] default_iGpuClock ... 1366",
                      "[OD7Helper::SetPerformanceOC()] default_iGpuVol ... 1150",
                      "[OD7Helper::SetPerformanceOC()] default_iMemClock ... 2000",
                      "[OD7Helper::SetPerformanceOC()] default_iMemVol ... 950",
                      "[OD7Helper::SetPerformanceOC()] default_iTempLimit ... 75",
                      "[OD7Helper::SetPerformanceOC()] default_iPowerLimitMax ... 50",
                      "[OD7Helper::SetPerformanceOC()] default_iPowerLimitMin ... -50",
                      "[OD7Helper::SetPerformanceOC()] plan power limit ... 20.000000",
                      "[OD7Helper::SetPowerLimit(int,int)] ... begin",
                      "[OD7Helper::SetPowerLimit(int,int)] current power value ... max_temp: 80, power: 7",
                      "[OD7Helper::SetPowerLimit(int,int)] plan power value ... max_temp: 75, power: 20",
                      "[OD7Helper::SetPowerLimit(int,int)] ADL2_OverdriveN_PowerLimit_Set ... set",
                      "[OD7Helper::SetPerformanceOC()] ... plan GpuClock=1434, GpuVol=1150, MemClock=2200, MemVol=950",
                  }) +
                  Clocks({"[OD7Helper::SetGpuClock(int,int)] nDefaultClock ... 1366",
                          "[OD7Helper::SetGpuClock(int,int)] nDefaultVoltage ... 1150",
                          "[OD7Helper::SetGpuClock(int,int)] fGpuOCRatio ... 1.049780",
                          "[OD7Helper::SetGpuClock(int,int)] fGpuOVRatio ... 1.000000",
                          "[OD7Helper::SetGpuClock(int,int)] ... plan gpu clock: 143400, gpu voltage: 1150"},
                         {"[OD7Helper::SetMemoryClock(int,int)] nDefaultClock ... 2000",
                          "[OD7Helper::SetMemoryClock(int,int)] nDefaultVoltage ... 950",
                          "[OD7Helper::SetMemoryClock(int,int)] fMemOCRatio ... 1.100000",
                          "[OD7Helper::SetMemoryClock(int,int)] fMemOVRatio ... 1.000000",
                          "[OD7Helper::SetMemoryClock(int,int)] ... plan mem clock: 220000, mem voltage: 950"}));

    EXPECT_EQ(machine.Sent<PowerLimits>(), (PowerLimits{.mode = kModeManual, .power = 20, .temperature = 75}));
    EXPECT_EQ(machine.Sent<EngineLevels>(),
              (EngineLevels{.mode = kModeManual, .levels = {{30000, 750}, {143400, 1150, 3}, {143400, 1150, 3}}}));
    EXPECT_EQ(machine.Sent<MemoryLevels>(),
              (MemoryLevels{.mode = kModeManual, .levels = {{30000, 750}, {220000, 950, 1}, {220000, 950, 1}}}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kPowerGet, kPowerSet, kEngineGet, kEngineSet, kMemoryGet, kMemorySet}));
}

TEST(OverdriveNSilent, AppliesPowerThenClocksOfTheProfile) {
    // What is given applies to the overclock mode alone.
    Machine machine = RunningBoard(Profile(Value("GpuSilent", "0.9", "1800") + Value("MemSilent", "0.8", "1900") +
                                           Value("PowerSilent", "-10") + Value("GpuOC", "1.05", "1800")));
    machine.Reports(PowerLimits{.power = 7, .temperature = 80});

    EXPECT_TRUE(machine.Api().SetPerformanceSilent());

    Lines before;
    Lines behind;
    SplitAtPath(machine.TakeLog(), before, behind);
    EXPECT_EQ(before, Identified("[OD7Helper::SetPerformanceSilent()]"));
    ASSERT_GT(behind.size(), 14U);
    EXPECT_EQ(Lines(behind.begin() + 14, behind.end()),
              Lines({
                  "[OD7Helper::SetPerformanceSilent()] ... pred_GpuClock=0.900000, pred_MemClock=0.800000",
                  "[OD7Helper::SetPerformanceSilent()] default_iGpuClock ... 1366",
                  "[OD7Helper::SetPerformanceSilent()] default_iGpuVol ... 1150",
                  "[OD7Helper::SetPerformanceSilent()] default_iMemClock ... 2000",
                  "[OD7Helper::SetPerformanceSilent()] default_iMemVol ... 950",
                  "[OD7Helper::SetPerformanceSilent()] default_iTempLimit ... 75",
                  "[OD7Helper::SetPerformanceSilent()] default_iPowerLimitMax ... 50",
                  "[OD7Helper::SetPerformanceSilent()] default_iPowerLimitMin ... -50",
                  "[OD7Helper::SetPerformanceSilent()] plan power limit ... -10.000000",
                  "[OD7Helper::SetPowerLimit(int,int)] ... begin",
                  "[OD7Helper::SetPowerLimit(int,int)] current power value ... max_temp: 80, power: 7",
                  "[OD7Helper::SetPowerLimit(int,int)] plan power value ... max_temp: 75, power: -10",
                  "[OD7Helper::SetPowerLimit(int,int)] ADL2_OverdriveN_PowerLimit_Set ... set",
                  "[OD7Helper::SetPerformanceSilent()] ... plan GpuClock=1229, GpuVol=1150, MemClock=1600, MemVol=950",
              }) + Clocks({"[OD7Helper::SetGpuClock(int,int)] nDefaultClock ... 1366",
                           "[OD7Helper::SetGpuClock(int,int)] nDefaultVoltage ... 1150",
                           "[OD7Helper::SetGpuClock(int,int)] fGpuOCRatio ... 0.899707",
                           "[OD7Helper::SetGpuClock(int,int)] fGpuOVRatio ... 1.000000",
                           "[OD7Helper::SetGpuClock(int,int)] ... plan gpu clock: 122900, gpu voltage: 1150"},
                          {"[OD7Helper::SetMemoryClock(int,int)] nDefaultClock ... 2000",
                           "[OD7Helper::SetMemoryClock(int,int)] nDefaultVoltage ... 950",
                           "[OD7Helper::SetMemoryClock(int,int)] fMemOCRatio ... 0.800000",
                           "[OD7Helper::SetMemoryClock(int,int)] fMemOVRatio ... 1.000000",
                           "[OD7Helper::SetMemoryClock(int,int)] ... plan mem clock: 160000, mem voltage: 950"}));
    EXPECT_EQ(machine.Sent<PowerLimits>(), (PowerLimits{.mode = kModeManual, .power = -10, .temperature = 75}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kPowerGet, kPowerSet, kEngineGet, kEngineSet, kMemoryGet, kMemorySet}));
}

TEST(OverdriveNOverclock, GivenClockReplacesTheEngineFactorAlone) {
    struct Case {
        std::string profile;
        char const* plan;
    };
    std::vector<Case> const cases = {
        {Value("GpuOC", "1.05", "1800.0") + Value("MemOC", "1.1", "2400"),
         "plan GpuClock=1800, GpuVol=1150, MemClock=2200, MemVol=950"},
        {Value("GpuOC", "1.05", "1800.9") + Value("MemOC", "1.0"),
         "plan GpuClock=1800, GpuVol=1150, MemClock=2000, MemVol=950"},
        {Value("GpuOC", "1.05", "0.0") + Value("MemOC", "1.05"),
         "plan GpuClock=1434, GpuVol=1150, MemClock=2100, MemVol=950"},
        {Value("GpuOC", "1.1") + Value("MemOC", "0.9"), "plan GpuClock=1502, GpuVol=1150, MemClock=1800, MemVol=950"},
        {Value("GpuOC", "1.05", "-5") + Value("MemOC", "1.0"),
         "plan GpuClock=-5, GpuVol=1150, MemClock=2000, MemVol=950"},
    };
    Machine machine = RunningBoard(Profile(kFactors));
    for (Case const& known : cases) {
        SCOPED_TRACE(known.plan);
        machine.WriteProfile(Profile(known.profile));  // read anew by every call
        EXPECT_TRUE(machine.Api().SetPerformanceOC());
        EXPECT_EQ(PlanOf(machine), known.plan);
    }
}

// A factor of 0 plans a clock of 0, which keeps the current one.
TEST(OverdriveNOverclock, ProfileWithoutFactorsKeepsTheCurrentClocks) {
    Machine machine = RunningBoard(Profile(""));
    EXPECT_TRUE(machine.Api().SetPerformanceOC());
    Lines const log = machine.TakeLog();
    EXPECT_NE(std::find(log.begin(), log.end(),
                        "[OD7Helper::SetPerformanceOC()] ... plan GpuClock=0, GpuVol=1150, MemClock=0, MemVol=950"),
              log.end());
    EXPECT_NE(
        std::find(log.begin(), log.end(), "[OD7Helper::SetGpuClock(int,int)] iGpuClock == 0 ... use current: 1366"),
        log.end());
    EXPECT_EQ(machine.Sent<PowerLimits>(), (PowerLimits{.mode = kModeManual, .power = 0, .temperature = 75}));
}

TEST(OverdriveNModes, PowerIsClampedAndTruncated) {
    struct Case {
        char const* power;
        char const* plan;
        int sent;
    };
    std::vector<Case> const cases = {
        {"50", "50.000000", 50},    {"50.5", "50.000000", 50},    {"120", "50.000000", 50},
        {"-50", "-50.000000", -50}, {"-50.5", "-50.000000", -50}, {"-80", "-50.000000", -50},
        {"12.7", "12.700000", 12},  {"-12.7", "-12.700000", -12}, {"1e30", "50.000000", 50},
    };
    Machine machine = RunningBoard(Profile(""));
    for (Case const& known : cases) {
        SCOPED_TRACE(known.power);
        machine.WriteProfile(Profile(Value("PowerOC", known.power) + Value("PowerSilent", "3")));
        EXPECT_TRUE(machine.Api().SetPerformanceOC());
        Lines const overclock = machine.TakeLog();
        EXPECT_EQ(std::count(overclock.begin(), overclock.end(),
                             std::string("[OD7Helper::SetPerformanceOC()] plan power limit ... ") + known.plan),
                  1);
        EXPECT_EQ(machine.Sent<PowerLimits>(), (PowerLimits{kModeManual, known.sent, 75}));

        machine.WriteProfile(Profile(Value("PowerOC", "3") + Value("PowerSilent", known.power)));
        EXPECT_TRUE(machine.Api().SetPerformanceSilent());
        Lines const silent = machine.TakeLog();
        EXPECT_EQ(std::count(silent.begin(), silent.end(),
                             std::string("[OD7Helper::SetPerformanceSilent()] plan power limit ... ") + known.plan),
                  1);
        EXPECT_EQ(machine.Sent<PowerLimits>(), (PowerLimits{kModeManual, known.sent, 75}));
    }
}

// Nothing is sent: neither the clocks nor the power limit, whichever of them it is that is no number.
TEST(OverdriveNModes, PlansThatAreNoNumbersAreNotSent) {
    std::vector<std::string> const values = {
        Value("GpuOC", "nan") + Value("MemOC", "1") + Value("PowerOC", "10"),
        Value("GpuOC", "inf") + Value("MemOC", "1") + Value("PowerOC", "10"),
        Value("GpuOC", "1e30") + Value("MemOC", "1") + Value("PowerOC", "10"),
        Value("GpuOC", "1", "nan") + Value("MemOC", "1") + Value("PowerOC", "10"),
        Value("GpuOC", "1", "-1e30") + Value("MemOC", "1") + Value("PowerOC", "10"),
        // An int in MHz, and none in the driver's unit of 10 kHz.
        Value("GpuOC", "1", "21474837") + Value("MemOC", "1") + Value("PowerOC", "10"),
        Value("GpuOC", "1") + Value("MemOC", "nan") + Value("PowerOC", "10"),
        Value("GpuOC", "1") + Value("MemOC", "-inf") + Value("PowerOC", "10"),
        Value("GpuOC", "1") + Value("MemOC", "20000") + Value("PowerOC", "10"),
        Value("GpuOC", "1") + Value("MemOC", "1") + Value("PowerOC", "nan"),
    };
    Machine machine = RunningBoard(Profile(kFactors));
    auto const expectRefused = [&](bool applied, std::string const& tag) {
        EXPECT_FALSE(applied);
        Lines const log = machine.TakeLog();
        EXPECT_EQ(log.back(), tag + " ... predefined performance parameter out of range");
        EXPECT_EQ(log.at(log.size() - 2), tag + " default_iPowerLimitMin ... -50");
        EXPECT_EQ(machine.TakeCallNames(), Lines());
    };
    for (std::string const& value : values) {
        SCOPED_TRACE(value);
        machine.WriteProfile(Profile(value));
        expectRefused(machine.Api().SetPerformanceOC(), "[OD7Helper::SetPerformanceOC()]");
    }
    for (char const* const name : {"GpuSilent", "MemSilent", "PowerSilent"}) {
        SCOPED_TRACE(name);
        machine.WriteProfile(Profile(Value("GpuSilent", "1") + Value("MemSilent", "1") + Value("PowerSilent", "10") +
                                     Value(name, "nan")));
        expectRefused(machine.Api().SetPerformanceSilent(), "[OD7Helper::SetPerformanceSilent()]");
    }
}

TEST(OverdriveNModes, RefusedPowerLimitDoesNotStopTheClocks) {
    Machine machine = OverdriveNBoard()
                          .Reports(Capabilities{.temperature = {.minimum = 50, .maximum = 90, .standard = 95}})
                          .WriteProfile(Profile(kFactors))
                          .Started();
    EXPECT_TRUE(machine.Api().SetPerformanceOC());
    Lines const log = machine.TakeLog();
    EXPECT_EQ(std::count(log.begin(), log.end(),
                         "[OD7Helper::SetPowerLimit(int,int)] ... temp value out of bound: should be 50 to 90"),
              1);
    EXPECT_EQ(machine.CountOf(kPowerSet), 0);
    EXPECT_EQ(machine.CountOf(kEngineSet), 1);
    EXPECT_EQ(machine.CountOf(kMemorySet), 1);
}

TEST(OverdriveNModes, FailingPowerLimitDoesNotStopTheClocks) {
    Machine machine = RunningBoard(Profile(kFactors));
    machine.Result(kPowerSet, -1);
    EXPECT_TRUE(machine.Api().SetPerformanceOC());
    EXPECT_TRUE(machine.Api().SetPerformanceSilent());
    EXPECT_EQ(machine.CountOf(kEngineSet), 2);
    EXPECT_EQ(machine.CountOf(kMemorySet), 2);
}

TEST(OverdriveNModes, FailingClocksFailTheModeAndKeepThePowerLimit) {
    Machine machine = RunningBoard(Profile(kFactors));
    machine.Result(kEngineSet, -1);
    EXPECT_FALSE(machine.Api().SetPerformanceOC());
    EXPECT_FALSE(machine.Api().SetPerformanceSilent());
    EXPECT_EQ(machine.CountOf(kPowerSet), 2);
    EXPECT_EQ(machine.CountOf(kMemorySet), 0);
    machine.Result(kEngineSet, 0).Result(kMemorySet, -1);
    EXPECT_FALSE(machine.Api().SetPerformanceOC());
    EXPECT_FALSE(machine.Api().SetPerformanceSilent());
}

TEST(OverdriveNModes, NoProfileWritesNothing) {
    struct Case {
        char const* name;
        std::string profile;
    };
    std::vector<Case> const cases = {
        {"empty file", ""},
        {"root alone", "<Boards/>"},
        {"another board", Board("0B361003", kFactors)},
        {"a default that is none", "<Boards><Board Default=\"0\">" + kFactors + "</Board></Boards>"},
    };
    Machine machine = RunningBoard("");
    auto const expectRefused = [&] {
        EXPECT_FALSE(machine.Api().SetPerformanceOC());
        EXPECT_EQ(ModeLog(machine.TakeLog()),
                  Lines({"[OD7Helper::SetPerformanceOC()] ... begin",
                         "[OD7Helper::SetPerformanceOC()] ... Get predefined performance parameter failed"}));
        EXPECT_FALSE(machine.Api().SetPerformanceSilent());
        EXPECT_EQ(ModeLog(machine.TakeLog()),
                  Lines({"[OD7Helper::SetPerformanceSilent()] ... begin",
                         "[OD7Helper::SetPerformanceSilent()] ... Get predefined performance parameter failed"}));
    };
    for (Case const& known : cases) {
        SCOPED_TRACE(known.name);
        machine.WriteProfile(known.profile);
        expectRefused();
    }
    SCOPED_TRACE("no file");
    machine.RemoveProfile();
    expectRefused();
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

TEST(OverdriveNModes, DefaultEntryServesBoardsWithoutTheirOwn) {
    Machine machine = RunningBoard("<Boards><Board Default=\"1\">" + kFactors + "</Board></Boards>");
    EXPECT_TRUE(machine.Api().SetPerformanceOC());
    EXPECT_EQ(PlanOf(machine), "plan GpuClock=1434, GpuVol=1150, MemClock=2200, MemVol=950");
    EXPECT_TRUE(machine.Api().SetPerformanceSilent());
    EXPECT_EQ(PlanOf(machine), "plan GpuClock=1229, GpuVol=1150, MemClock=1600, MemVol=950");
}

TEST(OverdriveNModes, BoardWithoutIdentifierIsLookedUpAsZero) {
    Machine machine = OverdriveNBoard();
    OrderAdapters(machine, {{.udid = "none"}});
    machine.WriteProfile(Board("0", Value("GpuOC", "1.1") + Value("MemOC", "1")));
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_TRUE(machine.Api().SetPerformanceOC());
    EXPECT_EQ(PlanOf(machine), "plan GpuClock=1502, GpuVol=1150, MemClock=2000, MemVol=950");
}

TEST(OverdriveNModes, MalformedBoardIdentifierEndsAtTheBoundary) {
    Machine machine = OverdriveNBoard();
    OrderAdapters(machine, {{.udid = "&SUBSYS_E4571002"}});
    machine.WriteProfile("<Boards><Board Default=\"1\">" + kFactors + "</Board></Boards>");
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_FALSE(machine.Api().SetPerformanceOC());
    EXPECT_EQ(ModeLog(machine.TakeLog()), Lines({"[OD7Helper::SetPerformanceOC()] ... begin",
                                                 "[SetPerformanceOC()] ... stol argument out of range"}));
    EXPECT_FALSE(machine.Api().SetPerformanceSilent());
    EXPECT_EQ(ModeLog(machine.TakeLog()), Lines({"[OD7Helper::SetPerformanceSilent()] ... begin",
                                                 "[SetPerformanceSilent()] ... stol argument out of range"}));
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

TEST(OverdriveNModes, MalformedProfileIdentifierEndsAtTheBoundary) {
    Machine machine = RunningBoard(Board("zz", kFactors));
    EXPECT_FALSE(machine.Api().SetPerformanceOC());
    EXPECT_EQ(machine.TakeLog().back(), "[SetPerformanceOC()] ... invalid stol argument");
    EXPECT_FALSE(machine.Api().SetPerformanceSilent());
    EXPECT_EQ(machine.TakeLog().back(), "[SetPerformanceSilent()] ... invalid stol argument");
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

TEST(OverdriveNModes, WithoutAnyLevelNothingIsApplied) {
    Machine machine = AmdBoard(7).WriteProfile(Profile(kFactors)).Started();
    EXPECT_FALSE(machine.Api().SetPerformanceOC());
    EXPECT_EQ(machine.TakeLog().back(), "[OD7Helper::SetPerformanceOC()] ... no performance level");
    EXPECT_FALSE(machine.Api().SetPerformanceSilent());
    EXPECT_EQ(machine.TakeLog().back(), "[OD7Helper::SetPerformanceSilent()] ... no performance level");
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

TEST(OverdriveNModes, AfterAFailedInitialisationNothingIsApplied) {
    Machine machine = OverdriveNBoard().Hide(kCapabilities).WriteProfile(Profile(kFactors)).Started();
    EXPECT_FALSE(machine.Api().SetPerformanceOC());
    EXPECT_FALSE(machine.Api().SetPerformanceSilent());
    ExpectUnchangedClocks(machine);
    EXPECT_EQ(machine.CountOf(kPowerSet), 0);
}

}  // namespace
}  // namespace gputune::test
