// The binding to the AMD library: which library is loaded, how it is opened, which adapters are active, and which
// generation they are.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <functional>

#include "boards.h"

namespace gputune::test {
namespace {

constexpr std::uint64_t kAmdWithoutApi = 1;
constexpr std::uint64_t kAmdOverdriveN = (3ULL << 32) | 1;
constexpr std::uint64_t kAmdOverdrive8 = (2ULL << 32) | 1;

// What the binding and the choice of the generation logged.
Lines BindingLog(Lines const& lines) {
    Lines binding;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(binding), [](std::string const& line) {
        return line.starts_with("[ADL::") || line.starts_with("[GetAmdApiType(");
    });
    return binding;
}

// Indices 4 and 6, both active.
Machine TwoAdapters() {
    Machine machine = OverdriveNBoard();
    OrderAdapters(machine, {{.index = 4}, {.index = 6}});
    return machine;
}

Lines const kNewerLoaded = {"[ADL::InitADL()] x64 dll loaded ... atiadlxx.dll"};
Lines const kFailed = {"[ADL::ADL()] Initialize ADL ... failed"};
Lines const kOverdriveN = {"[ADL::GetSdkVersionSupported()] ... 7", "[GetAmdApiType(ADL&)] ... OD7"};
Lines const kOverdrive8 = {"[ADL::GetSdkVersionSupported()] ... 8", "[GetAmdApiType(ADL&)] ... OD8"};

Lines Active(int active, int count) {
    return {"[ADL::InitADL()] Number of adapters available ... " + std::to_string(count),
            "[ADL::InitADL()] number of active adapter ... " + std::to_string(active),
            "[ADL::InitADL()] ... ADL initialization successful"};
}

TEST(AdlBinding, OpensTheNewerLibraryStepByStep) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.Init());

    EXPECT_EQ(BindingLog(machine.TakeLog()), kNewerLoaded + Active(1, 1) + kOverdriveN);
    EXPECT_EQ(machine.Api().GetVendorInfo(), kAmdOverdriveN);
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 5);

    std::vector<Call> const calls = machine.TakeCalls();
    ASSERT_GE(calls.size(), 4U);

    // The arguments of the creation, one by one: it has no context yet.
    EXPECT_EQ(calls[0].entryPoint, "ADL2_Main_ControlX2_Create");
    EXPECT_NE(calls[0].args[0], 0) << "allocation callback";
    EXPECT_EQ(calls[0].args[1], 0) << "every adapter";
    EXPECT_NE(calls[0].args[2], 0) << "where the context goes";
    EXPECT_EQ(calls[0].args[3], 1) << "locked threading model";

    EXPECT_EQ(calls[2].record, BytesOf(ActiveStatus{-1})) << "starts as unknown";
    EXPECT_EQ(Lines({DescribeAmdCall(calls[1]), DescribeAmdCall(calls[2]), DescribeAmdCall(calls[3])}),
              Lines({"Adapter_AdapterInfoX4_Get -1", "Adapter_Active_Get 5", "Overdrive_Caps 5"}));
}

TEST(AdlBinding, OlderLibraryIsTheSecondChoice) {
    Machine machine = AmdBoard(8, Machine::Library::AmdOlder);
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(BindingLog(machine.TakeLog()),
              Lines{"[ADL::InitADL()] x86 dll loaded ... atiadlxy.dll"} + Active(1, 1) + kOverdrive8);
    EXPECT_EQ(machine.Api().GetVendorInfo(), kAmdOverdrive8);
}

TEST(AdlBinding, MissingLibraryFailsAndIsNotTriedAgain) {
    Machine machine(Machine::Library::None);
    machine.Captions({L"AMD Radeon RX 580 Series"});

    EXPECT_FALSE(machine.Init());
    EXPECT_EQ(BindingLog(machine.TakeLog()), Lines({
                                                 "[ADL::InitADL()] ... load adl dll failed",
                                                 "[ADL::InitADL()] ... ADL initialization failed",
                                                 "[ADL::ADL()] Initialize ADL ... failed",
                                             }));
    EXPECT_EQ(machine.Api().GetVendorInfo(), kAmdWithoutApi);

    EXPECT_FALSE(machine.Init());
    EXPECT_EQ(BindingLog(machine.TakeLog()), Lines{});
    EXPECT_EQ(machine.Api().GetVendorInfo(), kAmdWithoutApi);
}

// A library that loads and then fails, or that answers nonsense.
struct OpeningCase {
    char const* name;
    std::function<void(Machine&)> order;
    Lines log;  // behind "dll loaded", up to the version
    bool opens;
    int activeQueries;
};

void PrintTo(OpeningCase const& opening, std::ostream* out) {
    *out << opening.name;
}

Lines const kNoContext = Lines{"[ADL::InitADL()] ... ADL2_Main_ControlX2_Create failed"} + kFailed;
Lines const kNoCount = {"[ADL::InitADL()] ... Unable to get Adapter count"};

Lines NoAdapter(bool failed, int count) {
    return (failed ? kNoCount : Lines()) +
           Lines{"[ADL::InitADL()] Number of adapters available ... " + std::to_string(count),
                 "[ADL::InitADL()] ... No available adapter"} +
           kFailed;
}

Bytes const kOneAdapter = AdapterList({{}});

std::vector<OpeningCase> const kOpenings = {
    {"FailingContext", [](Machine& m) { m.Result("ADL2_Main_ControlX2_Create", -1); }, kNoContext, false, 0},
    {"MissingContextCreation", [](Machine& m) { m.Hide("ADL2_Main_ControlX2_Create"); }, kNoContext, false, 0},
    {"MissingAdapterInfo", [](Machine& m) { m.Hide("ADL2_Adapter_AdapterInfoX4_Get"); }, NoAdapter(true, -1), false, 0},
    {"FailingAdapterInfoWithoutAnAnswer",
     [](Machine& m) {
         OrderAdapters(m, -1, Bytes{});
         m.Result("ADL2_Adapter_AdapterInfoX4_Get", -1);
     },
     NoAdapter(true, -1), false, 0},
    {"FailingAdapterInfoWithAListCarriesOn", [](Machine& m) { m.Result("ADL2_Adapter_AdapterInfoX4_Get", -1); },
     kNoCount + Active(1, 1), true, 1},
    {"NegativeCount", [](Machine& m) { OrderAdapters(m, -2, kOneAdapter); }, NoAdapter(true, -2), false, 0},
    {"NoAdapters", [](Machine& m) { OrderAdapters(m, 0, kOneAdapter); }, NoAdapter(false, 0), false, 0},
    {"CountWithoutList", [](Machine& m) { OrderAdapters(m, 3, Bytes{}); }, NoAdapter(false, 3), false, 0},
    {"HugeCountWithAShortList", [](Machine& m) { OrderAdapters(m, INT_MAX, kOneAdapter); }, Active(1, INT_MAX), true,
     1},
    {"CountWhoseByteSizeWrapsAround", [](Machine& m) { OrderAdapters(m, 0x10000000, kOneAdapter); },
     Active(1, 0x10000000), true, 1},
    {"ListShorterThanARecord", [](Machine& m) { OrderAdapters(m, 1, Bytes(kOneAdapter.size() - 1)); },
     NoAdapter(false, 1), false, 0},
};

class AdlOpening : public testing::TestWithParam<OpeningCase> {};

TEST_P(AdlOpening, LogsAndDecides) {
    OpeningCase const& opening = GetParam();
    Machine machine = OverdriveNBoard();
    opening.order(machine);

    EXPECT_EQ(machine.Init(), opening.opens);

    Lines const version = opening.opens ? kOverdriveN : Lines();
    EXPECT_EQ(BindingLog(machine.TakeLog()), kNewerLoaded + opening.log + version);
    EXPECT_EQ(machine.CountOf("ADL2_Adapter_Active_Get"), opening.activeQueries);
    EXPECT_EQ(machine.CountOf("ADL2_Overdrive_Caps"), opening.opens ? 1 : 0);
    EXPECT_EQ(machine.Api().GetVendorInfo(), opening.opens ? kAmdOverdriveN : kAmdWithoutApi);

    // Whatever came of it stays: the library is neither loaded nor opened again.
    machine.TakeCalls();
    EXPECT_EQ(machine.Init(), opening.opens);
    EXPECT_EQ(machine.CountOf("ADL2_Main_ControlX2_Create"), 0);
    EXPECT_EQ(machine.CountOf("ADL2_Adapter_AdapterInfoX4_Get"), 0);
    EXPECT_EQ(BindingLog(machine.TakeLog()), version);
}

INSTANTIATE_TEST_SUITE_P(Answers, AdlOpening, testing::ValuesIn(kOpenings),
                         [](auto const& given) { return given.param.name; });

// The versions that the library reports one after the other, as neither supported nor enabled: that does not matter.
TEST(AdlGeneration, OnlyVersionsSevenAndEightAreKnown) {
    struct Case {
        int version;
        Lines log;
        bool ok;
        std::uint64_t vendorInfo;
    };
    std::vector<Case> const cases = {
        {6, {"[ADL::GetSdkVersionSupported()] ... 6", "[GetAmdApiType(ADL&)] ... UNKNOWN"}, false, kAmdWithoutApi},
        {9, {"[ADL::GetSdkVersionSupported()] ... 9", "[GetAmdApiType(ADL&)] ... UNKNOWN"}, false, kAmdWithoutApi},
        {0, {"[ADL::GetSdkVersionSupported()] ... 0", "[GetAmdApiType(ADL&)] ... UNKNOWN"}, false, kAmdWithoutApi},
        {-1, {"[ADL::GetSdkVersionSupported()] ... -1", "[GetAmdApiType(ADL&)] ... UNKNOWN"}, false, kAmdWithoutApi},
        {7, kOverdriveN, true, kAmdOverdriveN},
        {8, kOverdrive8, true, kAmdOverdrive8},
    };
    Machine machine = AmdBoard(0);
    for (Case const& known : cases) {
        SCOPED_TRACE(known.version);
        machine.Reports(OverdriveVersion{known.version});
        EXPECT_EQ(machine.Init(), known.ok);
        Lines const log = machine.TakeLog();
        Lines binding = BindingLog(log);
        ASSERT_GE(binding.size(), 2U);
        EXPECT_EQ(Lines(binding.end() - 2, binding.end()), known.log);
        EXPECT_EQ(machine.Api().GetVendorInfo(), known.vendorInfo);
    }
}

Lines const kUnknown = {"[ADL::GetSdkVersionSupported()] ... ADL2_Overdrive_Caps failed",
                        "[GetAmdApiType(ADL&)] ... UNKNOWN"};

TEST(AdlGeneration, FailingQueryIsAnUnknownGeneration) {
    Machine machine = AmdBoard(7);
    machine.Result("ADL2_Overdrive_Caps", -8);
    EXPECT_FALSE(machine.Init());
    EXPECT_EQ(BindingLog(machine.TakeLog()), kNewerLoaded + Active(1, 1) + kUnknown);
    EXPECT_EQ(machine.Api().GetVendorInfo(), kAmdWithoutApi);
}

TEST(AdlGeneration, MissingQueryIsAnUnknownGeneration) {
    Machine machine = AmdBoard(7);
    machine.Hide("ADL2_Overdrive_Caps");
    EXPECT_FALSE(machine.Init());
    EXPECT_EQ(BindingLog(machine.TakeLog()), kNewerLoaded + Active(1, 1) + kUnknown);
}

TEST(AdlGeneration, UnknownGenerationLeavesTheAdapterInUse) {
    Machine machine = OverdriveNBoard().Started();
    machine.Reports(OverdriveVersion{6});

    EXPECT_FALSE(machine.Init());

    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.Api().GetPowerLimitSetting().Max, 50);
}

TEST(AdlAdapters, StatusExactlyOneMakesAnAdapterActive) {
    constexpr char const* kActive = "ADL2_Adapter_Active_Get";
    Machine machine = OverdriveNBoard();
    OrderAdapters(machine,
                  {{.index = 7}, {.index = 4}, {.index = 9}, {.index = 8}, {.index = 3}, {.index = 6}, {.index = 4}});
    machine.Reports(ActiveStatus{0});                                    // 7: inactive
    machine.Then(kActive).Reports(ActiveStatus{1});                      // 4: active
    machine.Then(kActive).Reports(ActiveStatus{1}).Result(kActive, -1);  // 9: the query fails
    machine.Then(kActive);                                               // 8: nothing is written
    machine.Then(kActive).Reports(ActiveStatus{2});                      // 3: not exactly 1
    machine.Then(kActive).Reports(ActiveStatus{1});                      // 6: active
    machine.Then(kActive).Reports(ActiveStatus{1});                      // 4 once more: counts again
    ASSERT_TRUE(machine.Init());

    EXPECT_EQ(BindingLog(machine.TakeLog()), kNewerLoaded + Active(3, 7) + kOverdriveN);
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 4);
    Lines asked = TakeAmdTraffic(machine);
    std::erase_if(asked, [](std::string const& line) { return !line.starts_with("Adapter_Active_Get"); });
    EXPECT_EQ(asked,
              Lines({"Adapter_Active_Get 7", "Adapter_Active_Get 4", "Adapter_Active_Get 9", "Adapter_Active_Get 8",
                     "Adapter_Active_Get 3", "Adapter_Active_Get 6", "Adapter_Active_Get 4"}));

    EXPECT_FALSE(machine.Api().SetActiveAdapterIndex(7));
    EXPECT_FALSE(machine.Api().SetActiveAdapterIndex(9));
    EXPECT_FALSE(machine.Api().SetActiveAdapterIndex(8));
    EXPECT_FALSE(machine.Api().SetActiveAdapterIndex(3));
    EXPECT_TRUE(machine.Api().SetActiveAdapterIndex(6));
}

TEST(AdlAdapters, NoneActiveOpensAllTheSame) {
    Machine machine = OverdriveNBoard();
    machine.Reports(ActiveStatus{0});
    ASSERT_TRUE(machine.Init());

    EXPECT_EQ(BindingLog(machine.TakeLog()), kNewerLoaded + Active(0, 1) + kOverdriveN);
    EXPECT_EQ(AdapterOf(machine.LastCall("ADL2_Overdrive_Caps")), -1);
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), -1);

    for (int const index : {-1, 0, 5}) {
        SCOPED_TRACE(index);
        EXPECT_FALSE(machine.Api().SetActiveAdapterIndex(index));
        EXPECT_EQ(machine.TakeLog(), Lines({"[ADL::SetActiveAdapterIndex()] ... specified adapter index not found"}));
        EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), -1);
    }
}

TEST(AdlAdapters, MissingStatusQueryLeavesNoneActive) {
    Machine machine = OverdriveNBoard();
    machine.Hide("ADL2_Adapter_Active_Get");
    ASSERT_TRUE(machine.Init());
    EXPECT_EQ(BindingLog(machine.TakeLog()), kNewerLoaded + Active(0, 1) + kOverdriveN);
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), -1);
}

TEST(AdlSelection, LogsEachOutcome) {
    Machine machine = TwoAdapters().Started();
    Exports const& api = machine.Api();
    EXPECT_EQ(api.GetActiveAdapterIndex(), 4);

    EXPECT_TRUE(api.SetActiveAdapterIndex(4));
    EXPECT_EQ(machine.TakeLog(),
              Lines({"[ADL::SetActiveAdapterIndex()] ... already using the specified adapter index"}));
    EXPECT_EQ(api.GetActiveAdapterIndex(), 4);

    EXPECT_TRUE(api.SetActiveAdapterIndex(6));
    EXPECT_EQ(machine.TakeLog(), Lines({"[ADL::SetActiveAdapterIndex()] ... adapter index selected"}));
    EXPECT_EQ(api.GetActiveAdapterIndex(), 6);

    EXPECT_FALSE(api.SetActiveAdapterIndex(1)) << "an index, not a position";
    EXPECT_EQ(machine.TakeLog(), Lines({"[ADL::SetActiveAdapterIndex()] ... specified adapter index not found"}));
    EXPECT_EQ(api.GetActiveAdapterIndex(), 6);

    EXPECT_TRUE(api.SetActiveAdapterIndex(4));
    EXPECT_EQ(machine.TakeLog(), Lines({"[ADL::SetActiveAdapterIndex()] ... adapter index selected"}));
    EXPECT_EQ(machine.TakeCalls().size(), 0U) << "choosing asks nothing of the library";
}

TEST(AdlSelection, LaterCallsGoToTheChosenAdapterWithTheRangesOfTheFirst) {
    Machine machine = TwoAdapters().Started();
    machine.Reports(Capabilities{.power = {.minimum = -50, .maximum = 77}});

    ASSERT_TRUE(machine.Api().SetActiveAdapterIndex(6));
    machine.Api().FetchHwmValues();
    machine.Api().SetFanSpeed(40);
    machine.Api().SetPowerLimit(75, 0);
    machine.Api().SetPerformanceUser(0, 0, 0, 0);

    EXPECT_EQ(machine.Api().GetPowerLimitSetting().Max, 50);
    EXPECT_EQ(machine.CountOf("ADL2_OverdriveN_CapabilitiesX2_Get"), 0);
    std::vector<Call> const calls = machine.TakeCalls();
    ASSERT_GT(calls.size(), 10U);
    for (Call const& call : calls) {
        EXPECT_EQ(AdapterOf(call), 6) << call.entryPoint;
    }
}

TEST(AdlSelection, SurvivesANewInitialisationWhichReadsTheChosenAdapter) {
    Machine machine = TwoAdapters().Started();
    ASSERT_TRUE(machine.Api().SetActiveAdapterIndex(6));
    machine.Reports(Capabilities{.power = {.minimum = -50, .maximum = 77}});

    ASSERT_TRUE(machine.Init());

    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 6);
    EXPECT_EQ(AdapterOf(machine.LastCall("ADL2_Overdrive_Caps")), 6);
    EXPECT_EQ(AdapterOf(machine.LastCall("ADL2_OverdriveN_CapabilitiesX2_Get")), 6);
    EXPECT_EQ(machine.Api().GetPowerLimitSetting().Max, 77);
}

TEST(AdlMemory, CallbackGivesBlocksOfPositiveSizes) {
    Machine machine = OverdriveNBoard();
    EXPECT_EQ(machine.Scripted().AskForMemory(16), nullptr) << "no callback before the context is created";
    ASSERT_TRUE(machine.Init());

    auto* const block = static_cast<unsigned char*>(machine.Scripted().AskForMemory(1580));
    ASSERT_NE(block, nullptr);
    std::fill(block, block + 1580, static_cast<unsigned char>(0xA5));
    EXPECT_NE(machine.Scripted().AskForMemory(1), nullptr);
    EXPECT_NE(machine.Scripted().AskForMemory(0), nullptr) << "an empty list is no lack of memory";
    EXPECT_EQ(machine.Scripted().AskForMemory(-1), nullptr);
    EXPECT_EQ(machine.Scripted().AskForMemory(INT_MIN), nullptr);
}

#if !defined(_WIN32)

// In a child process, whose end is the library's end.
TEST(AdlLifetimeDeathTest, EndOfProcessDestroysTheBinding) {
    Machine machine = OverdriveNBoard();
    EXPECT_EXIT(
        {
            machine.Init();
            std::exit(machine.Api().IsInitOk() ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    Lines const log = machine.TakeLog();
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.back(), "[ADL::~ADL()] ~ADL ... destructor called");
    EXPECT_EQ(std::count(log.begin(), log.end(), log.back()), 1);
}

#endif

// The names under which the library publishes its functions, in the order of the function table.
Lines const kPublished = {
    "ADL_Main_Control_Create",
    "ADL_Main_Control_Destroy",
    "ADL2_Main_ControlX2_Create",
    "ADL2_Main_Control_Create",
    "ADL2_Main_Control_Refresh",
    "ADL2_Main_Control_Destroy",
    "ADL2_Main_Control_GetProcAddress",
    "ADL2_Graphics_Versions_Get",
    "ADL2_Graphics_VersionsX2_Get",
    "ADL2_Graphics_Platform_Get",
    "ADL2_Overdrive_Caps",
    "ADL2_Adapter_Active_Get",
    "ADL2_Adapter_Aspects_Get",
    "ADL2_Adapter_NumberOfAdapters_Get",
    "ADL2_Flush_Driver_Data",
    "ADL2_Adapter_AdapterInfo_Get",
    "ADL2_Adapter_AdapterInfoX2_Get",
    "ADL2_Adapter_ASICFamilyType_Get",
    "ADL2_Adapter_Speed_Caps",
    "ADL2_Adapter_Speed_Get",
    "ADL2_Adapter_Speed_Set",
    "ADL2_Adapter_Accessibility_Get",
    "ADL2_Adapter_VideoBiosInfo_Get",
    "ADL2_Adapter_ID_Get",
    "ADL2_AdapterX2_Caps",
    "ADL2_Adapter_VariBright_Caps",
    "ADL2_Adapter_VariBrightEnable_Set",
    "ADL2_Adapter_VariBrightLevel_Get",
    "ADL2_Adapter_VariBrightLevel_Set",
    "ADL2_Adapter_DriverSettings_Get",
    "ADL2_Adapter_DriverSettings_Set",
    "ADL2_Adapter_TRNG_Get",
    "ADL2_Adapter_DeviceID_Get",
    "ADL2_Adapter_VRAMUsage_Get",
    "ADL2_Adapter_AdapterInfoX4_Get",
    "ADL2_Adapter_AdapterInfoX3_Get",
    "ADL2_Adapter_MemoryInfo_Get",
    "ADL2_Overdrive5_CurrentActivity_Get",
    "ADL2_Overdrive5_ThermalDevices_Enum",
    "ADL2_Overdrive5_Temperature_Get",
    "ADL2_Overdrive5_FanSpeedInfo_Get",
    "ADL2_Overdrive5_FanSpeed_Get",
    "ADL2_Overdrive5_FanSpeed_Set",
    "ADL2_Overdrive5_FanSpeedToDefault_Set",
    "ADL2_Overdrive5_ODParameters_Get",
    "ADL2_Overdrive5_ODPerformanceLevels_Get",
    "ADL2_Overdrive5_ODPerformanceLevels_Set",
    "ADL2_Overdrive5_PowerControl_Caps",
    "ADL2_Overdrive5_PowerControlInfo_Get",
    "ADL2_Overdrive5_PowerControl_Get",
    "ADL2_Overdrive5_PowerControl_Set",
    "ADL2_Overdrive5_PowerControlAbsValue_Caps",
    "ADL2_Overdrive5_PowerControlAbsValue_Get",
    "ADL2_Overdrive5_PowerControlAbsValue_Set",
    "ADL2_Overdrive6_Capabilities_Get",
    "ADL2_Overdrive6_StateInfo_Get",
    "ADL2_Overdrive6_State_Set",
    "ADL2_Overdrive6_State_Reset",
    "ADL2_Overdrive6_CurrentStatus_Get",
    "ADL2_Overdrive6_ThermalController_Caps",
    "ADL2_Overdrive6_Temperature_Get",
    "ADL2_Overdrive6_FanSpeed_Get",
    "ADL2_Overdrive6_FanSpeed_Set",
    "ADL2_Overdrive6_FanSpeed_Reset",
    "ADL2_Overdrive6_PowerControl_Caps",
    "ADL2_Overdrive6_PowerControlInfo_Get",
    "ADL2_Overdrive6_PowerControl_Get",
    "ADL2_Overdrive6_PowerControl_Set",
    "ADL2_Overdrive6_VoltageControlInfo_Get",
    "ADL2_Overdrive6_VoltageControl_Get",
    "ADL2_Overdrive6_VoltageControl_Set",
    "ADL2_Overdrive6_CapabilitiesEx_Get",
    "ADL2_Overdrive6_StateEx_Get",
    "ADL2_Overdrive6_StateEx_Set",
    "ADL2_Overdrive6_ThermalLimitUnlock_Set",
    "ADL2_Overdrive6_ThermalLimitUnlock_Get",
    "ADL2_Overdrive6_AdvancedFan_Caps",
    "ADL2_Overdrive6_TargetTemperatureRangeInfo_Get",
    "ADL2_Overdrive6_TargetTemperatureData_Get",
    "ADL2_Overdrive6_TargetTemperatureData_Set",
    "ADL2_Overdrive6_FanPWMLimitRangeInfo_Get",
    "ADL2_Overdrive6_FanPWMLimitData_Get",
    "ADL2_Overdrive6_FanPWMLimitData_Set",
    "ADL2_Overdrive6_CurrentPower_Get",
    "ADL2_Overdrive6_ControlI2C",
    "ADL2_OverdriveN_CapabilitiesX2_Get",
    "ADL2_OverdriveN_SystemClocks_Get",
    "ADL2_OverdriveN_SystemClocks_Set",
    "ADL2_OverdriveN_SystemClocksX2_Get",
    "ADL2_OverdriveN_SystemClocksX2_Set",
    "ADL2_OverdriveN_MemoryClocksX2_Get",
    "ADL2_OverdriveN_MemoryClocksX2_Set",
    "ADL2_OverdriveN_MemoryClocks_Get",
    "ADL2_OverdriveN_MemoryClocks_Set",
    "ADL2_OverdriveN_FanControl_Get",
    "ADL2_OverdriveN_FanControl_Set",
    "ADL2_OverdriveN_PowerLimit_Get",
    "ADL2_OverdriveN_PowerLimit_Set",
    "ADL2_OverdriveN_Temperature_Get",
    "ADL2_OverdriveN_PerformanceStatus_Get",
    "ADL2_OverdriveN_Test_Set",
    "ADL2_OverdriveN_CountOfEvents_Get",
    "ADL2_CustomFan_Caps",
    "ADL2_CustomFan_Get",
    "ADL2_CustomFan_Set",
    "ADL2_OverdriveN_MemoryTimingLevel_Get",
    "ADL2_OverdriveN_MemoryTimingLevel_Set",
    "ADL2_OverdriveN_ZeroRPMFan_Get",
    "ADL2_OverdriveN_ZeroRPMFan_Set",
    "ADL2_OverdriveN_SettingsExt_Get",
    "ADL2_OverdriveN_SettingsExt_Set",
    "ADL2_Overdrive8_Init_Setting_Get",
    "ADL2_Overdrive8_Current_Setting_Get",
    "ADL2_Overdrive8_Setting_Set",
    "ADL2_New_QueryPMLogData_Get",
    "ADL2_Overdrive8_Init_SettingX2_Get",
    "ADL2_Overdrive8_Current_SettingX2_Get",
    "ADL2_Display_WriteAndReadI2CRev_Get",
    "ADL_Display_WriteAndReadI2CRev_Get",
    "ADL2_Display_WriteAndReadI2C",
    "ADL_Display_WriteAndReadI2C",
    "ADL2_FPS_Caps",
    "ADL2_FPS_Settings_Get",
    "ADL2_FPS_Settings_Set",
    "ADL2_FPS_Settings_Reset",
    "ADL2_Adapter_FrameMetrics_Caps",
    "ADL2_Adapter_FrameMetrics_Start",
    "ADL2_Adapter_FrameMetrics_Stop",
    "ADL2_Adapter_FrameMetrics_Get",
};

TEST(AdlFunctionTable, HoldsThePublishedNamesInOrder) {
    Lines const table = {
#define ADL_FUNCTION(name, ...) #name,
#include "amd/adl_functions.inc"
    };
    EXPECT_EQ(table, kPublished);
    EXPECT_EQ(kPublished.size(), 129U);
}

}  // namespace
}  // namespace gputune::test
