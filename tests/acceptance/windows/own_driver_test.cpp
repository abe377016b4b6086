// A machine on which these tests run may have a driver of its own: no test reaches its board.
#include <gtest/gtest.h>

#include <windows.h>

#include <filesystem>

#include "machine_windows.h"
#include "sim/host/module_path.h"

namespace gputune::test {
namespace {

constexpr wchar_t kDriver[] = L"atiadlxx.dll";

// A library of the driver's name in the current directory, where Windows looks, too: of which library a copy is no
// matter.
void InstallDriver() {
    std::filesystem::copy_file(sim::ModulePath(LibraryUnderTest()), kDriver);
}

void ExpectTheSystemFindsTheDriver() {
    HMODULE const driver = ::LoadLibraryW(kDriver);
    EXPECT_NE(driver, nullptr);
    ::FreeLibrary(driver);
}

TEST(OwnDriver, IsNotLoadedByTheLibraryUnderTest) {
    InstallDriver();
    Machine machine(Machine::Library::None);
    machine.Captions({L"AMD Radeon RX 580 Series"});
    EXPECT_FALSE(machine.Init());
    EXPECT_EQ(::GetModuleHandleW(kDriver), nullptr);
    ExpectTheSystemFindsTheDriver();
}

TEST(OwnDriver, IsNotLoadedByAnotherCopyOfTheLibrary) {
    InstallDriver();
    Wmi().SetCaptions({{sim::WmiCaption::Kind::Text, L"AMD Radeon RX 580 Series"}});
    EXPECT_FALSE(FindExports(LibraryUnderTest()).InitVGAHelper(GPUTUNE_LOG_NONE));
    EXPECT_EQ(::GetModuleHandleW(kDriver), nullptr);
    ExpectTheSystemFindsTheDriver();
}

}  // namespace
}  // namespace gputune::test
