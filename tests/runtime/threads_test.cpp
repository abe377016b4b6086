// src/runtime/threads.cpp: static variables are made once, each thread has its own exceptions, and mutexes. Without
// GoogleTest, with which the linker would take the compiler's functions of the same names.
#include <pthread.h>
#include <windows.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <exception>

namespace {

constexpr int kThreads = 8;

std::atomic<int> g_failures = 0;

void Expect(bool holds, char const* what) {
    if (!holds) {
        std::printf("%s\n", what);
        ++g_failures;
    }
}

// Runs the same function on many threads, which start at the same time.
void OnManyThreads(DWORD(WINAPI* function)(void*)) {
    std::array<HANDLE, kThreads> threads;
    HANDLE const start = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    for (HANDLE& thread : threads) {
        thread = ::CreateThread(nullptr, 0, function, start, 0, nullptr);
    }
    ::Sleep(50);
    ::SetEvent(start);
    ::WaitForMultipleObjects(kThreads, threads.data(), TRUE, INFINITE);
    for (HANDLE const thread : threads) {
        ::CloseHandle(thread);
    }
    ::CloseHandle(start);
}

void WaitForStart(void* start) {
    ::WaitForSingleObject(start, INFINITE);
}

// ---- Statics ----

struct Slow {
    inline static std::atomic<int> made = 0;
    Slow() {
        ++made;
        ::Sleep(100);
        isComplete = true;
    }
    bool isComplete = false;
};

DWORD WINAPI UseStatic(void* start) {
    WaitForStart(start);
    static Slow slow;
    Expect(slow.isComplete, "a static was used before it was made");
    return 0;
}

struct Reluctant {
    inline static std::atomic<int> attempts = 0;
    Reluctant() {
        int const attempt = ++attempts;
        ::Sleep(20);
        if (attempt < 3) {
            throw attempt;
        }
    }
};

DWORD WINAPI UseReluctantStatic(void* start) {
    WaitForStart(start);
    try {
        static Reluctant reluctant;
    } catch (int) {
    }
    return 0;
}

// ---- Mutexes ----

// Initialised by the function, as this compiler's runtime does it, and by the macro, as that of another version may.
pthread_mutex_t g_initialized;
pthread_mutex_t g_predefined = PTHREAD_MUTEX_INITIALIZER;
int g_count = 0;
constexpr int kCounts = 200;

template <pthread_mutex_t* mutex>
DWORD WINAPI Count(void* start) {
    WaitForStart(start);
    for (int round = 0; round < kCounts; ++round) {
        pthread_mutex_lock(mutex);
        int const before = g_count;
        ::Sleep(0);
        g_count = before + 1;
        pthread_mutex_unlock(mutex);
    }
    return 0;
}

// ---- What is done once ----

pthread_once_t g_once = PTHREAD_ONCE_INIT;
std::atomic<int> g_onceCalls = 0;
std::atomic<bool> g_onceIsComplete = false;

DWORD WINAPI UseOnce(void* start) {
    WaitForStart(start);
    pthread_once(&g_once, [] {
        ++g_onceCalls;
        ::Sleep(50);
        g_onceIsComplete = true;
    });
    Expect(g_onceIsComplete, "a thread did not wait for what another does once");
    return 0;
}

// ---- Exceptions ----

struct Error : std::exception {
    explicit Error(int of) : number(of) {}
    int number;
};

// Counts the uncaught exceptions while one unwinds the stack.
struct Witness {
    ~Witness() {
        Expect(std::uncaught_exceptions() == 1, "not one exception in flight");
        ::Sleep(0);
    }
};

void Throw(int number) {
    Witness const witness;
    throw Error(number);
}

// Throws an exception inside the handler of another one, and rethrows the outer one afterwards.
void ThrowWithin(int number) {
    try {
        Throw(number);
    } catch (Error const& outer) {
        ::Sleep(0);
        try {
            Throw(number + 1);
        } catch (Error const& inner) {
            ::Sleep(0);
            Expect(inner.number == number + 1, "another thread's inner exception");
        }
        Expect(outer.number == number, "another thread's outer exception");
        throw;
    }
}

DWORD WINAPI UseExceptions(void* start) {
    WaitForStart(start);
    int const mine = static_cast<int>(::GetCurrentThreadId()) * 1000;
    for (int round = 0; round < 200; ++round) {
        try {
            ThrowWithin(mine + round);
            Expect(false, "no exception");
        } catch (Error const& error) {
            Expect(error.number == mine + round, "another thread's exception");
        }
        Expect(std::uncaught_exceptions() == 0, "an exception in flight that was caught");
    }
    return 0;
}

}  // namespace

int main() {
    OnManyThreads(UseStatic);
    Expect(Slow::made == 1, "a static was not made once");

    OnManyThreads(UseReluctantStatic);
    Expect(Reluctant::attempts == 3, "a static was not made at the third attempt");

    pthread_mutex_init(&g_initialized, nullptr);
    OnManyThreads(Count<&g_initialized>);
    Expect(g_count == kThreads * kCounts, "two threads in one mutex");
    OnManyThreads(Count<&g_predefined>);
    Expect(g_count == 2 * kThreads * kCounts, "two threads in one predefined mutex");

    OnManyThreads(UseOnce);
    Expect(g_onceCalls == 1, "what is done once was not done once");

    OnManyThreads(UseExceptions);
    OnManyThreads(UseExceptions);
    if (g_failures != 0) {
        return 1;
    }
    // Under Wine, a program that crashes may exit with 0: the test looks for this line.
    std::puts("all as promised");
    return 0;
}
