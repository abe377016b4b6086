// Machines with NVIDIA boards, complete enough to initialise, and what tests of them share. All offsets and numbers are
// entered by hand.
#pragma once

#include "Machine.h"

namespace gputune::test {

// The handle of the first GPU; the next ones have the next numbers.
constexpr int kGpu = 0x00600000;

struct Sensor {
    int controller;
    int defaultMin;
    int defaultMax;
    int current;
    int target;
};

// A machine whose library opens and lists this many GPUs, "NVIDIA GeForce GPU 0" and so on. Reading their temperatures
// succeeds and writes nothing.
Machine NvidiaBoard(int gpus);

// What the thermal settings of a GPU are: the count as the library reports it, and the sensors it writes.
void OrderSensors(Machine& machine, int gpu, int count, std::vector<Sensor> const& sensors);

// The text for a status. It is "NVAPI_" and the number, "NVAPI_-6" for instance.
void OrderErrorTexts(Machine& machine, std::vector<int> const& statuses);

// Initialise, and the log of it without the lines of the vendor's detection.
Lines InitLog(Machine& machine);

}  // namespace gputune::test
