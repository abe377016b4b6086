// A percentage for the fan reaches the board.
#include <gtest/gtest.h>

#include "boards.h"

using namespace gputune::test;

TEST(FirstTest, PercentageForTheFanReachesTheBoard) {
    Machine machine = OverdriveNBoard().Started();
    EXPECT_TRUE(machine.Api().SetFanSpeed(50));
    EXPECT_EQ(machine.Sent<FanSpeed>(), (FanSpeed{.type = kPercent, .speed = 50, .flags = kUserDefined}));
}
