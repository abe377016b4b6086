// OverdriveN: monitored values.
#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "boards.h"

namespace gputune::test {
namespace {

constexpr char const* kStatus = "ADL2_OverdriveN_PerformanceStatus_Get";
constexpr char const* kFan = "ADL2_OverdriveN_FanControl_Get";
constexpr char const* kOd5Fan = "ADL2_Overdrive5_FanSpeed_Get";
constexpr char const* kMemory = "ADL2_Adapter_VRAMUsage_Get";
constexpr char const* kTemperature = "ADL2_OverdriveN_Temperature_Get";
constexpr char const* kLimits = "ADL2_OverdriveN_PowerLimit_Get";
constexpr char const* kBegin = "[OD7Helper::FetchHwmValues()] ... begin";

std::string Line(std::string const& entryPoint, std::string const& message) {
    return "[OD7Helper::FetchHwmValues()] " + entryPoint + " ... " + message;
}

FanControl Turning(int rpm) {
    auto control = Numbered<FanControl>(1);
    control.currentSpeed = rpm;
    return control;
}

// Every record is written in full, each field another number.
Machine Board() {
    Machine machine = OverdriveNBoard();
    auto status = Numbered<PerformanceStatus>(101);
    status.coreClock = 134567;
    status.memoryClock = 200033;
    status.activity = 97;
    machine.Reports(status).Reports(Turning(1450)).Reports(FanSpeed{.type = kRpm, .speed = 1777, .flags = 9});
    machine.Reports(MemoryUsage{.megabytes = 2345}).Reports(Temperature{.millidegrees = 65123});
    machine.Reports(PowerLimits{.mode = 1, .power = -12, .temperature = 85});
    return machine;
}

// The readings of Board in single precision: 134567 / 100 and 65123 / 1000 are not exact.
std::map<int, double> const kReadings = {
    {0, 1345.6700439453125},
    {1, 2000.3299560546875},
    {2, 65.12300109863281},
    {6, 1450.0},
    {7, 97.0},
    {13, 2345.0},
    {19, 85.0},
    {20, -12.0},
};

std::map<int, std::string> const kNames = {
    {0, "GPU Core Clock"}, {1, "GPU Memory Clock"}, {2, "GPU Temperature"},    {6, "Fan Speed(RPM)"},
    {7, "GPU Load"},       {13, "Memory Usage"},    {19, "Temperature Limit"}, {20, "TDP Limit"},
};

// Exactly these keys have readings.
void ExpectReadings(Machine& machine, std::map<int, double> const& readings) {
    for (int key = 0; key <= 20; ++key) {
        SCOPED_TRACE(key);
        HwmValue const value = machine.Api().GetHwmValue(key);
        auto const reading = readings.find(key);
        if (reading == readings.end()) {
            EXPECT_FALSE(value.Valid);
            EXPECT_EQ(value.Value, -1.0);
            EXPECT_STREQ(value.Name, "");
        } else {
            EXPECT_TRUE(value.Valid);
            EXPECT_EQ(value.Value, reading->second);
            EXPECT_EQ(value.Name, kNames.at(key));
        }
    }
}

double Rpm(Machine& machine) {
    return machine.Api().GetHwmValue(GPUTUNE_HWM_FAN_SPEED_RPM).Value;
}

TEST(OverdriveNMonitor, FetchStoresEightReadings) {
    Machine machine = Board().Started();
    ExpectReadings(machine, {});

    machine.Api().FetchHwmValues();

    EXPECT_EQ(machine.TakeLog(), Lines({kBegin}));
    ExpectReadings(machine, kReadings);
    EXPECT_EQ(TakeAmdTraffic(machine),
              Lines({"OverdriveN_PerformanceStatus_Get 5", "OverdriveN_FanControl_Get 5", "Adapter_VRAMUsage_Get 5",
                     "OverdriveN_Temperature_Get 5 #1", "OverdriveN_PowerLimit_Get 5"}));
}

TEST(OverdriveNMonitor, TemperaturesAreThousandths) {
    Machine machine = Board().Started();
    for (auto const& [millidegrees, degrees] : std::map<int, double>{{65500, 65.5}, {-1500, -1.5}, {0, 0.0}}) {
        machine.Reports(Temperature{millidegrees});
        machine.Api().FetchHwmValues();
        EXPECT_EQ(machine.Api().GetHwmValue(GPUTUNE_HWM_GPU_TEMPERATURE).Value, degrees);
    }
}

struct Step {
    char const* entryPoint;
    std::vector<int> keys;  // that it alone stores
    bool leadsToOverdrive5;
};

std::vector<Step> const kSteps = {
    {kStatus, {0, 1, 7}, false}, {kFan, {6}, true},          {kMemory, {13}, false},
    {kTemperature, {2}, false},  {kLimits, {19, 20}, false},
};

// The readings when this step has none.
std::map<int, double> ReadingsWithout(Step const& step) {
    std::map<int, double> readings = kReadings;
    for (int const key : step.keys) {
        readings.erase(key);
    }
    if (step.leadsToOverdrive5) {
        readings[6] = 1777.0;
    }
    return readings;
}

TEST(OverdriveNMonitor, FailingStepIsLoggedAndTheOthersAreRead) {
    Machine machine = Board();
    for (Step const& step : kSteps) {
        SCOPED_TRACE(step.entryPoint);
        machine.Result(step.entryPoint, -8);
        ASSERT_TRUE(machine.InitAndForget());  // an adapter without readings
        machine.Api().FetchHwmValues();
        EXPECT_EQ(machine.TakeLog(), Lines({kBegin, Line(step.entryPoint, "failed: -8")}));
        ExpectReadings(machine, ReadingsWithout(step));
        machine.Result(step.entryPoint, 0);
    }
}

TEST(OverdriveNMonitor, MissingFunctionsAreLoggedInOrder) {
    Machine machine = Board();
    Lines expected = {kBegin};
    for (char const* const entryPoint : {kStatus, kFan, kOd5Fan, kMemory, kTemperature, kLimits}) {
        machine.Hide(entryPoint);
        expected.push_back(Line(entryPoint, "null ptr"));
    }
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.TakeLog(), expected);
    ExpectReadings(machine, {});
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

TEST(OverdriveNMonitor, EverythingFailingIsLoggedInOrderAndKeepsTheLastReadings) {
    Machine machine = Board();
    ASSERT_TRUE(machine.Init());
    machine.Api().FetchHwmValues();
    machine.TakeLog();
    for (char const* const entryPoint : {kStatus, kFan, kOd5Fan, kMemory, kTemperature, kLimits}) {
        machine.Result(entryPoint, -1);
    }
    // What a failing call writes is not looked at.
    machine.Reports(MemoryUsage{1}).Reports(Temperature{1}).Reports(FanSpeed{.speed = 1});

    machine.Api().FetchHwmValues();

    EXPECT_EQ(machine.TakeLog(),
              Lines({kBegin, Line(kStatus, "failed: -1"), Line(kFan, "failed: -1"), Line(kOd5Fan, "failed: -1"),
                     Line(kMemory, "failed: -1"), Line(kTemperature, "failed: -1"), Line(kLimits, "failed: -1")}));
    ExpectReadings(machine, kReadings);
}

TEST(OverdriveNMonitor, StandingFanIsAskedTheOverdrive5Way) {
    Machine machine = Board().Reports(Turning(0)).Started();

    machine.Api().FetchHwmValues();

    EXPECT_EQ(machine.TakeLog(), Lines({kBegin}));
    EXPECT_EQ(Rpm(machine), 1777.0);
    EXPECT_EQ(machine.Asked<FanSpeed>(), FanSpeed{.type = kRpm});
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({"OverdriveN_PerformanceStatus_Get 5", "OverdriveN_FanControl_Get 5",
                                              "Overdrive5_FanSpeed_Get 5 #0", "Adapter_VRAMUsage_Get 5",
                                              "OverdriveN_Temperature_Get 5 #1", "OverdriveN_PowerLimit_Get 5"}));
}

TEST(OverdriveNMonitor, StandingFanReadsZeroWhenTheOverdrive5WayIsMissing) {
    Machine machine = Board().Reports(Turning(0)).Hide(kOd5Fan).Started();
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.TakeLog(), Lines({kBegin, Line(kOd5Fan, "null ptr")}));
    EXPECT_TRUE(machine.Api().GetHwmValue(GPUTUNE_HWM_FAN_SPEED_RPM).Valid);
    EXPECT_EQ(Rpm(machine), 0.0);
}

TEST(OverdriveNMonitor, NinthEqualFanSpeedReadsZero) {
    Machine machine = Board().Result(kOd5Fan, -1).Started();
    for (int call = 1; call <= 12; ++call) {
        SCOPED_TRACE(call);
        machine.Api().FetchHwmValues();
        EXPECT_EQ(Rpm(machine), call <= 8 ? 1450.0 : 0.0);
        EXPECT_EQ(machine.CountOf(kOd5Fan), call <= 8 ? 0 : call - 8);
    }
    // Any change is believed at once, and starts the count again.
    machine.Reports(Turning(1451));
    for (int call = 1; call <= 9; ++call) {
        SCOPED_TRACE(call);
        machine.Api().FetchHwmValues();
        EXPECT_EQ(Rpm(machine), call <= 8 ? 1451.0 : 0.0);
    }
}

TEST(OverdriveNMonitor, StuckFanReadingIsReplacedByTheOverdrive5Reading) {
    Machine machine = Board().Started();
    for (int call = 1; call <= 10; ++call) {
        SCOPED_TRACE(call);
        machine.Api().FetchHwmValues();
        EXPECT_EQ(Rpm(machine), call <= 8 ? 1450.0 : 1777.0);
    }
}

// 0 is what the adapter believes to have seen before the first reading, so eight zeros come before the first change.
TEST(OverdriveNMonitor, FirstReadingOfZeroIsAlreadyARepetition) {
    Machine machine = Board().Reports(Turning(0)).Started();
    for (int call = 1; call <= 9; ++call) {
        machine.Api().FetchHwmValues();
        EXPECT_EQ(machine.CountOf(kOd5Fan), call);
    }
    machine.Reports(Turning(1450));
    machine.Api().FetchHwmValues();
    EXPECT_EQ(Rpm(machine), 1450.0);
}

TEST(OverdriveNMonitor, FailedFanReadingDoesNotCount) {
    Machine machine = Board().Started();
    for (int call = 1; call <= 8; ++call) {
        machine.Api().FetchHwmValues();
    }
    machine.Result(kFan, -1);
    machine.Api().FetchHwmValues();
    EXPECT_EQ(Rpm(machine), 1777.0) << "the Overdrive 5 way instead";
    machine.Result(kFan, 0);
    machine.Api().FetchHwmValues();
    EXPECT_EQ(Rpm(machine), 1777.0) << "the ninth equal reading";
    EXPECT_EQ(machine.CountOf(kOd5Fan), 2);
}

TEST(OverdriveNMonitor, RepetitionsAreCountedAcrossAdapterObjects) {
    Machine machine = Board().Result(kOd5Fan, -1).Started();
    for (int call = 1; call <= 5; ++call) {
        machine.Api().FetchHwmValues();
    }
    ASSERT_TRUE(machine.Init());
    for (int call = 6; call <= 9; ++call) {
        SCOPED_TRACE(call);
        machine.Api().FetchHwmValues();
        EXPECT_EQ(Rpm(machine), call <= 8 ? 1450.0 : 0.0);
    }
}

TEST(OverdriveNMonitor, KeysOutsideTheTableAreAllZero) {
    Machine machine = Board().Started();
    machine.Api().FetchHwmValues();
    HwmValue const zero{};
    for (int const key : {-1, 21, 1000}) {
        HwmValue const value = machine.Api().GetHwmValue(key);
        EXPECT_EQ(std::memcmp(&value, &zero, sizeof value), 0) << key;
    }
}

TEST(OverdriveNMonitor, FrameRateIsNotAvailable) {
    Machine machine = Board().Started();
    EXPECT_EQ(machine.Api().GetFrameRate(), -1);
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
    EXPECT_EQ(machine.TakeLog(), Lines{});
}

}  // namespace
}  // namespace gputune::test
