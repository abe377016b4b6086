// Under ThreadSanitizer, thousands of times: NVAPI is loaded and initialised once, its functions may be called from any
// thread, a driver's threads may ask for memory, and the log is made once. The operating system is FakeSystem and the
// functions below.
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "AllAtOnce.h"
#include "FakeSystem.h"
#include "amd/adl_memory.h"
#include "log/DebugLog.h"
#include "nvidia/Nvapi.h"
#include "platform/library.h"

namespace gputune {

namespace platform {

LibraryHandle LoadLibraryWithFlags(wchar_t const* path, std::uint32_t flags) {
    return test::LoadFakeLibrary(path, flags).value_or(nullptr);
}

void UnloadLibrary(LibraryHandle library) {
    test::UnloadFakeLibrary(library);
}

void* FindSymbol(LibraryHandle library, char const* name) {
    return test::FindInFakeLibrary(library, name).value_or(nullptr);
}

}  // namespace platform

namespace test {

namespace {

// What a 64-bit process loads, as this one is.
constexpr wchar_t const* kNvapi = L"nvapi64.dll";

constexpr int kThreads = 8;

int g_failures = 0;

void Expect(bool holds, char const* what) {
    if (!holds) {
        std::printf("%s\n", what);
        ++g_failures;
    }
}

// ---- NVAPI ----

std::atomic<int> g_initializations = 0;
std::atomic<int> g_calls = 0;
std::atomic<int> g_hooks = 0;

int Initialize() {
    ++g_initializations;
    return 0;
}

int VersionString(char* text) {
    text[0] = 'v';
    ++g_calls;
    return 0;
}

void BeforeCall(std::uint32_t /*identifier*/, std::uint32_t* words) {
    words[0] = 1;
    ++g_hooks;
}

void AfterCall(std::uint32_t /*identifier*/, std::uint32_t word, std::uint32_t /*word*/, int /*status*/) {
    g_hooks += static_cast<int>(word);
}

void* Query(std::uint32_t identifier) {
    switch (identifier) {
        case 0x0150E828:
            return reinterpret_cast<void*>(&Initialize);
        case 0x01053FA5:
            return reinterpret_cast<void*>(&VersionString);
        case 0x33C7358C:
            return reinterpret_cast<void*>(&BeforeCall);
        case 0x593E8644:
            return reinterpret_cast<void*>(&AfterCall);
        default:
            return nullptr;
    }
}

void NvapiIsInitialisedOnce(AllAtOnce& threads) {
    for (int round = 0; round < 10000; ++round) {
        TheSystem() = {};
        // A thread that waits for another one's load tries again at once.
        TheSystem().inSleep = [](std::uint32_t) { std::this_thread::yield(); };
        TheSystem().libraries[kNvapi].entryPoints["nvapi_QueryInterface"] = reinterpret_cast<void*>(&Query);
        g_initializations = g_calls = g_hooks = 0;
        nvidia::Nvapi nvapi;
        std::atomic<int> succeeded = 0;
        std::atomic<int> gaveUp = 0;
        threads.Run([&](int number) {
            char text[64];
            int const status = number % 2 == 0 ? nvapi.NvAPI_Initialize() : nvapi.NvAPI_GetInterfaceVersionString(text);
            succeeded += status == 0 ? 1 : 0;
            gaveUp += status == -1 ? 1 : 0;
        });
        // A thread tries ten times, which without waiting may not be enough.
        Expect(succeeded + gaveUp == kThreads, "a call failed for another reason than that it waited too long");
        Expect(g_initializations == 1, "NVAPI was not initialised once");
        Expect(TheSystem().libraries[kNvapi].loads == 1, "NVAPI was not loaded once");
        Expect(g_hooks == 2 * g_calls, "a call went past the hooks");
    }
}

// ---- Memory for AMD's library ----

void DriversThreadsGetMemory(AllAtOnce& threads) {
    for (int round = 0; round < 1000; ++round) {
        threads.Run([&](int number) {
            auto* const block = static_cast<unsigned char*>(amd::AllocateForAdl(16 + number));
            block[0] = static_cast<unsigned char>(number);
            Expect(amd::SizeOfAdlBlock(block) == static_cast<std::size_t>(16 + number),
                   "a block is not as large as asked");
            amd::ReleaseFromAdl(block);
        });
    }
}

// ---- The log ----

void LogIsMadeOnce(AllAtOnce& threads) {
    threads.Run([](int number) {
        log::DebugLog::Get(2);
        log::Entry(log::Tag{"[thread]"}, number);
    });
    std::ifstream file("debug.log");
    int lines = 0;
    for (std::string line; std::getline(file, line);) {
        ++lines;
    }
    Expect(lines == kThreads, "the log was made more than once");
}

}  // namespace

}  // namespace test

}  // namespace gputune

int main() {
    using namespace gputune::test;
    AllAtOnce threads(kThreads);
    LogIsMadeOnce(threads);
    NvapiIsInitialisedOnce(threads);
    DriversThreadsGetMemory(threads);
    std::puts(g_failures == 0 ? "all as promised" : "failed");
    return g_failures == 0 ? 0 : 1;
}
