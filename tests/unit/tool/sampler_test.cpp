// What the exporter knows while its worker, its board or its time go wrong.
#include "tool/serve/Sampler.h"

#include <gtest/gtest.h>

#include "tests/unit/tool/SamplerBench.h"

using namespace gputune::tool;

namespace {

TEST(SamplerTest, SaysSoBeforeTheFirstSample) {
    SamplerBench const bench;
    EXPECT_FALSE(bench.Current().board);
    EXPECT_FALSE(bench.Current().sample);
    EXPECT_EQ(bench.Current().lastSampleTime, 0);
    EXPECT_EQ(bench.Current().problemCode, "starting");
    EXPECT_EQ(bench.Current().startTime, 1.7e9 + 1000);
}

TEST(SamplerTest, SamplesAtItsPace) {
    SamplerBench bench(2);
    bench.Run(20.5);
    ASSERT_EQ(bench.samples, 11U);
    for (std::size_t i = 1; i < bench.sampleTimes.size(); ++i) {
        EXPECT_NEAR(bench.sampleTimes[i] - bench.sampleTimes[i - 1], 2, 1e-6);
    }
    ASSERT_TRUE(bench.Current().sample);
    EXPECT_EQ(bench.Current().sample->readings[GPUTUNE_HWM_GPU_TEMPERATURE], 60);
    EXPECT_NEAR(bench.Current().lastSampleTime, bench.sampleTimes.back() + bench.wallOffset + 0.01, 1e-6);
    EXPECT_EQ(bench.Current().sample->time, bench.Current().lastSampleTime);
    EXPECT_EQ(bench.Current().problem, "");
    EXPECT_EQ(bench.Current().board->name, "A board");
}

TEST(SamplerTest, ShortestIntervalIsKept) {
    SamplerBench bench(kShortestInterval);
    bench.Run(10);
    EXPECT_NEAR(static_cast<double>(bench.samples), 50, 1);
}

TEST(SamplerTest, SamplesThatWereMissedAreNotMadeUpFor) {
    SamplerBench bench(0.2);
    bench.answerTime = 0.5;
    bench.Run(10.5);
    EXPECT_LE(bench.samples, 18U);
    EXPECT_GE(bench.samples, 14U);
}

TEST(SamplerTest, RestsBetweenSamples) {
    SamplerBench bench(1);
    bench.Run(5);
    std::size_t const before = bench.looks;
    bench.Run(100);
    EXPECT_LE(bench.looks - before, 400U) << "in 100 seconds";
}

TEST(SamplerTest, DurationsAreCounted) {
    SamplerBench bench(1);
    bench.answerTime = 0.03;
    bench.Run(9.5);
    EXPECT_EQ(bench.Current().durations.counts[4], 10U);
    EXPECT_NEAR(bench.Current().durations.sum, 0.3, 1e-6);
}

TEST(SamplerTest, DurationOnABoundBelongsBelowIt) {
    DurationHistogram durations;
    durations.Add(0.001);
    durations.Add(3);
    durations.Add(3.1);
    EXPECT_EQ(durations.counts.front(), 1U);
    EXPECT_EQ(durations.counts[8], 1U);
    EXPECT_EQ(durations.counts[9], 1U);
}

TEST(SamplerTest, CrashCostsSamplesOnly) {
    SamplerBench bench;
    bench.Run(5);
    double const last = bench.Current().lastSampleTime;
    bench.crashes = true;
    bench.Run(1);
    EXPECT_FALSE(bench.Current().sample);
    EXPECT_EQ(bench.Current().problem, "The worker process ended during sample.");
    EXPECT_EQ(bench.Current().problemCode, "lost");
    EXPECT_GE(bench.Current().workerRestarts, 1U);
    EXPECT_EQ(bench.Current().lastSampleTime, last);
    bench.crashes = false;
    bench.Run(3);
    EXPECT_TRUE(bench.Current().sample);
    EXPECT_GT(bench.Current().lastSampleTime, last);
}

TEST(SamplerTest, DriverThatAlwaysCrashesIsAskedMoreAndMoreSeldom) {
    SamplerBench bench;
    bench.crashes = true;
    bench.Run(3600);
    EXPECT_LE(bench.workers, 130);
    EXPECT_GE(bench.workers, 100);
    EXPECT_EQ(bench.Current().workerRestarts, static_cast<std::uint64_t>(bench.workers));
    EXPECT_FALSE(bench.Current().sample);
}

TEST(SamplerTest, HangCostsSamplesOnly) {
    SamplerBench bench;
    bench.Run(5.5);
    bench.hangs = true;
    bench.Run(4);
    EXPECT_FALSE(bench.Current().sample);
    EXPECT_EQ(bench.Current().problem, "The driver did not answer in time (sample).");
    bench.hangs = false;
    bench.Run(2);
    EXPECT_TRUE(bench.Current().sample);
    EXPECT_EQ(bench.Current().workerRestarts, 1U);
}

TEST(SamplerTest, WorkerThatCannotStartIsTriedAgain) {
    SamplerBench bench;
    bench.cannotStart = true;
    bench.Run(10);
    EXPECT_EQ(bench.Current().problem, "No process can be started.");
    bench.cannotStart = false;
    bench.Run(10);
    EXPECT_TRUE(bench.Current().sample);
}

TEST(SamplerTest, BoardThatCannotBeOpenedIsTriedMoreAndMoreSeldom) {
    SamplerBench bench;
    bench.fails = true;
    bench.Run(3600);
    EXPECT_LE(bench.workers, 130);
    EXPECT_GE(bench.workers, 100);
    EXPECT_EQ(bench.Current().problem, "There is no supported graphics board.");
    EXPECT_EQ(bench.Current().problemCode, "no_supported_gpu");
    EXPECT_FALSE(bench.Current().board);
    bench.fails = false;
    bench.Run(31);
    EXPECT_TRUE(bench.Current().sample);
    EXPECT_EQ(bench.Current().problem, "");
}

TEST(SamplerTest, SampleThatTheWorkerRefusesIsNone) {
    SamplerBench bench;
    bench.Run(5);
    bench.refuses = true;
    bench.Run(1);
    EXPECT_FALSE(bench.Current().sample);
    EXPECT_EQ(bench.Current().problem, "The library lost the board.");
    EXPECT_EQ(bench.workers, 1);
}

TEST(SamplerTest, BoardThatTellsNothingGetsANewWorker) {
    SamplerBench bench;
    bench.Run(5);
    Readings const readings = bench.readings;
    bench.readings = Readings();
    bench.Run(1);
    EXPECT_FALSE(bench.Current().sample);
    EXPECT_EQ(bench.Current().problem, "No sensor could be read.");
    EXPECT_EQ(bench.workers, 1);
    bench.Run(6);
    EXPECT_EQ(bench.workers, 2);
    bench.readings = readings;
    bench.Run(6);
    EXPECT_TRUE(bench.Current().sample);
}

TEST(SamplerTest, AReadingThatWasNotReadIsGone) {
    SamplerBench bench;
    bench.readings[GPUTUNE_HWM_FAN_SPEED_RPM] = 900;
    bench.Run(5);
    bench.readings[GPUTUNE_HWM_FAN_SPEED_RPM].reset();
    bench.Run(1);
    ASSERT_TRUE(bench.Current().sample);
    EXPECT_FALSE(bench.Current().sample->readings[GPUTUNE_HWM_FAN_SPEED_RPM]);
    EXPECT_TRUE(bench.Current().sample->readings[GPUTUNE_HWM_GPU_TEMPERATURE]);
}

TEST(SamplerTest, FailuresAreCountedByFunctionAndCode) {
    SamplerBench bench;
    bench.failedCalls = {{"ADL2_One", "failed: -1"},
                         {"ADL2_Two", "null ptr"},
                         {"ctlThree", "error: 1073741827 ([CTL_RESULT_ERROR_DEVICE_LOST])"},
                         {"NvAPI_Four",
                          "error: NVAPI_\x01"
                          "ERROR"},
                         {"ADL2_Five", "failed"}};
    bench.Run(2.5);
    auto const& failures = bench.Current().readFailures;
    EXPECT_EQ(failures.size(), 5U);
    EXPECT_EQ(failures.at({"ADL2_One", "-1"}), 3U);
    EXPECT_EQ(failures.at({"ADL2_Two", "null ptr"}), 3U);
    EXPECT_EQ(failures.at({"ctlThree", "1073741827"}), 3U);
    EXPECT_EQ(failures.at({"NvAPI_Four",
                           "NVAPI_\\x01"
                           "ERROR"}),
              3U);
    EXPECT_EQ(failures.at({"ADL2_Five", "failed"}), 3U);
}

TEST(SamplerTest, DriverThatInventsCodesDoesNotMakeTheExporterGrow) {
    SamplerBench bench;
    std::uint64_t calls = 0;
    for (int i = 0; i < 1000; ++i) {
        std::string const code = "failed: " + std::to_string(i);
        bench.failedCalls = {{"ADL2_One", code}, {"Function" + std::to_string(i), code}};
        bench.Run(1);
    }
    auto const& failures = bench.Current().readFailures;
    EXPECT_LE(failures.size(), 64U + 64 + 1);
    EXPECT_GT(failures.at({"ADL2_One", "other"}), 900U);
    EXPECT_GT(failures.at({"other", "other"}), 900U);
    for (auto const& [call, count] : failures) {
        calls += count;
    }
    EXPECT_EQ(calls, 2 * bench.Current().durations.counts[2]);
}

TEST(SamplerTest, NothingOldIsServedThoughNobodyCalledTheSampler) {
    SamplerBench bench;
    bench.Run(5);
    EXPECT_TRUE(bench.Served().sample);
    bench.now += 4;
    EXPECT_TRUE(bench.Served().sample);
    bench.now += 2;
    EXPECT_TRUE(bench.Current().sample);
    EXPECT_FALSE(bench.Served().sample);
    EXPECT_EQ(bench.Served().problemCode, "stale");
    EXPECT_EQ(bench.Served().lastSampleTime, bench.Current().lastSampleTime);
}

TEST(SamplerTest, NothingOldIsServedWhereOneClockStoodStill) {
    SamplerBench bench;
    bench.Run(5);
    Moment moment = bench.Now();
    moment.wall += 10;
    EXPECT_FALSE(AsOf(bench.Current(), moment).sample);
    moment = bench.Now();
    moment.wall -= 100;
    EXPECT_TRUE(AsOf(bench.Current(), moment).sample) << "the clock was set back";
    moment.steady += 10;
    EXPECT_FALSE(AsOf(bench.Current(), moment).sample);
}

TEST(SamplerTest, LongIntervalsHaveOlderSamples) {
    SamplerBench bench(60);
    bench.Run(61);
    bench.now += 170;
    EXPECT_TRUE(bench.Served().sample);
    bench.now += 12;
    EXPECT_FALSE(bench.Served().sample);
}

TEST(SamplerTest, WorkerIsNotBlamedForTheMachinesSleep) {
    SamplerBench bench;
    bench.Run(5.015);  // it owes an answer
    bench.now += 3600;
    bench.hangs = true;
    bench.Run(1);
    EXPECT_FALSE(bench.Served().sample);
    EXPECT_FALSE(bench.Current().sample) << "once the sampler was called again";
    bench.hangs = false;
    bench.Run(1);
    EXPECT_EQ(bench.workers, 1);
    EXPECT_TRUE(bench.Served().sample);
}

TEST(SamplerTest, EveryChangeHasAnotherRevision) {
    SamplerBench bench;
    bench.Run(5.4);
    std::uint64_t const before = bench.Current().revision;
    bench.Run(0.5);
    EXPECT_EQ(bench.Current().revision, before);
    bench.Run(0.5);
    EXPECT_EQ(bench.Current().revision, before + 1);
    bench.crashes = true;
    bench.Run(1);
    EXPECT_GT(bench.Current().revision, before + 1);
}

TEST(SamplerTest, BoardWithoutPowerIsNotAsked) {
    SamplerBench bench;
    bench.power = true;
    bench.Run(5.5);
    EXPECT_TRUE(bench.Current().powerIsKnown);
    EXPECT_FALSE(bench.Current().isPoweredOff);
    std::size_t const samples = bench.samples;
    bench.power = false;
    bench.Run(600);
    EXPECT_EQ(bench.samples, samples);
    EXPECT_FALSE(bench.Current().sample);
    EXPECT_TRUE(bench.Current().isPoweredOff);
    EXPECT_EQ(bench.Current().problemCode, "not_powered");
    EXPECT_EQ(bench.workers, 1);
    bench.power = true;
    bench.Run(2);
    EXPECT_FALSE(bench.Current().isPoweredOff);
    EXPECT_TRUE(bench.Current().sample);
    EXPECT_EQ(bench.workers, 1);
}

TEST(SamplerTest, BoardWithoutPowerIsNotOpened) {
    SamplerBench bench;
    bench.power = false;
    bench.Run(600);
    EXPECT_EQ(bench.workers, 0);
    EXPECT_EQ(bench.Current().problemCode, "not_powered");
    bench.power = true;
    bench.Run(3);
    EXPECT_EQ(bench.workers, 1);
    EXPECT_TRUE(bench.Current().sample);
}

TEST(SamplerTest, WorkerLostWithoutPowerIsNotReplaced) {
    SamplerBench bench;
    bench.power = true;
    bench.Run(5.5);
    bench.power = false;
    bench.Run(2);
    bench.Get().OnGone(bench.Now());
    bench.Run(600);
    EXPECT_EQ(bench.workers, 1);
    EXPECT_FALSE(bench.hasWorker);
    bench.power = true;
    bench.Run(3);
    EXPECT_EQ(bench.workers, 2);
    EXPECT_TRUE(bench.Current().sample);
}

TEST(SamplerTest, UnknownPowerCountsAsPower) {
    SamplerBench bench;
    bench.Run(5);
    EXPECT_FALSE(bench.Current().powerIsKnown);
    EXPECT_TRUE(bench.Current().sample);
}

TEST(SamplerTest, IntelsCounterBecomesALoad) {
    SamplerBench bench(1, GPUTUNE_VENDOR_INTEL);
    bench.counterGrowth = 0.25;
    bench.Run(0.5);
    ASSERT_TRUE(bench.Current().sample);
    EXPECT_FALSE(bench.Current().sample->load);
    bench.Run(5);
    ASSERT_TRUE(bench.Current().sample->load);
    EXPECT_NEAR(*bench.Current().sample->load, 0.25, 0.01);
}

TEST(SamplerTest, NoLoadOfBoardsThatTellThePercentage) {
    SamplerBench bench;
    bench.counterGrowth = 0.25;
    bench.Run(5);
    EXPECT_FALSE(bench.Current().sample->load);
}

TEST(SamplerTest, NoLoadOverALostWorker) {
    SamplerBench bench(1, GPUTUNE_VENDOR_INTEL);
    bench.counterGrowth = 0.25;
    bench.Run(5.5);
    bench.Get().OnGone(bench.Now());
    bench.Run(0.4);
    ASSERT_TRUE(bench.Current().sample);
    EXPECT_FALSE(bench.Current().sample->load);
    bench.Run(2);
    EXPECT_TRUE(bench.Current().sample->load);
}

TEST(SamplerTest, NoLoadOverTheMachinesSleep) {
    SamplerBench bench(60, GPUTUNE_VENDOR_INTEL);
    bench.counterGrowth = 0.25;
    bench.Run(121);
    ASSERT_TRUE(bench.Current().sample->load);
    bench.now += 100;
    bench.Run(1);
    ASSERT_TRUE(bench.Current().sample);
    EXPECT_FALSE(bench.Current().sample->load);
}

}  // namespace
