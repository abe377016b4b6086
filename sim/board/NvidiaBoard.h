// What NVAPI says of a board, as the board file describes it. Plain data; docs/board-files.md tells the meaning of each
// entry.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sim/model/ModelSettings.h"

namespace gputune::sim {

struct NvidiaSensor {
    int controller = 1;
    int target = 1;  // 1 is the GPU
    int minimum = 0;
    int maximum = 127;
    Quantity quantity = &Readings::temperature;
    std::optional<int> value;  // constant; without it, the quantity's value
};

struct NvidiaGpu {
    std::string name;
    std::vector<NvidiaSensor> sensors;  // three at most
    ModelSettings model;
};

struct NvidiaBoard {
    std::string version;
    std::vector<NvidiaGpu> gpus;  // 64 at most
    bool hooks = false;
};

}  // namespace gputune::sim
