#include "platform/Mutex.h"

#include <windows.h>

namespace gputune::platform {

namespace {

// Null is the initial state of both.
static_assert(sizeof(SRWLOCK) == sizeof(void*));

SRWLOCK* SystemLock(void*& state) {
    return reinterpret_cast<SRWLOCK*>(&state);
}

}  // namespace

void Mutex::lock() {
    ::AcquireSRWLockExclusive(SystemLock(state_));
}

void Mutex::unlock() {
    ::ReleaseSRWLockExclusive(SystemLock(state_));
}

}  // namespace gputune::platform
