// What a caller relies on whatever it calls: its registers and its stack.
#include <iterator>

#include "ctl_client.h"
#include "patterned_call.h"

namespace gputune::test {
namespace {

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
        EXPECT_EQ(static_cast<int>(CallWithPatterns(host::FindExport(name), words, misalignment)), result);
        EXPECT_EQ(Lost(), "");
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
            EXPECT_EQ(static_cast<int>(CallWithPatterns(host::FindExport(step.name), words, misalignment)), 0);
            EXPECT_EQ(Lost(), "");
        }
    }
    EXPECT_EQ(machine.UnloadCount(), static_cast<int>(std::size(kMisalignments)));
}

}  // namespace
}  // namespace gputune::test
