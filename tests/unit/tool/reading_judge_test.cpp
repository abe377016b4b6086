// Which temperatures are acted upon.
#include "tool/hold/ReadingJudge.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace gputune::tool;

namespace {

class ReadingJudgeTest : public testing::Test {
protected:
    std::optional<std::string> At(double time, std::optional<double> temperature, double load = 50) {
        return judge_.Judge({.time = time, .duration = 0.01, .temperature = temperature, .load = load});
    }

    // A steady temperature for so many seconds; the last judgement.
    std::optional<std::string> Steady(double seconds, double temperature, double load) {
        std::optional<std::string> last;
        for (double const end = time_ + seconds; time_ < end; ++time_) {
            last = At(time_, temperature, load);
        }
        return last;
    }

    ReadingJudge judge_;
    double time_ = 0;
};

TEST_F(ReadingJudgeTest, BelievesOrdinaryReadings) {
    EXPECT_FALSE(At(0, 40));
    EXPECT_FALSE(At(1, 41.5));
    EXPECT_FALSE(At(2, 39));
}

TEST_F(ReadingJudgeTest, AbsentReading) {
    EXPECT_EQ(At(0, std::nullopt), "the temperature was not read");
}

TEST_F(ReadingJudgeTest, LateReading) {
    ReadingJudge::Reading late{.time = 3, .duration = 2.5, .temperature = 50};
    EXPECT_EQ(judge_.Judge(late), "the temperature came late, after 2.5 s");
    late.duration = 1.9;
    EXPECT_FALSE(judge_.Judge(late));
}

TEST_F(ReadingJudgeTest, LimitsOfWhatIsPlausible) {
    EXPECT_FALSE(At(0, 0));
    EXPECT_EQ(At(0, -0.5), "a temperature of -0.5 °C is not plausible");
    ReadingJudge hot;
    EXPECT_FALSE(hot.Judge({.time = 0, .temperature = 125}));
    EXPECT_TRUE(hot.Judge({.time = 1, .temperature = 126}));
    EXPECT_TRUE(hot.Judge({.time = 1, .temperature = std::nan("")}));
    EXPECT_TRUE(hot.Judge({.time = 1, .temperature = INFINITY}));
}

TEST_F(ReadingJudgeTest, JumpOfMoreThanFortyKelvinsInASecond) {
    EXPECT_FALSE(At(0, 40));
    EXPECT_FALSE(At(1, 80));
    EXPECT_EQ(At(2, 39), "the temperature jumped from 80 °C to 39 °C");
    EXPECT_FALSE(At(3, 40)) << "from then on it is compared with the new one";
}

TEST_F(ReadingJudgeTest, JumpIsMeasuredOverTheTimeBetweenReadings) {
    EXPECT_FALSE(At(0, 30));
    EXPECT_FALSE(At(2, 100));
    // Closer readings get no smaller allowance than a second's.
    EXPECT_FALSE(At(2.2, 65));
    EXPECT_TRUE(At(2.4, 110));
}

TEST_F(ReadingJudgeTest, ImplausibleReadingIsNotComparedWith) {
    EXPECT_FALSE(At(0, 50));
    EXPECT_TRUE(At(1, 200));
    EXPECT_FALSE(At(2, 51));
}

TEST_F(ReadingJudgeTest, UnchangedForAMinuteWhileTheLoadRises) {
    EXPECT_FALSE(Steady(40, 50, 5));
    EXPECT_FALSE(Steady(20, 50, 90)) << "not a minute yet";
    EXPECT_EQ(Steady(15, 50, 90), "the temperature has stood at 50 °C for a minute while the load rose");
    EXPECT_FALSE(Steady(1, 51, 90)) << "it moves again";
}

TEST_F(ReadingJudgeTest, UnchangedWithASteadyLoadIsFine) {
    EXPECT_FALSE(Steady(600, 50, 90));
}

TEST_F(ReadingJudgeTest, UnchangedWhileTheLoadFallsIsFine) {
    EXPECT_FALSE(Steady(60, 50, 90));
    EXPECT_FALSE(Steady(60, 50, 5));
}

TEST_F(ReadingJudgeTest, ShortBurstOfLoadIsNoRise) {
    EXPECT_FALSE(Steady(60, 50, 5));
    EXPECT_FALSE(Steady(4, 50, 100));
}

TEST_F(ReadingJudgeTest, BoardWithoutALoadIsNeverStuck) {
    for (int i = 0; i < 300; ++i) {
        EXPECT_FALSE(judge_.Judge({.time = static_cast<double>(i), .temperature = 50}));
    }
}

TEST_F(ReadingJudgeTest, AfterAPauseNothingIsCompared) {
    EXPECT_FALSE(At(0, 90));
    judge_.Reset();
    EXPECT_FALSE(At(1, 20));
}

}  // namespace
