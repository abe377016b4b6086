// Control libraries as the system loads and unloads them: another file by its full path, and functions that are gone
// with their library.
#include <windows.h>

#include <cstring>
#include <filesystem>

#include "../ctl_client.h"
#include "ImportHook.h"
#include "machine_windows.h"
#include "sim/host/module_path.h"

namespace gputune::test {
namespace {

// A copy of the scripted library in this test's directory: its full path.
std::wstring CopyOfTheLibrary() {
    auto const copy = std::filesystem::current_path() / "AnotherControlLib.dll";
    std::filesystem::copy_file(sim::ModulePath(::GetModuleHandleW(kName.c_str())), copy);
    return copy.wstring();
}

ScriptedLibrary& LoadScripted(std::wstring const& path) {
    HMODULE const module = ::LoadLibraryW(path.c_str());
    auto const function = reinterpret_cast<void*>(::GetProcAddress(module, "Scripted_Library"));
    return *reinterpret_cast<ScriptedLibrary* (*)()>(function)();
}

TEST(CtlLibrary, FullRuntimePathIsLoadedFromWhereItPoints) {
    Machine machine(Machine::Library::Intel);
    std::wstring const path = CopyOfTheLibrary();
    ScriptedLibrary& copy = LoadScripted(path);
    copy.Result("ctlInit", 55);
    copy.Result("ctlEnumFans", 56);
    machine.Result("ctlEnumFans", 7);

    PathArgs args(path.c_str());
    ASSERT_EQ(machine.Ctl("ctlSetRuntimePath", &args), 0);
    EXPECT_EQ(Init(machine), 55);
    EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 0, 0), 56);
    EXPECT_EQ(copy.CallCount(), 3);  // with the path it was loaded from
    EXPECT_EQ(machine.TakeCallNames(), Lines{}) << "of the library in the system directory";
    std::vector<LibraryLoad> const loads = machine.TakeLoads();
    ASSERT_EQ(loads.size(), 1U);
    EXPECT_EQ(loads[0].path, path);
    EXPECT_EQ(loads[0].flags, 0x800U);

    // After a failing close it is still that one; after a close, the next is the system's.
    copy.Result("ctlClose", 1);
    EXPECT_EQ(machine.Ctl("ctlClose", 0), 1);
    EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 0, 0), 56);
    copy.Result("ctlClose", 0);
    EXPECT_EQ(machine.Ctl("ctlClose", 0), 0);
    EXPECT_EQ(Init(machine), 0);
    EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 0, 0), 7);
    EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlInit", "ctlEnumFans"}));
}

TEST(CtlLibrary, BareNameIsTheSystemDirectorysOnly) {
    Machine machine(Machine::Library::Intel);
    std::filesystem::path const copy = CopyOfTheLibrary();
    PathArgs args(copy.filename().c_str());
    ASSERT_EQ(machine.Ctl("ctlSetRuntimePath", &args), 0);
    EXPECT_EQ(Init(machine), kLoadFailed) << "not from the current directory";
}

// Nobody but the product holds this one, so closing it takes its code out of the process.
TEST(CtlLibrary, FunctionsThatAreGoneAreNotCalled) {
    Machine machine(Machine::Library::Intel);
    std::wstring const path = CopyOfTheLibrary();
    PathArgs args(path.c_str());
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        ASSERT_EQ(machine.Ctl("ctlSetRuntimePath", &args), 0);
        ASSERT_EQ(Init(machine), 0);
        ASSERT_NE(::GetModuleHandleW(L"AnotherControlLib.dll"), nullptr);
        EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 0, 0), 0);
        ASSERT_EQ(machine.Ctl("ctlClose", 0), 0);
        ASSERT_EQ(::GetModuleHandleW(L"AnotherControlLib.dll"), nullptr);
        EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 0, 0), kNotInitialized);
        EXPECT_EQ(machine.Ctl("ctlClose", 0), kNotInitialized);
    }
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
}

// As one of a thread that looks a function up while another closes the library.
FARPROC WINAPI FindDuringClose(HMODULE module, char const* name) {
    FARPROC const found = ::GetProcAddress(module, name);
    if (std::strcmp(name, "ctlEnumFans") == 0) {
        auto const close = reinterpret_cast<void*>(::GetProcAddress(LibraryUnderTest(), "ctlClose"));
        EXPECT_EQ(reinterpret_cast<int (*)(void*)>(close)(nullptr), 0);
    }
    return found;
}

TEST(CtlLibrary, AddressFoundDuringACloseIsNotKeptForTheNextLibrary) {
    Machine machine(Machine::Library::Intel);
    machine.Result("ctlEnumFans", 7);
    std::wstring const path = CopyOfTheLibrary();
    LoadScripted(path).Result("ctlEnumFans", 56);
    PathArgs args(path.c_str());
    ASSERT_EQ(machine.Ctl("ctlSetRuntimePath", &args), 0);
    ASSERT_EQ(Init(machine), 0);
    {
        ImportHook const hook("GetProcAddress", FindDuringClose);
        machine.Ctl("ctlEnumFans", 1, 0, 0);
    }
    ASSERT_EQ(Init(machine), 0);
    EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 0, 0), 7);
}

// What this process cannot give, though the sum of the sizes fits 32 bits.
TEST(CtlLibrary, CountBeyondTheProcessClosesTheLibrary) {
    Machine machine = IntelBoard();
    OrderDeviceList(machine, 0x3F000000);
    ASSERT_TRUE(machine.Init());
    EXPECT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(WithoutDetection(machine.TakeLog()),
              Lines({"[IGCLHelper::IGCLHelper()] ... malloc memory for hDevices failed"}));
    EXPECT_EQ(machine.UnloadCount(), 1);
}

}  // namespace
}  // namespace gputune::test
