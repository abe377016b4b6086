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
    Lines lines = kOpened;
    lines.insert(lines.end(), rest.begin(), rest.end());
    return lines;
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
    struct {
        char const* name;
        std::vector<int> args;
    } const expected[] = {
        {"nvapi_QueryInterface", {static_cast<int>(0xAD298D3F)}},
        {"nvapi_QueryInterface", {0x0150E828}},
        {"NvAPI_Initialize", {}},
        {"nvapi_QueryInterface", {0x33C7358C}},
        {"nvapi_QueryInterface", {0x593E8644}},
        {"nvapi_QueryInterface", {0x01053FA5}},
        {"NvAPI_GetInterfaceVersionString", {}},
        {"nvapi_QueryInterface", {static_cast<int>(0xE5AC921F)}},
        {"NvAPI_EnumPhysicalGPUs", {}},
        {"nvapi_QueryInterface", {static_cast<int>(0xCEEE8E9F)}},
        {"NvAPI_GPU_GetFullName", {kGpu}},
        {"NvAPI_GPU_GetFullName", {kGpu + 1}},
    };
    std::vector<Call> const calls = machine.TakeCalls();
    ASSERT_EQ(calls.size(), std::size(expected));
    for (std::size_t index = 0; index < calls.size(); ++index) {
        SCOPED_TRACE(index);
        EXPECT_EQ(calls[index].entryPoint, expected[index].name);
        ASSERT_GE(calls[index].args.size(), expected[index].args.size());
        if (!expected[index].args.empty()) {
            EXPECT_EQ(calls[index].args[0], expected[index].args[0]);
        }
    }
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
    EXPECT_EQ(machine.LastCall("NvAPI_GetErrorMessage").args[0], -6);
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
    Machine machine = NvidiaBoard(1);
    ASSERT_TRUE(machine.InitAndForget());
    machine.Then("NvAPI_EnumPhysicalGPUs").Write("NvAPI_EnumPhysicalGPUs", 1, Ints({0}));
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
    EXPECT_EQ(machine.LastCall("NvAPI_GetErrorMessage").args[0], -3);

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
        machine.Write("NvAPI_EnumPhysicalGPUs", 1, Ints({row.count}));
        machine.TakeCalls();
        Lines const log = InitLog(machine);
        ASSERT_EQ(log.size(), 4U + 64U);
        EXPECT_EQ(log[3], Tagged("Total physical gpu count", row.logged));
        EXPECT_EQ(machine.CountOf("NvAPI_GPU_GetFullName"), 64);
        EXPECT_EQ(machine.LastCall("NvAPI_GPU_GetFullName").args[0], kGpu + 63);
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
    machine.Write("NvAPI_EnumPhysicalGPUs", 0, Ints({kGpu, 0x7777}));
    EXPECT_EQ(InitLog(machine),
              Opened({Tagged("Total physical gpu count", "2"), Name(0), Tagged("GPU full name #1", "")}));
}

TEST(NvapiInit, TextsWithoutATerminatorEndWithTheirBuffer) {
    Machine machine = NvidiaBoard(1);
    std::string const full(64, 'x');
    Bytes const bytes(full.begin(), full.end());
    machine.Write("NvAPI_GetInterfaceVersionString", 0, bytes);
    machine.Write("NvAPI_GPU_GetFullName", 1, bytes);
    machine.Write("NvAPI_EnumPhysicalGPUs", 0, Ints({0x7777}));
    machine.Result("NvAPI_GPU_GetFullName", -1);
    machine.Write("NvAPI_GetErrorMessage", 1, bytes);
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
    machine.Write(For("NvAPI_GetErrorMessage", -8), 1, Text("eight"));
    machine.Result(For("NvAPI_GetErrorMessage", -8), -1);
    EXPECT_EQ(InitLog(machine), Opened({Tagged("Total physical gpu count", "3"), Name(0),
                                        Tagged("NvAPI_GPU_GetFullName #0", "error: NVAPI_-5"), Name(1),
                                        Tagged("NvAPI_GPU_GetFullName #1", "error: "), Name(2),
                                        Tagged("NvAPI_GPU_GetFullName #2", "error: eight")}));
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
    machine.Write("BeforeCallHook", 1, Ints({0x11, 0x22}));
    machine.Result("NvAPI_GetInterfaceVersionString", -4);
    machine.Init();
    std::vector<Call> calls = machine.TakeCalls();
    std::erase_if(calls, [](Call const& call) { return call.entryPoint == "nvapi_QueryInterface"; });
    std::vector<std::string> names;
    for (Call const& call : calls) {
        names.push_back(call.entryPoint);
    }
    ASSERT_EQ(names,
              std::vector<std::string>({"NvAPI_Initialize", "BeforeCallHook", "NvAPI_GetInterfaceVersionString",
                                        "AfterCallHook", "BeforeCallHook", "NvAPI_EnumPhysicalGPUs", "AfterCallHook",
                                        "BeforeCallHook", "NvAPI_GPU_GetFullName", "AfterCallHook"}));
    EXPECT_EQ(calls[1].args[0], 0x01053FA5);
    EXPECT_EQ(calls[1].record, Bytes(8, 0));
    EXPECT_EQ(calls[3].args, std::vector<int>({0x01053FA5, 0x11, 0x22, -4}));
    EXPECT_EQ(calls[4].args[0], static_cast<int>(0xE5AC921F));
    EXPECT_EQ(calls[4].record, Bytes(8, 0));
    EXPECT_EQ(calls[6].args, std::vector<int>({static_cast<int>(0xE5AC921F), 0x11, 0x22, 0}));
    EXPECT_EQ(calls[9].args, std::vector<int>({static_cast<int>(0xCEEE8E9F), 0x11, 0x22, 0}));
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
    Machine machine = NvidiaBoard(2);
    ASSERT_TRUE(machine.InitAndForget());
    ASSERT_TRUE(machine.Api().IsInitOk());
    ExpectFixedAnswers(machine);
}

TEST(NvapiInit, SettingsAreTheSameWhenNothingIsOpen) {
    Machine machine = NvidiaBoard(2);
    machine.Result("NvAPI_Initialize", -6);
    ASSERT_TRUE(machine.InitAndForget());
    ASSERT_FALSE(machine.Api().IsInitOk());
    ExpectFixedAnswers(machine);
}

}  // namespace
}  // namespace gputune::test
