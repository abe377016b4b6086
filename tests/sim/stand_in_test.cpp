// The stand-in libraries as their clients and their tests see them: entry points, and the control interface.
#include <gtest/gtest.h>

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "gputune_sim.h"
#include "sim/host/module_path.h"

namespace {

std::filesystem::path LibraryPath(char const* name) {
    auto const output = gputune::sim::ModulePath().parent_path().parent_path().parent_path();
    return output / "bin" / "sim" / name;
}

class Library {
public:
    explicit Library(char const* name) : module_(::LoadLibraryW(LibraryPath(name).c_str())) {
        EXPECT_NE(module_, nullptr) << name;
    }

    void* Find(char const* name) const { return reinterpret_cast<void*>(::GetProcAddress(module_, name)); }
    template <class Function>
    Function* Find(char const* name) const {
        return reinterpret_cast<Function*>(Find(name));
    }

    // Empty, or what is wrong with the board.
    std::string Load(std::string const& board) const {
        char error[512] = "no message";
        auto const load = Find<decltype(GputuneSim_LoadBoardText)>("GputuneSim_LoadBoardText");
        return load(board.c_str(), error, sizeof(error)) == 1 ? "" : error;
    }
    bool Hide(char const* entryPoint) const {
        return Find<decltype(GputuneSim_HideEntryPoint)>("GputuneSim_HideEntryPoint")(entryPoint) == 1;
    }
    void SetResult(char const* entryPoint, int result) const {
        Find<decltype(GputuneSim_SetResult)>("GputuneSim_SetResult")(entryPoint, result);
    }
    GputuneSimCall LastCall() const {
        GputuneSimCall call{};
        int const count = Find<decltype(GputuneSim_CallCount)>("GputuneSim_CallCount")();
        EXPECT_EQ(Find<decltype(GputuneSim_GetCall)>("GputuneSim_GetCall")(count - 1, &call), 1);
        return call;
    }

private:
    HMODULE module_;
};

// NVAPI --------------------------------------------------------------------------------------------------------------

constexpr std::uint32_t kInitialize = 0x0150E828;
constexpr std::uint32_t kGetErrorMessage = 0x6C2D048C;
constexpr std::uint32_t kEnumPhysicalGpus = 0xE5AC921F;
constexpr std::uint32_t kGetFullName = 0xCEEE8E9F;
constexpr std::uint32_t kGetThermalSettings = 0xE3640A56;
constexpr std::uint32_t kBeforeCallHook = 0x33C7358C;
constexpr std::uint32_t kAfterCallHook = 0x593E8644;

std::string NvidiaText(std::string const& more = "") {
    return R"({ "format": 1, "captions": [], "vendor": "nvidia", "version": "1.10",
                "gpus": [{ "name": "A board", "sensors": [{ "value": 55 }] }])" +
           more + "}";
}

class Nvapi : public testing::Test {
protected:
    using GpuHandle = void*;

    Library library_{"nvidia\\nvapi.dll"};

    void* Query(std::uint32_t identifier) const {
        return library_.Find<void*(std::uint32_t)>("nvapi_QueryInterface")(identifier);
    }
    int Initialize() const { return reinterpret_cast<int (*)()>(Query(kInitialize))(); }
    int EnumGpus(GpuHandle (&gpus)[64], std::uint32_t& count) const {
        return reinterpret_cast<int (*)(GpuHandle*, std::uint32_t*)>(Query(kEnumPhysicalGpus))(gpus, &count);
    }
    int GetName(GpuHandle gpu, char* name) const {
        return reinterpret_cast<int (*)(GpuHandle, char*)>(Query(kGetFullName))(gpu, name);
    }
    int GetThermals(GpuHandle gpu, std::int32_t (&settings)[17]) const {
        settings[0] = 0x00020044;
        return reinterpret_cast<int (*)(GpuHandle, std::uint32_t, std::int32_t*)>(Query(kGetThermalSettings))(gpu, 15,
                                                                                                              settings);
    }
    GpuHandle FirstGpu() const {
        GpuHandle gpus[64] = {};
        std::uint32_t count = 0;
        EXPECT_EQ(EnumGpus(gpus, count), 0);
        EXPECT_EQ(count, 1u);
        return gpus[0];
    }
};

TEST_F(Nvapi, BoardIsReadThroughFunctionsHandedOutByIdentifier) {
    ASSERT_EQ(library_.Load(NvidiaText()), "");
    ASSERT_EQ(Initialize(), 0);
    GpuHandle const gpu = FirstGpu();
    char name[64];
    ASSERT_EQ(GetName(gpu, name), 0);
    EXPECT_STREQ(name, "A board");
    std::int32_t settings[17] = {};
    ASSERT_EQ(GetThermals(gpu, settings), 0);
    EXPECT_EQ(settings[1], 1) << "the number of sensors";
    EXPECT_EQ(settings[2 + 3], 55) << "degrees Celsius";
}

TEST_F(Nvapi, UnknownIdentifiersHaveNoFunctionAndAreLogged) {
    ASSERT_EQ(library_.Load(NvidiaText()), "");
    EXPECT_EQ(Query(0x12345678), nullptr);
    EXPECT_STREQ(library_.LastCall().EntryPoint, "nvapi_QueryInterface");
    EXPECT_EQ(library_.LastCall().Args[0], 0x12345678);
}

TEST_F(Nvapi, NothingIsHandedOutBeforeThereIsABoard) {
    EXPECT_EQ(Query(kInitialize), nullptr);
}

TEST_F(Nvapi, MissingAndHiddenFunctionsAreNotHandedOut) {
    ASSERT_EQ(library_.Load(NvidiaText(R"(, "faults": [{ "entryPoint": "NvAPI_GPU_GetFullName", "missing": true }])")),
              "");
    EXPECT_EQ(Query(kGetFullName), nullptr);
    EXPECT_NE(Query(kEnumPhysicalGpus), nullptr);
    EXPECT_TRUE(library_.Hide("NvAPI_EnumPhysicalGPUs"));
    EXPECT_EQ(Query(kEnumPhysicalGpus), nullptr);
    EXPECT_FALSE(library_.Hide("NvAPI_Nothing"));
    EXPECT_TRUE(library_.Hide("nvapi_QueryInterface"));
    EXPECT_EQ(library_.Find("nvapi_QueryInterface"), nullptr);
    ASSERT_EQ(library_.Load(NvidiaText()), "") << "a new board has everything";
    EXPECT_NE(Query(kGetFullName), nullptr);
}

TEST_F(Nvapi, HooksAreThereWhenTheBoardHasThem) {
    ASSERT_EQ(library_.Load(NvidiaText()), "");
    EXPECT_EQ(Query(kBeforeCallHook), nullptr);
    EXPECT_EQ(Query(kAfterCallHook), nullptr);
    ASSERT_EQ(library_.Load(NvidiaText(R"(, "hooks": true)")), "");
    EXPECT_NE(Query(kAfterCallHook), nullptr);
    std::uint32_t words[2] = {};
    reinterpret_cast<void (*)(std::uint32_t, std::uint32_t*)>(Query(kBeforeCallHook))(7, words);
    EXPECT_STREQ(library_.LastCall().EntryPoint, "BeforeCallHook");
    EXPECT_NE(words[0], words[1]) << "something to be carried to the other hook";
}

TEST_F(Nvapi, WrongArgumentsAreRefused) {
    ASSERT_EQ(library_.Load(NvidiaText()), "");
    GpuHandle gpus[64] = {};
    std::uint32_t count = 0;
    EXPECT_EQ(EnumGpus(gpus, count), -4) << "not initialised";
    ASSERT_EQ(Initialize(), 0);
    GpuHandle const gpu = FirstGpu();
    EXPECT_EQ(GetName(gpu, nullptr), -5);
    char name[64];
    EXPECT_EQ(GetName(nullptr, name), -101);
    EXPECT_EQ(GetName(&count, name), -101);
    auto const message = reinterpret_cast<int (*)(int, char*)>(Query(kGetErrorMessage));
    ASSERT_EQ(message(-101, name), 0);
    EXPECT_STREQ(name, "NVAPI_EXPECTED_PHYSICAL_GPU_HANDLE");
}

TEST_F(Nvapi, TextsAreInTheAnsiCodePage) {
    std::string board = NvidiaText();
    board.replace(board.find("A board"), 7, "Gr\xC3\xBCn");
    ASSERT_EQ(library_.Load(board), "");
    ASSERT_EQ(Initialize(), 0);
    char name[64];
    ASSERT_EQ(GetName(FirstGpu(), name), 0);
    char expected[64] = "";
    ::WideCharToMultiByte(CP_ACP, 0, L"Gr\u00FCn", -1, expected, sizeof(expected), nullptr, nullptr);
    EXPECT_STREQ(name, expected);
}

TEST_F(Nvapi, OrderedResultsComeFirst) {
    ASSERT_EQ(library_.Load(NvidiaText(R"(, "faults": [{ "entryPoint": "NvAPI_Initialize", "result": -6 }])")), "");
    EXPECT_EQ(Initialize(), -6);
    library_.SetResult("NvAPI_Initialize", 0);
    EXPECT_EQ(Initialize(), 0);
    GpuHandle gpus[64] = {};
    std::uint32_t count = 0;
    EXPECT_EQ(EnumGpus(gpus, count), -4) << "the ordered success did nothing";
}

TEST_F(Nvapi, CountsAndTextsAreGarbled) {
    auto const fault = [](char const* entryPoint, char const* kind) {
        return NvidiaText(std::string(R"(, "faults": [{ "entryPoint": ")") + entryPoint + R"(", "garbage": ")" + kind +
                          R"(" }])");
    };
    GpuHandle gpus[64] = {};
    std::uint32_t count = 0;
    ASSERT_EQ(library_.Load(fault("NvAPI_EnumPhysicalGPUs", "one-too-many")), "");
    ASSERT_EQ(Initialize(), 0);
    EXPECT_EQ(EnumGpus(gpus, count), 0);
    EXPECT_EQ(count, 65u);
    ASSERT_EQ(library_.Load(fault("NvAPI_GPU_GetThermalSettings", "negative-count")), "");
    std::int32_t settings[17] = {};
    EXPECT_EQ(GetThermals(gpus[0], settings), 0);
    EXPECT_EQ(settings[1], -1);
    ASSERT_EQ(library_.Load(fault("NvAPI_GPU_GetThermalSettings", "extreme-values")), "");
    EXPECT_EQ(GetThermals(gpus[0], settings), 0);
    EXPECT_EQ(settings[1], 1);
    EXPECT_EQ(settings[2], INT32_MAX);
    ASSERT_EQ(library_.Load(fault("NvAPI_GPU_GetFullName", "unterminated-strings")), "");
    char name[65] = "";
    name[64] = '!';
    EXPECT_EQ(GetName(gpus[0], name), 0);
    EXPECT_EQ(std::string(name, 65), std::string(64, 'T') + "!");
}

// Intel's control library --------------------------------------------------------------------------------------------

constexpr char kIntel[] = R"({ "format": 1, "captions": [], "vendor": "intel", "devices": [{ "name": "A board",
    "fans": [{ "modes": 1 }], "overclock": { "powerLimit": { "min": 100, "max": 240, "default": 200 } } }] })";

class ControlLib : public testing::Test {
protected:
    Library library_{"intel\\ControlLib32.dll"};

    void* OnlyDevice() const {
        std::uint32_t args[9] = {36, 0, 0x00010001};
        void* api = nullptr;
        EXPECT_EQ(library_.Find<int(std::uint32_t*, void**)>("ctlInit")(args, &api), 0);
        void* device = nullptr;
        std::uint32_t count = 1;
        auto const enumerate = library_.Find<int(void*, std::uint32_t*, void**)>("ctlEnumerateDevices");
        EXPECT_EQ(enumerate(api, &count, &device), 0);
        return device;
    }
};

TEST_F(ControlLib, FloatingPointArgumentsAreLoggedAsTwoIntegers) {
    ASSERT_EQ(library_.Load(kIntel), "");
    void* const device = OnlyDevice();
    double const limit = 123456.75;
    EXPECT_EQ(library_.Find<int(void*, double)>("ctlOverclockPowerLimitSet")(device, limit), 0);
    GputuneSimCall const call = library_.LastCall();
    EXPECT_STREQ(call.EntryPoint, "ctlOverclockPowerLimitSet");
    ASSERT_EQ(call.ArgCount, 3);
    double logged = 0;
    std::memcpy(&logged, &call.Args[1], sizeof(logged));
    EXPECT_EQ(logged, limit);
    EXPECT_EQ(call.RecordSize, 0);
}

TEST_F(ControlLib, RecordsAreLoggedAndStorageForListsIsNot) {
    ASSERT_EQ(library_.Load(kIntel), "");
    void* const device = OnlyDevice();
    EXPECT_EQ(library_.LastCall().RecordSize, 4) << "the count alone";
    void* fan = nullptr;
    std::uint32_t count = 1;
    ASSERT_EQ(library_.Find<int(void*, std::uint32_t*, void**)>("ctlEnumFans")(device, &count, &fan), 0);
    std::uint32_t const speed[4] = {16, 0, 150, 1};
    auto const set = library_.Find<int(void*, std::uint32_t const*)>("ctlFanSetFixedSpeedMode");
    EXPECT_EQ(set(fan, speed), 0x4000000B);
    GputuneSimCall const call = library_.LastCall();
    ASSERT_EQ(call.RecordSize, 16);
    EXPECT_EQ(std::memcmp(call.Record, speed, sizeof(speed)), 0);
}

TEST_F(ControlLib, EntryPointsWithoutSignatureAreThereAndLogged) {
    ASSERT_EQ(library_.Load(kIntel), "");
    auto const call = library_.Find<int()>("ctlGetAdaperDisplayEncoderProperties");
    ASSERT_NE(call, nullptr);
    EXPECT_EQ(call(), 0x4000000A);
    EXPECT_STREQ(library_.LastCall().EntryPoint, "ctlGetAdaperDisplayEncoderProperties");
    library_.SetResult("ctlGetAdaperDisplayEncoderProperties", 5);
    EXPECT_EQ(call(), 5);
    EXPECT_FALSE(library_.Hide("GputuneSim_LoadBoard")) << "no entry point of the vendor's";
    EXPECT_TRUE(library_.Hide("ctlGetAdaperDisplayEncoderProperties"));
    EXPECT_EQ(library_.Find("ctlGetAdaperDisplayEncoderProperties"), nullptr);
}

TEST_F(ControlLib, BoardOfAnotherVendorIsRefusedAndTheFormerStays) {
    ASSERT_EQ(library_.Load(kIntel), "");
    EXPECT_EQ(library_.Load(NvidiaText()), "the board is not one of this library's vendor");
    EXPECT_NE(OnlyDevice(), nullptr);
}

}  // namespace
