// Intel boards: a curve for the fans.
#include <climits>

#include "igcl_fan_lines.h"

namespace gputune::test {
namespace {

FanTablePoint const kCurve[] = {{30, 40}, {55, 60}, {100, 90}};

Lines PlanLines(std::vector<FanTablePoint> const& points) {
    Lines lines;
    for (FanTablePoint const& point : points) {
        lines.push_back(kTable + " plan set temp/speed ... " +
                        std::to_string(static_cast<unsigned>(point.FanTemperature)) + "/" +
                        std::to_string(point.FanSpeed));
    }
    return lines;
}

TEST(IgclFanCurve, PointsAreSentInOrderAndReadBack) {
    Machine machine = RunningBoard({TableFan(3)});
    OrderConfig(machine, 2, 4, {{40, 30, 1}, {60, 55, 1}, {90, 100, 1}, {1, 2, 3}});
    EXPECT_TRUE(machine.Api().SetFanSpeedTable(kCurve, 3));
    EXPECT_EQ(machine.TakeLog(),
              Joined({Begin(kTable, 1),
                      FanLines(kTable, 0, TableFan(3)),
                      {kTable + " plan set temp/speed ... 40/30", kTable + " plan set temp/speed ... 60/55",
                       kTable + " plan set temp/speed ... 90/100", kTable + " fan table ... set"},
                      ReadBack(kTable, "2", "4", {"40/30/1", "60/55/1", "90/100/1"})}));
    EXPECT_EQ(machine.Sent<SpeedTable>(),
              Curve(3, {CurvePoint(kCurve[0]), CurvePoint(kCurve[1]), CurvePoint(kCurve[2])}));
    EXPECT_EQ(TakeIntelTraffic(machine),
              Lines({"ctlEnumFans DE0000: count", "ctlEnumFans DE0000: room for 1", "ctlFanGetProperties FA0000",
                     "ctlFanSetSpeedTableMode FA0000", "ctlFanGetConfig FA0000"}));
}

TEST(IgclFanCurve, ValuesAreNotJudged) {
    std::vector<FanTablePoint> const points = {{-1, -2}, {INT_MAX, INT_MIN}, {101, 200}};
    Machine machine = RunningBoard({TableFan(3)});
    EXPECT_TRUE(machine.Api().SetFanSpeedTable(points.data(), 3));
    EXPECT_EQ(machine.TakeLog(), Joined({Begin(kTable, 1),
                                         FanLines(kTable, 0, TableFan(3)),
                                         PlanLines(points),
                                         {kTable + " fan table ... set"},
                                         ZeroReadBack(kTable, 3)}));
    EXPECT_EQ(machine.Sent<SpeedTable>(),
              Curve(3, {CurvePoint(points[0]), CurvePoint(points[1]), CurvePoint(points[2])}));
}

TEST(IgclFanCurve, AnotherNumberOfPointsIsRefusedBeforeAnyFanIsTouched) {
    std::vector<FanTablePoint> const points(9);
    Machine machine = RunningBoard({TableFan(8), TableFan(5)});
    for (int const count : {5, 7, 9, 0, -8}) {
        SCOPED_TRACE(count);
        EXPECT_FALSE(machine.Api().SetFanSpeedTable(points.data(), count));
        EXPECT_EQ(machine.TakeLog(), Joined({Begin(kTable, 2),
                                             FanLines(kTable, 0, TableFan(8)),
                                             {kTable + " nCount not match ... max ponint: 8"}}));
        EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlEnumFans", "ctlEnumFans", "ctlFanGetProperties"}));
    }
}

TEST(IgclFanCurve, AnotherNumberOfPointsIsRefusedInAnyMode) {
    std::vector<FanTablePoint> const points(9);
    Machine machine = RunningBoard({{.modes = 1, .maxPoints = 8}});
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(points.data(), 9));
    EXPECT_EQ(machine.TakeLog().back(), kTable + " nCount not match ... max ponint: 8");
    OrderFans(machine, {{.modes = 3, .maxPoints = -7}});
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(points.data(), 9));
    EXPECT_EQ(machine.TakeLog().back(), kTable + " nCount not match ... max ponint: -7");
}

TEST(IgclFanCurve, MismatchAtALaterFanEndsItThere) {
    Machine machine = RunningBoard({TableFan(3), TableFan(4), TableFan(3)});
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(kCurve, 3));
    EXPECT_EQ(machine.TakeLog(), Joined({Begin(kTable, 3),
                                         FanLines(kTable, 0, TableFan(3)),
                                         PlanLines({kCurve[0], kCurve[1], kCurve[2]}),
                                         {kTable + " fan table ... set"},
                                         ZeroReadBack(kTable, 3),
                                         FanLines(kTable, 1, TableFan(4)),
                                         {kTable + " nCount not match ... max ponint: 4"}}));
    EXPECT_EQ(machine.CountOf("ctlFanSetSpeedTableMode"), 1);
    EXPECT_EQ(machine.CountOf("ctlFanGetProperties"), 2);
}

TEST(IgclFanCurve, FixedSpeedFansTakeNone) {
    FanProperties const fixed = {.modes = 1, .maxPoints = 3};
    Machine machine = RunningBoard({fixed, fixed});
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(kCurve, 3));
    EXPECT_EQ(machine.TakeLog(), Joined({Begin(kTable, 2), FanLines(kTable, 0, fixed), FanLines(kTable, 1, fixed)}));
    EXPECT_EQ(machine.TakeCallNames(),
              Lines({"ctlEnumFans", "ctlEnumFans", "ctlFanGetProperties", "ctlFanGetProperties"}));
}

TEST(IgclFanCurve, OtherModesAreLeftAlone) {
    std::vector<FanProperties> fans;
    for (int const modes : {0, 3, -1, 0x102}) {
        fans.push_back({.modes = modes, .maxPoints = 3});
    }
    Machine machine = RunningBoard(fans);
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(kCurve, 3));
    Lines expected = Begin(kTable, 4);
    for (unsigned i = 0; i < fans.size(); ++i) {
        expected = Joined({expected, FanLines(kTable, i, fans[i]), {kUnknownModes}});
    }
    EXPECT_EQ(machine.TakeLog(), expected);
    EXPECT_EQ(machine.CountOf("ctlFanSetSpeedTableMode"), 0);
}

TEST(IgclFanCurve, OneFanThatTakesItIsSuccess) {
    FanProperties const fixed = {.modes = 1, .maxPoints = 3};
    Machine machine = RunningBoard({TableFan(3), fixed, TableFan(3)});
    machine.Result(For("ctlFanSetSpeedTableMode", kFan), kFailure);
    EXPECT_TRUE(machine.Api().SetFanSpeedTable(kCurve, 3));
    EXPECT_EQ(machine.TakeLog(), Joined({Begin(kTable, 3),
                                         FanLines(kTable, 0, TableFan(3)),
                                         PlanLines({kCurve[0], kCurve[1], kCurve[2]}),
                                         {FailureLine(kTable + " ctlFanSetSpeedTableMode")},
                                         FanLines(kTable, 1, fixed),
                                         FanLines(kTable, 2, TableFan(3)),
                                         PlanLines({kCurve[0], kCurve[1], kCurve[2]}),
                                         {kTable + " fan table ... set"},
                                         ZeroReadBack(kTable, 3)}));
    EXPECT_EQ(machine.CountOf("ctlFanGetConfig"), 1) << "only where it was set";

    // The other way round.
    machine.Result(For("ctlFanSetSpeedTableMode", kFan), 0);
    machine.Result(For("ctlFanSetSpeedTableMode", kFan + 2), kFailure);
    EXPECT_TRUE(machine.Api().SetFanSpeedTable(kCurve, 3));
    machine.Result(For("ctlFanSetSpeedTableMode", kFan), kFailure);
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(kCurve, 3));
}

TEST(IgclFanCurve, FailingReadBackShowsZerosAndIsSuccess) {
    Machine machine = RunningBoard({TableFan(3)});
    machine.Hide("ctlFanGetConfig");
    EXPECT_TRUE(machine.Api().SetFanSpeedTable(kCurve, 3));
    EXPECT_EQ(machine.TakeLog(),
              Joined({Begin(kTable, 1),
                      FanLines(kTable, 0, TableFan(3)),
                      PlanLines({kCurve[0], kCurve[1], kCurve[2]}),
                      {kTable + " fan table ... set", NotInitializedLine(kTable + " ctlFanGetConfig")},
                      ZeroReadBack(kTable, 3)}));
}

TEST(IgclFanCurve, AllThirtyTwoPointsAreSent) {
    std::vector<FanTablePoint> points;
    std::vector<SpeedPoint> sent;
    for (int j = 0; j < 32; ++j) {
        points.push_back({2 * j, 3 * j});
        sent.push_back(CurvePoint(points.back()));
    }
    Machine machine = RunningBoard({TableFan(32)});
    EXPECT_TRUE(machine.Api().SetFanSpeedTable(points.data(), 32));
    EXPECT_EQ(machine.Sent<SpeedTable>(), Curve(32, sent));
    EXPECT_EQ(machine.TakeLog(), Joined({Begin(kTable, 1),
                                         FanLines(kTable, 0, TableFan(32)),
                                         PlanLines(points),
                                         {kTable + " fan table ... set"},
                                         ZeroReadBack(kTable, 32)}));
}

TEST(IgclFanCurve, MorePointsThanTheRecordHoldsAreCut) {
    // On the heap, and no more than is read.
    std::vector<FanTablePoint> points;
    std::vector<SpeedPoint> sent;
    for (int j = 0; j < 32; ++j) {
        points.push_back({j, 100 - j});
        sent.push_back(CurvePoint(points.back()));
    }
    Machine machine = RunningBoard({});
    for (int const count : {33, 1000, INT_MAX}) {
        SCOPED_TRACE(count);
        OrderFans(machine, {TableFan(count)});
        EXPECT_TRUE(machine.Api().SetFanSpeedTable(points.data(), count));
        EXPECT_EQ(machine.Sent<SpeedTable>(), Curve(32, sent));
        EXPECT_EQ(machine.TakeLog(), Joined({Begin(kTable, 1),
                                             FanLines(kTable, 0, TableFan(count)),
                                             PlanLines(points),
                                             {kTable + " fan table ... set"},
                                             ZeroReadBack(kTable, 32)}));
    }
}

TEST(IgclFanCurve, WithoutPointsTheCurveIsEmpty) {
    Machine machine = RunningBoard({});
    for (int const count : {0, -1, INT_MIN}) {
        SCOPED_TRACE(count);
        OrderFans(machine, {TableFan(count)});
        EXPECT_TRUE(machine.Api().SetFanSpeedTable(nullptr, count));
        EXPECT_EQ(machine.Sent<SpeedTable>(), Curve(count, {}));
        EXPECT_EQ(machine.TakeLog(), Joined({Begin(kTable, 1),
                                             FanLines(kTable, 0, TableFan(count)),
                                             {kTable + " fan table ... set"},
                                             ZeroReadBack(kTable, 0)}));
    }
}

TEST(IgclFanCurve, NullTableOfThatManyPointsIsRefused) {
    Machine machine = RunningBoard({TableFan(3), TableFan(3)});
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(nullptr, 3));
    EXPECT_EQ(machine.CountOf("ctlFanSetSpeedTableMode"), 0);
    EXPECT_FALSE(machine.Api().SetFanSpeedTable(nullptr, 4));
    EXPECT_EQ(machine.TakeLog().back(), kTable + " nCount not match ... max ponint: 3");
    EXPECT_EQ(machine.CountOf("ctlFanSetSpeedTableMode"), 0);
}

}  // namespace
}  // namespace gputune::test
