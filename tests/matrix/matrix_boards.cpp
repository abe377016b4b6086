#include "matrix_boards.h"

#include <numeric>

#include "boards.h"
#include "intel_board.h"
#include "nvidia_board.h"
#include "operations.h"

namespace gputune::matrix {

namespace {

using test::Machine;

Machine OverdriveN(int fanSpeed) {
    Machine machine = test::AmdBoard(7);
    machine.Reports(test::Capabilities{});
    machine.Reports(test::EngineLevels{.levels = {{30000, 750}, {90000, 850}, {136600, 1150}}});
    machine.Reports(test::MemoryLevels{.levels = {{30000, 750}, {100000, 800}, {200000, 950}}});
    machine.Reports(test::ThermalController{});
    machine.Reports(test::FanSpeed{.type = test::kRpm, .speed = 1450});
    machine.Reports(test::FanControl{11, 12, 13, fanSpeed, 1500, 70, 17, 400});
    machine.Reports(test::PerformanceStatus{.coreClock = 134000, .memoryClock = 87500, .activity = 97});
    machine.Reports(test::PowerLimits{.mode = test::kModeCurrent, .power = 5, .temperature = 80});
    machine.Reports(test::Temperature{.millidegrees = 61000});
    machine.Reports(test::MemoryUsage{.megabytes = 1000});
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
std::vector<test::SettingRange> Ranges() {
    std::vector<test::SettingRange> ranges;
    for (int setting = 0; setting < test::kSettings; ++setting) {
        ranges.push_back({setting, 1 + setting, 2000 + setting, 1000 + setting});
    }
    return ranges;
}

std::vector<int> Current() {
    std::vector<int> current(test::kSettings);
    std::iota(current.begin(), current.end(), 500);
    return current;
}

Machine Overdrive8WithoutTables() {
    Machine machine = test::AmdBoard(8);
    machine.Reports(test::BoardSensors());
    machine.Reports(test::MemoryUsage{.megabytes = 1000}).Reports(test::MemorySize{.bytes = 8192LL << 20});
    test::OrderDisplays(machine, {"\\\\.\\DISPLAY1"});
    machine.Reports(test::FrameRate{.perSecond = 60});
    return machine;
}

Machine Overdrive8(int capabilities) {
    Machine machine = Overdrive8WithoutTables();
    test::OrderRanges(machine, capabilities, Ranges());
    test::OrderCurrent(machine, Current());
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
    test::OrderOlderRanges(machine, test::kSettings, kWithoutCurve, Ranges());
    test::OrderOlderCurrent(machine, test::kSettings, Current());
    return machine;
}

Machine Intel() {
    Machine machine = test::IntelBoard({{}, {.handle = test::kDevice + 1}});
    test::OrderFans(machine, {test::FixedFan(), test::TableFan(test::kCurvePoints)});
    namespace telemetry = test::telemetry;
    double reading = 40.0;
    for (int const item : {telemetry::kGpuClock, telemetry::kGpuTemperature, telemetry::kGlobalActivity,
                           telemetry::kVramClock, telemetry::kVramTemperature, telemetry::kFanSpeed}) {
        test::OrderItem(machine, item, reading);
        reading += 1.5;
    }
    machine.Reports(test::SustainedLimit{.milliwatts = 220000.0});
    machine.Reports(test::GpuOffset{.megahertz = 25.0}).Reports(test::VramOffset{.megahertz = 50.0});
    test::OrderConfig(machine, 0, test::kCurvePoints, {});
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
