// For threads: a lock, and waiting.
#pragma once

#include <cstdint>

namespace gputune::platform {

// A critical section: one thread at a time, which may enter again what it holds. Usable with std::lock_guard.
class Lock {
public:
    Lock();
    ~Lock();
    Lock(Lock const&) = delete;
    Lock& operator=(Lock const&) = delete;

    void lock();
    void unlock();

private:
    void* section_;
};

void SleepMilliseconds(std::uint32_t duration);

}  // namespace gputune::platform
