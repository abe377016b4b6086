// What the monitor shows in a console. tests/tool/console_test.cpp sees it on one.
#include <gtest/gtest.h>

#include <algorithm>

#include "tool/output/Dashboard.h"
#include "tool/values/Text.h"

namespace gputune::tool {
namespace {

Readings Some(double clock, double load) {
    Readings readings{};
    readings[GPUTUNE_HWM_GPU_CORE_CLOCK] = clock;
    readings[GPUTUNE_HWM_GPU_LOAD] = load;
    return readings;
}

std::vector<std::string> Lines(Dashboard const& dashboard, std::size_t width, std::size_t height,
                               Glyphs glyphs = Glyphs::Curves) {
    std::vector<std::string> lines;
    for (StyledLine const& line : dashboard.Frame(width, height, glyphs, "hint")) {
        lines.push_back(TerminalText(line, false));
    }
    return lines;
}

Dashboard SomeDashboard() {
    Dashboard dashboard("Board", GPUTUNE_VENDOR_AMD, 1);
    dashboard.Add("12:00", Some(1000, 0), std::nullopt);
    dashboard.Add("12:01", Some(2000, 50), std::nullopt);
    dashboard.Add("12:02", Some(1500, 100), std::nullopt);
    return dashboard;
}

TEST(ToolDashboard, RowHasNowMinimumAverageMaximumAndThePast) {
    std::vector<std::string> const lines = Lines(SomeDashboard(), 72, 20);
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[0], PadRight("Board", 72));
    EXPECT_EQ(lines[1], PadRight("12:02  3 readings, one every 1 s", 72));
    EXPECT_EQ(lines[2], PadRight("Sensor              now      min      avg      max      last 0:16", 72));
    EXPECT_EQ(lines[3], "GPU Core Clock     1500     1000     1500     2000 MHz               \u2581\u2588\u2585");
    EXPECT_EQ(lines[4], "GPU Load            100        0       50      100 %                 \u2581\u2585\u2588");
    EXPECT_EQ(lines[5], PadRight("hint", 72));
}

TEST(ToolDashboard, BarsShowThePartOfTheScale) {
    std::vector<std::string> const lines = Lines(SomeDashboard(), 64, 20, Glyphs::Bars);
    EXPECT_TRUE(lines[3].ends_with("MHz  \u2588\u2588\u2588\u2588\u2588\u2588\u2591\u2591")) << lines[3];
    EXPECT_TRUE(lines[4].ends_with("%    \u2588\u2588\u2588\u2588\u2588\u2588\u2588\u2588")) << lines[4];
}

TEST(ToolDashboard, NarrowWindowLosesThePastThenTheAverageThenTheExtremes) {
    Dashboard const dashboard = SomeDashboard();
    EXPECT_EQ(Lines(dashboard, 55, 20)[3], PadRight("GPU Core Clock     1500     1000     1500     2000 MHz", 55));
    EXPECT_EQ(Lines(dashboard, 50, 20)[3], PadRight("GPU Core Clock     1500     1000     2000 MHz", 50));
    EXPECT_EQ(Lines(dashboard, 40, 20)[3], PadRight("GPU Core Clock     1500 MHz", 40));
    EXPECT_EQ(Lines(dashboard, 25, 20)[3], PadRight("GPU Core Clock     1500", 25));
    EXPECT_EQ(Lines(dashboard, 10, 20)[3], "GPU Core C");
}

TEST(ToolDashboard, EveryLineFitsIntoEveryWindow) {
    Dashboard dashboard("A board with quite a long name, of whatever maker", GPUTUNE_VENDOR_AMD, 0.5);
    Readings all;
    for (int round = 0; round < 600; ++round) {
        all.fill(round * 1.37);
        dashboard.Add("2025-01-31T12:00:00.000", all, 60.0);
    }
    for (std::size_t width = 0; width < 140; ++width) {
        for (std::size_t const height : {0U, 1U, 2U, 3U, 4U, 5U, 12U, 60U}) {
            std::vector<std::string> const lines = Lines(dashboard, width, height);
            ASSERT_LE(lines.size(), height);
            for (std::string const& line : lines) {
                ASSERT_EQ(DisplayWidth(line), width) << height;
            }
        }
    }
}

TEST(ToolDashboard, LowWindowSaysHowManySensorsAreHidden) {
    Dashboard dashboard("Board", GPUTUNE_VENDOR_AMD, 1);
    Readings all;
    all.fill(1.0);
    dashboard.Add("12:00", all, std::nullopt);
    std::vector<std::string> const lines = Lines(dashboard, 60, 10);
    ASSERT_EQ(lines.size(), 10U);
    EXPECT_TRUE(lines[7].starts_with("GPU Memory Temperature")) << lines[7];
    EXPECT_EQ(lines[8], PadRight("and 16 more: the window is too low", 60));
    EXPECT_EQ(lines[9], PadRight("hint", 60));
}

TEST(ToolDashboard, UnavailableReadingIsABlankInThePast) {
    Dashboard dashboard = SomeDashboard();
    Readings none{};
    dashboard.Add("12:03", none, std::nullopt);
    std::string const row = Lines(dashboard, 72, 20)[4];
    EXPECT_TRUE(row.starts_with("GPU Load              -        0       50      100 %")) << row;
    EXPECT_TRUE(row.ends_with("\u2581\u2585\u2588 ")) << row;
}

TEST(ToolDashboard, FrameRateIsARowWhenItIsRead) {
    Dashboard dashboard("Board", GPUTUNE_VENDOR_AMD, 1);
    dashboard.Add("12:00", Some(1, 1), 118.0);
    std::vector<std::string> const lines = Lines(dashboard, 40, 20);
    EXPECT_EQ(lines[5], PadRight("Frame rate          118 fps", 40));
}

TEST(ToolDashboard, ResetBeginsWithTheLastReading) {
    Dashboard dashboard = SomeDashboard();
    dashboard.Reset();
    EXPECT_EQ(Lines(dashboard, 72, 20)[3].substr(0, 54), "GPU Core Clock     1500     1500     1500     1500 MHz");
    EXPECT_TRUE(Lines(dashboard, 72, 20)[1].starts_with("12:02  1 reading,"));
}

TEST(ToolDashboard, BoardWithoutSensorsSaysSo) {
    Dashboard dashboard("Board", GPUTUNE_VENDOR_AMD, 1);
    dashboard.Add("12:00", Readings{}, std::nullopt);
    EXPECT_EQ(Lines(dashboard, 40, 20)[3], PadRight("no sensor available", 40));
}

TEST(ToolDashboard, AverageLiesBetweenMinimumAndMaximum) {
    Dashboard dashboard("Board", GPUTUNE_VENDOR_AMD, 1);
    dashboard.Add("12:00", Some(386.67, 0.04), std::nullopt);
    EXPECT_EQ(Lines(dashboard, 72, 20)[3].substr(0, 54), "GPU Core Clock   386.67   386.67   386.67   386.67 MHz");
    EXPECT_EQ(Lines(dashboard, 72, 20)[4].substr(0, 52), "GPU Load           0.04     0.04     0.04     0.04 %");
}

TEST(ToolDashboard, UnsureFanIsMarkedAndDoesNotCount) {
    Dashboard dashboard("Board", GPUTUNE_VENDOR_AMD, 1);
    Readings readings{};
    readings[GPUTUNE_HWM_FAN_SPEED_RPM] = 900;
    dashboard.Add("12:00", readings, std::nullopt);
    EXPECT_EQ(Lines(dashboard, 100, 20).size(), 5U);
    readings[GPUTUNE_HWM_FAN_SPEED_RPM] = 0;
    readings.fanUnsure = true;
    dashboard.Add("12:01", readings, std::nullopt);
    std::vector<std::string> const lines = Lines(dashboard, 100, 20);
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_TRUE(lines[3].starts_with("Fan Speed(RPM)       0?      900      900      900 rpm")) << lines[3];
    EXPECT_EQ(lines[4], PadRight(std::string("? ") + kUnsureFan.text, 100));
    dashboard.Reset();
    EXPECT_TRUE(Lines(dashboard, 100, 20)[3].starts_with("Fan Speed(RPM)       0?        -        -        - rpm"));
    EXPECT_EQ(Lines(dashboard, 100, 5).size(), 5U);
}

TEST(ToolDashboard, StylesBecomeSequencesOrNothing) {
    StyledLine const line{{"a", Style::Plain}, {"b", Style::Strong}, {"", Style::Red}};
    EXPECT_EQ(TerminalText(line, true), "a\x1b[1mb\x1b[m");
    EXPECT_EQ(TerminalText(line, false), "ab");
}

}  // namespace
}  // namespace gputune::tool
