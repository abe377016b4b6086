// Thousands of starts and operations: the library gives back all that it takes, also when calls fail.
#include <gtest/gtest.h>

#include "repetition.h"

namespace gputune::test {
namespace {

class Repetition : public testing::TestWithParam<Board> {
protected:
    Machine machine_ = GetParam().make();
};

TEST_P(Repetition, OfTheStartLeavesNothingBehind) {
    EXPECT_EQ(LeftBehindBy(2000,
                           [&](int) {
                               ASSERT_TRUE(machine_.Init(GPUTUNE_LOG_NONE));
                               Forget(machine_);
                           }),
              "");
}

TEST_P(Repetition, OfEveryOperationLeavesNothingBehind) {
    ASSERT_TRUE(machine_.Init(GPUTUNE_LOG_NONE));
    EXPECT_EQ(LeftBehindBy(1000,
                           [&](int) {
                               CallEverything(machine_.Api());
                               Forget(machine_);
                           }),
              "");
}

// In each round another call of those that a start and all operations make fails.
TEST_P(Repetition, WithAFailingCallLeavesNothingBehind) {
    ASSERT_TRUE(machine_.Init(GPUTUNE_LOG_NONE));
    FailingCall failing(machine_.Scripted());
    int position = 0;
    int passes = 0;
    EXPECT_EQ(LeftBehindBy(1000,
                           [&](int) {
                               failing.FailAt(position++);
                               machine_.Init(GPUTUNE_LOG_NONE);
                               CallEverything(machine_.Api());
                               Forget(machine_);
                               if (!failing.HasFailed()) {
                                   position = 0;
                                   ++passes;
                               }
                           }),
              "");
    EXPECT_GT(passes, 0) << "not every call has failed";
}

INSTANTIATE_TEST_SUITE_P(Of, Repetition, testing::ValuesIn(kBoards),
                         [](auto const& test) { return std::string(test.param.name); });

TEST(RepetitionWithout, ABoardLeavesNothingBehind) {
    Machine machine(Machine::Library::None);
    machine.Captions({L"Graphics of nobody"});
    EXPECT_EQ(LeftBehindBy(2000, [&](int) { ASSERT_FALSE(machine.Init(GPUTUNE_LOG_NONE)); }), "");
}

TEST(RepetitionWithout, TheVendorsLibraryLeavesNothingBehind) {
    Machine machine(Machine::Library::None);
    std::wstring const captions[] = {L"AMD Radeon RX 580 Series", L"Intel(R) Arc(TM) A770 Graphics",
                                     L"NVIDIA GeForce RTX 4070"};
    EXPECT_EQ(LeftBehindBy(1500,
                           [&](int number) {
                               machine.Captions({captions[number % 3]});
                               machine.Init(GPUTUNE_LOG_NONE);
                               CallEverything(machine.Api());
                               ForgetLoads(machine);
                           }),
              "");
}

TEST(RepetitionOf, AHostsUseOfTheControlLibraryLeavesNothingBehind) {
    Machine machine(Machine::Library::Intel);
    std::size_t loads = 0;
    EXPECT_EQ(LeftBehindBy(5000,
                           [&](int number) {
                               int args[9] = {36, 0, 0x00010001};
                               void* handle = nullptr;
                               ASSERT_EQ(machine.Ctl("ctlInit", &args, &handle), 0);
                               std::uint32_t count = 0;
                               ASSERT_EQ(machine.Ctl("ctlEnumFans", 1, &count, nullptr), 0);
                               // Every fourth time the library refuses to close.
                               machine.Result("ctlClose", number % 4 == 0 ? -1 : 0);
                               machine.Ctl("ctlClose", handle);
                               loads += machine.TakeLoads().size();
                               Forget(machine);
                           }),
              "");
    // Every loaded library was unloaded.
    machine.Result("ctlClose", 0);
    machine.Ctl("ctlClose", nullptr);
    EXPECT_EQ(static_cast<std::size_t>(machine.UnloadCount()), loads);
}

}  // namespace
}  // namespace gputune::test
