// Loading NVAPI and calling its functions: look-ups, hooks, counters, every status that the loader itself returns, and
// threads.
#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <condition_variable>
#include <map>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

#include "FakeSystem.h"
#include "nvidia/Nvapi.h"

namespace {

bool g_isOutOfMemory = false;

// While one exists, operator new fails on all threads.
class OutOfMemory {
public:
    OutOfMemory() { g_isOutOfMemory = true; }
    ~OutOfMemory() { g_isOutOfMemory = false; }
    OutOfMemory(OutOfMemory const&) = delete;
    OutOfMemory& operator=(OutOfMemory const&) = delete;
};

}  // namespace

// The linker option --wrap lets all calls of operator new go to the second function.
extern "C" {

void* __real__Znwj(std::size_t size);
void* __wrap__Znwj(std::size_t size);

void* __wrap__Znwj(std::size_t size) {
    return g_isOutOfMemory ? throw std::bad_alloc() : __real__Znwj(size);
}

}  // extern "C"

namespace gputune {
namespace {

using test::TheSystem;
using test::Trace;

constexpr std::uint32_t kInitialize = 0x0150E828;
constexpr std::uint32_t kInitializeWithMode = 0xAD298D3F;
constexpr std::uint32_t kBeforeCall = 0x33C7358C;
constexpr std::uint32_t kAfterCall = 0x593E8644;
constexpr std::uint32_t kVersionString = 0x01053FA5;
constexpr std::uint32_t kErrorMessage = 0x6C2D048C;

// The library that FakeSystem has as "nvapi.dll". Any thread may call it.
struct FakeNvapi {
    std::map<std::uint32_t, void*> functions;
    std::mutex mutex;
    std::vector<std::uint32_t> queries;
    std::vector<std::string> calls;
    std::atomic<int> initializations = 0;
    std::atomic<int> result = 0;  // of everything but the initialisation
    std::atomic<int> initializeResult = 0;

    void Note(std::string const& call) {
        std::lock_guard const lock(mutex);
        calls.push_back(call);
    }
};

FakeNvapi& Library() {
    static FakeNvapi library;
    return library;
}

void* NVAPI_CDECL Query(std::uint32_t identifier) {
    std::lock_guard const lock(Library().mutex);
    Library().queries.push_back(identifier);
    auto const found = Library().functions.find(identifier);
    return found == Library().functions.end() ? nullptr : found->second;
}

int NVAPI_CDECL Initialize() {
    ++Library().initializations;
    Library().Note("initialize");
    return Library().initializeResult;
}

int NVAPI_CDECL InitializeWithMode(int mode) {
    Library().Note("initialize with " + std::to_string(mode));
    return Library().initializeResult;
}

int NVAPI_CDECL VersionString(char* text) {
    Library().Note("version");
    text[0] = 'v';
    return Library().result;
}

int NVAPI_CDECL OtherVersionString(char* text) {
    Library().Note("other version");
    text[0] = 'w';
    return Library().result;
}

int NVAPI_CDECL ErrorMessage(int status, char*) {
    Library().Note("message of " + std::to_string(status));
    return Library().result;
}

void NVAPI_CDECL BeforeCall(std::uint32_t identifier, std::uint32_t* words) {
    char line[64];
    std::snprintf(line, sizeof line, "before %08X %X %X", identifier, words[0], words[1]);
    Library().Note(line);
    words[0] = 0x11;
    words[1] = 0x22;
}

void NVAPI_CDECL AfterCall(std::uint32_t identifier, std::uint32_t word0, std::uint32_t word1, int status) {
    char line[64];
    std::snprintf(line, sizeof line, "after %08X %X %X %d", identifier, word0, word1, status);
    Library().Note(line);
}

template <class Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

// Gives tests access to the loader's state.
class OpenNvapi : public nvidia::Nvapi {
public:
    using Nvapi::Resolve;
    using Nvapi::state_;
};

class NvapiLoad : public testing::Test {
protected:
    NvapiLoad() {
        TheSystem() = {};
        Library().queries.clear();
        Library().calls.clear();
        Library().initializations = 0;
        Library().result = 0;
        Library().initializeResult = 0;
        TheSystem().libraries[L"nvapi.dll"].entryPoints = {{"nvapi_QueryInterface", Address(Query)}};
        Library().functions = {
            {kInitialize, Address(Initialize)},
            {kInitializeWithMode, Address(InitializeWithMode)},
            {kVersionString, Address(VersionString)},
            {kErrorMessage, Address(ErrorMessage)},
        };
    }

    void WithHooks() {
        Library().functions[kBeforeCall] = Address(BeforeCall);
        Library().functions[kAfterCall] = Address(AfterCall);
    }

    int Version() {
        char text[64] = {};
        return nvapi_.NvAPI_GetInterfaceVersionString(text);
    }

    std::vector<std::string> TakeCalls() { return std::exchange(Library().calls, {}); }
    std::vector<std::uint32_t> TakeQueries() { return std::exchange(Library().queries, {}); }
    int Loads() { return TheSystem().libraries[L"nvapi.dll"].loads; }

    void ExpectNotLoaded() {
        EXPECT_EQ(nvapi_.state_.module, nullptr);
        EXPECT_FALSE(nvapi_.state_.loading);
        EXPECT_EQ(nvapi_.state_.inUse, 0);
        EXPECT_EQ(nvapi_.state_.initialized, 0);
        EXPECT_EQ(nvapi_.state_.loadCount, 0);
        EXPECT_EQ(nvapi_.state_.initializeCount, 0);
        EXPECT_EQ(nvapi_.state_.queryInterface, nullptr);
        EXPECT_EQ(nvapi_.state_.initialize, nullptr);
        EXPECT_EQ(nvapi_.state_.initializeWithMode, nullptr);
        EXPECT_EQ(Loads(), 0);
    }

    OpenNvapi nvapi_;
};

using Calls = std::vector<std::string>;
using Queries = std::vector<std::uint32_t>;

// ---- First use ----

TEST_F(NvapiLoad, NothingIsLoadedBeforeTheFirstCall) {
    ExpectNotLoaded();
    EXPECT_EQ(TheSystem().trace, Trace{});
}

TEST_F(NvapiLoad, FirstCallLoadsInitialisesAndLooksUp) {
    EXPECT_EQ(Version(), 0);
    EXPECT_EQ(TakeCalls(), Calls({"initialize", "version"}));
    EXPECT_EQ(TakeQueries(), Queries({kInitializeWithMode, kInitialize, kBeforeCall, kAfterCall, kVersionString}));
    EXPECT_EQ(TheSystem().TraceOf(L"load nv"), Trace({L"load nvapi.dll 800"}));
    EXPECT_EQ(nvapi_.state_.module, &TheSystem().libraries[L"nvapi.dll"]);
    EXPECT_EQ(nvapi_.state_.initialized, 1);
    EXPECT_EQ(nvapi_.state_.loadCount, 1);
    EXPECT_EQ(nvapi_.state_.initializeCount, 0);
    EXPECT_EQ(nvapi_.state_.inUse, 0);
    EXPECT_FALSE(nvapi_.state_.loading);
}

TEST_F(NvapiLoad, LibraryComesFromTheSystemDirectoryWhateverTheDriversPackageHolds) {
    std::wstring const adapters = L"SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e968-e325-11ce-bfc1-08002be10318}";
    std::wstring const package = L"C:\\Windows\\system32\\DriverStore\\FileRepository\\nv_dispi.inf_x86_1\\";
    TheSystem().subkeys[adapters] = {0, {L"0000"}};
    TheSystem().values[adapters + L"\\0000\\UserModeDriverName"] = {0, {package + L"nvldumd.dll"}};
    TheSystem().files[package + L"nvapi.dll"] = 0;
    TheSystem().trustedFiles.insert(package + L"nvapi.dll");
    EXPECT_EQ(Version(), 0);
    EXPECT_EQ(TheSystem().TraceOf(L"file "), Trace{});
    EXPECT_EQ(Loads(), 1);
}

TEST_F(NvapiLoad, LaterCallsLookNothingUp) {
    Version();
    TakeCalls();
    TakeQueries();
    TheSystem().trace.clear();
    Library().result = -5;
    EXPECT_EQ(Version(), -5);
    EXPECT_EQ(Version(), -5);
    EXPECT_EQ(TakeCalls(), Calls({"version", "version"}));
    EXPECT_EQ(TakeQueries(), Queries{});
    EXPECT_EQ(TheSystem().trace, Trace{});
}

TEST_F(NvapiLoad, EachFunctionHasItsOwnSlot) {
    Version();
    TakeCalls();
    TakeQueries();
    char text[64];
    EXPECT_EQ(nvapi_.NvAPI_GetErrorMessage(-7, text), 0);
    EXPECT_EQ(TakeQueries(), Queries({kErrorMessage}));
    EXPECT_EQ(TakeCalls(), Calls({"message of -7"}));
    EXPECT_EQ(Version(), 0);
    EXPECT_EQ(TakeQueries(), Queries{});
}

TEST_F(NvapiLoad, IdentifiersAreThePublishedOnes) {
    nvidia::NV_GPU_THERMAL_SETTINGS settings{};
    nvidia::NvPhysicalGpuHandle handles[64];
    std::uint32_t count = 0;
    char text[64];
    Version();
    TakeQueries();
    EXPECT_EQ(nvapi_.NvAPI_EnumPhysicalGPUs(handles, &count), -3);
    EXPECT_EQ(nvapi_.NvAPI_GPU_GetFullName(nullptr, text), -3);
    EXPECT_EQ(nvapi_.NvAPI_GPU_GetThermalSettings(nullptr, 15, &settings), -3);
    EXPECT_EQ(TakeQueries(), Queries({0xE5AC921F, 0xCEEE8E9F, 0xE3640A56}));
}

TEST_F(NvapiLoad, UnknownFunctionIsNoImplementationAndAskedForAgain) {
    Library().functions.erase(kVersionString);
    EXPECT_EQ(Version(), -3);
    EXPECT_EQ(Version(), -3);
    EXPECT_EQ(nvapi_.state_.inUse, 0);
    EXPECT_EQ(TakeQueries(),
              Queries({kInitializeWithMode, kInitialize, kBeforeCall, kAfterCall, kVersionString, kVersionString}));
    Library().functions[kVersionString] = Address(VersionString);
    EXPECT_EQ(Version(), 0);
}

// ---- NvAPI_Initialize ----

TEST_F(NvapiLoad, InitializeLoadsAndCounts) {
    EXPECT_EQ(nvapi_.NvAPI_Initialize(), 0);
    // Loading has initialised it.
    EXPECT_EQ(TakeCalls(), Calls({"initialize"}));
    EXPECT_EQ(nvapi_.state_.initializeCount, 1);
    EXPECT_EQ(nvapi_.state_.loadCount, 2);
    EXPECT_EQ(nvapi_.NvAPI_Initialize(), 0);
    EXPECT_EQ(TakeCalls(), Calls{});
    EXPECT_EQ(nvapi_.state_.initializeCount, 2);
    EXPECT_EQ(nvapi_.state_.loadCount, 3);
    EXPECT_EQ(nvapi_.state_.inUse, 0);
    EXPECT_EQ(Loads(), 1);
}

TEST_F(NvapiLoad, InitializeAfterAnotherCallDoesNotInitialiseAgain) {
    Version();
    TakeCalls();
    EXPECT_EQ(nvapi_.NvAPI_Initialize(), 0);
    EXPECT_EQ(TakeCalls(), Calls{});
}

TEST_F(NvapiLoad, InitializeOfALoadedLibraryThatIsNotInitialised) {
    Version();
    TakeCalls();
    nvapi_.state_.initialized = 0;
    Library().initializeResult = -6;
    EXPECT_EQ(nvapi_.NvAPI_Initialize(), -6);
    EXPECT_EQ(nvapi_.state_.initialized, 0);
    EXPECT_EQ(nvapi_.state_.initializeCount, 0);
    EXPECT_EQ(nvapi_.state_.loadCount, 1);
    EXPECT_EQ(nvapi_.state_.inUse, 0);

    Library().initializeResult = 0;
    EXPECT_EQ(nvapi_.NvAPI_Initialize(), 0);
    EXPECT_EQ(nvapi_.state_.initialized, 1);
    EXPECT_EQ(nvapi_.state_.initializeCount, 1);
    EXPECT_EQ(TakeCalls(), Calls({"initialize", "initialize"}));

    nvapi_.state_.initialized = 0;
    nvapi_.state_.initialize = nullptr;
    EXPECT_EQ(nvapi_.NvAPI_Initialize(), -1);
    EXPECT_EQ(nvapi_.state_.inUse, 0);
}

// ---- The library that is not as it should be ----

TEST_F(NvapiLoad, WithoutTheLibraryEveryCallIsLibraryNotFound) {
    TheSystem().libraries.erase(L"nvapi.dll");
    nvidia::NV_GPU_THERMAL_SETTINGS settings{};
    nvidia::NvPhysicalGpuHandle handles[64];
    std::uint32_t count = 0;
    char text[64];
    EXPECT_EQ(nvapi_.NvAPI_Initialize(), -2);
    EXPECT_EQ(nvapi_.NvAPI_GetErrorMessage(-2, text), -2);
    EXPECT_EQ(nvapi_.NvAPI_GetInterfaceVersionString(text), -2);
    EXPECT_EQ(nvapi_.NvAPI_EnumPhysicalGPUs(handles, &count), -2);
    EXPECT_EQ(nvapi_.NvAPI_GPU_GetFullName(nullptr, text), -2);
    EXPECT_EQ(nvapi_.NvAPI_GPU_GetThermalSettings(nullptr, 15, &settings), -2);
    ExpectNotLoaded();
}

TEST_F(NvapiLoad, WithoutMemoryIsLibraryNotFoundAndCountsNoCall) {
    int version = 0;
    int initialize = 0;
    EXPECT_NO_THROW({
        OutOfMemory const now;
        version = Version();
        initialize = nvapi_.NvAPI_Initialize();
    });
    EXPECT_EQ(version, -2);
    EXPECT_EQ(initialize, -2);
    ExpectNotLoaded();
    EXPECT_EQ(Version(), 0);
}

TEST_F(NvapiLoad, LibraryThatAppearsLaterIsFound) {
    TheSystem().loadErrors[L"nvapi.dll"] = 126;
    EXPECT_EQ(Version(), -2);
    TheSystem().loadErrors.clear();
    EXPECT_EQ(Version(), 0);
}

TEST_F(NvapiLoad, LibraryWithoutItsEntryPointIsUnloaded) {
    TheSystem().libraries[L"nvapi.dll"].entryPoints.clear();
    EXPECT_EQ(Version(), -1);
    EXPECT_EQ(TheSystem().TraceOf(L"unload"), Trace({L"unload nvapi.dll"}));
    ExpectNotLoaded();
    EXPECT_EQ(nvapi_.NvAPI_Initialize(), -1);
    EXPECT_EQ(nvapi_.EnsureLoaded(1), -3);
    ExpectNotLoaded();
    EXPECT_EQ(TheSystem().TraceOf(L"unload").size(), 3U);
}

TEST_F(NvapiLoad, LibraryWithoutAnInitialiseFunctionIsUnloaded) {
    Library().functions.erase(kInitialize);
    EXPECT_EQ(Version(), -1);
    EXPECT_EQ(TheSystem().TraceOf(L"unload"), Trace({L"unload nvapi.dll"}));
    ExpectNotLoaded();
}

TEST_F(NvapiLoad, LibraryThatDoesNotInitialiseIsUnloadedAndTriedAgain) {
    Library().initializeResult = -9;
    EXPECT_EQ(nvapi_.NvAPI_Initialize(), -9);
    EXPECT_EQ(TheSystem().TraceOf(L"unload"), Trace({L"unload nvapi.dll"}));
    // The hooks of a library that does not initialise are not looked up.
    EXPECT_EQ(TakeQueries(), Queries({kInitializeWithMode, kInitialize}));
    ExpectNotLoaded();

    Library().initializeResult = 0;
    EXPECT_EQ(nvapi_.NvAPI_Initialize(), 0);
    EXPECT_EQ(Loads(), 1);
    EXPECT_EQ(Library().initializations, 2);
}

// ---- Modes ----

TEST_F(NvapiLoad, ModeOneInitialisesWithTheMode) {
    EXPECT_EQ(nvapi_.EnsureLoaded(1), 0);
    EXPECT_EQ(TakeCalls(), Calls({"initialize with 1"}));
    EXPECT_EQ(nvapi_.state_.initialized, 1);
    EXPECT_EQ(nvapi_.state_.loadCount, 1);
    // The mode has no effect once the library is loaded.
    EXPECT_EQ(nvapi_.EnsureLoaded(0), 0);
    EXPECT_EQ(nvapi_.EnsureLoaded(2), 0);
    EXPECT_EQ(nvapi_.NvAPI_Initialize(), 0);
    EXPECT_EQ(TakeCalls(), Calls{});
}

TEST_F(NvapiLoad, ModeOneThatFailsOrIsMissing) {
    Library().initializeResult = -9;
    EXPECT_EQ(nvapi_.EnsureLoaded(1), -9);
    ExpectNotLoaded();
    Library().functions.erase(kInitializeWithMode);
    EXPECT_EQ(nvapi_.EnsureLoaded(1), -3);
    ExpectNotLoaded();
    EXPECT_EQ(TheSystem().TraceOf(L"unload").size(), 2U);
}

TEST_F(NvapiLoad, OtherModesLoadNothing) {
    for (int const mode : {-1, 2, 100}) {
        EXPECT_EQ(nvapi_.EnsureLoaded(mode), -3);
    }
    EXPECT_EQ(TheSystem().trace, Trace{});
    ExpectNotLoaded();
}

TEST_F(NvapiLoad, ResolvingInAnotherModeFails) {
    Version();
    for (int const mode : {-1, 2}) {
        EXPECT_EQ(nvapi_.Resolve(nvapi_.state_.module, mode), -1);
    }
}

TEST_F(NvapiLoad, ResolvingAgainForgetsEveryAddress) {
    char text[64];
    Version();
    nvapi_.NvAPI_GetErrorMessage(0, text);
    TakeQueries();
    Library().functions[kVersionString] = Address(OtherVersionString);
    ASSERT_EQ(nvapi_.Resolve(nvapi_.state_.module, 0), 0);
    TakeCalls();
    TakeQueries();
    EXPECT_EQ(Version(), 0);
    nvapi_.NvAPI_GetErrorMessage(0, text);
    EXPECT_EQ(TakeCalls(), Calls({"other version", "message of 0"}));
    EXPECT_EQ(TakeQueries(), Queries({kVersionString, kErrorMessage}));
}

TEST_F(NvapiLoad, WithoutAQueryInterfaceThereIsNoImplementation) {
    Version();
    nvapi_.state_.queryInterface = nullptr;
    char text[64];
    EXPECT_EQ(nvapi_.NvAPI_GetErrorMessage(0, text), -3);
    EXPECT_EQ(nvapi_.state_.inUse, 0);
    // What was looked up before still works.
    EXPECT_EQ(Version(), 0);
}

// ---- Hooks ----

TEST_F(NvapiLoad, HooksSurroundEveryCall) {
    WithHooks();
    Library().result = -4;
    EXPECT_EQ(Version(), -4);
    EXPECT_EQ(Version(), -4);
    EXPECT_EQ(TakeCalls(), Calls({"initialize", "before 01053FA5 0 0", "version", "after 01053FA5 11 22 -4",
                                  "before 01053FA5 0 0", "version", "after 01053FA5 11 22 -4"}));
}

TEST_F(NvapiLoad, HooksAreNotCalledForTheInitialisationOrAMissingFunction) {
    WithHooks();
    EXPECT_EQ(nvapi_.NvAPI_Initialize(), 0);
    Library().functions.erase(kVersionString);
    EXPECT_EQ(Version(), -3);
    EXPECT_EQ(TakeCalls(), Calls({"initialize"}));
}

TEST_F(NvapiLoad, OneHookAloneIsNone) {
    for (std::uint32_t const missing : {kBeforeCall, kAfterCall}) {
        OpenNvapi nvapi;
        WithHooks();
        Library().functions.erase(missing);
        char text[64];
        TakeCalls();
        EXPECT_EQ(nvapi.NvAPI_GetInterfaceVersionString(text), 0);
        EXPECT_EQ(TakeCalls(), Calls({"initialize", "version"}));
        EXPECT_EQ(nvapi.state_.beforeCall, nullptr);
        EXPECT_EQ(nvapi.state_.afterCall, nullptr);
    }
}

// ---- The counter of calls in progress ----

OpenNvapi* g_nvapi = nullptr;
int g_inUseDuringCall = -1;

int NVAPI_CDECL CountDuringCall(char*) {
    g_inUseDuringCall = g_nvapi->state_.inUse;
    return 0;
}

TEST_F(NvapiLoad, CallsInProgressAreCounted) {
    g_nvapi = &nvapi_;
    Library().functions[kVersionString] = Address(CountDuringCall);
    EXPECT_EQ(Version(), 0);
    EXPECT_EQ(g_inUseDuringCall, 1);
    EXPECT_EQ(nvapi_.state_.inUse, 0);
}

// ---- Threads ----

// Holds a load until it is told to go on.
class Gate {
public:
    void Wait() {
        std::unique_lock lock(mutex_);
        ++waiting_;
        changed_.notify_all();
        changed_.wait(lock, [this] { return open_; });
    }
    void AwaitWaiting() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return waiting_ > 0; });
    }
    void Open() {
        std::lock_guard const lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int waiting_ = 0;
    bool open_ = false;
};

TEST_F(NvapiLoad, ManyThreadsLoadOnce) {
    constexpr int kThreads = 16;
    for (int round = 0; round < 20; ++round) {
        OpenNvapi nvapi;
        TheSystem().libraries[L"nvapi.dll"].loads = 0;
        TheSystem().trace.clear();
        Library().initializations = 0;
        std::atomic<int> failures = 0;
        std::barrier start(kThreads);
        std::vector<std::thread> threads;
        for (int thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([&, thread] {
                char text[64];
                start.arrive_and_wait();
                int const status =
                    thread % 2 == 0 ? nvapi.NvAPI_Initialize() : nvapi.NvAPI_GetInterfaceVersionString(text);
                failures += status != 0 ? 1 : 0;
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(failures, 0);
        EXPECT_EQ(Loads(), 1);
        EXPECT_EQ(Library().initializations, 1);
        EXPECT_EQ(nvapi.state_.initializeCount, kThreads / 2);
        EXPECT_EQ(nvapi.state_.loadCount, 1 + kThreads / 2);
        EXPECT_EQ(nvapi.state_.inUse, 0);
    }
}

TEST_F(NvapiLoad, ThreadThatMeetsALoadWaitsForIt) {
    Gate gate;
    TheSystem().inLoad = [&] { gate.Wait(); };
    std::thread loader([&] { EXPECT_EQ(Version(), 0); });
    gate.AwaitWaiting();

    TheSystem().inSleep = [&](std::uint32_t) {
        if (TheSystem().TraceOf(L"sleep").size() == 3) {
            gate.Open();
            loader.join();
        }
    };
    EXPECT_EQ(Version(), 0);
    EXPECT_EQ(TheSystem().TraceOf(L"sleep"), Trace({L"sleep 100", L"sleep 100", L"sleep 100"}));
    EXPECT_EQ(Loads(), 1);
}

TEST_F(NvapiLoad, WaitingEndsAfterASecond) {
    Gate gate;
    TheSystem().inLoad = [&] { gate.Wait(); };
    std::thread loader([&] { EXPECT_EQ(Version(), 0); });
    gate.AwaitWaiting();

    TheSystem().inSleep = [](std::uint32_t) {};
    EXPECT_EQ(Version(), -1);
    EXPECT_EQ(TheSystem().TraceOf(L"sleep"), Trace(10, L"sleep 100"));
    EXPECT_EQ(nvapi_.NvAPI_Initialize(), -1);
    EXPECT_EQ(TheSystem().TraceOf(L"sleep").size(), 20U);
    EXPECT_EQ(nvapi_.state_.inUse, 1);

    gate.Open();
    loader.join();
    EXPECT_EQ(nvapi_.state_.inUse, 0);
    EXPECT_EQ(Version(), 0);
    EXPECT_EQ(Loads(), 1);
}

TEST_F(NvapiLoad, LoadThatEndsInTheLastWaitIsInTime) {
    Gate gate;
    TheSystem().inLoad = [&] { gate.Wait(); };
    std::thread loader([&] { EXPECT_EQ(Version(), 0); });
    gate.AwaitWaiting();
    TheSystem().inSleep = [&](std::uint32_t) {
        if (TheSystem().TraceOf(L"sleep").size() == 10) {
            gate.Open();
            loader.join();
        }
    };
    EXPECT_EQ(Version(), 0);
}

TEST_F(NvapiLoad, WaitingForALoadThatFailsEndsInALoadOfOnesOwn) {
    Gate gate;
    TheSystem().inLoad = [&] { gate.Wait(); };
    TheSystem().loadErrors[L"nvapi.dll"] = 126;
    std::thread loader([&] { EXPECT_EQ(Version(), -2); });
    gate.AwaitWaiting();
    TheSystem().inSleep = [&](std::uint32_t) {
        gate.Open();
        loader.join();
        TheSystem().loadErrors.clear();
    };
    EXPECT_EQ(Version(), 0);
    EXPECT_EQ(TheSystem().TraceOf(L"sleep").size(), 1U);
}

TEST_F(NvapiLoad, InitializationsDoNotOverlap) {
    nvapi_.EnsureLoaded(0);
    static std::atomic<int> running = 0;
    static std::atomic<int> most = 0;
    nvapi_.state_.initialize = []() {
        most = std::max<int>(most, ++running);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        --running;
        return -1;  // so that the next one tries again
    };
    nvapi_.state_.initialized = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([&] { EXPECT_EQ(nvapi_.NvAPI_Initialize(), -1); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(most, 1);
}

// A library that calls its client back while it initialises must not hang it.
TEST_F(NvapiLoad, InitializeFromWithinTheInitialisationFails) {
    g_nvapi = &nvapi_;
    TheSystem().inSleep = [](std::uint32_t) {};
    static int inner = 0;
    Library().functions[kInitialize] = Address<int()>([]() {
        inner = g_nvapi->NvAPI_Initialize();
        return 0;
    });
    EXPECT_EQ(nvapi_.NvAPI_Initialize(), 0);
    EXPECT_EQ(inner, -1);
}

}  // namespace
}  // namespace gputune
