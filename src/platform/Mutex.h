#pragma once

namespace gputune::platform {

// Mutual exclusion between threads, for std::scoped_lock. std::mutex reports errors by exceptions of the kind that
// src/runtime/throw.cpp keeps out of the library; this one cannot fail.
class Mutex {
public:
    constexpr Mutex() = default;
    Mutex(Mutex const&) = delete;
    Mutex& operator=(Mutex const&) = delete;

    void lock();
    void unlock();

private:
    void* state_ = nullptr;
};

}  // namespace gputune::platform
