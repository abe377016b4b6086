// Loading with care on the real system. The program exists as Windows 7's and as Windows 10's, and under the name of
// the system's protected media process; the name of its file tells which it is.
#include <gtest/gtest.h>

#include <atomic>

#include "AllAtOnce.h"
#include "Files.h"
#include "nvidia/Nvapi.h"
#include "platform/last_error.h"
#include "platform/version.h"

namespace gputune::test {
namespace {

using nvidia::HardenedLoader;

bool IsWindows7() {
    return sim::ModulePath().stem() == L"windows7_tests";
}

bool IsProtectedHost() {
    return sim::ModulePath().filename() == L"mfpmp.exe";
}

// Under which nothing else of these programs goes, which run at the same time.
std::wstring OwnName(wchar_t const* name) {
    return std::wstring(name) + L"-" + sim::ModulePath().stem().wstring() + L".dll";
}

bool IsLoaded(std::wstring const& name) {
    return ::GetModuleHandleW(name.c_str()) != nullptr;
}

bool IsFoundByTheUsualLoad(std::wstring const& name) {
    HMODULE const library = ::LoadLibraryW(name.c_str());
    return library != nullptr && ::FreeLibrary(library);
}

// ---- The system ----

TEST(Version, IsWhatTheSystemPosesAs) {
    EXPECT_TRUE(platform::IsWindowsAtLeast(6, 1));
    EXPECT_EQ(platform::IsWindowsAtLeast(6, 2), !IsWindows7());
    // The program has no manifest that says it knows Windows 10, so it is told of Windows 8.
    EXPECT_FALSE(platform::IsWindowsAtLeast(10, 0));
    EXPECT_EQ(HardenedLoader().Generation(), IsWindows7() ? 7600U : 9200U);
}

TEST(Version, BuildIsWhatTheSystemPosesAs) {
    EXPECT_TRUE(platform::IsBuildAtLeast(7600));
    EXPECT_EQ(platform::IsBuildAtLeast(9200), !IsWindows7());
    EXPECT_FALSE(platform::IsBuildAtLeast(14308));
}

TEST(Version, BuildThatTheSystemDoesNotConfirmIsTheRegistrys) {
    // The true one, and one for all programs: a Windows 10's.
    EXPECT_TRUE(HardenedLoader().IsBuildAtLeast(14308));
    EXPECT_FALSE(HardenedLoader().IsBuildAtLeast(4000000000U));
}

// ---- The system's directory ----

TEST(Load, SystemLibraryComesFromTheSystemDirectory) {
    ASSERT_FALSE(IsLoaded(L"msimg32.dll"));
    auto* const library = static_cast<HMODULE>(HardenedLoader().Load(L"msimg32.dll", 0));
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(sim::ModulePath(library).parent_path(), System32());
}

TEST(Load, FileOfTheSystemDirectoryIsFound) {
    PlantedFile const file(System32() / OwnName(L"gputune-found"));
    for (std::uint32_t const flags : {0U, 0x800U, 0x8U, 0x1708U}) {
        auto* const library = static_cast<HMODULE>(HardenedLoader().Load(file.Path().filename().wstring(), flags));
        ASSERT_NE(library, nullptr);
        EXPECT_EQ(sim::ModulePath(library), file.Path());
        ::FreeLibrary(library);
        EXPECT_FALSE(IsLoaded(file.Path().filename()));
    }
}

TEST(Load, FileBesideTheHostIsNotFound) {
    PlantedFile const file(sim::ModulePath().parent_path() / OwnName(L"gputune-beside"));
    for (std::uint32_t const flags : {0U, 0x800U, 0x8U, 0x200U, 0x1000U}) {
        EXPECT_EQ(HardenedLoader().Load(file.Path().filename().wstring(), flags), nullptr);
        EXPECT_EQ(platform::LastError(), 126U);
    }
    EXPECT_TRUE(IsFoundByTheUsualLoad(file.Path().filename()));
}

TEST(Load, FileInTheCurrentDirectoryIsNotFound) {
    PlantedFile const file(std::filesystem::current_path() / OwnName(L"gputune-current"));
    EXPECT_EQ(HardenedLoader().Load(file.Path().filename().wstring(), 0), nullptr);
    EXPECT_EQ(platform::LastError(), 126U);
    EXPECT_TRUE(IsFoundByTheUsualLoad(file.Path().filename()));
}

TEST(Load, PathIsRefused) {
    EXPECT_EQ(HardenedLoader().Load((System32() / "msimg32.dll").wstring(), 0), nullptr);
    EXPECT_EQ(platform::LastError(), 160U);
}

TEST(Load, SupportLibrariesAreLoadedFromTheSystemDirectoryFirst) {
    // Those that Wine has.
    for (wchar_t const* name : {L"msasn1.dll", L"cryptnet.dll"}) {
        ASSERT_FALSE(IsLoaded(name));
    }
    EXPECT_EQ(HardenedLoader().Load(L"gputune-absent.dll", 0), nullptr);
    EXPECT_EQ(platform::LastError(), 126U);
    for (wchar_t const* name : {L"msasn1.dll", L"cryptnet.dll"}) {
        EXPECT_EQ(IsLoaded(name), !IsProtectedHost());
        if (!IsProtectedHost()) {
            EXPECT_EQ(sim::ModulePath(::GetModuleHandleW(name)).parent_path(), System32());
        }
    }
}

// ---- By full path, and from the driver's package ----

TEST(Load, UnsignedFileIsRefusedByItsPath) {
    PlantedFile const file(std::filesystem::current_path() / OwnName(L"gputune-unsigned"));
    EXPECT_EQ(HardenedLoader().LoadByFullPath(file.Path().wstring(), 0), nullptr);
    EXPECT_EQ(platform::LastError(), 161U);
    EXPECT_FALSE(IsLoaded(file.Path().filename()));
    EXPECT_EQ(HardenedLoader().LoadByFullPath(file.Path().filename(), 0), nullptr);
    EXPECT_EQ(platform::LastError(), 160U);
}

TEST(Load, CheckOfTheSignatureComesFromTheSystemDirectory) {
    ASSERT_FALSE(IsLoaded(L"wintrust.dll"));
    PlantedFile const instead(std::filesystem::current_path() / "wintrust.dll");
    PlantedFile const file(std::filesystem::current_path() / OwnName(L"gputune-unsigned"));
    EXPECT_EQ(HardenedLoader().LoadByFullPath(file.Path().wstring(), 0), nullptr);
    EXPECT_EQ(sim::ModulePath(::GetModuleHandleW(L"wintrust.dll")).parent_path(), System32());
}

// An adapter, installed from this package.
class Driver {
public:
    explicit Driver(std::wstring const& number)
        : package_(L"gputune-" + number + L".inf_x86_1"),
          adapter_(L"SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e968-e325-11ce-bfc1-08002be10318}\\" + number),
          inf_(L"SYSTEM\\DriverDatabase\\DriverInfFiles\\gputune-" + number + L".inf") {
        adapter_.Set(L"InfPath", REG_SZ, L"gputune-" + number + L".inf");
        inf_.Set(L"Active", REG_SZ, package_);
    }
    std::filesystem::path Directory() const { return System32() / "DriverStore" / "FileRepository" / package_; }

    ~Driver() {
        std::error_code ignored;
        std::filesystem::remove_all(Directory(), ignored);
    }
    Driver(Driver const&) = delete;
    Driver& operator=(Driver const&) = delete;

private:
    std::wstring package_;
    MachineKey adapter_;
    MachineKey inf_;
};

TEST(Load, UnsignedFileOfTheDriversPackageIsFoundAndRefused) {
    std::wstring const name = OwnName(L"nvgputune");
    Driver const driver(IsWindows7() ? L"9007" : IsProtectedHost() ? L"9011" : L"9010");
    PlantedFile const elsewhere(System32() / name);
    PlantedFile const file(driver.Directory() / name);
    EXPECT_EQ(HardenedLoader().Load(name, 0), nullptr);
    EXPECT_EQ(platform::LastError(), 161U);
    EXPECT_FALSE(IsLoaded(name));
    // Asked for in the system's directory alone, that is where it comes from.
    auto* const library = static_cast<HMODULE>(HardenedLoader().Load(name, 0x800));
    EXPECT_EQ(sim::ModulePath(library), elsewhere.Path());
    ::FreeLibrary(library);
}

TEST(Load, FileThatThePackageLacksComesFromTheSystemDirectory) {
    std::wstring const name = OwnName(L"nvlacking");
    Driver const driver(IsWindows7() ? L"9107" : IsProtectedHost() ? L"9111" : L"9110");
    PlantedFile const elsewhere(System32() / name);
    auto* const library = static_cast<HMODULE>(HardenedLoader().Load(name, 0));
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(sim::ModulePath(library), elsewhere.Path());
    ::FreeLibrary(library);
}

// ---- NVAPI and threads ----

constexpr int kThreads = 16;

// A status, of the function that is another for every second thread.
int Ask(nvidia::Nvapi& nvapi, int number) {
    char text[64];
    return number % 2 == 0 ? nvapi.NvAPI_Initialize() : nvapi.NvAPI_GetInterfaceVersionString(text);
}

TEST(Nvapi, WithoutALibraryManyThreadsAreTold) {
    nvidia::Nvapi nvapi;
    std::atomic<int> told = 0;
    AllAtOnce(kThreads).Run([&](int number) {
        int const status = Ask(nvapi, number);
        // Who waits too long for the others' attempts is told that instead.
        told += status == -2 || status == -1 ? 1 : 0;
    });
    EXPECT_EQ(told, kThreads);
    EXPECT_EQ(nvapi.NvAPI_Initialize(), -2);
}

TEST(Nvapi, ManyThreadsInitialiseItOnce) {
    PlantedFile const file(std::filesystem::current_path() / "nvapi.dll");
    HMODULE const planted = ::LoadLibraryW(file.Path().c_str());
    ASSERT_NE(planted, nullptr);
    auto const forget =
        reinterpret_cast<void (*)()>(reinterpret_cast<void*>(::GetProcAddress(planted, "Planted_Forget")));
    ASSERT_NE(forget, nullptr);
    AllAtOnce threads(kThreads);
    // Few rounds: who meets the load sleeps a tenth of a second.
    for (int round = 0; round < 20; ++round) {
        forget();
        nvidia::Nvapi nvapi;
        std::atomic<int> succeeded = 0;
        threads.Run([&](int number) { succeeded += Ask(nvapi, number) == 0 ? 1 : 0; });
        // The library fails when it is initialised a second time.
        ASSERT_EQ(succeeded, kThreads);
    }
}

}  // namespace
}  // namespace gputune::test
