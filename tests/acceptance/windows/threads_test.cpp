// Calls from threads of the host other than the one that loaded the library.
#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "AllAtOnce.h"
#include "boards.h"
#include "machine_windows.h"
#include "sim/host/module_path.h"

namespace gputune::test {
namespace {

// Inside GetVGAInfo the identifier's conversion throws, and throws again once name and bus are read.
Machine BoardWithoutUsableIdentifier() {
    Machine machine = OverdriveNBoard();
    OrderAdapters(machine, {{.udid = "&SUBSYS_E4571002", .name = "a"}});
    return machine;
}

TEST(Threads, OlderThanTheLibraryMayCallItWhereItThrowsInside) {
    std::atomic<bool> mayStart = false;
    std::atomic<int> answers = 0;
    Exports const* api = nullptr;
    constexpr int kThreads = 4;
    constexpr int kCalls = 200;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            mayStart.wait(false);
            for (int call = 0; call < kCalls; ++call) {
                VgaInfo const info = api->GetVGAInfo();
                answers += info.SubsystemId == 0 && info.BusNumber == 3 && std::string(info.AdapterName) == "a" ? 1 : 0;
            }
        });
    }
    ASSERT_EQ(::GetModuleHandleW(L"gputune.dll"), nullptr);
    Machine machine = BoardWithoutUsableIdentifier();
    ASSERT_TRUE(machine.Init(GPUTUNE_LOG_NONE));
    api = &machine.Api();
    mayStart = true;
    mayStart.notify_all();
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(answers, kThreads * kCalls);
}

TEST(Threads, OlderThanEachOfSeveralLoadsMayCallItWhereItThrowsInside) {
    constexpr int kThreads = 4;
    constexpr int kCalls = 50;
    AllAtOnce threads(kThreads);
    Machine machine = BoardWithoutUsableIdentifier();
    machine.InstallCaptions();
    auto const path = sim::ModulePath(LibraryUnderTest());
    ASSERT_TRUE(::FreeLibrary(LibraryUnderTest()));
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE(round);
        ASSERT_EQ(::GetModuleHandleW(L"gputune.dll"), nullptr);
        HMODULE const library = ::LoadLibraryW(path.c_str());
        Exports const api = FindExports(library);
        ASSERT_TRUE(api.InitVGAHelper(GPUTUNE_LOG_NONE));
        std::atomic<int> answers = 0;
        threads.Run([&](int) {
            for (int call = 0; call < kCalls; ++call) {
                VgaInfo const info = api.GetVGAInfo();
                answers += info.SubsystemId == 0 && info.BusNumber == 3 ? 1 : 0;
            }
        });
        EXPECT_EQ(answers, kThreads * kCalls);
        ASSERT_TRUE(::FreeLibrary(library));
    }
}

TEST(Threads, MayEndAndBeginWhileTheLibraryIsLoaded) {
    Machine machine = BoardWithoutUsableIdentifier().Started();
    for (int round = 0; round < 50; ++round) {
        std::thread([&] { machine.Api().GetVGAInfo(); }).join();
        EXPECT_EQ(machine.TakeLog().back(), "[GetVGAInfo()] ... stol argument out of range");
    }
}

}  // namespace
}  // namespace gputune::test
