// The page of a recording, as text. tests/tool/page_test looks at it in a browser.
#include <gtest/gtest.h>

#include "RecordingPage.h"

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
    SeriesSummary const summary = Summarize(SomeSeries({std::nullopt, 3.0, -1.0, std::nullopt, 1.0, std::nullopt}));
    EXPECT_EQ(summary.minimum, -1);
    EXPECT_EQ(summary.average, 1);
    EXPECT_EQ(summary.maximum, 3);
    EXPECT_EQ(summary.last, 1);
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
    EXPECT_TRUE(Has(page, "\"seconds\":[0.0,1.0,2.0]"));
    EXPECT_TRUE(Has(page, "\"values\":[60.0,null,66.0]"));
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
    EXPECT_TRUE(Has(RecordingPage(recording, "run.csv"), "\"fan\":null"));
    recording.series.push_back({"fan_speed", "Fan Speed(RPM)", Unit::Rpm, Quantity::Fan, {900, 950, 1000}});
    recording.fanCurve = {{20, 50}, {100, 95}};
    EXPECT_TRUE(Has(RecordingPage(recording, "run.csv"), "\"curve\":[[50,20],[95,100]]"));
}

}  // namespace
}  // namespace gputune::tool
