// The careful loading of libraries, as on Windows 7 and as on Windows 10.
#include <gtest/gtest.h>

#include "nvapi_threads.h"
#include "platform/last_error.h"
#include "platform/version.h"

namespace gputune::test {
namespace {

using nvidia::HardenedLoader;

bool IsWindows7() {
    return sim::ModulePath().stem() == L"windows7_tests";
}

// A file name of this program's own: the programs run at the same time.
std::wstring OwnName(wchar_t const* name) {
    return std::wstring(name) + L"-" + sim::ModulePath().stem().wstring() + L".dll";
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
    EXPECT_EQ(HardenedLoader().IsWindows8OrLater(), !IsWindows7());
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
    Driver const driver(IsWindows7() ? L"9007" : L"9010");
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
    Driver const driver(IsWindows7() ? L"9107" : L"9110");
    PlantedFile const elsewhere(System32() / name);
    auto* const library = static_cast<HMODULE>(HardenedLoader().Load(name, 0));
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(sim::ModulePath(library), elsewhere.Path());
    ::FreeLibrary(library);
}

// ---- NVAPI ----

TEST(Nvapi, WithoutALibraryManyThreadsAreTold) {
    nvidia::Nvapi nvapi;
    std::atomic<int> told = 0;
    AllAtOnce(kThreads).Run([&](int number) {
        int const status = Ask(nvapi, number);
        // -1: the call gave up waiting for the other threads' attempts.
        told += status == -2 || status == -1 ? 1 : 0;
    });
    EXPECT_EQ(told, kThreads);
    EXPECT_EQ(nvapi.NvAPI_Initialize(), -2);
}

}  // namespace
}  // namespace gputune::test
