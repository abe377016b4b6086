// Intel boards: choosing the adapter, and the fixed answers of what it does not offer.
#include <climits>

#include "igcl_lines.h"

namespace gputune::test {
namespace {

bool IsAllZero(void const* record, std::size_t size) {
    auto const* const bytes = static_cast<unsigned char const*>(record);
    return std::all_of(bytes, bytes + size, [](unsigned char byte) { return byte == 0; });
}

std::string Selecting(std::string const& message) {
    return "[IGCLHelper::SetActiveAdapterIndex(int)] ... " + message;
}

// Positions: none, graphics, something else, graphics.
Machine FourDevices() {
    return IntelBoard(Devices({Null(), {}, OfType(3), {}}));
}

TEST(IgclSelection, AnotherGraphicsDeviceIsReadAndPrinted) {
    Machine machine = FourDevices().Started();
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 1);
    EXPECT_TRUE(machine.Api().SetActiveAdapterIndex(3));
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 3);
    EXPECT_EQ(machine.TakeLog(), Joined({{Selecting("adapter index selected")}, kSelected}));
    EXPECT_EQ(TakeIntelTraffic(machine), Lines({"ctlOverclockGetProperties DE0003", "ctlPowerTelemetryGet DE0003"}));

    machine.Api().SetFanSpeed(-1);
    machine.Api().SetPowerLimitDefault();
    machine.Api().SetPerformanceUser(1, 2, 3, 4);
    machine.Api().FetchHwmValues();
    for (Call const& call : machine.TakeCalls()) {
        if (!call.entryPoint.starts_with("ctlFan")) {
            EXPECT_EQ(call.HandleArgument(0), kDevice + 3) << call.entryPoint;
        }
    }
}

TEST(IgclSelection, RecordIsClearedBeforeItIsReadAgain) {
    Machine machine = FourDevices();
    machine.Write("ctlOverclockGetProperties", 1, Bytes(288, 0xFF), 8);  // all controls
    ASSERT_TRUE(machine.InitAndForget());
    machine.Then("ctlOverclockGetProperties");
    ASSERT_TRUE(machine.Api().SetActiveAdapterIndex(3));
    EXPECT_EQ(DescribeIntelCall(machine.LastCall("ctlOverclockGetProperties")), "ctlOverclockGetProperties DE0003");
    EXPECT_EQ(machine.TakeLog(), Joined({{Selecting("adapter index selected")}, kSelected}));
}

TEST(IgclSelection, TheActiveOneIsNotReadAgain) {
    Machine machine = FourDevices().Started();
    EXPECT_TRUE(machine.Api().SetActiveAdapterIndex(1));
    EXPECT_EQ(machine.TakeLog(), Lines({Selecting("already using the specified adapter index")}));
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
}

TEST(IgclSelection, OutOfRangeIsRefused) {
    Machine machine = FourDevices().Started();
    for (int const index : {-1, 4, 5, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(index);
        EXPECT_FALSE(machine.Api().SetActiveAdapterIndex(index));
        EXPECT_EQ(machine.TakeLog(), Lines({Selecting("specified adapter index out of range")}));
    }
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 1);
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
}

TEST(IgclSelection, PositionsWithoutGraphicsAreNotFound) {
    Machine machine = FourDevices().Started();
    for (int const index : {0, 2}) {
        SCOPED_TRACE(index);
        EXPECT_FALSE(machine.Api().SetActiveAdapterIndex(index));
        EXPECT_EQ(machine.TakeLog(), Lines({Selecting("specified adapter index not found")}));
    }
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 1);
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
}

TEST(IgclSelection, SucceedsThoughThePropertiesCannotBeRead) {
    Machine machine = FourDevices().Started();
    machine.Then("ctlOverclockGetProperties").Result("ctlOverclockGetProperties", kFailure);
    machine.Then("ctlPowerTelemetryGet").Result("ctlPowerTelemetryGet", kFailure);
    EXPECT_TRUE(machine.Api().SetActiveAdapterIndex(3));
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 3);
    EXPECT_EQ(machine.TakeLog(),
              Joined({{Selecting("adapter index selected"), "[IGCLHelper::RetrieveOcProperties()] ... begin",
                       FailureLine("[IGCLHelper::RetrieveOcProperties()] ctlOverclockGetProperties")},
                      OverclockDump(Flags(kOverclockLabels, {})),
                      {FailureLine("[IGCLHelper::SetFanSpeed(int)] ctlPowerTelemetryGet")}}));
    EXPECT_TRUE(machine.Api().SetActiveAdapterIndex(3));
    EXPECT_EQ(machine.TakeLog(), Lines({Selecting("already using the specified adapter index")}));
}

// ---- Fixed answers ----

TEST(IgclAnswers, WhatIsNotOfferedIsZeroOrFalse) {
    Machine machine = IntelBoard().Started();
    Exports const& api = machine.Api();
    VgaInfo const info = api.GetVGAInfo();
    EXPECT_TRUE(IsAllZero(&info, sizeof info));
    FanSetting const fan = api.GetFanSetting();
    EXPECT_TRUE(IsAllZero(&fan, sizeof fan));
    PowerLimitSetting const power = api.GetPowerLimitSetting();
    EXPECT_TRUE(IsAllZero(&power, sizeof power));
    ClockSetting const gpu = api.GetGpuClockSetting();
    EXPECT_TRUE(IsAllZero(&gpu, sizeof gpu));
    ClockSetting const memory = api.GetMemClockSetting();
    EXPECT_TRUE(IsAllZero(&memory, sizeof memory));
    EXPECT_FALSE(api.SetPerformanceDefault());
    EXPECT_FALSE(api.SetPerformanceSilent());
    EXPECT_EQ(api.GetFrameRate(), -1);
    EXPECT_EQ(machine.TakeLog(), Lines{});
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
}

}  // namespace
}  // namespace gputune::test
