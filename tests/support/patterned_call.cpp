#include "patterned_call.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

// The compiler's prefix of names.
#if defined(_WIN32) && !defined(_WIN64)
#define SYMBOL(name) "_" name
#else
#define SYMBOL(name) name
#endif

// clang-format off
extern "C" {

extern std::uint64_t const gputune_patterns[];

#if defined(__x86_64__)
// In 8 bytes each: the general registers; xmm6 to xmm15, two each; MXCSR, which flushes denormal numbers to zero; the x87
// unit's control word, which rounds to the precision of a double.
constexpr std::size_t gputune_pattern_count = 30;
alignas(16) std::uint64_t const gputune_patterns[gputune_pattern_count] = {
    0x0B0B0B0B0B0B0B0B, 0x0510510505105105, 0x0D10D10D0D10D10D, 0x0B90B90B0B90B90B, 0x1212121212121212,
    0x1313131313131313, 0x1414141414141414, 0x1515151515151515, 0xA606060606060606, 0xA6F6F6F6F6F6F6F6,
    0xA707070707070707, 0xA7F7F7F7F7F7F7F7, 0xA808080808080808, 0xA8F8F8F8F8F8F8F8, 0xA909090909090909,
    0xA9F9F9F9F9F9F9F9, 0xB010101010101010, 0xB0F0F0F0F0F0F0F0, 0xB111111111111111, 0xB1F1F1F1F1F1F1F1,
    0xB212121212121212, 0xB2F2F2F2F2F2F2F2, 0xB313131313131313, 0xB3F3F3F3F3F3F3F3, 0xB414141414141414,
    0xB4F4F4F4F4F4F4F4, 0xB515151515151515, 0xB5F5F5F5F5F5F5F5, 0x9F80,             0x027F,
};
#else
constexpr std::size_t gputune_pattern_count = 4;
#endif

// What a call left: the stack pointer before it and after it, and the registers.
std::uintptr_t gputune_state[2 + gputune_pattern_count];

std::uint64_t gputune_call_with_patterns(void* function, gputune::test::Word const* words, int misalignment);
}

#if defined(__x86_64__)

// From and to memory at r10, from this offset on.
#define GENERAL(MOVE)                                                                                          \
    MOVE("rbx", "0x00") MOVE("rsi", "0x08") MOVE("rdi", "0x10") MOVE("rbp", "0x18") MOVE("r12", "0x20")         \
        MOVE("r13", "0x28") MOVE("r14", "0x30") MOVE("r15", "0x38")
#define VECTORS(MOVE)                                                                                          \
    MOVE("6", "0x40") MOVE("7", "0x50") MOVE("8", "0x60") MOVE("9", "0x70") MOVE("10", "0x80") MOVE("11", "0x90") \
        MOVE("12", "0xA0") MOVE("13", "0xB0") MOVE("14", "0xC0") MOVE("15", "0xD0")
#define LOAD(name, offset) "    movq " offset "(%r10), %" name "\n"
#define LOAD_VECTOR(number, offset) "    movups " offset "(%r10), %xmm" number "\n"
#define STORE(name, offset) "    movq %" name ", 16+" offset "(%r10)\n"
#define STORE_VECTOR(number, offset) "    movups %xmm" number ", 16+" offset "(%r10)\n"
#define PUSH(name, offset) "    pushq %" name "\n.seh_pushreg %" name "\n"
#define KEEP_VECTOR(number, offset) "    movaps %xmm" number ", " offset "(%rsp)\n.seh_savexmm %xmm" number ", " offset "\n"
#define RESTORE_VECTOR(number, offset) "    movaps " offset "(%rsp), %xmm" number "\n"

// Its frame: room for eight words, at 0x40 its caller's vector registers, at 0xE0 its MXCSR and control word.
__asm__(
    ".text\n"
    ".p2align 4\n"
    ".globl gputune_call_returns\n"
    ".seh_proc gputune_call_with_patterns\n"
    "gputune_call_with_patterns:\n"
    GENERAL(PUSH)
    "    subq $0xF8, %rsp\n"
    ".seh_stackalloc 0xF8\n"
    VECTORS(KEEP_VECTOR)
    ".seh_endprologue\n"
    "    stmxcsr 0xE0(%rsp)\n"
    "    fnstcw 0xE8(%rsp)\n"
    "    leaq gputune_state(%rip), %r10\n"
    "    movq %rsp, (%r10)\n"
    "    movq %rcx, %rax\n"
    "    movq %rdx, %r11\n"
    "    movups 0x20(%r11), %xmm0\n"
    "    movups %xmm0, 0x20(%rsp)\n"
    "    movups 0x30(%r11), %xmm0\n"
    "    movups %xmm0, 0x30(%rsp)\n"
    "    movq (%r11), %rcx\n"
    "    movq 0x08(%r11), %rdx\n"
    "    movq 0x10(%r11), %r8\n"
    "    movq 0x18(%r11), %r9\n"
    "    movq %rcx, %xmm0\n"
    "    movq %rdx, %xmm1\n"
    "    movq %r8, %xmm2\n"
    "    movq %r9, %xmm3\n"
    "    leaq gputune_patterns(%rip), %r10\n"
    "    ldmxcsr 0xE0(%r10)\n"
    "    fldcw 0xE8(%r10)\n"
    VECTORS(LOAD_VECTOR)
    GENERAL(LOAD)
    "    call *%rax\n"
    "gputune_call_returns:\n"
    "    leaq gputune_state(%rip), %r10\n"
    "    movq %rsp, 8(%r10)\n"
    GENERAL(STORE)
    VECTORS(STORE_VECTOR)
    // The flags of what happened are nobody's.
    "    stmxcsr 16+0xE0(%r10)\n"
    "    andl $0xFFC0, 16+0xE0(%r10)\n"
    "    fnstcw 16+0xE8(%r10)\n"
    // Should it be lost, it is the frame's.
    "    movq (%r10), %rsp\n"
    "    ldmxcsr 0xE0(%rsp)\n"
    "    fldcw 0xE8(%rsp)\n"
    VECTORS(RESTORE_VECTOR)
    "    addq $0xF8, %rsp\n"
    "    popq %r15\n"
    "    popq %r14\n"
    "    popq %r13\n"
    "    popq %r12\n"
    "    popq %rbp\n"
    "    popq %rdi\n"
    "    popq %rsi\n"
    "    popq %rbx\n"
    "    ret\n"
    ".seh_endproc\n");

#else

__asm__(
    ".text\n" SYMBOL("gputune_call_with_patterns") ":\n"
    "    pushl %ebp\n"
    "    pushl %ebx\n"
    "    pushl %esi\n"
    "    pushl %edi\n"
    "    movl 20(%esp), %eax\n"
    "    movl 24(%esp), %esi\n"
    "    movl 28(%esp), %edx\n"
    "    movl %esp, 1f\n"
    "    andl $-16, %esp\n"
    "    subl %edx, %esp\n"
    "    movl $8, %ecx\n"
    "2:  pushl -4(%esi,%ecx,4)\n"
    "    decl %ecx\n"
    "    jnz 2b\n"
    "    movl %esp, " SYMBOL("gputune_state") "\n"
    "    movl %eax, %ecx\n"
    "    movl $0xA5A5A5A5, %eax\n"
    "    movl $0xA5A5A5A5, %edx\n"
    "    movl $0x0B0B0B0B, %ebx\n"
    "    movl $0x05105105, %esi\n"
    "    movl $0x0D10D10D, %edi\n"
    "    movl $0x0B90B90B, %ebp\n"
    "    call *%ecx\n"
    "    movl %esp, " SYMBOL("gputune_state") "+4\n"
    "    movl %ebx, " SYMBOL("gputune_state") "+8\n"
    "    movl %esi, " SYMBOL("gputune_state") "+12\n"
    "    movl %edi, " SYMBOL("gputune_state") "+16\n"
    "    movl %ebp, " SYMBOL("gputune_state") "+20\n"
    "    movl 1f, %esp\n"
    "    popl %edi\n"
    "    popl %esi\n"
    "    popl %ebx\n"
    "    popl %ebp\n"
    "    ret\n"
    ".data\n"
    ".p2align 2\n"
    "1:  .long 0\n"
    ".text\n");
// clang-format on

std::uint64_t const gputune_patterns[gputune_pattern_count] = {0x0B0B0B0B, 0x05105105, 0x0D10D10D, 0x0B90B90B};

#endif

namespace gputune::test {

std::uint64_t CallWithPatterns(void* function, Word const* words, int misalignment) {
    return gputune_call_with_patterns(function, words, misalignment);
}

namespace {

// `state` as gputune_state, of which `count` registers are compared.
std::string Lost(std::uintptr_t const* state, std::size_t count) {
    constexpr char const* kNames[] = {
#if defined(__x86_64__)
        "rbx",
        "rsi",
        "rdi",
        "rbp",
        "r12",
        "r13",
        "r14",
        "r15",
        "xmm6",
        "xmm6",
        "xmm7",
        "xmm7",
        "xmm8",
        "xmm8",
        "xmm9",
        "xmm9",
        "xmm10",
        "xmm10",
        "xmm11",
        "xmm11",
        "xmm12",
        "xmm12",
        "xmm13",
        "xmm13",
        "xmm14",
        "xmm14",
        "xmm15",
        "xmm15",
        "MXCSR",
        "x87 control word"
#else
        "ebx",
        "esi",
        "edi",
        "ebp"
#endif
    };
    static_assert(std::size(kNames) == gputune_pattern_count);
    std::string lost = state[0] == state[1] ? "" : "the stack pointer, ";
    for (std::size_t position = 0; position < count; ++position) {
        if (state[2 + position] != gputune_patterns[position]) {
            lost += std::string(kNames[position]) + ", ";
        }
    }
    return lost;
}

}  // namespace

std::string Lost() {
    return Lost(gputune_state, gputune_pattern_count);
}

#if defined(__x86_64__)
std::string Lost(unsigned long long const* general, void const* vectors, unsigned long long stackPointer) {
    constexpr std::size_t kGeneral = 8;
    constexpr std::size_t kVectorWords = 20;
    std::uintptr_t state[2 + kGeneral + kVectorWords] = {gputune_state[0], stackPointer};
    std::copy_n(general, kGeneral, state + 2);
    std::memcpy(state + 2 + kGeneral, vectors, kVectorWords * sizeof(std::uintptr_t));
    return Lost(state, kGeneral + kVectorWords);
}
#endif

}  // namespace gputune::test
