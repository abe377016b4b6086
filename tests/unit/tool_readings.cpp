// Sensor readings of the host tool: names, table, line and comma-separated values.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>

#include "Readings.h"

namespace gputune::tool {
namespace {

Readings SomeReadings() {
    Readings readings{};
    readings[GPUTUNE_HWM_GPU_CORE_CLOCK] = 1500.0;
    readings[GPUTUNE_HWM_GPU_TEMPERATURE] = 65.5;
    readings[GPUTUNE_HWM_GPU_LOAD] = 40.0;
    return readings;
}

TEST(ToolSensorNames, EverySensorStandsAtItsKey) {
    for (std::size_t i = 0; i < sensorNames.size(); ++i) {
        EXPECT_EQ(static_cast<std::size_t>(sensorNames[i].key), i) << sensorNames[i].text;
    }
}

TEST(ToolSensorNames, CodesAreDifferent) {
    std::set<std::string> codes;
    for (SensorName const& sensor : sensorNames) {
        EXPECT_TRUE(codes.insert(sensor.code).second) << sensor.code;
    }
}

TEST(ToolSensorNames, UnknownNumbersAreUnknown) {
    EXPECT_STREQ(VendorName(4).code, "unknown");
    EXPECT_STREQ(ApiName(1).code, "unknown");
    EXPECT_STREQ(VendorName(0).code, "none");
    EXPECT_STREQ(ApiName(3).code, "overdriven");
}

TEST(ToolSensorNames, IntelsLoadIsARawCounter) {
    EXPECT_EQ(SensorUnit(sensorNames[GPUTUNE_HWM_GPU_LOAD], GPUTUNE_VENDOR_INTEL), Unit::Raw);
    EXPECT_EQ(SensorUnit(sensorNames[GPUTUNE_HWM_GPU_LOAD], GPUTUNE_VENDOR_AMD), Unit::Percent);
    EXPECT_EQ(SensorUnit(sensorNames[GPUTUNE_HWM_GPU_TEMPERATURE], GPUTUNE_VENDOR_INTEL), Unit::Celsius);
}

TEST(ToolReadings, SectionHasAllSensorsOrTheAvailableOnes) {
    EXPECT_EQ(SensorSection(SomeReadings(), GPUTUNE_VENDOR_AMD, true).fields.size(), 21U);
    EXPECT_EQ(SensorSection(SomeReadings(), GPUTUNE_VENDOR_AMD, false).fields.size(), 3U);
    EXPECT_EQ(CountAvailable(SomeReadings()), 3U);
}

TEST(ToolReadings, LineNamesTheAvailableSensors) {
    EXPECT_EQ(ReadingsLine(SomeReadings(), GPUTUNE_VENDOR_INTEL),
              "GPU Core Clock 1500 MHz, GPU Temperature 65.5 \u00b0C, GPU Load 40 (raw counter)");
    EXPECT_EQ(ReadingsLine(Readings{}, GPUTUNE_VENDOR_AMD), "no sensor available");
}

TEST(ToolReadings, ExtremesFollowEachSensor) {
    Extremes extremes;
    extremes.Add(SomeReadings());
    Readings later = SomeReadings();
    later[GPUTUNE_HWM_GPU_TEMPERATURE] = 70.0;
    later[GPUTUNE_HWM_GPU_CORE_CLOCK] = 300.0;
    later[GPUTUNE_HWM_GPU_LOAD].reset();
    later[GPUTUNE_HWM_TDP_LIMIT] = -5.0;
    extremes.Add(later);
    EXPECT_EQ(extremes.Minimum()[GPUTUNE_HWM_GPU_TEMPERATURE], 65.5);
    EXPECT_EQ(extremes.Maximum()[GPUTUNE_HWM_GPU_TEMPERATURE], 70.0);
    EXPECT_EQ(extremes.Minimum()[GPUTUNE_HWM_GPU_CORE_CLOCK], 300.0);
    EXPECT_EQ(extremes.Maximum()[GPUTUNE_HWM_GPU_CORE_CLOCK], 1500.0);
    EXPECT_EQ(extremes.Maximum()[GPUTUNE_HWM_GPU_LOAD], 40.0);
    EXPECT_EQ(extremes.Maximum()[GPUTUNE_HWM_TDP_LIMIT], -5.0);
    EXPECT_FALSE(extremes.Minimum()[GPUTUNE_HWM_VDDC].has_value());
}

TEST(ToolReadings, MonitorTableAlignsNumbers) {
    Extremes extremes;
    extremes.Add(SomeReadings());
    std::vector<std::string> const lines = MonitorTable(SomeReadings(), extremes, GPUTUNE_VENDOR_AMD);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0], "Sensor                           now       min       max");
    EXPECT_EQ(lines[2], "GPU Temperature                 65.5      65.5      65.5 \u00b0C");
}

TEST(ToolReadings, MonitorTableOfABoardWithoutSensorsSaysSo) {
    EXPECT_EQ(MonitorTable(Readings{}, Extremes{}, GPUTUNE_VENDOR_AMD).back(), "no sensor available");
}

TEST(ToolCsv, HeadingNamesSensorAndUnit) {
    std::string const heading = CsvHeading(GPUTUNE_VENDOR_AMD);
    EXPECT_TRUE(heading.starts_with("time,gpu_core_clock_mhz,gpu_memory_clock_mhz,gpu_temperature_celsius,"));
    EXPECT_NE(heading.find(",fan_duty_percent,fan_speed_rpm,gpu_load_percent,"), std::string::npos);
    EXPECT_NE(CsvHeading(GPUTUNE_VENDOR_INTEL).find(",gpu_load_raw,"), std::string::npos);
}

TEST(ToolCsv, LineHasAColumnForEverySensor) {
    std::string const line = CsvLine("12:00", SomeReadings());
    EXPECT_EQ(line, "12:00,1500,,65.5,,,,,40,,,,,,,,,,,,,");
    std::string const heading = CsvHeading(GPUTUNE_VENDOR_AMD);
    EXPECT_EQ(std::count(line.begin(), line.end(), ','), std::count(heading.begin(), heading.end(), ','));
}

TEST(ToolCsv, NotANumberIsEmpty) {
    Readings readings{};
    readings[GPUTUNE_HWM_GPU_CORE_CLOCK] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(CsvLine("t", readings), "t,,,,,,,,,,,,,,,,,,,,,");
}

}  // namespace
}  // namespace gputune::tool
