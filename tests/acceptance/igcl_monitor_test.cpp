// Intel boards: the monitored values, which are the telemetry's readings as they are.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "intel_board.h"

namespace gputune::test {
namespace {

constexpr char const* kTelemetry = "ctlPowerTelemetryGet";
std::string const kBegin = "[IGCLHelper::FetchHwmValues()] ... begin";
std::string const kFailureTag = "[IGCLHelper::FetchHwmTelemetry()] ctlPowerTelemetryGet";  // deliberate

struct Reading {
    int item;
    int key;
    char const* name;
    double value;
};

Reading const kReadings[] = {
    {telemetry::kGpuClock, 0, "GPU Core Clock", 2100.5},
    {telemetry::kGpuTemperature, 2, "GPU Temperature", 61.25},
    {telemetry::kGlobalActivity, 7, "GPU Load", 123456.5},
    {telemetry::kVramClock, 1, "GPU Memory Clock", 2187},
    {telemetry::kVramTemperature, 4, "GPU Memory Temperature", 74},
    {telemetry::kFanSpeed, 6, "Fan Speed(RPM)", 1450},
};

void OrderReadings(Machine& machine) {
    for (Reading const& reading : kReadings) {
        OrderItem(machine, reading.item, reading.value);
    }
}

// Byte for byte: what lies behind the name is zero.
void ExpectEntry(Machine& machine, int key, double value, std::string const& name, bool valid) {
    SCOPED_TRACE(key);
    HwmValue const entry = machine.Api().GetHwmValue(key);
    unsigned char expected[272] = {};
    std::memcpy(expected, &value, sizeof value);
    std::memcpy(expected + 8, name.data(), name.size());
    expected[264] = valid ? 1 : 0;
    EXPECT_EQ(std::memcmp(&entry, expected, sizeof expected), 0)
        << entry.Value << " \"" << entry.Name << "\" " << entry.Valid;
}

void ExpectNeverRead(Machine& machine, std::vector<int> const& keys) {
    for (int const key : keys) {
        ExpectEntry(machine, key, -1.0, "", false);
    }
}

void ExpectReadings(Machine& machine) {
    for (Reading const& reading : kReadings) {
        ExpectEntry(machine, reading.key, reading.value, reading.name, true);
    }
    ExpectNeverRead(machine, {3, 5, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20});
}

TEST(IgclMonitor, SixReadingsAreTakenAsTheyAre) {
    Machine machine = IntelBoard();
    OrderReadings(machine);
    ASSERT_TRUE(machine.InitAndForget());
    ExpectNeverRead(machine, {0, 1, 2, 4, 6, 7});  // the start read nothing into the table

    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.TakeLog(), Lines({kBegin}));
    EXPECT_EQ(TakeIntelTraffic(machine), Lines({"ctlPowerTelemetryGet DE0000"}));
    ExpectReadings(machine);

    // Once more the same.
    machine.Api().FetchHwmValues();
    EXPECT_EQ(TakeIntelTraffic(machine), Lines({"ctlPowerTelemetryGet DE0000"}));
    ExpectReadings(machine);
}

TEST(IgclMonitor, NothingSupportedLeavesTheTableAsItWas) {
    Machine machine = IntelBoard();
    // Values without their flags.
    for (Reading const& reading : kReadings) {
        OrderItem(machine, reading.item, {.supported = 0, .value = reading.value});
    }
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().FetchHwmValues();
    ExpectNeverRead(machine, {0, 1, 2, 4, 6, 7});

    machine.Then(kTelemetry);
    OrderReadings(machine);
    machine.Api().FetchHwmValues();
    machine.Then(kTelemetry);
    machine.Api().FetchHwmValues();
    ExpectReadings(machine);
}

TEST(IgclMonitor, EachItemIsTakenByItself) {
    Machine machine = IntelBoard().Started();
    double value = 10;
    std::vector<double> expected(8, -1.0);
    for (Reading const& reading : kReadings) {
        SCOPED_TRACE(reading.name);
        machine.Then(kTelemetry);
        value += 1.5;
        OrderItem(machine, reading.item, value);
        machine.Api().FetchHwmValues();
        expected.at(static_cast<std::size_t>(reading.key)) = value;
        for (int key = 0; key < 8; ++key) {
            EXPECT_EQ(machine.Api().GetHwmValue(key).Value, expected.at(static_cast<std::size_t>(key))) << key;
        }
    }
}

TEST(IgclMonitor, OtherItemsGoNowhere) {
    Machine machine = IntelBoard();
    for (int const item :
         {telemetry::kTimeStamp, telemetry::kGpuEnergy, telemetry::kGpuVoltage, telemetry::kRenderActivity,
          telemetry::kMediaActivity, telemetry::kVramEnergy, telemetry::kVramVoltage, telemetry::kVramEffectiveClock,
          telemetry::kVramRead, telemetry::kVramWrite, telemetry::kCardEnergy, 416, 440, 712, 736, 760, 784}) {
        OrderItem(machine, item, 5);
    }
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().FetchHwmValues();
    ExpectNeverRead(machine, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20});
}

TEST(IgclMonitor, AnyValueIsTakenZeroAsWell) {
    Machine machine = IntelBoard().Started();
    for (double const value : {0.0, -0.0, -40.0, 1e300, 5e-324, std::numeric_limits<double>::infinity()}) {
        SCOPED_TRACE(value);
        machine.Then(kTelemetry);
        OrderItem(machine, telemetry::kGpuClock, value);
        machine.Api().FetchHwmValues();
        ExpectEntry(machine, 0, value, "GPU Core Clock", true);
    }
}

// The eight bytes are a double whatever the item says they are.
TEST(IgclMonitor, TypeOfAnItemIsNotLookedAt) {
    Machine machine = IntelBoard().Started();
    for (int const type : {0, 1, 5, 7, 8, 10, -1}) {
        SCOPED_TRACE(type);
        machine.Then(kTelemetry);
        OrderItem(machine, telemetry::kFanSpeed, {.type = type, .value = 1000.0 + type});
        machine.Api().FetchHwmValues();
        ExpectEntry(machine, 6, 1000.0 + type, "Fan Speed(RPM)", true);
    }
}

TEST(IgclMonitor, AnyByteButZeroIsSupported) {
    Machine machine = IntelBoard();
    OrderItem(machine, telemetry::kGpuTemperature, {.supported = 0x80, .value = 50});
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().FetchHwmValues();
    ExpectEntry(machine, 2, 50, "GPU Temperature", true);
}

TEST(IgclMonitor, FailureLeavesTheTableAsItWas) {
    Machine machine = IntelBoard();
    OrderReadings(machine);
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().FetchHwmValues();
    machine.TakeLog();

    machine.Then(kTelemetry).Result(kTelemetry, kFailure);
    for (Reading const& reading : kReadings) {
        OrderItem(machine, reading.item, 99);
    }
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.TakeLog(), Lines({kBegin, FailureLine(kFailureTag)}));
    ExpectReadings(machine);
}

TEST(IgclMonitor, MissingFunctionCountsAsNotInitialized) {
    Machine machine = IntelBoard().Hide(kTelemetry).Started();
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.TakeLog(), Lines({kBegin, NotInitializedLine(kFailureTag)}));
    ExpectNeverRead(machine, {0, 1, 2, 4, 6, 7});
}

TEST(IgclMonitor, KeysThatTheTableLacksStayAbsent) {
    Machine machine = IntelBoard();
    OrderReadings(machine);
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().FetchHwmValues();
    for (int const key : {-1, 21, 22, 1000}) {
        HwmValue const entry = machine.Api().GetHwmValue(key);
        unsigned char const zero[272] = {};
        EXPECT_EQ(std::memcmp(&entry, zero, sizeof zero), 0) << key;
    }
}

TEST(IgclMonitor, NewAdapterStartsWithANewTable) {
    Machine machine = IntelBoard();
    OrderReadings(machine);
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().FetchHwmValues();
    ASSERT_TRUE(machine.InitAndForget());
    ExpectNeverRead(machine, {0, 1, 2, 4, 6, 7});
}

}  // namespace
}  // namespace gputune::test
