// A percentage for the fan reaches the board.
#include <gtest/gtest.h>

#include "boards.h"

using namespace gputune::test;

TEST(FirstTest, PercentageForTheFanReachesTheBoard) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_TRUE(machine.Api().SetFanSpeed(50));
    EXPECT_EQ(machine.LastCall("ADL2_Overdrive5_FanSpeed_Set").record, Ints({16, 1, 50, 1}));
}
