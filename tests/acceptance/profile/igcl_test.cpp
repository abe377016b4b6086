// Intel boards: the predefined overclock mode reports whether there is a profile, and is never applied.
#include <gtest/gtest.h>

#include <algorithm>

#include "intel_board.h"

namespace gputune::test {
namespace {

std::string const kBegin = "[IGCLHelper::SetPerformanceOC()] ... begin";
std::string const kNoProfile = "[IGCLHelper::SetPerformanceOC()] ... Get predefined performance parameter failed";

std::string const kBoard =
    "<Boards><Board Id=\"0B361002\"><Value Name=\"GpuOC\" Normal=\"50\"/></Board>"
    "<Board Id=\"-1\"><Value Name=\"GpuOC\" Normal=\"75\"/></Board></Boards>";
std::string const kOtherBoard = "<Boards><Board Id=\"0B361002\"><Value Name=\"GpuOC\" Normal=\"50\"/></Board></Boards>";
std::string const kDefault = "<Boards><Board Default=\"1\"><Value Name=\"GpuOC\" Normal=\"60\"/></Board></Boards>";

// Without the line that has the path of the file, which differs from machine to machine.
Lines WithoutPath(Lines lines) {
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [](std::string const& line) {
                                   return line.starts_with(
                                       "[IVideoAdapter::GetExternalPerformanceParameter] pred config path ... ");
                               }),
                lines.end());
    return lines;
}

Lines PrintedProfile(std::string const& gpuOc) {
    std::string const tag = "[PrintPredefinedPerformanceParameter()] ... ";
    return {tag + "Valid: 1",
            tag + "GpuOC: " + gpuOc,
            tag + "GpuOCGivenValue: 0.000000",
            tag + "GpuSilent: 0.000000",
            tag + "MemOC: 0.000000",
            tag + "MemOCGivenValue: 0.000000",
            tag + "MemSilent: 0.000000",
            tag + "NewestVBIOS: 0",
            tag + "PowerOC: 0.000000",
            tag + "PowerSilent: 0.000000",
            tag + "Watt: 0"};
}

std::string const kReader = "[IVideoAdapter::GetExternalPerformanceParameter] ";

TEST(IgclProfile, OfTheWholeHardwareIdIsFoundButNotApplied) {
    Machine machine = IntelBoard().WriteProfile(kBoard).Started();
    EXPECT_FALSE(machine.Api().SetPerformanceOC());
    Lines const log = machine.TakeLog();
    ASSERT_EQ(log.size(), 16U);
    EXPECT_EQ(WithoutPath(log), Joined({{kBegin, kReader + "given hwid ... -1", kReader + "VGA HWID ... found",
                                         kReader + "config used ... ext. custom"},
                                        PrintedProfile("75.000000")}));
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
}

TEST(IgclProfile, DefaultIsFoundButNotApplied) {
    Machine machine = IntelBoard().WriteProfile(kDefault).Started();
    EXPECT_FALSE(machine.Api().SetPerformanceOC());
    EXPECT_EQ(WithoutPath(machine.TakeLog()),
              Joined({{kBegin, kReader + "given hwid ... -1", kReader + "VGA HWID ... not found",
                       kReader + "config used ... ext. default"},
                      PrintedProfile("60.000000")}));
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
}

TEST(IgclProfile, OfOtherBoardsIsAFailure) {
    Machine machine = IntelBoard().WriteProfile(kOtherBoard).Started();
    EXPECT_FALSE(machine.Api().SetPerformanceOC());
    EXPECT_EQ(WithoutPath(machine.TakeLog()),
              Lines({kBegin, kReader + "given hwid ... -1", kReader + "VGA HWID ... not found",
                     kReader + "config used ... failed, default not exist", kNoProfile}));
}

TEST(IgclProfile, MissingFileIsAFailure) {
    Machine machine = IntelBoard().RemoveProfile().Started();
    EXPECT_FALSE(machine.Api().SetPerformanceOC());
    Lines const log = machine.TakeLog();
    EXPECT_EQ(WithoutPath(log),
              Lines({kBegin, kReader + "given hwid ... -1", kReader + "open pred xml ... failed", kNoProfile}));
    EXPECT_EQ(log.size(), 5U);
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
}

TEST(IgclProfile, IdThatIsNoNumberReachesTheCallerAsAFailure) {
    Machine machine = IntelBoard().WriteProfile("<Boards><Board Id=\"nonsense\"/></Boards>").Started();
    EXPECT_FALSE(machine.Api().SetPerformanceOC());
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
}

TEST(IgclProfile, ExportedReaderAnswersForAnyId) {
    Machine machine = IntelBoard().WriteProfile(kBoard).Started();
    PredefinedPerformanceParameter const profile = machine.Api().GetExternalPerformanceParameter(0x0B361002);
    EXPECT_TRUE(profile.Valid);
    EXPECT_EQ(profile.GpuOC, 50.0F);
}

}  // namespace
}  // namespace gputune::test
