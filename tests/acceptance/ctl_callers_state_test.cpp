// What a caller relies on whatever it calls: its registers and its stack.
#include <iterator>

#include "ctl_client.h"

#if defined(_WIN32)
#define SYMBOL(name) "_" name
#else
#define SYMBOL(name) name
#endif

// Call a function with eight words, patterns in the registers that it has to preserve, and the stack pointer
// `misalignment` below a 16-byte boundary. State is what the call left: the stack pointer before and after it, ebx,
// esi, edi, ebp.
extern "C" int CallWithPatterns(void* function, int const* words, int misalignment);
extern "C" unsigned CallWithPatternsState[7];
unsigned CallWithPatternsState[7];

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

namespace gputune::test {
namespace {

void ExpectPreserved() {
    unsigned const* const state = CallWithPatternsState;
    EXPECT_EQ(state[2], state[1]) << "stack pointer";
    EXPECT_EQ(state[3], 0x0B0B0B0BU) << "ebx";
    EXPECT_EQ(state[4], 0x05105105U) << "esi";
    EXPECT_EQ(state[5], 0x0D10D10DU) << "edi";
    EXPECT_EQ(state[6], 0x0B90B90BU) << "ebp";
}

// Under Windows callers owe 4 bytes only; here the system's own functions take 16 for granted.
#if defined(_WIN32)
constexpr int kMisalignments[] = {0, 4, 8, 12};
#else
constexpr int kMisalignments[] = {0};
#endif

void ExpectCallersStatePreserved(Machine& machine, std::string const& name, int result, bool arrives) {
    SCOPED_TRACE(name);
    std::vector<unsigned char> room(2000);
    int const pointer = Number(room.data());
    int const words[8] = {0x11111111, pointer, 0x33333333, 0x44444444, 0x55555555, 0x66666666, 0x77777777, -8};
    for (int const misalignment : kMisalignments) {
        SCOPED_TRACE(misalignment);
        EXPECT_EQ(CallWithPatterns(host::FindExport(name), words, misalignment), result);
        ExpectPreserved();
        std::vector<Call> const calls = machine.TakeCalls();
        ASSERT_EQ(calls.size(), arrives ? 1U : 0U);
        if (arrives) {
            std::vector<int> expected(words, words + 8);
            expected.resize(calls[0].args.size());
            EXPECT_EQ(calls[0].args, expected);
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
    int handle = 0;
    for (int const misalignment : kMisalignments) {
        SCOPED_TRACE(misalignment);
        struct {
            char const* name;
            int first;
        } const steps[] = {{"ctlSetRuntimePath", Number(&path)},
                           {"ctlInit", Number(&init)},
                           {"ctlInit", Number(&init)},
                           {"ctlSetRuntimePath", Number(&path)},
                           {"ctlClose", static_cast<int>(kIntelApi)}};
        for (auto const& step : steps) {
            SCOPED_TRACE(step.name);
            int const words[8] = {step.first, Number(&handle), 3, 4, 5, 6, 7, 8};
            EXPECT_EQ(CallWithPatterns(host::FindExport(step.name), words, misalignment), 0);
            ExpectPreserved();
        }
    }
    EXPECT_EQ(machine.UnloadCount(), static_cast<int>(std::size(kMisalignments)));
}

}  // namespace
}  // namespace gputune::test
