// Intel boards: the power limit, and the offsets of the clocks.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

#include "intel_board.h"

namespace gputune::test {
namespace {

std::string const kLimit = "[IGCLHelper::SetPowerLimit(int,int)]";
std::string const kLimitDefault = "[IGCLHelper::SetPowerLimitDefault()]";
std::string const kUser = "[IGCLHelper::SetPerformanceUser()]";

// Running, with the power limit at 200 W.
Machine RunningBoard() {
    return IntelBoard().Started();
}

Lines DefaultLog(std::string const& watts) {
    return {kLimitDefault + " ... begin", kLimitDefault + " Power limit ... set to " + watts + " W"};
}

// ---- The power limit ----

TEST(IgclPowerLimit, IsAnOffsetFromTheDefaultInPercent) {
    Machine machine = RunningBoard();
    machine.Reports(SustainedLimit{.milliwatts = 230000});
    EXPECT_TRUE(machine.Api().SetPowerLimit(80, 15));
    EXPECT_EQ(machine.TakeLog(),
              Lines({"[IGCLHelper::SetPowerLimit(int,int)] ... begin",
                     "[IGCLHelper::SetPowerLimit(int,int)] Power limit ... set to 230.000000 W",
                     "[IGCLHelper::SetPowerLimit(int,int)] (verify) Current Sustained Power Limit Percent ... "
                     "15.000000 %"}));
    EXPECT_NE(machine.LastCall("ctlOverclockPowerLimitGet").HandleArgument(1), Handle{});
    EXPECT_EQ(TakeIntelTraffic(machine),
              Lines({"ctlOverclockGetProperties DE0000", "ctlOverclockPowerLimitSet DE0000 230000.000",
                     "ctlOverclockPowerLimitGet DE0000"}));
}

TEST(IgclPowerLimit, ZeroIsTheDefaultLineForLine) {
    Machine machine = RunningBoard();
    EXPECT_TRUE(machine.Api().SetPowerLimitDefault());
    Lines const log = machine.TakeLog();
    Lines const traffic = TakeIntelTraffic(machine);
    EXPECT_TRUE(machine.Api().SetPowerLimit(80, 0));
    EXPECT_EQ(machine.TakeLog(), log);
    EXPECT_EQ(TakeIntelTraffic(machine), traffic);
    EXPECT_EQ(log, DefaultLog("200.000000"));

    machine.Result("ctlOverclockPowerLimitSet", kFailure);
    EXPECT_FALSE(machine.Api().SetPowerLimit(80, 0));
    EXPECT_EQ(machine.TakeLog().back(), FailureLine(kLimitDefault + " ctlOverclockPowerLimitSet"));
}

TEST(IgclPowerLimit, TemperatureIsNotUsed) {
    Machine machine = RunningBoard();
    for (int const temperature : {0, -1, 50, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(temperature);
        EXPECT_TRUE(machine.Api().SetPowerLimit(temperature, 10));
        EXPECT_DOUBLE_EQ(SentValue(machine, "ctlOverclockPowerLimitSet"), 220000.0);
    }
}

TEST(IgclPowerLimit, IsNotJudged) {
    Machine machine = RunningBoard();
    struct {
        int percent;
        double milliwatts;
        char const* watts;
    } const rows[] = {
        {10, 220000, "220.000000"},
        {-20, 160000, "160.000000"},
        {1, 202000, "202.000000"},
        {-100, 0, "0.000000"},
        {-150, -100000, "-100.000000"},
        {1000, 2200000, "2200.000000"},
        {INT_MAX, 4294967494000, "4294967494.000000"},
        {INT_MIN, -4294967096000, "-4294967096.000000"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.percent);
        EXPECT_TRUE(machine.Api().SetPowerLimit(0, row.percent));
        EXPECT_NEAR(SentValue(machine, "ctlOverclockPowerLimitSet"), row.milliwatts,
                    std::fabs(row.milliwatts) * 1e-12 + 1e-9);
        EXPECT_EQ(machine.TakeLog().at(1), kLimit + " Power limit ... set to " + row.watts + " W");
    }
}

TEST(IgclPowerLimit, FractionsOfPercentAndWattsAreKept) {
    Machine machine = IntelBoard();
    OrderDefaultLimit(machine, 189.5);
    ASSERT_TRUE(machine.InitAndForget());
    machine.Reports(SustainedLimit{.milliwatts = 100000.25});
    EXPECT_TRUE(machine.Api().SetPowerLimit(0, 7));
    EXPECT_NEAR(SentValue(machine, "ctlOverclockPowerLimitSet"), 202765.0, 1e-6);
    // 100.00025 W of 189.5 W.
    EXPECT_EQ(machine.TakeLog(), Lines({kLimit + " ... begin", kLimit + " Power limit ... set to 202.765000 W",
                                        kLimit + " (verify) Current Sustained Power Limit Percent ... -47.229420 %"}));
}

TEST(IgclPowerLimit, PropertiesAreReadAfreshEachTime) {
    Machine machine = RunningBoard();
    OrderDefaultLimit(machine, 100);
    EXPECT_TRUE(machine.Api().SetPowerLimit(0, 10));
    EXPECT_DOUBLE_EQ(SentValue(machine, "ctlOverclockPowerLimitSet"), 110000.0);
    OrderDefaultLimit(machine, 50);
    EXPECT_TRUE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(SentValue(machine, "ctlOverclockPowerLimitSet"), 50000.0);
}

TEST(IgclPowerLimit, ReadBackOfADefaultOfNothingSurvives) {
    Machine machine = IntelBoard();
    OrderDefaultLimit(machine, 0);
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_TRUE(machine.Api().SetPowerLimit(0, 10));
    EXPECT_EQ(SentValue(machine, "ctlOverclockPowerLimitSet"), 0.0);
    OrderDefaultLimit(machine, std::numeric_limits<double>::infinity());
    EXPECT_TRUE(machine.Api().SetPowerLimit(0, 10));
    OrderDefaultLimit(machine, 1e308);
    EXPECT_TRUE(machine.Api().SetPowerLimit(0, 10));
    EXPECT_TRUE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(machine.TakeLog().size(), 3U + 3U + 3U + 2U);
}

TEST(IgclPowerLimit, FailingPropertiesEndIt) {
    Machine machine = RunningBoard();
    machine.Result("ctlOverclockGetProperties", kFailure);
    EXPECT_FALSE(machine.Api().SetPowerLimit(80, 15));
    EXPECT_EQ(machine.TakeLog(), Lines({kLimit + " ... begin", FailureLine(kLimit + " ctlOverclockGetProperties")}));
    EXPECT_EQ(TakeIntelTraffic(machine), Lines({"ctlOverclockGetProperties DE0000"}));
}

TEST(IgclPowerLimit, RefusalEndsIt) {
    Machine machine = RunningBoard();
    machine.Result("ctlOverclockPowerLimitSet", 0x44000004);
    EXPECT_FALSE(machine.Api().SetPowerLimit(80, 15));
    EXPECT_EQ(machine.TakeLog(),
              Lines({kLimit + " ... begin", ErrorLine(kLimit + " ctlOverclockPowerLimitSet", 0x44000004,
                                                      "[CTL_RESULT_ERROR_CORE_OVERCLOCK_POWER_OUTSIDE_RANGE]")}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlOverclockGetProperties", "ctlOverclockPowerLimitSet"}));
}

TEST(IgclPowerLimit, FailingReadBackIsASuccess) {
    Machine machine = RunningBoard();
    machine.Result("ctlOverclockPowerLimitGet", kFailure);
    EXPECT_TRUE(machine.Api().SetPowerLimit(80, 15));
    EXPECT_EQ(machine.TakeLog(), Lines({kLimit + " ... begin", kLimit + " Power limit ... set to 230.000000 W",
                                        FailureLine(kLimit + " ctlOverclockPowerLimitGet")}));
}

TEST(IgclPowerLimit, MissingFunctionsCountAsNotInitialized) {
    Machine machine = RunningBoard();
    machine.Hide("ctlOverclockPowerLimitGet");
    EXPECT_TRUE(machine.Api().SetPowerLimit(80, 15));
    EXPECT_EQ(machine.TakeLog().back(), NotInitializedLine(kLimit + " ctlOverclockPowerLimitGet"));
}

TEST(IgclPowerLimit, MissingSetCountsAsNotInitialized) {
    Machine machine = RunningBoard();
    machine.Hide("ctlOverclockPowerLimitSet");
    EXPECT_FALSE(machine.Api().SetPowerLimit(80, 15));
    EXPECT_EQ(machine.TakeLog().back(), NotInitializedLine(kLimit + " ctlOverclockPowerLimitSet"));
    EXPECT_FALSE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(machine.TakeLog().back(), NotInitializedLine(kLimitDefault + " ctlOverclockPowerLimitSet"));
}

TEST(IgclPowerLimitDefault, SendsTheDefaultInMilliwatts) {
    Machine machine = RunningBoard();
    EXPECT_TRUE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(machine.TakeLog(), DefaultLog("200.000000"));
    EXPECT_EQ(TakeIntelTraffic(machine),
              Lines({"ctlOverclockGetProperties DE0000", "ctlOverclockPowerLimitSet DE0000 200000.000"}));
}

TEST(IgclPowerLimitDefault, FailuresEndIt) {
    Machine machine = RunningBoard();
    machine.Result("ctlOverclockPowerLimitSet", kFailure);
    EXPECT_FALSE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(machine.TakeLog(),
              Lines({kLimitDefault + " ... begin", FailureLine(kLimitDefault + " ctlOverclockPowerLimitSet")}));
    machine.Result("ctlOverclockGetProperties", kFailure);
    machine.TakeCalls();
    EXPECT_FALSE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(machine.TakeLog(),
              Lines({kLimitDefault + " ... begin", FailureLine(kLimitDefault + " ctlOverclockGetProperties")}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlOverclockGetProperties"}));
}

// ---- The clocks ----

// The GPU's offset reads 1.5 before and 2.25 after it is set, the memory's 30.5 and 40.25.
Machine BoardWithOffsets() {
    Machine machine = RunningBoard();
    machine.Reports(GpuOffset{1.5}).Then("ctlOverclockGpuFrequencyOffsetGet").Reports(GpuOffset{2.25});
    machine.Reports(VramOffset{30.5}).Then("ctlOverclockVramFrequencyOffsetGet").Reports(VramOffset{40.25});
    return machine;
}

Lines const kUserLog = {"[IGCLHelper::SetPerformanceUser()] ... begin",
                        "[IGCLHelper::SetPerformanceUser()] current gpu frequency offset ... 1.500000 MHz",
                        "[IGCLHelper::SetPerformanceUser()] (verify) new current gpu frequency offset ... 2.250000 MHz",
                        "[IGCLHelper::SetPerformanceUser()] current vram frequency offset ... 30.500000 MHz",
                        "[IGCLHelper::SetPerformanceUser()] (verify) new current vram frequency offset ... "
                        "40.250000 MHz"};

TEST(IgclClocks, OffsetsAreSetStepByStep) {
    Machine machine = BoardWithOffsets();
    EXPECT_TRUE(machine.Api().SetPerformanceUser(100, 1, -50, 2));
    EXPECT_EQ(machine.TakeLog(), kUserLog);
    EXPECT_EQ(TakeIntelTraffic(machine),
              Lines({"ctlOverclockGpuFrequencyOffsetGet DE0000", "ctlOverclockWaiverSet DE0000",
                     "ctlOverclockGpuFrequencyOffsetSet DE0000 100.000", "ctlOverclockGpuFrequencyOffsetGet DE0000",
                     "ctlOverclockVramFrequencyOffsetGet DE0000", "ctlOverclockVramFrequencyOffsetSet DE0000 -50.000",
                     "ctlOverclockVramFrequencyOffsetGet DE0000"}));
}

TEST(IgclClocks, AnyOffsetIsSentZeroAsWell) {
    Machine machine = RunningBoard();
    for (int const offset : {0, -1, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(offset);
        EXPECT_TRUE(machine.Api().SetPerformanceUser(offset, 0, offset, 0));
        EXPECT_EQ(SentValue(machine, "ctlOverclockGpuFrequencyOffsetSet"), offset);
        EXPECT_EQ(SentValue(machine, "ctlOverclockVramFrequencyOffsetSet"), offset);
        EXPECT_FALSE(std::signbit(SentValue(machine, "ctlOverclockVramFrequencyOffsetSet")) && offset == 0);
    }
}

TEST(IgclClocks, VoltagesAreNotUsed) {
    Machine machine = RunningBoard();
    EXPECT_TRUE(machine.Api().SetPerformanceUser(1, INT_MAX, 2, INT_MIN));
    for (std::string const& line : TakeIntelTraffic(machine)) {
        EXPECT_EQ(line.find("Voltage"), std::string::npos) << line;
    }
}

// A step that fails: its call, the how-manyth of this entry point, and how many lines of the log came before.
struct Step {
    char const* name;
    char const* entryPoint;
    int call;
    std::size_t lines;
    std::size_t calls;
};

void PrintTo(Step const& step, std::ostream* out) {
    *out << step.name;
}

Step const kSteps[] = {
    {"GpuRead", "ctlOverclockGpuFrequencyOffsetGet", 1, 1, 1},
    {"Waiver", "ctlOverclockWaiverSet", 1, 2, 2},
    {"GpuWrite", "ctlOverclockGpuFrequencyOffsetSet", 1, 2, 3},
    {"GpuReadBack", "ctlOverclockGpuFrequencyOffsetGet", 2, 2, 4},
    {"VramRead", "ctlOverclockVramFrequencyOffsetGet", 1, 3, 5},
    {"VramWrite", "ctlOverclockVramFrequencyOffsetSet", 1, 4, 6},
    {"VramReadBack", "ctlOverclockVramFrequencyOffsetGet", 2, 4, 7},
};

class IgclClockStep : public testing::TestWithParam<Step> {};

TEST_P(IgclClockStep, FailureEndsIt) {
    Machine machine = BoardWithOffsets();
    Step const& step = GetParam();
    std::string const entryPoint = step.entryPoint;
    // Responses of their own for calls with the device come before the general ones.
    std::string const own = For(entryPoint, kDevice);
    if (step.call == 2) {
        double const first = entryPoint == GpuOffset::kReadBy.entryPoint ? 1.5 : 30.5;
        machine.Write(own, GpuOffset::kReadBy.argument, BytesOf(first)).Then(own);
    }
    machine.Result(own, kFailure);
    EXPECT_FALSE(machine.Api().SetPerformanceUser(100, 1, -50, 2));
    Lines expected(kUserLog.begin(), kUserLog.begin() + static_cast<std::ptrdiff_t>(step.lines));
    expected.push_back(FailureLine(kUser + " " + entryPoint));
    EXPECT_EQ(machine.TakeLog(), expected);
    std::vector<std::string> const names = machine.TakeCallNames();
    EXPECT_EQ(names.size(), step.calls);
    EXPECT_EQ(names.back(), entryPoint);
}

TEST_P(IgclClockStep, MissingFunctionCountsAsNotInitialized) {
    Machine machine = BoardWithOffsets();
    machine.Hide(GetParam().entryPoint);
    EXPECT_FALSE(machine.Api().SetPerformanceUser(100, 1, -50, 2));
    EXPECT_EQ(machine.TakeLog().back(), NotInitializedLine(kUser + " " + GetParam().entryPoint));
}

INSTANTIATE_TEST_SUITE_P(Steps, IgclClockStep, testing::ValuesIn(kSteps),
                         [](auto const& given) { return given.param.name; });

}  // namespace
}  // namespace gputune::test
