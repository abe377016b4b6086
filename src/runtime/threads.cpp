// What the compiler's runtime needs of threads, straight from the system: mutexes for the unwinder's tables, a list of
// exceptions for every thread, and guards for the static variables of functions. These functions take the place of the
// runtime's at link time, which bring along a whole library of POSIX threads: 35 KB, and a handler that looks at every
// exception of the host process. What is needed but missing here pulls that library in again, which the linker reports
// as "multiple definition" of the others.
#include <cxxabi.h>
#include <pthread.h>
#include <windows.h>

#include <cstdint>

namespace {

static_assert(sizeof(pthread_mutex_t) == sizeof(SRWLOCK));

// A mutex initialised by PTHREAD_MUTEX_INITIALIZER looks to the system like a lock that is never released: it becomes a
// free lock here. No lock in use has that value.
SRWLOCK* Lock(pthread_mutex_t* mutex) {
    auto predefined = PTHREAD_MUTEX_INITIALIZER;
    __atomic_compare_exchange_n(mutex, &predefined, pthread_mutex_t{}, false, __ATOMIC_RELAXED, __ATOMIC_RELAXED);
    return reinterpret_cast<SRWLOCK*>(mutex);
}

// How far something is that is done once. The system's own INIT_ONCE does not fit into a guard of 64-bit code.
enum Progress : long { New, Busy, Done };
static_assert(sizeof(pthread_once_t) == sizeof(Progress) && PTHREAD_ONCE_INIT == New);

// For all that is done once. Nobody holds the lock while doing it.
constinit SRWLOCK g_progressLock = SRWLOCK_INIT;
constinit CONDITION_VARIABLE g_progressChanged = CONDITION_VARIABLE_INIT;

// Whether the caller is to do it. Waits while another thread does.
bool Begin(Progress& progress) {
    ::AcquireSRWLockExclusive(&g_progressLock);
    while (progress == Busy) {
        ::SleepConditionVariableSRW(&g_progressChanged, &g_progressLock, INFINITE, 0);
    }
    bool const isNew = progress == New;
    if (isNew) {
        progress = Busy;
    }
    ::ReleaseSRWLockExclusive(&g_progressLock);
    return isNew;
}

void End(Progress& progress, Progress end) {
    ::AcquireSRWLockExclusive(&g_progressLock);
    progress = end;
    ::ReleaseSRWLockExclusive(&g_progressLock);
    ::WakeAllConditionVariable(&g_progressChanged);
}

// The compiler's code tests the first byte of a guard, and calls no function once it is set.
struct Guard {
    char isDone;
    Progress progress;
};
static_assert(sizeof(Guard) <= sizeof(__cxxabiv1::__guard));

Guard* GuardOf(__cxxabiv1::__guard* guard) {
    return reinterpret_cast<Guard*>(guard);
}

// The layout of the runtime's __cxa_eh_globals.
struct Exceptions {
    void* caught;
    unsigned uncaughtCount;
};

// What is in this section the system copies for every thread.
[[gnu::section(".tls$")]] constinit Exceptions g_initialExceptions = {};

extern "C" {
extern ULONG _tls_index;
extern char _tls_start;
}

Exceptions* ExceptionsOfThisThread() {
    // The thread's environment block: ThreadLocalStoragePointer.
    char** blocks;
#if defined(__x86_64__)
    __asm__("movq %%gs:0x58, %0" : "=r"(blocks));
#else
    __asm__("movl %%fs:0x2C, %0" : "=r"(blocks));
#endif
    std::uintptr_t const offset =
        reinterpret_cast<std::uintptr_t>(&g_initialExceptions) - reinterpret_cast<std::uintptr_t>(&_tls_start);
    return reinterpret_cast<Exceptions*>(blocks[_tls_index] + offset);
}

}  // namespace

extern "C" {

int pthread_mutex_init(pthread_mutex_t* mutex, pthread_mutexattr_t const* /*attributes*/) {
    ::InitializeSRWLock(Lock(mutex));
    return 0;
}

int pthread_mutex_destroy(pthread_mutex_t* /*mutex*/) {
    return 0;
}

int pthread_mutex_lock(pthread_mutex_t* mutex) {
    ::AcquireSRWLockExclusive(Lock(mutex));
    return 0;
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) {
    ::ReleaseSRWLockExclusive(Lock(mutex));
    return 0;
}

// NOLINTNEXTLINE(readability-*): the system's header has other names, and no const
int pthread_once(pthread_once_t* control, void (*initialize)()) {
    auto& progress = *reinterpret_cast<Progress*>(control);
    if (Begin(progress)) {
        initialize();
        End(progress, Done);
    }
    return 0;
}

}  // extern "C"

namespace __cxxabiv1 {

// A static variable whose initialisation needs the variable itself waits for ever, where the runtime's own function
// would throw. No static variable of the library does that.
int __cxa_guard_acquire(__guard* guard) {
    return Begin(GuardOf(guard)->progress);
}

void __cxa_guard_release(__guard* guard) noexcept {
    __atomic_store_n(&GuardOf(guard)->isDone, 1, __ATOMIC_RELEASE);
    End(GuardOf(guard)->progress, Done);
}

// The initialisation ended in an exception: the next caller tries again.
void __cxa_guard_abort(__guard* guard) noexcept {
    End(GuardOf(guard)->progress, New);
}

__cxa_eh_globals* __cxa_get_globals() noexcept {
    return reinterpret_cast<__cxa_eh_globals*>(ExceptionsOfThisThread());
}

__cxa_eh_globals* __cxa_get_globals_fast() noexcept {
    return __cxa_get_globals();
}

}  // namespace __cxxabiv1
