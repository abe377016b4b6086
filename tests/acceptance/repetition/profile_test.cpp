// Reading the profile file 1,000 times leaves nothing behind.
#include <gtest/gtest.h>

#include "boards.h"
#include "resources.h"

namespace gputune::test {
namespace {

TEST(ProfileRepetition, LeavesNothingBehind) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.Init(GPUTUNE_LOG_NONE));
    // A good file, one that breaks off, an empty one, and one without boards.
    std::string const good = "<Boards><Board Id=\"0B361002\"><Value Name=\"GpuOC\" Normal=\"1.05\"/></Board></Boards>";
    std::string const texts[] = {good, good.substr(0, 40), "", "<Boards/>"};
    std::string const leftBehind = LeftBehindBy(1000, [&](int number) {
        machine.WriteProfile(texts[number % 4]);
        machine.Api().GetExternalPerformanceParameter(0x0B361002);
        machine.Api().SetPerformanceOC();
        machine.Scripted().ClearCalls();
    });
    machine.RemoveProfile();
    EXPECT_EQ(leftBehind, "");
}

}  // namespace
}  // namespace gputune::test
