// OverdriveN: user clocks and voltages, the default clocks, and the clock settings' read-back.
#include <gtest/gtest.h>

#include <climits>

#include "boards.h"

namespace gputune::test {
namespace {

constexpr char const* kEngineGet = "ADL2_OverdriveN_SystemClocksX2_Get";
constexpr char const* kEngineSet = "ADL2_OverdriveN_SystemClocksX2_Set";
constexpr char const* kMemoryGet = "ADL2_OverdriveN_MemoryClocksX2_Get";
constexpr char const* kMemorySet = "ADL2_OverdriveN_MemoryClocksX2_Set";

// Clock, voltage, enabled and control of each current level; none equal to a default.
EngineLevels const kCurrentEngine = {.levels = {{31000, 760, 7, 71}, {91000, 860, 8, 81}, {130099, 1100, 9, 91}}};
MemoryLevels const kCurrentMemory = {.levels = {{32000, 770, 4, 41}, {101000, 810, 5, 51}, {190000, 920, 6, 61}}};

EngineLevels const kDefaultEngine = {.mode = kModeDefault, .levels = {{30000, 750}, {90000, 850}, {136600, 1150}}};
MemoryLevels const kDefaultMemory = {.mode = kModeDefault, .levels = {{30000, 750}, {100000, 800}, {200000, 950}}};

// The current levels, with this clock and voltage for all but the lowest. Enabled is 3 for the engine, 1 for the
// memory.
EngineLevels EngineAt(int clock, int voltage) {
    return {.mode = kModeManual, .levels = {{31000, 760, 7, 71}, {clock, voltage, 3, 81}, {clock, voltage, 3, 91}}};
}
MemoryLevels MemoryAt(int clock, int voltage) {
    return {.mode = kModeManual, .levels = {{32000, 770, 4, 41}, {clock, voltage, 1, 51}, {clock, voltage, 1, 61}}};
}

constexpr char const* kEngineIsRead = "OverdriveN_SystemClocksX2_Get 5: mode 0, 3 levels";
constexpr char const* kEngineIsWritten = "OverdriveN_SystemClocksX2_Set 5";
constexpr char const* kMemoryIsRead = "OverdriveN_MemoryClocksX2_Get 5: mode 0, 3 levels";
constexpr char const* kMemoryIsWritten = "OverdriveN_MemoryClocksX2_Set 5";

// OverdriveNBoard, initialised with its defaults. From here on it reads the current levels above.
Machine RunningBoard() {
    Machine machine = OverdriveNBoard().Started();
    machine.Reports(kCurrentEngine).Reports(kCurrentMemory);
    return machine;
}

Lines Read(Lines const& before, Lines const& after) {
    return before + Lines{"[OD7Helper::GetClockInfo(obj)] ... begin", "[OD7Helper::GetClockInfo(obj)] ... get ok"} +
           after;
}

Lines const kUser = {"[OD7Helper::SetPerformanceUser(int,int,int,int,bool)] ... begin"};
Lines const kEngineBegin = {"[OD7Helper::SetGpuClock(int,int)] ... begin"};
Lines const kMemoryBegin = {"[OD7Helper::SetMemoryClock(int,int)] ... begin"};

// 1500 MHz at 1200 mV.
Lines const kEnginePlan = {
    "[OD7Helper::SetGpuClock(int,int)] nDefaultClock ... 1366",
    "[OD7Helper::SetGpuClock(int,int)] nDefaultVoltage ... 1150",
    "[OD7Helper::SetGpuClock(int,int)] fGpuOCRatio ... 1.098097",
    "[OD7Helper::SetGpuClock(int,int)] fGpuOVRatio ... 1.043478",
    "[OD7Helper::SetGpuClock(int,int)] ... plan gpu clock: 150000, gpu voltage: 1200",
};
Lines EngineWrite(std::string const& message) {
    return {"[OD7Helper::SetGpuClock(int,int)] ADL2_OverdriveN_SystemClocksX2_Set ... " + message};
}
Lines const kEngineIsSet = EngineWrite("set");

// 2100 MHz at 1000 mV.
Lines const kMemoryPlan = {
    "[OD7Helper::SetMemoryClock(int,int)] nDefaultClock ... 2000",
    "[OD7Helper::SetMemoryClock(int,int)] nDefaultVoltage ... 950",
    "[OD7Helper::SetMemoryClock(int,int)] fMemOCRatio ... 1.050000",
    "[OD7Helper::SetMemoryClock(int,int)] fMemOVRatio ... 1.052632",
    "[OD7Helper::SetMemoryClock(int,int)] ... plan mem clock: 210000, mem voltage: 1000",
};
Lines MemoryWrite(std::string const& message) {
    return {"[OD7Helper::SetMemoryClock(int,int)] ADL2_OverdriveN_MemoryClocksX2_Set ... " + message};
}
Lines const kMemoryIsSet = MemoryWrite("set");

// Up to the first write, and up to the second.
Lines const kUpToEngine = Read(kUser + kEngineBegin, kEnginePlan);
Lines const kUpToMemory = kUpToEngine + kEngineIsSet + Read(kMemoryBegin, kMemoryPlan);

TEST(OverdriveNUserClocks, AllLevelsButTheLowestGetWhatIsAsked) {
    Machine machine = RunningBoard();

    EXPECT_TRUE(machine.Api().SetPerformanceUser(1500, 1200, 2100, 1000));

    EXPECT_EQ(machine.TakeLog(), kUpToMemory + kMemoryIsSet);
    EXPECT_EQ(machine.Sent<EngineLevels>(), EngineAt(150000, 1200));
    EXPECT_EQ(machine.Sent<MemoryLevels>(), MemoryAt(210000, 1000));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kEngineIsRead, kEngineIsWritten, kMemoryIsRead, kMemoryIsWritten}));
}

TEST(OverdriveNUserClocks, ZeroKeepsTheCurrentTopLevel) {
    Machine machine = RunningBoard();

    EXPECT_TRUE(machine.Api().SetPerformanceUser(0, 0, 0, 0));

    Lines const engine = {
        "[OD7Helper::SetGpuClock(int,int)] iGpuClock == 0 ... use current: 1300",  // of 1300.99
        "[OD7Helper::SetGpuClock(int,int)] iGpuVoltage == 0 ... use current: 1100",
        "[OD7Helper::SetGpuClock(int,int)] nDefaultClock ... 1366",
        "[OD7Helper::SetGpuClock(int,int)] nDefaultVoltage ... 1150",
        "[OD7Helper::SetGpuClock(int,int)] fGpuOCRatio ... 0.951684",
        "[OD7Helper::SetGpuClock(int,int)] fGpuOVRatio ... 0.956522",
        "[OD7Helper::SetGpuClock(int,int)] ... plan gpu clock: 130000, gpu voltage: 1100",
    };
    Lines const memory = {
        "[OD7Helper::SetMemoryClock(int,int)] iMemClock == 0 ... use current: 1900",
        "[OD7Helper::SetMemoryClock(int,int)] iMemVoltage == 0 ... use current: 920",
        "[OD7Helper::SetMemoryClock(int,int)] nDefaultClock ... 2000",
        "[OD7Helper::SetMemoryClock(int,int)] nDefaultVoltage ... 950",
        "[OD7Helper::SetMemoryClock(int,int)] fMemOCRatio ... 0.950000",
        "[OD7Helper::SetMemoryClock(int,int)] fMemOVRatio ... 0.968421",
        "[OD7Helper::SetMemoryClock(int,int)] ... plan mem clock: 190000, mem voltage: 920",
    };
    EXPECT_EQ(machine.TakeLog(),
              Read(kUser + kEngineBegin, engine + kEngineIsSet) + Read(kMemoryBegin, memory + kMemoryIsSet));
    EXPECT_EQ(machine.Sent<EngineLevels>(), EngineAt(130000, 1100));
    EXPECT_EQ(machine.Sent<MemoryLevels>(), MemoryAt(190000, 920));
}

TEST(OverdriveNUserClocks, ClocksAndVoltagesAreKeptIndependently) {
    Machine machine = RunningBoard();
    EXPECT_TRUE(machine.Api().SetPerformanceUser(1500, 0, 0, 1000));
    EXPECT_EQ(machine.Sent<EngineLevels>(), EngineAt(150000, 1100));
    EXPECT_EQ(machine.Sent<MemoryLevels>(), MemoryAt(190000, 1000));
}

// The detour over the ratio in single precision comes out one unit low for some values.
TEST(OverdriveNUserClocks, PlanIsTruncatedFromSinglePrecision) {
    struct Case {
        int wanted[4];
        int sent[4];
        Lines ratios;
    };
    std::vector<Case> const cases = {
        {{1623, 717, 2001, 953}, {162299, 716, 200099, 952}, {"1.188141", "0.623478", "1.000500", "1.003158"}},
        {{1366, 1150, 2000, 950}, {136600, 1150, 200000, 950}, {"1.000000", "1.000000", "1.000000", "1.000000"}},
        {{900, 900, 1000, 900}, {90000, 900, 100000, 900}, {"0.658858", "0.782609", "0.500000", "0.947368"}},
        {{-100, 1150, 2008, 962}, {-10000, 1150, 200799, 961}, {"-0.073206", "1.000000", "1.004000", "1.012632"}},
    };
    Machine machine = RunningBoard();
    for (Case const& known : cases) {
        SCOPED_TRACE(known.wanted[0]);
        EXPECT_TRUE(
            machine.Api().SetPerformanceUser(known.wanted[0], known.wanted[1], known.wanted[2], known.wanted[3]));
        Lines const log = machine.TakeLog();
        ASSERT_EQ(log.size(), 19U);
        EXPECT_EQ(log[6], "[OD7Helper::SetGpuClock(int,int)] fGpuOCRatio ... " + known.ratios[0]);
        EXPECT_EQ(log[7], "[OD7Helper::SetGpuClock(int,int)] fGpuOVRatio ... " + known.ratios[1]);
        EXPECT_EQ(log[15], "[OD7Helper::SetMemoryClock(int,int)] fMemOCRatio ... " + known.ratios[2]);
        EXPECT_EQ(log[16], "[OD7Helper::SetMemoryClock(int,int)] fMemOVRatio ... " + known.ratios[3]);
        EXPECT_EQ(machine.Sent<EngineLevels>(), EngineAt(known.sent[0], known.sent[1]));
        EXPECT_EQ(machine.Sent<MemoryLevels>(), MemoryAt(known.sent[2], known.sent[3]));
    }
}

// 16,777,299 has no single-precision number of its own: its neighbour is 167,773 MHz.
TEST(OverdriveNUserClocks, DefaultClockIsDividedInSinglePrecision) {
    Machine machine =
        OverdriveNBoard().Reports(EngineLevels{.levels = {{30000, 750}, {90000, 850}, {16777299, 1150}}}).Started();
    EXPECT_TRUE(machine.Api().SetPerformanceUser(0, 1150, 2000, 950));
    Lines const log = machine.TakeLog();
    ASSERT_EQ(log.size(), 20U);
    EXPECT_EQ(log[4], "[OD7Helper::SetGpuClock(int,int)] iGpuClock == 0 ... use current: 167773");
    EXPECT_EQ(log[5], "[OD7Helper::SetGpuClock(int,int)] nDefaultClock ... 167773");
    EXPECT_EQ(machine.Api().GetGpuClockSetting().CurrentClock, 167772) << "an integer division there";
}

TEST(OverdriveNUserClocks, LevelsWithoutClockStayAsTheyAre) {
    Machine machine = OverdriveNBoard();
    machine.Reports(Capabilities{.levels = 4});
    std::vector<Level> levels = {{30000, 750}, {90000, 850}, {120000, 1000}, {136600, 1150}};
    machine.Reports(EngineLevels{.levels = levels}).Reports(MemoryLevels{.levels = levels});
    ASSERT_TRUE(machine.InitAndForget());
    levels = {{0, 760, 7, 71}, {91000, 860, 8, 81}, {0, 1000, 9, 91}, {130000, 1100, 6, 61}};
    machine.Reports(EngineLevels{.levels = levels}).Reports(MemoryLevels{.levels = levels});

    EXPECT_TRUE(machine.Api().SetPerformanceUser(1500, 0, 1500, 0));

    levels[1] = {150000, 1100, 3, 81};
    levels[3] = {150000, 1100, 3, 61};
    EXPECT_EQ(machine.Sent<EngineLevels>(), (EngineLevels{.mode = kModeManual, .levels = levels}));
    levels[1].enabled = levels[3].enabled = 1;
    EXPECT_EQ(machine.Sent<MemoryLevels>(), (MemoryLevels{.mode = kModeManual, .levels = levels}));
}

// The top level is the last one with a default clock; the levels behind it are set all the same.
TEST(OverdriveNUserClocks, TopLevelIsTheLastWithADefaultClock) {
    Machine machine = OverdriveNBoard()
                          .Reports(EngineLevels{.levels = {{30000, 750}, {90000, 850}, {0, 1150}}})
                          .Reports(MemoryLevels{.levels = {{100000, 800}, {}, {}}})
                          .Started();
    machine.Reports(kCurrentEngine).Reports(kCurrentMemory);

    EXPECT_TRUE(machine.Api().SetPerformanceUser(0, 0, 0, 0));

    Lines const log = machine.TakeLog();
    ASSERT_EQ(log.size(), 23U);
    EXPECT_EQ(log[4], "[OD7Helper::SetGpuClock(int,int)] iGpuClock == 0 ... use current: 910");
    EXPECT_EQ(log[5], "[OD7Helper::SetGpuClock(int,int)] iGpuVoltage == 0 ... use current: 860");
    EXPECT_EQ(log[6], "[OD7Helper::SetGpuClock(int,int)] nDefaultClock ... 900");
    EXPECT_EQ(log[7], "[OD7Helper::SetGpuClock(int,int)] nDefaultVoltage ... 850");
    EXPECT_EQ(log[15], "[OD7Helper::SetMemoryClock(int,int)] iMemClock == 0 ... use current: 320");
    EXPECT_EQ(log[16], "[OD7Helper::SetMemoryClock(int,int)] iMemVoltage == 0 ... use current: 770");
    EXPECT_EQ(log[17], "[OD7Helper::SetMemoryClock(int,int)] nDefaultClock ... 1000");
    EXPECT_EQ(log[18], "[OD7Helper::SetMemoryClock(int,int)] nDefaultVoltage ... 800");
    EngineLevels const sent = machine.Sent<EngineLevels>();
    EXPECT_EQ(sent.levels[1].clock, sent.levels[2].clock);
}

TEST(OverdriveNUserClocks, WithoutADefaultWhatIsAskedIsSent) {
    Machine machine = OverdriveNBoard();
    machine.Reports(EngineLevels{.levels = {{30000, 750}, {90000, 850}, {99, 0}}});  // below 1 MHz, 0 mV
    machine.Reports(MemoryLevels{.levels = {{30000, 750}, {90000, 850}, {50, 0}}});
    ASSERT_TRUE(machine.InitAndForget());

    EXPECT_TRUE(machine.Api().SetPerformanceUser(1500, 1200, 2100, 1000));

    Lines const engine = {
        "[OD7Helper::SetGpuClock(int,int)] nDefaultClock ... 0",
        "[OD7Helper::SetGpuClock(int,int)] nDefaultVoltage ... 0",
        "[OD7Helper::SetGpuClock(int,int)] fGpuOCRatio ... 0.000000",
        "[OD7Helper::SetGpuClock(int,int)] fGpuOVRatio ... 0.000000",
        "[OD7Helper::SetGpuClock(int,int)] ... plan gpu clock: 150000, gpu voltage: 1200",
    };
    Lines const memory = {
        "[OD7Helper::SetMemoryClock(int,int)] nDefaultClock ... 0",
        "[OD7Helper::SetMemoryClock(int,int)] nDefaultVoltage ... 0",
        "[OD7Helper::SetMemoryClock(int,int)] fMemOCRatio ... 0.000000",
        "[OD7Helper::SetMemoryClock(int,int)] fMemOVRatio ... 0.000000",
        "[OD7Helper::SetMemoryClock(int,int)] ... plan mem clock: 210000, mem voltage: 1000",
    };
    EXPECT_EQ(machine.TakeLog(),
              Read(kUser + kEngineBegin, engine + kEngineIsSet) + Read(kMemoryBegin, memory + kMemoryIsSet));
    EXPECT_EQ(machine.Sent<EngineLevels>(),
              (EngineLevels{.mode = kModeManual, .levels = {{30000, 750}, {150000, 1200, 3}, {150000, 1200, 3}}}));
}

// In the driver's unit, of 10 kHz.
TEST(OverdriveNUserClocks, ValuesBeyondAnIntAreNotSent) {
    struct Case {
        int gpuClock;
        int gpuVoltage;
        int memClock;
        int memVoltage;
        std::string tag;
    };
    Machine machine = RunningBoard();
    for (Case const& known : {Case{INT_MAX, 1150, 2000, 950, "[OD7Helper::SetGpuClock(int,int)]"},
                              Case{INT_MIN, 1150, 2000, 950, "[OD7Helper::SetGpuClock(int,int)]"},
                              Case{21474837, 1150, 2000, 950, "[OD7Helper::SetGpuClock(int,int)]"},
                              Case{1366, INT_MAX, 2000, 950, "[OD7Helper::SetGpuClock(int,int)]"},
                              Case{1366, 1150, INT_MIN, 950, "[OD7Helper::SetMemoryClock(int,int)]"}}) {
        SCOPED_TRACE(std::to_string(known.gpuClock) + " " + std::to_string(known.memClock));
        bool const isEngine = known.tag.find("Gpu") != std::string::npos;
        EXPECT_FALSE(
            machine.Api().SetPerformanceUser(known.gpuClock, known.gpuVoltage, known.memClock, known.memVoltage));
        EXPECT_EQ(machine.TakeLog().back(), known.tag + " ... clock or voltage out of range");
        EXPECT_EQ(machine.TakeCallNames(),
                  isEngine ? Lines({kEngineGet}) : Lines({kEngineGet, kEngineSet, kMemoryGet}));
    }
}

// What the driver writes into the head goes back to it, and never leads beyond the table.
TEST(OverdriveNUserClocks, LevelsAreCountedByTheHeadWithinTheTable) {
    struct Case {
        int head;
        std::size_t changed;  // levels
        int sent;             // head
    };
    std::vector<Case> const cases = {{2, 1, 2},       {1, 0, 1}, {0, 0, 0},          {-1, 0, 0},
                                     {INT_MIN, 0, 0}, {4, 2, 3}, {0x10000000, 2, 3}, {INT_MAX, 2, 3}};
    Machine machine = RunningBoard();
    for (Case const& known : cases) {
        SCOPED_TRACE(known.head);
        OrderLevelCounts(machine, known.head);
        EXPECT_TRUE(machine.Api().SetPerformanceUser(1500, 1200, 2100, 1000));
        auto engine = EngineAt(150000, 1200);
        auto memory = MemoryAt(210000, 1000);
        engine.count = memory.count = known.sent;
        for (std::size_t level = 2; level > known.changed; --level) {
            engine.levels[level] = kCurrentEngine.levels[level];
            memory.levels[level] = kCurrentMemory.levels[level];
        }
        EXPECT_EQ(machine.Sent<EngineLevels>(), engine);
        EXPECT_EQ(machine.Sent<MemoryLevels>(), memory);
    }
}

// A driver takes the size for the truth, also when the number in it is garbage of its own.
TEST(OverdriveNUserClocks, SizeNeverLeadsBeyondTheTable) {
    constexpr int kTable = 12 + 3 * 16;  // the head and three levels
    struct Case {
        int written;
        std::size_t sent;
    };
    Machine machine = RunningBoard();
    for (auto const& [written, sent] :
         {Case{INT_MAX, kTable}, Case{kTable + 1, kTable}, Case{kTable, kTable}, Case{28, 28}, Case{-1, 0}}) {
        SCOPED_TRACE(written);
        OrderTableSizes(machine, written);
        EXPECT_TRUE(machine.Api().SetPerformanceUser(1500, 1200, 2100, 1000));
        EXPECT_EQ(machine.LastCall(kEngineSet).record.size(), sent);
        EXPECT_EQ(machine.LastCall(kMemorySet).record.size(), sent);
    }
}

TEST(OverdriveNUserClocks, WithoutAnyLevelNothingIsSet) {
    Machine machine = AmdBoard(7).Started();
    EXPECT_FALSE(machine.Api().SetPerformanceUser(1500, 1200, 2100, 1000));
    EXPECT_EQ(machine.TakeLog(),
              Read(kUser + kEngineBegin, {"[OD7Helper::SetGpuClock(int,int)] ... no performance level"}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kEngineGet}));
}

TEST(OverdriveNUserClocks, WithoutMemoryLevelsTheEngineIsSet) {
    Machine machine = OverdriveNBoard().Reports(MemoryLevels{.levels = {{}, {100000, 800}, {200000, 950}}}).Started();
    EXPECT_FALSE(machine.Api().SetPerformanceUser(1500, 1200, 2100, 1000));
    EXPECT_EQ(machine.TakeLog(),
              kUpToEngine + kEngineIsSet +
                  Read(kMemoryBegin, {"[OD7Helper::SetMemoryClock(int,int)] ... no performance level"}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kEngineGet, kEngineSet, kMemoryGet}));
}

struct FailureCase {
    char const* name;
    char const* entryPoint;  // that returns
    int result;
    Lines log;
    Lines calls;
};

void PrintTo(FailureCase const& failure, std::ostream* out) {
    *out << failure.name;
}

Lines const kReadBegin = {"[OD7Helper::GetClockInfo(obj)] ... begin"};
Lines const kEngineReadFails = {"[OD7Helper::GetClockInfo(obj)] ADL2_OverdriveN_SystemClocksX2_Get ... failed: -3"};
Lines const kMemoryReadFails = {"[OD7Helper::GetClockInfo(obj)] ADL2_OverdriveN_MemoryClocksX2_Get ... failed: -3"};

std::vector<FailureCase> const kUserFailures = {
    {"EngineReadFails", kEngineGet, -3, kUser + kEngineBegin + kReadBegin + kEngineReadFails, {kEngineGet}},
    {"EngineWriteFails", kEngineSet, 9, kUpToEngine + EngineWrite("failed: 9"), {kEngineGet, kEngineSet}},
    {"MemoryReadFails",
     kMemoryGet,
     -3,
     kUpToEngine + kEngineIsSet + kMemoryBegin + kReadBegin + kMemoryReadFails,
     {kEngineGet, kEngineSet, kMemoryGet}},
    {"MemoryWriteFails",
     kMemorySet,
     -1,
     kUpToMemory + MemoryWrite("failed: -1"),
     {kEngineGet, kEngineSet, kMemoryGet, kMemorySet}},
};

void RunFailures(std::vector<FailureCase> const& failures, bool (*operation)(Exports const&)) {
    Machine machine = OverdriveNBoard().Started();
    for (FailureCase const& failure : failures) {
        SCOPED_TRACE(failure.name);
        machine.Result(failure.entryPoint, failure.result);
        EXPECT_FALSE(operation(machine.Api()));
        EXPECT_EQ(machine.TakeLog(), failure.log);
        EXPECT_EQ(machine.TakeCallNames(), failure.calls);
        machine.Result(failure.entryPoint, 0);
    }
}

bool SetUser(Exports const& api) {
    return api.SetPerformanceUser(1500, 1200, 2100, 1000);
}

bool SetDefault(Exports const& api) {
    return api.SetPerformanceDefault();
}

TEST(OverdriveNUserClocks, FailureStopsThere) {
    RunFailures(kUserFailures, SetUser);
}

// A failure of the second call, which takes a machine of its own.
void RunFailure(FailureCase const& failure, bool (*operation)(Exports const&)) {
    Machine machine = OverdriveNBoard().Then(failure.entryPoint).Result(failure.entryPoint, failure.result).Started();
    EXPECT_FALSE(operation(machine.Api()));
    EXPECT_EQ(machine.TakeLog(), failure.log);
    EXPECT_EQ(machine.TakeCallNames(), failure.calls);
}

Lines const kDefaultBegin = {
    "[OD7Helper::SetPerformanceDefault()] ... begin",
    "[OD7Helper::SetPowerLimitDefault()] ... begin",
    "[OD7Helper::SetPowerLimitDefault()] ADL2_OverdriveN_PowerLimit_Set ... set default",
};

std::string Engine(std::string const& message) {
    return "[OD7Helper::SetPerformanceDefault()] ADL2_OverdriveN_SystemClocksX2_Set ... " + message;
}

std::string Memory(std::string const& message) {
    return "[OD7Helper::SetPerformanceDefault()] ADL2_OverdriveN_MemoryClocksX2_Set ... " + message;
}

Lines const kEngineRestored = {Engine("set gpu clock default"), Engine("set gpu clock and voltage to default")};
Lines const kMemoryRestored = {Memory("set memory clock default"), Memory("set mem clock and voltage to default")};
constexpr char const* kPowerGet = "ADL2_OverdriveN_PowerLimit_Get";
constexpr char const* kPowerSet = "ADL2_OverdriveN_PowerLimit_Set";

TEST(OverdriveNDefaultClocks, ClocksAloneThenWholeTables) {
    Machine machine = RunningBoard();

    EXPECT_TRUE(machine.Api().SetPerformanceDefault());

    EXPECT_EQ(machine.TakeLog(), Read(kDefaultBegin, kEngineRestored) + Read({}, kMemoryRestored));
    // The defaults' clocks above the lowest.
    EngineLevels const engine = {.mode = kModeManual,
                                 .levels = {{31000, 760, 7, 71}, {90000, 860, 8, 81}, {136600, 1100, 9, 91}}};
    MemoryLevels const memory = {.mode = kModeManual,
                                 .levels = {{32000, 770, 4, 41}, {100000, 810, 5, 51}, {200000, 920, 6, 61}}};
    EXPECT_EQ(machine.AllSent<EngineLevels>(), std::vector({engine, kDefaultEngine}));
    EXPECT_EQ(machine.AllSent<MemoryLevels>(), std::vector({memory, kDefaultMemory}));
    EXPECT_EQ(TakeAmdTraffic(machine),
              Lines({"OverdriveN_PowerLimit_Get 5", "OverdriveN_PowerLimit_Set 5", kEngineIsRead, kEngineIsWritten,
                     kEngineIsWritten, kMemoryIsRead, kMemoryIsWritten, kMemoryIsWritten}));
}

TEST(OverdriveNDefaultClocks, FailingPowerLimitDoesNotMatter) {
    Machine machine = RunningBoard();
    machine.Result(kPowerGet, -1);
    EXPECT_TRUE(machine.Api().SetPerformanceDefault());
    EXPECT_EQ(machine.TakeLog(),
              Read({"[OD7Helper::SetPerformanceDefault()] ... begin", "[OD7Helper::SetPowerLimitDefault()] ... begin",
                    "[OD7Helper::SetPowerLimitDefault()] ADL2_OverdriveN_PowerLimit_Get ... failed: -1"},
                   kEngineRestored) +
                  Read({}, kMemoryRestored));
}

TEST(OverdriveNDefaultClocks, UserClocksDoNotChangeTheDefaults) {
    Machine machine = RunningBoard();
    ASSERT_TRUE(machine.Api().SetPerformanceUser(1500, 1200, 2100, 1000));
    ASSERT_TRUE(machine.Api().SetPerformanceDefault());
    ASSERT_TRUE(machine.Api().SetPerformanceDefault());
    EXPECT_EQ(machine.Sent<EngineLevels>(), kDefaultEngine);
    EXPECT_EQ(machine.Sent<MemoryLevels>(), kDefaultMemory);
}

TEST(OverdriveNDefaultClocks, LevelsAreCountedByTheHeadWithinTheTable) {
    Machine machine = RunningBoard();
    for (int const head : {INT_MAX, 0x10000000, 4, 1, 0, -1}) {
        SCOPED_TRACE(head);
        OrderLevelCounts(machine, head);
        machine.TakeCalls();
        EXPECT_TRUE(machine.Api().SetPerformanceDefault());
        auto const engine = machine.AllSent<EngineLevels>();
        auto const memory = machine.AllSent<MemoryLevels>();
        ASSERT_EQ(machine.TakeCalls().size(), 8U);
        EXPECT_EQ(engine[0].levels[0].clock, 31000);
        EXPECT_EQ(engine[0].levels[2].clock, head > 1 ? 136600 : 130099);
        EXPECT_EQ(memory[0].levels[2].clock, head > 1 ? 200000 : 190000);
    }
}

TEST(OverdriveNDefaultClocks, WithoutLevelsTheHeadsAreWritten) {
    Machine machine = AmdBoard(7).Started();
    EXPECT_TRUE(machine.Api().SetPerformanceDefault());
    EXPECT_EQ(machine.AllSent<EngineLevels>(),
              std::vector({EngineLevels{.mode = kModeManual}, EngineLevels{.mode = kModeDefault}}));
    EXPECT_EQ(machine.AllSent<MemoryLevels>(),
              std::vector({MemoryLevels{.mode = kModeManual}, MemoryLevels{.mode = kModeDefault}}));
    EXPECT_EQ(machine.TakeCalls().size(), 8U);
}

class OverdriveNDefaultClocksFailure : public testing::TestWithParam<FailureCase> {};

std::vector<FailureCase> const kDefaultFailures = {
    {"EngineReadFails",
     kEngineGet,
     -3,
     kDefaultBegin + kReadBegin + kEngineReadFails +
         Lines{"[OD7Helper::SetPerformanceDefault()] pCurrentGpuClockStruct ... null ptr"},
     {kPowerGet, kPowerSet, kEngineGet}},
    {"EngineClocksFail",
     kEngineSet,
     -1,
     Read(kDefaultBegin, {Engine("failed: -1")}),
     {kPowerGet, kPowerSet, kEngineGet, kEngineSet}},
    {"MemoryReadFails",
     kMemoryGet,
     -3,
     Read(kDefaultBegin, kEngineRestored) + kReadBegin + kMemoryReadFails +
         Lines{"[OD7Helper::SetPerformanceDefault()] pCurrentMemClockStruct ... null ptr"},
     {kPowerGet, kPowerSet, kEngineGet, kEngineSet, kEngineSet, kMemoryGet}},
    {"MemoryClocksFail",
     kMemorySet,
     -1,
     Read(kDefaultBegin, kEngineRestored) + Read({}, {Memory("failed: -1")}),
     {kPowerGet, kPowerSet, kEngineGet, kEngineSet, kEngineSet, kMemoryGet, kMemorySet}},
};

std::vector<FailureCase> const kDefaultFailuresAlone = {
    {"EngineTableFails",
     kEngineSet,
     -2,
     Read(kDefaultBegin, {Engine("set gpu clock default"), Engine("failed: -2")}),
     {kPowerGet, kPowerSet, kEngineGet, kEngineSet, kEngineSet}},
    {"MemoryTableFails",
     kMemorySet,
     5,
     Read(kDefaultBegin, kEngineRestored) + Read({}, {Memory("set memory clock default"), Memory("failed: 5")}),
     {kPowerGet, kPowerSet, kEngineGet, kEngineSet, kEngineSet, kMemoryGet, kMemorySet, kMemorySet}},
};

TEST(OverdriveNDefaultClocks, FailureStopsThere) {
    RunFailures(kDefaultFailures, SetDefault);
}

TEST_P(OverdriveNDefaultClocksFailure, StopsThere) {
    RunFailure(GetParam(), SetDefault);
}

INSTANTIATE_TEST_SUITE_P(When, OverdriveNDefaultClocksFailure, testing::ValuesIn(kDefaultFailuresAlone),
                         [](auto const& given) { return given.param.name; });

TEST(OverdriveNMissingWrite, OfTheEngineStopsBothOperations) {
    Machine machine = OverdriveNBoard().Hide(kEngineSet).Started();

    EXPECT_FALSE(SetUser(machine.Api()));
    EXPECT_EQ(machine.TakeLog(), kUpToEngine + EngineWrite("null ptr"));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kEngineGet}));

    EXPECT_FALSE(SetDefault(machine.Api()));
    EXPECT_EQ(machine.TakeLog(), Read(kDefaultBegin, {Engine("null ptr")}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kPowerGet, kPowerSet, kEngineGet}));
}

TEST(OverdriveNMissingWrite, OfTheMemoryStopsBothOperations) {
    Machine machine = OverdriveNBoard().Hide(kMemorySet).Started();

    EXPECT_FALSE(SetUser(machine.Api()));
    EXPECT_EQ(machine.TakeLog(), kUpToMemory + MemoryWrite("null ptr"));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kEngineGet, kEngineSet, kMemoryGet}));

    EXPECT_FALSE(SetDefault(machine.Api()));
    EXPECT_EQ(machine.TakeLog(), Read(kDefaultBegin, kEngineRestored) + Read({}, {Memory("null ptr")}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({kPowerGet, kPowerSet, kEngineGet, kEngineSet, kEngineSet, kMemoryGet}));
}

TEST(OverdriveNClockSettings, EngineIsTheRangesAndTheCurrentTopLevel) {
    Machine machine = RunningBoard();

    ClockSetting const setting = machine.Api().GetGpuClockSetting();

    EXPECT_TRUE(setting.Valid);
    EXPECT_EQ(setting.DefaultClock, 1366);
    EXPECT_EQ(setting.DefaultVoltage, 1150);
    EXPECT_EQ(setting.MaxClock, 2000);
    EXPECT_EQ(setting.MinClock, 300);
    EXPECT_EQ(setting.MaxVoltage, 1175);
    EXPECT_EQ(setting.MinVoltage, 800);
    EXPECT_EQ(setting.CurrentClock, 1300);  // of 1300.99
    EXPECT_EQ(setting.CurrentVoltage, 1100);
    // The same answer serves the current and the default table here.
    EXPECT_EQ(machine.TakeLog(), Read(Read({}, {}), {"vddc default ... 1150", "vddc perfapi ... 1100"}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kEngineIsRead, "OverdriveN_SystemClocksX2_Get 5: mode 1, 3 levels"}));
}

TEST(OverdriveNClockSettings, MemoryHasNoVoltages) {
    Machine machine = RunningBoard();

    ClockSetting const setting = machine.Api().GetMemClockSetting();

    EXPECT_TRUE(setting.Valid);
    EXPECT_EQ(setting.DefaultClock, 2000);
    EXPECT_EQ(setting.DefaultVoltage, -1);
    EXPECT_EQ(setting.MaxClock, 2250);
    EXPECT_EQ(setting.MinClock, 300);
    EXPECT_EQ(setting.MaxVoltage, -1);
    EXPECT_EQ(setting.MinVoltage, -1);
    EXPECT_EQ(setting.CurrentClock, 1900);
    EXPECT_EQ(setting.CurrentVoltage, -1);
    EXPECT_EQ(machine.TakeLog(), Read({}, {}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({kMemoryIsRead}));
}

TEST(OverdriveNClockSettings, ClocksAreTruncatedTowardZero) {
    constexpr Range kRange = {.minimum = -199, .maximum = 20199, .standard = 99};
    Machine machine = OverdriveNBoard()
                          .Reports(Capabilities{.engineClock = kRange, .memoryClock = kRange})
                          .Reports(EngineLevels{.levels = {{1, 1}, {1, 1}, {-250, -3}}})
                          .Reports(MemoryLevels{.levels = {{1, 1}, {1, 1}, {-350, -4}}})
                          .Started();
    ClockSetting const engine = machine.Api().GetGpuClockSetting();
    EXPECT_EQ(engine.MinClock, -1);
    EXPECT_EQ(engine.MaxClock, 201);
    EXPECT_EQ(engine.DefaultClock, 0);
    EXPECT_EQ(engine.CurrentClock, -2);
    EXPECT_EQ(engine.CurrentVoltage, -3);
    ClockSetting const memory = machine.Api().GetMemClockSetting();
    EXPECT_EQ(memory.MinClock, -1);
    EXPECT_EQ(memory.MaxClock, 201);
    EXPECT_EQ(memory.DefaultClock, 0);
    EXPECT_EQ(memory.CurrentClock, -3);
}

TEST(OverdriveNClockSettings, EngineLevelsIndexTheMemoryTable) {
    Machine machine = OverdriveNBoard();
    machine.Reports(MemoryLevels{.levels = {{30000, 750}, {100000, 800}, {}}});
    ASSERT_TRUE(machine.Init());  // three engine levels, two memory levels
    machine.Reports(MemoryLevels{.levels = {{30000, 750}, {100000, 800}, {77700, 0}}});
    EXPECT_EQ(machine.Api().GetMemClockSetting().CurrentClock, 777);

    machine.Reports(EngineLevels{.levels = {{30000, 750}, {90000, 850}, {}}});
    ASSERT_TRUE(machine.Init());  // two engine levels, three memory levels
    EXPECT_EQ(machine.Api().GetMemClockSetting().CurrentClock, 1000);
}

TEST(OverdriveNClockSettings, DefaultTableIsReadForDiagnosisAlone) {
    Machine machine = OverdriveNBoard();
    machine.Then(kEngineGet).Reports(kCurrentEngine);  // the second read: current
    machine.Then(kEngineGet).Reports(EngineLevels{.levels = {{30000, 750}, {90000, 850}, {136600, 1234}}});
    ASSERT_TRUE(machine.InitAndForget());
    ClockSetting const setting = machine.Api().GetGpuClockSetting();
    EXPECT_EQ(setting.CurrentVoltage, 1100);
    EXPECT_EQ(setting.DefaultVoltage, 1150);
    EXPECT_EQ(machine.TakeLog(), Read(Read({}, {}), {"vddc default ... 1150", "vddc perfapi ... 1234"}));
}

TEST(OverdriveNClockSettings, UnreadableTablesLeaveTheCurrentValuesUnavailable) {
    Machine machine = RunningBoard();
    machine.Result(kEngineGet, -3).Result(kMemoryGet, -3);

    ClockSetting const engine = machine.Api().GetGpuClockSetting();
    EXPECT_TRUE(engine.Valid);
    EXPECT_EQ(engine.MaxClock, 2000);
    EXPECT_EQ(engine.CurrentClock, -1);
    EXPECT_EQ(engine.CurrentVoltage, -1);
    Lines const failed = kReadBegin + kEngineReadFails;
    EXPECT_EQ(machine.TakeLog(), failed + failed + Lines({"vddc default ... 1150", "vddc perfapi ... -1"}));

    ClockSetting const memory = machine.Api().GetMemClockSetting();
    EXPECT_TRUE(memory.Valid);
    EXPECT_EQ(memory.MaxClock, 2250);
    EXPECT_EQ(memory.CurrentClock, -1);
    EXPECT_EQ(machine.TakeLog(), kReadBegin + kMemoryReadFails);
}

TEST(OverdriveNClockSettings, WithoutAnyLevelTheCurrentValuesAreUnavailable) {
    Machine machine = AmdBoard(7).Started();
    ClockSetting const engine = machine.Api().GetGpuClockSetting();
    EXPECT_TRUE(engine.Valid);
    EXPECT_EQ(engine.CurrentClock, -1);
    EXPECT_EQ(engine.CurrentVoltage, -1);
    EXPECT_EQ(machine.Api().GetMemClockSetting().CurrentClock, -1);
}

// The table of the defaults is handed to the driver, which may write into it, and report success or not.
TEST(OverdriveNDefaultClocks, StayWhatWasReadWhateverTheDriverWritesIntoTheirTable) {
    Machine machine = RunningBoard();
    auto const thenSpoil = [&](int result) {
        machine.Then(kEngineSet).Result(kEngineSet, result);
        // The mode, and behind the size and the count all levels: bytes, as no driver is expected to write there.
        machine.Write(kEngineSet, 2, Bytes(4, 0x7F), 4).Write(kEngineSet, 2, Bytes(48, 0x7F), 12).Then(kEngineSet);
    };
    // The second call of each operation has the table.
    thenSpoil(0);
    EXPECT_TRUE(machine.Api().SetPerformanceDefault());
    EXPECT_TRUE(machine.Api().SetPerformanceDefault());
    EXPECT_EQ(machine.Sent<EngineLevels>(), kDefaultEngine);
    machine.Then(kEngineSet).Then(kEngineSet);
    thenSpoil(-1);
    EXPECT_FALSE(machine.Api().SetPerformanceDefault());
    EXPECT_TRUE(machine.Api().SetPerformanceDefault());
    EXPECT_EQ(machine.Sent<EngineLevels>(), kDefaultEngine);
}

TEST(OverdriveNClockSettings, HeadOfTheDriverDoesNotHideTheTopLevel) {
    Machine machine = RunningBoard();
    for (int const head : {INT_MAX, 0, -1}) {
        OrderLevelCounts(machine, head);
        EXPECT_EQ(machine.Api().GetGpuClockSetting().CurrentClock, 1300);
        EXPECT_EQ(machine.Api().GetMemClockSetting().CurrentClock, 1900);
    }
}

}  // namespace
}  // namespace gputune::test
