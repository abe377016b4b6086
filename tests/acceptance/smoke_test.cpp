// The shortest way through the library: from detection to a temperature.
#include <gtest/gtest.h>

#include "boards.h"

namespace gputune::test {
namespace {

TEST(FirstLight, OverdriveNBoardReportsItsTemperature) {
    Machine machine = OverdriveNBoard();
    machine.Reports(Temperature{.millidegrees = 65500});

    ASSERT_TRUE(machine.Init());
    ASSERT_TRUE(machine.Api().IsInitOk());
    machine.Api().FetchHwmValues();

    HwmValue const temperature = machine.Api().GetHwmValue(2);
    EXPECT_TRUE(temperature.Valid);
    EXPECT_EQ(temperature.Value, 65.5);
    EXPECT_STREQ(temperature.Name, "GPU Temperature");
}

TEST(FirstLight, Overdrive8BoardReportsItsTemperature) {
    Machine machine = Overdrive8Board(0).Started();
    ASSERT_TRUE(machine.Api().IsInitOk());
    machine.Api().FetchHwmValues();

    HwmValue const temperature = machine.Api().GetHwmValue(2);
    EXPECT_TRUE(temperature.Valid);
    EXPECT_EQ(temperature.Value, 61.0);
}

}  // namespace
}  // namespace gputune::test
