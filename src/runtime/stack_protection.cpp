// What the compiler's stack protection needs: the value that stands between a function's arrays and its return address,
// and what happens when something wrote over it. The compiler's own library for this would ask a cryptographic
// provider, that is load libraries, while the loader is at work.
#include <windows.h>

#include <cstdint>

extern "C" {

// Until ChooseValue has run, which is before all other code of ours.
std::uintptr_t __stack_chk_guard = 0x2B7E1516;

[[noreturn]] void __stack_chk_fail();

// The return address is lost, so there is no exception and no log: the process ends here, and the system's report says
// why. The interrupt reaches no exception handler, which may be forged; Windows 7 has no such interrupt.
void __stack_chk_fail() {
    constexpr unsigned kCookieCheckFailure = 2;
    if (::IsProcessorFeaturePresent(PF_FASTFAIL_AVAILABLE)) {
        __asm__ volatile("int $0x29" : : "c"(kCookieCheckFailure) : "memory");
    }
    ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(STATUS_STACK_BUFFER_OVERRUN));
    __builtin_unreachable();
}

}  // extern "C"

namespace {

// Another value in every process, and in every load: the system encodes pointers with a random number that it draws for
// each process. A function that checks the value must not change it.
__attribute__((constructor(101), no_stack_protector)) void ChooseValue() {
    LARGE_INTEGER counter;
    ::QueryPerformanceCounter(&counter);
    __stack_chk_guard = reinterpret_cast<std::uintptr_t>(::EncodePointer(&counter)) ^ counter.LowPart;
}

}  // namespace
