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

// Where a forwarder without an entry point jumps to. Hosts call with a stack aligned to 4 bytes.
__attribute__((force_align_arg_pointer, used)) void* CTL_CDECL gputune_ctl_find(std::size_t position) {
    void*& entry = gputune_ctl_entries[position];
    entry = control_library::Find(kNames[position]);
    return entry != nullptr ? entry : reinterpret_cast<void*>(&AnswerNotInitialized);
}

}  // extern "C"

void ForgetForwardedEntries() {
    std::fill(std::begin(gputune_ctl_entries), std::end(gputune_ctl_entries), nullptr);
}

#if defined(_WIN32)
#define CTL_SYMBOL(name) "_" #name
#else
#define CTL_SYMBOL(name) #name
#endif

// 32-bit x86. eax, ecx and edx are free under cdecl; the arguments are on the stack, below the return address.
__asm__(
    ".text\n"
    ".p2align 4\n"
    "gputune_ctl_forward:\n"  // eax: the position of the name
    "    movl " CTL_SYMBOL(gputune_ctl_entries) "(,%eax,4), %ecx\n"
    "    testl %ecx, %ecx\n"
    "    jz 1f\n"
    "    jmp *%ecx\n"
    "1:  pushl %eax\n"
    "    call " CTL_SYMBOL(gputune_ctl_find) "\n"
    "    addl $4, %esp\n"
    "    jmp *%eax\n"
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
