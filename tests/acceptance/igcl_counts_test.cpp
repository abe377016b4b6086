// Counts of devices and fans that no machine has.
#include <gtest/gtest.h>

#include <climits>

#include "intel_board.h"

namespace gputune::test {
namespace {

constexpr int kMost = 1024;
constexpr int kGarbage[] = {kMost + 1, 0x10000, 0x01000000, 0x0FFFFFFF, INT_MAX, INT_MIN, -1};

TEST(IgclCounts, TooManyFansAreNotWalked) {
    Machine machine = IntelBoard().Started();
    for (int const count : kGarbage) {
        SCOPED_TRACE(count);
        OrderFanList(machine, count);
        EXPECT_FALSE(machine.Api().SetFanSpeed(40));
        EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlEnumFans"}));
        EXPECT_EQ(machine.TakeLog(), Lines({"[IGCLHelper::SetFanSpeed(int)] ... begin",
                                            "[IGCLHelper::SetFanSpeed(int)] Number of Fan Handles ... " +
                                                std::to_string(static_cast<unsigned>(count)),
                                            "[IGCLHelper::SetFanSpeed(int)] ... malloc memory for fans failed"}));
    }
}

TEST(IgclCounts, TheMostFansAreAllSet) {
    Machine machine = IntelBoard();
    OrderFanList(machine, kMost);
    OrderModeOfOtherFans(machine, FixedFan().modes);
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_TRUE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.CountOf("ctlFanSetFixedSpeedMode"), kMost);
}

TEST(IgclCounts, TooManyDevicesAreNotWalked) {
    Machine machine = IntelBoard();
    for (int const count : kGarbage) {
        SCOPED_TRACE(count);
        OrderDeviceList(machine, count);
        EXPECT_TRUE(machine.Init());
        EXPECT_FALSE(machine.Api().IsInitOk());
        EXPECT_EQ(machine.CountOf("ctlEnumerateDevices"), 1);
        EXPECT_EQ(WithoutDetection(machine.TakeLog()),
                  Lines({"[IGCLHelper::IGCLHelper()] ... malloc memory for hDevices failed"}));
        machine.TakeCalls();
    }
}

}  // namespace
}  // namespace gputune::test
