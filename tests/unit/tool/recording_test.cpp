// Recordings of the host tool: what is written, what is read back, and what is wrong with it.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "tool/recording/Csv.h"
#include "tool/recording/RecordingFormat.h"
#include "tool/recording/RecordingReader.h"
#include "tool/values/FanCurve.h"
#include "tool/values/Text.h"

namespace gputune::tool {
namespace {

Readings SomeReadings() {
    Readings readings{};
    readings[GPUTUNE_HWM_GPU_CORE_CLOCK] = 1500.0;
    readings[GPUTUNE_HWM_GPU_TEMPERATURE] = 65.5;
    readings[GPUTUNE_HWM_GPU_LOAD] = 40.0;
    return readings;
}

RecordingFormat Format(std::uint32_t vendor = GPUTUNE_VENDOR_AMD) {
    return RecordingFormat({.vendor = vendor, .frameRate = false, .name = "", .fanCurve = {}});
}

// The error of a text that is no recording, as "line:column: message".
std::string ErrorOf(std::string const& text) {
    try {
        ReadRecording(text);
    } catch (CsvError const& error) {
        return std::to_string(error.line) + ":" + std::to_string(error.column) + ": " + error.message;
    }
    return "none";
}

std::string const heading = "time,gpu_core_clock_mhz,gpu_temperature_celsius\n";

// ---- Fields ----

std::vector<std::string> Fields(std::string const& line) {
    CsvReader reader(line);
    std::vector<CsvField> fields;
    std::vector<std::string> texts;
    if (reader.Next(fields)) {
        for (CsvField const& field : fields) {
            texts.push_back(field.text);
        }
    }
    return texts;
}

TEST(ToolCsv, FieldsAreSeparatedByCommas) {
    EXPECT_EQ(Fields("a,,c,"), (std::vector<std::string>{"a", "", "c", ""}));
}

TEST(ToolCsv, QuotedFieldHoldsCommasAndQuotationMarks) {
    EXPECT_EQ(Fields("1,\"a, \"\"b\"\"\",2"), (std::vector<std::string>{"1", "a, \"b\"", "2"}));
}

TEST(ToolCsv, WhatIsQuotedReadsBackTheSame) {
    for (std::string const text : {"plain", "a,b", "say \"x\"", "\"", ""}) {
        EXPECT_EQ(Fields(CsvQuote(text) + ",end")[0], text);
    }
    EXPECT_EQ(CsvQuote("a\r\nb"), "\"a  b\"");
}

TEST(ToolCsv, ByteOrderMarkCarriageReturnsAndEmptyLinesAreSkipped) {
    CsvReader reader("\xEF\xBB\xBF\r\na,b\r\n\n");
    std::vector<CsvField> fields;
    ASSERT_TRUE(reader.Next(fields));
    EXPECT_EQ(reader.LineNumber(), 2U);
    EXPECT_EQ(fields[1].text, "b");
    EXPECT_FALSE(reader.Next(fields));
}

TEST(ToolCsv, ColumnsCountCharacters) {
    CsvReader reader("\u00b0\u00b0,x");
    std::vector<CsvField> fields;
    ASSERT_TRUE(reader.Next(fields));
    EXPECT_EQ(fields[1].column, 4U);
}

// ---- Writing ----

TEST(ToolRecording, HeadingNamesSensorAndUnit) {
    std::string const line = Format().Heading();
    EXPECT_TRUE(line.starts_with("time,gpu_core_clock_mhz,gpu_memory_clock_mhz,gpu_temperature_celsius,")) << line;
    EXPECT_NE(line.find(",fan_duty_percent,fan_speed_rpm,gpu_load_percent,"), std::string::npos);
    EXPECT_TRUE(line.ends_with(",tdp_limit_percent,adapter_name,fan_curve")) << line;
    EXPECT_NE(Format(GPUTUNE_VENDOR_INTEL).Heading().find(",gpu_load_raw,"), std::string::npos);
}

TEST(ToolRecording, LineHasAColumnForEverySensor) {
    std::string const line = Format().Line("12:00", SomeReadings(), std::nullopt);
    EXPECT_EQ(line, "12:00,1500,,65.5,,,,,40,,,,,,,,,,,,,,,");
    std::string const names = Format().Heading();
    EXPECT_EQ(std::count(line.begin(), line.end(), ','), std::count(names.begin(), names.end(), ','));
}

TEST(ToolRecording, NotANumberIsEmpty) {
    Readings readings{};
    readings[GPUTUNE_HWM_GPU_CORE_CLOCK] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Format().Line("t", readings, std::nullopt), "t,,,,,,,,,,,,,,,,,,,,,,,");
}

TEST(ToolRecording, NameAndCurveStandInTheFirstLineOnly) {
    RecordingFormat format(
        {.vendor = GPUTUNE_VENDOR_AMD, .frameRate = false, .name = "A, B", .fanCurve = {{20, 50}, {100, 95}}});
    EXPECT_TRUE(format.Line("t", {}, std::nullopt).ends_with(",\"A, B\",50:20 95:100"));
    EXPECT_TRUE(format.Line("t", {}, std::nullopt).ends_with(",,"));
}

TEST(ToolRecording, FrameRateHasAColumnWhenItIsRead) {
    RecordingFormat format({.vendor = GPUTUNE_VENDOR_AMD, .frameRate = true, .name = "", .fanCurve = {}});
    EXPECT_NE(format.Heading().find(",frame_rate_fps,adapter_name"), std::string::npos);
    EXPECT_TRUE(format.Line("t", {}, 60).ends_with(",60,,"));
    EXPECT_TRUE(format.Line("t", {}, std::nullopt).ends_with(",,,"));
}

TEST(ToolRecording, FanCurveIsTheOneInEffect) {
    FanSetting setting{};
    setting.Valid = true;
    setting.PointCount = 2;
    setting.Points[0].CurrentTemperature = 50;
    setting.Points[0].CurrentSpeed = 20;
    setting.Points[1].CurrentTemperature = 90;
    setting.Points[1].CurrentSpeed = 80;
    std::vector<FanTablePoint> const curve = FanCurveOf(setting);
    ASSERT_EQ(curve.size(), 2U);
    EXPECT_EQ(curve[1].FanTemperature, 90);
    EXPECT_EQ(curve[1].FanSpeed, 80);
    setting.Points[1].CurrentSpeed = -1;
    EXPECT_TRUE(FanCurveOf(setting).empty());
    setting.PointCount = 1;
    EXPECT_TRUE(FanCurveOf(setting).empty());
}

// ---- Reading ----

TEST(ToolRecording, WhatIsWrittenReadsBack) {
    RecordingFormat format(
        {.vendor = GPUTUNE_VENDOR_INTEL, .frameRate = true, .name = "A \"B\", C", .fanCurve = {{20, 50}, {100, 95}}});
    std::string text = format.Heading() + "\n";
    text += format.Line("2025-12-31T23:59:59.500", SomeReadings(), 60) + "\n";
    text += format.Line("2026-01-01T00:00:01.000", SomeReadings(), std::nullopt) + "\n";
    Recording const recording = ReadRecording(text);
    EXPECT_EQ(recording.start, "2025-12-31T23:59:59.500");
    EXPECT_EQ(recording.end, "2026-01-01T00:00:01.000");
    EXPECT_EQ(recording.seconds, (std::vector<double>{0, 1.5}));
    EXPECT_EQ(recording.adapterName, "A \"B\", C");
    ASSERT_EQ(recording.fanCurve.size(), 2U);
    EXPECT_EQ(recording.fanCurve[0].FanTemperature, 50);
    EXPECT_EQ(recording.fanCurve[0].FanSpeed, 20);
    ASSERT_EQ(recording.series.size(), 4U);
    EXPECT_EQ(recording.series[1].code, "gpu_temperature");
    EXPECT_EQ(recording.series[1].unit, Unit::Celsius);
    EXPECT_EQ(recording.series[2].unit, Unit::Raw);
    EXPECT_EQ(recording.series[3].values, (std::vector<std::optional<double>>{60, std::nullopt}));
    EXPECT_TRUE(recording.remarks.empty());
}

TEST(ToolRecording, EveryColumnThatIsWrittenIsKnown) {
    for (std::uint32_t const vendor : {GPUTUNE_VENDOR_AMD, GPUTUNE_VENDOR_INTEL, GPUTUNE_VENDOR_NVIDIA}) {
        Readings readings;
        readings.fill(1.0);
        RecordingFormat format({.vendor = vendor, .frameRate = true, .name = "", .fanCurve = {}});
        Recording const recording =
            ReadRecording(format.Heading() + "\n" + format.Line("2025-01-01T00:00:00", readings, 1) + "\n");
        EXPECT_EQ(recording.series.size(), 22U);
        EXPECT_TRUE(recording.remarks.empty());
    }
}

TEST(ToolRecording, SpreadsheetsFormIsAccepted) {
    Recording const recording =
        ReadRecording("\xEF\xBB\xBF\"gpu_core_clock_mhz\",time\r\n1500,2025-01-31 12:00:00\r\n\r\n");
    ASSERT_EQ(recording.series.size(), 1U);
    EXPECT_EQ(recording.series[0].values[0], 1500.0);
}

TEST(ToolRecording, UnknownColumnIsLeftOutWithARemark) {
    Recording const recording = ReadRecording("time,colour,vddc_millivolts\n2025-01-31T12:00:00,red,900\n");
    EXPECT_EQ(recording.series.size(), 1U);
    ASSERT_EQ(recording.remarks.size(), 1U);
    EXPECT_EQ(recording.remarks[0].line, 1U);
    EXPECT_EQ(recording.remarks[0].column, 6U);
    EXPECT_NE(recording.remarks[0].message.find("\"colour\""), std::string::npos);
}

TEST(ToolRecording, ClockSetBackGoesOnBehindTheLastReading) {
    Recording const recording = ReadRecording(heading +
                                              "2025-10-26T02:59:58,1,1\n2025-10-26T02:59:59,1,1\n"
                                              "2025-10-26T02:00:00,1,1\n2025-10-26T02:00:01,1,1\n");
    EXPECT_EQ(recording.seconds, (std::vector<double>{0, 1, 2, 3}));
    ASSERT_EQ(recording.remarks.size(), 1U);
    EXPECT_EQ(recording.remarks[0].line, 4U);
}

TEST(ToolRecording, LastLineThatWasCutOffIsLeftOut) {
    Recording const recording = ReadRecording(heading + "2025-01-31T12:00:00,1,2\n2025-01-31T12:00:0");
    EXPECT_EQ(recording.seconds.size(), 1U);
    ASSERT_EQ(recording.remarks.size(), 1U);
    EXPECT_EQ(recording.remarks[0].line, 3U);
}

TEST(ToolRecording, LastLineMayLackItsEnd) {
    EXPECT_EQ(ReadRecording(heading + "2025-01-31T12:00:00,1,2").seconds.size(), 1U);
}

TEST(ToolRecording, ErrorNamesLineAndColumn) {
    std::string const good = heading + "2025-01-31T12:00:00,1,2\n";
    EXPECT_EQ(ErrorOf(good + "2025-01-31T12:00:01,15oo,2\n"), "3:21: \"15oo\" is no number (gpu_core_clock_mhz)");
    EXPECT_EQ(ErrorOf(good + "2025-01-31T12:00:01,1,nan\n"), "3:23: \"nan\" is no number (gpu_temperature_celsius)");
    EXPECT_EQ(ErrorOf(good + "2025-01-31T12:00:01,1,\"65,5\"\n"),
              "3:23: \"65,5\" is no number (gpu_temperature_celsius)");
    EXPECT_EQ(ErrorOf(good + "2025-01-31T12:00:01,1\n"), "3:21: the line has 2 fields, the heading 3");
    EXPECT_EQ(ErrorOf(good + "2025-01-31T12:00:01,1,2,3\n"), "3:25: the line has 4 fields, the heading 3");
    EXPECT_EQ(ErrorOf(good + "\"2025,1,2\n"), "3:1: the quotation mark is not closed");
    EXPECT_EQ(ErrorOf(good + "\"a\"b,1,2\n"), "3:4: a comma is missing after the quotation mark");
}

TEST(ToolRecording, SemicolonsAndDecimalCommasAreUnderstood) {
    std::string const european = "time;\"gpu_core_clock_mhz\";gpu_temperature_celsius;adapter_name\r\n";
    Recording const recording = ReadRecording(european +
                                              "2025-01-31 12:00:00,500;1500;65,5;\"A, B; C\"\r\n"
                                              "2025-01-31 12:00:01,500;1501,25;66;\r\n");
    EXPECT_EQ(recording.seconds, (std::vector<double>{0, 1}));
    ASSERT_EQ(recording.series.size(), 2U);
    EXPECT_EQ(recording.series[0].values, (std::vector<std::optional<double>>{1500, 1501.25}));
    EXPECT_EQ(recording.series[1].values, (std::vector<std::optional<double>>{65.5, 66}));
    EXPECT_EQ(recording.adapterName, "A, B; C");
    EXPECT_TRUE(recording.remarks.empty());
    // Between semicolons a point is a decimal point, too, where there are no decimal commas.
    EXPECT_EQ(ReadRecording(european + "2025-01-31T12:00:00;1;65.5;\n").series[1].values[0], 65.5);
    EXPECT_EQ(ErrorOf(european + "2025-01-31T12:00:00;1;65,5;\n2025-01-31T12:00:01;1.500;65,5;\n"),
              "3:21: \"1.500\" is no number (gpu_core_clock_mhz)");
    EXPECT_EQ(ErrorOf(european + "2025-01-31T12:00:00;1.500,5;1;\n"),
              "2:21: \"1.500,5\" is no number (gpu_core_clock_mhz)");
    EXPECT_EQ(ErrorOf(european + "\"a\"b;1;2;\n"), "2:4: a semicolon is missing after the quotation mark");
}

TEST(ToolRecording, SemicolonIsQuotedForThoseWhoSeparateByIt) {
    EXPECT_EQ(CsvQuote("a;b"), "\"a;b\"");
    EXPECT_EQ(Fields("\"a;b\",c")[1], "c");
    EXPECT_EQ(Fields("a;b,c")[1], "b,c");
}

TEST(ToolRecording, TimesHaveNoRoundingErrors) {
    Recording const recording = ReadRecording(heading +
                                              "2025-01-31T12:00:00.100,1,1\n2025-01-31T12:00:00.200,1,1\n"
                                              "2025-01-31T12:00:01.123456789,1,1\n");
    EXPECT_EQ(recording.seconds, (std::vector<double>{0, 0.1, 1.023456}));
    // Every year fits.
    std::string const years = heading + "0000-01-01T00:00:00,1,1\n9999-12-31T23:59:59.999,1,1\n";
    EXPECT_NEAR(ReadRecording(years).seconds[1], 315569519999.999, 0.001);
}

TEST(ToolRecording, DamagedRecordingHasTwentyRemarksAndACount) {
    std::string text = heading;
    for (int i = 0; i < 100; ++i) {
        text += "2025-01-31T12:00:0" + std::to_string(9 - i % 10) + ",1,1\n";
    }
    Recording const recording = ReadRecording(text);
    EXPECT_EQ(recording.remarks.size(), 20U);
    EXPECT_EQ(recording.furtherRemarks, 70U);
    EXPECT_EQ(CountText(recording.furtherRemarks, "further warning"), "70 further warnings");
    EXPECT_EQ(CountText(1, "further warning"), "1 further warning");
}

TEST(ToolRecording, BytesThatAreNoTextAreShownEscaped) {
    using namespace std::string_literals;
    std::string const time = "2025-01-31T12:00:00,";
    EXPECT_EQ(ErrorOf(heading + time + "15\0o,2\n"s), "2:21: \"15\\x00o\" is no number (gpu_core_clock_mhz)");
    EXPECT_EQ(ErrorOf(heading + time + "1\xE9,2\n"), "2:21: \"1\\xE9\" is no number (gpu_core_clock_mhz)");
    EXPECT_EQ(ErrorOf(heading + "\x1b[2J,1,2\n"),
              "2:1: \"\\x1B[2J\" is no time; expected is the form 2025-01-31T12:34:56.789");
    EXPECT_NE(ErrorOf("time,vddc_millivolts,fan_curve\n" + time + "1,6\0\n"s).find("\"6\\x00\" is no point"),
              std::string::npos);
    Recording const recording =
        ReadRecording("time,gpu_load_percent,adapter_name,caf\xE9\n" + time + "1,A \xAE board,x\n");
    EXPECT_EQ(recording.adapterName, "A \\xAE board");
    EXPECT_EQ(recording.remarks.at(0).message, "the column \"caf\\xE9\" is not known, and is left out");
    EXPECT_LT(ErrorOf(heading + time + std::string(100000, 'x') + ",2\n").size(), 200U);
}

TEST(ToolRecording, UnsureFanIsMarkedAndReadsBack) {
    RecordingFormat format(
        {.vendor = GPUTUNE_VENDOR_AMD, .frameRate = false, .name = "", .fanCurve = {}, .fanCanBeUnsure = true});
    EXPECT_TRUE(format.Heading().ends_with(",tdp_limit_percent,fan_speed_unsure,adapter_name,fan_curve"));
    Readings readings{};
    readings[GPUTUNE_HWM_FAN_SPEED_RPM] = 900;
    std::string text = format.Heading() + "\n" + format.Line("2025-01-31T12:00:00", readings, std::nullopt) + "\n";
    readings[GPUTUNE_HWM_FAN_SPEED_RPM] = 0;
    readings.fanUnsure = true;
    std::string const line = format.Line("2025-01-31T12:00:01", readings, std::nullopt);
    EXPECT_TRUE(line.ends_with(",stopped_or_steady,,")) << line;
    Recording const recording = ReadRecording(text + line + "\n");
    ASSERT_EQ(recording.series.size(), 1U);
    EXPECT_EQ(recording.series[0].values, (std::vector<std::optional<double>>{900, 0}));
    EXPECT_EQ(recording.series[0].unsure, (std::vector<bool>{false, true}));
    EXPECT_TRUE(recording.remarks.empty());
    // As most recordings of such boards are.
    EXPECT_TRUE(ReadRecording(text).series[0].unsure.empty());
}

TEST(ToolRecording, ReadingIsWrittenInTheDigitsOfTheBoard) {
    Readings readings{};
    readings[GPUTUNE_HWM_GPU_CORE_CLOCK] = double{386.67F};
    EXPECT_TRUE(Format().Line("t", readings, std::nullopt).starts_with("t,386.67,"));
}

TEST(ToolRecording, TimesOutsideTheCalendarAreErrors) {
    for (std::string const time : {"2025-02-29T12:00:00", "2025-13-01T12:00:00", "2025-01-31T24:00:00", "12:00:00", "",
                                   "2025-01-31T12:00:00.", "2025-01-31T12:00:00Z", "2025-01-31T12:00"}) {
        EXPECT_TRUE(ErrorOf(heading + time + ",1,2\n").starts_with("2:1: \"" + time + "\" is no time")) << time;
    }
}

TEST(ToolRecording, TextsThatAreNoRecordingAreErrors) {
    EXPECT_EQ(ErrorOf(""), "1:1: the file is empty");
    EXPECT_EQ(ErrorOf(heading), "1:1: the recording holds no readings");
    EXPECT_NE(ErrorOf("hello\n").find("1:1: there is no column \"time\""), std::string::npos);
    EXPECT_NE(ErrorOf("time\tgpu_load_percent\n").find("neither commas nor semicolons"), std::string::npos);
    EXPECT_EQ(ErrorOf("time,colour\n"), "1:1: there is no column of a sensor");
    EXPECT_EQ(ErrorOf("time,vddc_millivolts,time\n"), "1:22: there are two columns \"time\"");
    EXPECT_NE(
        ErrorOf("time,vddc_millivolts,fan_curve\n2025-01-31T12:00:00,1,50:20 60\n").find("2:23: \"60\" is no point"),
        std::string::npos);
}

TEST(ToolRecording, BytesOfAnyKindAreErrorsAndNothingWorse) {
    std::string bytes;
    for (int i = 0; i < 4096; ++i) {
        bytes += static_cast<char>(i * 7 + i / 256);
    }
    EXPECT_NE(ErrorOf(bytes), "none");
    EXPECT_NE(ErrorOf(heading + bytes), "none");
}

}  // namespace
}  // namespace gputune::tool
