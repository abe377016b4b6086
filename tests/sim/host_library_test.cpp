// gputune_sim.dll as a program in any language uses it: found at run time, beside the library under test.
#include <gtest/gtest.h>

#include <windows.h>

#include <combaseapi.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

#include "gputune.h"
#include "gputune_sim_host.h"
#include "sim/host/module_path.h"

namespace {

// The folder with bin/ and tests/, in which this program's own folder lies.
std::filesystem::path OutputDirectory() {
    return gputune::sim::ModulePath().parent_path().parent_path().parent_path();
}

HMODULE Load(std::filesystem::path const& path) {
    HMODULE const module = ::LoadLibraryW(path.c_str());
    EXPECT_NE(module, nullptr) << path << ", error " << ::GetLastError();
    return module;
}

template <class Function>
Function* Find(HMODULE module, char const* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

std::string BoardFile(char const* name) {
    return (OutputDirectory() / "bin" / "boards" / name).string();
}

class HostLibrary : public testing::Test {
protected:
    static constexpr int kErrorSize = 512;

    HMODULE simulation_ = Load(OutputDirectory() / "bin" / "sim" / "gputune_sim.dll");
    HMODULE library_ = Load(OutputDirectory() / "bin" / "gputune.dll");
    decltype(&GputuneSim_Start) start_ = Find<decltype(GputuneSim_Start)>(simulation_, "GputuneSim_Start");
    decltype(&GputuneSim_StartText) startText_ =
        Find<decltype(GputuneSim_StartText)>(simulation_, "GputuneSim_StartText");
    decltype(&GputuneSim_SetResult) setResult_ =
        Find<decltype(GputuneSim_SetResult)>(simulation_, "GputuneSim_SetResult");
    decltype(&GputuneSim_ClearFaults) clearFaults_ =
        Find<decltype(GputuneSim_ClearFaults)>(simulation_, "GputuneSim_ClearFaults");
    decltype(&GputuneSim_HideEntryPoint) hide_ =
        Find<decltype(GputuneSim_HideEntryPoint)>(simulation_, "GputuneSim_HideEntryPoint");
    decltype(&GputuneSim_Advance) advance_ = Find<decltype(GputuneSim_Advance)>(simulation_, "GputuneSim_Advance");
    decltype(&GputuneSim_Stop) stop_ = Find<decltype(GputuneSim_Stop)>(simulation_, "GputuneSim_Stop");
    decltype(&InitVGAHelper) initVgaHelper_ = Find<decltype(InitVGAHelper)>(library_, "InitVGAHelper");
    decltype(&IsInitOk) isInitOk_ = Find<decltype(IsInitOk)>(library_, "IsInitOk");
    decltype(&GetVendorInfo) getVendorInfo_ = Find<decltype(GetVendorInfo)>(library_, "GetVendorInfo");
    decltype(&FetchHwmValues) fetch_ = Find<decltype(FetchHwmValues)>(library_, "FetchHwmValues");
    decltype(&GetHwmValue) getHwmValue_ = Find<decltype(GetHwmValue)>(library_, "GetHwmValue");
    decltype(&SetFanSpeed) setFanSpeed_ = Find<decltype(SetFanSpeed)>(library_, "SetFanSpeed");
    decltype(&GetVGAInfo) getVgaInfo_ = Find<decltype(GetVGAInfo)>(library_, "GetVGAInfo");

    // Empty when the board runs, else the message.
    std::string Start(char const* name) {
        char error[kErrorSize] = "no message";
        return start_(BoardFile(name).c_str(), error, kErrorSize) == 1 ? "" : error;
    }

    double Reading(GputuneHwmKey key) {
        fetch_();
        return getHwmValue_(key).Value;
    }

    void ExpectLibraryFinds(GputuneApiType api, char const* name) {
        ASSERT_TRUE(initVgaHelper_(GPUTUNE_LOG_NONE));
        EXPECT_TRUE(isInitOk_());
        EXPECT_EQ(getVendorInfo_(), (std::uint64_t{api} << 32U) | GPUTUNE_VENDOR_AMD);
        EXPECT_STREQ(getVgaInfo_().AdapterName, name);
    }
};

TEST_F(HostLibrary, StartedBoardIsFoundByTheLibrary) {
    ASSERT_EQ(Start("overdriven.json"), "");
    ExpectLibraryFinds(GPUTUNE_API_OVERDRIVEN, "Radeon RX 580 Series");
}

TEST_F(HostLibrary, BoardGivenAsTextIsFoundByTheLibrary) {
    std::ifstream file(OutputDirectory() / "bin" / "boards" / "overdrive8.json", std::ios::binary);
    std::string const text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    ASSERT_EQ(startText_(text.c_str(), nullptr, 0), 1);
    ASSERT_TRUE(initVgaHelper_(GPUTUNE_LOG_NONE));
    EXPECT_EQ(getVendorInfo_() >> 32U, std::uint64_t{GPUTUNE_API_OVERDRIVE8});
}

TEST_F(HostLibrary, BoardStartedOnASingleThreadedApartmentIsFoundOnIt) {
    ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    ASSERT_EQ(Start("overdriven.json"), "");
    ExpectLibraryFinds(GPUTUNE_API_OVERDRIVEN, "Radeon RX 580 Series");
    stop_();
    ::CoUninitialize();
}

TEST_F(HostLibrary, MachineHasItsOwnDisplayControllersAfterStop) {
    initVgaHelper_(GPUTUNE_LOG_NONE);
    auto const own = static_cast<std::uint32_t>(getVendorInfo_());
    ASSERT_EQ(Start("overdriven.json"), "");
    stop_();
    initVgaHelper_(GPUTUNE_LOG_NONE);
    EXPECT_EQ(static_cast<std::uint32_t>(getVendorInfo_()), own);
}

TEST_F(HostLibrary, BoardInUseWorksOnAfterStop) {
    ASSERT_EQ(Start("overdriven.json"), "");
    ExpectLibraryFinds(GPUTUNE_API_OVERDRIVEN, "Radeon RX 580 Series");
    stop_();
    EXPECT_TRUE(isInitOk_());
    EXPECT_STREQ(getVgaInfo_().AdapterName, "Radeon RX 580 Series");
}

TEST_F(HostLibrary, BoardOfAnotherVendorFollows) {
    for (auto const& [file, vendor] :
         {std::pair("overdriven.json", GPUTUNE_VENDOR_AMD), std::pair("intel.json", GPUTUNE_VENDOR_INTEL),
          std::pair("nvidia.json", GPUTUNE_VENDOR_NVIDIA)}) {
        ASSERT_EQ(Start(file), "");
        ASSERT_TRUE(initVgaHelper_(GPUTUNE_LOG_NONE));
        EXPECT_TRUE(isInitOk_()) << file;
        EXPECT_EQ(static_cast<std::uint32_t>(getVendorInfo_()), std::uint32_t{vendor}) << file;
        stop_();
    }
}

TEST_F(HostLibrary, OneBoardAfterAnotherGivesTheLatter) {
    ASSERT_EQ(Start("overdriven.json"), "");
    ASSERT_TRUE(initVgaHelper_(GPUTUNE_LOG_NONE));
    stop_();
    ASSERT_EQ(Start("overdrive8.json"), "");
    ASSERT_TRUE(initVgaHelper_(GPUTUNE_LOG_NONE));
    EXPECT_EQ(getVendorInfo_() >> 32U, std::uint64_t{GPUTUNE_API_OVERDRIVE8});
}

TEST_F(HostLibrary, StopWithoutStartDoesNothing) {
    stop_();
    ASSERT_EQ(Start("overdriven.json"), "");
    stop_();
    stop_();
    EXPECT_EQ(Start("overdriven.json"), "");
}

TEST_F(HostLibrary, SecondStartIsRefusedAndTheFirstBoardRuns) {
    ASSERT_EQ(Start("overdriven.json"), "");
    EXPECT_EQ(Start("overdrive8.json"), "a board is running already; GputuneSim_Stop ends it");
    ExpectLibraryFinds(GPUTUNE_API_OVERDRIVEN, "Radeon RX 580 Series");
}

TEST_F(HostLibrary, MissingBoardFileIsNamedAndAnotherCanBeStarted) {
    char error[kErrorSize] = "";
    EXPECT_EQ(start_("no-such.json", error, kErrorSize), 0);
    EXPECT_STREQ(error, "no-such.json: cannot be opened");
    EXPECT_EQ(Start("overdriven.json"), "");
}

TEST_F(HostLibrary, WrongKeyIsNamed) {
    char error[kErrorSize] = "";
    EXPECT_EQ(startText_(R"({"format": 1, "captions": [], "vendor": "none", "colour": 1})", error, kErrorSize), 0);
    EXPECT_NE(std::string(error).find("board: colour"), std::string::npos) << error;
}

TEST_F(HostLibrary, LongMessageIsCutToItsStorage) {
    char error[8] = {'#', '#', '#', '#', '#', '#', '#', '#'};
    EXPECT_EQ(start_("no-such.json", error, 6), 0);
    EXPECT_EQ(std::string(error, 8), std::string("no-su\0##", 8));
    EXPECT_EQ(start_("no-such.json", error, 0), 0);
    EXPECT_EQ(start_("no-such.json", error, -1), 0);
    EXPECT_EQ(start_("no-such.json", nullptr, kErrorSize), 0);
    EXPECT_EQ(std::string(error, 8), std::string("no-su\0##", 8));
}

TEST_F(HostLibrary, NullBoardIsRefused) {
    char error[kErrorSize] = "";
    EXPECT_EQ(start_(nullptr, error, kErrorSize), 0);
    EXPECT_STREQ(error, "no board was given");
    EXPECT_EQ(startText_(nullptr, error, kErrorSize), 0);
}

TEST_F(HostLibrary, BoardWithTheLibrarysOtherNameIsRefusedAfterTheFirst) {
    ASSERT_EQ(Start("overdriven.json"), "");
    stop_();
    EXPECT_EQ(Start("older-library.json"),
              "the board has the library atiadlxy, but an earlier board of this process had atiadlxx, which stays "
              "loaded and would be found as well");
    EXPECT_EQ(Start("no-library.json"), "");
}

TEST_F(HostLibrary, BoardIsRefusedWhenAVendorsOwnLibraryIsLoaded) {
    Load(OutputDirectory() / "tests" / "scripted" / "atiadlxx.dll");
    EXPECT_EQ(Start("overdriven.json"),
              "this process has loaded another atiadlxx.dll already; a board must be started before that");
    EXPECT_EQ(::GetModuleHandleW(L"atiadlxy.dll"), nullptr);
}

// The running board
// ----------------------------------------------------------------------------------------------------

TEST_F(HostLibrary, OrderedResultIsReturnedUntilTheOrdersAreTakenBack) {
    ASSERT_EQ(Start("overdrive8.json"), "");
    ASSERT_TRUE(initVgaHelper_(GPUTUNE_LOG_NONE));
    EXPECT_EQ(setResult_("ADL2_Overdrive8_Setting_Set", -1), 1);
    EXPECT_FALSE(setFanSpeed_(60));
    clearFaults_();
    EXPECT_TRUE(setFanSpeed_(60));
}

TEST_F(HostLibrary, HiddenEntryPointIsNotFound) {
    ASSERT_EQ(Start("overdriven.json"), "");
    HMODULE const standIn = ::GetModuleHandleW(L"atiadlxx.dll");
    ASSERT_NE(::GetProcAddress(standIn, "ADL2_Overdrive_Caps"), nullptr);
    EXPECT_EQ(hide_("ADL2_Overdrive_Caps"), 1);
    EXPECT_EQ(::GetProcAddress(standIn, "ADL2_Overdrive_Caps"), nullptr);
    stop_();
    ASSERT_EQ(Start("overdriven.json"), "");
    EXPECT_NE(::GetProcAddress(standIn, "ADL2_Overdrive_Caps"), nullptr) << "a new board has everything";
}

TEST_F(HostLibrary, TimeRunsByHandOnceItWasAdvanced) {
    ASSERT_EQ(Start("overdriven.json"), "");
    advance_(1000);
    ASSERT_TRUE(initVgaHelper_(GPUTUNE_LOG_NONE));
    double const temperature = Reading(GPUTUNE_HWM_GPU_TEMPERATURE);
    ::Sleep(50);
    EXPECT_EQ(Reading(GPUTUNE_HWM_GPU_TEMPERATURE), temperature);
    advance_(60000);
    EXPECT_NE(Reading(GPUTUNE_HWM_GPU_TEMPERATURE), temperature);
}

TEST_F(HostLibrary, UnknownEntryPointsAreRefused) {
    ASSERT_EQ(Start("overdriven.json"), "");
    for (char const* name : {"ADL2_Nothing", "adl2_overdrive_caps", "ctlInit", "GputuneSim_LoadBoard", ""}) {
        EXPECT_EQ(setResult_(name, -1), 0) << name;
        EXPECT_EQ(hide_(name), 0) << name;
    }
    EXPECT_EQ(setResult_(nullptr, -1), 0);
    EXPECT_EQ(hide_(nullptr), 0);
}

TEST_F(HostLibrary, EntryPointThatReturnsAnAddressTakesNoResult) {
    ASSERT_EQ(Start("nvidia.json"), "");
    EXPECT_EQ(setResult_("nvapi_QueryInterface", 0), 0);
    EXPECT_EQ(setResult_("NvAPI_EnumPhysicalGPUs", -1), 1);
    EXPECT_EQ(hide_("nvapi_QueryInterface"), 1);
}

TEST_F(HostLibrary, WithoutARunningBoardNothingIsOrdered) {
    EXPECT_EQ(setResult_("ADL2_Overdrive_Caps", -1), 0);
    EXPECT_EQ(hide_("ADL2_Overdrive_Caps"), 0);
    clearFaults_();
    advance_(1000);
    ASSERT_EQ(Start("no-library.json"), "");
    EXPECT_EQ(setResult_("ADL2_Overdrive_Caps", -1), 0);
    stop_();
    ASSERT_EQ(Start("overdriven.json"), "");
    stop_();
    EXPECT_EQ(setResult_("ADL2_Overdrive_Caps", -1), 0) << "the board was stopped";
}

// As a driver's: the system's code page has the letter, and not the character.
TEST_F(HostLibrary, BoardNameArrivesInTheAnsiCodePage) {
    std::ifstream file(OutputDirectory() / "bin" / "boards" / "overdriven.json", std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::string const name = "\"name\": \"Radeon";
    ASSERT_NE(text.find(name), std::string::npos);
    text.replace(text.find(name), name.size(), "\"name\": \"Gr\xC3\xBCn \xE5\x8D\xA1");
    ASSERT_EQ(startText_(text.c_str(), nullptr, 0), 1);
    ASSERT_TRUE(initVgaHelper_(GPUTUNE_LOG_NONE));
    char expected[64] = "";
    ::WideCharToMultiByte(CP_ACP, 0, L"Gr\u00FCn \u5361 RX 580 Series", -1, expected, sizeof(expected), nullptr,
                          nullptr);
    EXPECT_STREQ(getVgaInfo_().AdapterName, expected);
}

TEST_F(HostLibrary, UnloadedWhileABoardRunsItStays) {
    ASSERT_EQ(Start("overdriven.json"), "");
    ::FreeLibrary(simulation_);
    ExpectLibraryFinds(GPUTUNE_API_OVERDRIVEN, "Radeon RX 580 Series");
    stop_();
}

// The library under the file name of the compiler's unwinder, as a host or its plug-in brings one along. It is loaded
// before the simulation, and counts what is asked of it.
class CountingUnwinder {
protected:
    int Calls() const { return Find<int()>(unwinder_, "Unwinder_Calls")(); }

    HMODULE unwinder_ = Load(OutputDirectory() / "tests" / "shared-runtime" / "counting" / "libgcc_s_dw2-1.dll");
    int const ownCalls_ = Calls();
};
class HostLibraryBesideAnUnwinder : protected CountingUnwinder, public HostLibrary {};

TEST_F(HostLibraryBesideAnUnwinder, NeitherAsksNorKeepsIt) {
    for (char const* const file : {"overdriven.json", "intel.json", "nvidia.json"}) {
        ASSERT_EQ(Start(file), "");
        EXPECT_EQ(Start(file), "a board is running already; GputuneSim_Stop ends it") << "thrown and caught";
        stop_();
    }
    EXPECT_EQ(Calls(), ownCalls_);
    ::FreeLibrary(unwinder_);
    EXPECT_EQ(::GetModuleHandleW(L"libgcc_s_dw2-1.dll"), nullptr);
    EXPECT_EQ(Start("no-such.json"), BoardFile("no-such.json") + ": cannot be opened");
}

}  // namespace
