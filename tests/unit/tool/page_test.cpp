// The page of a recording, as text. tests/tool/page_test looks at it in a browser.
#include <gtest/gtest.h>

#include <algorithm>

#include "tool/page/PageParts.h"
#include "tool/recording/RecordingPage.h"

namespace gputune::tool {
namespace {

Series SomeSeries(std::vector<std::optional<double>> values) {
    return {"gpu_temperature", "GPU Temperature", Unit::Celsius, Quantity::Temperature, std::move(values)};
}

Recording SomeRecording() {
    Recording recording;
    recording.start = "2025-01-31T12:00:00.000";
    recording.end = "2025-01-31T12:00:02.000";
    recording.seconds = {0, 1, 2};
    recording.series = {SomeSeries({60, std::nullopt, 66})};
    recording.adapterName = "Some Board";
    return recording;
}

bool Has(std::string const& page, std::string const& text) {
    return page.find(text) != std::string::npos;
}

TEST(ToolPage, SummaryCountsAvailableReadings) {
    Summary const summary = Summarize(SomeSeries({std::nullopt, 3.0, -1.0, std::nullopt, 1.0, std::nullopt}));
    EXPECT_EQ(summary.count, 3U);
    EXPECT_EQ(summary.minimum, -1);
    EXPECT_EQ(summary.average, 1);
    EXPECT_EQ(summary.maximum, 3);
    EXPECT_EQ(summary.last, 1);
    EXPECT_EQ(Summarize(SomeSeries({std::nullopt})).count, 0U);
}

TEST(ToolPage, AverageOfHugeReadingsStaysANumber) {
    EXPECT_NEAR(Summarize(SomeSeries({1e308, 1e308, 1e308})).average, 1e308, 1e295);
}

TEST(ToolPage, EverythingWithAMeaningInHtmlIsEscaped) {
    EXPECT_EQ(EscapeHtml("<a href='x' id=\"y\">&"), "&lt;a href=&#39;x&#39; id=&quot;y&quot;&gt;&amp;");
}

TEST(ToolPage, PageHoldsSummaryDataAndLibrary) {
    std::string const page = RecordingPage(SomeRecording(), "run.csv");
    EXPECT_TRUE(page.starts_with("<!DOCTYPE html>"));
    EXPECT_TRUE(Has(page, "<h1>Some Board</h1>"));
    EXPECT_TRUE(Has(page, "run.csv \u00b7 started 2025-01-31 12:00:00.000 \u00b7 0:02 \u00b7 3 readings"));
    EXPECT_TRUE(Has(page, "<td>60</td><td>63</td><td>66</td><td>66</td><td>\u00b0C</td>"));
    // 0, 1000 and 1000 thousandths more; 60, none, 6 more.
    EXPECT_TRUE(Has(page, "\"count\": 3"));
    EXPECT_TRUE(Has(page, "\"decimals\": 0,\n\"values\": [\n\"AACC\"\n]"))
        << page.substr(page.find("\"seconds\""), 100);
    EXPECT_TRUE(Has(page, "\"values\": [\n\"4DAAM\"\n],\n\"gaps\": [\n\"CC\"\n]"));
    EXPECT_EQ(Has(page, "var uPlot="), HasCharts());
    EXPECT_EQ(Has(page, "The MIT License"), HasCharts());
    EXPECT_FALSE(Has(page, "{{"));
}

TEST(ToolPage, NothingOfTheFileBecomesMarkup) {
    Recording recording = SomeRecording();
    recording.adapterName = "</script><img src=x>{{data}}";
    recording.remarks = {{1, 2, "the column \"<b>\" is not known"}};
    recording.series[0].title = "</script><b>";
    std::string const page = RecordingPage(recording, "<i>.csv");
    for (char const* const markup : {"<img", "<b>", "<i>"}) {
        EXPECT_FALSE(Has(page, markup)) << markup;
    }
    EXPECT_TRUE(Has(page, "<h1>&lt;/script&gt;&lt;img src=x&gt;{{data}}</h1>"));
    EXPECT_TRUE(Has(page, "Line 1, column 2: the column &quot;&lt;b&gt;&quot; is not known."));
    EXPECT_TRUE(Has(page, "\\u003c/script>\\u003cb>"));
}

TEST(ToolPage, BytesThatAreNoUtf8DoNotFailThePage) {
    Recording recording = SomeRecording();
    recording.adapterName = "B\xFF";
    recording.series[0].title = "T\xFF";
    EXPECT_TRUE(Has(RecordingPage(recording, "run.csv"), "T\uFFFD"));
}

TEST(ToolPage, FanNeedsItsSpeedAndATemperature) {
    Recording recording = SomeRecording();
    EXPECT_TRUE(Has(RecordingPage(recording, "run.csv"), "\"fan\": null"));
    recording.series.push_back({"fan_speed", "Fan Speed(RPM)", Unit::Rpm, Quantity::Fan, {900, 950, 1000}});
    recording.fanCurve = {{20, 50}, {100, 95}};
    EXPECT_TRUE(Has(RecordingPage(recording, "run.csv"), "\"curve\": [\n[\n50,\n20\n],\n[\n95,\n100\n]\n]"));
}

TEST(ToolPage, UnsureReadingsAreASeriesOfTheirOwnAndNotInTheSummary) {
    Recording recording = SomeRecording();
    recording.series.push_back(
        {"fan_speed", "Fan Speed(RPM)", Unit::Rpm, Quantity::Fan, {900, 0, 0}, {false, true, true}});
    std::string const page = RecordingPage(recording, "run.csv");
    EXPECT_TRUE(Has(page, "<td>900</td><td>900</td><td>900</td><td>900</td><td>rpm</td>"));
    EXPECT_TRUE(Has(page, "Fan Speed(RPM): 2 readings of 0 rpm are unsure: the fan stopped, or ran at one speed"));
    std::size_t const sure = page.find("\"title\": \"Fan Speed(RPM)\"");
    std::size_t const unsure = page.find("\"title\": \"Fan Speed(RPM), unsure\"");
    ASSERT_NE(sure, std::string::npos);
    ASSERT_NE(unsure, std::string::npos);
    // One reading, then a gap of two; a gap of one, then two readings.
    EXPECT_EQ(page.find("\"gaps\": [\n\"CE\"\n]", sure), page.find("\"gaps\"", sure));
    EXPECT_EQ(page.find("\"gaps\": [\n\"AC\"\n]", unsure), page.find("\"gaps\"", unsure));
    recording.series[1].unsure = {false, true, false};
    EXPECT_TRUE(Has(RecordingPage(recording, "run.csv"), "1 reading of 0 rpm is unsure"));
    recording.series[1].unsure = {true, true, true};
    EXPECT_TRUE(Has(RecordingPage(recording, "run.csv"), "<td>\u2013</td>"));
}

TEST(ToolPage, NoLineOfTheDataIsLong) {
    Recording recording = SomeRecording();
    recording.series[0].values.clear();
    recording.seconds.clear();
    for (int i = 0; i < 100000; ++i) {
        recording.seconds.push_back(i);
        recording.series[0].values.emplace_back(60 + i * 7 % 13);
    }
    std::string const page = RecordingPage(recording, "run.csv");
    std::size_t longest = 0;
    std::size_t const end = page.find("</script>");
    for (std::size_t at = page.find("id=\"recording\""); at < end; at = page.find('\n', at) + 1) {
        longest = std::max(longest, page.find('\n', at) - at);
    }
    EXPECT_LT(longest, 1100U);
    EXPECT_GT(longest, 900U);
}

TEST(ToolPage, FurtherWarningsAreCounted) {
    Recording recording = SomeRecording();
    recording.furtherRemarks = 480;
    EXPECT_TRUE(Has(RecordingPage(recording, "run.csv"), "And 480 further warnings."));
}

}  // namespace
}  // namespace gputune::tool
