// What threads may do at once on a library that was just loaded: start it, of which the log and the binding to AMD's
// library come out once, and call the control library's functions for the first time. Again and again, in a fresh copy
// of the library each time.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <optional>

#include "AllAtOnce.h"
#include "ImportHook.h"
#include "machine_windows.h"
#include "sim/host/module_path.h"

namespace gputune::test {
namespace {

constexpr int kThreads = 8;

// Beside the scripted libraries, one folder further.
HMODULE LoadCountingVendor(wchar_t const* name) {
    HMODULE const module = ::LoadLibraryW((sim::ModulePath().parent_path() / "counting" / name).c_str());
    EXPECT_NE(module, nullptr);
    return module;
}

template <class Function>
Function Find(HMODULE module, char const* name) {
    auto const found = reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
    EXPECT_NE(found, nullptr) << name;
    return found;
}

std::wstring PathOfUnloadedLibrary() {
    auto const path = sim::ModulePath(LibraryUnderTest());
    ::FreeLibrary(LibraryUnderTest());
    return path;
}

std::atomic<int> g_opened = 0;

std::FILE* CountingOpen(char const* name, char const* mode) {
    ++g_opened;
    // Longer than it takes other threads to arrive.
    ::Sleep(1);
    return std::fopen(name, mode);
}

int LinesOfLog(std::string const& wanted) {
    std::ifstream file("debug.log");
    int count = 0;
    for (std::string line; std::getline(file, line);) {
        count += line.starts_with(wanted) ? 1 : 0;
    }
    return count;
}

TEST(Once, LogAndBindingComeOutOfManyFirstStarts) {
    auto const take = Find<void (*)(int*)>(LoadCountingVendor(L"atiadlxx.dll"), "Counting_Take");
    Wmi().SetCaptions({{sim::WmiCaption::Kind::Text, L"AMD Radeon RX 580 Series"}});
    std::wstring const path = PathOfUnloadedLibrary();
    AllAtOnce threads(kThreads);
    for (int round = 0; round < 250; ++round) {
        SCOPED_TRACE(round);
        HMODULE const library = ::LoadLibraryW(path.c_str());
        Exports const api = FindExports(library);
        g_opened = 0;
        {
            ImportHook const hook(library, "fopen", CountingOpen);
            std::atomic<int> backends = 0;
            threads.Run([&](int) { backends += api.InitVGAHelper(GPUTUNE_LOG_FILE) ? 1 : 0; });
            EXPECT_EQ(backends, 0) << "there is none for this interface";
        }
        EXPECT_EQ(g_opened, 1);
        int counts[3];
        take(counts);
        EXPECT_EQ(counts[0], 1) << "contexts";
        EXPECT_EQ(counts[1], 1) << "lists of adapters";
        EXPECT_EQ(counts[2], kThreads) << "questions for the interface";
        ::FreeLibrary(library);
        EXPECT_EQ(LinesOfLog("[ADL::InitADL()] ... ADL initialization successful"), 1);
        EXPECT_EQ(LinesOfLog("[ADL::~ADL()] ~ADL ... destructor called"), 1);
        if (HasFailure()) {
            return;
        }
    }
}

FARPROC WINAPI SlowFind(HMODULE module, char const* name) {
    FARPROC const found = ::GetProcAddress(module, name);
    ::Sleep(1);
    return found;
}

TEST(Once, FirstCallsOfTheForwardedFunctionsArrive) {
    LoadCountingVendor(std::filesystem::path(host::FileName(Machine::Library::Intel)).c_str());
    HMODULE const library = LibraryUnderTest();
    auto const init = Find<int (*)(int*, void**)>(library, "ctlInit");
    auto const close = Find<int (*)(void*)>(library, "ctlClose");
    auto const enumFans = Find<int (*)(int, int, int)>(library, "ctlEnumFans");
    auto const getState = Find<int (*)(int, int, int)>(library, "ctlFanGetState");
    auto const getPciState = Find<int (*)(int, int)>(library, "ctlPciGetState");
    auto const getBandwidth = Find<int (*)(int, int)>(library, "ctlMemoryGetBandwidth");
    AllAtOnce threads(kThreads);
    for (int round = 0; round < 2000; ++round) {
        int args[9] = {36, 0, 0x00010001};
        void* handle = nullptr;
        ASSERT_EQ(init(args, &handle), 0);
        std::atomic<int> wrong = 0;
        // Slowly in some rounds, in which all threads are sure to look for the address.
        std::optional<ImportHook> hook;
        if (round % 100 == 0) {
            hook.emplace(library, "GetProcAddress", SlowFind);
        }
        threads.Run([&](int number) {
            // The second time the address is known.
            for (int time = 0; time < 2; ++time) {
                wrong += enumFans(number, round, 1) == number + round + 1 ? 0 : 1;
                wrong += getState(number, round, 1) == number + round + 2 ? 0 : 1;
                wrong += getPciState(number, round) == number + round + 2 ? 0 : 1;
                wrong += getBandwidth(number, round) == 0x40000001 ? 0 : 1;
            }
        });
        ASSERT_EQ(wrong, 0);
        // Forgets the addresses.
        ASSERT_EQ(close(handle), 0);
    }
}

}  // namespace
}  // namespace gputune::test
