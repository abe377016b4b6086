// The metrics' text: formats, names, units, and that what was not read is not there.
#include "tool/serve/MetricsText.h"

#include <gtest/gtest.h>

#include <charconv>
#include <fstream>
#include <limits>

#include "comma_locale.h"
#include "tests/unit/tool/MetricsCheck.h"
#include "tool/serve/Metrics.h"
#include "tool/values/Names.h"

using namespace gputune::tool;

namespace {

constexpr MetricsFormat kFormats[] = {MetricsFormat::Prometheus, MetricsFormat::OpenMetrics};

// A board that tells everything, after a while.
Snapshot FullSnapshot() {
    Snapshot snapshot;
    BoardFacts board;
    board.vendor = GPUTUNE_VENDOR_AMD;
    board.api = GPUTUNE_API_OVERDRIVEN;
    board.adapter = 0;
    board.name = "Radeon RX 580 Series";
    snapshot.board = board;
    Sample sample{.time = 1763800000.25, .steadyTime = 500};
    sample.readings.fill(50);
    sample.readings[GPUTUNE_HWM_GPU_CORE_CLOCK] = double{386.67F};
    sample.readings[GPUTUNE_HWM_GPU_TEMPERATURE] = 65.5;
    sample.readings[GPUTUNE_HWM_VDDC] = 1093;
    sample.readings[GPUTUNE_HWM_MEMORY_USAGE] = 832;
    sample.readings[GPUTUNE_HWM_TDP_LIMIT] = -10;
    sample.shown.powerLimit = 15;
    snapshot.sample = sample;
    snapshot.lastSampleTime = sample.time;
    snapshot.powerIsKnown = true;
    snapshot.readFailures = {{{"ADL2_One", "-1"}, 2}, {{"ADL2_One", "null ptr"}, 1}};
    snapshot.workerRestarts = 3;
    snapshot.durations.Add(0.002);
    snapshot.durations.Add(0.3);
    snapshot.durations.Add(5);
    snapshot.startTime = 1763790000.5;
    return snapshot;
}

std::map<std::string, double> SeriesOf(Snapshot const& snapshot, MetricsFormat format = MetricsFormat::Prometheus) {
    MetricsCheck const check(MetricsText(snapshot, format), format);
    EXPECT_EQ(check.Problems(), std::vector<std::string>());
    return check.Series();
}

bool HasFamily(std::map<std::string, double> const& series, std::string const& name) {
    auto const found = series.lower_bound(name);
    return found != series.end() && found->first.starts_with(name);
}

TEST(MetricsTextTest, BothFormatsHaveTheSameSeriesAndNoMistakes) {
    Snapshot const snapshot = FullSnapshot();
    auto const series = SeriesOf(snapshot, MetricsFormat::Prometheus);
    EXPECT_EQ(series, SeriesOf(snapshot, MetricsFormat::OpenMetrics));
    EXPECT_GT(series.size(), 40U);
}

TEST(MetricsTextTest, ValuesAreInBaseUnits) {
    auto const series = SeriesOf(FullSnapshot());
    EXPECT_EQ(series.at("gputune_temperature_celsius{sensor=\"gpu\"}"), 65.5);
    EXPECT_EQ(series.at("gputune_temperature_celsius{sensor=\"hotspot\"}"), 50);
    EXPECT_EQ(series.at("gputune_temperature_celsius{sensor=\"memory\"}"), 50);
    EXPECT_EQ(series.at("gputune_temperature_limit_celsius"), 50);
    EXPECT_EQ(series.at("gputune_clock_hertz{domain=\"core\"}"), 386670000);
    EXPECT_EQ(series.at("gputune_clock_hertz{domain=\"memory\"}"), 50e6);
    EXPECT_EQ(series.at("gputune_cpu_clock_hertz"), 50e6);
    EXPECT_EQ(series.at("gputune_cpu_load_ratio"), 0.5);
    EXPECT_EQ(series.at("gputune_fan_speed_rpm"), 50);
    EXPECT_EQ(series.at("gputune_fan_duty_ratio"), 0.5);
    EXPECT_EQ(series.at("gputune_load_ratio{engine=\"gpu\"}"), 0.5);
    EXPECT_EQ(series.at("gputune_load_ratio{engine=\"memory_controller\"}"), 0.5);
    EXPECT_EQ(series.at("gputune_power_watts{domain=\"gpu\"}"), 50);
    EXPECT_EQ(series.at("gputune_power_watts{domain=\"vddc\"}"), 50);
    EXPECT_EQ(series.at("gputune_power_watts{domain=\"vddci\"}"), 50);
    EXPECT_EQ(series.at("gputune_vrm_efficiency_ratio"), 0.5);
    EXPECT_EQ(series.at("gputune_voltage_volts{domain=\"core\"}"), 1.093);
    EXPECT_EQ(series.at("gputune_memory_used_bytes{kind=\"total\"}"), 832.0 * 1024 * 1024);
    EXPECT_EQ(series.at("gputune_memory_used_bytes{kind=\"dedicated\"}"), 50.0 * 1024 * 1024);
    EXPECT_EQ(series.at("gputune_memory_used_bytes{kind=\"dynamic\"}"), 50.0 * 1024 * 1024);
    EXPECT_EQ(series.at("gputune_power_limit_ratio"), 1.15);
    EXPECT_EQ(series.at("gputune_tdp_limit_ratio"), 0.9);
    EXPECT_EQ(series.at("gputune_last_sample_timestamp_seconds"), 1763800000.25);
    EXPECT_EQ(series.at("gputune_start_time_seconds"), 1763790000.5);
    EXPECT_EQ(series.at("gputune_read_failures_total{call=\"ADL2_One\",code=\"-1\"}"), 2);
    EXPECT_EQ(series.at("gputune_worker_restarts_total"), 3);
    EXPECT_EQ(series.at("gputune_powered"), 1);
    EXPECT_EQ(series.at("gputune_up"), 1);
    EXPECT_EQ(
        series.at("gputune_board_info{board=\"amd-0\",vendor=\"amd\",api=\"overdriven\",version=\"" GPUTUNE_VERSION
                  "\",name=\"Radeon RX 580 Series\"}"),
        1);
}

TEST(MetricsTextTest, DurationsAreCumulative) {
    auto const series = SeriesOf(FullSnapshot());
    EXPECT_EQ(series.at("gputune_sample_duration_seconds_bucket{le=\"0.001\"}"), 0);
    EXPECT_EQ(series.at("gputune_sample_duration_seconds_bucket{le=\"0.005\"}"), 1);
    EXPECT_EQ(series.at("gputune_sample_duration_seconds_bucket{le=\"1.0\"}"), 2);
    EXPECT_EQ(series.at("gputune_sample_duration_seconds_bucket{le=\"3.0\"}"), 2);
    EXPECT_EQ(series.at("gputune_sample_duration_seconds_bucket{le=\"+Inf\"}"), 3);
    EXPECT_EQ(series.at("gputune_sample_duration_seconds_count"), 3);
    EXPECT_EQ(series.at("gputune_sample_duration_seconds_sum"), 5.302);
}

TEST(MetricsTextTest, EverySensorIsExportedOnce) {
    Snapshot snapshot = FullSnapshot();
    snapshot.sample->shown = {};
    auto const lines = [](Snapshot const& of) {
        std::string const text = MetricsText(of, MetricsFormat::OpenMetrics);
        return std::count(text.begin(), text.end(), '\n') - std::count(text.begin(), text.end(), '#');
    };
    auto const all = lines(snapshot);
    for (std::size_t key = 0; key < snapshot.sample->readings.size(); ++key) {
        Snapshot without = snapshot;
        without.sample->readings[key].reset();
        EXPECT_EQ(lines(without), all - 1) << kSensorNames[key].code;
    }
}

TEST(MetricsTextTest, NoSampleHasNoReadings) {
    Snapshot snapshot = FullSnapshot();
    snapshot.sample.reset();
    auto const series = SeriesOf(snapshot);
    EXPECT_EQ(series.at("gputune_up"), 0);
    EXPECT_EQ(series.at("gputune_last_sample_timestamp_seconds"), 1763800000.25);
    for (Metric const& metric : Metrics()) {
        static std::set<std::string> const kAlways = {"gputune_board_info",
                                                      "gputune_up",
                                                      "gputune_powered",
                                                      "gputune_last_sample_timestamp_seconds",
                                                      "gputune_read_failures_total",
                                                      "gputune_worker_restarts_total",
                                                      "gputune_sample_duration_seconds",
                                                      "gputune_start_time_seconds"};
        EXPECT_EQ(HasFamily(series, metric.name), kAlways.count(metric.name) > 0) << metric.name;
    }
}

TEST(MetricsTextTest, AtTheStartThereIsNoBoardAndNoTime) {
    Snapshot snapshot;
    snapshot.startTime = 1;
    for (MetricsFormat const format : kFormats) {
        auto const series = SeriesOf(snapshot, format);
        EXPECT_FALSE(HasFamily(series, "gputune_board_info"));
        EXPECT_FALSE(HasFamily(series, "gputune_last_sample"));
        EXPECT_FALSE(HasFamily(series, "gputune_powered"));
        EXPECT_FALSE(HasFamily(series, "gputune_read_failures"));
        EXPECT_EQ(series.at("gputune_up"), 0);
    }
}

TEST(MetricsTextTest, WhatIsNoNumberIsAbsent) {
    Snapshot snapshot = FullSnapshot();
    snapshot.sample->readings[GPUTUNE_HWM_GPU_TEMPERATURE] = std::numeric_limits<double>::quiet_NaN();
    snapshot.sample->readings[GPUTUNE_HWM_GPU_POWER] = std::numeric_limits<double>::infinity();
    snapshot.sample->readings[GPUTUNE_HWM_GPU_CORE_CLOCK] = std::numeric_limits<double>::max();
    auto const series = SeriesOf(snapshot);
    EXPECT_EQ(series.count("gputune_temperature_celsius{sensor=\"gpu\"}"), 0U);
    EXPECT_EQ(series.count("gputune_power_watts{domain=\"gpu\"}"), 0U);
    EXPECT_EQ(series.count("gputune_clock_hertz{domain=\"core\"}"), 0U);
}

TEST(MetricsTextTest, FanSpeedThatMayBeWrongIsAbsent) {
    Snapshot snapshot = FullSnapshot();
    snapshot.sample->readings.fanUnsure = true;
    EXPECT_FALSE(HasFamily(SeriesOf(snapshot), "gputune_fan_speed_rpm"));
    EXPECT_TRUE(HasFamily(SeriesOf(snapshot), "gputune_fan_duty_ratio"));
}

TEST(MetricsTextTest, LimitThatTheBoardShowsIsTakenWhereThereIsNoSensor) {
    Snapshot snapshot = FullSnapshot();
    snapshot.sample->shown.temperatureLimit = 84;
    EXPECT_EQ(SeriesOf(snapshot).at("gputune_temperature_limit_celsius"), 50);
    snapshot.sample->readings[GPUTUNE_HWM_TEMPERATURE_LIMIT].reset();
    EXPECT_EQ(SeriesOf(snapshot).at("gputune_temperature_limit_celsius"), 84);
}

TEST(MetricsTextTest, IntelHasALoadOrACounter) {
    Snapshot snapshot = FullSnapshot();
    snapshot.board->vendor = GPUTUNE_VENDOR_INTEL;
    snapshot.sample->readings[GPUTUNE_HWM_GPU_LOAD] = 1234.5;
    auto series = SeriesOf(snapshot, MetricsFormat::OpenMetrics);
    EXPECT_EQ(series.at("gputune_activity_counter_total"), 1234.5);
    EXPECT_EQ(series.count("gputune_load_ratio{engine=\"gpu\"}"), 0U);
    snapshot.sample->load = 0.25;
    series = SeriesOf(snapshot, MetricsFormat::OpenMetrics);
    EXPECT_EQ(series.count("gputune_activity_counter_total"), 0U);
    EXPECT_EQ(series.at("gputune_load_ratio{engine=\"gpu\"}"), 0.25);
}

TEST(MetricsTextTest, PowerIsToldWhereItIsKnown) {
    Snapshot snapshot = FullSnapshot();
    snapshot.isPoweredOff = true;
    EXPECT_EQ(SeriesOf(snapshot).at("gputune_powered"), 0);
    snapshot.powerIsKnown = false;
    EXPECT_FALSE(HasFamily(SeriesOf(snapshot), "gputune_powered"));
}

TEST(MetricsTextTest, LabelsAreEscaped) {
    Snapshot snapshot = FullSnapshot();
    snapshot.board->name = "a\"b\\c\nd\xE9";
    for (MetricsFormat const format : kFormats) {
        std::string const text = MetricsText(snapshot, format);
        EXPECT_NE(text.find("name=\"a\\\"b\\\\c\\\\x0Ad\\\\xE9\"} 1\n"), std::string::npos) << text.substr(0, 400);
        SeriesOf(snapshot, format);
    }
    snapshot = FullSnapshot();
    snapshot.readFailures = {{{"one\ntwo", "\"\\"}, 1}};
    EXPECT_NE(MetricsText(snapshot, MetricsFormat::Prometheus).find("{call=\"one\\ntwo\",code=\"\\\"\\\\\"} 1\n"),
              std::string::npos);
}

TEST(MetricsTextTest, BoardWithoutANameHasNoSuchLabel) {
    Snapshot snapshot = FullSnapshot();
    snapshot.board->name.clear();
    EXPECT_EQ(MetricsText(snapshot, MetricsFormat::Prometheus).find("name="), std::string::npos);
}

TEST(MetricsTextTest, NumbersHaveAPointInEveryLocale) {
    std::string const before = MetricsText(FullSnapshot(), MetricsFormat::OpenMetrics);
    ASSERT_TRUE(gputune::test::SetCommaLocale());
    std::string const with = MetricsText(FullSnapshot(), MetricsFormat::OpenMetrics);
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(with, before);
}

TEST(MetricsTextTest, NumbersHaveAllTheirDigits) {
    Snapshot snapshot = FullSnapshot();
    snapshot.lastSampleTime = 1763800000.1234567;
    snapshot.sample->readings[GPUTUNE_HWM_GPU_POWER] = 0.1 + 0.2;
    snapshot.workerRestarts = 9007199254740991;
    auto const series = SeriesOf(snapshot);
    EXPECT_EQ(series.at("gputune_last_sample_timestamp_seconds"), 1763800000.1234567);
    EXPECT_EQ(series.at("gputune_power_watts{domain=\"gpu\"}"), 0.1 + 0.2);
    EXPECT_EQ(series.at("gputune_worker_restarts_total"), 9007199254740991);
}

TEST(MetricsTextTest, ReadingsOfSinglePrecisionHaveTheFewestDigits) {
    Snapshot snapshot = FullSnapshot();
    snapshot.sample->readings[GPUTUNE_HWM_GPU_POWER] = double{123.4F};
    EXPECT_NE(MetricsText(snapshot, MetricsFormat::Prometheus).find("gputune_power_watts{domain=\"gpu\"} 123.4\n"),
              std::string::npos);
}

// The check itself: each mistake, planted in a good text, is found.
TEST(MetricsTextTest, PlantedMistakesAreFound) {
    struct Mistake {
        MetricsFormat format;
        char const* good;
        char const* bad;
        char const* found;
    };
    constexpr MetricsFormat kOld = MetricsFormat::Prometheus;
    constexpr MetricsFormat kOpen = MetricsFormat::OpenMetrics;
    static Mistake const kMistakes[] = {
        {kOpen, "# EOF\n", "", "no # EOF"},
        {kOpen, "# EOF\n", "# EOF\ngputune_up 1\n", "behind the end"},
        {kOpen, "# EOF\n", "# EOF", "no end"},
        {kOld, "gputune_up 1\n", "gputune_up 1\n# EOF\n", "not understood"},
        {kOld, "gputune_up 1\n", "gputune_up 1\ngputune_up 1\n", "twice: gputune_up"},
        {kOld, "gputune_up 1\n", "gputune_up 1 1763800000000\n", "not understood"},
        {kOld, "celsius{sensor=\"gpu\"} 65.5", "celsius{sensor=\"gpu\"} 65,5", "not understood"},
        {kOld, "celsius{sensor=\"gpu\"} 65.5", "celsius{sensor=\"gpu\"} NaN", "not understood"},
        {kOld, "celsius{sensor=\"gpu\"}", "celsius{sensor=\"g\"pu\"}", "not understood"},
        {kOld, "celsius{sensor=\"gpu\"}", "celsius{sensor=\"gpu\",sensor=\"gpu\"}", "label twice"},
        {kOld, "celsius{sensor=\"gpu\"}", "celsius{sensor=\"gpu\",board=\"amd-0\"}", "identity"},
        {kOld, "celsius{sensor=\"hotspot\"}", "celsius{sensor=\"gpu\"}", "twice"},
        {kOld, "gputune_fan_speed_rpm 50\n", "gputune_temperature_celsius 50\n", "not of the family"},
        {kOpen, "gputune_worker_restarts_total 3", "gputune_worker_restarts 3", "not of the family"},
        {kOpen, "# TYPE gputune_worker_restarts counter", "# TYPE gputune_worker_restarts_total counter", "incomplete"},
        {kOld, "# TYPE gputune_worker_restarts_total counter", "# TYPE gputune_worker_restarts_total gauge", "_total"},
        {kOld, "# TYPE gputune_board_info gauge", "# TYPE gputune_board_info info", "type info"},
        {kOpen, "# TYPE gputune_up gauge\n", "", "incomplete"},
        {kOpen, "# UNIT gputune_clock_hertz hertz\n", "", "unit \"\""},
        {kOpen, "# UNIT gputune_clock_hertz hertz\n", "# UNIT gputune_clock_hertz megahertz\n", "unit"},
        {kOpen, "le=\"1.0\"", "le=\"1\"", "canonical"},
        {kOld, "gputune_up 1\n", "gputune_up 1\n# HELP gputune_clock_hertz Clock.\n", "not together"},
        {kOld, "# HELP gputune_up ", "# HELP gputune_up \n", "not understood"},
    };
    for (Mistake const& mistake : kMistakes) {
        std::string text = MetricsText(FullSnapshot(), mistake.format);
        std::size_t const place = text.find(mistake.good);
        ASSERT_NE(place, std::string::npos) << mistake.good;
        text.replace(place, std::string(mistake.good).size(), mistake.bad);
        std::vector<std::string> const problems = MetricsCheck(text, mistake.format).Problems();
        EXPECT_TRUE(
            std::any_of(problems.begin(), problems.end(),
                        [&](std::string const& problem) { return problem.find(mistake.found) != std::string::npos; }))
            << mistake.bad << ": " << testing::PrintToString(problems);
    }
}

// Names by the conventions: what a metric's unit is called, and counters.
TEST(MetricsTextTest, NamesTellUnitAndType) {
    std::set<std::string> names;
    for (Metric const& metric : Metrics()) {
        std::string const name = metric.name;
        std::string const unit = metric.unit;
        EXPECT_TRUE(names.insert(name).second) << name;
        EXPECT_TRUE(unit.empty() || name.ends_with("_" + unit)) << name;
        EXPECT_EQ(metric.type == MetricType::Counter, name.ends_with("_total")) << name;
        EXPECT_EQ(metric.type == MetricType::Info, name.ends_with("_info")) << name;
        EXPECT_TRUE(std::string(metric.help).ends_with('.')) << name;
    }
}

}  // namespace
