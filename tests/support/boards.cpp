#include "boards.h"

#include <algorithm>

namespace gputune::test {

Bytes AdapterList(std::vector<AdapterRecord> const& adapters) {
    Bytes list;
    for (AdapterRecord const& adapter : adapters) {
        Bytes record(1580);
        record = Patched(record, 0, Ints({1580, adapter.index}));
        record = Patched(record, 8, Text(adapter.udid));
        record = Patched(record, 264, Ints({adapter.bus}));
        record = Patched(record, 280, Text(adapter.name));
        record = Patched(record, 536, Text(adapter.displayName));
        record = Patched(record, 792, Ints({1, 1}));
        list.insert(list.end(), record.begin(), record.end());
    }
    return list;
}

Machine AmdBoard(int overdriveVersion, Machine::Library library) {
    Machine machine(library);
    machine.Captions({L"AMD Radeon RX 580 Series"});
    machine.Write("ADL2_Main_ControlX2_Create", 2, Ints({kContext}));
    machine.Write("ADL2_Adapter_AdapterInfoX4_Get", 2, Ints({1}));
    machine.Allocate("ADL2_Adapter_AdapterInfoX4_Get", 3,
                     AdapterList({{.index = 5,
                                   .udid = "PCI_VEN_1002&DEV_67DF&SUBSYS_0B361002&REV_E7_6&1A2B3C4D&0&00000008A",
                                   .bus = 3,
                                   .name = "Radeon RX 580 Series",
                                   .displayName = "\\\\.\\DISPLAY1"}}));
    machine.Write("ADL2_Adapter_Active_Get", 2, Ints({1}));
    machine.Write("ADL2_Overdrive_Caps", 4, Ints({overdriveVersion}));
    return machine;
}

std::vector<int> OverdriveNCapabilities() {
    return {3, 0,                           // levels, flags
            0, 30000, 200000, 100, 136600,  // engine clock
            0, 30000, 225000, 100, 200000,  // memory clock
            0, 800,   1175,   6,   1150,    // voltage
            0, -50,   50,     1,   0,       // power
            0, 50,    90,     1,   75,      // power-tune temperature
            0, 25,    105,    1,   70,      // fan temperature
            0, 400,   3300,   100, 1600,    // fan speed
            0, 30000, 200000, 100, 90000,   // minimum performance clock
            0, 0,     1,      1,   0,       // throttle notification
            0, 0,     1,      1,   0};      // automatic system clock
}

Bytes Levels(std::vector<std::pair<int, int>> const& clocksAndVoltages) {
    std::vector<int> fields;
    for (auto const& [clock, voltage] : clocksAndVoltages) {
        fields.insert(fields.end(), {clock, voltage, 1, 0});
    }
    return Ints(fields);
}

Machine OverdriveNBoard() {
    constexpr int kHead = 12;
    Machine machine = AmdBoard(7);
    machine.Write("ADL2_OverdriveN_CapabilitiesX2_Get", 2, Ints(OverdriveNCapabilities()));
    machine.Write("ADL2_OverdriveN_SystemClocksX2_Get", 2, Levels({{30000, 750}, {90000, 850}, {136600, 1150}}), kHead);
    machine.Write("ADL2_OverdriveN_MemoryClocksX2_Get", 2, Levels({{30000, 750}, {100000, 800}, {200000, 950}}), kHead);
    machine.Write("ADL2_Overdrive5_ThermalDevices_Enum", 3, Ints({16, 1, 0, 0}));
    machine.Then("ADL2_Overdrive5_ThermalDevices_Enum").Result("ADL2_Overdrive5_ThermalDevices_Enum", -100);
    return machine;
}

std::vector<int> Overdrive8Ranges() {
    std::vector<int> ranges;
    for (int setting = 0; setting < 39; ++setting) {
        if (setting == 9) {
            ranges.insert(ranges.end(), {setting, -20, 20, 0});
        } else {
            ranges.insert(ranges.end(), {setting, 10 * setting, 10 * setting + 9, 10 * setting + 5});
        }
    }
    return ranges;
}

std::vector<int> Overdrive8Current() {
    std::vector<int> current;
    for (int setting = 0; setting < 39; ++setting) {
        current.push_back(setting == 9 ? 0 : setting == 36 ? 3 : 10 * setting + 3);
    }
    return current;
}

Bytes SensorData() {
    Bytes data(2052);
    auto const sensor = [&](std::size_t id, int value) { data = Patched(data, 4 + 8 * id, Ints({1, value})); };
    sensor(1, 1340);
    sensor(2, 875);
    sensor(8, 61);
    sensor(14, 1450);
    sensor(19, 97);
    sensor(27, 74);
    sensor(45, 1);
    return data;
}

Machine Overdrive8Board(int capabilities) {
    Machine machine = AmdBoard(8);
    machine.Write("ADL2_Overdrive8_Init_SettingX2_Get", 2, Ints({capabilities}));
    machine.Write("ADL2_Overdrive8_Init_SettingX2_Get", 3, Ints({39}));
    machine.Allocate("ADL2_Overdrive8_Init_SettingX2_Get", 4, Ints(Overdrive8Ranges()));
    machine.Write("ADL2_Overdrive8_Current_SettingX2_Get", 2, Ints({39}));
    machine.Allocate("ADL2_Overdrive8_Current_SettingX2_Get", 3, Ints(Overdrive8Current()));
    machine.Write("ADL2_New_QueryPMLogData_Get", 2, SensorData());
    machine.Write("ADL2_Adapter_VRAMUsage_Get", 2, Ints({1000}));
    machine.Write("ADL2_Adapter_MemoryInfo_Get", 2, Ints({0, 2}));  // 2 x 2^32 bytes
    return machine;
}

Lines DetectionOf(Lines const& log) {
    auto const last = std::find_if(log.begin(), log.end(),
                                   [](std::string const& line) { return line.starts_with("[GetVendor()] ..."); });
    return {log.begin(), last == log.end() ? last : last + 1};
}

}  // namespace gputune::test
