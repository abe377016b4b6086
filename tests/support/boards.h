// Machines with one AMD board each, complete enough to initialise. All numbers are entered by hand; a test that needs
// others orders them on top.
#pragma once

#include "Machine.h"

namespace gputune::test {

// A record of the adapter list (1,580 bytes).
struct AdapterRecord {
    int index = 0;
    std::string udid;
    int bus = 0;
    std::string name;
    std::string displayName;
};
Bytes AdapterList(std::vector<AdapterRecord> const& adapters);

// The ADL context that these machines hand out.
constexpr int kContext = 0x00C0FFEE;

// A machine whose AMD library opens and reports this Overdrive version for its one adapter: index 5, on bus 3, named
// "Radeon RX 580 Series", subsystem 0B361002.
Machine AmdBoard(int overdriveVersion, Machine::Library library = Machine::Library::AmdNewer);

// OverdriveN, three levels. In 10 kHz and mV: engine 30000/750, 90000/850, 136600/1150; memory 30000/750, 100000/800,
// 200000/950. Power range -50 to 50 (default 0), temperature range 50 to 90 (default 75), fan range 400 to 3300 RPM.
// One GPU thermal controller.
Machine OverdriveNBoard();

// Indices into the capabilities, in ints.
namespace capability {
constexpr std::size_t kLevels = 0;
constexpr std::size_t kEngineClock = 2;  // each range: mode, min, max, step, default
constexpr std::size_t kMemoryClock = 7;
constexpr std::size_t kVoltage = 12;
constexpr std::size_t kPower = 17;
constexpr std::size_t kTemperature = 22;
constexpr std::size_t kFanSpeed = 32;
}  // namespace capability
std::vector<int> OverdriveNCapabilities();

// A level table as ADL writes it, from offset 12 on: clock, voltage, enabled, control for each level.
Bytes Levels(std::vector<std::pair<int, int>> const& clocksAndVoltages);

// Overdrive8 with these capability flags. Setting k has the range 10 k to 10 k + 9, the default 10 k + 5 and the
// current value 10 k + 3, but for: setting 9 (power) -20 to 20, default 0, current 0; setting 36 current 3. Sensors as
// SensorData below; 1,000 MB of 8,192 MB in use.
Machine Overdrive8Board(int capabilities);

// The 39 settings of Overdrive8Board: feature, min, max, default each; and their current values.
std::vector<int> Overdrive8Ranges();
std::vector<int> Overdrive8Current();

// What PMLOG answers: sensors 1 (1340 MHz), 2 (875 MHz), 8 (61 C), 14 (1450 RPM), 19 (97 %), 27 (74 C), 45 (1).
Bytes SensorData();

// The lines of the vendor's detection, which come first in the log of a start.
Lines DetectionOf(Lines const& log);

}  // namespace gputune::test
