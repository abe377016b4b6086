// Calls a function as the code of another compiler may do it, and tells what is left of what a caller relies on
// whatever it calls: its registers and its stack.
#pragma once

#include <string>

#include "ScriptedLibrary.h"

namespace gputune::test {

// The stacks that callers may have: so many bytes below a multiple of 16. 32-bit Windows promises 4 bytes only; there,
// the natively built library's system takes 16 for granted. 64-bit callers owe 16 everywhere.
#if defined(_WIN32) && !defined(_WIN64)
constexpr int kMisalignments[] = {0, 4, 8, 12};
#else
constexpr int kMisalignments[] = {0};
#endif

// Calls with eight words, which a 64-bit call has in the registers for doubles, too, and with patterns in all registers
// that the function has to preserve. Answers what the result registers hold, edx:eax or rax.
std::uint64_t CallWithPatterns(void* function, Word const* words, int misalignment = 0);

// What the last call did not preserve; empty when it preserved all.
std::string Lost();

#if defined(__x86_64__)
// The same of registers that somebody else has found: rbx, rsi, rdi, rbp, r12 to r15; xmm6 to xmm15; the stack pointer
// as it was at the call.
std::string Lost(unsigned long long const* general, void const* vectors, unsigned long long stackPointer);
#endif

}  // namespace gputune::test
