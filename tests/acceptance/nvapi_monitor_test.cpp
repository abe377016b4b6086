// NVIDIA boards: reading the temperatures.
#include <gtest/gtest.h>

#include <climits>

#include "nvidia_board.h"

namespace gputune::test {
namespace {

constexpr char kThermal[] = "NvAPI_GPU_GetThermalSettings";
constexpr int kTemperature = 2;  // the one key that is ever written

std::string Tagged(std::string const& subject, std::string const& message) {
    return "[NVAPIHelper::FetchHwmValues()]" + (subject.empty() ? "" : " " + subject) + " ... " + message;
}

std::string Gpu(int number) {
    return "[NVAPIHelper::FetchHwmValues()] >>>>> for physicle gpu # " + std::to_string(number);
}

Lines Fetch(Machine& machine) {
    machine.Api().FetchHwmValues();
    return machine.TakeLog();
}

void ExpectTemperature(Machine& machine, double celsius) {
    HwmValue const entry = machine.Api().GetHwmValue(kTemperature);
    EXPECT_EQ(entry.Value, celsius);
    EXPECT_STREQ(entry.Name, "GPU Temperature");
    EXPECT_TRUE(entry.Valid);
}

void ExpectNoReadingBut(Machine& machine, int read) {
    for (int key = 0; key <= 20; ++key) {
        if (key != read) {
            EXPECT_FALSE(machine.Api().GetHwmValue(key).Valid) << key;
            EXPECT_EQ(machine.Api().GetHwmValue(key).Value, -1.0) << key;
        }
    }
}

TEST(NvapiMonitor, FirstSensorIsTheTemperatureAndAllAreLogged) {
    Machine machine = NvidiaBoard(1);
    OrderSensors(machine, 0, 3, {{1, 0, 127, 61, 1}, {2, -5, 100, 70, 2}, {3, 0, 90, 45, 8}});
    machine.InitAndForget();
    EXPECT_EQ(Fetch(machine),
              Lines({Tagged("", "begin"), Gpu(0), Tagged("sensor count", "3"), Tagged("sensor # 0", "61"),
                     Tagged("sensor target # 0", "1"), Tagged("sensor # 1", "70"), Tagged("sensor target # 1", "2"),
                     Tagged("sensor # 2", "45"), Tagged("sensor target # 2", "8")}));
    ExpectTemperature(machine, 61.0);
    ExpectNoReadingBut(machine, kTemperature);
}

TEST(NvapiMonitor, AsksForAllSensorsInVersionTwo) {
    Machine machine = NvidiaBoard(1).Started();
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.Asked<ThermalSettings>(), ThermalSettings());
    EXPECT_EQ(machine.TakeTraffic(DescribeNvidiaCall),
              Lines({"nvapi_QueryInterface E3640A56", "NvAPI_GPU_GetThermalSettings 600000 #15"}));
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.TakeTraffic(DescribeNvidiaCall), Lines({"NvAPI_GPU_GetThermalSettings 600000 #15"}));
}

TEST(NvapiMonitor, SecondGpuIsOnlyLogged) {
    Machine machine = NvidiaBoard(2);
    OrderSensors(machine, 0, 1, {{1, 0, 127, 61, 1}});
    OrderSensors(machine, 1, 1, {{1, 0, 127, 33, 2}});
    machine.InitAndForget();
    EXPECT_EQ(Fetch(machine),
              Lines({Tagged("", "begin"), Gpu(0), Tagged("sensor count", "1"), Tagged("sensor # 0", "61"),
                     Tagged("sensor target # 0", "1"), Gpu(1), Tagged("sensor count", "1"), Tagged("sensor # 0", "33"),
                     Tagged("sensor target # 0", "2")}));
    ExpectTemperature(machine, 61.0);
}

TEST(NvapiMonitor, GpuWithoutSensorsLeavesTheTemperatureToTheNext) {
    Machine machine = NvidiaBoard(3);
    OrderSensors(machine, 0, 0, {});
    OrderSensors(machine, 1, 1, {{1, 0, 127, 33, 2}});
    OrderSensors(machine, 2, 1, {{1, 0, 127, 44, 2}});
    machine.InitAndForget();
    machine.Api().FetchHwmValues();
    ExpectTemperature(machine, 33.0);
}

TEST(NvapiMonitor, GpusShareOneRecord) {
    Machine machine = NvidiaBoard(2);
    OrderSensors(machine, 0, 2, {{1, 2, 3, 61, 4}, {5, 6, 7, 62, 8}});
    machine.InitAndForget();
    Lines const log = Fetch(machine);
    EXPECT_EQ(machine.LastCall(kThermal).HandleArgument(0), kGpu + 1);
    EXPECT_EQ(machine.Asked<ThermalSettings>(),
              (ThermalSettings{.count = 2, .sensors = {{1, 2, 3, 61, 4}, {5, 6, 7, 62, 8}}}));
    // What the second GPU's library does not write is the first one's.
    ASSERT_EQ(log.size(), 13U);
    EXPECT_EQ(Lines(log.begin() + 8, log.end()),
              Lines({Tagged("sensor count", "2"), Tagged("sensor # 0", "61"), Tagged("sensor target # 0", "4"),
                     Tagged("sensor # 1", "62"), Tagged("sensor target # 1", "8")}));
    // The next fetch starts with an empty one.
    machine.Api().FetchHwmValues();
    std::vector<Call> const calls = machine.TakeCalls();
    ASSERT_GE(calls.size(), 2U);
    EXPECT_EQ(calls[calls.size() - 2].As<ThermalSettings>(), ThermalSettings());
}

TEST(NvapiMonitor, CountOfSensorsIsLoggedButNotBelievedBeyondThree) {
    struct {
        int count;
        char const* logged;
        std::size_t sensors;
    } const rows[] = {{0, "0", 0},
                      {1, "1", 1},
                      {2, "2", 2},
                      {3, "3", 3},
                      {4, "4", 3},
                      {1000000, "1000000", 3},
                      {INT_MIN, "2147483648", 3},
                      {-1, "4294967295", 3}};
    Machine machine = NvidiaBoard(1).Started();
    for (auto const& row : rows) {
        SCOPED_TRACE(row.logged);
        OrderSensors(machine, 0, row.count, {{1, 0, 0, 51, 1}, {1, 0, 0, 52, 2}, {1, 0, 0, 53, 3}});
        Lines const log = Fetch(machine);
        ASSERT_EQ(log.size(), 3 + 2 * row.sensors);
        EXPECT_EQ(log[2], Tagged("sensor count", row.logged));
        if (row.sensors == 3) {
            EXPECT_EQ(log[7], Tagged("sensor # 2", "53"));
            EXPECT_EQ(log[8], Tagged("sensor target # 2", "3"));
        }
    }
}

TEST(NvapiMonitor, TemperaturesAndTargetsAreSigned) {
    Machine machine = NvidiaBoard(1);
    OrderSensors(machine, 0, 2, {{1, 0, 127, -40, -1}, {1, 0, 127, INT_MIN, INT_MAX}});
    machine.InitAndForget();
    EXPECT_EQ(Fetch(machine), Lines({Tagged("", "begin"), Gpu(0), Tagged("sensor count", "2"),
                                     Tagged("sensor # 0", "-40"), Tagged("sensor target # 0", "-1"),
                                     Tagged("sensor # 1", "-2147483648"), Tagged("sensor target # 1", "2147483647")}));
    ExpectTemperature(machine, -40.0);
}

TEST(NvapiMonitor, NoGpuLogsTheBeginning) {
    Machine machine = NvidiaBoard(0).Started();
    EXPECT_EQ(Fetch(machine), Lines({Tagged("", "begin")}));
    EXPECT_EQ(machine.TakeCallNames(), std::vector<std::string>{});
    ExpectNoReadingBut(machine, -1);
}

TEST(NvapiMonitor, AllHandlesThereIsRoomForAreRead) {
    Machine machine = NvidiaBoard(64);
    machine.Reports(GpuCount{-1});
    machine.InitAndForget();
    Lines const log = Fetch(machine);
    ASSERT_EQ(log.size(), 1U + 64U * 2U);
    EXPECT_EQ(log[127], Gpu(63));
    EXPECT_EQ(machine.CountOf(kThermal), 64);
    EXPECT_EQ(machine.LastCall(kThermal).HandleArgument(0), kGpu + 63);
}

// ---- Failures ----

TEST(NvapiMonitor, FailingFirstGpuEndsTheFetch) {
    Machine machine = NvidiaBoard(2);
    OrderErrorTexts(machine, {-104});
    OrderSensors(machine, 0, 1, {{1, 0, 127, 61, 1}});
    OrderSensors(machine, 1, 1, {{1, 0, 127, 33, 2}});
    machine.Result(For(kThermal, kGpu), -104);
    machine.InitAndForget();
    EXPECT_EQ(Fetch(machine), Lines({Tagged("", "begin"), Tagged(kThermal, "error: NVAPI_-104")}));
    EXPECT_EQ(machine.CountOf(kThermal), 1);
    EXPECT_EQ(DescribeNvidiaCall(machine.LastCall("NvAPI_GetErrorMessage")), "NvAPI_GetErrorMessage -104");
    ExpectNoReadingBut(machine, -1);
}

TEST(NvapiMonitor, FailingSecondGpuKeepsTheFirstReading) {
    Machine machine = NvidiaBoard(3);
    OrderErrorTexts(machine, {-104});
    OrderSensors(machine, 0, 1, {{1, 0, 127, 61, 1}});
    machine.Result(For(kThermal, kGpu + 1), -104);
    machine.InitAndForget();
    EXPECT_EQ(Fetch(machine),
              Lines({Tagged("", "begin"), Gpu(0), Tagged("sensor count", "1"), Tagged("sensor # 0", "61"),
                     Tagged("sensor target # 0", "1"), Tagged(kThermal, "error: NVAPI_-104")}));
    EXPECT_EQ(machine.CountOf(kThermal), 2);
    ExpectTemperature(machine, 61.0);
}

TEST(NvapiMonitor, MissingFunctionIsNoImplementation) {
    Machine machine = NvidiaBoard(1);
    OrderErrorTexts(machine, {-3});
    machine.Hide(kThermal);
    machine.InitAndForget();
    EXPECT_EQ(Fetch(machine), Lines({Tagged("", "begin"), Tagged(kThermal, "error: NVAPI_-3")}));
    machine.Show(kThermal);
    OrderSensors(machine, 0, 1, {{1, 0, 127, 61, 1}});
    machine.Api().FetchHwmValues();
    ExpectTemperature(machine, 61.0);
}

TEST(NvapiMonitor, ReadingStaysUntilTheNextSuccess) {
    Machine machine = NvidiaBoard(1);
    OrderSensors(machine, 0, 1, {{1, 0, 127, 61, 1}});
    machine.InitAndForget();
    machine.Api().FetchHwmValues();
    machine.Result(For(kThermal, kGpu), -1);
    machine.Api().FetchHwmValues();
    ExpectTemperature(machine, 61.0);
    machine.Result(For(kThermal, kGpu), 0);
    OrderSensors(machine, 0, 0, {{1, 0, 127, 99, 1}});
    machine.Api().FetchHwmValues();
    ExpectTemperature(machine, 61.0);
    OrderSensors(machine, 0, 1, {{1, 0, 127, 62, 1}});
    machine.Api().FetchHwmValues();
    ExpectTemperature(machine, 62.0);
}

TEST(NvapiMonitor, BoardThatWasNotOpenedLogsTheBeginning) {
    Machine machine = NvidiaBoard(2);
    machine.Result("NvAPI_Initialize", -6).Then("NvAPI_Initialize");
    machine.InitAndForget();
    ASSERT_FALSE(machine.Api().IsInitOk());
    EXPECT_EQ(Fetch(machine), Lines({Tagged("", "begin")}));
    EXPECT_EQ(machine.CountOf(kThermal), 0);
}

}  // namespace
}  // namespace gputune::test
