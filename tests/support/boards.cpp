#include "boards.h"

#include <algorithm>
#include <stdexcept>

namespace gputune::test {

namespace {

constexpr char const* kAdapters = "ADL2_Adapter_AdapterInfoX4_Get";
constexpr char const* kDisplays = "ADL2_Adapter_AdapterInfoX3_Get";
constexpr char const* kRanges = "ADL2_Overdrive8_Init_SettingX2_Get";
constexpr char const* kCurrent = "ADL2_Overdrive8_Current_SettingX2_Get";
constexpr char const* kOlderRanges = "ADL2_Overdrive8_Init_Setting_Get";
constexpr char const* kOlderCurrent = "ADL2_Overdrive8_Current_Setting_Get";
constexpr char const* kThermal = "ADL2_Overdrive5_ThermalDevices_Enum";

Bytes Characters(std::string const& text) {
    return {text.begin(), text.end()};
}

// The older list's records are 8 bytes shorter.
Bytes AdapterBytes(AdapterRecord const& adapter, int size) {
    Bytes record(static_cast<std::size_t>(size));
    record = Patched(record, 0, Ints({size, adapter.index}));
    record = Patched(record, 8, Characters(adapter.udid));
    record = Patched(record, 264, Ints({adapter.bus}));
    record = Patched(record, 280, Characters(adapter.name));
    record = Patched(record, 536, Characters(adapter.displayName));
    return Patched(record, 792, Ints({1, 1}));
}

int Count(std::size_t number) {
    return static_cast<int>(number);
}

void AllocateUnlessEmpty(Machine& machine, char const* entryPoint, int argument, Bytes const& list) {
    if (!list.empty()) {
        machine.Allocate(entryPoint, argument, list);
    }
}

}  // namespace

Bytes AdapterList(std::vector<AdapterRecord> const& adapters) {
    Bytes list;
    for (AdapterRecord const& adapter : adapters) {
        list = Patched(list, list.size(), AdapterBytes(adapter, 1580));
    }
    return list;
}

void OrderAdapters(Machine& machine, std::vector<AdapterRecord> const& adapters) {
    OrderAdapters(machine, Count(adapters.size()), AdapterList(adapters));
}

void OrderAdapters(Machine& machine, int count, Bytes const& list) {
    machine.Write(kAdapters, 2, Ints({count})).Allocate(kAdapters, 3, list);
}

void OrderAdaptersAt(Machine& machine, int count, void const* list) {
    machine.Write(kAdapters, 2, Ints({count})).Write(kAdapters, 3, BytesOf(list));
}

Machine AmdBoard(int overdriveVersion, Machine::Library library) {
    Machine machine(library);
    machine.Captions({L"AMD Radeon RX 580 Series"});
    machine.Write("ADL2_Main_ControlX2_Create", 2, BytesOf(kContext));
    OrderAdapters(machine, {{.index = 5,
                             .udid = "PCI_VEN_1002&DEV_67DF&SUBSYS_0B361002&REV_E7_6&1A2B3C4D&0&00000008A",
                             .bus = 3,
                             .name = "Radeon RX 580 Series",
                             .displayName = "\\\\.\\DISPLAY1"}});
    machine.Reports(ActiveStatus{1}).Reports(OverdriveVersion{overdriveVersion});
    return machine;
}

Machine OverdriveNBoard() {
    Machine machine = AmdBoard(7);
    machine.Reports(Capabilities{});
    machine.Reports(EngineLevels{.levels = {{30000, 750}, {90000, 850}, {136600, 1150}}});
    machine.Reports(MemoryLevels{.levels = {{30000, 750}, {100000, 800}, {200000, 950}}});
    OrderThermalControllers(machine, {{}});
    return machine;
}

void OrderThermalControllers(Machine& machine, std::vector<ThermalController> const& controllers) {
    for (ThermalController const& controller : controllers) {
        machine.Result(kThermal, 0).Reports(controller).Then(kThermal);
    }
    machine.Result(kThermal, -100);
}

void OrderLevelCounts(Machine& machine, int count) {
    machine.Write(EngineLevels::kReadBy.entryPoint, 2, Ints({count}), 8);
    machine.Write(MemoryLevels::kReadBy.entryPoint, 2, Ints({count}), 8);
}

void OrderTableSizes(Machine& machine, int size) {
    machine.Write(EngineLevels::kReadBy.entryPoint, 2, Ints({size}));
    machine.Write(MemoryLevels::kReadBy.entryPoint, 2, Ints({size}));
}

std::vector<SettingRange> Overdrive8Ranges() {
    std::vector<SettingRange> ranges;
    for (int feature = 0; feature < kSettings; ++feature) {
        ranges.push_back({feature, 10 * feature, 10 * feature + 9, 10 * feature + 5});
    }
    ranges[setting::kPower] = {setting::kPower, -20, 20, 0};
    return ranges;
}

std::vector<int> Overdrive8Current() {
    std::vector<int> current;
    for (int feature = 0; feature < kSettings; ++feature) {
        current.push_back(10 * feature + 3);
    }
    current[setting::kPower] = 0;
    current[setting::kPowerMode] = 3;
    return current;
}

SensorLog BoardSensors() {
    SensorLog log;
    log.sensors[sensor::kGpuClock] = {1, 1340};
    log.sensors[sensor::kMemoryClock] = {1, 875};
    log.sensors[sensor::kTemperature] = {1, 61};
    log.sensors[sensor::kFanSpeed] = {1, 1450};
    log.sensors[sensor::kLoad] = {1, 97};
    log.sensors[sensor::kHotSpot] = {1, 74};
    log.sensors[sensor::kLast] = {1, 1};
    return log;
}

Machine Overdrive8Board(int capabilities) {
    Machine machine = AmdBoard(8);
    OrderRanges(machine, capabilities, Overdrive8Ranges());
    OrderCurrent(machine, Overdrive8Current());
    machine.Reports(BoardSensors()).Reports(MemoryUsage{.megabytes = 1000}).Reports(MemorySize{.bytes = 8192LL << 20});
    return machine;
}

void OrderRanges(Machine& machine, int capabilities, int count, Bytes const& list) {
    machine.Reports(FeatureFlags{capabilities}).Reports(RangeCount{count});
    AllocateUnlessEmpty(machine, kRanges, 4, list);
}

void OrderRanges(Machine& machine, int capabilities, std::vector<SettingRange> const& ranges) {
    OrderRanges(machine, capabilities, Count(ranges.size()), BytesOf(ranges));
}

void OrderCurrent(Machine& machine, int count, Bytes const& list) {
    machine.Write(kCurrent, 2, Ints({count}));
    AllocateUnlessEmpty(machine, kCurrent, 3, list);
}

void OrderCurrent(Machine& machine, std::vector<int> const& current) {
    OrderCurrent(machine, Count(current.size()), BytesOf(current));
}

void OrderOlderRanges(Machine& machine, int count, int capabilities, std::vector<SettingRange> const& ranges) {
    machine.Write(kOlderRanges, 2, Patched(Ints({count, capabilities}), 8, BytesOf(ranges)));
}

void OrderOlderCurrent(Machine& machine, int count, std::vector<int> const& current) {
    machine.Write(kOlderCurrent, 2, Patched(Ints({count}), 4, BytesOf(current)));
}

Bytes DisplayList(std::vector<std::string> const& names) {
    Bytes list;
    for (std::string const& name : names) {
        list = Patched(list, list.size(), AdapterBytes({.displayName = name}, 1572));
    }
    return list;
}

void OrderDisplays(Machine& machine, int count, Bytes const& list) {
    machine.Write(kDisplays, 2, Ints({count}));
    AllocateUnlessEmpty(machine, kDisplays, 3, list);
}

void OrderDisplays(Machine& machine, std::vector<std::string> const& names) {
    OrderDisplays(machine, Count(names.size()), DisplayList(names));
}

namespace {

std::string DescribeRequest(SettingRequest const& request) {
    std::string text;
    if (request.count != kSettings) {
        return " not a list of 39 settings";
    }
    for (int k = 0; k < kSettings; ++k) {
        auto const& [value, requested, reset] = request.settings[k];
        if (value == 0 && requested == 0 && reset == 0) {
            continue;
        }
        text += " " + std::to_string(k) + "=";
        if (requested == 1 && (reset == 0 || reset == 1)) {
            text += std::to_string(value) + (reset == 1 ? "!" : "");
        } else {
            text += "(" + std::to_string(value) + "," + std::to_string(requested) + "," + std::to_string(reset) + ")";
        }
    }
    return text;
}

// How the record of a call begins that has room for an answer. Zeros follow.
Bytes EmptyRecord(std::string const& name, Call const& call) {
    if (name.find("Clocks") != std::string::npos) {
        return Ints({12 + 16 * call.Int(8), call.Int(4), call.Int(8)});
    }
    return name.find("Setting") != std::string::npos          ? Ints({kSettings})
           : name.find("ThermalDevices") != std::string::npos ? Ints({16})
           : name.find("FanSpeed_Get") != std::string::npos   ? Ints({16, kRpm})
           : name.find("Active_Get") != std::string::npos     ? Ints({-1})
                                                              : Bytes();
}

}  // namespace

int AdapterOf(Call const& call) {
    if (call.HandleArgument(0) != kContext) {
        throw std::invalid_argument(call.entryPoint + " was called with another context");
    }
    return static_cast<int>(call.args.at(1));
}

std::string DescribeAmdCall(Call const& call) {
    std::string name = call.entryPoint;
    for (std::string const prefix : {"ADL2_", "Overdrive8_"}) {
        if (name.starts_with(prefix)) {
            name = name.substr(prefix.size());
        }
    }
    std::string text = name + " " + std::to_string(call.args.at(1));
    if (name.starts_with("Overdrive5_") || name.ends_with("Temperature_Get") || name.ends_with("FrameMetrics_Get")) {
        text += " #" + std::to_string(call.args.at(2));
    }
    if (call.HandleArgument(0) != kContext) {
        text += " with another context";
    }
    if (name == "Setting_Set") {
        text += ":" + DescribeRequest(call.As<SettingRequest>()) +
                (call.HandleArgument(3) == Handle{} ? " without room for the result" : "");
    } else if (!name.ends_with("_Set") && !call.record.empty()) {
        if (name.find("Clocks") != std::string::npos) {
            text += ": mode " + std::to_string(call.Int(4)) + ", " + std::to_string(call.Int(8)) + " levels";
        }
        if (call.record != Patched(Bytes(call.record.size()), 0, EmptyRecord(name, call))) {
            text += " into a record that is not empty";
        }
    }
    return text;
}

Lines DetectionOf(Lines const& log) {
    auto const last = std::find_if(log.begin(), log.end(),
                                   [](std::string const& line) { return line.starts_with("[GetVendor()] ..."); });
    return {log.begin(), last == log.end() ? last : last + 1};
}

}  // namespace gputune::test
