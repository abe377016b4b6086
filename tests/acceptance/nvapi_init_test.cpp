// NVIDIA boards: opening NVAPI, listing the GPUs, and everything that stays the same whatever the board is.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <new>

#include "intel_board.h"
#include "nvidia_board.h"

namespace gputune::test {
namespace {

constexpr std::uint64_t kNvidia = std::uint64_t{5} << 32 | 3;

std::string Tagged(std::string const& subject, std::string const& message) {
    return "[NVAPIHelper::NVAPIHelper()]" + (subject.empty() ? "" : " " + subject) + " ... " + message;
}

Lines const kOpened = {Tagged("", "begin"), Tagged("NvAPI_Initialize", "successfully"),
                       Tagged("NVAPI Version", "NVidia Complete Version 1.10")};

Lines Opened(Lines const& rest) {
    return kOpened + rest;
}

std::string Name(int gpu) {
    return Tagged("GPU full name #" + std::to_string(gpu), "NVIDIA GeForce GPU " + std::to_string(gpu));
}

// ---- Opening ----

TEST(NvapiInit, LogsTheVersionAndTheGpus) {
    Machine machine = NvidiaBoard(2);
    EXPECT_TRUE(machine.Init());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()), Opened({Tagged("Total physical gpu count", "2"), Name(0), Name(1)}));
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.Api().GetVendorInfo(), kNvidia);
}

TEST(NvapiInit, CallsInTheirOrder) {
    Machine machine = NvidiaBoard(2);
    machine.Init();
    EXPECT_EQ(machine.TakeTraffic(DescribeNvidiaCall),
              Lines({"nvapi_QueryInterface AD298D3F", "nvapi_QueryInterface 150E828", "NvAPI_Initialize",
                     "nvapi_QueryInterface 33C7358C", "nvapi_QueryInterface 593E8644", "nvapi_QueryInterface 1053FA5",
                     "NvAPI_GetInterfaceVersionString", "nvapi_QueryInterface E5AC921F", "NvAPI_EnumPhysicalGPUs",
                     "nvapi_QueryInterface CEEE8E9F", "NvAPI_GPU_GetFullName 600000", "NvAPI_GPU_GetFullName 600001"}));
}

TEST(NvapiInit, WithoutTheLibraryTheBoardIsKnownButNotOpened) {
    Machine machine(Machine::Library::None);
    machine.Captions({L"NVIDIA GeForce RTX 4070"});
    EXPECT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.Api().GetVendorInfo(), kNvidia);
    // Nobody has a text for the status.
    EXPECT_EQ(WithoutDetection(machine.TakeLog()), Lines({Tagged("", "begin"), Tagged("NvAPI_Initialize", "error: ")}));
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.TakeLog(), Lines({"[NVAPIHelper::FetchHwmValues()] ... begin"}));
}

TEST(NvapiInit, LibraryThatNeverInitialisesHasNoTextEither) {
    Machine machine = NvidiaBoard(1);
    OrderErrorTexts(machine, {-6});
    machine.Result("NvAPI_Initialize", -6);
    EXPECT_EQ(InitLog(machine), Lines({Tagged("", "begin"), Tagged("NvAPI_Initialize", "error: ")}));
    EXPECT_FALSE(machine.Api().IsInitOk());
    // Once for itself and once for the text; both times it is unloaded again.
    EXPECT_EQ(machine.CountOf("NvAPI_Initialize"), 2);
    EXPECT_EQ(machine.CountOf("NvAPI_GetErrorMessage"), 0);
    EXPECT_EQ(machine.CountOf("nvapi_QueryInterface"), 4);
}

TEST(NvapiInit, LibraryThatInitialisesAtTheSecondTryTellsWhyNotAtTheFirst) {
    Machine machine = NvidiaBoard(1);
    OrderErrorTexts(machine, {-6});
    machine.Result("NvAPI_Initialize", -6).Then("NvAPI_Initialize");
    EXPECT_EQ(InitLog(machine), Lines({Tagged("", "begin"), Tagged("NvAPI_Initialize", "error: NVAPI_-6")}));
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(DescribeNvidiaCall(machine.LastCall("NvAPI_GetErrorMessage")), "NvAPI_GetErrorMessage -6");
    EXPECT_EQ(machine.CountOf("NvAPI_EnumPhysicalGPUs"), 0);

    // The next start finds it open.
    machine.TakeCalls();
    EXPECT_EQ(InitLog(machine), Opened({Tagged("Total physical gpu count", "1"), Name(0)}));
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.CountOf("NvAPI_Initialize"), 0);
}

TEST(NvapiInit, LibraryWithoutItsOneExportIsNotOpened) {
    Machine machine = NvidiaBoard(1);
    machine.Hide("nvapi_QueryInterface");
    EXPECT_EQ(InitLog(machine), Lines({Tagged("", "begin"), Tagged("NvAPI_Initialize", "error: ")}));
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.TakeCallNames(), std::vector<std::string>{});
}

TEST(NvapiInit, LibraryWithoutAnInitialiseFunctionIsNotOpened) {
    Machine machine = NvidiaBoard(1);
    machine.Hide("NvAPI_Initialize");
    EXPECT_EQ(InitLog(machine), Lines({Tagged("", "begin"), Tagged("NvAPI_Initialize", "error: ")}));
    EXPECT_FALSE(machine.Api().IsInitOk());
}

TEST(NvapiInit, SecondStartListsAgainInTheLibraryThatIsOpen) {
    Machine machine = NvidiaBoard(1).Started();
    machine.Then("NvAPI_EnumPhysicalGPUs").Reports(GpuCount{0});
    EXPECT_EQ(InitLog(machine), Opened({Tagged("Total physical gpu count", "0")}));
    EXPECT_EQ(machine.TakeCallNames(),
              std::vector<std::string>({"NvAPI_GetInterfaceVersionString", "NvAPI_EnumPhysicalGPUs"}));
}

// ---- The version ----

TEST(NvapiInit, VersionIsLoggedWhateverItsStatus) {
    Machine machine = NvidiaBoard(0);
    machine.Result("NvAPI_GetInterfaceVersionString", -1);
    EXPECT_EQ(InitLog(machine), Opened({Tagged("Total physical gpu count", "0")}));
    EXPECT_EQ(machine.CountOf("NvAPI_GetErrorMessage"), 0);
}

TEST(NvapiInit, VersionThatCannotBeReadIsEmpty) {
    Machine machine = NvidiaBoard(0);
    machine.Hide("NvAPI_GetInterfaceVersionString");
    Lines const log = InitLog(machine);
    ASSERT_EQ(log.size(), 4U);
    EXPECT_EQ(log[2], Tagged("NVAPI Version", ""));
    EXPECT_TRUE(machine.Api().IsInitOk());
}

// ---- The list of GPUs ----

TEST(NvapiInit, ListThatCannotBeReadEndsTheStart) {
    Machine machine = NvidiaBoard(2);
    OrderErrorTexts(machine, {-6, -3});
    machine.Result("NvAPI_EnumPhysicalGPUs", -6);
    EXPECT_EQ(InitLog(machine), Opened({Tagged("nNvAPI_EnumPhysicalGPUs", "error: NVAPI_-6")}));
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.CountOf("NvAPI_GPU_GetFullName"), 0);

    machine.Hide("NvAPI_EnumPhysicalGPUs");
    // Its address is known.
    EXPECT_EQ(InitLog(machine), Opened({Tagged("nNvAPI_EnumPhysicalGPUs", "error: NVAPI_-6")}));
}

TEST(NvapiInit, ListThatTheLibraryDoesNotHaveEndsTheStart) {
    Machine machine = NvidiaBoard(2);
    OrderErrorTexts(machine, {-3});
    machine.Hide("NvAPI_EnumPhysicalGPUs");
    EXPECT_EQ(InitLog(machine), Opened({Tagged("nNvAPI_EnumPhysicalGPUs", "error: NVAPI_-3")}));
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(DescribeNvidiaCall(machine.LastCall("NvAPI_GetErrorMessage")), "NvAPI_GetErrorMessage -3");

    // Asked for again as long as it is missing.
    machine.Show("NvAPI_EnumPhysicalGPUs");
    machine.Init();
    EXPECT_TRUE(machine.Api().IsInitOk());
}

TEST(NvapiInit, NoGpuIsASuccess) {
    Machine machine = NvidiaBoard(0);
    EXPECT_EQ(InitLog(machine), Opened({Tagged("Total physical gpu count", "0")}));
    EXPECT_TRUE(machine.Api().IsInitOk());
}

TEST(NvapiInit, AllHandlesThereIsRoomForAreUsed) {
    Machine machine = NvidiaBoard(64);
    Lines const log = InitLog(machine);
    ASSERT_EQ(log.size(), 4U + 64U);
    EXPECT_EQ(log[3], Tagged("Total physical gpu count", "64"));
    for (int gpu = 0; gpu < 64; ++gpu) {
        EXPECT_EQ(log[static_cast<std::size_t>(4 + gpu)], Name(gpu));
    }
    EXPECT_TRUE(machine.Api().IsInitOk());
}

TEST(NvapiInit, CountBeyondTheHandlesIsLoggedButNotBelieved) {
    struct {
        int count;
        char const* logged;
    } const rows[] = {{65, "65"}, {1000000, "1000000"}, {INT_MIN, "2147483648"}, {-1, "4294967295"}};
    Machine machine = NvidiaBoard(64);
    for (auto const& row : rows) {
        SCOPED_TRACE(row.logged);
        machine.Reports(GpuCount{row.count});
        machine.TakeCalls();
        Lines const log = InitLog(machine);
        ASSERT_EQ(log.size(), 4U + 64U);
        EXPECT_EQ(log[3], Tagged("Total physical gpu count", row.logged));
        EXPECT_EQ(machine.CountOf("NvAPI_GPU_GetFullName"), 64);
        EXPECT_EQ(machine.LastCall("NvAPI_GPU_GetFullName").HandleArgument(0), kGpu + 63);
        EXPECT_TRUE(machine.Api().IsInitOk());
    }
}

// ---- Names ----

TEST(NvapiInit, NameIsLoggedBeforeItsFailure) {
    Machine machine = NvidiaBoard(3);
    OrderErrorTexts(machine, {-101});
    machine.Result(For("NvAPI_GPU_GetFullName", kGpu + 1), -101);
    EXPECT_EQ(InitLog(machine), Opened({Tagged("Total physical gpu count", "3"), Name(0), Name(1),
                                        Tagged("NvAPI_GPU_GetFullName #1", "error: NVAPI_-101"), Name(2)}));
    EXPECT_TRUE(machine.Api().IsInitOk());
}

TEST(NvapiInit, NamesThatCannotBeReadDoNotStopTheStart) {
    Machine machine = NvidiaBoard(2);
    OrderErrorTexts(machine, {-3});
    machine.Hide("NvAPI_GPU_GetFullName");
    // Empty, and not the name of the one before.
    EXPECT_EQ(InitLog(machine),
              Opened({Tagged("Total physical gpu count", "2"), Tagged("GPU full name #0", ""),
                      Tagged("NvAPI_GPU_GetFullName #0", "error: NVAPI_-3"), Tagged("GPU full name #1", ""),
                      Tagged("NvAPI_GPU_GetFullName #1", "error: NVAPI_-3")}));
    EXPECT_TRUE(machine.Api().IsInitOk());
}

TEST(NvapiInit, NameThatIsNotWrittenIsNotTheOneBefore) {
    Machine machine = NvidiaBoard(2);
    OrderGpus(machine, {kGpu, Handle{0x7777}});
    EXPECT_EQ(InitLog(machine),
              Opened({Tagged("Total physical gpu count", "2"), Name(0), Tagged("GPU full name #1", "")}));
}

TEST(NvapiInit, TextsWithoutATerminatorEndWithTheirBuffer) {
    Machine machine = NvidiaBoard(1);
    std::string const full(64, 'x');
    Bytes const bytes(full.begin(), full.end());  // all that the buffers hold
    machine.Write("NvAPI_GetInterfaceVersionString", 0, bytes);
    machine.Write("NvAPI_GPU_GetFullName", 1, bytes);
    machine.Write("NvAPI_GetErrorMessage", 1, bytes);
    OrderGpus(machine, {Handle{0x7777}});
    machine.Result("NvAPI_GPU_GetFullName", -1);
    EXPECT_EQ(InitLog(machine),
              Lines({Tagged("", "begin"), Tagged("NvAPI_Initialize", "successfully"), Tagged("NVAPI Version", full),
                     Tagged("Total physical gpu count", "1"), Tagged("GPU full name #0", full),
                     Tagged("NvAPI_GPU_GetFullName #0", "error: " + full)}));
}

// ---- Texts of failures ----

TEST(NvapiInit, FailureWithoutATextIsEmptyAndNotTheOneBefore) {
    Machine machine = NvidiaBoard(3);
    OrderErrorTexts(machine, {-5});
    machine.Result(For("NvAPI_GPU_GetFullName", kGpu), -5);
    machine.Result(For("NvAPI_GPU_GetFullName", kGpu + 1), -7);
    // A failing text function may still write.
    machine.Result(For("NvAPI_GPU_GetFullName", kGpu + 2), -8);
    OrderErrorTexts(machine, {-8});
    machine.Result(For("NvAPI_GetErrorMessage", -8), -1);
    EXPECT_EQ(InitLog(machine), Opened({Tagged("Total physical gpu count", "3"), Name(0),
                                        Tagged("NvAPI_GPU_GetFullName #0", "error: NVAPI_-5"), Name(1),
                                        Tagged("NvAPI_GPU_GetFullName #1", "error: "), Name(2),
                                        Tagged("NvAPI_GPU_GetFullName #2", "error: NVAPI_-8")}));
}

TEST(NvapiInit, WithoutTheTextFunctionFailuresHaveNoText) {
    Machine machine = NvidiaBoard(1);
    machine.Hide("NvAPI_GetErrorMessage");
    machine.Result("NvAPI_EnumPhysicalGPUs", -6);
    EXPECT_EQ(InitLog(machine), Opened({Tagged("nNvAPI_EnumPhysicalGPUs", "error: ")}));
}

// ---- Hooks ----

TEST(NvapiInit, HooksSurroundEachCall) {
    Machine machine = NvidiaBoard(1);
    machine.Show("BeforeCallHook").Show("AfterCallHook");
    machine.Reports(HookState{11, 22});
    machine.Result("NvAPI_GetInterfaceVersionString", -4);
    machine.Init();
    Lines traffic = machine.TakeTraffic(DescribeNvidiaCall);
    std::erase_if(traffic, [](std::string const& line) { return line.starts_with("nvapi_QueryInterface"); });
    EXPECT_EQ(traffic, Lines({"NvAPI_Initialize", "BeforeCallHook 1053FA5", "NvAPI_GetInterfaceVersionString",
                              "AfterCallHook 1053FA5 11 22 -4", "BeforeCallHook E5AC921F", "NvAPI_EnumPhysicalGPUs",
                              "AfterCallHook E5AC921F 11 22 0", "BeforeCallHook CEEE8E9F",
                              "NvAPI_GPU_GetFullName 600000", "AfterCallHook CEEE8E9F 11 22 0"}));
}

void ExpectNotCalledAlone(char const* hook) {
    Machine machine = NvidiaBoard(1);
    machine.Show(hook);
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.CountOf("NvAPI_GPU_GetFullName"), 1);
    EXPECT_EQ(machine.CountOf(hook), 0);
}

TEST(NvapiInit, FirstHookWithoutTheSecondIsNotCalled) {
    ExpectNotCalledAlone("BeforeCallHook");
}

TEST(NvapiInit, SecondHookWithoutTheFirstIsNotCalled) {
    ExpectNotCalledAlone("AfterCallHook");
}

// ---- What NVIDIA boards do not offer ----

// Everything of a record, wherever it lies.
template <class Record>
bool FillsWithZeros(Record (*get)()) {
    alignas(Record) unsigned char storage[sizeof(Record)];
    std::memset(storage, 0xA5, sizeof storage);
    auto* const record = ::new (storage) Record(get());
    Record zero;
    std::memset(&zero, 0, sizeof zero);
    return std::memcmp(record, &zero, sizeof zero) == 0;
}

void ExpectFixedAnswers(Machine& machine) {
    Exports const& api = machine.Api();
    FanTablePoint const curve[5] = {};
    EXPECT_FALSE(api.SetActiveAdapterIndex(1));
    EXPECT_FALSE(api.SetActiveAdapterIndex(0));
    EXPECT_EQ(api.GetActiveAdapterIndex(), 0);
    EXPECT_FALSE(api.SetFanSpeed(50));
    EXPECT_FALSE(api.SetFanSpeedTable(curve, 5));
    EXPECT_FALSE(api.SetPowerLimit(75, 0));
    EXPECT_FALSE(api.SetPowerLimitDefault());
    EXPECT_FALSE(api.SetPerformanceUser(1000, 900, 1000, 900));
    EXPECT_FALSE(api.SetPerformanceOC());
    EXPECT_FALSE(api.SetPerformanceDefault());
    EXPECT_FALSE(api.SetPerformanceSilent());
    EXPECT_EQ(api.GetFrameRate(), -1);
    EXPECT_TRUE(FillsWithZeros(api.GetFanSetting));
    EXPECT_TRUE(FillsWithZeros(api.GetPowerLimitSetting));
    EXPECT_TRUE(FillsWithZeros(api.GetGpuClockSetting));
    EXPECT_TRUE(FillsWithZeros(api.GetMemClockSetting));
    EXPECT_TRUE(FillsWithZeros(api.GetVGAInfo));
    EXPECT_EQ(machine.TakeCallNames(), std::vector<std::string>{});
    EXPECT_EQ(machine.TakeLog(), Lines{});
}

TEST(NvapiInit, SettingsAreFixedAnswersWithoutACallOrALine) {
    Machine machine = NvidiaBoard(2).Started();
    ASSERT_TRUE(machine.Api().IsInitOk());
    ExpectFixedAnswers(machine);
}

TEST(NvapiInit, SettingsAreTheSameWhenNothingIsOpen) {
    Machine machine = NvidiaBoard(2).Result("NvAPI_Initialize", -6).Started();
    ASSERT_FALSE(machine.Api().IsInitOk());
    ExpectFixedAnswers(machine);
}

}  // namespace
}  // namespace gputune::test
