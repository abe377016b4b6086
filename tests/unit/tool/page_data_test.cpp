// What the exporter's page and programs get as JSON.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tool/serve/History.h"
#include "tool/serve/PageData.h"
#include "tool/values/Names.h"

namespace gputune::tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr double kNow = 1700000000;

Snapshot SomeSnapshot(double time = kNow) {
    Snapshot snapshot;
    snapshot.board = BoardFacts{};
    snapshot.board->vendor = GPUTUNE_VENDOR_AMD;
    snapshot.board->api = GPUTUNE_API_OVERDRIVEN;
    snapshot.board->adapter = 0;
    snapshot.board->name = "Some <Board>";
    snapshot.startTime = kNow - 100.5;
    snapshot.lastSampleTime = time;
    snapshot.sample = Sample{};
    snapshot.sample->time = time;
    snapshot.sample->readings[GPUTUNE_HWM_GPU_TEMPERATURE] = double{65.1F};
    snapshot.sample->readings[GPUTUNE_HWM_FAN_SPEED_RPM] = 0;
    return snapshot;
}

Snapshot WithoutSample() {
    Snapshot snapshot = SomeSnapshot();
    snapshot.sample.reset();
    snapshot.problem = "The driver is gone.";
    snapshot.problemCode = "failed";
    return snapshot;
}

Snapshot IntelSnapshot(std::optional<double> load) {
    Snapshot snapshot = SomeSnapshot();
    snapshot.board->vendor = GPUTUNE_VENDOR_INTEL;
    snapshot.sample->readings[GPUTUNE_HWM_GPU_LOAD] = 123456;
    snapshot.sample->load = load;
    return snapshot;
}

Json Readings(Snapshot const& snapshot) {
    return Json::parse(ReadingsJson(snapshot, kNow + 1));
}

Json SensorOf(History const& history, char const* code) {
    Json const json = Json::parse(history.HistoryJson());
    for (Json const& sensor : json.at("sensors")) {
        if (sensor.at("sensor") == code) {
            return sensor;
        }
    }
    return nullptr;
}

Json Times(History const& history) {
    return Json::parse(history.HistoryJson()).at("times_seconds");
}

TEST(ToolPageData, ReadingsHaveBoardTimesAndEverySensor) {
    Snapshot snapshot = SomeSnapshot();
    snapshot.sample->shown.fanCurve = {{20, 50}, {100, 95}};
    snapshot.sample->shown.powerLimit = -10;
    snapshot.workerRestarts = 2;
    snapshot.readFailures[{"ADL2_Some_Get", "failed: -1"}] = 3;
    Json const json = Readings(snapshot);
    EXPECT_EQ(json.at("time_seconds"), kNow + 1);
    EXPECT_EQ(json.at("start_time_seconds"), kNow - 100.5);
    EXPECT_EQ(json.at("last_sample_time_seconds"), kNow);
    EXPECT_EQ(json.at("up"), true);
    EXPECT_EQ(json.at("problem"), nullptr);
    EXPECT_EQ(json.at("board"), Json::parse(R"({"vendor": "amd", "api": "overdriven", "interface": "AMD OverdriveN",
        "adapter": 0, "name": "Some <Board>"})"));
    EXPECT_EQ(json.at("sensors").size(), kSensorNames.size());
    EXPECT_EQ(json.at("sensors").at("gpu_temperature"), Json::parse(R"({"value": 65.1, "unit": "celsius"})"));
    EXPECT_EQ(json.at("sensors").at("gpu_load"), Json::parse(R"({"value": null, "unit": "percent"})"));
    EXPECT_EQ(json.at("sensors").at("fan_speed"), Json::parse(R"({"value": 0, "unit": "rpm", "unsure": null})"));
    EXPECT_EQ(json.at("settings").at("power_limit_percent"), -10);
    EXPECT_EQ(json.at("settings").at("gpu_clock_mhz"), nullptr);
    EXPECT_EQ(json.at("settings").at("fan_curve").at(1),
              Json::parse(R"({"temperature_celsius": 95, "speed_percent": 100})"));
    EXPECT_EQ(json.at("worker_restarts"), 2);
    EXPECT_EQ(json.at("read_failures"),
              Json::parse(R"([{"call": "ADL2_Some_Get", "code": "failed: -1", "count": 3}])"));
}

TEST(ToolPageData, WithoutSampleThereAreNoValuesButAProblem) {
    Json const json = Readings(WithoutSample());
    EXPECT_EQ(json.at("up"), false);
    EXPECT_EQ(json.at("sensors"), nullptr);
    EXPECT_EQ(json.at("settings"), nullptr);
    EXPECT_EQ(json.at("problem"), Json::parse(R"({"code": "failed", "message": "The driver is gone."})"));
    EXPECT_EQ(json.at("last_sample_time_seconds"), kNow);
}

TEST(ToolPageData, BeforeTheBoardIsKnownAllIsNull) {
    Json const json = Readings(Snapshot{});
    EXPECT_EQ(json.at("board"), nullptr);
    EXPECT_EQ(json.at("sensors"), nullptr);
    EXPECT_EQ(json.at("last_sample_time_seconds"), nullptr);
}

TEST(ToolPageData, PowerIsSaidWhereItIsKnown) {
    Snapshot snapshot = WithoutSample();
    EXPECT_EQ(Readings(snapshot).at("powered"), nullptr);
    snapshot.powerIsKnown = true;
    EXPECT_EQ(Readings(snapshot).at("powered"), true);
    snapshot.isPoweredOff = true;
    EXPECT_EQ(Readings(snapshot).at("powered"), false);
}

TEST(ToolPageData, LoadReplacesIntelsCounter) {
    EXPECT_EQ(Readings(IntelSnapshot(0.25)).at("sensors").at("gpu_load"),
              Json::parse(R"({"value": 25, "unit": "percent"})"));
    EXPECT_EQ(Readings(IntelSnapshot(std::nullopt)).at("sensors").at("gpu_load"),
              Json::parse(R"({"value": 123456, "unit": "raw"})"));
}

TEST(ToolPageData, EventIsTheSameOnOneLine) {
    Snapshot snapshot = SomeSnapshot();
    snapshot.board->name = "Two\nlines \xFF";
    std::string const event = EventJson(snapshot, kNow + 1);
    EXPECT_EQ(event.find('\n'), std::string::npos);
    EXPECT_EQ(Json::parse(event), Readings(snapshot));
}

TEST(ToolPageHistory, HoldsWhatWasReadInTheOrderInWhichItIsShown) {
    History history(1);
    history.Add(SomeSnapshot(), kNow);
    history.Add(SomeSnapshot(kNow + 1.0004), kNow + 1.1);
    Json const json = Json::parse(history.HistoryJson());
    EXPECT_EQ(json.at("interval_seconds"), 1);
    EXPECT_EQ(json.at("units").at("celsius"), "\u00b0C");
    EXPECT_EQ(json.at("times_seconds"), Json({kNow, kNow + 1}));
    EXPECT_EQ(json.at("sensors").size(), kSensorNames.size());
    EXPECT_EQ(json.at("sensors").at(0), Json::parse(R"({"sensor": "gpu_temperature", "title": "GPU Temperature",
        "quantity": "Temperatures", "unit": "celsius", "limit": false, "values": [65.1, 65.1]})"));
    EXPECT_EQ(SensorOf(history, "vddc").at("values"), nullptr);
    EXPECT_EQ(SensorOf(history, "temperature_limit").at("limit"), true);
}

TEST(ToolPageHistory, SensorThatFailsAndComesBackHasAGap) {
    History history(1);
    for (int i = 0; i < 3; ++i) {
        Snapshot snapshot = SomeSnapshot(kNow + i);
        if (i == 1) {
            snapshot.sample->readings[GPUTUNE_HWM_GPU_TEMPERATURE] = std::nullopt;
        }
        history.Add(snapshot, kNow + i);
    }
    EXPECT_EQ(SensorOf(history, "gpu_temperature").at("values"), Json::parse("[65.1, null, 65.1]"));
    EXPECT_EQ(SensorOf(history, "fan_speed").at("values"), Json::parse("[0, 0, 0]"));
}

TEST(ToolPageHistory, TimeWithoutSamplesIsOneGap) {
    History history(1);
    history.Add(WithoutSample(), kNow - 1);
    history.Add(SomeSnapshot(), kNow);
    for (int i = 1; i < 10; ++i) {
        history.Add(WithoutSample(), kNow + i);
    }
    history.Add(SomeSnapshot(kNow + 10), kNow + 10);
    EXPECT_EQ(Times(history), Json({kNow, kNow + 1, kNow + 10}));
    EXPECT_EQ(SensorOf(history, "gpu_temperature").at("values"), Json::parse("[65.1, null, 65.1]"));
}

TEST(ToolPageHistory, TimeInWhichNobodyAskedIsAGapToo) {
    History history(2);
    history.Add(SomeSnapshot(), kNow);
    history.Add(SomeSnapshot(kNow + 6), kNow + 6);
    history.Add(SomeSnapshot(kNow + 16), kNow + 16);
    EXPECT_EQ(SensorOf(history, "gpu_temperature").at("values"), Json::parse("[65.1, 65.1, null, 65.1]"));
}

TEST(ToolPageHistory, CounterAndUnsureFanAreNoReadings) {
    History history(1);
    Snapshot snapshot = IntelSnapshot(std::nullopt);
    snapshot.sample->readings.fanUnsure = true;
    history.Add(snapshot, kNow);
    EXPECT_EQ(SensorOf(history, "gpu_load").at("values"), nullptr);
    EXPECT_EQ(SensorOf(history, "fan_speed").at("values"), nullptr);
    snapshot.sample->time = kNow + 1;
    snapshot.sample->load = 0.5;
    history.Add(snapshot, kNow + 1);
    EXPECT_EQ(SensorOf(history, "gpu_load").at("values"), Json::parse("[null, 50]"));
}

TEST(ToolPageHistory, KeepsAnHour) {
    History history(1);
    for (int i = 0; i <= 2 * 3600; ++i) {
        history.Add(SomeSnapshot(kNow + i), kNow + i);
    }
    EXPECT_EQ(history.Count(), 3601U);
    EXPECT_EQ(Times(history).at(0), kNow + 3600);
}

TEST(ToolPageHistory, ShortIntervalNeedsNoMoreMemory) {
    History history(0.1);
    for (int i = 0; i < 2 * 36000; ++i) {
        history.Add(i % 7 == 0 ? WithoutSample() : SomeSnapshot(kNow + i * 0.1), kNow + i * 0.1);
    }
    EXPECT_LE(history.Count(), History::kMaximum);
    EXPECT_GE(history.Count(), 3000U);
}

TEST(ToolPageHistory, SetClockLeavesTheTimesAscending) {
    History history(1);
    for (double const time : {kNow, kNow + 1, kNow + 1, kNow + 2, kNow + 1.5}) {
        history.Add(SomeSnapshot(time), time);
    }
    EXPECT_EQ(Times(history), Json({kNow, kNow + 1}));
    history.Add(SomeSnapshot(kNow - 50), kNow - 50);
    EXPECT_EQ(Times(history), Json({kNow - 50}));
}

}  // namespace
}  // namespace gputune::tool
