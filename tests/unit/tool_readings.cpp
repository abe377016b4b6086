// Sensor readings of the host tool: names, table, line and comma-separated values.
#include <gtest/gtest.h>

#include <algorithm>
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

TEST(ToolReadings, ElapsedTimeHasHoursWhenThereAreSome) {
    EXPECT_EQ(ElapsedText(0.4), "0:00");
    EXPECT_EQ(ElapsedText(65), "1:05");
    EXPECT_EQ(ElapsedText(3725), "1:02:05");
}

TEST(ToolReadings, ProgressBarIsFilledUpToThePart) {
    EXPECT_EQ(ProgressBar(0, 4), "\u2591\u2591\u2591\u2591   0 %");
    EXPECT_EQ(ProgressBar(0.5, 4), "\u2588\u2588\u2591\u2591  50 %");
    EXPECT_EQ(ProgressBar(7, 4), "\u2588\u2588\u2588\u2588 100 %");
}

}  // namespace
}  // namespace gputune::tool
