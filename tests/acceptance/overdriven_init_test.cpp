// OverdriveN: what the adapter reads at its creation, and what it is worth after a failure there.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <functional>

#include "boards.h"

namespace gputune::test {
namespace {

constexpr char const* kCapabilities = "ADL2_OverdriveN_CapabilitiesX2_Get";
constexpr char const* kEngine = "ADL2_OverdriveN_SystemClocksX2_Get";
constexpr char const* kMemory = "ADL2_OverdriveN_MemoryClocksX2_Get";
constexpr char const* kThermal = "ADL2_Overdrive5_ThermalDevices_Enum";
constexpr std::uint64_t kAmdOverdriveN = (3ULL << 32) | 1;

// What followed the choice of the generation.
Lines Behind(std::string const& choice, Lines const& lines) {
    auto const chosen = std::find(lines.begin(), lines.end(), choice);
    return chosen == lines.end() ? Lines{"generation not chosen"} : Lines(chosen + 1, lines.end());
}

Lines AdapterLog(Machine& machine) {
    return Behind("[GetAmdApiType(ADL&)] ... OD7", machine.TakeLog());
}

void Levels(Machine& machine, int count) {
    machine.Reports(Capabilities{.levels = count});
}

Lines Log(int engineLevels, int memoryLevels, int controllers) {
    return {
        "[OD7Helper::GetClockInfo(obj)] ... begin",
        "[OD7Helper::GetClockInfo(obj)] ... get ok",
        "[OD7Helper::InitAdapter()] m_MaxGpuLevels ... " + std::to_string(engineLevels),
        "[OD7Helper::GetClockInfo(obj)] ... begin",
        "[OD7Helper::GetClockInfo(obj)] ... get ok",
        "[OD7Helper::InitAdapter()] m_MaxMemLevels ... " + std::to_string(memoryLevels),
        "[OD7Helper::InitAdapter()] ADL2_Overdrive5_ThermalDevices_Enum ... num of thermal controller: " +
            std::to_string(controllers),
    };
}

TEST(OverdriveNInit, ReadsCapabilitiesThenBothTablesThenControllers) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.Api().GetVendorInfo(), kAmdOverdriveN);
    EXPECT_EQ(AdapterLog(machine), Log(3, 3, 1));

    EXPECT_EQ(Behind("Overdrive_Caps 5", TakeAmdTraffic(machine)),
              Lines({"OverdriveN_CapabilitiesX2_Get 5", "OverdriveN_SystemClocksX2_Get 5: mode 1, 3 levels",
                     "OverdriveN_MemoryClocksX2_Get 5: mode 1, 3 levels", "Overdrive5_ThermalDevices_Enum 5 #0",
                     "Overdrive5_ThermalDevices_Enum 5 #1"}));
}

Lines NoTable(std::string const& count) {
    return {"[OD7Helper::GetClockInfo(obj)] ... begin",
            "[OD7Helper::GetClockInfo(obj)] ... no table for number of levels: " + count,
            "[OD7Helper::InitAdapter()] m_DefaultSystemClock ... null ptr"};
}

// An adapter that is not ok does no harm: what needs the level tables fails, and so does what needs the ranges where
// they were not read; the rest answers as ever.
void ExpectHarmless(Machine& machine, bool hasRanges = true) {
    Exports const& api = machine.Api();
    machine.TakeCalls();

    EXPECT_FALSE(api.SetPerformanceUser(1500, 1200, 2100, 1000));
    EXPECT_FALSE(api.SetPerformanceUser(0, 0, 0, 0));
    EXPECT_FALSE(api.SetPerformanceDefault());
    EXPECT_FALSE(api.SetPerformanceOC());
    EXPECT_FALSE(api.SetPerformanceSilent());
    EXPECT_EQ(machine.CountOf("ADL2_OverdriveN_MemoryClocksX2_Set"), 0);

    EXPECT_FALSE(api.SetFanSpeedTable(nullptr, 5));
    machine.TakeLog();
    EXPECT_EQ(api.SetFanSpeed(40), hasRanges);
    Lines const fan = machine.TakeLog();
    ASSERT_EQ(fan.size(), 4U);
    EXPECT_EQ(fan[1], "[OD7Helper::SetOD5FanSpeed(int)] ... ThermalControllers is empty");
    EXPECT_TRUE(api.SetPowerLimitDefault());

    api.FetchHwmValues();
    EXPECT_TRUE(api.GetHwmValue(GPUTUNE_HWM_TDP_LIMIT).Valid);
    EXPECT_EQ(api.GetFrameRate(), -1);

    EXPECT_TRUE(api.GetFanSetting().Valid);
    EXPECT_EQ(api.GetPowerLimitSetting().Current, -1);
    EXPECT_EQ(api.GetMemClockSetting().MaxVoltage, -1);
    EXPECT_TRUE(api.GetGpuClockSetting().Valid);

    EXPECT_EQ(api.GetVGAInfo().SubsystemId, 0x0B361002U);
    EXPECT_TRUE(api.SetActiveAdapterIndex(5));
    EXPECT_EQ(api.GetActiveAdapterIndex(), 5);
    EXPECT_FALSE(api.IsInitOk());
    machine.TakeLog();
}

TEST(OverdriveNInitFailure, IsLoggedAndLeavesAnAdapterThatIsNotOk) {
    struct Case {
        char const* name;
        std::function<void(Machine&)> order;
        Lines log;
    };
    std::vector<Case> const cases = {
        {"failing capabilities",
         [](Machine& m) { m.Result(kCapabilities, -8); },
         {"[OD7Helper::InitAdapter()] ADL2_OverdriveN_CapabilitiesX2_Get ... failed: -8"}},
        {"a warning for the capabilities",
         [](Machine& m) { m.Result(kCapabilities, 1); },
         {"[OD7Helper::InitAdapter()] ADL2_OverdriveN_CapabilitiesX2_Get ... failed: 1"}},
        {"failing engine table",
         [](Machine& m) { m.Result(kEngine, -3); },
         {"[OD7Helper::GetClockInfo(obj)] ... begin",
          "[OD7Helper::GetClockInfo(obj)] ADL2_OverdriveN_SystemClocksX2_Get ... failed: -3",
          "[OD7Helper::InitAdapter()] m_DefaultSystemClock ... null ptr"}},
        {"failing memory table",
         [](Machine& m) { m.Result(kMemory, -4); },
         {"[OD7Helper::GetClockInfo(obj)] ... begin", "[OD7Helper::GetClockInfo(obj)] ... get ok",
          "[OD7Helper::InitAdapter()] m_MaxGpuLevels ... 3", "[OD7Helper::GetClockInfo(obj)] ... begin",
          "[OD7Helper::GetClockInfo(obj)] ADL2_OverdriveN_MemoryClocksX2_Get ... failed: -4",
          "[OD7Helper::InitAdapter()] m_DefaultMemoryClock ... null ptr"}},
        {"negative level count", [](Machine& m) { Levels(m, -1); }, NoTable("-1")},
        {"lowest level count", [](Machine& m) { Levels(m, INT_MIN); }, NoTable("-2147483648")},
        {"highest level count", [](Machine& m) { Levels(m, INT_MAX); }, NoTable("2147483647")},
        {"level count whose byte size wraps around", [](Machine& m) { Levels(m, 0x10000000); }, NoTable("268435456")},
        {"level count just too large", [](Machine& m) { Levels(m, 65537); }, NoTable("65537")},
    };
    Machine machine = OverdriveNBoard();
    for (Case const& known : cases) {
        SCOPED_TRACE(known.name);
        machine.Result(kCapabilities, 0).Result(kEngine, 0).Result(kMemory, 0).Reports(Capabilities{});
        known.order(machine);
        EXPECT_TRUE(machine.Init()) << "an adapter of the right kind exists";
        EXPECT_FALSE(machine.Api().IsInitOk());
        EXPECT_EQ(machine.Api().GetVendorInfo(), kAmdOverdriveN);
        EXPECT_EQ(AdapterLog(machine), known.log);
        // The clocks work without capabilities that a failing call delivered all the same.
        if (!std::string(known.name).ends_with("capabilities")) {
            ExpectHarmless(machine);
        }
    }
}

TEST(OverdriveNInitFailure, MissingCapabilitiesLeaveEveryRangeZero) {
    Machine machine = AmdBoard(7);
    machine.Hide(kCapabilities);
    ASSERT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(AdapterLog(machine),
              Lines({"[OD7Helper::InitAdapter()] ADL2_OverdriveN_CapabilitiesX2_Get ... null ptr"}));

    PowerLimitSetting const power = machine.Api().GetPowerLimitSetting();
    EXPECT_TRUE(power.Valid);
    EXPECT_EQ(power.Default, 0);
    EXPECT_EQ(power.Max, 0);
    EXPECT_EQ(power.Min, 0);
    EXPECT_FALSE(machine.Api().SetPowerLimit(75, 0));
    EXPECT_EQ(machine.TakeLog(),
              Lines({"[OD7Helper::SetPowerLimit(int,int)] ... begin",
                     "[OD7Helper::SetPowerLimit(int,int)] ... temp value out of bound: should be 0 to 0"}));
    // What fits the zeros is refused as well, as there is no range.
    EXPECT_FALSE(machine.Api().SetPowerLimit(0, 0));
    EXPECT_EQ(machine.TakeLog(), Lines({"[OD7Helper::SetPowerLimit(int,int)] ... begin",
                                        "[OD7Helper::SetPowerLimit(int,int)] ... no power limit range"}));
    EXPECT_EQ(machine.CountOf("ADL2_OverdriveN_PowerLimit_Get"), 0);
    EXPECT_EQ(machine.CountOf("ADL2_OverdriveN_PowerLimit_Set"), 0);
    ClockSetting const clock = machine.Api().GetGpuClockSetting();
    EXPECT_EQ(clock.MaxClock, 0);
    EXPECT_EQ(clock.CurrentClock, -1);
    EXPECT_EQ(clock.CurrentVoltage, -1);
    ExpectHarmless(machine, false);
}

TEST(OverdriveNInitFailure, RangesOfAFailingCallDoNotCount) {
    Machine machine = OverdriveNBoard();  // the capabilities are written all the same
    machine.Result(kCapabilities, -1);
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(machine.Api().GetPowerLimitSetting().Max, 0);
    EXPECT_FALSE(machine.Api().SetPowerLimit(75, 10));
    EXPECT_FALSE(machine.Api().SetPowerLimit(0, 0));
    EXPECT_FALSE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.CountOf("ADL2_OverdriveN_PowerLimit_Set"), 0);
    EXPECT_EQ(machine.CountOf("ADL2_OverdriveN_FanControl_Set"), 0);
    ExpectHarmless(machine, false);
}

class OverdriveNMissingTable : public testing::TestWithParam<char const*> {};

// Both must be there, whichever is read.
TEST_P(OverdriveNMissingTable, StopsTheEngineTable) {
    Machine machine = OverdriveNBoard();
    machine.Hide(GetParam());
    ASSERT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(AdapterLog(machine), Lines({"[OD7Helper::GetClockInfo(obj)] ... begin",
                                          "[OD7Helper::GetClockInfo()] !ADL2_OverdriveN_SystemClocksX2_Get || "
                                          "!ADL2_OverdriveN_MemoryClocksX2_Get ... null ptr",
                                          "[OD7Helper::InitAdapter()] m_DefaultSystemClock ... null ptr"}));
    EXPECT_EQ(machine.CountOf(kEngine), 0);
    ExpectHarmless(machine);
}

INSTANTIATE_TEST_SUITE_P(Of, OverdriveNMissingTable, testing::Values(kEngine, kMemory),
                         [](auto const& given) { return std::string(given.param); });

TEST(OverdriveNInitFailure, MissingThermalEnumerationLeavesTheClocksUsable) {
    Machine machine = OverdriveNBoard();
    machine.Hide(kThermal);
    ASSERT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
    Lines expected = Log(3, 3, 0);
    expected.back() = "[OD7Helper::InitAdapter()] ADL2_Overdrive5_ThermalDevices_Enum ... null ptr";
    EXPECT_EQ(AdapterLog(machine), expected);
    EXPECT_TRUE(machine.Api().SetPerformanceUser(1500, 1200, 2100, 1000));
    EXPECT_TRUE(machine.Api().SetPerformanceDefault());
    EXPECT_FALSE(machine.Api().IsInitOk());
}

TEST(OverdriveNInit, NoLevelsMakeTablesOfTheHeadAlone) {
    Machine machine = AmdBoard(7);  // capabilities all zero; nothing is written behind the heads
    OrderThermalControllers(machine, {});
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(AdapterLog(machine), Log(0, 0, 0));
    EXPECT_EQ(machine.Asked<EngineLevels>(), EngineLevels{.mode = kModeDefault});
    EXPECT_EQ(machine.Asked<MemoryLevels>(), MemoryLevels{.mode = kModeDefault});
}

TEST(OverdriveNInit, LargestLevelCountGetsItsTables) {
    Machine machine = OverdriveNBoard();
    machine.Reports(Capabilities{.levels = 65536});
    machine.Reports(EngineLevels{.levels = std::vector<Level>(65536)}).Reports(EngineLevels{.levels = {{1}, {2}, {3}}});
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(AdapterLog(machine), Log(3, 3, 1));
    EXPECT_EQ(machine.Asked<EngineLevels>().size, 1048588);  // 12 + 65,536 x 16
    EXPECT_EQ(machine.Asked<EngineLevels>().count, 65536);
}

TEST(OverdriveNInit, FirstLevelWithoutClockEndsTheCount) {
    Machine machine = OverdriveNBoard();
    machine.Reports(Capabilities{.levels = 5});
    machine.Reports(EngineLevels{.levels = {{30000, 750}, {90000, 850}, {0, 1150}, {136600, 1150}, {140000, 1200}}});
    machine.Reports(MemoryLevels{.levels = {{0, 750}, {100000, 800}, {200000, 950}, {}, {}}});
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(AdapterLog(machine), Log(2, 0, 1));
}

TEST(OverdriveNInit, LevelsCountByTheirClockAlone) {
    Machine machine = OverdriveNBoard();
    machine.Reports(EngineLevels{.levels = {{.clock = 30000, .voltage = 750, .enabled = 0},
                                            {.clock = 90000, .voltage = 0, .enabled = 0},
                                            {.clock = -1, .voltage = 1150, .enabled = 0}}});
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(AdapterLog(machine), Log(3, 3, 1));
}

TEST(OverdriveNInit, CountInTheDriversHeadIsNotTrusted) {
    Machine machine = OverdriveNBoard();
    for (int const head : {INT_MAX, 0x10000000, 0, -1, INT_MIN}) {
        SCOPED_TRACE(head);
        OrderLevelCounts(machine, head);
        ASSERT_TRUE(machine.Init());
        EXPECT_TRUE(machine.Api().IsInitOk());
        Lines const log = AdapterLog(machine);
        ASSERT_EQ(log.size(), 7U);
        EXPECT_EQ(log[2], "[OD7Helper::InitAdapter()] m_MaxGpuLevels ... 3");
        EXPECT_EQ(log[5], "[OD7Helper::InitAdapter()] m_MaxMemLevels ... 3");
    }
}

TEST(OverdriveNThermal, ControllersOfOtherDomainsAreDropped) {
    Machine machine = OverdriveNBoard();  // brings one of domain 1
    OrderThermalControllers(machine, {{.domain = 2}, {.domain = 1}, {.domain = 0}, {.domain = -1}});
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(AdapterLog(machine), Log(3, 3, 2));
    EXPECT_EQ(TakeAmdTraffic(machine).back(), "Overdrive5_ThermalDevices_Enum 5 #5");
}

TEST(OverdriveNThermal, OtherResultCodesDoNotMatter) {
    Machine machine = AmdBoard(7);
    machine.Result(kThermal, -1).Reports(ThermalController{});                   // failed, but says GPU: kept
    machine.Then(kThermal).Result(kThermal, -3);                                 // failed and says nothing: dropped
    machine.Then(kThermal).Result(kThermal, 1).Reports(ThermalController{});     // a warning: kept
    machine.Then(kThermal).Result(kThermal, -100).Reports(ThermalController{});  // the end, whatever it says
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(AdapterLog(machine), Log(0, 0, 2));
    EXPECT_EQ(machine.CountOf(kThermal), 4);
}

TEST(OverdriveNThermal, EnumerationWithoutEndStopsAfterTwoHundredAndFiftyFive) {
    Machine machine = AmdBoard(7);
    machine.Reports(ThermalController{});
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(AdapterLog(machine).back(),
              "[OD7Helper::InitAdapter()] ADL2_Overdrive5_ThermalDevices_Enum ... num of thermal controller: 255");
    EXPECT_EQ(machine.CountOf(kThermal), 255);
    EXPECT_EQ(TakeAmdTraffic(machine).back(), "Overdrive5_ThermalDevices_Enum 5 #254");
}

TEST(OverdriveNThermal, EnumerationWithoutEndOfOtherDomainsKeepsNone) {
    Machine machine = AmdBoard(7);
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(AdapterLog(machine).back(),
              "[OD7Helper::InitAdapter()] ADL2_Overdrive5_ThermalDevices_Enum ... num of thermal controller: 0");
    EXPECT_EQ(machine.CountOf(kThermal), 255);
}

TEST(OverdriveNInit, NewInitialisationReplacesTheAdapter) {
    Machine machine = OverdriveNBoard().Reports(Temperature{.millidegrees = 65500}).Started();
    machine.Api().FetchHwmValues();
    ASSERT_TRUE(machine.Api().GetHwmValue(GPUTUNE_HWM_GPU_TEMPERATURE).Valid);
    machine.Result(kCapabilities, -1);

    ASSERT_TRUE(machine.Init());

    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_FALSE(machine.Api().GetHwmValue(GPUTUNE_HWM_GPU_TEMPERATURE).Valid);

    machine.Result(kCapabilities, 0);
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
}

// A driver that goes by what the board has and not by the table's head; the sanitizer sees where it writes.
TEST(OverdriveNInit, DriverThatWritesMoreLevelsThanAskedHarmsNothing) {
    Machine machine = OverdriveNBoard();
    std::vector<Level> const eight(8, {30000, 750});
    machine.Reports(Capabilities{.levels = 1});
    machine.Reports(EngineLevels{.levels = eight}).Reports(MemoryLevels{.levels = eight});

    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    Lines const log = machine.TakeLog();
    EXPECT_EQ(std::count(log.begin(), log.end(), "[OD7Helper::InitAdapter()] m_MaxGpuLevels ... 1"), 1);
    EXPECT_EQ(machine.Asked<MemoryLevels>().size, 12 + 16);
}

}  // namespace
}  // namespace gputune::test
