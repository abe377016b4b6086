// What a hold decides, for every way in which its worker, its board or its time can go wrong.
#include "tool/hold/Hold.h"

#include <gtest/gtest.h>

#include "tests/unit/tool/HoldBench.h"

using namespace gputune::tool;

namespace {

HoldSettings PowerSettings() {
    HoldSettings settings;
    settings.power = 10;
    return settings;
}

// A fan curve of two points, each from 10 to 100 % and up to 100 °C.
void GiveTwoFanPoints(BoardFacts& board) {
    board.fan.Valid = true;
    board.fan.PointCount = 2;
    board.fan.Points[0].MaxSpeed = 100;
    board.fan.Points[0].MinSpeed = 10;
    board.fan.Points[0].MaxTemperature = 100;
    board.fan.Points[1] = board.fan.Points[0];
}

TEST(HoldTest, WritesTheJournalAndArmsTheWorkerBeforeItsFirstChange) {
    HoldBench bench(HoldBench::FanSettings());
    bench.Run(1.5);
    EXPECT_EQ(bench.steps[0], "open");
    EXPECT_EQ(bench.steps[1], "sample");
    EXPECT_EQ(bench.steps[2], "journal");
    EXPECT_EQ(bench.steps[3], "arm");
    EXPECT_EQ(bench.steps[4], "automatic_fan");
    EXPECT_TRUE(bench.armed && bench.armed->fan);
}

TEST(HoldTest, TakesTheFanAfterThreeValidReadings) {
    HoldBench bench(HoldBench::FanSettings());
    bench.Run(1.9);
    EXPECT_FALSE(bench.fan);
    bench.Run(1);
    EXPECT_EQ(bench.fan, 60);
    EXPECT_EQ(bench.Count(HoldEvent::Held), 1U);
    EXPECT_TRUE(bench.reports.back().held);
}

TEST(HoldTest, RemembersWhatWasThereBefore) {
    HoldBench bench(PowerSettings());
    bench.shown.powerLimit = -5;
    bench.RunUntilHeld();
    ASSERT_TRUE(bench.journal);
    EXPECT_EQ(bench.journal->before.powerLimit, -5);
    EXPECT_TRUE(bench.journal->power);
    EXPECT_FALSE(bench.journal->fan);
    EXPECT_EQ(bench.shown.powerLimit, 10);
}

TEST(HoldTest, TakesEverythingBackAtItsEnd) {
    HoldSettings settings = HoldBench::FanSettings();
    settings.power = 10;
    HoldBench bench(settings);
    bench.RunUntilHeld();
    bench.Get().Stop("Ended.", bench.now);
    bench.Run(5);
    EXPECT_TRUE(bench.Get().IsEnded());
    EXPECT_EQ(bench.Get().ExitCode(), 0);
    EXPECT_FALSE(bench.fan);
    EXPECT_EQ(bench.shown.powerLimit, 0);
    EXPECT_FALSE(bench.journal);
    EXPECT_EQ(bench.Count(HoldEvent::Ended), 1U);
}

TEST(HoldTest, KeepsPowerAndClocksWhenTold) {
    HoldSettings settings = HoldBench::FanSettings();
    settings.power = 10;
    settings.keep = true;
    HoldBench bench(settings);
    bench.RunUntilHeld();
    bench.Get().Stop("Ended.", bench.now);
    bench.Run(5);
    EXPECT_FALSE(bench.fan);
    EXPECT_EQ(bench.shown.powerLimit, 10);
}

TEST(HoldTest, EndsWithoutATraceBeforeAnythingWasSet) {
    HoldBench bench(HoldBench::FanSettings());
    bench.Get().Stop("Ended.", bench.now);
    EXPECT_TRUE(bench.Get().IsEnded());
    EXPECT_EQ(bench.Get().ExitCode(), 0);
    EXPECT_TRUE(bench.steps.empty());
}

TEST(HoldTest, NothingIsSetWhenItMayNotBegin) {
    HoldBench bench(HoldBench::FanSettings());
    bench.refusal = "Another one holds it.";
    bench.Run(5);
    EXPECT_TRUE(bench.Get().IsEnded());
    EXPECT_EQ(bench.Get().ExitCode(), 1);
    EXPECT_EQ(bench.Get().Problem(), "Another one holds it.");
    EXPECT_EQ(bench.steps, std::vector<std::string>{"open"});
}

TEST(HoldTest, EndsWhenTheBoardCannotBeOpenedAtTheStart) {
    HoldBench bench(HoldBench::FanSettings());
    bench.fails = true;
    bench.Run(5);
    EXPECT_TRUE(bench.Get().IsEnded());
    EXPECT_EQ(bench.Get().ProblemCode(), "refused");
}

TEST(HoldTest, NewWorkersFirstActIsAutomaticControl) {
    HoldBench bench(HoldBench::FanSettings());
    bench.RunUntilHeld();
    ASSERT_TRUE(bench.fan);
    bench.steps.clear();
    bench.crashesIn = Order::Sample;
    bench.Run(1.1);
    EXPECT_EQ(bench.workers, 2);
    EXPECT_FALSE(bench.fan);
    auto const opened = std::find(bench.steps.begin(), bench.steps.end(), "open");
    ASSERT_LT(opened + 2, bench.steps.end());
    EXPECT_EQ(opened[1], "arm");
    EXPECT_EQ(opened[2], "automatic_fan");
    EXPECT_NE(bench.Text(HoldEvent::WorkerLost).find("ended during sample"), std::string::npos);
    bench.Run(5);
    EXPECT_EQ(bench.fan, 60) << "held again after valid readings";
}

TEST(HoldTest, WorkerThatHangsIsEndedAfterThreeSeconds) {
    HoldBench bench(HoldBench::FanSettings());
    bench.RunUntilHeld();
    bench.hangs = true;
    bench.Run(4.5);
    bench.hangs = false;
    EXPECT_EQ(bench.workers, 2);
    EXPECT_EQ(bench.Count(HoldEvent::WorkerLost), 1U);
    bench.Run(0.1);
    EXPECT_FALSE(bench.fan);
}

TEST(HoldTest, PausesBetweenWorkersGrow) {
    HoldBench bench(HoldBench::FanSettings());
    bench.RunUntilHeld();
    bench.alwaysCrashesIn = Order::Sample;
    bench.Run(120);
    // After 0, 0.5, 1, 2, 5, 10, 30, 30 and 30 seconds.
    EXPECT_GE(bench.workers, 9);
    EXPECT_LE(bench.workers, 11);
    EXPECT_FALSE(bench.fan) << "every worker returned the fan first";
}

TEST(HoldTest, WorkersComeQuicklyWhileTheFanMayStandFixed) {
    HoldBench bench(HoldBench::FanSettings());
    bench.RunUntilHeld();
    bench.alwaysCrashesIn = Order::Open;
    bench.Get().OnGone(bench.now);
    bench.Run(60);
    EXPECT_TRUE(bench.fan);
    EXPECT_GE(bench.workers, 50);
}

TEST(HoldTest, AbsentReadingReleasesTheFanAtOnce) {
    HoldBench bench(HoldBench::FanSettings());
    bench.RunUntilHeld();
    bench.temperature.reset();
    bench.Run(1.1);
    EXPECT_FALSE(bench.fan);
    EXPECT_NE(bench.Text(HoldEvent::Released).find("the temperature was not read"), std::string::npos);
    bench.temperature = 60;
    bench.Run(1.5);
    EXPECT_FALSE(bench.fan) << "one valid reading is not enough";
    bench.Run(3);
    EXPECT_EQ(bench.fan, 60);
}

TEST(HoldTest, LateReadingReleasesTheFan) {
    HoldBench bench(HoldBench::FanSettings());
    bench.RunUntilHeld();
    bench.answerTime = 2.5;
    bench.Run(4);
    EXPECT_NE(bench.Text(HoldEvent::Released).find("came late"), std::string::npos);
    bench.answerTime = 0.01;
    bench.Run(3);
    EXPECT_EQ(bench.workers, 1);
}

TEST(HoldTest, DriverThatDoesNotAnswerGetsANewWorker) {
    HoldBench bench(HoldBench::FanSettings());
    bench.RunUntilHeld();
    bench.temperature.reset();
    bench.Run(7);
    EXPECT_EQ(bench.workers, 2);
    bench.temperature = 50;
    bench.Run(8);
    EXPECT_EQ(bench.fan, 40);
}

TEST(HoldTest, SleepReleasesTheFanAndDoesNotBlameTheWorker) {
    HoldBench bench(HoldBench::FanSettings());
    bench.RunUntilHeld();
    bench.now += 3600;
    bench.Run(0.3);
    EXPECT_TRUE(bench.Has(HoldEvent::Resumed));
    EXPECT_FALSE(bench.fan);
    EXPECT_EQ(bench.workers, 1);
    bench.Run(5);
    EXPECT_EQ(bench.fan, 60);
}

TEST(HoldTest, RefusedReleaseIsTriedUntilTheDriverTakesIt) {
    HoldBench bench(HoldBench::FanSettings());
    bench.RunUntilHeld();
    bench.refuses = true;
    bench.temperature.reset();
    bench.Run(1.2);
    bench.temperature = 60;
    bench.Run(3);
    EXPECT_TRUE(bench.fan);
    EXPECT_EQ(bench.Count(HoldEvent::Refused), 1U);
    int const before = bench.releases;
    bench.refuses = false;
    bench.Run(0.6);
    EXPECT_EQ(bench.releases, before + 1);
}

TEST(HoldTest, ForeignChangeIsAnsweredThreeTimesThenYieldedTo) {
    HoldBench bench(PowerSettings());
    bench.RunUntilHeld();
    for (int i = 1; i <= 3; ++i) {
        bench.shown.powerLimit = -20;
        bench.Run(1.5);
        EXPECT_EQ(bench.shown.powerLimit, 10) << i;
    }
    EXPECT_EQ(bench.Count(HoldEvent::ForeignChange), 3U);
    EXPECT_NE(bench.Text(HoldEvent::ForeignChange).find("-20 % instead of 10 %"), std::string::npos);
    bench.shown.powerLimit = -20;
    bench.Run(3);
    EXPECT_EQ(bench.shown.powerLimit, -20) << "another program's value is not taken back either";
    EXPECT_EQ(bench.Count(HoldEvent::Yielded), 1U);
    EXPECT_TRUE(bench.Get().IsEnded()) << "nothing is held any more";
    EXPECT_EQ(bench.Get().ExitCode(), 1);
    EXPECT_FALSE(bench.journal);
}

TEST(HoldTest, FanThatIsGivenUpGoesBackToAutomaticControl) {
    HoldSettings settings = HoldBench::FanSettings();
    settings.plainCurve = false;  // the board follows no curve itself
    HoldBench bench(settings, GPUTUNE_API_OVERDRIVE8);
    GiveTwoFanPoints(bench.board);
    bench.shown.fanCurve = {{.FanSpeed = 33, .FanTemperature = 50}};  // whatever is set
    bench.Run(30);
    EXPECT_EQ(bench.Count(HoldEvent::ForeignChange), 3U);
    EXPECT_EQ(bench.Count(HoldEvent::Yielded), 1U);
    EXPECT_FALSE(bench.fan);
    EXPECT_TRUE(bench.Get().IsEnded());
}

TEST(HoldTest, DriverThatDropsSettingsIsReported) {
    HoldSettings settings = HoldBench::FanSettings();
    settings.power = 10;
    HoldBench bench(settings);
    bench.dropsPower = true;
    bench.RunUntilHeld();
    EXPECT_TRUE(bench.Has(HoldEvent::Dropped));
    EXPECT_NE(bench.Text(HoldEvent::Dropped).find("0 % instead of 10 %"), std::string::npos);
    EXPECT_EQ(bench.shown.powerLimit, 10) << "set again";
}

TEST(HoldTest, SettingThatWasNotHeldIsReportedWhenTheDriverDropsIt) {
    HoldBench bench(HoldBench::FanSettings());
    bench.shown.powerLimit = 15;
    bench.dropsPower = true;
    bench.RunUntilHeld();
    EXPECT_NE(bench.Text(HoldEvent::Dropped).find("0 % instead of 15 %"), std::string::npos);
}

TEST(HoldTest, RefusedSettingIsGivenUpAfterThreeTries) {
    HoldBench bench(PowerSettings());
    bench.refused = {Order::PowerLimit};
    bench.Run(10);
    EXPECT_EQ(bench.CountOrders(Order::PowerLimit), 4U);
    EXPECT_TRUE(bench.Get().IsEnded());
    EXPECT_EQ(bench.Get().ExitCode(), 1);
    EXPECT_FALSE(bench.journal);
}

TEST(HoldTest, WhatSurvivedAWorkerIsNotSetAgain) {
    HoldSettings settings;
    settings.profile = "oc";
    HoldBench bench(settings);
    bench.RunUntilHeld();
    EXPECT_EQ(bench.CountOrders(Order::Profile), 1U);
    bench.crashesIn = Order::Sample;
    bench.Run(1.1);
    bench.RunUntilHeld();
    EXPECT_EQ(bench.CountOrders(Order::Profile), 1U);
    EXPECT_EQ(bench.Count(HoldEvent::Held), 2U);
    bench.shown.gpuClock = 1300;
    bench.shown.powerLimit = 0;
    bench.crashesIn = Order::Sample;
    bench.Run(1.1);
    bench.Run(8);
    EXPECT_EQ(bench.shown.gpuClock, 1400) << "a driver that forgot it";
}

TEST(HoldTest, EarlierHoldIsTakenBackFirst) {
    HoldBench bench(HoldBench::FanSettings());
    bench.left = Journal{.takeBack = {.fan = true, .power = true, .before = {.powerLimit = 7}}};
    bench.shown.powerLimit = 30;
    bench.Run(0.5);
    EXPECT_EQ(bench.steps[1], "take_back");
    EXPECT_EQ(bench.steps[2], "no journal");
    EXPECT_EQ(bench.shown.powerLimit, 7);
    EXPECT_TRUE(bench.Has(HoldEvent::Restored));
    ASSERT_TRUE(bench.journal);
    EXPECT_EQ(bench.journal->before.powerLimit, 7) << "not what the earlier one had set";
}

TEST(HoldTest, RestoreEndsWhenThereIsNothingLeft) {
    HoldBench bench(std::nullopt);
    bench.left = Journal{.takeBack = {.fan = true}};
    bench.fan = 30;
    bench.Run(2);
    EXPECT_TRUE(bench.Get().IsEnded());
    EXPECT_EQ(bench.Get().ExitCode(), 0);
    EXPECT_FALSE(bench.fan);
    EXPECT_FALSE(bench.left);
}

TEST(HoldTest, RestoreWaitsForADriverThatStarts) {
    HoldBench bench(std::nullopt);
    bench.left = Journal{.takeBack = {.fan = true}};
    bench.fails = true;
    bench.Run(20);
    EXPECT_FALSE(bench.Get().IsEnded());
    bench.fails = false;
    bench.Run(35);
    EXPECT_TRUE(bench.Get().IsEnded());
    EXPECT_EQ(bench.Get().ExitCode(), 0);
}

TEST(HoldTest, RestoreGivesUpAfterAMinuteAndLeavesTheJournal) {
    HoldBench bench(std::nullopt);
    bench.left = Journal{.takeBack = {.fan = true}};
    bench.hangs = true;
    bench.Run(70);
    EXPECT_TRUE(bench.Get().IsEnded());
    EXPECT_EQ(bench.Get().ExitCode(), 1);
    EXPECT_TRUE(bench.left);
}

TEST(HoldTest, EndThatADriverRefusesLeavesTheJournal) {
    HoldBench bench(HoldBench::FanSettings());
    bench.RunUntilHeld();
    bench.refuses = true;
    bench.Get().Stop("Ended.", bench.now);
    bench.Run(25);
    EXPECT_TRUE(bench.Get().IsEnded());
    EXPECT_EQ(bench.Get().ExitCode(), 1);
    EXPECT_TRUE(bench.journal);
    EXPECT_EQ(bench.CountOrders(Order::TakeBack), 5U);
}

TEST(HoldTest, EndSurvivesALostWorker) {
    HoldBench bench(HoldBench::FanSettings());
    bench.RunUntilHeld();
    bench.crashesIn = Order::TakeBack;
    bench.Get().Stop("Ended.", bench.now);
    bench.Run(1);
    bench.crashesIn.reset();
    bench.Run(3);
    EXPECT_TRUE(bench.Get().IsEnded());
    EXPECT_EQ(bench.Get().ExitCode(), 0);
    EXPECT_FALSE(bench.fan);
    EXPECT_FALSE(bench.journal);
}

TEST(HoldTest, EndNeverTakesLongerThanItsLimit) {
    HoldBench bench(HoldBench::FanSettings());
    bench.RunUntilHeld();
    bench.hangs = true;
    bench.Get().Stop("Ended.", bench.now);
    bench.Run(21);
    EXPECT_TRUE(bench.Get().IsEnded());
    EXPECT_EQ(bench.Get().ExitCode(), 1);
    EXPECT_TRUE(bench.journal);
}

TEST(HoldTest, BoardsOwnCurveIsUsedWhereItSuffices) {
    HoldSettings settings = HoldBench::FanSettings();
    HoldBench bench(settings, GPUTUNE_API_OVERDRIVE8);
    GiveTwoFanPoints(bench.board);
    bench.RunUntilHeld();
    EXPECT_EQ(bench.CountOrders(Order::FanCurve), 1U);
    EXPECT_EQ(bench.CountOrders(Order::FanSpeed), 0U);
    EXPECT_FALSE(bench.Has(HoldEvent::ForeignChange));
}

TEST(HoldTest, IntelFanThatTakesNoCurveGetsFixedSpeeds) {
    HoldBench bench(HoldBench::FanSettings(), GPUTUNE_API_IGCL);
    bench.refused = {Order::FanCurve};
    bench.RunUntilHeld();
    EXPECT_EQ(bench.fan, 60);
    EXPECT_EQ(bench.CountOrders(Order::FanCurve), 1U);
}

TEST(HoldTest, IdleWorkerIsKeptAlive) {
    HoldSettings settings = HoldBench::FanSettings();
    settings.interval = 5;
    HoldBench bench(settings);
    bench.Run(60);
    EXPECT_EQ(bench.workers, 1);
    EXPECT_GE(bench.CountOrders(Order::Ping), 40U) << "the worker would think its supervisor gone";
}

TEST(HoldTest, WorkerThatSaysNonsenseIsReplaced) {
    HoldBench bench(HoldBench::FanSettings());
    bench.RunUntilHeld();
    bench.Get().OnLine("R6025 - pure virtual function call", bench.now);
    EXPECT_NE(bench.Text(HoldEvent::WorkerLost).find("pure virtual"), std::string::npos);
    bench.Run(0.2);
    EXPECT_EQ(bench.workers, 2);
    EXPECT_FALSE(bench.fan);
}

}  // namespace
