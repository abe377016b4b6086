// The thermal model: which way each reading goes when its cause changes.
#include <gtest/gtest.h>

#include "sim/model/ThermalModel.h"
#include "sim/model/TimeSource.h"

namespace {

using namespace gputune::sim;

constexpr double kLong = 600;  // seconds; every lag has settled

ModelSettings SteadyLoad(double percent) {
    ModelSettings settings;
    settings.load = {{.seconds = 1, .percent = percent}};
    settings.fanMaximum = 3000;
    return settings;
}

Readings Settled(ModelSettings const& settings, Controls const& controls) {
    ThermalModel model(settings, controls);
    model.AdvanceTo(kLong);
    return model.Read();
}

TEST(SimModel, FullLoadIsHotterThanIdle) {
    Readings const idle = Settled(SteadyLoad(3), {});
    Readings const loaded = Settled(SteadyLoad(100), {});
    EXPECT_LT(idle.temperature, 40);
    EXPECT_GT(loaded.temperature, 65);
    EXPECT_GT(loaded.fanRpm, idle.fanRpm);
    EXPECT_GT(loaded.engineClock, idle.engineClock);
    EXPECT_GT(loaded.memoryClock, idle.memoryClock);
    EXPECT_GT(loaded.memoryUsed, idle.memoryUsed);
    EXPECT_GT(loaded.hotspotTemperature, loaded.temperature);
    EXPECT_NEAR(loaded.load, 100, 0.01);
}

TEST(SimModel, SettledBoardStaysAsItStarts) {
    ThermalModel model(SteadyLoad(50), {});
    Readings const first = model.Read();
    model.AdvanceTo(kLong);
    EXPECT_NEAR(model.Read().temperature, first.temperature, 0.1);
    EXPECT_NEAR(model.Read().fanPercent, first.fanPercent, 0.1);
}

TEST(SimModel, CountersRunWithPowerAndLoad) {
    ModelSettings settings = SteadyLoad(50);
    settings.boardPower = 100;
    ThermalModel model(settings, {});
    model.AdvanceTo(10);
    Readings const first = model.Read();
    EXPECT_NEAR(first.activity, 5, 0.01);
    EXPECT_NEAR(first.energy, 10 * first.power, 1);
    model.AdvanceTo(20);
    EXPECT_NEAR(model.Read().activity, 10, 0.02);
    EXPECT_GT(model.Read().energy, first.energy + 100);
}

TEST(SimModel, FullFanCools) {
    Controls fast;
    fast.fanPercent = 100;
    EXPECT_LT(Settled(SteadyLoad(100), fast).temperature, Settled(SteadyLoad(100), {}).temperature - 3);
    EXPECT_NEAR(Settled(SteadyLoad(100), fast).fanRpm, 3000, 10);
}

TEST(SimModel, HigherPowerLimitGivesHigherClockAndTemperature) {
    Controls higher;
    higher.powerLimit = 1.1;
    Readings const before = Settled(SteadyLoad(100), {});
    Readings const after = Settled(SteadyLoad(100), higher);
    EXPECT_GT(after.engineClock, before.engineClock + 20);
    EXPECT_GT(after.temperature, before.temperature + 1);
    EXPECT_GT(after.power, before.power);
}

TEST(SimModel, PowerLimitBoundsThePower) {
    Controls lower;
    lower.powerLimit = 0.5;
    ModelSettings const settings = SteadyLoad(100);
    EXPECT_NEAR(Settled(settings, {}).power, settings.boardPower, 0.5);
    EXPECT_LT(Settled(settings, lower).power, 0.6 * settings.boardPower);
}

TEST(SimModel, HigherClockIsReachedWhenNothingLimitsIt) {
    Controls faster;
    faster.engineClock = 1400;
    faster.powerLimit = 2;
    EXPECT_NEAR(Settled(SteadyLoad(100), faster).engineClock, 1400, 0.01);
}

TEST(SimModel, TemperatureLimitThrottles) {
    Controls slowFan;
    slowFan.fanPercent = 0;
    slowFan.temperatureLimit = 70;
    Readings const readings = Settled(SteadyLoad(100), slowFan);
    EXPECT_LT(readings.temperature, 72);
    slowFan.temperatureLimit = 110;
    EXPECT_LT(readings.engineClock, Settled(SteadyLoad(100), slowFan).engineClock - 50);
}

TEST(SimModel, TemperatureFollowsSlowly) {
    ModelSettings settings = SteadyLoad(100);
    settings.load = {{.seconds = 10, .percent = 0}, {.seconds = kLong, .percent = 100}};
    ThermalModel model(settings, {});
    double const idle = model.Read().temperature;
    model.AdvanceTo(20);
    double const soon = model.Read().temperature;
    model.AdvanceTo(kLong);
    double const late = model.Read().temperature;
    EXPECT_GT(soon, idle + 5);
    EXPECT_GT(late, soon + 5);
}

TEST(SimModel, LoadProfileRepeats) {
    ModelSettings settings = SteadyLoad(0);
    settings.load = {{.seconds = 30, .percent = 0}, {.seconds = 30, .percent = 80}};
    ThermalModel model(settings, {});
    for (double start : {0.0, 60.0, 600.0}) {
        model.AdvanceTo(start + 28);
        EXPECT_LT(model.Read().load, 1) << start;
        model.AdvanceTo(start + 58);
        EXPECT_NEAR(model.Read().load, 80, 1) << start;
    }
}

TEST(SimModel, FanStandsStillBelowTheCurveWithZeroRpm) {
    Controls controls;
    controls.zeroRpm = true;
    EXPECT_EQ(Settled(SteadyLoad(3), controls).fanRpm, 0);
    EXPECT_GT(Settled(SteadyLoad(100), controls).fanRpm, 500);
}

TEST(SimModel, SameTimesGiveSameReadings) {
    ThermalModel first({}, {});
    ThermalModel second({}, {});
    for (int i = 1; i < 200; ++i) {
        first.AdvanceTo(0.7 * i);
        second.AdvanceTo(0.7 * i);
    }
    EXPECT_EQ(first.Read().temperature, second.Read().temperature);
    EXPECT_EQ(first.Read().fanRpm, second.Read().fanRpm);
}

TEST(SimModel, EarlierTimeChangesNothing) {
    ThermalModel model({}, {});
    model.AdvanceTo(40);
    Readings const before = model.Read();
    model.AdvanceTo(10);
    EXPECT_EQ(model.Read().temperature, before.temperature);
    EXPECT_EQ(model.Read().load, before.load);
}

TEST(SimModel, FixedReadingsNeverMove) {
    ModelSettings settings = SteadyLoad(100);
    settings.fixed = Readings{};
    settings.fixed->temperature = 65.5;
    settings.fixed->fanRpm = 1234;
    Controls fast;
    fast.fanPercent = 100;
    ThermalModel model(settings, fast);
    model.AdvanceTo(kLong);
    EXPECT_EQ(model.Read().temperature, 65.5);
    EXPECT_EQ(model.Read().fanRpm, 1234);
}

TEST(SimTime, MovesByHandOnlyOnceMovedByHand) {
    TimeSource time;
    time.Advance(1500);
    double const start = time.Now();
    EXPECT_GE(start, 1.5);
    EXPECT_EQ(time.Now(), start);
    time.Advance(250);
    EXPECT_NEAR(time.Now(), start + 0.25, 1e-9);
}

}  // namespace
