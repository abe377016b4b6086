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
constexpr int kHead = 12;
constexpr std::uint64_t kAmdOverdriveN = (3ULL << 32) | 1;

// What followed the choice of the generation.
Lines AdapterLog(Machine& machine) {
    Lines const lines = machine.TakeLog();
    auto const chosen = std::find(lines.begin(), lines.end(), "[GetAmdApiType(ADL&)] ... OD7");
    return chosen == lines.end() ? Lines{"generation not chosen"} : Lines(chosen + 1, lines.end());
}

std::vector<Call> AdapterCalls(Machine& machine) {
    std::vector<Call> calls = machine.TakeCalls();
    auto const chosen = std::find_if(calls.begin(), calls.end(),
                                     [](Call const& call) { return call.entryPoint == "ADL2_Overdrive_Caps"; });
    return chosen == calls.end() ? std::vector<Call>{} : std::vector<Call>(chosen + 1, calls.end());
}

void Levels(Machine& machine, int count) {
    machine.Write(kCapabilities, 2, Ints({count}));
}

// Controllers with these thermal domains, then "no more data".
void Thermal(Machine& machine, std::vector<int> const& domains) {
    for (int const domain : domains) {
        machine.Result(kThermal, 0).Write(kThermal, 3, Ints({16, domain, 0, 0})).Then(kThermal);
    }
    machine.Result(kThermal, -100);
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

    std::vector<Call> const calls = AdapterCalls(machine);
    ASSERT_EQ(calls.size(), 5U);
    for (Call const& call : calls) {
        EXPECT_EQ(call.args[0], kContext);
        EXPECT_EQ(call.args[1], 5);
    }
    EXPECT_EQ(calls[0].entryPoint, kCapabilities);
    EXPECT_EQ(calls[0].record, Bytes(208));

    // 12 + 3 x 16 bytes, default values, 3 levels, everything behind the head zero.
    Bytes const table = Patched(Bytes(60), 0, Ints({60, 1, 3}));
    EXPECT_EQ(calls[1].entryPoint, kEngine);
    EXPECT_EQ(calls[1].record, table);
    EXPECT_EQ(calls[2].entryPoint, kMemory);
    EXPECT_EQ(calls[2].record, table);

    EXPECT_EQ(calls[3].entryPoint, kThermal);
    EXPECT_EQ(calls[3].args[2], 0);
    EXPECT_EQ(calls[3].record, Ints({16, 0, 0, 0}));
    EXPECT_EQ(calls[4].entryPoint, kThermal);
    EXPECT_EQ(calls[4].args[2], 1);
    EXPECT_EQ(calls[4].record, Ints({16, 0, 0, 0}));
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
        machine.Result(kCapabilities, 0).Result(kEngine, 0).Result(kMemory, 0);
        Levels(machine, 3);
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
    machine.Result(kThermal, -100);
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(AdapterLog(machine), Log(0, 0, 0));
    EXPECT_EQ(machine.LastCall(kEngine).record, Ints({12, 1, 0}));
    EXPECT_EQ(machine.LastCall(kMemory).record, Ints({12, 1, 0}));
}

TEST(OverdriveNInit, LargestLevelCountGetsItsTables) {
    Machine machine = OverdriveNBoard();
    Levels(machine, 65536);
    constexpr int kLast = kHead + 65535 * 16;
    machine.Write(kEngine, 2, Ints({1, 2, 3, 4}), kLast);  // the last level's four fields
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(AdapterLog(machine), Log(3, 3, 1));
    Call const read = machine.LastCall(kEngine);
    EXPECT_EQ(read.Int(0), 1048588);  // 12 + 65,536 x 16
    EXPECT_EQ(read.Int(8), 65536);
}

TEST(OverdriveNInit, FirstLevelWithoutClockEndsTheCount) {
    Machine machine = OverdriveNBoard();
    Levels(machine, 5);
    machine.Write(kEngine, 2, test::Levels({{30000, 750}, {90000, 850}, {0, 1150}, {136600, 1150}, {140000, 1200}}),
                  kHead);
    machine.Write(kMemory, 2, test::Levels({{0, 750}, {100000, 800}, {200000, 950}, {0, 0}, {0, 0}}), kHead);
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(AdapterLog(machine), Log(2, 0, 1));
}

TEST(OverdriveNInit, LevelsCountByTheirClockAlone) {
    Machine machine = OverdriveNBoard();
    // Clock, voltage, enabled, control: disabled, without voltage, and with a negative clock.
    machine.Write(kEngine, 2, Ints({30000, 750, 0, 0, 90000, 0, 0, 0, -1, 1150, 0, 0}), kHead);
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(AdapterLog(machine), Log(3, 3, 1));
}

TEST(OverdriveNInit, CountInTheDriversHeadIsNotTrusted) {
    Machine machine = OverdriveNBoard();
    for (int const head : {INT_MAX, 0x10000000, 0, -1, INT_MIN}) {
        SCOPED_TRACE(head);
        machine.Write(kEngine, 2, Ints({head}), 8).Write(kMemory, 2, Ints({head}), 8);
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
    Thermal(machine, {2, 1, 0, -1});
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(AdapterLog(machine), Log(3, 3, 2));
    EXPECT_EQ(machine.LastCall(kThermal).args[2], 5);
}

TEST(OverdriveNThermal, OtherResultCodesDoNotMatter) {
    Machine machine = AmdBoard(7);
    machine.Result(kThermal, -1).Write(kThermal, 3, Ints({16, 1, 0, 0}));  // failed, but says GPU: kept
    machine.Then(kThermal).Result(kThermal, -3);                           // failed and says nothing: dropped
    machine.Then(kThermal).Result(kThermal, 1).Write(kThermal, 3, Ints({16, 1, 0, 0}));     // a warning: kept
    machine.Then(kThermal).Result(kThermal, -100).Write(kThermal, 3, Ints({16, 1, 0, 0}));  // the end, whatever it says
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(AdapterLog(machine), Log(0, 0, 2));
    EXPECT_EQ(machine.CountOf(kThermal), 4);
}

TEST(OverdriveNThermal, EnumerationWithoutEndStopsAfterTwoHundredAndFiftyFive) {
    Machine machine = AmdBoard(7);
    machine.Write(kThermal, 3, Ints({16, 1, 0, 0}));
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(AdapterLog(machine).back(),
              "[OD7Helper::InitAdapter()] ADL2_Overdrive5_ThermalDevices_Enum ... num of thermal controller: 255");
    EXPECT_EQ(machine.CountOf(kThermal), 255);
    EXPECT_EQ(machine.LastCall(kThermal).args[2], 254);
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
    Machine machine = OverdriveNBoard();
    machine.Write("ADL2_OverdriveN_Temperature_Get", 3, Ints({65500}));
    ASSERT_TRUE(machine.InitAndForget());
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
    std::vector<int> capabilities = OverdriveNCapabilities();
    capabilities[capability::kLevels] = 1;
    machine.Write("ADL2_OverdriveN_CapabilitiesX2_Get", 2, Ints(capabilities));
    Bytes const eight = test::Levels(std::vector<std::pair<int, int>>(8, {30000, 750}));
    machine.Write("ADL2_OverdriveN_SystemClocksX2_Get", 2, eight, 12);
    machine.Write("ADL2_OverdriveN_MemoryClocksX2_Get", 2, eight, 12);

    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    Lines const log = machine.TakeLog();
    EXPECT_EQ(std::count(log.begin(), log.end(), "[OD7Helper::InitAdapter()] m_MaxGpuLevels ... 1"), 1);
    EXPECT_EQ(machine.LastCall("ADL2_OverdriveN_MemoryClocksX2_Get").Int(0), 12 + 16);
}

}  // namespace
}  // namespace gputune::test
