// Which readings the library has really taken, as its log tells.
#include "tool/board/FreshReadings.h"

#include <gtest/gtest.h>

using namespace gputune::tool;

namespace {

Readings All() {
    Readings readings;
    readings.fill(1);
    return readings;
}

TEST(FreshReadingsTest, OverdriveNLogsFailuresOnly) {
    Readings readings = All();
    RemoveStale(readings, GPUTUNE_API_OVERDRIVEN, ReadLogEntries("[OD7Helper::FetchHwmValues()] ... begin\n"));
    EXPECT_EQ(readings.CountAvailable(), readings.size());
}

TEST(FreshReadingsTest, OverdriveNReadingThatFailed) {
    Readings readings = All();
    RemoveStale(readings, GPUTUNE_API_OVERDRIVEN,
                ReadLogEntries("[OD7Helper::FetchHwmValues()] ... begin\n"
                               "[OD7Helper::FetchHwmValues()] ADL2_OverdriveN_Temperature_Get ... failed: -1\n"
                               "[OD7Helper::FetchHwmValues()] ADL2_OverdriveN_PowerLimit_Get ... null ptr\n"));
    EXPECT_FALSE(readings[GPUTUNE_HWM_GPU_TEMPERATURE]);
    EXPECT_FALSE(readings[GPUTUNE_HWM_TEMPERATURE_LIMIT]);
    EXPECT_FALSE(readings[GPUTUNE_HWM_TDP_LIMIT]);
    EXPECT_EQ(readings.CountAvailable(), readings.size() - 3);
}

TEST(FreshReadingsTest, OverdriveNFanHasTwoSources) {
    std::string const begin = "[OD7Helper::FetchHwmValues()] ... begin\n";
    std::string const first = "[OD7Helper::FetchHwmValues()] ADL2_OverdriveN_FanControl_Get ... failed: -1\n";
    std::string const second = "[OD7Helper::FetchHwmValues()] ADL2_Overdrive5_FanSpeed_Get ... failed: -1\n";
    for (auto const& [log, isRead] :
         {std::pair(begin + first, true), std::pair(begin + second, true), std::pair(begin + first + second, false)}) {
        Readings readings = All();
        RemoveStale(readings, GPUTUNE_API_OVERDRIVEN, ReadLogEntries(log));
        EXPECT_EQ(readings[GPUTUNE_HWM_FAN_SPEED_RPM].has_value(), isRead) << log;
    }
}

TEST(FreshReadingsTest, WithoutALogNothingIsFresh) {
    for (std::uint32_t const api :
         {GPUTUNE_API_OVERDRIVEN, GPUTUNE_API_OVERDRIVE8, GPUTUNE_API_IGCL, GPUTUNE_API_NVAPI, GPUTUNE_API_NONE}) {
        Readings readings = All();
        RemoveStale(readings, api, {});
        EXPECT_EQ(readings.CountAvailable(), 0U) << api;
    }
}

TEST(FreshReadingsTest, Overdrive8LogsWhatItRead) {
    Readings readings = All();
    RemoveStale(readings, GPUTUNE_API_OVERDRIVE8,
                ReadLogEntries("[OD8Helper::FetchHwmValues()] PMLOG_TEMPERATURE_EDGE ... 33\n"
                               "[OD8Helper::FetchHwmValues()] PMLOG_FAN_RPM ... 0\n"));
    EXPECT_TRUE(readings[GPUTUNE_HWM_GPU_TEMPERATURE]);
    EXPECT_TRUE(readings[GPUTUNE_HWM_FAN_SPEED_RPM]);
    EXPECT_EQ(readings.CountAvailable(), 2U);
}

TEST(FreshReadingsTest, IntelReadsEverythingInOneCall) {
    Readings readings = All();
    RemoveStale(readings, GPUTUNE_API_IGCL, ReadLogEntries("[IGCLHelper::FetchHwmValues()] ... begin\n"));
    EXPECT_EQ(readings.CountAvailable(), readings.size());
    RemoveStale(readings, GPUTUNE_API_IGCL,
                ReadLogEntries("[IGCLHelper::FetchHwmValues()] ... begin\n[IGCLHelper::FetchHwmTelemetry()] "
                               "ctlPowerTelemetryGet ... error: 1073741825 ([CTL_RESULT_ERROR_NOT_INITIALIZED])\n"));
    EXPECT_EQ(readings.CountAvailable(), 0U);
}

TEST(FreshReadingsTest, NvidiaLogsItsSensors) {
    Readings readings = All();
    RemoveStale(readings, GPUTUNE_API_NVAPI,
                ReadLogEntries("[NVAPIHelper::FetchHwmValues()] ... begin\n"
                               "[NVAPIHelper::FetchHwmValues()] sensor # 0 ... 29\n"));
    EXPECT_EQ(readings.CountAvailable(), 1U);
    EXPECT_TRUE(readings[GPUTUNE_HWM_GPU_TEMPERATURE]);
}

TEST(FreshReadingsTest, NamesTheFunctionsThatFailed) {
    EXPECT_EQ(
        FailedCalls(ReadLogEntries("[OD7Helper::FetchHwmValues()] ... begin\n"
                                   "[OD7Helper::FetchHwmValues()] ADL2_OverdriveN_Temperature_Get ... null ptr\n"
                                   "[OD8Helper::FetchHwmValues()] ... ADL2_New_QueryPMLogData_Get failed\n"
                                   "[IGCLHelper::FetchHwmTelemetry()] ctlPowerTelemetryGet ... error: 5 ([X])\n")),
        (std::vector<FailedCall>{{"ADL2_OverdriveN_Temperature_Get", "null ptr"},
                                 {"ADL2_New_QueryPMLogData_Get", "failed"},
                                 {"ctlPowerTelemetryGet", "error: 5 ([X])"}}));
}

}  // namespace
