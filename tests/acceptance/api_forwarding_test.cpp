// Each exported function reaches its operation, with its arguments, and passes the result on.
#include <gtest/gtest.h>

#include <climits>
#include <functional>

#include "boards.h"

namespace gputune::test {
namespace {

struct Forwarding {
    char const* name;
    std::function<void(Exports const&)> call;
    std::string firstLine;  // of the operation's log; it names the operation
};

TEST(ApiForwarding, EachExportReachesItsOperation) {
    Machine machine = OverdriveNBoard().Started();
    std::vector<Forwarding> const table = {
        {"SetActiveAdapterIndex", [](auto& api) { EXPECT_TRUE(api.SetActiveAdapterIndex(5)); },
         "[ADL::SetActiveAdapterIndex()] ... already using the specified adapter index"},
        {"SetActiveAdapterIndex of another", [](auto& api) { EXPECT_FALSE(api.SetActiveAdapterIndex(0)); },
         "[ADL::SetActiveAdapterIndex()] ... specified adapter index not found"},
        {"GetVGAInfo", [](auto& api) { api.GetVGAInfo(); },
         "[OD7Helper::GetVGASubDeviceID()] UDID ... "
         "PCI_VEN_1002&DEV_67DF&SUBSYS_0B361002&REV_E7_6&1A2B3C4D&0&00000008A"},
        {"FetchHwmValues", [](auto& api) { api.FetchHwmValues(); }, "[OD7Helper::FetchHwmValues()] ... begin"},
        {"SetFanSpeed", [](auto& api) { EXPECT_TRUE(api.SetFanSpeed(40)); }, "[OD7Helper::SetFanSpeed(int)] ... begin"},
        {"SetFanSpeedTable", [](auto& api) { EXPECT_FALSE(api.SetFanSpeedTable(nullptr, 5)); },
         "[OD7Helper::SetFanSpeedTable(obj,int)] ... begin"},
        {"SetPowerLimit", [](auto& api) { EXPECT_TRUE(api.SetPowerLimit(75, 10)); },
         "[OD7Helper::SetPowerLimit(int,int)] ... begin"},
        {"SetPowerLimitDefault", [](auto& api) { EXPECT_TRUE(api.SetPowerLimitDefault()); },
         "[OD7Helper::SetPowerLimitDefault()] ... begin"},
        {"SetPerformanceUser", [](auto& api) { EXPECT_TRUE(api.SetPerformanceUser(0, 0, 0, 0)); },
         "[OD7Helper::SetPerformanceUser(int,int,int,int,bool)] ... begin"},
        {"SetPerformanceOC", [](auto& api) { EXPECT_FALSE(api.SetPerformanceOC()); },
         "[OD7Helper::SetPerformanceOC()] ... begin"},
        {"SetPerformanceDefault", [](auto& api) { EXPECT_TRUE(api.SetPerformanceDefault()); },
         "[OD7Helper::SetPerformanceDefault()] ... begin"},
        {"SetPerformanceSilent", [](auto& api) { EXPECT_FALSE(api.SetPerformanceSilent()); },
         "[OD7Helper::SetPerformanceSilent()] ... begin"},
    };
    for (Forwarding const& row : table) {
        SCOPED_TRACE(row.name);
        row.call(machine.Api());
        Lines const lines = machine.TakeLog();
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.front(), row.firstLine);
    }
}

TEST(ApiForwarding, EachGetterReachesItsOperation) {
    Machine machine = OverdriveNBoard().Started();
    Exports const& api = machine.Api();

    EXPECT_EQ(api.GetActiveAdapterIndex(), 5);
    VgaInfo const info = api.GetVGAInfo();
    EXPECT_EQ(info.SubsystemId, 0x0B361002U);
    EXPECT_STREQ(info.AdapterName, "Radeon RX 580 Series");
    EXPECT_EQ(info.BusNumber, 3);

    FanSetting const fan = api.GetFanSetting();
    EXPECT_TRUE(fan.Valid);
    EXPECT_EQ(fan.PointCount, 1);

    PowerLimitSetting const power = api.GetPowerLimitSetting();
    EXPECT_TRUE(power.Valid);
    EXPECT_EQ(power.Default, 0);
    EXPECT_EQ(power.Max, 50);
    EXPECT_EQ(power.Min, -50);
    EXPECT_EQ(power.Current, -1);

    EXPECT_EQ(machine.TakeCallNames(), std::vector<std::string>{});
    EXPECT_TRUE(api.GetGpuClockSetting().Valid);
    EXPECT_GE(machine.CountOf("ADL2_OverdriveN_SystemClocksX2_Get"), 1);
    EXPECT_EQ(machine.CountOf("ADL2_OverdriveN_MemoryClocksX2_Get"), 0);
    machine.TakeCalls();
    EXPECT_TRUE(api.GetMemClockSetting().Valid);
    EXPECT_GE(machine.CountOf("ADL2_OverdriveN_MemoryClocksX2_Get"), 1);
    EXPECT_EQ(machine.CountOf("ADL2_OverdriveN_SystemClocksX2_Get"), 0);
    machine.TakeCalls();
    EXPECT_EQ(api.GetFrameRate(), -1);
    EXPECT_EQ(machine.TakeCallNames(), std::vector<std::string>{});

    machine.TakeLog();
    api.GetExternalPerformanceParameter(0x80000001);
    Lines const profile = machine.TakeLog();
    ASSERT_GE(profile.size(), 2U);
    EXPECT_TRUE(profile[0].starts_with("[IVideoAdapter::GetExternalPerformanceParameter] pred config path ... "));
    EXPECT_EQ(profile[1], "[IVideoAdapter::GetExternalPerformanceParameter] given hwid ... -2147483647");
}

TEST(ApiForwarding, ArgumentsArePassedThroughInTheirOrder) {
    Machine machine = OverdriveNBoard().Started();
    Exports const& api = machine.Api();

    EXPECT_TRUE(api.SetFanSpeed(40));
    EXPECT_EQ(machine.Sent<FanSpeed>().speed, 40);

    EXPECT_TRUE(api.SetPowerLimit(80, -7));
    EXPECT_EQ(machine.Sent<PowerLimits>().power, -7);
    EXPECT_EQ(machine.Sent<PowerLimits>().temperature, 80);

    // The voltages are taken as they are, for every level but the lowest.
    EXPECT_TRUE(api.SetPerformanceUser(0, 1101, 0, 902));
    EXPECT_EQ(machine.Sent<EngineLevels>().levels.at(1).voltage, 1101);
    EXPECT_EQ(machine.Sent<MemoryLevels>().levels.at(1).voltage, 902);
}

TEST(ApiForwarding, ArgumentsAreNotCheckedByTheExport) {
    Machine machine = OverdriveNBoard().Started();
    Exports const& api = machine.Api();
    EXPECT_TRUE(api.SetFanSpeed(1000));
    EXPECT_EQ(machine.Sent<FanSpeed>().speed, 1000);
    EXPECT_TRUE(api.SetFanSpeed(INT_MIN));
    EXPECT_EQ(machine.CountOf("ADL2_Overdrive5_FanSpeedToDefault_Set"), 1);
    machine.TakeLog();
    EXPECT_FALSE(api.SetPowerLimit(INT_MAX, INT_MIN));
    EXPECT_EQ(machine.TakeLog().back(),
              "[OD7Helper::SetPowerLimit(int,int)] ... temp value out of bound: should be 50 to 90");
}

TEST(ApiForwarding, ResultsArePassedThrough) {
    Machine machine =
        OverdriveNBoard().Result("ADL2_OverdriveN_PowerLimit_Set", -1).Then("ADL2_OverdriveN_PowerLimit_Set").Started();
    EXPECT_FALSE(machine.Api().SetPowerLimit(75, 0));
    EXPECT_TRUE(machine.Api().SetPowerLimit(75, 0));
}

TEST(ApiForwarding, FanCurveOfAnOverdrive8BoardReachesItsOperation) {
    constexpr int kFanCurve = 0x2000;
    Machine machine = Overdrive8Board(kFanCurve).Started();
    FanTablePoint const curve[5] = {{200, 190}, {221, 211}, {242, 232}, {263, 253}, {284, 274}};
    EXPECT_TRUE(machine.Api().SetFanSpeedTable(curve, 5));
    EXPECT_EQ(machine.TakeLog().front(), "[OD8Helper::SetFanSpeedTable(arr,int)] ... Begin");
    EXPECT_EQ(machine.Sent<SettingRequest>().settings[setting::kFirstFanSpeed].value, 200);
    EXPECT_EQ(machine.Sent<SettingRequest>().settings[setting::kLastFanSpeed].value, 284);
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(curve, 0));
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(nullptr, 5));
}

TEST(ApiForwarding, ConversionErrorEndsAtTheExportWithALogEntry) {
    Machine machine = OverdriveNBoard();
    OrderAdapters(machine, {{.udid = "PCI_VEN_1002&SUBSYS_E4571002&REV", .name = "Name"}});
    ASSERT_TRUE(machine.InitAndForget());
    VgaInfo const info = machine.Api().GetVGAInfo();
    EXPECT_EQ(info.SubsystemId, 0U);
    EXPECT_STREQ(info.AdapterName, "Name");
    EXPECT_EQ(info.BusNumber, 3);
    EXPECT_EQ(machine.TakeLog().back(), "[GetVGAInfo()] ... stol argument out of range");
}

}  // namespace
}  // namespace gputune::test
