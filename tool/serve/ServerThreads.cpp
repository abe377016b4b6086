#include "tool/serve/ServerThreads.h"

#include <algorithm>
#include <mutex>
#include <vector>

#ifdef _WIN32
#include <process.h>
#include <windows.h>
#endif

namespace gputune::tool {

namespace {

using ConnectionClock = std::chrono::steady_clock;

// Of the connection that this thread serves.
thread_local ConnectionClock::time_point g_connectionEnd = ConnectionClock::time_point::max();

std::mutex g_threadsMutex;
int g_busyThreads = 0;
int g_startedThreads = 0;
std::vector<void*> g_sleepingThreads;  // handles, which civetweb closes at its end

// Called with the mutex locked.
void StartThread() {
    if (!g_sleepingThreads.empty()) {
#ifdef _WIN32
        ResumeThread(g_sleepingThreads.back());
#endif
        g_sleepingThreads.pop_back();
        ++g_startedThreads;
    }
}

}  // namespace

void BeginConnection(std::chrono::milliseconds limit) {
    LimitConnection(limit, Further::Exactly);
    std::lock_guard const lock(g_threadsMutex);
    if (++g_busyThreads >= g_startedThreads) {
        StartThread();
    }
}

void LimitConnection(std::chrono::milliseconds limit, Further further) {
    ConnectionClock::time_point const end = ConnectionClock::now() + limit;
    g_connectionEnd = further == Further::Less ? std::min(g_connectionEnd, end) : end;
}

void EndConnection() {
    std::lock_guard const lock(g_threadsMutex);
    --g_busyThreads;
}

void StartRemainingThreads() {
    std::lock_guard const lock(g_threadsMutex);
    while (!g_sleepingThreads.empty()) {
        StartThread();
    }
    g_startedThreads = 0;
}

}  // namespace gputune::tool

extern "C" long GputuneConnectionTime(long atMost) {
    using namespace gputune::tool;
    ConnectionClock::time_point const now = ConnectionClock::now();
    if (now >= g_connectionEnd) {
        return 0;
    }
    // One more, so that the time is over when it has passed.
    auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(g_connectionEnd - now).count() + 1;
    return left < atMost ? static_cast<long>(left) : atMost;
}

#ifdef _WIN32
extern "C" std::uintptr_t GputuneBeginThread(unsigned(__stdcall* function)(void*), void* argument,
                                             int isForConnections) {
    using namespace gputune::tool;
    // Far more than answers need. A thread that has not run yet takes next to no memory.
    constexpr unsigned kStack = 256 * 1024;
    unsigned const flags = STACK_SIZE_PARAM_IS_A_RESERVATION | (isForConnections != 0 ? CREATE_SUSPENDED : 0U);
    std::uintptr_t const thread = _beginthreadex(nullptr, kStack, function, argument, flags, nullptr);
    if (thread != 0 && isForConnections != 0) {
        std::lock_guard const lock(g_threadsMutex);
        g_sleepingThreads.push_back(reinterpret_cast<void*>(thread));
        if (g_startedThreads == 0) {
            StartThread();
        }
    }
    return thread;
}
#endif
