// What the host tool checks before it sends anything to a board.
#include <gtest/gtest.h>

#include <string>

#include "tool/board/Checks.h"
#include "tool/values/Errors.h"
#include "tool/values/FanCurve.h"

namespace gputune::tool {
namespace {

FanSetting CurveSetting(int points) {
    FanSetting setting{};
    setting.Valid = true;
    setting.PointCount = points;
    for (FanPoint& point : setting.Points) {
        point = {.DefaultSpeed = 30,
                 .DefaultTemperature = 40,
                 .MaxSpeed = 90,
                 .MinSpeed = 20,
                 .MaxTemperature = 100,
                 .MinTemperature = 25,
                 .CurrentSpeed = 30,
                 .CurrentTemperature = 40};
    }
    return setting;
}

ClockSetting GpuSetting() {
    return {.Valid = true,
            .DefaultClock = 1400,
            .DefaultVoltage = 1100,
            .MaxClock = 2000,
            .MinClock = 800,
            .MaxVoltage = 1200,
            .MinVoltage = 750,
            .CurrentClock = 1500,
            .CurrentVoltage = 1050};
}

ClockSetting MemorySetting() {
    return {.Valid = true,
            .DefaultClock = 1000,
            .DefaultVoltage = -1,
            .MaxClock = 1200,
            .MinClock = 500,
            .MaxVoltage = -1,
            .MinVoltage = -1,
            .CurrentClock = 1000,
            .CurrentVoltage = -1};
}

std::string MessageOf(auto const& action) {
    try {
        action();
    } catch (std::runtime_error const& error) {
        return error.what();
    }
    return "no error";
}

void ExpectCommand(ClockCommand const& command, int gpuClock, int gpuVoltage, int memClock, int memVoltage) {
    EXPECT_EQ(command.gpuClock, gpuClock);
    EXPECT_EQ(command.gpuVoltage, gpuVoltage);
    EXPECT_EQ(command.memClock, memClock);
    EXPECT_EQ(command.memVoltage, memVoltage);
}

TEST(ToolRange, BothEndsAreAllowed) {
    EXPECT_NO_THROW(CheckRange("Power limit", -20, -20, 20, Unit::Percent));
    EXPECT_NO_THROW(CheckRange("Power limit", 20, -20, 20, Unit::Percent));
}

TEST(ToolRange, OutsideNamesValueAndRangeWithUnits) {
    EXPECT_EQ(MessageOf([] { CheckRange("Power limit", 21, -20, 20, Unit::Percent); }),
              "Power limit 21 % is outside the board's range: -20 to 20 %.");
    EXPECT_THROW(CheckRange("Power limit", -21, -20, 20, Unit::Percent), ToolError);
}

TEST(ToolCurvePoint, TemperatureComesFirst) {
    FanTablePoint const point = ParseFanPoint("60:45");
    EXPECT_EQ(point.FanTemperature, 60);
    EXPECT_EQ(point.FanSpeed, 45);
}

TEST(ToolCurvePoint, TemperatureBelowZeroIsANumber) {
    EXPECT_EQ(ParseFanPoint("-5:0").FanTemperature, -5);
}

class ToolMalformedCurvePoint : public testing::TestWithParam<char const*> {};

TEST_P(ToolMalformedCurvePoint, IsAnErrorThatQuotesIt) {
    std::string const text = GetParam();
    EXPECT_THROW(ParseFanPoint(text), FanCurveError);
    EXPECT_NE(MessageOf([&] { ParseFanPoint(text); }).find("\"" + text + "\""), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Texts, ToolMalformedCurvePoint,
                         testing::Values("", ":", "60", "60:", ":45", "60:45:1", "60 :45", "60:45%", "60.5:45",
                                         "+60:45", "60:-1", "60:101", "99999999999:5", "a:b"));

TEST(ToolCurve, EqualNeighboursAreAllowed) {
    std::vector<FanTablePoint> const curve = ParseFanCurve({"40:20", "40:20", "60:30"});
    ASSERT_EQ(curve.size(), 3U);
    EXPECT_EQ(curve[2].FanTemperature, 60);
}

TEST(ToolCurve, FallingTemperatureNamesThePoints) {
    EXPECT_EQ(MessageOf([] {
                  ParseFanCurve({"40:20", "55:30", "50:40"});
              }),
              "The temperature of point 3 is below that of point 2.");
}

TEST(ToolCurve, FallingSpeedIsAnError) {
    EXPECT_THROW(ParseFanCurve({"40:20", "55:19"}), FanCurveError);
}

TEST(ToolCurve, WithinTheBoardsRangeIsAccepted) {
    EXPECT_NO_THROW(CheckCurve(ParseFanCurve({"25:20", "55:30", "65:45", "75:65", "100:90"}), CurveSetting(5),
                               GPUTUNE_API_OVERDRIVE8));
}

TEST(ToolCurve, TemperatureOutsideTheBoardsRangeIsRefused) {
    EXPECT_EQ(MessageOf([] {
                  CheckCurve(ParseFanCurve({"25:20", "55:30", "65:45", "75:65", "101:90"}), CurveSetting(5),
                             GPUTUNE_API_OVERDRIVE8);
              }),
              "The temperature of point 5, 101 \u00b0C is outside the board's range: 25 to 100 \u00b0C.");
}

TEST(ToolCurve, SpeedOutsideThatPointsRangeIsRefused) {
    FanSetting setting = CurveSetting(5);
    setting.Points[1].MinSpeed = 31;
    EXPECT_THROW(
        CheckCurve(ParseFanCurve({"25:20", "55:30", "65:45", "75:65", "85:90"}), setting, GPUTUNE_API_OVERDRIVE8),
        ToolError);
}

TEST(ToolCurve, AnotherNumberOfPointsThanTheBoardsIsAUsageError) {
    EXPECT_THROW(CheckCurve(ParseFanCurve({"40:20", "55:30"}), CurveSetting(5), GPUTUNE_API_OVERDRIVE8), UsageError);
}

TEST(ToolCurve, BoardWithASinglePointHasNoCurve) {
    EXPECT_EQ(MessageOf([] { CheckCurve(ParseFanCurve({"40:30"}), CurveSetting(1), GPUTUNE_API_OVERDRIVEN); }),
              "Not supported by this board: it has no fan curve.");
}

TEST(ToolCurve, IntelFanIsLeftToItsDriver) {
    EXPECT_NO_THROW(CheckCurve(ParseFanCurve({"40:20", "55:30"}), FanSetting{}, GPUTUNE_API_IGCL));
}

TEST(ToolFanSpeed, RangeOfTheFirstCurvePointGoverns) {
    EXPECT_NO_THROW(CheckFanSpeed(20, CurveSetting(5)));
    EXPECT_NO_THROW(CheckFanSpeed(90, CurveSetting(5)));
    EXPECT_THROW(CheckFanSpeed(19, CurveSetting(5)), ToolError);
    EXPECT_THROW(CheckFanSpeed(91, CurveSetting(5)), ToolError);
}

TEST(ToolFanSpeed, UnknownRangeIsLeftToTheBoard) {
    EXPECT_NO_THROW(CheckFanSpeed(5, CurveSetting(1)));
    EXPECT_NO_THROW(CheckFanSpeed(5, FanSetting{}));
    FanSetting setting = CurveSetting(5);
    setting.Points[0].MinSpeed = kUntouched;
    EXPECT_NO_THROW(CheckFanSpeed(5, setting));
}

TEST(ToolClocks, OverdriveNKeepsAbsentValuesWithZero) {
    ExpectCommand(PlanClocks(GPUTUNE_API_OVERDRIVEN, {.gpuClock = 1600}, GpuSetting(), MemorySetting()), 1600, 0, 0, 0);
    ExpectCommand(
        PlanClocks(GPUTUNE_API_OVERDRIVEN, {.gpuVoltage = 1100, .memClock = 900}, GpuSetting(), MemorySetting()), 0,
        1100, 900, 0);
}

TEST(ToolClocks, OverdriveNMemoryVoltageHasNoRangeAndIsPassedOn) {
    ExpectCommand(PlanClocks(GPUTUNE_API_OVERDRIVEN, {.memVoltage = 950}, GpuSetting(), MemorySetting()), 0, 0, 0, 950);
}

TEST(ToolClocks, ValuesOutsideTheRangesAreRefused) {
    auto const plan = [](ClockRequest const& request) {
        PlanClocks(GPUTUNE_API_OVERDRIVEN, request, GpuSetting(), MemorySetting());
    };
    EXPECT_EQ(MessageOf([&] { plan({.gpuClock = 2001}); }),
              "GPU clock 2001 MHz is outside the board's range: 800 to 2000 MHz.");
    EXPECT_THROW(plan({.gpuClock = 799}), ToolError);
    EXPECT_THROW(plan({.gpuVoltage = 1201}), ToolError);
    EXPECT_THROW(plan({.memClock = 499}), ToolError);
    EXPECT_NO_THROW(plan({.gpuClock = 2000, .gpuVoltage = 750, .memClock = 500}));
}

TEST(ToolClocks, Overdrive8SendsTheCurrentClockForWhatIsAbsent) {
    ExpectCommand(PlanClocks(GPUTUNE_API_OVERDRIVE8, {.gpuClock = 1600}, GpuSetting(), MemorySetting()), 1600, 0, 1000,
                  0);
    ExpectCommand(PlanClocks(GPUTUNE_API_OVERDRIVE8, {.gpuClock = 0, .memClock = 900}, GpuSetting(), MemorySetting()),
                  1500, 0, 900, 0);
}

TEST(ToolClocks, Overdrive8WithoutMemorySettingSendsNoMemoryClock) {
    ExpectCommand(PlanClocks(GPUTUNE_API_OVERDRIVE8, {.gpuClock = 1600}, GpuSetting(), ClockSetting{}), 1600, 0, 0, 0);
    EXPECT_EQ(MessageOf([] { PlanClocks(GPUTUNE_API_OVERDRIVE8, {.memClock = 900}, GpuSetting(), ClockSetting{}); }),
              "Not supported by this board: it has no adjustable memory clock.");
}

TEST(ToolClocks, Overdrive8TellsClocksThatAreInEffect) {
    EXPECT_TRUE(PlanClocks(GPUTUNE_API_OVERDRIVE8, {.gpuClock = 1500}, GpuSetting(), MemorySetting()).inEffect);
    EXPECT_FALSE(PlanClocks(GPUTUNE_API_OVERDRIVE8, {.gpuClock = 1501}, GpuSetting(), MemorySetting()).inEffect);
    EXPECT_FALSE(PlanClocks(GPUTUNE_API_OVERDRIVE8, {.memClock = 999}, GpuSetting(), MemorySetting()).inEffect);
}

TEST(ToolClocks, Overdrive8KeepsNoClockThatCannotBeRead) {
    ClockSetting gpu = GpuSetting();
    ClockSetting memory = MemorySetting();
    gpu.CurrentClock = -1;
    EXPECT_THROW(PlanClocks(GPUTUNE_API_OVERDRIVE8, {.memClock = 999}, gpu, memory), ToolError);
    EXPECT_EQ(PlanClocks(GPUTUNE_API_OVERDRIVE8, {.gpuClock = 1501}, gpu, memory).gpuClock, 1501);
    memory.CurrentClock = -1;
    EXPECT_THROW(PlanClocks(GPUTUNE_API_OVERDRIVE8, {.gpuClock = 1501}, GpuSetting(), memory), ToolError);
    // A board without a memory clock keeps none.
    EXPECT_EQ(PlanClocks(GPUTUNE_API_OVERDRIVE8, {.gpuClock = 1501}, GpuSetting(), ClockSetting{}).memClock, 0);
}

TEST(ToolClocks, Overdrive8RefusesVoltages) {
    EXPECT_THROW(PlanClocks(GPUTUNE_API_OVERDRIVE8, {.gpuVoltage = 1000}, GpuSetting(), MemorySetting()), ToolError);
    EXPECT_THROW(PlanClocks(GPUTUNE_API_OVERDRIVE8, {.memVoltage = 1000}, GpuSetting(), MemorySetting()), ToolError);
}

TEST(ToolClocks, IntelTakesOffsetsOfBothClocks) {
    ExpectCommand(PlanClocks(GPUTUNE_API_IGCL, {.gpuClock = -50, .memClock = 0}, ClockSetting{}, ClockSetting{}), -50,
                  0, 0, 0);
    EXPECT_THROW(PlanClocks(GPUTUNE_API_IGCL, {.gpuClock = 50}, ClockSetting{}, ClockSetting{}), UsageError);
    EXPECT_THROW(
        PlanClocks(GPUTUNE_API_IGCL, {.gpuClock = 50, .gpuVoltage = 1, .memClock = 0}, ClockSetting{}, ClockSetting{}),
        ToolError);
}

TEST(ToolClocks, NothingToSetIsAUsageError) {
    EXPECT_THROW(PlanClocks(GPUTUNE_API_OVERDRIVEN, {}, GpuSetting(), MemorySetting()), UsageError);
    EXPECT_THROW(PlanClocks(GPUTUNE_API_OVERDRIVE8, {.gpuClock = 0}, GpuSetting(), MemorySetting()), UsageError);
}

TEST(ToolClocks, NegativeClockOfAnAmdBoardIsAUsageError) {
    EXPECT_THROW(PlanClocks(GPUTUNE_API_OVERDRIVEN, {.gpuClock = -1}, GpuSetting(), MemorySetting()), UsageError);
}

}  // namespace
}  // namespace gputune::tool
