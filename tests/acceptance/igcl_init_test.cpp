// Intel boards: how the adapter opens the control library, and which devices it takes.
#include <climits>

#include "igcl_lines.h"
#if !defined(_WIN32)
#include "machine_native.h"
#endif

namespace gputune::test {
namespace {

// ---- Opening ----

TEST(IgclInit, OpensTheBoardStepByStep) {
    Machine machine = IntelBoard();
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.Api().GetVendorInfo(), kIntelVendorInfo);
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 0);

    EXPECT_EQ(WithoutDetection(machine.TakeLog()),
              Lines({
                  "[IGCLHelper::IGCLHelper()] Adapter ID ... 4275878552",
                  "[IGCLHelper::IGCLHelper()] Adapter ID ... -2",
                  "[IGCLHelper::IGCLHelper()] Intel Adapter Name ... Intel(R) Arc(TM) A770 Graphics",
                  "[IGCLHelper::IGCLHelper()] Vendor id ... 32902",
                  "[IGCLHelper::IGCLHelper()] Device id ... 22176",
                  "[IGCLHelper::IGCLHelper()] Rev id ... 8",
                  "[IGCLHelper::RetrieveOcProperties()] ... begin",
                  "[IGCLHelper::RetrieveOcProperties()] retrieve ... successfully",
                  "[PrintProperties()] ... begin",
                  "[PrintProperties()] >>>>>>> Overclock properties",
                  "Oc Supported? ... false",
                  "Gpu Frequency Offset Supported? ... false",
                  "Gpu Voltage Offset Supported? ... false",
                  "VRAM Frequency Offset Supported? ... false",
                  "VRAM Voltage Offset Supported? ... false",
                  "Power Limit Supported? ... false",
                  "Temperature Limit Supported? ... false",
                  "[PrintProperties()] <<<<<<< Overclock properties",
                  "[PrintProperties()] >>>>>>> HWM features",
                  "TimeStamp Supported? ... false",
                  "Gpu Energy Counter Supported? ... false",
                  "Gpu Voltage Supported? ... false",
                  "Gpu Current Frequency Supported? ... false",
                  "Gpu Current Temperature Supported? ... false",
                  "Gpu Activity Counter Supported? ... false",
                  "Render Activity Counter Supported? ... false",
                  "Media Activity Counter Supported? ... false",
                  "VRAM Energy Counter Supported? ... false",
                  "VRAM Voltage Supported? ... false",
                  "VRAM Frequency Supported? ... false",
                  "VRAM Effective Frequency Supported? ... false",
                  "VRAM Read Bandwidth Supported? ... false",
                  "VRAM Write Bandwidth Supported? ... false",
                  "VRAM Temperature Supported? ... false",
                  "Fan Speed Supported? ... false",
                  "[PrintProperties()] <<<<<<< HWM features",
              }));

    // Application version 1.1, flags for Level Zero, room for the supported version, no identifier.
    EXPECT_EQ(machine.LastCall("ctlInit").As<InitArgs>(), InitArgs(0x00010001));
    EXPECT_EQ(
        TakeIntelTraffic(machine),
        Lines({"ctlInit", "ctlEnumerateDevices A91000: count", "ctlEnumerateDevices A91000: room for 1",
               "ctlGetDeviceProperties DE0000", "ctlOverclockGetProperties DE0000", "ctlPowerTelemetryGet DE0000"}));
}

TEST(IgclInit, WithoutTheControlLibraryNothingIsLogged) {
    Machine machine(Machine::Library::None);
    machine.Captions({L"Intel(R) Arc(TM) A770 Graphics"});
    EXPECT_TRUE(machine.Init()) << "the vendor is known";
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.Api().GetVendorInfo(), kIntelVendorInfo);
    EXPECT_EQ(WithoutDetection(machine.TakeLog()), Lines{});
}

TEST(IgclInit, FailingInitEndsItSilently) {
    Machine machine = IntelBoard();
    machine.Result("ctlInit", kFailure);
    EXPECT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.Api().GetVendorInfo(), kIntelVendorInfo);
    EXPECT_EQ(WithoutDetection(machine.TakeLog()), Lines{});
    EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlInit"}));
    EXPECT_EQ(machine.UnloadCount(), 0);
}

TEST(IgclInit, EveryResultButZeroIsAFailure) {
    Machine machine = IntelBoard().Started();
    for (int const result : {1, -1, INT_MIN}) {
        SCOPED_TRACE(result);
        machine.Then("ctlInit").Result("ctlInit", result);
        EXPECT_TRUE(machine.Init());
        EXPECT_FALSE(machine.Api().IsInitOk());
    }
}

TEST(IgclInit, LibraryWithoutInitIsUsedAllTheSame) {
    Machine machine = IntelBoard();
    machine.Hide("ctlInit");
    EXPECT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.LastCall("ctlEnumerateDevices").HandleArgument(0), Handle{}) << "no handle was handed out";
}

// ---- Enumeration ----

TEST(IgclInit, FailingFirstEnumerationClosesTheLibrary) {
    Machine machine = IntelBoard();
    machine.Result("ctlEnumerateDevices", kFailure);
    EXPECT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()), Lines({FailureLine(kEnumerationTag)}));
    EXPECT_EQ(TakeIntelTraffic(machine), Lines({"ctlInit", "ctlEnumerateDevices A91000: count", "ctlClose A91000"}));
    EXPECT_EQ(machine.UnloadCount(), 1);
}

TEST(IgclInit, FailingSecondEnumerationClosesTheLibrary) {
    Machine machine = IntelBoard();
    machine.Then("ctlEnumerateDevices").Result("ctlEnumerateDevices", -1);
    EXPECT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()), Lines({ErrorLine(kEnumerationTag, -1, "[Unknown Error]")}));
    EXPECT_EQ(TakeIntelTraffic(machine), Lines({"ctlInit", "ctlEnumerateDevices A91000: count",
                                                "ctlEnumerateDevices A91000: room for 1", "ctlClose A91000"}));
    EXPECT_EQ(machine.UnloadCount(), 1);
}

TEST(IgclInit, MissingEnumerationIsAFailingOne) {
    Machine machine = IntelBoard();
    machine.Hide("ctlEnumerateDevices");
    EXPECT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()), Lines({NotInitializedLine(kEnumerationTag)}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlInit", "ctlClose"}));
    EXPECT_EQ(machine.UnloadCount(), 1);
}

TEST(IgclInit, NoDevicesLeaveTheLibraryOpen) {
    Machine machine = IntelBoard({});
    EXPECT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()), Lines{});
    EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlInit", "ctlEnumerateDevices", "ctlEnumerateDevices"}));
    EXPECT_EQ(machine.UnloadCount(), 0);

    // Until the adapter's end.
    machine.Captions({L"Intel(R) UHD Graphics 770"});
    EXPECT_FALSE(machine.Init());
    EXPECT_EQ(machine.UnloadCount(), 0);
    machine.Captions({L"Intel(R) Arc(TM) A770 Graphics"}).Result("ctlInit", kFailure);
    machine.TakeCalls();
    EXPECT_TRUE(machine.Init());
    EXPECT_EQ(TakeIntelTraffic(machine).back(), "ctlClose A91000");
    EXPECT_EQ(machine.UnloadCount(), 1);
}

TEST(IgclInit, OnlyUnsuitableDevicesLeaveTheLibraryOpen) {
    Machine machine = IntelBoard(Devices({Null(), OfType(2)}));
    EXPECT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()), Lines({kNoGraphics}));
    EXPECT_EQ(machine.TakeCallNames(),
              Lines({"ctlInit", "ctlEnumerateDevices", "ctlEnumerateDevices", "ctlGetDeviceProperties"}));
    EXPECT_EQ(machine.UnloadCount(), 0);
}

TEST(IgclInit, FirstGraphicsDeviceIsTheActiveOne) {
    std::vector<IntelDevice> const devices =
        Devices({Null(), OfType(2), OfType(0), OfVendor(0x10DE), {.luidLow = 4, .luidHigh = 5}});
    Machine machine = IntelBoard(devices);
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 3);
    EXPECT_EQ(WithoutDetection(machine.TakeLog()),
              Joined({{kNoGraphics, kNoGraphics},
                      {kTag + " Adapter ID ... 17", kTag + " Adapter ID ... 0"},  // another vendor's: no more than this
                      DeviceLines(devices[4]),
                      kSelected}));
    EXPECT_EQ(
        TakeIntelTraffic(machine),
        Lines({"ctlInit", "ctlEnumerateDevices A91000: count", "ctlEnumerateDevices A91000: room for 5",
               "ctlGetDeviceProperties DE0001", "ctlGetDeviceProperties DE0002", "ctlGetDeviceProperties DE0003",
               "ctlGetDeviceProperties DE0004", "ctlOverclockGetProperties DE0003", "ctlPowerTelemetryGet DE0003"}));
}

TEST(IgclInit, NumbersOfTheDeviceAreUnsignedButForTheHighWord) {
    std::vector<IntelDevice> const devices =
        Devices({{.luidLow = 0xFFFFFFFF, .luidHigh = INT_MIN, .device = -1, .revision = INT_MIN, .name = ""},
                 {.luidLow = 0, .luidHigh = INT_MAX, .device = 0, .revision = -2, .name = "x"}});
    Machine machine = IntelBoard(devices);
    ASSERT_TRUE(machine.Init());
    Lines const log = WithoutDetection(machine.TakeLog());
    ASSERT_GE(log.size(), 12U);
    EXPECT_EQ(Lines(log.begin(), log.begin() + 12),
              Lines({kTag + " Adapter ID ... 4294967295", kTag + " Adapter ID ... -2147483648",
                     kTag + " Intel Adapter Name ... ", kTag + " Vendor id ... 32902",
                     kTag + " Device id ... 4294967295", kTag + " Rev id ... 2147483648", kTag + " Adapter ID ... 0",
                     kTag + " Adapter ID ... 2147483647", kTag + " Intel Adapter Name ... x",
                     kTag + " Vendor id ... 32902", kTag + " Device id ... 0", kTag + " Rev id ... 4294967294"}));
}

TEST(IgclInit, EachDeviceIsAskedWithAFreshRecord) {
    Machine machine = IntelBoard(Devices({{.name = std::string(90, 'n')}, {.name = "second"}}));
    ASSERT_TRUE(machine.Init());
    Lines asked = TakeIntelTraffic(machine);
    std::erase_if(asked, [](std::string const& line) { return !line.starts_with("ctlGetDeviceProperties"); });
    EXPECT_EQ(asked, Lines({"ctlGetDeviceProperties DE0000", "ctlGetDeviceProperties DE0001"}));
}

TEST(IgclInit, FailingPropertiesEndTheEnumeration) {
    std::vector<IntelDevice> const devices = Devices({{}, {}, {}});
    Machine machine = IntelBoard(devices);
    machine.Result(For("ctlGetDeviceProperties", kDevice + 1), kFailure);
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()),
              Joined({DeviceLines(devices[0]), {FailureLine(kTag + " ctlGetDeviceProperties")}, kSelected}));
    EXPECT_EQ(machine.CountOf("ctlGetDeviceProperties"), 2);
    // Not accepted, though there.
    EXPECT_FALSE(machine.Api().SetActiveAdapterIndex(1));
    EXPECT_FALSE(machine.Api().SetActiveAdapterIndex(2));
    EXPECT_TRUE(machine.Api().SetActiveAdapterIndex(0));
}

TEST(IgclInit, FailingPropertiesOfTheFirstDeviceLeaveNone) {
    Machine machine = IntelBoard(Devices({{}, {}}));
    machine.Result(For("ctlGetDeviceProperties", kDevice), 0x40000001);
    ASSERT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()), Lines({NotInitializedLine(kTag + " ctlGetDeviceProperties")}));
    EXPECT_EQ(machine.CountOf("ctlGetDeviceProperties"), 1);
    EXPECT_EQ(machine.CountOf("ctlClose"), 0);
    EXPECT_EQ(machine.CountOf("ctlOverclockGetProperties"), 0);
}

// ---- A library that answers nonsense ----

TEST(IgclInit, NameWithoutATerminatorEndsWithItsField) {
    Machine machine = IntelBoard();
    std::string const properties = For("ctlGetDeviceProperties", kDevice);
    // Bytes, over the field and behind it.
    machine.Write(properties, 1, Bytes(100, 'n'), kDeviceName);
    machine.Write(properties, 1, Bytes(132, 'x'), kDeviceName + 100);  // whatever follows
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()).at(2), kTag + " Intel Adapter Name ... " + std::string(100, 'n'));
}

TEST(IgclInit, CountThatGrowsIsNotFollowedBeyondTheRoom) {
    Machine machine = IntelBoard();
    for (int const grown : {2, 1000, INT_MAX, -1}) {
        SCOPED_TRACE(grown);
        // The first call says one device, the second these.
        OrderDeviceList(machine.Then("ctlEnumerateDevices"), grown, {kDevice});
        ASSERT_TRUE(machine.Init());
        EXPECT_TRUE(machine.Api().IsInitOk());
        EXPECT_EQ(WithoutDetection(machine.TakeLog()), Joined({DeviceLines({}), kSelected}));
        EXPECT_EQ(machine.CountOf("ctlGetDeviceProperties"), 1);
        EXPECT_FALSE(machine.Api().SetActiveAdapterIndex(1));
        machine.TakeCalls();
        machine.TakeLog();
        OrderDeviceList(machine.Then("ctlEnumerateDevices"), 1);
    }
}

TEST(IgclInit, CountThatShrinksLeavesTheDevicesThatWereWritten) {
    Machine machine = IntelBoard(Devices({{}, {}, {}}));
    OrderDeviceList(machine.Then("ctlEnumerateDevices"), 1, {kDevice});
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.CountOf("ctlGetDeviceProperties"), 1);
    EXPECT_FALSE(machine.Api().SetActiveAdapterIndex(1));
    EXPECT_FALSE(machine.Api().SetActiveAdapterIndex(2));
}

TEST(IgclInit, HandlesThatAreNotWrittenAreNone) {
    Machine machine(Machine::Library::Intel);
    machine.Captions({L"Intel(R) Arc(TM) A770 Graphics"});
    OrderDeviceList(machine, 50);
    ASSERT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.CountOf("ctlGetDeviceProperties"), 0);
}

// More than a 32-bit process has, also where the product of the sizes wraps around to little.
TEST(IgclInit, CountBeyondAllMemoryClosesTheLibrary) {
    Machine machine(Machine::Library::Intel);
    machine.Captions({L"Intel(R) Arc(TM) A770 Graphics"});
    int closed = 0;
    for (int const count : {-1, INT_MAX, 0x40000000, 0x40000001}) {
        SCOPED_TRACE(count);
        OrderDeviceList(machine, count);
        ASSERT_TRUE(machine.Init());
        EXPECT_FALSE(machine.Api().IsInitOk());
        EXPECT_EQ(WithoutDetection(machine.TakeLog()), Lines({kTag + " ... malloc memory for hDevices failed"}));
        EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlInit", "ctlEnumerateDevices", "ctlClose"}));
        EXPECT_EQ(machine.UnloadCount(), ++closed);
        machine.Then("ctlEnumerateDevices");
    }
}

#if !defined(_WIN32)
TEST(IgclInit, NoMemoryForAnIdentifierEndsItWithoutAnActiveDevice) {
    std::vector<IntelDevice> const devices = Devices({Null(), {}, {}});
    Machine machine = IntelBoard(devices);
    RefuseAllocationsOf(8);
    EXPECT_TRUE(machine.Init());
    RefuseAllocationsOf(0);
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()), Lines{});
    EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlInit", "ctlEnumerateDevices", "ctlEnumerateDevices"}));
    EXPECT_EQ(machine.UnloadCount(), 0) << "the library stays open";
}

TEST(IgclInit, NoMemoryForALaterIdentifierKeepsTheDevicesSoFar) {
    std::vector<IntelDevice> const devices = Devices({Null(), {}, {}});
    Machine machine = IntelBoard(devices);
    RefuseAllocationsOf(8, 1);
    EXPECT_TRUE(machine.Init());
    RefuseAllocationsOf(0);
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()), DeviceLines(devices[1]));
    EXPECT_EQ(machine.TakeCallNames(),
              Lines({"ctlInit", "ctlEnumerateDevices", "ctlEnumerateDevices", "ctlGetDeviceProperties"}));
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 0) << "none was chosen";
    EXPECT_TRUE(machine.Api().SetActiveAdapterIndex(1));
    EXPECT_FALSE(machine.Api().SetActiveAdapterIndex(2));
}
#endif

}  // namespace
}  // namespace gputune::test
