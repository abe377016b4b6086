// The exported functions: what they answer before the start, what the start leaves behind, and that each reaches its
// operation.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <functional>

#include "boards.h"

namespace gputune::test {
namespace {

constexpr std::uint64_t VendorInfo(std::uint64_t api, std::uint64_t vendor) {
    return api << 32 | vendor;
}
constexpr std::uint64_t kOverdriveN = VendorInfo(3, 1);
constexpr std::uint64_t kOverdrive8 = VendorInfo(2, 1);

template <class Record>
bool IsAllZero(Record const& record) {
    Record const zero{};
    // The records have no bytes that are not in `record` itself: they are cleared as a whole.
    unsigned char const* const bytes = reinterpret_cast<unsigned char const*>(&record);
    for (std::size_t index = 0; index < sizeof zero; ++index) {
        if (bytes[index] != 0) {
            return false;
        }
    }
    return true;
}

// ---- Before the first successful initialisation
// ----------------------------------------------------------------------

void ExpectNoAdapter(Exports const& api) {
    FanTablePoint const curve[5] = {};
    EXPECT_FALSE(api.IsInitOk());
    EXPECT_FALSE(api.SetActiveAdapterIndex(0));
    EXPECT_EQ(api.GetActiveAdapterIndex(), -1);
    EXPECT_TRUE(IsAllZero(api.GetVGAInfo()));
    api.FetchHwmValues();
    EXPECT_TRUE(IsAllZero(api.GetHwmValue(0)));
    EXPECT_TRUE(IsAllZero(api.GetHwmValue(-1)));
    EXPECT_EQ(api.GetFrameRate(), -1);
    EXPECT_FALSE(api.SetFanSpeed(50));
    EXPECT_FALSE(api.SetFanSpeedTable(curve, 5));
    EXPECT_FALSE(api.SetFanSpeedTable(nullptr, 0));
    EXPECT_TRUE(IsAllZero(api.GetFanSetting()));
    EXPECT_FALSE(api.SetPowerLimit(75, 0));
    EXPECT_FALSE(api.SetPowerLimitDefault());
    EXPECT_TRUE(IsAllZero(api.GetPowerLimitSetting()));
    EXPECT_FALSE(api.SetPerformanceUser(1000, 900, 1000, 900));
    EXPECT_FALSE(api.SetPerformanceOC());
    EXPECT_FALSE(api.SetPerformanceDefault());
    EXPECT_FALSE(api.SetPerformanceSilent());
    EXPECT_TRUE(IsAllZero(api.GetGpuClockSetting()));
    EXPECT_TRUE(IsAllZero(api.GetMemClockSetting()));
    EXPECT_TRUE(IsAllZero(api.GetExternalPerformanceParameter(0x0B361002)));
}

TEST(Api, BeforeTheStartNothingIsAvailable) {
    Machine machine = OverdriveNBoard();
    EXPECT_EQ(machine.Api().GetVendorInfo(), 0U);
    ExpectNoAdapter(machine.Api());
    EXPECT_EQ(machine.TakeCallNames(), std::vector<std::string>{});
}

TEST(Api, AfterAFailedStartNothingIsAvailable) {
    Machine machine(Machine::AmdLibrary::None);
    machine.Captions({L"Intel(R) UHD Graphics 770"});
    EXPECT_FALSE(machine.Init());
    machine.TakeLog();
    ExpectNoAdapter(machine.Api());
    EXPECT_EQ(machine.TakeLog(), Lines{});
}

// ---- The start
// -------------------------------------------------------------------------------------------------------

TEST(Api, VendorInfoTellsBackendAndVendor) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(machine.Api().GetVendorInfo(), kOverdriveN);
    EXPECT_TRUE(machine.Api().IsInitOk());
}

TEST(Api, VendorInfoOfOverdrive8) {
    Machine machine = Overdrive8Board(0);
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(machine.Api().GetVendorInfo(), kOverdrive8);
    EXPECT_TRUE(machine.Api().IsInitOk());
}

TEST(Api, VendorInfoWithoutASupportedGpuIsZero) {
    Machine machine(Machine::AmdLibrary::Newer);
    machine.Captions({L"AMD Radeon(TM) Graphics"});
    EXPECT_FALSE(machine.Init());
    EXPECT_EQ(machine.Api().GetVendorInfo(), 0U);
    EXPECT_EQ(machine.TakeCallNames(), std::vector<std::string>{});
}

TEST(Api, VendorInfoWithoutTheAmdLibraryIsTheVendorAlone) {
    Machine machine(Machine::AmdLibrary::None);
    machine.Captions({L"AMD Radeon RX 580 Series"});
    EXPECT_FALSE(machine.Init());
    EXPECT_EQ(machine.Api().GetVendorInfo(), VendorInfo(0, 1));
    EXPECT_FALSE(machine.Api().IsInitOk());
    Lines const detection = {"[GetVendor()] >>>>>>> display devices", "AMD Radeon RX 580 Series",
                             "[GetVendor()] <<<<<<< display devices", "[GetVendor()] ... AMD"};
    Lines first = detection;
    first.insert(first.end(),
                 {"[ADL::InitADL()] ... load adl dll failed", "[ADL::InitADL()] ... ADL initialization failed",
                  "[ADL::ADL()] Initialize ADL ... failed"});
    EXPECT_EQ(machine.TakeLog(), first);

    // The binding is made once, also when it fails.
    EXPECT_FALSE(machine.Init());
    EXPECT_EQ(machine.Api().GetVendorInfo(), VendorInfo(0, 1));
    EXPECT_EQ(machine.TakeLog(), detection);
}

TEST(Api, UnknownOverdriveVersionsAreRefused) {
    Machine machine = AmdBoard(6);
    machine.Then("ADL2_Overdrive_Caps").Write("ADL2_Overdrive_Caps", 4, Ints({9}));
    machine.Then("ADL2_Overdrive_Caps").Result("ADL2_Overdrive_Caps", -1);
    for (char const* what : {"6", "9", "failing"}) {
        SCOPED_TRACE(what);
        EXPECT_FALSE(machine.Init());
        EXPECT_EQ(machine.Api().GetVendorInfo(), VendorInfo(0, 1));
        EXPECT_EQ(machine.TakeLog().back(), "[GetAmdApiType(ADL&)] ... UNKNOWN");
        EXPECT_FALSE(machine.Api().IsInitOk());
    }
}

TEST(Api, IntelAndNvidiaAreDetected) {
    Machine machine(Machine::AmdLibrary::None);
    machine.Captions({L"Intel(R) Arc(TM) A770 Graphics"});
    machine.Init();
    EXPECT_EQ(machine.Api().GetVendorInfo(), VendorInfo(4, 2));
    EXPECT_FALSE(machine.Api().IsInitOk());
    machine.Captions({L"NVIDIA GeForce RTX 4070"});
    machine.Init();
    EXPECT_EQ(machine.Api().GetVendorInfo(), VendorInfo(5, 3));
    EXPECT_FALSE(machine.Api().IsInitOk());
}

TEST(Api, IntelAndNvidiaHaveNoBackendYet) {
    Machine machine(Machine::AmdLibrary::None);
    machine.Captions({L"Intel(R) Arc(TM) A770 Graphics"});
    EXPECT_FALSE(machine.Init());
    ExpectNoAdapter(machine.Api());
    machine.Captions({L"NVIDIA GeForce RTX 4070"});
    EXPECT_FALSE(machine.Init());
    ExpectNoAdapter(machine.Api());
}

TEST(Api, StartSucceedsThoughTheAdapterCannotBeOpened) {
    Machine machine = OverdriveNBoard();
    machine.Result("ADL2_OverdriveN_CapabilitiesX2_Get", -1);
    EXPECT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.Api().GetVendorInfo(), kOverdriveN);
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 5);
}

TEST(Api, FailedSecondStartLeavesTheAdapterInUse) {
    Machine machine = OverdriveNBoard();
    machine.Write("ADL2_OverdriveN_Temperature_Get", 3, Ints({65500}));
    ASSERT_TRUE(machine.Init());
    machine.Api().FetchHwmValues();

    machine.Captions({L"Intel(R) UHD Graphics 770"});
    EXPECT_FALSE(machine.Init());
    EXPECT_EQ(machine.Api().GetVendorInfo(), 0U);
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.Api().GetHwmValue(2).Value, 65.5);
    EXPECT_TRUE(machine.Api().SetPowerLimit(75, 0));
}

TEST(Api, SecondStartReplacesTheAdapterAndKeepsTheBinding) {
    Machine machine = OverdriveNBoard();
    machine.Write("ADL2_OverdriveN_Temperature_Get", 3, Ints({65500}));
    machine.Then("ADL2_Overdrive_Caps").Write("ADL2_Overdrive_Caps", 4, Ints({8}));
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().FetchHwmValues();
    machine.TakeCalls();

    EXPECT_TRUE(machine.Init());
    EXPECT_EQ(machine.Api().GetVendorInfo(), kOverdrive8);
    for (char const* once :
         {"ADL2_Main_ControlX2_Create", "ADL2_Adapter_AdapterInfoX4_Get", "ADL2_Adapter_Active_Get"}) {
        EXPECT_EQ(machine.CountOf(once), 0) << once;
    }
    EXPECT_EQ(machine.CountOf("ADL2_Overdrive_Caps"), 1);
    // A new adapter has a new table.
    EXPECT_EQ(machine.Api().GetHwmValue(2).Value, -1.0);
    machine.TakeLog();
    machine.Api().SetPowerLimitDefault();
    EXPECT_EQ(machine.TakeLog(), Lines({"[OD8Helper::SetPowerLimitDefault()] ... power limit not supported"}));
}

TEST(Api, SecondStartReadsTheBoardAgain) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_TRUE(machine.Api().IsInitOk());
    machine.Then("ADL2_OverdriveN_CapabilitiesX2_Get").Result("ADL2_OverdriveN_CapabilitiesX2_Get", -1);
    EXPECT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
}

// ---- Monitored values
// ------------------------------------------------------------------------------------------------

// Byte for byte: the name and the padding behind it are zero but for the text.
void ExpectHwmValue(HwmValue const& entry, double value, std::string const& name, bool valid) {
    static_assert(sizeof(HwmValue) == 272);
    unsigned char expected[272] = {};
    std::memcpy(expected, &value, sizeof value);
    std::memcpy(expected + 8, name.data(), name.size());
    expected[264] = valid ? 1 : 0;
    EXPECT_EQ(std::memcmp(&entry, expected, sizeof expected), 0)
        << entry.Value << " \"" << entry.Name << "\" " << entry.Valid;
}

TEST(Api, HwmValuesBeforeAFetchWereNeverRead) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.InitAndForget());
    for (int key = 0; key <= 20; ++key) {
        SCOPED_TRACE(key);
        ExpectHwmValue(machine.Api().GetHwmValue(key), -1.0, "", false);
    }
    EXPECT_EQ(machine.TakeCallNames(), std::vector<std::string>{});
    EXPECT_EQ(machine.TakeLog(), Lines{});
}

TEST(Api, HwmValueOfAnotherKeyIsAllZero) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().FetchHwmValues();
    for (int const key : {-1, 21, 22, 256, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(key);
        EXPECT_TRUE(IsAllZero(machine.Api().GetHwmValue(key)));
    }
}

TEST(Api, HwmValuesAfterAFetchAreTheReadingsAndStay) {
    Machine machine = OverdriveNBoard();
    machine.Write("ADL2_OverdriveN_PerformanceStatus_Get", 2, Ints({136650, 200000, 0, 0, 0, 0, 97}));
    machine.Write("ADL2_OverdriveN_FanControl_Get", 2, Ints({0, 0, 0, 1600}));
    machine.Write("ADL2_Adapter_VRAMUsage_Get", 2, Ints({1234}));
    machine.Write("ADL2_OverdriveN_Temperature_Get", 3, Ints({65500}));
    machine.Write("ADL2_OverdriveN_PowerLimit_Get", 2, Ints({0, -10, 75}));
    ASSERT_TRUE(machine.Init());
    machine.Api().FetchHwmValues();
    machine.TakeCalls();

    auto const expectReadings = [&] {
        Exports const& api = machine.Api();
        ExpectHwmValue(api.GetHwmValue(0), 1366.5, "GPU Core Clock", true);
        ExpectHwmValue(api.GetHwmValue(1), 2000.0, "GPU Memory Clock", true);
        ExpectHwmValue(api.GetHwmValue(2), 65.5, "GPU Temperature", true);
        ExpectHwmValue(api.GetHwmValue(6), 1600.0, "Fan Speed(RPM)", true);
        ExpectHwmValue(api.GetHwmValue(7), 97.0, "GPU Load", true);
        ExpectHwmValue(api.GetHwmValue(13), 1234.0, "Memory Usage", true);
        ExpectHwmValue(api.GetHwmValue(19), 75.0, "Temperature Limit", true);
        ExpectHwmValue(api.GetHwmValue(20), -10.0, "TDP Limit", true);
        for (int const key : {3, 4, 5, 8, 9, 10, 11, 12, 14, 15, 16, 17, 18}) {
            SCOPED_TRACE(key);
            ExpectHwmValue(api.GetHwmValue(key), -1.0, "", false);
        }
    };
    expectReadings();
    EXPECT_EQ(machine.TakeCallNames(), std::vector<std::string>{});

    // What cannot be read any more keeps its last reading.
    for (char const* entryPoint :
         {"ADL2_OverdriveN_PerformanceStatus_Get", "ADL2_OverdriveN_FanControl_Get", "ADL2_Adapter_VRAMUsage_Get",
          "ADL2_OverdriveN_Temperature_Get", "ADL2_OverdriveN_PowerLimit_Get", "ADL2_Overdrive5_FanSpeed_Get"}) {
        machine.Result(entryPoint, -1);
    }
    machine.Api().FetchHwmValues();
    expectReadings();
}

// ---- Forwarding
// ------------------------------------------------------------------------------------------------------

struct Forwarding {
    char const* name;
    std::function<void(Exports const&)> call;
    std::string firstLine;  // of the operation's log; it names the operation
};

TEST(Api, EachExportReachesItsOperation) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.InitAndForget());
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

TEST(Api, EachGetterReachesItsOperation) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.InitAndForget());
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

TEST(Api, ArgumentsArePassedThroughInTheirOrder) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.InitAndForget());
    Exports const& api = machine.Api();

    EXPECT_TRUE(api.SetFanSpeed(40));
    EXPECT_EQ(machine.LastCall("ADL2_Overdrive5_FanSpeed_Set").Int(8), 40);

    EXPECT_TRUE(api.SetPowerLimit(80, -7));
    Call const limit = machine.LastCall("ADL2_OverdriveN_PowerLimit_Set");
    EXPECT_EQ(limit.Int(4), -7);
    EXPECT_EQ(limit.Int(8), 80);

    // The voltages are taken as they are, for every level but the lowest.
    EXPECT_TRUE(api.SetPerformanceUser(0, 1101, 0, 902));
    constexpr std::size_t kSecondLevelVoltage = 12 + 16 + 4;
    EXPECT_EQ(machine.LastCall("ADL2_OverdriveN_SystemClocksX2_Set").Int(kSecondLevelVoltage), 1101);
    EXPECT_EQ(machine.LastCall("ADL2_OverdriveN_MemoryClocksX2_Set").Int(kSecondLevelVoltage), 902);
}

TEST(Api, ArgumentsAreNotCheckedByTheExport) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.InitAndForget());
    Exports const& api = machine.Api();
    EXPECT_TRUE(api.SetFanSpeed(1000));
    EXPECT_EQ(machine.LastCall("ADL2_Overdrive5_FanSpeed_Set").Int(8), 1000);
    EXPECT_TRUE(api.SetFanSpeed(INT_MIN));
    EXPECT_EQ(machine.CountOf("ADL2_Overdrive5_FanSpeedToDefault_Set"), 1);
    machine.TakeLog();
    EXPECT_FALSE(api.SetPowerLimit(INT_MAX, INT_MIN));
    EXPECT_EQ(machine.TakeLog().back(),
              "[OD7Helper::SetPowerLimit(int,int)] ... temp value out of bound: should be 50 to 90");
}

TEST(Api, ResultsArePassedThrough) {
    Machine machine = OverdriveNBoard();
    machine.Result("ADL2_OverdriveN_PowerLimit_Set", -1);
    machine.Then("ADL2_OverdriveN_PowerLimit_Set");
    ASSERT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().SetPowerLimit(75, 0));
    EXPECT_TRUE(machine.Api().SetPowerLimit(75, 0));
}

TEST(Api, FanCurveOfAnOverdrive8BoardReachesItsOperation) {
    constexpr int kFanCurve = 0x2000;
    Machine machine = Overdrive8Board(kFanCurve);
    ASSERT_TRUE(machine.InitAndForget());
    FanTablePoint const curve[5] = {{200, 190}, {221, 211}, {242, 232}, {263, 253}, {284, 274}};
    EXPECT_TRUE(machine.Api().SetFanSpeedTable(curve, 5));
    EXPECT_EQ(machine.TakeLog().front(), "[OD8Helper::SetFanSpeedTable(arr,int)] ... Begin");
    // Value, requested and reset of each setting, behind the count; the first curve speed is setting 20.
    Call const set = machine.LastCall("ADL2_Overdrive8_Setting_Set");
    EXPECT_EQ(set.Int(4 + 20 * 12), 200);
    EXPECT_EQ(set.Int(4 + 28 * 12), 284);
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(curve, 0));
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(nullptr, 5));
}

TEST(Api, ConversionErrorEndsAtTheExportWithALogEntry) {
    Machine machine = OverdriveNBoard();
    machine.Allocate(
        "ADL2_Adapter_AdapterInfoX4_Get", 3,
        AdapterList(
            {{.index = 5, .udid = "PCI_VEN_1002&SUBSYS_E4571002&REV", .bus = 3, .name = "Name", .displayName = ""}}));
    ASSERT_TRUE(machine.InitAndForget());
    VgaInfo const info = machine.Api().GetVGAInfo();
    EXPECT_EQ(info.SubsystemId, 0U);
    EXPECT_STREQ(info.AdapterName, "Name");
    EXPECT_EQ(info.BusNumber, 3);
    EXPECT_EQ(machine.TakeLog().back(), "[GetVGAInfo()] ... stol argument out of range");
}

}  // namespace
}  // namespace gputune::test
