// Intel boards: the fans. What their operations share, one speed for all, and back to the driver's own control.
#include <climits>

#include "igcl_fan_lines.h"

namespace gputune::test {
namespace {

// ---- What the three operations share ----

struct Operation {
    char const* name;
    std::string tag;
    bool (*run)(Machine&);
};

void PrintTo(Operation const& operation, std::ostream* out) {
    *out << operation.name;
}

bool SetTwoPoints(Machine& machine) {
    FanTablePoint const points[] = {{30, 40}, {60, 80}};
    return machine.Api().SetFanSpeedTable(points, 2);
}

Operation const kOperations[] = {
    {"Speed", kSpeed, [](Machine& machine) { return machine.Api().SetFanSpeed(40); }},
    {"Table", kTable, SetTwoPoints},
    {"Default", kDefault, [](Machine& machine) { return machine.Api().SetFanSpeed(-1); }},
};

class IgclFans : public testing::TestWithParam<Operation> {};

TEST_P(IgclFans, NoneAreAFailureThatReportsSuccess) {
    Machine machine = RunningBoard({});
    EXPECT_FALSE(GetParam().run(machine));
    EXPECT_EQ(machine.TakeLog(),
              Lines({GetParam().tag + " ... begin",
                     ErrorLine(GetParam().tag + " Fan component not supported", 0, "[CTL_RESULT_SUCCESS]")}));
    EXPECT_EQ(TakeIntelTraffic(machine), Lines({"ctlEnumFans DE0000: count"}));
}

TEST_P(IgclFans, FailingCountEndsIt) {
    Machine machine = RunningBoard({FixedFan()});
    machine.Result("ctlEnumFans", kFailure);
    EXPECT_FALSE(GetParam().run(machine));
    EXPECT_EQ(machine.TakeLog(),
              Lines({GetParam().tag + " ... begin", FailureLine(GetParam().tag + " Fan component not supported")}));
    EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlEnumFans"}));
}

TEST_P(IgclFans, MissingEnumerationIsAFailingOne) {
    Machine machine = RunningBoard({FixedFan()});
    machine.Hide("ctlEnumFans");
    EXPECT_FALSE(GetParam().run(machine));
    EXPECT_EQ(machine.TakeLog(), Lines({GetParam().tag + " ... begin",
                                        NotInitializedLine(GetParam().tag + " Fan component not supported")}));
}

TEST_P(IgclFans, FailingListEndsIt) {
    Machine machine = RunningBoard({TableFan(2), TableFan(2)});
    machine.Then("ctlEnumFans").Result("ctlEnumFans", kFailure);
    EXPECT_FALSE(GetParam().run(machine));
    EXPECT_EQ(machine.TakeLog(), Joined({Begin(GetParam().tag, 2), {FailureLine(GetParam().tag + " ctlEnumFans")}}));
    EXPECT_EQ(TakeIntelTraffic(machine), Lines({"ctlEnumFans DE0000: count", "ctlEnumFans DE0000: room for 2"}));
}

TEST_P(IgclFans, FanWithoutPropertiesIsLeftOut) {
    Machine machine = RunningBoard({TableFan(2), TableFan(2)});
    machine.Result(For("ctlFanGetProperties", kFan), kFailure);
    EXPECT_TRUE(GetParam().run(machine));
    Lines const log = machine.TakeLog();
    Lines const expected =
        Joined({Begin(GetParam().tag, 2),
                {GetParam().tag + " ... For fan handle 0", FailureLine(GetParam().tag + " ctlFanGetProperties")},
                FanLines(GetParam().tag, 1, TableFan(2))});
    ASSERT_GT(log.size(), expected.size());
    EXPECT_EQ(Lines(log.begin(), log.begin() + static_cast<std::ptrdiff_t>(expected.size())), expected);
    for (Call const& call : machine.TakeCalls()) {
        if (call.entryPoint.starts_with("ctlFan") && call.entryPoint != "ctlFanGetProperties") {
            EXPECT_EQ(call.HandleArgument(0), kFan + 1) << call.entryPoint;
        }
    }
}

TEST_P(IgclFans, EachFanIsAskedWithAFreshRecord) {
    Machine machine = RunningBoard({TableFan(2), FixedFan(), TableFan(2)});
    GetParam().run(machine);
    Lines asked = TakeIntelTraffic(machine);
    std::erase_if(asked, [](std::string const& line) { return !line.starts_with("ctlFanGetProperties"); });
    Lines expected = {"ctlFanGetProperties FA0000", "ctlFanGetProperties FA0001", "ctlFanGetProperties FA0002"};
    // A curve does not come past the fan that takes another number of points.
    expected.resize(GetParam().tag == kTable ? 2 : 3);
    EXPECT_EQ(asked, expected);
}

TEST_P(IgclFans, NumbersOfTheFanAreDecimalWithTheirSigns) {
    FanProperties const odd = {.canControl = 0xFF, .modes = 5, .units = 0x40000000, .maxRpm = -1, .maxPoints = 2};
    Machine machine = RunningBoard({odd});
    GetParam().run(machine);
    FanProperties shown = odd;
    shown.canControl = 1;
    Lines const log = machine.TakeLog();
    Lines const expected = Joined({Begin(GetParam().tag, 1), FanLines(GetParam().tag, 0, shown)});
    ASSERT_GE(log.size(), expected.size());
    EXPECT_EQ(Lines(log.begin(), log.begin() + static_cast<std::ptrdiff_t>(expected.size())), expected);
}

// A library that answers nonsense.

TEST_P(IgclFans, CountThatGrowsIsNotFollowedBeyondTheRoom) {
    Machine machine = RunningBoard({TableFan(2)});
    for (int const grown : {2, 1000, INT_MAX, -1}) {
        SCOPED_TRACE(grown);
        // The first call says one fan, the second these.
        OrderFanList(machine.Then("ctlEnumFans"), grown, {kFan});
        EXPECT_TRUE(GetParam().run(machine));
        EXPECT_EQ(machine.TakeLog()[1], GetParam().tag + " Number of Fan Handles ... 1");
        EXPECT_EQ(machine.CountOf("ctlFanGetProperties"), 1);
        machine.TakeCalls();
        OrderFanList(machine.Then("ctlEnumFans"), 1);
    }
}

TEST_P(IgclFans, CountThatShrinksLeavesTheFansThatWereWritten) {
    Machine machine = RunningBoard({TableFan(2), TableFan(2), TableFan(2)});
    OrderFanList(machine.Then("ctlEnumFans"), 1, {kFan});
    EXPECT_TRUE(GetParam().run(machine));
    for (Call const& call : machine.TakeCalls()) {
        if (call.entryPoint == "ctlFanGetProperties") {
            EXPECT_TRUE(call.HandleArgument(0) == kFan || call.HandleArgument(0) == Handle{})
                << DescribeIntelCall(call);
        }
    }
}

TEST_P(IgclFans, CountBeyondAllMemoryIsAFailure) {
    Machine machine = IntelBoard().Started();
    for (int const count : {-1, INT_MAX, 0x40000000, 0x40000001}) {
        SCOPED_TRACE(count);
        OrderFanList(machine, count);
        EXPECT_FALSE(GetParam().run(machine));
        EXPECT_EQ(machine.CountOf("ctlFanGetProperties"), 0);
        machine.Then("ctlEnumFans");
    }
}

TEST_P(IgclFans, NullHandlesArePassedOnAtMost) {
    Machine machine = RunningBoard({TableFan(2), TableFan(2)});
    OrderFanList(machine, 2, {Handle{}, Handle{}});
    machine.Result(For("ctlFanGetProperties", Handle{}), kFailure);
    GetParam().run(machine);
    for (std::string const& name : machine.TakeCallNames()) {
        EXPECT_TRUE(name == "ctlEnumFans" || name == "ctlFanGetProperties") << name;
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, IgclFans, testing::ValuesIn(kOperations),
                         [](auto const& given) { return given.param.name; });

// ---- One speed ----

TEST(IgclFanSpeed, FixedModeIsSentThePercent) {
    Machine machine = RunningBoard({FixedFan()});
    for (int const percent : {0, 40, 100, 150, INT_MAX}) {
        SCOPED_TRACE(percent);
        EXPECT_TRUE(machine.Api().SetFanSpeed(percent));
        EXPECT_EQ(machine.TakeLog(),
                  Joined({Begin(kSpeed, 1),
                          FanLines(kSpeed, 0, FixedFan()),
                          {kSpeed + " ctlFanSetFixedSpeedMode ... set to " + std::to_string(percent)}}));
        EXPECT_EQ(machine.Sent<FixedSpeed>(), FixedSpeed{.speed = percent});
        EXPECT_EQ(TakeIntelTraffic(machine), Lines({"ctlEnumFans DE0000: count", "ctlEnumFans DE0000: room for 1",
                                                    "ctlFanGetProperties FA0000", "ctlFanSetFixedSpeedMode FA0000"}));
    }
}

TEST(IgclFanSpeed, RefusedFixedSpeedIsASuccessAllTheSame) {
    Machine machine = RunningBoard({FixedFan(), FixedFan()});
    machine.Result(For("ctlFanSetFixedSpeedMode", kFan), kFailure);
    EXPECT_TRUE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.TakeLog(), Joined({Begin(kSpeed, 2),
                                         FanLines(kSpeed, 0, FixedFan()),
                                         {FailureLine(kSpeed + " ctlFanSetFixedSpeedMode")},
                                         FanLines(kSpeed, 1, FixedFan()),
                                         {kSpeed + " ctlFanSetFixedSpeedMode ... set to 40"}}));
}

TEST(IgclFanSpeed, TableModeIsSentAFlatCurveAndReadBack) {
    Machine machine = RunningBoard({TableFan(3)});
    OrderConfig(machine, 2, 5, {{20, 30, 1}, {-1, -5, 0}, {90, 100, -2}, {1, 2, 3}});
    EXPECT_TRUE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.TakeLog(), Joined({Begin(kSpeed, 1),
                                         FanLines(kSpeed, 0, TableFan(3)),
                                         {kSpeed + " ctlFanSetSpeedTableMode ... set to 40"},
                                         ReadBack(kSpeed, "2", "5", {"20/30/1", "4294967295/-5/0", "90/100/-2"})}));
    EXPECT_EQ(machine.Sent<SpeedTable>(), Curve(3, {FlatPoint(40), FlatPoint(40), FlatPoint(40)}));
    EXPECT_EQ(TakeIntelTraffic(machine),
              Lines({"ctlEnumFans DE0000: count", "ctlEnumFans DE0000: room for 1", "ctlFanGetProperties FA0000",
                     "ctlFanSetSpeedTableMode FA0000", "ctlFanGetConfig FA0000"}));
}

TEST(IgclFanSpeed, RefusedCurveIsReadBackAllTheSame) {
    Machine machine = RunningBoard({TableFan(1)});
    machine.Result("ctlFanSetSpeedTableMode", kFailure);
    OrderConfig(machine, -1, -2, {{1, 2, 3}});
    EXPECT_TRUE(machine.Api().SetFanSpeed(150));
    EXPECT_EQ(machine.TakeLog(), Joined({Begin(kSpeed, 1),
                                         FanLines(kSpeed, 0, TableFan(1)),
                                         {FailureLine(kSpeed + " ctlFanSetSpeedTableMode")},
                                         ReadBack(kSpeed, "-1", "-2", {"1/2/3"})}));
    EXPECT_EQ(machine.Sent<SpeedTable>(), Curve(1, {FlatPoint(150)}));
}

TEST(IgclFanSpeed, FailingReadBackShowsZeros) {
    Machine machine = RunningBoard({TableFan(2)});
    machine.Result("ctlFanGetConfig", kFailure);
    EXPECT_TRUE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.TakeLog(),
              Joined({Begin(kSpeed, 1),
                      FanLines(kSpeed, 0, TableFan(2)),
                      {kSpeed + " ctlFanSetSpeedTableMode ... set to 40", FailureLine(kSpeed + " ctlFanGetConfig")},
                      ZeroReadBack(kSpeed, 2)}));
}

TEST(IgclFanSpeed, AllThirtyTwoPointsAreSent) {
    Machine machine = RunningBoard({TableFan(32)});
    OrderConfig(machine, 2, 32, std::vector<FanNode>(32, {7, 8, 9}));
    EXPECT_TRUE(machine.Api().SetFanSpeed(40));
    EXPECT_EQ(machine.Sent<SpeedTable>(), Curve(32, std::vector<SpeedPoint>(32, FlatPoint(40))));
    EXPECT_EQ(machine.TakeLog(), Joined({Begin(kSpeed, 1),
                                         FanLines(kSpeed, 0, TableFan(32)),
                                         {kSpeed + " ctlFanSetSpeedTableMode ... set to 40"},
                                         ReadBack(kSpeed, "2", "32", Lines(32, "7/8/9"))}));
}

TEST(IgclFanSpeed, WithoutPointsTheCurveIsEmpty) {
    Machine machine = RunningBoard({TableFan(0), TableFan(-1), TableFan(INT_MIN)});
    OrderConfig(machine, 2, 1, {{7, 8, 9}});
    EXPECT_TRUE(machine.Api().SetFanSpeed(40));
    Lines expected = Begin(kSpeed, 3);
    unsigned position = 0;
    for (int const points : {0, -1, INT_MIN}) {
        expected = Joined({expected,
                           FanLines(kSpeed, position++, TableFan(points)),
                           {kSpeed + " ctlFanSetSpeedTableMode ... set to 40"},
                           ReadBack(kSpeed, "2", "1", {})});
    }
    EXPECT_EQ(machine.TakeLog(), expected);
    EXPECT_EQ(machine.AllSent<SpeedTable>(), std::vector({Curve(0, {}), Curve(-1, {}), Curve(INT_MIN, {})}));
}

TEST(IgclFanSpeed, OtherModesAreLeftAlone) {
    std::vector<FanProperties> fans;
    for (int const modes : {0, 3, 4, -1, 0x101, 0x102}) {
        fans.push_back({.modes = modes, .maxPoints = 5});
    }
    Machine machine = RunningBoard(fans);
    EXPECT_TRUE(machine.Api().SetFanSpeed(40));
    Lines expected = Begin(kSpeed, 6);
    for (unsigned i = 0; i < fans.size(); ++i) {
        expected = Joined({expected, FanLines(kSpeed, i, fans[i]), {kUnknownModes}});
    }
    EXPECT_EQ(machine.TakeLog(), expected);
    EXPECT_EQ(machine.CountOf("ctlFanSetFixedSpeedMode"), 0);
    EXPECT_EQ(machine.CountOf("ctlFanSetSpeedTableMode"), 0);
    EXPECT_EQ(machine.CountOf("ctlFanGetConfig"), 0);
}

TEST(IgclFanSpeed, FansOfDifferentKindsAreEachSentTheirOwn) {
    FanProperties const unknown = {.modes = 3};
    Machine machine = RunningBoard({TableFan(1), unknown, FixedFan()});
    EXPECT_TRUE(machine.Api().SetFanSpeed(55));
    EXPECT_EQ(machine.TakeLog(), Joined({Begin(kSpeed, 3),
                                         FanLines(kSpeed, 0, TableFan(1)),
                                         {kSpeed + " ctlFanSetSpeedTableMode ... set to 55"},
                                         ZeroReadBack(kSpeed, 1),
                                         FanLines(kSpeed, 1, unknown),
                                         {kUnknownModes},
                                         FanLines(kSpeed, 2, FixedFan()),
                                         {kSpeed + " ctlFanSetFixedSpeedMode ... set to 55"}}));
}

// A fan may claim more points than the record has room for.
TEST(IgclFanSpeed, MorePointsThanTheRecordHoldsAreCut) {
    std::vector<FanProperties> const fans = {TableFan(33), TableFan(1000), TableFan(INT_MAX)};
    Machine machine = RunningBoard(fans);
    OrderConfig(machine, 2, INT_MAX, std::vector<FanNode>(32, {7, 8, 9}));
    EXPECT_TRUE(machine.Api().SetFanSpeed(40));
    Lines expected = Begin(kSpeed, 3);
    for (unsigned i = 0; i < fans.size(); ++i) {
        expected = Joined({expected,
                           FanLines(kSpeed, i, fans[i]),
                           {kSpeed + " ctlFanSetSpeedTableMode ... set to 40"},
                           ReadBack(kSpeed, "2", std::to_string(INT_MAX), Lines(32, "7/8/9"))});
    }
    EXPECT_EQ(machine.TakeLog(), expected);
    EXPECT_EQ(machine.AllSent<SpeedTable>(), std::vector(3, Curve(32, std::vector<SpeedPoint>(32, FlatPoint(40)))));
}

// ---- Back to the driver's control ----

TEST(IgclFanDefault, NegativeSpeedGivesEveryFanBack) {
    FanProperties const unknown = {.modes = 0};
    Machine machine = RunningBoard({FixedFan(), TableFan(4), unknown});
    for (int const percent : {-1, -40, INT_MIN}) {
        SCOPED_TRACE(percent);
        EXPECT_TRUE(machine.Api().SetFanSpeed(percent));
        EXPECT_EQ(machine.TakeLog(), Joined({Begin(kDefault, 3),
                                             FanLines(kDefault, 0, FixedFan()),
                                             {kDefault + " fan handle #0 ... set to default"},
                                             FanLines(kDefault, 1, TableFan(4)),
                                             {kDefault + " fan handle #1 ... set to default"},
                                             FanLines(kDefault, 2, unknown),
                                             {kDefault + " fan handle #2 ... set to default"}}));
        EXPECT_EQ(TakeIntelTraffic(machine),
                  Lines({"ctlEnumFans DE0000: count", "ctlEnumFans DE0000: room for 3", "ctlFanGetProperties FA0000",
                         "ctlFanSetDefaultMode FA0000", "ctlFanGetProperties FA0001", "ctlFanSetDefaultMode FA0001",
                         "ctlFanGetProperties FA0002", "ctlFanSetDefaultMode FA0002"}));
    }
}

TEST(IgclFanDefault, RefusalIsASuccessAllTheSame) {
    Machine machine = RunningBoard({FixedFan(), FixedFan()});
    machine.Result(For("ctlFanSetDefaultMode", kFan), kFailure);
    EXPECT_TRUE(machine.Api().SetFanSpeed(-1));
    EXPECT_EQ(machine.TakeLog(), Joined({Begin(kDefault, 2),
                                         FanLines(kDefault, 0, FixedFan()),
                                         {FailureLine(kDefault + " ctlFanSetDefaultMode")},
                                         FanLines(kDefault, 1, FixedFan()),
                                         {kDefault + " fan handle #1 ... set to default"}}));
}

}  // namespace
}  // namespace gputune::test
