// Overdrive8: start-up, the two readers of the setting tables, the board's identity.
#include <algorithm>
#include <array>
#include <climits>
#include <ostream>

#include "overdrive8_traffic.h"

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer's own; its headers are not installed with every compiler.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onAllocation)(void const volatile*, std::size_t),
                                                         void (*onRelease)(void const volatile*));
#endif

namespace gputune::test {
namespace {

std::string const kInitX2 = "ADL2_Overdrive8_Init_SettingX2_Get";
std::string const kInitOlder = "ADL2_Overdrive8_Init_Setting_Get";
std::string const kCurrentX2 = "ADL2_Overdrive8_Current_SettingX2_Get";
std::string const kCurrentOlder = "ADL2_Overdrive8_Current_Setting_Get";
std::string const kAdapters = "ADL2_Adapter_AdapterInfoX3_Get";
std::string const kPmLog = "ADL2_New_QueryPMLogData_Get";

Lines const kInitFailed = {"[OD8Helper::GetInitSetting()] ... ADL2_Overdrive8_Init_SettingX2_Get is failed"};
Lines const kSensors = {">>> Supported PMLOG sensor type", "1", "2", "8", "14", "19", "27", "45",
                        "<<< Supported PMLOG sensor type"};

Lines Unsupported(Lines const& flags) {
    return Lines{">>> Unsupported feature flags"} + flags + Lines{"<<< Unsupported feature flags"};
}
Lines const kAllFlags = {"1",    "2",    "4",    "8",    "16",    "32",    "64",    "128",    "256",   "512",
                         "1024", "2048", "4096", "8192", "16384", "32768", "65536", "131072", "262144"};

// What the adapter itself logged at its start.
Lines StartLog(Machine& machine) {
    Lines log = machine.TakeLog();
    for (std::size_t line = 0; line < log.size(); ++line) {
        if (log[line] == "[GetAmdApiType(ADL&)] ... OD8") {
            return {log.begin() + static_cast<std::ptrdiff_t>(line) + 1, log.end()};
        }
    }
    ADD_FAILURE() << "no Overdrive8 board was found";
    return {};
}

// The defaults of the 39 captured ranges, read off the request that resets them all.
std::vector<int> CapturedDefaults(Machine& machine) {
    EXPECT_TRUE(machine.Api().SetPerformanceDefault());
    SettingRequest const request = machine.Sent<SettingRequest>();
    std::vector<int> defaults;
    for (SettingRequest::Setting const& sent : request.settings) {
        defaults.push_back(sent.value);
    }
    machine.TakeCalls();
    machine.TakeLog();
    return defaults;
}

// The board's defaults as far as `count` settings go, then zeros.
std::vector<int> FirstDefaults(std::size_t count) {
    std::vector<int> defaults = {5,   15,  25,  35,  45,  55,  65,  75,  85,  0,   105, 115, 125,
                                 135, 145, 155, 165, 175, 185, 195, 205, 215, 225, 235, 245, 255,
                                 265, 275, 285, 295, 305, 315, 325, 335, 345, 355, 365, 375, 385};
    for (std::size_t k = count; k < defaults.size(); ++k) {
        defaults[k] = 0;
    }
    return defaults;
}

TEST(Overdrive8Start, ReadsRangesThenSensors) {
    Machine machine = Overdrive8Board(kLimits | kPower | kFanCurve);
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.Api().GetVendorInfo(), (std::uint64_t{2} << 32) + 1);
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 5);
    EXPECT_EQ(StartLog(machine), Unsupported({"2", "4", "16", "32", "64", "128", "256", "512", "1024", "2048", "4096",
                                              "16384", "32768", "65536", "131072", "262144"}) +
                                     kSensors);
    Lines const traffic = TakeAmdTraffic(machine);
    ASSERT_GE(traffic.size(), 2U);
    EXPECT_EQ(Lines(traffic.end() - 2, traffic.end()), Lines({"Init_SettingX2_Get 5", "New_QueryPMLogData_Get 5"}));
    EXPECT_EQ(CapturedDefaults(machine), FirstDefaults(39));
}

TEST(Overdrive8Start, ListsTheNineteenFlagsThatAreNotThere) {
    Lines allButFirst = kAllFlags;
    allButFirst.erase(allButFirst.begin());
    Lines allButLast = kAllFlags;
    allButLast.pop_back();
    struct Row {
        int capabilities;
        Lines flags;
    };
    Row const rows[] = {
        {0, kAllFlags}, {1, allButFirst}, {0x40000, allButLast}, {0x80000, kAllFlags},
        {0x7FFFF, {}},  {-1, {}},         {INT_MIN, kAllFlags},  {0x7FFFF & ~0x2200, {"512", "8192"}},
    };
    Machine machine = Overdrive8Board(0);
    for (Row const& row : rows) {
        SCOPED_TRACE(row.capabilities);
        machine.Reports(FeatureFlags{row.capabilities});
        ASSERT_TRUE(machine.Init());
        EXPECT_EQ(StartLog(machine), Unsupported(row.flags) + kSensors);
    }
}

TEST(Overdrive8Start, ListsTheSensorsUpToFortyFive) {
    struct Row {
        std::vector<int> supported;
        int mark;
        Lines listed;
    };
    Row const rows[] = {
        {{}, 1, {}},
        {{0, 46, 255}, 1, {}},
        {{0, 1, 45, 46}, 1, {"1", "45"}},
        {{3, 44}, -1, {"3", "44"}},
        {{30, 20}, 2, {"20", "30"}},
    };
    Machine machine = Overdrive8Board(0x7FFFF);
    for (Row const& row : rows) {
        SensorLog log;
        for (int const id : row.supported) {
            log.sensors[id].supported = row.mark;
        }
        machine.Reports(log);
        ASSERT_TRUE(machine.Init());
        EXPECT_EQ(StartLog(machine), Unsupported({}) + Lines{">>> Supported PMLOG sensor type"} + row.listed +
                                         Lines{"<<< Supported PMLOG sensor type"});
    }
    for (int const result : {-1, 1}) {
        machine.Result(kPmLog, result);
        ASSERT_TRUE(machine.Init());
        EXPECT_EQ(
            StartLog(machine),
            Unsupported({}) + Lines{"[OD8Helper::PrintLogDataCapabilities()] ... ADL2_New_QueryPMLogData_Get failed"});
        EXPECT_TRUE(machine.Api().IsInitOk());
    }
}

TEST(Overdrive8Ranges, AreCopiedAsFarAsCountAndListReach) {
    // Bytes, as lists break off anywhere.
    Bytes const list = BytesOf(Overdrive8Ranges());
    std::vector<SettingRange> longer = Overdrive8Ranges();
    for (int setting = 39; setting < 45; ++setting) {
        longer.push_back({setting, 7777, 7777, 7777});
    }
    struct Row {
        std::string name;
        int result;
        int count;
        Bytes list;  // empty: none is handed out
        bool success;
        std::size_t copied;
    };
    Row const rows[] = {
        {"39", 0, 39, list, true, 39},
        {"45", 0, 45, BytesOf(longer), true, 39},
        {"45 of which 39 are there", 0, 45, list, true, 39},
        {"INT_MAX", 0, INT_MAX, list, true, 39},
        {"12", 0, 12, list, true, 12},
        {"1", 0, 1, list, true, 1},
        {"39 of which 10 are there", 0, 39, First(list, 10 * 16), true, 10},
        {"39 of which 10 and a piece are there", 0, 39, First(list, 10 * 16 + 7), true, 10},
        {"INT_MAX of which 38 are there", 0, INT_MAX, First(list, 38 * 16), true, 38},
        {"0", 0, 0, list, true, 0},
        {"0 without a list", 0, 0, {}, true, 0},
        {"-1", 0, -1, list, true, 0},
        {"INT_MIN", 0, INT_MIN, list, true, 0},
        {"-1 without a list", 0, -1, {}, true, 0},
        {"39 without a list", 0, 39, {}, false, 0},
        {"INT_MAX without a list", 0, INT_MAX, {}, false, 0},
        {"a failure", -1, 39, {}, false, 0},
        {"a failure with a list", -1, 39, list, false, 0},
        {"a warning", 1, 39, list, false, 0},
        {"a failure with a negative count", -1, -1, list, false, 0},
    };
    Machine machine = AmdBoard(8);
    machine.Reports(BoardSensors());
    bool first = true;
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        if (!first) {
            machine.Then(kInitX2);
        }
        first = false;
        OrderRanges(machine.Result(kInitX2, row.result), 0x7FFFF, row.count, row.list);
        ASSERT_TRUE(machine.Init());
        EXPECT_TRUE(machine.Api().IsInitOk());
        EXPECT_EQ(StartLog(machine),
                  row.success ? Unsupported({}) + kSensors : kInitFailed + Unsupported(kAllFlags) + kSensors);
        EXPECT_EQ(CapturedDefaults(machine), FirstDefaults(row.copied));
    }
}

TEST(Overdrive8Ranges, FailingAreNotAskedForInTheOlderWay) {
    Machine machine = Overdrive8Board(0x7FFFF);
    machine.Result(kInitX2, -1).Result(kCurrentX2, -1);
    ASSERT_TRUE(machine.Init());
    machine.Api().GetPowerLimitSetting();
    EXPECT_EQ(machine.CountOf(kInitX2), 1);
    EXPECT_EQ(machine.CountOf(kCurrentX2), 1);
    EXPECT_EQ(machine.CountOf(kInitOlder), 0);
    EXPECT_EQ(machine.CountOf(kCurrentOlder), 0);
}

// After a failure at the start the board has no features and no ranges, for good.
TEST(Overdrive8Ranges, FailingLeaveABoardOfZeros) {
    Machine machine = Overdrive8Board(0x7FFFF).Result(kInitX2, -1).Started();
    machine.Result(kInitX2, 0);
    EXPECT_TRUE(machine.Api().IsInitOk());

    FanTablePoint const table[5] = {};
    EXPECT_FALSE(machine.Api().SetFanSpeed(50));
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(table, 5));
    EXPECT_TRUE(machine.Api().SetFanSpeed(-1));
    EXPECT_FALSE(machine.Api().SetPowerLimit(75, 10));
    EXPECT_FALSE(machine.Api().SetPowerLimitDefault());
    EXPECT_FALSE(machine.Api().SetPerformanceUser(1400, 0, 900, 0));
    EXPECT_EQ(machine.TakeLog(), Lines({
                                     "[OD8Helper::SetFanSpeed(int)] ... Begin",
                                     "[OD8Helper::SetFanSpeed(int)] ... ADL_OD8_FAN_CURVE not supported",
                                     "[OD8Helper::SetFanSpeedTable(arr,int)] ... Begin",
                                     "[OD8Helper::SetFanSpeedTable(arr,int)] ... fan curve not supported",
                                     "[OD8Helper::SetFanSpeed(int)] ... Begin",
                                     "[OD8Helper::SetFanToDefault()] ... Success",
                                     "[OD8Helper::SetPowerLimit(int,int)] ... Power limit not supported",
                                     "[OD8Helper::SetPowerLimitDefault()] ... power limit not supported",
                                     "[OD8Helper::SetPerformanceUser(int,int,int,int)] ... ADL_OD8_GFXCLK_LIMITS & "
                                     "ADL_OD8_GFXCLK_CURVE not supported",
                                 }));
    EXPECT_EQ(CapturedDefaults(machine), FirstDefaults(0));
    EXPECT_FALSE(machine.Api().GetGpuClockSetting().Valid);
    EXPECT_FALSE(machine.Api().GetMemClockSetting().Valid);
    PowerLimitSetting const power = machine.Api().GetPowerLimitSetting();
    EXPECT_TRUE(power.Valid);
    EXPECT_EQ(power.Max, 0);
    FanSetting const fan = machine.Api().GetFanSetting();
    EXPECT_EQ(fan.PointCount, 1);
    EXPECT_EQ(fan.Points[0].MaxSpeed, 0);
    EXPECT_EQ(fan.Points[0].CurrentSpeed, 103);
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.Api().GetHwmValue(2).Value, 61.0);
}

TEST(Overdrive8Ranges, OfAnOlderLibraryAreTakenAsTheyCome) {
    Machine machine = AmdBoard(8);
    machine.Hide(kInitX2);
    // A count that the library makes up does not matter.
    OrderOlderRanges(machine, INT_MAX, kPower | kLimits, Overdrive8Ranges());
    machine.Reports(BoardSensors());
    ASSERT_TRUE(machine.Init());
    Lines const log = StartLog(machine);
    EXPECT_EQ(log.front(), ">>> Unsupported feature flags");
    EXPECT_EQ(log.size(), 2 + 17 + kSensors.size());
    EXPECT_EQ(DescribeAmdCall(machine.LastCall(kInitOlder)), "Init_Setting_Get 5");
    EXPECT_EQ(CapturedDefaults(machine), FirstDefaults(39));

    // What a failing call has written does not count: a board of zeros.
    OrderOlderRanges(machine.Then(kInitOlder).Result(kInitOlder, -1), INT_MAX, kPower | kLimits,
                     First(Overdrive8Ranges(), 10));
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(StartLog(machine).front(),
              "[OD8Helper::GetInitSetting()] ... ADL2_Overdrive8_Init_Setting_Get is failed");
    EXPECT_EQ(DescribeAmdCall(machine.LastCall(kInitOlder)), "Init_Setting_Get 5");
    EXPECT_EQ(CapturedDefaults(machine), FirstDefaults(0));
    EXPECT_FALSE(machine.Api().SetPowerLimit(75, 10));
    EXPECT_EQ(machine.Api().GetPowerLimitSetting().Max, 0);
}

TEST(Overdrive8Ranges, WithoutAnyEntryPointAreZerosAndNoFailure) {
    Machine machine = Overdrive8Board(-1);
    machine.Hide(kInitX2).Hide(kInitOlder).Hide(kCurrentX2).Hide(kCurrentOlder);
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(StartLog(machine), Unsupported(kAllFlags) + kSensors);
    EXPECT_EQ(CapturedDefaults(machine), FirstDefaults(0));
    PowerLimitSetting const power = machine.Api().GetPowerLimitSetting();
    EXPECT_EQ(power.Max, 0);
    EXPECT_EQ(power.Current, 0);
    EXPECT_EQ(machine.TakeLog(), Lines());
    EXPECT_EQ(machine.TakeCallNames(), Lines());
}

TEST(Overdrive8Current, IsCopiedAsFarAsCountAndListReach) {
    // Bytes, as lists break off anywhere.
    Bytes const list = BytesOf(Overdrive8Current());
    std::vector<int> longer = Overdrive8Current();
    longer.insert(longer.end(), {7, 7, 7, 7, 7, 7});
    // Seen through: setting 9 (power), 8 (memory clock), 10 and 12 (fan), 0 and 37 (GPU clock).
    std::vector<int> const none(6);
    std::vector<int> const unknown(6, -1);
    struct Row {
        std::string name;
        int result;
        int count;
        Bytes list;  // empty: none is handed out
        bool success;
        std::vector<int> seen;
    };
    std::vector<int> const all = {0, 83, 103, 123, 3, 373};
    Row const rows[] = {
        {"39", 0, 39, list, true, all},
        {"45", 0, 45, BytesOf(longer), true, all},
        {"INT_MAX", 0, INT_MAX, list, true, all},
        {"38", 0, 38, list, true, all},
        {"37", 0, 37, list, true, {0, 83, 103, 123, 3, 0}},
        {"11", 0, 11, list, true, {0, 83, 103, 0, 3, 0}},
        {"39 of which 12 are there", 0, 39, First(list, 12 * 4), true, {0, 83, 103, 0, 3, 0}},
        {"39 of which 12 and a piece are there", 0, 39, First(list, 12 * 4 + 3), true, {0, 83, 103, 0, 3, 0}},
        {"1", 0, 1, list, true, {0, 0, 0, 0, 3, 0}},
        {"0", 0, 0, list, true, none},
        {"0 without a list", 0, 0, {}, true, none},
        {"-1", 0, -1, list, true, none},
        {"INT_MIN without a list", 0, INT_MIN, {}, true, none},
        {"39 without a list", 0, 39, {}, false, unknown},
        {"a failure", -1, 39, {}, false, unknown},
        {"a failure with a list", -1, 39, list, false, unknown},
        {"a warning", 1, 39, list, false, unknown},
    };
    Machine machine = Overdrive8Board(kLimits | kMemory).Started();
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        OrderCurrent(BeginCurrent(machine).Result(kCurrentX2, row.result), row.count, row.list);
        PowerLimitSetting const power = machine.Api().GetPowerLimitSetting();
        EXPECT_EQ(machine.TakeLog(), row.success ? Lines() : kCurrentFailed);
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({"Current_SettingX2_Get 5"}));
        FanPoint const fan = machine.Api().GetFanSetting().Points[0];
        ClockSetting const gpu = machine.Api().GetGpuClockSetting();
        EXPECT_EQ((std::vector<int>{power.Current, machine.Api().GetMemClockSetting().CurrentClock, fan.CurrentSpeed,
                                    fan.CurrentTemperature, gpu.CurrentClock, gpu.CurrentVoltage}),
                  row.seen);
    }
}

TEST(Overdrive8Current, OfAnOlderLibraryIsTakenAsItComes) {
    Machine machine = Overdrive8Board(kLimits);
    machine.Hide(kCurrentX2);
    OrderOlderCurrent(machine, -1, With(Overdrive8Current(), {{setting::kPower, 4}}));
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_EQ(machine.Api().GetGpuClockSetting().CurrentVoltage, 373);
    EXPECT_EQ(DescribeAmdCall(machine.LastCall(kCurrentOlder)), "Current_Setting_Get 5");
    EXPECT_EQ(machine.Api().GetPowerLimitSetting().Current, 4);
    EXPECT_EQ(machine.TakeLog(), Lines());

    // What a failing call has written does not count.
    OrderOlderCurrent(machine.Then(kCurrentOlder).Result(kCurrentOlder, 1), 39, std::vector<int>(39, 11));
    EXPECT_EQ(machine.Api().GetPowerLimitSetting().Current, -1);
    EXPECT_EQ(machine.TakeLog(),
              Lines({"[OD8Helper::GetCurrentSetting()] ... ADL2_Overdrive8_Current_Setting_Get is failed"}));
}

TEST(Overdrive8Selection, TurnsEveryLaterCallToTheOtherAdapterAndKeepsTheRanges) {
    Machine machine = BoardListedAs({{.index = 2, .udid = "A&SUBSYS_00000001&", .bus = 1, .name = "First"},
                                     {.index = 7, .udid = "A&SUBSYS_00000002&", .bus = 9, .name = "Second"}});
    OrderRanges(machine, kFanCurve | kPower | kLimits | kMemory, Overdrive8Ranges());
    OrderCurrent(machine, With(Overdrive8Current(), {{setting::kPower, 4}}));
    machine.Reports(BoardSensors());
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 2);
    EXPECT_FALSE(machine.Api().SetActiveAdapterIndex(3));
    EXPECT_TRUE(machine.Api().SetActiveAdapterIndex(7));
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 7);
    EXPECT_EQ(machine.TakeLog(), Entries("[ADL::SetActiveAdapterIndex()]",
                                         {"specified adapter index not found", "adapter index selected"}));
    EXPECT_EQ(machine.TakeCallNames(), Lines());

    machine.Api().FetchHwmValues();
    EXPECT_TRUE(machine.Api().SetFanSpeed(-1));
    EXPECT_TRUE(machine.Api().SetPowerLimit(75, 10));
    EXPECT_TRUE(machine.Api().SetPowerLimitDefault());
    EXPECT_TRUE(machine.Api().SetPerformanceUser(1400, 0, 900, 0));
    EXPECT_TRUE(machine.Api().SetPerformanceDefault());
    EXPECT_EQ(machine.Api().GetMemClockSetting().MaxClock, 89);
    machine.Api().GetFrameRate();
    std::vector<Call> const calls = machine.TakeCalls();
    EXPECT_EQ(calls.size(), 16U);
    for (Call const& call : calls) {
        EXPECT_EQ(AdapterOf(call), 7) << call.entryPoint;
        EXPECT_NE(call.entryPoint, kInitX2);
    }
    // The identity is the first adapter's whichever is selected.
    EXPECT_EQ(machine.Api().GetVGAInfo().SubsystemId, 1U);
    EXPECT_STREQ(machine.Api().GetVGAInfo().AdapterName, "First");
}

#if defined(__SANITIZE_ADDRESS__)
// A block of this size is one that the AMD library asked for. The leak check at the end of the process does not see
// those that are kept: the library under test remembers every block it hands out.
constexpr std::size_t kMarked = 100003;
std::array<void const volatile*, 64> g_marked;

void NoteAllocation(void const volatile* block, std::size_t size) {
    if (size == kMarked) {
        *std::find(g_marked.begin(), g_marked.end() - 1, nullptr) = block;
    }
}
void NoteRelease(void const volatile* block) {
    std::replace(g_marked.begin(), g_marked.end(), block, static_cast<void const volatile*>(nullptr));
}
std::ptrdiff_t Held() {
    return std::count_if(g_marked.begin(), g_marked.end(), [](auto* block) { return block != nullptr; });
}

TEST(Overdrive8Lists, AreReleasedOnEveryPath) {
    Machine machine = AmdBoard(8);
    Bytes const list(kMarked);
    struct Row {
        int result;
        int count;
    };
    for (Row const& row : {Row{0, 39}, Row{0, 0}, Row{0, -1}, Row{0, INT_MAX}, Row{-1, 39}, Row{1, 0}}) {
        SCOPED_TRACE(std::to_string(row.result) + ", " + std::to_string(row.count));
        ASSERT_TRUE(machine.Init());
        machine.Api().GetPowerLimitSetting();
        machine.Api().GetFrameRate();
        machine.Then(kInitX2).Then(kCurrentX2).Then(kAdapters);
        OrderRanges(machine.Result(kInitX2, row.result), 0, row.count, list);
        OrderCurrent(machine.Result(kCurrentX2, row.result), row.count, list);
        OrderDisplays(machine.Result(kAdapters, row.result), row.count, list);
        static int const hooks = __sanitizer_install_malloc_and_free_hooks(NoteAllocation, NoteRelease);
        ASSERT_NE(hooks, 0);
        g_marked = {};
        std::vector<unsigned char> const seen(kMarked);
        EXPECT_EQ(Held(), 1);  // the hooks work
        ASSERT_TRUE(machine.Init());
        EXPECT_EQ(Held(), 1);
        machine.Api().GetPowerLimitSetting();
        EXPECT_EQ(Held(), 1);
        machine.Api().GetFrameRate();
        EXPECT_EQ(Held(), 1);
        EXPECT_EQ(machine.CountOf(kInitX2) + machine.CountOf(kCurrentX2) + machine.CountOf(kAdapters), 6);
        machine.TakeCalls();
    }
}
#endif

// The identity is read from the list that the library opened with, so each takes a machine of its own.
struct Identity {
    std::string name;
    std::string udid;
    std::uint32_t subsystem;
    Lines log;  // behind the UDID

    friend void PrintTo(Identity const& identity, std::ostream* out) { *out << identity.name; }
};

class Overdrive8Identity : public testing::TestWithParam<Identity> {};

TEST_P(Overdrive8Identity, FollowsTheDeviceIdentifier) {
    std::string const& udid = GetParam().udid;
    Machine machine = BoardListedAs({{.udid = udid, .name = "Radeon RX 6800"}});  // 256 characters: no terminator
    ASSERT_TRUE(machine.InitAndForget());

    VgaInfo const info = machine.Api().GetVGAInfo();
    EXPECT_EQ(info.SubsystemId, GetParam().subsystem);
    EXPECT_STREQ(info.AdapterName, "Radeon RX 6800");
    EXPECT_EQ(info.BusNumber, 3);
    Lines expected = Lines{"[OD8Helper::GetVGASubDeviceID()] UDID ... " + udid} + GetParam().log;
    Lines const identity = {"[OD8Helper::GetAdapterName()] adapter name ... Radeon RX 6800",
                            "[OD8Helper::GetBusNumber()] bus number ... 3"};
    // An error of the conversion reaches the boundary behind the fields that can be filled.
    bool const error = expected.back().starts_with("[GetVGAInfo()]");
    expected.insert(error ? expected.end() - 1 : expected.end(), identity.begin(), identity.end());
    EXPECT_EQ(machine.TakeLog(), expected);
    EXPECT_EQ(machine.TakeCallNames(), Lines());
}

Lines Hwid(std::string const& hwid) {
    return {"[OD8Helper::GetVGASubDeviceID()] hwid ... " + hwid};
}
Lines const kUnknown = {"[OD8Helper::GetVGASubDeviceID()] ... unknown hwid"};

INSTANTIATE_TEST_SUITE_P(
    Boards, Overdrive8Identity,
    testing::Values(Identity{"Common", "PCI_VEN_1002&DEV_73BF&SUBSYS_0B361002&REV_C1_6&1A2B", 0x0B361002,
                             Hwid("0x0B361002")},
                    Identity{"AtTheEnd", "PCI&SUBSYS_7fffFFFF", 0x7FFFFFFF, Hwid("0x7fffFFFF")},
                    Identity{"SevenDigits", "PCI&SUBSYS_0B36100", 0, kUnknown},
                    Identity{"NoMarker", "PCI_VEN_1002&DEV_73BF", 0, kUnknown}, Identity{"Empty", "", 0, kUnknown},
                    Identity{"MarkerInSmallLetters", "PCI&subsys_0B361002", 0, kUnknown},
                    Identity{"FirstMarkerCounts", "A&SUBSYS_00000011&SUBSYS_00000022", 0x11, Hwid("0x00000011")},
                    Identity{"MarkerBehindTheMarker", "A&SUBSYS_&SUBSYS_00000022", 0,
                             Hwid("0x&SUBSYS_") + Lines{"[GetVGAInfo()] ... invalid stol argument"}},
                    Identity{"DigitsEndEarly", "A&SUBSYS_1F&REV_E7", 0x1F, Hwid("0x1F&REV_E")},
                    Identity{"AboveTheSignedRange", "A&SUBSYS_80000000", 0,
                             Hwid("0x80000000") + Lines{"[GetVGAInfo()] ... stol argument out of range"}},
                    Identity{"NoDigits", "A&SUBSYS_WXYZWXYZ", 0,
                             Hwid("0xWXYZWXYZ") + Lines{"[GetVGAInfo()] ... invalid stol argument"}},
                    Identity{"Unterminated", std::string(240, 'x') + "&SUBSYS_0000001A", 0x1A, Hwid("0x0000001A")},
                    Identity{"UnterminatedAndCutOff", std::string(241, 'x') + "&SUBSYS_0000001", 0, kUnknown}),
    [](testing::TestParamInfo<Identity> const& row) { return row.param.name; });

TEST(Overdrive8Name, IsBoundToItsField) {
    std::string const full(256, 'n');
    Machine machine = BoardListedAs({{.bus = -1, .name = full, .displayName = "behind"}}).Started();
    VgaInfo const info = machine.Api().GetVGAInfo();
    EXPECT_EQ(std::string(info.AdapterName), full.substr(1));
    EXPECT_EQ(info.BusNumber, -1);
    EXPECT_EQ(machine.TakeLog(),
              Lines({"[OD8Helper::GetVGASubDeviceID()] UDID ... ", "[OD8Helper::GetVGASubDeviceID()] ... unknown hwid",
                     "[OD8Helper::GetAdapterName()] adapter name ... " + full,
                     "[OD8Helper::GetBusNumber()] bus number ... -1"}));
}

}  // namespace
}  // namespace gputune::test
