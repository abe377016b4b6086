// The exported functions: what they answer before the start, what the start leaves behind, and the monitored values.
// That each reaches its operation is in api_forwarding_test.cpp.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>

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
    auto const* const bytes = reinterpret_cast<unsigned char const*>(&record);
    for (std::size_t index = 0; index < sizeof record; ++index) {
        if (bytes[index] != 0) {
            return false;
        }
    }
    return true;
}

// ---- Before the first successful initialisation ----

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
    Machine machine(Machine::Library::None);
    machine.Captions({L"Intel(R) UHD Graphics 770"});
    EXPECT_FALSE(machine.Init());
    machine.TakeLog();
    ExpectNoAdapter(machine.Api());
    EXPECT_EQ(machine.TakeLog(), Lines{});
}

// ---- The start ----

TEST(Api, VendorInfoTellsBackendAndVendor) {
    Machine machine = OverdriveNBoard().Started();
    EXPECT_EQ(machine.Api().GetVendorInfo(), kOverdriveN);
    EXPECT_TRUE(machine.Api().IsInitOk());
}

TEST(Api, VendorInfoOfOverdrive8) {
    Machine machine = Overdrive8Board(0).Started();
    EXPECT_EQ(machine.Api().GetVendorInfo(), kOverdrive8);
    EXPECT_TRUE(machine.Api().IsInitOk());
}

TEST(Api, VendorInfoWithoutASupportedGpuIsZero) {
    Machine machine(Machine::Library::AmdNewer);
    machine.Captions({L"AMD Radeon(TM) Graphics"});
    EXPECT_FALSE(machine.Init());
    EXPECT_EQ(machine.Api().GetVendorInfo(), 0U);
    EXPECT_EQ(machine.TakeCallNames(), std::vector<std::string>{});
}

TEST(Api, VendorInfoWithoutTheAmdLibraryIsTheVendorAlone) {
    Machine machine(Machine::Library::None);
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
    machine.Then("ADL2_Overdrive_Caps").Reports(OverdriveVersion{9});
    machine.Then("ADL2_Overdrive_Caps").Result("ADL2_Overdrive_Caps", -1);
    for (char const* what : {"6", "9", "failing"}) {
        SCOPED_TRACE(what);
        EXPECT_FALSE(machine.Init());
        EXPECT_EQ(machine.Api().GetVendorInfo(), VendorInfo(0, 1));
        EXPECT_EQ(machine.TakeLog().back(), "[GetAmdApiType(ADL&)] ... UNKNOWN");
        EXPECT_FALSE(machine.Api().IsInitOk());
    }
}

TEST(Api, IntelAndNvidiaBoardsHaveAnAdapterEvenWithoutTheirLibrary) {
    Machine machine(Machine::Library::None);
    machine.Captions({L"Intel(R) Arc(TM) A770 Graphics"});
    EXPECT_TRUE(machine.Init());
    EXPECT_EQ(machine.Api().GetVendorInfo(), VendorInfo(4, 2));
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.Api().GetHwmValue(0).Value, -1.0);
    machine.Captions({L"NVIDIA GeForce RTX 4070"});
    EXPECT_TRUE(machine.Init());
    EXPECT_EQ(machine.Api().GetVendorInfo(), VendorInfo(5, 3));
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.Api().GetHwmValue(0).Value, -1.0);
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
    Machine machine = OverdriveNBoard().Reports(Temperature{.millidegrees = 65500}).Started();
    machine.Api().FetchHwmValues();

    machine.Captions({L"Intel(R) UHD Graphics 770"});
    EXPECT_FALSE(machine.Init());
    EXPECT_EQ(machine.Api().GetVendorInfo(), 0U);
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.Api().GetHwmValue(2).Value, 65.5);
    EXPECT_TRUE(machine.Api().SetPowerLimit(75, 0));
}

TEST(Api, SecondStartReplacesTheAdapterAndKeepsTheBinding) {
    Machine machine = OverdriveNBoard()
                          .Reports(Temperature{.millidegrees = 65500})
                          .Then("ADL2_Overdrive_Caps")
                          .Reports(OverdriveVersion{8})
                          .Started();
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
    Machine machine = OverdriveNBoard().Started();
    EXPECT_TRUE(machine.Api().IsInitOk());
    machine.Then("ADL2_OverdriveN_CapabilitiesX2_Get").Result("ADL2_OverdriveN_CapabilitiesX2_Get", -1);
    EXPECT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
}

// ---- Monitored values ----

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
    Machine machine = OverdriveNBoard().Started();
    for (int key = 0; key <= 20; ++key) {
        SCOPED_TRACE(key);
        ExpectHwmValue(machine.Api().GetHwmValue(key), -1.0, "", false);
    }
    EXPECT_EQ(machine.TakeCallNames(), std::vector<std::string>{});
    EXPECT_EQ(machine.TakeLog(), Lines{});
}

TEST(Api, HwmValueOfAnotherKeyIsAllZero) {
    Machine machine = OverdriveNBoard().Started();
    machine.Api().FetchHwmValues();
    for (int const key : {-1, 21, 22, 256, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(key);
        EXPECT_TRUE(IsAllZero(machine.Api().GetHwmValue(key)));
    }
}

TEST(Api, HwmValuesAfterAFetchAreTheReadingsAndStay) {
    Machine machine = OverdriveNBoard();
    machine.Reports(PerformanceStatus{.coreClock = 136650, .memoryClock = 200000, .activity = 97});
    machine.Reports(FanControl{.currentSpeed = 1600}).Reports(MemoryUsage{.megabytes = 1234});
    machine.Reports(Temperature{.millidegrees = 65500}).Reports(PowerLimits{.power = -10, .temperature = 75});
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

}  // namespace
}  // namespace gputune::test
