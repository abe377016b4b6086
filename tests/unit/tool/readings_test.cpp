// Sensor readings of the host tool: names, table, line and comma-separated values.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "tool/board/StuckFanWatch.h"
#include "tool/output/Bar.h"
#include "tool/output/SensorTexts.h"
#include "tool/values/Duration.h"

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
    for (std::size_t i = 0; i < kSensorNames.size(); ++i) {
        EXPECT_EQ(static_cast<std::size_t>(kSensorNames[i].key), i) << kSensorNames[i].text;
    }
}

TEST(ToolSensorNames, CodesAreDifferent) {
    std::set<std::string> codes;
    for (SensorName const& sensor : kSensorNames) {
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
    EXPECT_EQ(SensorUnit(kSensorNames[GPUTUNE_HWM_GPU_LOAD], GPUTUNE_VENDOR_INTEL), Unit::Raw);
    EXPECT_EQ(SensorUnit(kSensorNames[GPUTUNE_HWM_GPU_LOAD], GPUTUNE_VENDOR_AMD), Unit::Percent);
    EXPECT_EQ(SensorUnit(kSensorNames[GPUTUNE_HWM_GPU_TEMPERATURE], GPUTUNE_VENDOR_INTEL), Unit::Celsius);
}

TEST(ToolReadings, SectionHasAllSensorsOrTheAvailableOnes) {
    EXPECT_EQ(SensorSection(SomeReadings(), GPUTUNE_VENDOR_AMD, true).fields.size(), 21U);
    EXPECT_EQ(SensorSection(SomeReadings(), GPUTUNE_VENDOR_AMD, false).fields.size(), 3U);
    EXPECT_EQ(SomeReadings().CountAvailable(), 3U);
}

TEST(ToolReadings, LineNamesTheAvailableSensors) {
    EXPECT_EQ(ReadingsLine(SomeReadings(), GPUTUNE_VENDOR_INTEL),
              "GPU Core Clock 1500 MHz, GPU Temperature 65.5 \u00b0C, GPU Load 40 (raw counter)");
    EXPECT_EQ(ReadingsLine(Readings{}, GPUTUNE_VENDOR_AMD), "no sensor available");
}

TEST(ToolReadings, UnsureFanIsMarkedWithTheReason) {
    Readings readings = SomeReadings();
    readings[GPUTUNE_HWM_FAN_SPEED_RPM] = 0;
    EXPECT_TRUE(ReadingsLine(readings, GPUTUNE_VENDOR_AMD).find("Fan Speed(RPM) 0 rpm, ") != std::string::npos);
    readings.fanUnsure = true;
    EXPECT_TRUE(ReadingsLine(readings, GPUTUNE_VENDOR_AMD)
                    .find(std::string("Fan Speed(RPM) 0 rpm (") + kUnsureFan.text + "), ") != std::string::npos);
    for (Field const& field : SensorSection(readings, GPUTUNE_VENDOR_AMD, true).fields) {
        EXPECT_EQ(field.canBeUnsure, field.key == "fan_speed");
        EXPECT_EQ(field.unsure, field.key == "fan_speed" ? &kUnsureFan : nullptr);
    }
}

// What the watch says of each of these readings, as 1 and 0.
std::string Doubts(std::vector<std::optional<double>> const& speeds) {
    StuckFanWatch watch;
    std::string doubts;
    for (std::optional<double> const& speed : speeds) {
        doubts += watch.IsUnsure(speed) ? '1' : '0';
    }
    return doubts;
}

TEST(ToolStuckFan, ZeroAfterEightEqualReadingsIsUnsureUntilAnotherSpeed) {
    EXPECT_EQ(Doubts({900, 900, 900, 900, 900, 900, 900, 900, 0, 0, 0, 910, 0}), "0000000011100");
    EXPECT_EQ(Doubts({1, 900, 900, 900, 900, 900, 900, 900, 900, 900, 0}), "00000000001");
}

TEST(ToolStuckFan, OtherZerosAreSure) {
    EXPECT_EQ(Doubts({0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), "0000000000");
    EXPECT_EQ(Doubts({900, 900, 900, 900, 900, 900, 900, 0, 0}), "000000000");
    EXPECT_EQ(Doubts({900, 900, 900, 900, 900, 900, 900, 910, 0}), "000000000");
    // The fan stopped in between: the count begins anew.
    EXPECT_EQ(Doubts({900, 900, 900, 900, 0, 900, 900, 900, 900, 0}), "0000000000");
    EXPECT_EQ(Doubts({std::nullopt, std::nullopt}), "00");
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
