// instructions <backend>
//
// Runs operations one processor instruction at a time and prints how many instructions were in the library, and how
// many in other modules (the vendor's library and the system). The figures are the same in every run, on every machine.
#include <windows.h>
#include <x86intrin.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "vendor_calls.h"

namespace gputune::bench {
namespace {

struct Range {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    bool Contains(std::uintptr_t address) const { return address >= begin && address < end; }
};

Range RangeOf(HMODULE module) {
    auto const base = reinterpret_cast<std::uintptr_t>(module);
    auto const* const dos = reinterpret_cast<IMAGE_DOS_HEADER const*>(module);
    auto const* const headers =
        reinterpret_cast<IMAGE_NT_HEADERS const*>(base + static_cast<std::uintptr_t>(dos->e_lfanew));
    return {base, base + headers->OptionalHeader.SizeOfImage};
}

Range g_library;
Range g_program;
unsigned long g_own;
unsigned long g_others;
volatile bool g_isCounting;

std::uintptr_t g_lastAddress;

constexpr DWORD kTrapFlag = 0x100;

std::uintptr_t InstructionPointer(CONTEXT const& context) {
#ifdef _WIN64
    return context.Rip;
#else
    return context.Eip;
#endif
}

bool IsRepeatPrefix(unsigned char byte) {
    return byte == 0xF2 || byte == 0xF3;
}

LONG CALLBACK CountStep(EXCEPTION_POINTERS* exception) {
    if (exception->ExceptionRecord->ExceptionCode != EXCEPTION_SINGLE_STEP) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    if (!g_isCounting) {
        exception->ContextRecord->EFlags &= ~kTrapFlag;
        return EXCEPTION_CONTINUE_EXECUTION;
    }
    std::uintptr_t const address = InstructionPointer(*exception->ContextRecord);
    // A repeated instruction (rep movs, rep stos) traps in every repetition and counts once.
    bool const isRepeated =
        address == g_lastAddress && IsRepeatPrefix(*reinterpret_cast<unsigned char const*>(address));
    g_lastAddress = address;
    if (!isRepeated) {
        if (g_library.Contains(address)) {
            ++g_own;
        } else if (!g_program.Contains(address)) {
            ++g_others;
        }
    }
    exception->ContextRecord->EFlags |= kTrapFlag;
    return EXCEPTION_CONTINUE_EXECUTION;
}

template <class Operation>
void Count(char const* name, Operation const& operation) {
    operation();  // not counted: the first call does more than the others
    g_own = g_others = 0;
    g_isCounting = true;
    ::__writeeflags(::__readeflags() | kTrapFlag);
    operation();
    g_isCounting = false;
    std::printf("%s %lu %lu\n", name, g_own, g_others);
    std::fflush(stdout);
}

}  // namespace
}  // namespace gputune::bench

int main(int argc, char** argv) {
    using namespace gputune::bench;
    if (argc != 2) {
        std::fputs("instructions overdriven|overdrive8|intel|nvidia\n", stderr);
        return 2;
    }
    try {
        // null_adl.cpp reads it.
        ::_putenv((std::string("GPUTUNE_BENCH_BACKEND=") + argv[1]).c_str());
        Backend const& backend = BackendOf(argv[1]);
        BenchMachine const machine(GPUTUNE_LOG_NONE, backend.vendor);
        g_library = RangeOf(::GetModuleHandleW(L"gputune.dll"));
        g_program = RangeOf(::GetModuleHandleW(nullptr));
        ::AddVectoredExceptionHandler(1, CountStep);

        auto const fetchHwmValues = machine.Export<decltype(&::FetchHwmValues)>("FetchHwmValues");
        auto const getHwmValue = machine.Export<decltype(&::GetHwmValue)>("GetHwmValue");
        auto const vendorCalls = backend.bareFetch(machine);
        Count("FetchHwmValues", [&] { fetchHwmValues(); });
        Count("vendor", [&] { vendorCalls(); });
        Count("GetHwmValue", [&] { getHwmValue(GPUTUNE_HWM_GPU_TEMPERATURE); });
        if (backend.name == "intel") {
            auto const forwarded = machine.Export<int (*)(void*, double)>("ctlOverclockGpuFrequencyOffsetSet");
            Count("ctlOverclockGpuFrequencyOffsetSet", [&] { forwarded(nullptr, 50); });
        }
    } catch (std::exception const& error) {
        std::fprintf(stderr, "instructions: %s\n", error.what());
        return 1;
    }
    return 0;
}
