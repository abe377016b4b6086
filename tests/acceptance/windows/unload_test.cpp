// The end of the library: unloaded by its host, or with the process. The clean-up's last words are in the log. The
// system swallows faults in it, so each is counted by a handler of the test's own.
#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "ChildProcess.h"
#include "ImportHook.h"
#include "boards.h"
#include "intel_board.h"
#include "machine_windows.h"
#include "sim/host/module_path.h"

namespace gputune::test {
namespace {

constexpr char kLastWords[] = "[ADL::~ADL()] ~ADL ... destructor called";
constexpr wchar_t kFaultFile[] = L"faults";

std::atomic<int> g_faults = 0;

// Also leaves a file behind, for a parent process to see. Only calls that work at the end of a process.
LONG CALLBACK CountFault(EXCEPTION_POINTERS* exception) {
    constexpr DWORD kError = 0xC0000000;
    if ((exception->ExceptionRecord->ExceptionCode & kError) == kError) {
        ++g_faults;
        HANDLE const file = ::CreateFileW(kFaultFile, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            ::CloseHandle(file);
        }
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

void CountFaults() {
    ::AddVectoredExceptionHandler(1, CountFault);
}

DWORD OpenHandles() {
    DWORD count = 0;
    EXPECT_TRUE(::GetProcessHandleCount(::GetCurrentProcess(), &count));
    return count;
}

bool IsLoaded() {
    return ::GetModuleHandleW(L"gputune.dll") != nullptr;
}

std::string LastLine(Machine& machine) {
    Lines const lines = machine.TakeLog();
    return lines.empty() ? "(no line)" : lines.back();
}

// Nobody holds the log file open any more: the log was destroyed, the last of the clean-up.
void ExpectLogClosed() {
    std::error_code error;
    EXPECT_TRUE(std::filesystem::remove("debug.log", error)) << error.message();
}

TEST(Unload, WritesTheLastWordsAndClosesTheLog) {
    CountFaults();
    Machine machine = OverdriveNBoard().Started();
    std::error_code error;
    ASSERT_FALSE(std::filesystem::remove("debug.log", error)) << "the log is not open";

    ASSERT_TRUE(::FreeLibrary(LibraryUnderTest()));
    EXPECT_FALSE(IsLoaded());
    EXPECT_EQ(machine.TakeLog(), Lines({kLastWords}));
    ExpectLogClosed();
    EXPECT_EQ(g_faults, 0);
}

TEST(Unload, WritesTheLastWordsOnceAfterSeveralStarts) {
    CountFaults();
    Machine machine = OverdriveNBoard();
    machine.Then("ADL2_Overdrive_Caps").Reports(OverdriveVersion{8});
    ASSERT_TRUE(machine.Init());
    ASSERT_TRUE(machine.InitAndForget());
    ASSERT_TRUE(::FreeLibrary(LibraryUnderTest()));
    EXPECT_EQ(machine.TakeLog(), Lines({kLastWords}));
    ExpectLogClosed();
    EXPECT_EQ(g_faults, 0);
}

TEST(Unload, WithoutAnAdapterEndsTheBindingAsWell) {
    CountFaults();
    Machine machine(Machine::Library::None);
    machine.Captions({L"AMD Radeon RX 580 Series"});
    ASSERT_FALSE(machine.Init());
    machine.TakeLog();
    ASSERT_TRUE(::FreeLibrary(LibraryUnderTest()));
    EXPECT_EQ(machine.TakeLog(), Lines({kLastWords}));
    ExpectLogClosed();
    EXPECT_EQ(g_faults, 0);
}

TEST(Unload, BeforeTheFirstStartLeavesNothing) {
    CountFaults();
    Machine machine = OverdriveNBoard();
    EXPECT_FALSE(machine.Api().IsInitOk());
    ASSERT_TRUE(::FreeLibrary(LibraryUnderTest()));
    EXPECT_FALSE(IsLoaded());
    EXPECT_FALSE(std::filesystem::exists("debug.log"));
    EXPECT_EQ(g_faults, 0);
}

TEST(Unload, ClosesTheControlLibraryOfAnIntelBoard) {
    CountFaults();
    Machine machine = IntelBoard().Started();
    ASSERT_TRUE(::FreeLibrary(LibraryUnderTest()));
    EXPECT_FALSE(IsLoaded());
    EXPECT_EQ(TakeIntelTraffic(machine), Lines({"ctlClose A91000"}));
    EXPECT_EQ(machine.UnloadCount(), 1);
    EXPECT_EQ(machine.TakeLog(), Lines{});
    ExpectLogClosed();
    EXPECT_EQ(g_faults, 0);
}

TEST(Unload, LeavesAControlLibraryThatOnlyTheHostOpened) {
    CountFaults();
    Machine machine = IntelBoard();
    void* handle = nullptr;
    int args[9] = {36, 0, 0x00010001};
    ASSERT_EQ(machine.Ctl("ctlInit", &args, &handle), 0);
    machine.TakeCalls();
    ASSERT_TRUE(::FreeLibrary(LibraryUnderTest()));
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
    EXPECT_EQ(g_faults, 0);
}

TEST(Unload, AndLoadAgainStartsAfresh) {
    CountFaults();
    Machine machine = OverdriveNBoard();
    std::wstring const path = sim::ModulePath(LibraryUnderTest());
    ASSERT_TRUE(machine.Init());
    ASSERT_TRUE(::FreeLibrary(LibraryUnderTest()));
    DWORD handles = 0;
    for (int round = 0; round < 4; ++round) {
        HMODULE const library = ::LoadLibraryW(path.c_str());
        ASSERT_NE(library, nullptr);
        Exports const api = FindExports(library);
        EXPECT_EQ(api.GetVendorInfo(), 0U);
        EXPECT_FALSE(api.IsInitOk());
        EXPECT_TRUE(api.InitVGAHelper(GPUTUNE_LOG_FILE));
        ASSERT_TRUE(::FreeLibrary(library));
        EXPECT_FALSE(IsLoaded());
        ExpectLogClosed();
        // What the system itself keeps, it keeps from the first round on.
        if (round == 0) {
            handles = OpenHandles();
        }
    }
    EXPECT_EQ(OpenHandles(), handles);
    EXPECT_EQ(g_faults, 0);
}

// The mark of a child that came to the end of its test.
void Mark() {
    std::ofstream("reached-the-end") << "yes";
}

void ExpectChildEndedWell(DWORD exitCode) {
    EXPECT_EQ(exitCode, 0U);
    EXPECT_TRUE(std::filesystem::exists("reached-the-end"));
    EXPECT_FALSE(std::filesystem::exists(kFaultFile));
    Machine log(Machine::Library::None);
    EXPECT_EQ(LastLine(log), kLastWords);
    ExpectLogClosed();
}

TEST(Unload, EndOfTheProcessWritesTheLastWords) {
    if (!IsChild()) {
        ExpectChildEndedWell(RunAsChild());
        return;
    }
    CountFaults();
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.Init());
    machine.Api().FetchHwmValues();
    Mark();
}

TEST(Unload, EndOfTheProcessWithAnIntelBoardIsClean) {
    if (!IsChild()) {
        EXPECT_EQ(RunAsChild(), 0U);
        EXPECT_TRUE(std::filesystem::exists("reached-the-end"));
        EXPECT_FALSE(std::filesystem::exists(kFaultFile));
        ExpectLogClosed();
        return;
    }
    CountFaults();
    Machine machine = IntelBoard();
    ASSERT_TRUE(machine.Init());
    machine.Api().FetchHwmValues();
    Mark();
    ::ExitProcess(0);
}

// What the control library is asked when the process ends: it has ended before, with its threads.
constexpr wchar_t kCloseFile[] = L"control-library-closed";

int LeaveMarkOfClose(void* /*handle*/) {
    ::CloseHandle(::CreateFileW(kCloseFile, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    return 0;
}

FARPROC WINAPI FindMarkingClose(HMODULE module, char const* name) {
    return std::strcmp(name, "ctlClose") == 0 ? reinterpret_cast<FARPROC>(reinterpret_cast<void*>(LeaveMarkOfClose))
                                              : ::GetProcAddress(module, name);
}

constexpr wchar_t kUnloadFile[] = L"library-unloaded";

BOOL WINAPI LeaveMarkOfUnload(HMODULE module) {
    ::CloseHandle(::CreateFileW(kUnloadFile, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    return ::FreeLibrary(module);
}

// An Intel backend in use, of a library under test that leaves marks when it closes and unloads another.
void StartMarkingIntelBoard() {
    static Machine machine = IntelBoard();
    ASSERT_TRUE(machine.InitAndForget());
    // Never taken back: the test unloads the library.
    static ImportHook* const hooks[] = {new ImportHook("GetProcAddress", FindMarkingClose),
                                        new ImportHook("FreeLibrary", LeaveMarkOfUnload)};
    static_cast<void>(hooks);
}

TEST(Unload, EndOfTheProcessAsksNothingOfTheControlLibrary) {
    if (!IsChild()) {
        EXPECT_EQ(RunAsChild(), 0U);
        EXPECT_TRUE(std::filesystem::exists("reached-the-end"));
        EXPECT_FALSE(std::filesystem::exists(kFaultFile));
        EXPECT_FALSE(std::filesystem::exists(kCloseFile));
        EXPECT_FALSE(std::filesystem::exists(kUnloadFile));
        ExpectLogClosed();
        return;
    }
    CountFaults();
    StartMarkingIntelBoard();
    Mark();
    ::ExitProcess(0);
}

// The marks are left when there is reason to.
TEST(Unload, ByTheHostClosesAndUnloadsTheControlLibrary) {
    StartMarkingIntelBoard();
    ASSERT_TRUE(::FreeLibrary(LibraryUnderTest()));
    EXPECT_TRUE(std::filesystem::exists(kCloseFile));
    EXPECT_TRUE(std::filesystem::exists(kUnloadFile));
}

TEST(Unload, ProcessThatEndsAbruptlyWritesTheLastWords) {
    if (!IsChild()) {
        ExpectChildEndedWell(RunAsChild());
        return;
    }
    CountFaults();
    Machine machine = Overdrive8Board(0);
    ASSERT_TRUE(machine.Init());
    Mark();
    // As a host does that does not return from its main function.
    ::ExitProcess(0);
}

}  // namespace
}  // namespace gputune::test
