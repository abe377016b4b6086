// The lines between a supervisor and its worker, and the journal: what is written is read back.
#include <gtest/gtest.h>

#include "tool/hold/Journal.h"
#include "tool/hold/Protocol.h"
#include "tool/values/FanCurve.h"

using namespace gputune::tool;

namespace {

TakeBack SomeTakeBack() {
    return {.fan = true,
            .power = true,
            .clocks = true,
            .before = {.fanCurve = {{.FanSpeed = 30, .FanTemperature = 40}}, .powerLimit = -5, .gpuClock = 1300.5},
            .journalFile = "C:\\Users\\J\u00fcrgen\\hold \"1\".json"};
}

void ExpectSame(TakeBack const& one, TakeBack const& other) {
    EXPECT_EQ(one.fan, other.fan);
    EXPECT_EQ(one.power, other.power);
    EXPECT_EQ(one.clocks, other.clocks);
    EXPECT_EQ(FanCurveText(one.before.fanCurve), FanCurveText(other.before.fanCurve));
    EXPECT_EQ(one.before.powerLimit, other.before.powerLimit);
    EXPECT_EQ(one.before.temperatureLimit, other.before.temperatureLimit);
    EXPECT_EQ(one.before.gpuClock, other.before.gpuClock);
    EXPECT_EQ(one.before.gpuVoltage, other.before.gpuVoltage);
    EXPECT_EQ(one.before.memoryClock, other.before.memoryClock);
    EXPECT_EQ(one.journalFile, other.journalFile);
}

TEST(HoldProtocolTest, EveryOrderIsReadBack) {
    for (int order = 0; order < kOrders; ++order) {
        Request const request{.order = static_cast<Order>(order),
                              .percent = order == static_cast<int>(Order::FanSpeed) ? 45 : 0,
                              .curve = {{.FanSpeed = 30, .FanTemperature = 50}},
                              .profile = "oc",
                              .takeBack = SomeTakeBack()};
        std::string const line = ToLine(request);
        EXPECT_EQ(line.find('\n'), std::string::npos);
        std::optional<Request> const read = ReadRequest(line);
        ASSERT_TRUE(read) << line;
        EXPECT_EQ(read->order, request.order);
        EXPECT_EQ(read->percent, request.percent);
        EXPECT_EQ(FanCurveText(read->curve), "50:30");
        EXPECT_EQ(read->profile, "oc");
        ASSERT_TRUE(read->takeBack);
        ExpectSame(*read->takeBack, SomeTakeBack());
    }
}

TEST(HoldProtocolTest, AnswerIsReadBack) {
    Answer answer{.order = Order::Sample, .done = false, .problem = "It\nfailed.", .code = "refused", .exitCode = 3};
    answer.readings[GPUTUNE_HWM_GPU_TEMPERATURE] = 65.5;
    answer.readings.fanUnsure = true;
    answer.failedCalls = {{"ADL2_X", "failed: -1"}};
    answer.shown.powerLimit = 10;
    answer.board = BoardFacts{.vendor = 1, .api = 3, .adapter = 6, .name = "A \xFF board", .identityIsOfAnother = true};
    answer.board->fan.Valid = true;
    answer.board->fan.PointCount = 5;
    answer.board->fan.Points[4] = {.DefaultSpeed = 1,
                                   .DefaultTemperature = 2,
                                   .MaxSpeed = 3,
                                   .MinSpeed = 4,
                                   .MaxTemperature = 5,
                                   .MinTemperature = 6,
                                   .CurrentSpeed = 7,
                                   .CurrentTemperature = 8};
    answer.board->power = {.Valid = true, .Default = 0, .Max = 50, .Min = -40, .Current = -1};
    std::string const line = ToLine(answer);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    std::optional<Answer> const read = ReadAnswer(line);
    ASSERT_TRUE(read) << line;
    EXPECT_FALSE(read->done);
    EXPECT_EQ(read->problem, "It\nfailed.");
    EXPECT_EQ(read->code, "refused");
    EXPECT_EQ(read->exitCode, 3);
    EXPECT_EQ(read->readings[GPUTUNE_HWM_GPU_TEMPERATURE], 65.5);
    EXPECT_EQ(read->readings.CountAvailable(), 1U);
    EXPECT_TRUE(read->readings.fanUnsure);
    EXPECT_EQ(read->failedCalls, answer.failedCalls);
    EXPECT_EQ(read->shown.powerLimit, 10);
    ASSERT_TRUE(read->board);
    EXPECT_EQ(read->board->adapter, 6);
    EXPECT_TRUE(read->board->identityIsOfAnother);
    EXPECT_EQ(read->board->fan.PointCount, 5);
    EXPECT_EQ(read->board->fan.Points[4].MinSpeed, 4);
    EXPECT_EQ(read->board->fan.Points[4].MaxTemperature, 5);
    EXPECT_EQ(read->board->power.Min, -40);
    EXPECT_TRUE(read->board->power.Valid);
}

TEST(HoldProtocolTest, OtherLinesAreNothing) {
    for (char const* const line :
         {"", "x", "{}", "[]", "null", R"({"version":1})", R"({"version":1,"order":"jump"})",
          R"({"version":2,"order":"ping"})", R"({"version":1,"order":"arm","take_back":{}})",
          R"({"version":1,"order":"fan_speed","percent":"x"})", R"({"version":1,"order":7})"}) {
        EXPECT_FALSE(ReadRequest(line)) << line;
        EXPECT_FALSE(ReadAnswer(line)) << line;
    }
    EXPECT_FALSE(ReadAnswer(R"({"version":1,"answer":"sample","done":true,"readings":[1]})"));
    EXPECT_FALSE(ReadAnswer(R"({"version":1,"answer":"sample"})"));
}

TEST(JournalTest, IsReadBack) {
    Journal const journal{.boardFile = "b.json", .boardState = "s", .adapter = 6, .takeBack = SomeTakeBack()};
    std::optional<Journal> const read = ReadJournal(ToText(journal));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->boardFile, "b.json");
    EXPECT_EQ(read->boardState, "s");
    EXPECT_EQ(read->adapter, 6);
    ExpectSame(read->takeBack, journal.takeBack);
}

TEST(JournalTest, WhatWasCutOffIsDamaged) {
    std::string const text = ToText({.takeBack = SomeTakeBack()});
    // Without its line end it is whole.
    for (std::size_t length = 0; length + 1 < text.size(); ++length) {
        EXPECT_FALSE(ReadJournal(text.substr(0, length))) << length;
    }
    EXPECT_FALSE(ReadJournal(std::string(text.size(), '\0')));
    EXPECT_FALSE(ReadJournal(R"({"version":9})"));
}

}  // namespace
