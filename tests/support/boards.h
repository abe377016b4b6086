// Machines with one AMD board each, complete enough to initialise. All numbers are entered by hand; a test that needs
// others orders them on top.
#pragma once

#include "Machine.h"
#include "amd_records.h"

namespace gputune::test {

// The ADL context that these machines hand out.
constexpr Handle kContext = ScriptedHandle(0x00C0FFEE);

// A machine whose AMD library opens and reports this Overdrive version for its one adapter: index 5, on bus 3, named
// "Radeon RX 580 Series", subsystem 0B361002.
Machine AmdBoard(int overdriveVersion, Machine::Library library = Machine::Library::AmdNewer);

// The adapters of a machine, as many as its library says that there are. An empty list is a null pointer.
void OrderAdapters(Machine& machine, std::vector<AdapterRecord> const& adapters);
void OrderAdapters(Machine& machine, int count, Bytes const& list);
void OrderAdaptersAt(Machine& machine, int count, void const* list);  // not in the client's memory
Bytes AdapterList(std::vector<AdapterRecord> const& adapters);

// OverdriveN, three levels. In 10 kHz and mV: engine 30000/750, 90000/850, 136600/1150; memory 30000/750, 100000/800,
// 200000/950. The ranges are those of Capabilities. One GPU thermal controller.
Machine OverdriveNBoard();

// These controllers follow, and then no more.
void OrderThermalControllers(Machine& machine, std::vector<ThermalController> const& controllers);

// What the driver writes into the heads of both level tables.
void OrderLevelCounts(Machine& machine, int count);
void OrderTableSizes(Machine& machine, int size);

// Overdrive8 with these capability flags. Setting k has the range 10 k to 10 k + 9, the default 10 k + 5 and the
// current value 10 k + 3, but for: setting 9 (power) -20 to 20, default 0, current 0; setting 36 current 3. Sensors as
// BoardSensors below; 1,000 MB of 8,192 MB in use.
Machine Overdrive8Board(int capabilities);

// The 39 settings of Overdrive8Board: their ranges and their current values.
std::vector<SettingRange> Overdrive8Ranges();
std::vector<int> Overdrive8Current();

// Sensors 1 (1340 MHz), 2 (875 MHz), 8 (61 C), 14 (1450 RPM), 19 (97 %), 27 (74 C), 45 (1).
SensorLog BoardSensors();

// The settings in the newest response: their number as the library reports it, and the list that it hands out, or none.
void OrderRanges(Machine& machine, int capabilities, int count, Bytes const& list);
void OrderRanges(Machine& machine, int capabilities, std::vector<SettingRange> const& ranges);
void OrderCurrent(Machine& machine, int count, Bytes const& list);
void OrderCurrent(Machine& machine, std::vector<int> const& current);
void OrderOlderRanges(Machine& machine, int count, int capabilities, std::vector<SettingRange> const& ranges);
void OrderOlderCurrent(Machine& machine, int count, std::vector<int> const& current);

// The displays that the driver lists by these names, as many as it says that there are.
void OrderDisplays(Machine& machine, int count, Bytes const& list);
void OrderDisplays(Machine& machine, std::vector<std::string> const& names);
Bytes DisplayList(std::vector<std::string> const& names);

// A call in a form that reads well where a test fails: the name without "ADL2_" and
// "Overdrive8_", the index of the adapter, and what else tells calls of their kind apart:
//
//     "Overdrive5_FanSpeed_Set 5 #1"                     thermal controller 1
//     "OverdriveN_SystemClocksX2_Get 5: mode 0, 3 levels"
//     "Setting_Set 5: 9=10 36=3!"                        settings in ascending order, "!" with the reset mark
//
// A call that is not as all of its kind should be says so: one with another context, with a record to be read into that
// is not empty, or with a setting that is neither requested nor left out.
std::string DescribeAmdCall(Call const& call);
inline Lines TakeAmdTraffic(Machine& machine) {
    return machine.TakeTraffic(DescribeAmdCall);
}

// The adapter that a call is about. Throws when it has another context than these machines'.
int AdapterOf(Call const& call);

// The lines of the vendor's detection, which come first in the log of a start.
Lines DetectionOf(Lines const& log);

}  // namespace gputune::test
