// The common part of a scripted library's entry points in a 64-bit process.
#include "ScriptedCore.h"

// Called by ScriptedEntry. SCRIPTED_LIBRARY names which of the libraries this one is.
extern "C" __attribute__((used)) int ScriptedAnswer(char const* name, gputune::test::Word const* words,
                                                    double const* doubles) {
    return gputune::test::SCRIPTED_LIBRARY().Answer(name, words, doubles);
}

// rax: the name of the entry point. The first four arguments are written beside the others, into the room that every
// caller leaves for them below its own. Every register that a function may change is left with garbage, and so is the
// half of rax that an int does not take, so that nobody can rely on what happened to be there.
__asm__(
    ".text\n"
    ".p2align 4\n"
    ".globl ScriptedEntry\n"
    ".seh_proc ScriptedEntry\n"
    "ScriptedEntry:\n"
    "    movq %rcx, 0x08(%rsp)\n"
    "    movq %rdx, 0x10(%rsp)\n"
    "    movq %r8, 0x18(%rsp)\n"
    "    movq %r9, 0x20(%rsp)\n"
    "    subq $0x48, %rsp\n"
    ".seh_stackalloc 0x48\n"
    ".seh_endprologue\n"
    "    movsd %xmm0, 0x20(%rsp)\n"
    "    movsd %xmm1, 0x28(%rsp)\n"
    "    movsd %xmm2, 0x30(%rsp)\n"
    "    movsd %xmm3, 0x38(%rsp)\n"
    "    movq %rax, %rcx\n"
    "    leaq 0x50(%rsp), %rdx\n"
    "    leaq 0x20(%rsp), %r8\n"
    "    call ScriptedAnswer\n"
    "    movabsq $0xBAD0BAD1BAD2BAD3, %rcx\n"
    "    movq %rcx, %rdx\n"
    "    movq %rcx, %r8\n"
    "    movq %rcx, %r9\n"
    "    movq %rcx, %r10\n"
    "    movq %rcx, %r11\n"
    "    movq %rcx, %xmm0\n"
    "    movq %rcx, %xmm1\n"
    "    movq %rcx, %xmm2\n"
    "    movq %rcx, %xmm3\n"
    "    movq %rcx, %xmm4\n"
    "    movq %rcx, %xmm5\n"
    "    movl %eax, %eax\n"
    "    shlq $32, %r11\n"
    "    orq %r11, %rax\n"
    "    addq $0x48, %rsp\n"
    "    ret\n"
    ".seh_endproc\n");
