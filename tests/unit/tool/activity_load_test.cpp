// Loads made of a counter, and the times at which none can be made.
#include "tool/serve/ActivityLoad.h"

#include <gtest/gtest.h>

#include <limits>

using namespace gputune::tool;

namespace {

TEST(ActivityLoadTest, GrowthOverTime) {
    ActivityLoad load(5);
    EXPECT_FALSE(load.Add(100, 0, 0.01));
    EXPECT_NEAR(load.Add(100.5, 1, 1.01).value_or(-1), 0.5, 1e-9);
    EXPECT_NEAR(load.Add(100.5, 2, 2.01).value_or(-1), 0, 1e-9);
    EXPECT_NEAR(load.Add(101.5, 3, 3.01).value_or(-1), 1, 1e-9);
}

TEST(ActivityLoadTest, LittleMoreThanTimeIsFullLoad) {
    ActivityLoad load(5);
    load.Add(0, 0, 0.01);
    EXPECT_EQ(load.Add(1.05, 1, 1.01), 1.0);
}

TEST(ActivityLoadTest, CounterThatIsFasterThanTimeHasAnotherUnitForGood) {
    ActivityLoad load(5);
    load.Add(0, 0, 0.01);
    EXPECT_FALSE(load.Add(2, 1, 1.01));
    EXPECT_FALSE(load.Add(2.1, 2, 2.01));
    EXPECT_FALSE(load.Add(2.2, 3, 3.01));
    load.Reset();
    EXPECT_FALSE(load.Add(2.3, 4, 4.01));
    EXPECT_FALSE(load.Add(2.4, 5, 5.01));
}

TEST(ActivityLoadTest, CounterThatShrinksBeginsAnew) {
    ActivityLoad load(5);
    load.Add(100, 0, 0.01);
    EXPECT_FALSE(load.Add(0.1, 1, 1.01));
    EXPECT_NEAR(load.Add(0.4, 2, 2.01).value_or(-1), 0.3, 1e-9);
}

TEST(ActivityLoadTest, TooShortATimeTakesAnEarlierReading) {
    ActivityLoad load(5);
    double time = 0;
    for (int i = 0; i < 5; ++i) {
        std::optional<double> const made = load.Add(time / 2, time, time + 0.01);
        EXPECT_EQ(made.has_value(), i == 4 && time - 0.01 >= 0.8) << i;
        time += 0.2;
    }
    EXPECT_NEAR(load.Add(time / 2, time, time + 0.01).value_or(-1), 0.5, 1e-9);
}

TEST(ActivityLoadTest, TimesThatAreTooUncertainGiveNone) {
    ActivityLoad load(5);
    load.Add(0, 0, 0.4);
    EXPECT_FALSE(load.Add(0.5, 1.3, 1.7));
    EXPECT_NEAR(load.Add(2.1, 4.41, 4.5).value_or(-1), (2.1 - 0.5) / 2.95, 0.01);
}

TEST(ActivityLoadTest, TooLongATimeGivesNone) {
    ActivityLoad load(5);
    load.Add(0, 0, 0.01);
    EXPECT_FALSE(load.Add(3, 6, 6.01));
    EXPECT_TRUE(load.Add(3.5, 7, 7.01));
}

TEST(ActivityLoadTest, ForgetsWhenTold) {
    ActivityLoad load(5);
    load.Add(0, 0, 0.01);
    load.Reset();
    EXPECT_FALSE(load.Add(0.5, 1, 1.01));
}

TEST(ActivityLoadTest, WhatIsNoNumberIsNoReading) {
    ActivityLoad load(5);
    load.Add(0, 0, 0.01);
    EXPECT_FALSE(load.Add(std::numeric_limits<double>::quiet_NaN(), 1, 1.01));
    EXPECT_FALSE(load.Add(std::numeric_limits<double>::infinity(), 2, 2.01));
    EXPECT_FALSE(load.Add(1, 3, 3.01));
    EXPECT_TRUE(load.Add(1.5, 4, 4.01));
}

}  // namespace
