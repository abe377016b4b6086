// Intel boards: the end of an adapter, which closes the control library, and adapters that did not open.
#include "boards.h"
#include "igcl_lines.h"

namespace gputune::test {
namespace {

// ---- The end ----

TEST(IgclEnd, SecondStartClosesWhatTheNewAdapterStandsOn) {
    Machine machine = IntelBoard().Started();
    machine.TakeLoads();

    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(machine.TakeLoads().size(), 0U) << "it is loaded";
    EXPECT_EQ(machine.TakeCallNames(),
              Lines({"ctlInit", "ctlEnumerateDevices", "ctlEnumerateDevices", "ctlGetDeviceProperties",
                     "ctlOverclockGetProperties", "ctlPowerTelemetryGet", "ctlClose"}));
    EXPECT_EQ(machine.UnloadCount(), 1);
    EXPECT_EQ(WithoutDetection(machine.TakeLog()), Joined({DeviceLines({}), kSelected}));
    EXPECT_TRUE(machine.Api().IsInitOk());

    // It is there, and reaches nothing.
    EXPECT_FALSE(machine.Api().SetPowerLimitDefault());
    EXPECT_EQ(machine.TakeLog(),
              Lines({"[IGCLHelper::SetPowerLimitDefault()] ... begin",
                     NotInitializedLine("[IGCLHelper::SetPowerLimitDefault()] ctlOverclockGetProperties")}));
    EXPECT_FALSE(machine.Api().SetFanSpeed(40));
    EXPECT_TRUE(machine.Api().SetActiveAdapterIndex(0));
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.TakeCallNames(), Lines{});

    // A third start loads the library again, and loses it again.
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(machine.TakeLoads().size(), 1U);
    EXPECT_EQ(machine.UnloadCount(), 2);
    EXPECT_TRUE(machine.Api().IsInitOk());
}

TEST(IgclEnd, FailingCloseLeavesTheNewAdapterItsLibrary) {
    Machine machine = IntelBoard().Result("ctlClose", kFailure).Started();
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_EQ(machine.UnloadCount(), 0);
    EXPECT_TRUE(machine.Api().SetPowerLimitDefault());
}

TEST(IgclEnd, FailedStartLeavesTheAdapterItsLibrary) {
    Machine machine = IntelBoard().Started();
    machine.Captions({L"Intel(R) UHD Graphics 770"});
    EXPECT_FALSE(machine.Init());
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
    EXPECT_TRUE(machine.Api().SetPowerLimitDefault());
}

TEST(IgclEnd, AnotherVendorsAdapterTakesItsPlace) {
    Machine machine =
        OverdriveNBoard().Add(Machine::Library::Intel).Captions({L"Intel(R) Arc(TM) A770 Graphics"}).Started();
    EXPECT_EQ(machine.Api().GetVendorInfo(), kIntelVendorInfo);
    machine.Captions({L"AMD Radeon RX 580 Series"});
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(machine.CountOf("ctlClose"), 1);
    EXPECT_EQ(machine.UnloadCount(), 1);
    EXPECT_TRUE(machine.Api().SetPowerLimit(75, 0));

    machine.Captions({L"Intel(R) Arc(TM) A770 Graphics"});
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(machine.Api().GetVendorInfo(), kIntelVendorInfo);
    EXPECT_EQ(machine.CountOf("ctlClose"), 1);
}

TEST(IgclEnd, AdapterWhoseEnumerationFailedClosesOnce) {
    Machine machine = IntelBoard();
    machine.Result("ctlEnumerateDevices", kFailure);
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(machine.CountOf("ctlClose"), 1);
    EXPECT_EQ(machine.UnloadCount(), 1);
    machine.TakeCalls();
    // The next one loads it again and closes it; the old one's close finds nothing open.
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(machine.CountOf("ctlClose"), 1);
    EXPECT_EQ(machine.UnloadCount(), 2);
}

// ---- Every operation survives an adapter that did not open ----

void ExpectToSurvive(Machine& machine) {
    Exports const& api = machine.Api();
    FanTablePoint const points[] = {{30, 40}, {60, 80}};
    EXPECT_FALSE(api.IsInitOk());
    api.SetActiveAdapterIndex(0);
    EXPECT_FALSE(api.SetActiveAdapterIndex(1));
    api.SetFanSpeed(40);
    api.SetFanSpeed(-1);
    api.SetFanSpeedTable(points, 2);
    api.SetFanSpeedTable(nullptr, 0);
    api.SetPowerLimit(80, 10);
    api.SetPowerLimitDefault();
    api.SetPerformanceUser(1, 2, 3, 4);
    EXPECT_FALSE(api.SetPerformanceDefault());
    EXPECT_FALSE(api.SetPerformanceSilent());
    api.FetchHwmValues();
    EXPECT_EQ(api.GetActiveAdapterIndex(), 0);
    EXPECT_EQ(api.GetFrameRate(), -1);
}

TEST(IgclUnopened, WithoutTheLibrarySurvivesEveryCall) {
    Machine machine(Machine::Library::None);
    machine.Captions({L"Intel(R) Arc(TM) A770 Graphics"});
    ASSERT_TRUE(machine.Init());
    ExpectToSurvive(machine);
}

TEST(IgclUnopened, AfterAFailingInitSurvivesEveryCall) {
    Machine machine = IntelBoard().Result("ctlInit", kFailure).Started();
    ExpectToSurvive(machine);
}

TEST(IgclUnopened, AfterAFailingEnumerationSurvivesEveryCall) {
    Machine machine = IntelBoard()
                          .Then("ctlEnumerateDevices")
                          .Result("ctlEnumerateDevices", kFailure)
                          .Result("ctlClose", kFailure)
                          .Started();
    ExpectToSurvive(machine);
}

TEST(IgclUnopened, WithoutDevicesSurvivesEveryCall) {
    Machine machine = IntelBoard({}).Started();
    ExpectToSurvive(machine);
}

TEST(IgclUnopened, WithNullHandlesAloneSurvivesEveryCall) {
    Machine machine = IntelBoard({Null()}).Started();
    ExpectToSurvive(machine);
}

}  // namespace
}  // namespace gputune::test
