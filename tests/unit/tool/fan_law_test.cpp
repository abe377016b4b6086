// The law of a held fan: what it does with given readings, and with every shipped board's thermal model in closed loop.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "closed_loop.h"
#include "tool/hold/FanLaw.h"

namespace gputune::tool {
namespace {

// 20 % up to 40 °C, 60 % at 60 °C, 100 % from 80 °C on: 2 % a kelvin.
FanLawSettings Law() {
    FanLawSettings law;
    law.points = {{20, 40}, {60, 60}, {100, 80}};
    law.hysteresis = 3;
    law.spinDownDelay = 8;
    return law;
}

// A fan under the law, with a reading every second.
class HeldFan {
public:
    explicit HeldFan(FanLawSettings law) : law_(std::move(law)) {}

    int Read(double temperature) {
        state_ = NextFanSpeed(law_, state_, temperature, now_);
        now_ += 1;
        return state_.speed;
    }
    // Returns the last speed.
    int ReadFor(int seconds, double temperature) {
        for (int i = 1; i < seconds; ++i) {
            Read(temperature);
        }
        return Read(temperature);
    }

private:
    FanLawSettings law_;
    FanLawState state_;
    double now_ = 1000;
};

TEST(ToolFanLaw, SpeedIsLinearBetweenPointsAndLevelOutside) {
    FanLawSettings const law = Law();
    EXPECT_DOUBLE_EQ(SpeedOnCurve(law, -40), 20);
    EXPECT_DOUBLE_EQ(SpeedOnCurve(law, 40), 20);
    EXPECT_DOUBLE_EQ(SpeedOnCurve(law, 45.5), 31);
    EXPECT_DOUBLE_EQ(SpeedOnCurve(law, 60), 60);
    EXPECT_DOUBLE_EQ(SpeedOnCurve(law, 79), 98);
    EXPECT_DOUBLE_EQ(SpeedOnCurve(law, 80), 100);
    EXPECT_DOUBLE_EQ(SpeedOnCurve(law, 200), 100);
}

TEST(ToolFanLaw, TwoPointsOfOneTemperatureAreAStep) {
    FanLawSettings law = Law();
    law.points = {{20, 50}, {70, 50}, {90, 60}};
    EXPECT_DOUBLE_EQ(SpeedOnCurve(law, 49.9), 20);
    EXPECT_DOUBLE_EQ(SpeedOnCurve(law, 50), 70);
    EXPECT_DOUBLE_EQ(SpeedOnCurve(law, 55), 80);
}

TEST(ToolFanLaw, SpeedStaysWithinTheBoardsFloorAndCeiling) {
    FanLawSettings law = Law();
    law.floor = 35;
    law.ceiling = 90;
    EXPECT_DOUBLE_EQ(SpeedOnCurve(law, 30), 35);
    EXPECT_DOUBLE_EQ(SpeedOnCurve(law, 85), 90);
    HeldFan fan(law);
    EXPECT_EQ(fan.Read(30), 35);
    EXPECT_EQ(fan.Read(99), 90);
}

TEST(ToolFanLaw, FirstReadingGivesTheCurvesSpeed) {
    EXPECT_EQ(HeldFan(Law()).Read(55), 50);
}

TEST(ToolFanLaw, ReadingThatIsNoNumberGivesTheHighestSpeed) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(SpeedOnCurve(Law(), nan), 100);
    HeldFan fan(Law());
    fan.Read(50);
    EXPECT_EQ(fan.Read(nan), 100);
    EXPECT_EQ(fan.ReadFor(10, 50), 40) << "it falls again";
}

TEST(ToolFanLaw, RisesWithTheReading) {
    HeldFan fan(Law());
    fan.Read(50);
    EXPECT_EQ(fan.Read(50.5), 41);
    EXPECT_EQ(fan.Read(70), 80);
}

TEST(ToolFanLaw, FallsWhenTheSpinDownDelayHasPassed) {
    HeldFan fan(Law());
    fan.Read(70);
    EXPECT_EQ(fan.ReadFor(8, 50), 80) << "seven seconds after the first low reading";
    EXPECT_EQ(fan.Read(50), 40);
}

TEST(ToolFanLaw, FallsAtOnceWithoutADelay) {
    FanLawSettings law = Law();
    law.spinDownDelay = 0;
    HeldFan fan(law);
    fan.Read(70);
    EXPECT_EQ(fan.Read(66), 72);
}

TEST(ToolFanLaw, ReadingInsideTheHysteresisBeginsTheDelayAnew) {
    HeldFan fan(Law());
    fan.Read(70);
    fan.ReadFor(8, 50);
    fan.Read(67);  // no more than 3 K below
    EXPECT_EQ(fan.ReadFor(8, 50), 80);
    EXPECT_EQ(fan.Read(50), 40);
}

TEST(ToolFanLaw, FallsToTheHighestReadingOfTheDelay) {
    HeldFan fan(Law());
    fan.Read(70);
    fan.ReadFor(3, 50);
    fan.Read(62);
    EXPECT_EQ(fan.ReadFor(5, 50), 64) << "what 62 degrees ask for";
    EXPECT_EQ(fan.ReadFor(9, 50), 40);
}

TEST(ToolFanLaw, StaysInsideTheHysteresisForAWhileAndThenSettlesOnTheCurve) {
    HeldFan fan(Law());
    fan.Read(70);
    EXPECT_EQ(fan.ReadFor(8 + 29, 68), 80);
    EXPECT_EQ(fan.ReadFor(2, 68), 76) << "what 68 degrees ask for";
    EXPECT_EQ(fan.Read(69), 78) << "and from there it rises at once";
}

TEST(ToolFanLaw, SteadyTemperatureGivesTheCurvesSpeedInTheEnd) {
    for (double hysteresis : {0.0, 3.0, 20.0}) {
        for (double delay : {0.0, 8.0, 45.0}) {
            for (double temperature : {30.0, 55.5, 69.9}) {
                FanLawSettings law = Law();
                law.hysteresis = hysteresis;
                law.spinDownDelay = delay;
                HeldFan fan(law);
                fan.Read(70);
                double const passing = (70 + temperature) / 2;
                fan.Read(passing);
                EXPECT_EQ(fan.ReadFor(2 * static_cast<int>(delay + kSettleSeconds) + 2, temperature),
                          std::lround(SpeedOnCurve(law, temperature)))
                    << hysteresis << " K, " << delay << " s, " << temperature << " degrees";
            }
        }
    }
}

// The most changes of direction in 60 seconds, in ten minutes of these readings.
int MostTurns(FanLawSettings const& law, std::function<double(int)> const& temperature) {
    HeldFan fan(law);
    std::vector<test::LoopSample> samples;
    for (int second = 0; second < 600; ++second) {
        samples.push_back({.seconds = static_cast<double>(second), .wanted = fan.Read(temperature(second))});
    }
    return test::FiguresOf(samples).mostTurns;
}

TEST(ToolFanLaw, DirectionChangesFourTimesAMinuteAtMostWhateverTheReadings) {
    FanLawSettings law = Law();
    law.hysteresis = 0;
    law.spinDownDelay = 0;
    for (int period : {2, 3, 7, 20, 29, 31, 45}) {
        EXPECT_LE(MostTurns(law, [&](int second) { return second % period == 0 ? 75 : 45; }), 4) << period;
        EXPECT_LE(MostTurns(law, [&](int second) { return 60 + 20 * std::sin(6.28318 * second / period); }), 4)
            << period;
    }
    law.zeroRpm = ZeroRpm{.start = 50, .stop = 46, .leastRunningTime = 0};
    EXPECT_LE(MostTurns(law, [](int second) { return second % 4 == 0 ? 75 : 45; }), 4);
}

TEST(ToolFanLaw, FallThatHadToWaitComesOnceThereIsRoomForIt) {
    FanLawSettings law = Law();
    law.hysteresis = 0;
    law.spinDownDelay = 0;
    HeldFan fan(law);
    for (int i = 0; i < 10; ++i) {
        fan.Read(75);
        fan.Read(45);
    }
    EXPECT_GT(fan.Read(45), 30) << "it waits";
    EXPECT_EQ(fan.ReadFor(60, 45), 30);
}

FanLawSettings ZeroRpmLaw() {
    FanLawSettings law = Law();
    law.floor = 25;
    law.zeroRpm = ZeroRpm{.start = 55, .stop = 45, .leastRunningTime = 30};
    return law;
}

TEST(ToolFanLaw, FanOfACoolBoardStandsFromTheFirstReadingOn) {
    HeldFan fan(ZeroRpmLaw());
    EXPECT_EQ(fan.Read(45), 0);
    EXPECT_EQ(HeldFan(ZeroRpmLaw()).Read(46), 32) << "between the two points it turns";
}

TEST(ToolFanLaw, StandingFanStartsAtItsStartTemperatureOnly) {
    HeldFan fan(ZeroRpmLaw());
    fan.Read(40);
    EXPECT_EQ(fan.ReadFor(100, 54.9), 0);
    EXPECT_EQ(fan.Read(55), 50);
}

TEST(ToolFanLaw, TurningFanStopsAfterTheDelayAtItsStopTemperature) {
    HeldFan fan(ZeroRpmLaw());
    fan.ReadFor(60, 60);
    EXPECT_EQ(fan.ReadFor(100, 45.1), 30) << "the curve's speed, however long";
    EXPECT_EQ(fan.ReadFor(8, 45), 30);
    EXPECT_EQ(fan.Read(45), 0);
}

TEST(ToolFanLaw, ReadingAboveTheStopTemperatureBeginsItsDelayAnew) {
    HeldFan fan(ZeroRpmLaw());
    fan.ReadFor(60, 60);
    fan.ReadFor(8, 44);
    fan.Read(46);
    EXPECT_GT(fan.ReadFor(8, 44), 0);
    EXPECT_EQ(fan.Read(44), 0);
}

TEST(ToolFanLaw, FanThatStartedTurnsForItsLeastRunningTime) {
    HeldFan fan(ZeroRpmLaw());
    fan.Read(40);
    fan.Read(55);
    EXPECT_EQ(fan.ReadFor(29, 30), 25) << "at the board's floor";
    EXPECT_EQ(fan.Read(30), 0);
}

TEST(ToolFanLaw, StandingFanStartsWithAReadingThatIsNoNumber) {
    HeldFan fan(ZeroRpmLaw());
    fan.Read(40);
    EXPECT_EQ(fan.Read(std::numeric_limits<double>::quiet_NaN()), 100);
}

// The model takes clocks down in the last 4 K below the limit: a fan that cools enough never lets it come to that.
void ExpectQuietAndCool(FanLawSettings const& law, std::string const& what) {
    auto const boards = test::LoopBoards(GPUTUNE_BOARDS);
    EXPECT_GE(boards.size(), 15U);
    for (auto const& board : boards) {
        test::LoopFigures const figures = FiguresOf(RunLoop(board, law));
        EXPECT_LE(figures.mostTurns, 4) << board.name << ", " << what;
        EXPECT_GE(figures.mostTurns, 1) << board.name << ", " << what << ": the load reached the fan";
        EXPECT_LE(figures.highest, board.controls.temperatureLimit - 4) << board.name << ", " << what;
        EXPECT_GT(figures.highest, 50) << board.name << ", " << what << ": the load reached the board";
    }
}

TEST(ToolFanLawClosedLoop, EveryBoardIsQuietAndCool) {
    ExpectQuietAndCool(test::LoopLaw(), "the usual curve");
}

TEST(ToolFanLawClosedLoop, EveryBoardIsQuietAndCoolWithAStandingFan) {
    FanLawSettings law = test::LoopLaw();
    law.floor = 20;
    law.zeroRpm = ZeroRpm{.start = 50, .stop = 42, .leastRunningTime = 30};
    ExpectQuietAndCool(law, "zero-rpm");
}

TEST(ToolFanLawClosedLoop, EveryBoardIsQuietAndCoolWithASteepCurveAndNothingAgainstNoise) {
    FanLawSettings law = test::LoopLaw();
    law.points = {{20, 55}, {100, 60}};
    law.hysteresis = 0;
    law.spinDownDelay = 0;
    ExpectQuietAndCool(law, "steep");
}

}  // namespace
}  // namespace gputune::tool
