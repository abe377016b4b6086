// Threads that start their work at the same moment, as often as Run is called.
//
//     AllAtOnce threads(8);
//     threads.Run([&](int number) { ... });   // returns when all eight are done
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace gputune::test {

class AllAtOnce {
public:
    explicit AllAtOnce(int count) : count_(count) {
        for (int number = 0; number < count; ++number) {
            threads_.emplace_back([this, number] { Work(number); });
        }
    }
    ~AllAtOnce() {
        Start(nullptr);
        for (std::thread& thread : threads_) {
            thread.join();
        }
    }
    AllAtOnce(AllAtOnce const&) = delete;
    AllAtOnce& operator=(AllAtOnce const&) = delete;

    void Run(std::function<void(int number)> work) {
        Start(std::move(work));
        std::unique_lock lock(mutex_);
        finished_.wait(lock, [this] { return done_ == count_; });
    }

private:
    // Null ends the threads.
    void Start(std::function<void(int number)> work) {
        std::lock_guard const lock(mutex_);
        work_ = std::move(work);
        done_ = 0;
        awake_ = 0;
        ++round_;
        started_.notify_all();
    }

    void Work(int number) {
        for (int round = 1;; ++round) {
            {
                std::unique_lock lock(mutex_);
                started_.wait(lock, [&] { return round_ == round; });
            }
            if (!work_) {
                return;
            }
            // The threads wake one after the other: each waits here until all are awake.
            ++awake_;
            while (awake_ < count_) {
                std::this_thread::yield();
            }
            work_(number);
            std::lock_guard const lock(mutex_);
            if (++done_ == count_) {
                finished_.notify_one();
            }
        }
    }

    // Not std::barrier: under Wine its threads sometimes never wake.
    std::mutex mutex_;
    std::condition_variable started_;
    std::condition_variable finished_;
    int const count_;
    int round_ = 0;
    int done_ = 0;
    std::atomic<int> awake_ = 0;
    std::function<void(int)> work_;
    std::vector<std::thread> threads_;
};

}  // namespace gputune::test
