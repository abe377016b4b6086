#include "matrix_boards.h"

#include "boards.h"
#include "intel_board.h"
#include "nvidia_board.h"
#include "operations.h"

namespace gputune::matrix {

namespace {

using test::Bytes;
using test::Doubles;
using test::Ints;
using test::Machine;
using test::Patched;

Machine OverdriveN(int fanSpeed) {
    Machine machine = test::AmdBoard(7);
    constexpr int kLevels = 12;
    machine.Write("ADL2_OverdriveN_CapabilitiesX2_Get", 2, Ints(test::OverdriveNCapabilities()));
    machine.Write("ADL2_OverdriveN_SystemClocksX2_Get", 2, test::Levels({{30000, 750}, {90000, 850}, {136600, 1150}}),
                  kLevels);
    machine.Write("ADL2_OverdriveN_MemoryClocksX2_Get", 2, test::Levels({{30000, 750}, {100000, 800}, {200000, 950}}),
                  kLevels);
    machine.Write("ADL2_Overdrive5_ThermalDevices_Enum", 3, Ints({16, 1, 0, 0}));
    machine.Write("ADL2_Overdrive5_FanSpeed_Get", 3, Ints({16, 2, 1450, 0}));
    machine.Write("ADL2_OverdriveN_FanControl_Get", 2, Ints({11, 12, 13, fanSpeed, 1500, 70, 17, 400}));
    machine.Write("ADL2_OverdriveN_PerformanceStatus_Get", 2, Ints({134000, 87500, 0, 0, 0, 0, 97}));
    machine.Write("ADL2_OverdriveN_PowerLimit_Get", 2, Ints({0, 5, 80}));
    machine.Write("ADL2_OverdriveN_Temperature_Get", 3, Ints({61000}));
    machine.Write("ADL2_Adapter_VRAMUsage_Get", 2, Ints({1000}));
    return machine;
}

Machine OverdriveN() {
    return OverdriveN(1600);
}

// Without controllers, the fan is set by OverdriveN's entry points and read by Overdrive 5's.
Machine OverdriveNWithoutControllers() {
    return OverdriveN(0);
}

constexpr int kEveryCapability = 0x7FFFF;
constexpr int kWithoutCurve = kEveryCapability & ~2;

// No two numbers of a board's settings are the same, and none is 0, so that a value that is sent tells where it is
// from.
Bytes Ranges() {
    std::vector<int> ranges;
    for (int setting = 0; setting < 39; ++setting) {
        ranges.insert(ranges.end(), {setting, 1 + setting, 2000 + setting, 1000 + setting});
    }
    return Ints(ranges);
}

Bytes Current() {
    std::vector<int> current;
    for (int setting = 0; setting < 39; ++setting) {
        current.push_back(500 + setting);
    }
    return Ints(current);
}

Machine Overdrive8WithoutTables() {
    Machine machine = test::AmdBoard(8);
    machine.Write("ADL2_New_QueryPMLogData_Get", 2, test::SensorData());
    machine.Write("ADL2_Adapter_VRAMUsage_Get", 2, Ints({1000}));
    machine.Write("ADL2_Adapter_MemoryInfo_Get", 2, Ints({0, 2}));
    machine.Write("ADL2_Adapter_AdapterInfoX3_Get", 2, Ints({1}));
    machine.Allocate("ADL2_Adapter_AdapterInfoX3_Get", 3, Patched(Bytes(1572), 536, test::Text("\\\\.\\DISPLAY1")));
    machine.Write("ADL2_Adapter_FrameMetrics_Get", 3, Ints({0x42700000}));  // 60
    return machine;
}

Machine Overdrive8(int capabilities) {
    Machine machine = Overdrive8WithoutTables();
    machine.Write("ADL2_Overdrive8_Init_SettingX2_Get", 2, Ints({capabilities}));
    machine.Write("ADL2_Overdrive8_Init_SettingX2_Get", 3, Ints({39}));
    machine.Allocate("ADL2_Overdrive8_Init_SettingX2_Get", 4, Ranges());
    machine.Write("ADL2_Overdrive8_Current_SettingX2_Get", 2, Ints({39}));
    machine.Allocate("ADL2_Overdrive8_Current_SettingX2_Get", 3, Current());
    return machine;
}

Machine Overdrive8WithCurve() {
    return Overdrive8(kEveryCapability);
}

// Without the curve, clocks are set in the manual mode.
Machine Overdrive8WithoutCurve() {
    return Overdrive8(kWithoutCurve);
}

Machine Overdrive8WithOlderEntries() {
    Machine machine = Overdrive8WithoutTables();
    machine.Hide("ADL2_Overdrive8_Init_SettingX2_Get").Hide("ADL2_Overdrive8_Current_SettingX2_Get");
    machine.Write("ADL2_Overdrive8_Init_Setting_Get", 2, Ints({39, kWithoutCurve}));
    machine.Write("ADL2_Overdrive8_Init_Setting_Get", 2, Ranges(), 8);
    machine.Write("ADL2_Overdrive8_Current_Setting_Get", 2, Ints({39}));
    machine.Write("ADL2_Overdrive8_Current_Setting_Get", 2, Current(), 4);
    return machine;
}

Machine Intel() {
    Machine machine = test::IntelBoard({{}, {.handle = test::kDevice + 1}});
    test::OrderFans(machine, {test::FixedFan(), test::TableFan(test::kCurvePoints)});
    namespace telemetry = test::telemetry;
    double reading = 40.0;
    for (int const item : {telemetry::kGpuClock, telemetry::kGpuTemperature, telemetry::kGlobalActivity,
                           telemetry::kVramClock, telemetry::kVramTemperature, telemetry::kFanSpeed}) {
        machine.Write("ctlPowerTelemetryGet", 1, {1}, item);
        machine.Write("ctlPowerTelemetryGet", 1, Doubles({reading}), item + telemetry::kValue);
        reading += 1.5;
    }
    machine.Write("ctlOverclockPowerLimitGet", 1, Doubles({220000.0}));
    machine.Write("ctlOverclockGpuFrequencyOffsetGet", 1, Doubles({25.0}));
    machine.Write("ctlOverclockVramFrequencyOffsetGet", 1, Doubles({50.0}));
    machine.Write("ctlFanGetConfig", 1, Ints({test::kCurvePoints}), 36);
    return machine;
}

Machine Nvidia() {
    Machine machine = test::NvidiaBoard(2);
    test::OrderSensors(machine, 0, 2, {{1, 0, 95, 61, 1}, {1, 0, 105, 64, 2}});
    test::OrderSensors(machine, 1, 1, {{1, 0, 95, 58, 1}});
    return machine;
}

Machine NvidiaWithHooks() {
    Machine machine = Nvidia();
    machine.Show("BeforeCallHook").Show("AfterCallHook");
    return machine;
}

constexpr Board kBoards[] = {
    {"OverdriveN", Backend::OverdriveN, OverdriveN, 2},
    {"OverdriveN without fan controllers", Backend::OverdriveN, OverdriveNWithoutControllers},
    {"Overdrive8", Backend::Overdrive8, Overdrive8WithCurve},
    {"Overdrive8 without curve", Backend::Overdrive8, Overdrive8WithoutCurve},
    {"Overdrive8 with older entry points", Backend::Overdrive8, Overdrive8WithOlderEntries},
    {"Intel", Backend::Intel, Intel},
    {"NVIDIA", Backend::Nvidia, Nvidia},
    {"NVIDIA with hooks", Backend::Nvidia, NvidiaWithHooks},
};

}  // namespace

std::span<Board const> Boards() {
    return kBoards;
}

}  // namespace gputune::matrix
