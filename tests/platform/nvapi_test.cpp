// NVAPI and many threads on the real system.
#include <gtest/gtest.h>

#include "nvapi_threads.h"

namespace gputune::test {
namespace {

TEST(Nvapi, ManyThreadsInitialiseItOnce) {
    PlantedFile const file(std::filesystem::current_path() / (sizeof(void*) == 4 ? "nvapi.dll" : "nvapi64.dll"));
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
