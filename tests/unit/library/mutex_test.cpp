// Mutual exclusion between threads: natively by FakeSystem.cpp's mutex, under Windows by the real one.
#include "platform/Mutex.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

namespace gputune::platform {
namespace {

TEST(Mutex, OneThreadAtATime) {
    Mutex mutex;
    int count = 0;
    constexpr int kThreads = 4;
    constexpr int kRounds = 200;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                std::scoped_lock const lock(mutex);
                int const before = count;
                std::this_thread::yield();
                count = before + 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(count, kThreads * kRounds);
}

TEST(Mutex, CanBeTakenAgainOnceItIsFree) {
    Mutex mutex;
    for (int round = 0; round < 3; ++round) {
        mutex.lock();
        mutex.unlock();
    }
    SUCCEED();
}

}  // namespace
}  // namespace gputune::platform
