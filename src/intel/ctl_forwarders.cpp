// The functions that are passed on as they are. A forwarder knows nothing of its arguments: it finds the entry point
// and jumps there, with stack and registers as the caller left them, so that any argument list reaches the library and
// its result goes straight back to the caller.
#include "intel/ctl_forwarders.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <string_view>

#include "intel/control_library.h"

namespace gputune::intel {

namespace {

constexpr std::array kNames = {
#define CTL_OWN(...)
#define CTL_FORWARD(name, ...) #name,
#include "intel/ctl_functions.inc"
};
static_assert(kNames.size() == 92);

constexpr std::array kAllNames = {
#define CTL_FORWARD(name, ...) std::string_view(#name),
#include "intel/ctl_functions.inc"
};
static_assert(kAllNames.size() == 95);
static_assert(std::is_sorted(kAllNames.begin(), kAllNames.end(), std::less_equal<>{}),
              "the export table wants byte order");

ctl_result_t CTL_CDECL AnswerNotInitialized() {
    return kCtlNotInitialized;
}

}  // namespace

extern "C" {

// The entry points found so far, by the position of their names; null before the first call. What the library does not
// have is asked for again at every call.
constinit void* gputune_ctl_entries[kNames.size()] = {};

// Where a forwarder without an entry point jumps to. 32-bit hosts call with a stack aligned to 4 bytes.
__attribute__((force_align_arg_pointer, used)) void* CTL_CDECL gputune_ctl_find(std::size_t position) {
    void*& entry = gputune_ctl_entries[position];
    entry = control_library::Find(kNames[position]);
    return entry != nullptr ? entry : reinterpret_cast<void*>(&AnswerNotInitialized);
}

}  // extern "C"

void ForgetForwardedEntries() {
    std::fill(std::begin(gputune_ctl_entries), std::end(gputune_ctl_entries), nullptr);
}

// The compiler's prefix of names.
#if defined(_WIN32) && !defined(_WIN64)
#define CTL_SYMBOL(name) "_" #name
#else
#define CTL_SYMBOL(name) #name
#endif

__asm__(
    ".text\n"
    ".p2align 4\n"
    "gputune_ctl_forward:\n"  // eax: the position of the name
#if defined(__x86_64__)
    // The first four arguments are in rcx, rdx, r8 and r9, or in xmm0 to xmm3; rax, r10 and r11 are free.
    "    leaq " CTL_SYMBOL(gputune_ctl_entries) "(%rip), %r10\n"
    "    movq (%r10,%rax,8), %r10\n"
    "    testq %r10, %r10\n"
    "    jz gputune_ctl_forward_first\n"
    "    jmp *%r10\n"
    // Keeps the arguments while it asks. The .seh lines tell the system's unwinder where the way back is.
    ".seh_proc gputune_ctl_forward_first\n"
    "gputune_ctl_forward_first:\n"
    "    subq $0x88, %rsp\n"  // 32 bytes for the function that is called, 96 for the arguments, 8 for the alignment
    ".seh_stackalloc 0x88\n"
    ".seh_endprologue\n"
    "    movq %rcx, 0x20(%rsp)\n"
    "    movq %rdx, 0x28(%rsp)\n"
    "    movq %r8, 0x30(%rsp)\n"
    "    movq %r9, 0x38(%rsp)\n"
    "    movaps %xmm0, 0x40(%rsp)\n"
    "    movaps %xmm1, 0x50(%rsp)\n"
    "    movaps %xmm2, 0x60(%rsp)\n"
    "    movaps %xmm3, 0x70(%rsp)\n"
    "    movl %eax, %ecx\n"
    "    call " CTL_SYMBOL(gputune_ctl_find) "\n"
    "    movq 0x20(%rsp), %rcx\n"
    "    movq 0x28(%rsp), %rdx\n"
    "    movq 0x30(%rsp), %r8\n"
    "    movq 0x38(%rsp), %r9\n"
    "    movaps 0x40(%rsp), %xmm0\n"
    "    movaps 0x50(%rsp), %xmm1\n"
    "    movaps 0x60(%rsp), %xmm2\n"
    "    movaps 0x70(%rsp), %xmm3\n"
    "    addq $0x88, %rsp\n"
    "    rex.W jmp *%rax\n"  // so encoded the unwinder takes it for the end of the function
    ".seh_endproc\n"
#else
    // The arguments are on the stack, above the return address; eax, ecx and edx are free under cdecl.
    "    movl " CTL_SYMBOL(gputune_ctl_entries) "(,%eax,4), %ecx\n"
    "    testl %ecx, %ecx\n"
    "    jz 1f\n"
    "    jmp *%ecx\n"
    "1:  pushl %eax\n"
    "    call " CTL_SYMBOL(gputune_ctl_find) "\n"
    "    addl $4, %esp\n"
    "    jmp *%eax\n"
#endif
    ".set gputune_ctl_position, 0\n"
#define CTL_OWN(...)
#define CTL_FORWARD(name, ...) \
    ".globl " CTL_SYMBOL(name) "\n"                   \
    ".p2align 4\n"                                    \
    CTL_SYMBOL(name) ":\n"                            \
    "    movl $gputune_ctl_position, %eax\n"          \
    "    jmp gputune_ctl_forward\n"                   \
    ".set gputune_ctl_position, gputune_ctl_position + 1\n"
#include "intel/ctl_functions.inc"
);

}  // namespace gputune::intel
