// Machines with NVIDIA boards, complete enough to initialise, and what tests of them share. All offsets and numbers are
// entered by hand.
#pragma once

#include "Machine.h"

namespace gputune::test {

// The handle of the first GPU; the next ones have the next numbers.
constexpr Handle kGpu = ScriptedHandle(0x00600000);

// The thermal settings of a GPU: as many sensors as the library says, and the room for three of them.
struct Sensor {
    int controller = 0;
    int defaultMin = 0;
    int defaultMax = 0;
    int current = 0;
    int target = 0;
    bool operator==(Sensor const&) const = default;
};
struct ThermalSettings {
    static constexpr Place kReadBy = {"NvAPI_GPU_GetThermalSettings", 2};
    int version = 0x00020044;  // the second, of 68 bytes
    int count = 0;
    Sensor sensors[3] = {};
    bool operator==(ThermalSettings const&) const = default;
};
static_assert(sizeof(ThermalSettings) == 68);

// What the first hook leaves for the second.
struct HookState {
    static constexpr Place kReadBy = {"BeforeCallHook", 1};
    int words[2] = {};
};

// What the list says of the number of GPUs, whatever handles it has.
struct GpuCount {
    static constexpr Place kReadBy = {"NvAPI_EnumPhysicalGPUs", 1};
    int count = 0;
};

// A machine whose library opens and lists this many GPUs, "NVIDIA GeForce GPU 0" and so on. Reading their temperatures
// succeeds and writes nothing.
Machine NvidiaBoard(int gpus);

// The handles in the list of GPUs, as far as these go.
void OrderGpus(Machine& machine, std::vector<Handle> const& handles);

// The count as the library reports it, and the sensors it writes.
void OrderSensors(Machine& machine, int gpu, int count, std::vector<Sensor> const& sensors);

// The text for a status. It is "NVAPI_" and the number, "NVAPI_-6" for instance.
void OrderErrorTexts(Machine& machine, std::vector<int> const& statuses);

// A call in a form that reads well where a test fails: the name, in hexadecimal the first argument where it is a handle
// or an identifier, the status whose text is asked for, and the sensor (15: all). Of a hook also the state between them
// (two words, which the first one is to find empty) and the status that the second one is given.
std::string DescribeNvidiaCall(Call const& call);

// Initialise, and the log of it without the lines of the vendor's detection.
Lines InitLog(Machine& machine);

}  // namespace gputune::test
