// What a caller relies on whatever it calls: its registers and its stack.
#include <iterator>

#include "ctl_client.h"

// The compiler's prefix of names.
#if defined(_WIN32) && !defined(_WIN64)
#define SYMBOL(name) "_" name
#else
#define SYMBOL(name) name
#endif

// Call a function with eight words, patterns in the registers that it has to preserve, and the stack pointer
// `misalignment` below a 16-byte boundary. State is what the call left: the caller's stack pointer, the one before the
// call and the one after it, then the registers in the order of kPreserved. A 64-bit call has the first four words in
// the registers for doubles, too.
extern "C" int CallWithPatterns(void* function, gputune::test::Word const* words, int misalignment);
extern "C" std::uintptr_t CallWithPatternsState[13];
std::uintptr_t CallWithPatternsState[13];

#if defined(__x86_64__)
__asm__(
    ".text\nCallWithPatterns:\n"
    "pushq %rbp\n"
    "pushq %rbx\n"
    "pushq %rsi\n"
    "pushq %rdi\n"
    "pushq %r12\n"
    "pushq %r13\n"
    "pushq %r14\n"
    "pushq %r15\n"
    "leaq CallWithPatternsState(%rip), %r10\n"
    "movq %rsp, (%r10)\n"
    "andq $-16, %rsp\n"
    "subq $0x60, %rsp\n"
    "movaps %xmm6, 0x40(%rsp)\n"
    "movaps %xmm7, 0x50(%rsp)\n"
    "movq %rsp, 8(%r10)\n"
    "movq %rcx, %rax\n"
    "movq %rdx, %r11\n"
    "movq 0x20(%r11), %rcx\n"
    "movq %rcx, 0x20(%rsp)\n"
    "movq 0x28(%r11), %rcx\n"
    "movq %rcx, 0x28(%rsp)\n"
    "movq 0x30(%r11), %rcx\n"
    "movq %rcx, 0x30(%rsp)\n"
    "movq 0x38(%r11), %rcx\n"
    "movq %rcx, 0x38(%rsp)\n"
    "movq (%r11), %rcx\n"
    "movq 0x08(%r11), %rdx\n"
    "movq 0x10(%r11), %r8\n"
    "movq 0x18(%r11), %r9\n"
    "movq %rcx, %xmm0\n"
    "movq %rdx, %xmm1\n"
    "movq %r8, %xmm2\n"
    "movq %r9, %xmm3\n"
    "movabsq $0x0B0B0B0B0B0B0B0B, %rbx\n"
    "movabsq $0x0510510505105105, %rsi\n"
    "movabsq $0x0D10D10D0D10D10D, %rdi\n"
    "movabsq $0x0B90B90B0B90B90B, %rbp\n"
    "movabsq $0x1212121212121212, %r12\n"
    "movabsq $0x1313131313131313, %r13\n"
    "movabsq $0x1414141414141414, %r14\n"
    "movabsq $0x1515151515151515, %r15\n"
    "movq %r12, %xmm6\n"
    "movq %r13, %xmm7\n"
    "call *%rax\n"
    "leaq CallWithPatternsState(%rip), %r10\n"
    "movq %rsp, 16(%r10)\n"
    "movq %rbx, 24(%r10)\n"
    "movq %rsi, 32(%r10)\n"
    "movq %rdi, 40(%r10)\n"
    "movq %rbp, 48(%r10)\n"
    "movq %r12, 56(%r10)\n"
    "movq %r13, 64(%r10)\n"
    "movq %r14, 72(%r10)\n"
    "movq %r15, 80(%r10)\n"
    "movq %xmm6, 88(%r10)\n"
    "movq %xmm7, 96(%r10)\n"
    "movaps 0x40(%rsp), %xmm6\n"
    "movaps 0x50(%rsp), %xmm7\n"
    "movq (%r10), %rsp\n"
    "popq %r15\n"
    "popq %r14\n"
    "popq %r13\n"
    "popq %r12\n"
    "popq %rdi\n"
    "popq %rsi\n"
    "popq %rbx\n"
    "popq %rbp\n"
    "ret\n");
#else
__asm__(".text\n" SYMBOL("CallWithPatterns") ":\n"
        "pushl %ebp\n"
        "pushl %ebx\n"
        "pushl %esi\n"
        "pushl %edi\n"
        "movl 20(%esp), %eax\n"
        "movl 24(%esp), %esi\n"
        "movl 28(%esp), %edx\n"
        "movl %esp, " SYMBOL("CallWithPatternsState") "\n"
        "andl $-16, %esp\n"
        "subl %edx, %esp\n"
        "movl $8, %ecx\n"
        "1:\n"
        "pushl -4(%esi,%ecx,4)\n"
        "decl %ecx\n"
        "jnz 1b\n"
        "movl %esp, " SYMBOL("CallWithPatternsState") "+4\n"
        "movl $0x0B0B0B0B, %ebx\n"
        "movl $0x05105105, %esi\n"
        "movl $0x0D10D10D, %edi\n"
        "movl $0x0B90B90B, %ebp\n"
        "call *%eax\n"
        "movl %esp, " SYMBOL("CallWithPatternsState") "+8\n"
        "movl %ebx, " SYMBOL("CallWithPatternsState") "+12\n"
        "movl %esi, " SYMBOL("CallWithPatternsState") "+16\n"
        "movl %edi, " SYMBOL("CallWithPatternsState") "+20\n"
        "movl %ebp, " SYMBOL("CallWithPatternsState") "+24\n"
        "movl " SYMBOL("CallWithPatternsState") ", %esp\n"
        "popl %edi\n"
        "popl %esi\n"
        "popl %ebx\n"
        "popl %ebp\n"
        "ret\n");
#endif

namespace gputune::test {
namespace {

struct {
    char const* name;
    std::uint64_t pattern;
} const kPreserved[] = {
#if defined(__x86_64__)
    {"rbx", 0x0B0B0B0B0B0B0B0B},  {"rsi", 0x0510510505105105}, {"rdi", 0x0D10D10D0D10D10D},
    {"rbp", 0x0B90B90B0B90B90B},  {"r12", 0x1212121212121212}, {"r13", 0x1313131313131313},
    {"r14", 0x1414141414141414},  {"r15", 0x1515151515151515}, {"xmm6", 0x1212121212121212},
    {"xmm7", 0x1313131313131313},
#else
    {"ebx", 0x0B0B0B0B},
    {"esi", 0x05105105},
    {"edi", 0x0D10D10D},
    {"ebp", 0x0B90B90B},
#endif
};

void ExpectPreserved() {
    std::uintptr_t const* const state = CallWithPatternsState;
    EXPECT_EQ(state[2], state[1]) << "stack pointer";
    for (std::size_t position = 0; position < std::size(kPreserved); ++position) {
        EXPECT_EQ(state[3 + position], kPreserved[position].pattern) << kPreserved[position].name;
    }
}

// Under Windows callers owe 4 bytes only; here the system's own functions take 16 for granted.
// And 64-bit callers owe 16 everywhere.
#if defined(_WIN32) && !defined(_WIN64)
constexpr int kMisalignments[] = {0, 4, 8, 12};
#else
constexpr int kMisalignments[] = {0};
#endif

void ExpectCallersStatePreserved(Machine& machine, std::string const& name, int result, bool arrives) {
    SCOPED_TRACE(name);
    std::vector<unsigned char> room(2000);
    Word const pointer = Number(room.data());
    // As wide as they come: a 64-bit word has another upper half.
    constexpr Word kUpper = sizeof(Word) == 4 ? 0 : static_cast<Word>(0x2468ACE013579BDF & ~0xFFFFFFFFLL);
    Word const words[8] = {0x11111111 | kUpper, pointer,    0x33333333 | kUpper, 0x44444444,
                           0x55555555 | kUpper, 0x66666666, 0x77777777 | kUpper, -8};
    for (int const misalignment : kMisalignments) {
        SCOPED_TRACE(misalignment);
        EXPECT_EQ(CallWithPatterns(host::FindExport(name), words, misalignment), result);
        ExpectPreserved();
        std::vector<Call> const calls = machine.TakeCalls();
        ASSERT_EQ(calls.size(), arrives ? 1U : 0U);
        if (arrives) {
            std::vector<Word> expected(words, words + 8);
            expected.resize(calls[0].args.size());
            EXPECT_EQ(calls[0].args, expected);
            if (sizeof(Word) == sizeof(double)) {
                EXPECT_EQ(std::memcmp(calls[0].doubles.data(), words, kMaxDoubles * sizeof(double)), 0);
            }
        }
    }
}

TEST(CtlCallersState, IsPreservedWhenNothingIsLoaded) {
    Machine machine = ControlLibrary();
    machine.Api();
    for (std::string const& name : ForwardedNames()) {
        ExpectCallersStatePreserved(machine, name, kNotInitialized, false);
    }
    ExpectCallersStatePreserved(machine, "ctlClose", kNotInitialized, false);
}

TEST(CtlCallersState, IsPreservedWhenTheFunctionIsReached) {
    Machine machine = ControlLibrary();
    ASSERT_EQ(Init(machine), 0);
    machine.TakeCalls();
    for (std::string const& name : ForwardedNames()) {
        machine.Result(name, 4711);
        ExpectCallersStatePreserved(machine, name, 4711, true);
    }
}

TEST(CtlCallersState, IsPreservedWhenTheFunctionIsMissing) {
    Machine machine = ControlLibrary();
    for (std::string const& name : ForwardedNames()) {
        machine.Hide(name);
    }
    ASSERT_EQ(Init(machine), 0);
    machine.TakeCalls();
    for (std::string const& name : ForwardedNames()) {
        ExpectCallersStatePreserved(machine, name, kNotInitialized, false);
    }
}

TEST(CtlCallersState, IsPreservedByTheFunctionsWithBehaviourOfTheirOwn) {
    Machine machine = ControlLibrary();
    InitArgs init;
    PathArgs path(kName.c_str());
    void* handle = nullptr;
    for (int const misalignment : kMisalignments) {
        SCOPED_TRACE(misalignment);
        struct {
            char const* name;
            Word first;
        } const steps[] = {{"ctlSetRuntimePath", Number(&path)},
                           {"ctlInit", Number(&init)},
                           {"ctlInit", Number(&init)},
                           {"ctlSetRuntimePath", Number(&path)},
                           {"ctlClose", static_cast<Word>(kIntelApi)}};
        for (auto const& step : steps) {
            SCOPED_TRACE(step.name);
            Word const words[8] = {step.first, Number(&handle), 3, 4, 5, 6, 7, 8};
            EXPECT_EQ(CallWithPatterns(host::FindExport(step.name), words, misalignment), 0);
            ExpectPreserved();
        }
    }
    EXPECT_EQ(machine.UnloadCount(), static_cast<int>(std::size(kMisalignments)));
}

}  // namespace
}  // namespace gputune::test
