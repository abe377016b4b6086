// Overdrive8: the monitored values.
#include <climits>
#include <map>

#include "overdrive8_traffic.h"

namespace gputune::test {
namespace {

std::string const kTag = "[OD8Helper::FetchHwmValues()]";

// The keys that hold a reading.
std::map<int, double> Readings(Machine& machine) {
    std::map<int, double> readings;
    for (int key = 0; key < 21; ++key) {
        HwmValue const value = machine.Api().GetHwmValue(key);
        if (value.Valid) {
            readings[key] = value.Value;
        } else {
            EXPECT_EQ(value.Value, -1.0) << key;
            EXPECT_STREQ(value.Name, "") << key;
        }
    }
    return readings;
}

TEST(Overdrive8Monitor, StoresEverySensorUnderItsKey) {
    Machine machine = Overdrive8Board(0).Started();
    EXPECT_EQ(Readings(machine), (std::map<int, double>{}));
    machine.Api().FetchHwmValues();

    EXPECT_EQ(machine.TakeLog(), Lines({
                                     "[OD8Helper::FetchHwmValues()] PMLOG_CLK_GFXCLK ... 1340",
                                     "[OD8Helper::FetchHwmValues()] PMLOG_CLK_MEMCLK ... 875",
                                     "[OD8Helper::FetchHwmValues()] PMLOG_FAN_RPM ... 1450",
                                     "[OD8Helper::FetchHwmValues()] PMLOG_INFO_ACTIVITY_GFX ... 97",
                                     "[OD8Helper::FetchHwmValues()] PMLOG_TEMPERATURE_EDGE ... 61",
                                     "[OD8Helper::FetchHwmValues()] PMLOG_TEMPERATURE_HOTSPOT ... 74",
                                     "[OD8Helper::FetchHwmValues()] memory size ... 8192",
                                     "[OD8Helper::FetchHwmValues()] vram usage ... 1000",
                                 }));
    EXPECT_EQ(Readings(machine),
              (std::map<int, double>{{0, 1340}, {1, 875}, {2, 61}, {3, 74}, {6, 1450}, {7, 97}, {13, 1000}}));
    EXPECT_STREQ(machine.Api().GetHwmValue(0).Name, "GPU Core Clock");
    EXPECT_STREQ(machine.Api().GetHwmValue(1).Name, "GPU Memory Clock");
    EXPECT_STREQ(machine.Api().GetHwmValue(2).Name, "GPU Temperature");
    EXPECT_STREQ(machine.Api().GetHwmValue(3).Name, "GPU HotSpot Temperature");
    EXPECT_STREQ(machine.Api().GetHwmValue(6).Name, "Fan Speed(RPM)");
    EXPECT_STREQ(machine.Api().GetHwmValue(7).Name, "GPU Load");
    EXPECT_STREQ(machine.Api().GetHwmValue(13).Name, "Memory Usage");

    EXPECT_EQ(TakeAmdTraffic(machine),
              Lines({"New_QueryPMLogData_Get 5", "Adapter_VRAMUsage_Get 5", "Adapter_MemoryInfo_Get 5"}));
}

TEST(Overdrive8Monitor, KeepsTheLastReadingOfASensorThatIsGone) {
    Machine machine = Overdrive8Board(0);
    machine.Then("ADL2_New_QueryPMLogData_Get").Reports(BoardSensors());
    // Any mark but 0 is support; values are stored as they are; other sensors have no key.
    SensorLog log;
    log.sensors[sensor::kGpuClock] = {.supported = 0, .value = 777};
    log.sensors[sensor::kMemoryClock] = {.supported = -1, .value = -40};
    log.sensors[sensor::kTemperature] = {.supported = 0, .value = 99};
    log.sensors[sensor::kFanSpeed] = {.supported = 2, .value = INT_MAX};
    log.sensors[sensor::kLoad] = {.supported = INT_MIN, .value = INT_MIN};
    log.sensors[sensor::kHotSpot] = {.supported = 1, .value = 0};
    for (int const other : {0, 3, 9, 28, 255}) {
        log.sensors[other] = {.supported = 1, .value = 5};
    }
    machine.Then("ADL2_New_QueryPMLogData_Get").Reports(log);
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().FetchHwmValues();
    machine.TakeLog();
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.TakeLog(), Lines({
                                     "[OD8Helper::FetchHwmValues()] PMLOG_CLK_MEMCLK ... -40",
                                     "[OD8Helper::FetchHwmValues()] PMLOG_FAN_RPM ... 2147483647",
                                     "[OD8Helper::FetchHwmValues()] PMLOG_INFO_ACTIVITY_GFX ... -2147483648",
                                     "[OD8Helper::FetchHwmValues()] PMLOG_TEMPERATURE_HOTSPOT ... 0",
                                     "[OD8Helper::FetchHwmValues()] memory size ... 8192",
                                     "[OD8Helper::FetchHwmValues()] vram usage ... 1000",
                                 }));
    EXPECT_EQ(Readings(machine),
              (std::map<int, double>{
                  {0, 1340}, {1, -40}, {2, 61}, {3, 0}, {6, 2147483647.0}, {7, -2147483648.0}, {13, 1000}}));
}

TEST(Overdrive8Monitor, WithoutSensorsStillReadsTheMemory) {
    Machine machine = Overdrive8Board(0).Reports(SensorLog{}).Started();
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.TakeLog(), Entries(kTag + " memory size", {"8192"}) + Entries(kTag + " vram usage", {"1000"}));
    EXPECT_EQ(Readings(machine), (std::map<int, double>{{13, 1000}}));
}

TEST(Overdrive8Monitor, ChangesNothingWhenTheSensorsCannotBeRead) {
    Machine machine = Overdrive8Board(0).Started();
    for (int const result : {-1, 1}) {
        machine.Result("ADL2_New_QueryPMLogData_Get", result);
        machine.Api().FetchHwmValues();
        EXPECT_EQ(machine.TakeLog(), Entries(kTag, {"ADL2_New_QueryPMLogData_Get failed"}));
        EXPECT_EQ(Readings(machine), (std::map<int, double>{}));
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({"New_QueryPMLogData_Get 5"}));
    }
    // Readings there were stay.
    machine.Result("ADL2_New_QueryPMLogData_Get", 0);
    machine.Api().FetchHwmValues();
    std::map<int, double> const before = Readings(machine);
    machine.Result("ADL2_New_QueryPMLogData_Get", -1).Reports(MemoryUsage{.megabytes = 7});
    machine.Api().FetchHwmValues();
    EXPECT_EQ(Readings(machine), before);
}

TEST(Overdrive8Monitor, WithoutTheSensorEntryPointReportsFailure) {
    Machine machine = Overdrive8Board(0);
    machine.Hide("ADL2_New_QueryPMLogData_Get");
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.TakeLog().back(),
              "[OD8Helper::PrintLogDataCapabilities()] ... ADL2_New_QueryPMLogData_Get failed");
    machine.TakeCalls();
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.TakeLog(), Entries(kTag, {"ADL2_New_QueryPMLogData_Get failed"}));
    EXPECT_EQ(Readings(machine), (std::map<int, double>{}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines());
}

TEST(Overdrive8Monitor, JudgesTheMemoryUsageByTheMemorysSize) {
    struct Row {
        int usageResult;
        int usage;
        int sizeResult;
        std::int64_t size;
        Lines log;  // of the memory
        double stored;
    };
    std::string const tooMuch = kTag + " ... vramUsage > (ADLMemoryInfoStruct.iMemorySize/1024/1024), failed";
    auto const numbers = [](std::string const& size, std::string const& usage) {
        return Entries(kTag + " memory size", {size}) + Entries(kTag + " vram usage", {usage});
    };
    Row const rows[] = {
        {0, 8192, 0, 8589934592, numbers("8192", "8192"), 8192},
        {0, 8193, 0, 8589934592, numbers("8192", "8193") + Lines{tooMuch}, 0},
        {0, 8192, 0, 8589934591, numbers("8191", "8192") + Lines{tooMuch}, 0},  // one byte less
        {0, 8192, 0, 8590983167, numbers("8192", "8192"), 8192},                // one byte short of 8,193 MB
        {0, 0, 0, 0, numbers("0", "0"), 0},
        {0, 1, 0, 1048575, numbers("0", "1") + Lines{tooMuch}, 0},
        {0, 12, 1, 8589934592, {}, 12},
        {0, 12, -1, 8589934592, {}, 12},
        {1, 34, 0, 8589934592, {}, 34},  // as the failing call left it
        {-1, 0, 0, 8589934592, {}, 0},
        {0, -5, 0, 8589934592, numbers("8192", "-5"), -5},
        {0, INT_MAX, 0, INT64_MAX, numbers("8796093022207", "2147483647"), 2147483647.0},
        {0, 0, 0, -1, numbers("0", "0"), 0},
        {0, 0, 0, -1048576, numbers("-1", "0") + Lines{tooMuch}, 0},
        {0, -2, 0, -1048576, numbers("-1", "-2"), -2},
        {0, INT_MAX, 0, 2251799812636672, numbers("2147483647", "2147483647"), 2147483647.0},
        {0, 5, 0, INT64_MIN, numbers("-8796093022208", "5") + Lines{tooMuch}, 0},
    };
    Machine machine = Overdrive8Board(0).Reports(SensorLog{}).Started();
    for (Row const& row : rows) {
        SCOPED_TRACE(std::to_string(row.usage) + " MB of " + std::to_string(row.size) + " bytes");
        machine.Result("ADL2_Adapter_VRAMUsage_Get", row.usageResult).Reports(MemoryUsage{row.usage});
        machine.Result("ADL2_Adapter_MemoryInfo_Get", row.sizeResult).Reports(MemorySize{.bytes = row.size});
        machine.Api().FetchHwmValues();
        EXPECT_EQ(machine.TakeLog(), row.log);
        EXPECT_EQ(Readings(machine), (std::map<int, double>{{13, row.stored}}));
    }
}

TEST(Overdrive8Monitor, AFailedMemoryReadingReplacesTheLastOne) {
    Machine machine = Overdrive8Board(0).Started();
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.Api().GetHwmValue(13).Value, 1000.0);
    machine.Then("ADL2_Adapter_VRAMUsage_Get").Result("ADL2_Adapter_VRAMUsage_Get", -1);
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.Api().GetHwmValue(13).Value, 0.0);
    EXPECT_TRUE(machine.Api().GetHwmValue(13).Valid);
}

TEST(Overdrive8Monitor, WithoutTheUsageEntryPointStoresZero) {
    Machine machine = Overdrive8Board(0).Hide("ADL2_Adapter_VRAMUsage_Get").Started();
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.TakeLog().back(), kTag + " PMLOG_TEMPERATURE_HOTSPOT ... 74");
    EXPECT_EQ(Readings(machine).at(13), 0.0);
}

TEST(Overdrive8Monitor, WithoutTheSizeEntryPointStoresTheUsage) {
    Machine machine = Overdrive8Board(0).Hide("ADL2_Adapter_MemoryInfo_Get").Started();
    machine.Api().FetchHwmValues();
    EXPECT_EQ(machine.TakeLog().back(), kTag + " PMLOG_TEMPERATURE_HOTSPOT ... 74");
    EXPECT_EQ(Readings(machine).at(13), 1000.0);
}

}  // namespace
}  // namespace gputune::test
