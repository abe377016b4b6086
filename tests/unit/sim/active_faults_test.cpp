// Which faults of a board strike: by entry point, by the number of the call, by the time.
#include <gtest/gtest.h>

#include "sim/board/ActiveFaults.h"
#include "sim/state/StateArchive.h"

namespace {

using namespace gputune::sim;

FaultTime Call(int number) {
    return {.call = number};
}
FaultTime Between(double from, double until) {
    return {.call = {}, .from = from, .until = until};
}

TEST(SimActiveFaults, FaultWithoutATimeStrikesEveryCallOfItsEntryPoint) {
    ActiveFaults faults({{.entryPoint = "A", .result = -7}, {.entryPoint = "B", .kind = FaultKind::Crash}});
    EXPECT_EQ(faults.Strike("A", 0).result, -7);
    EXPECT_EQ(faults.Strike("A", 99).result, -7);
    EXPECT_FALSE(faults.Strike("A", 0).crash);
    EXPECT_TRUE(faults.Strike("B", 0).crash);
    FaultStrike const other = faults.Strike("C", 0);
    EXPECT_FALSE(other.result || other.crash || other.hang || other.forgets || other.forgetsOthers);
}

TEST(SimActiveFaults, FaultOfACallStrikesThatCallOfItsEntryPointOnly) {
    ActiveFaults faults({{.entryPoint = "A", .kind = FaultKind::Hang, .seconds = 5, .when = Call(2)}});
    EXPECT_FALSE(faults.Strike("A", 0).hang);
    EXPECT_FALSE(faults.Strike("B", 0).hang);
    EXPECT_EQ(faults.Strike("A", 0).hang, 5);
    EXPECT_FALSE(faults.Strike("A", 0).hang);
}

TEST(SimActiveFaults, FaultOfATimeStrikesBetweenItsSeconds) {
    ActiveFaults faults({{.entryPoint = "A", .result = -1, .when = Between(10, 20)}});
    EXPECT_FALSE(faults.Strike("A", 9.9).result);
    EXPECT_EQ(faults.Strike("A", 10).result, -1);
    EXPECT_EQ(faults.Strike("A", 19.9).result, -1);
    EXPECT_FALSE(faults.Strike("A", 20).result);
}

TEST(SimActiveFaults, SettingsAreForgottenOnceAtTheirTimeWithWhateverCall) {
    ActiveFaults faults({{.kind = FaultKind::Forget, .when = {.call = {}, .from = 10}}});
    EXPECT_FALSE(faults.Strike("A", 9).forgets);
    EXPECT_TRUE(faults.Strike("A", 12).forgets);
    EXPECT_FALSE(faults.Strike("B", 13).forgets);
}

TEST(SimActiveFaults, OtherSettingsAreForgottenWithEveryCallOfTheEntryPoint) {
    ActiveFaults faults({{.entryPoint = "A", .kind = FaultKind::Forget, .othersOnly = true}});
    for (int call = 0; call < 2; ++call) {
        FaultStrike const strike = faults.Strike("A", 0);
        EXPECT_TRUE(strike.forgetsOthers);
        EXPECT_FALSE(strike.forgets);
    }
}

TEST(SimActiveFaults, QuantityIsStuckBetweenItsSeconds) {
    ActiveFaults const faults({{.kind = FaultKind::Stuck, .quantity = 3, .when = Between(5, 8)}});
    EXPECT_FALSE(faults.IsStuck(3, 4));
    EXPECT_TRUE(faults.IsStuck(3, 5));
    EXPECT_FALSE(faults.IsStuck(2, 5));
    EXPECT_FALSE(faults.IsStuck(3, 8));
}

TEST(SimActiveFaults, CallsAreCountedOnInAnotherProcess) {
    std::vector<Fault> const list = {{.entryPoint = "A", .kind = FaultKind::Crash, .when = Call(3)}};
    ActiveFaults faults(list);
    faults.Strike("A", 0);
    faults.Strike("A", 0);
    StateWriter writer;
    writer(faults);
    ActiveFaults next(list);
    StateReader reader(writer.Result());
    reader(next);
    EXPECT_TRUE(next.Strike("A", 0).crash);
}

}  // namespace
