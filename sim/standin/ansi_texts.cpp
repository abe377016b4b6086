#include "sim/standin/ansi_texts.h"

#include "sim/standin/wide_text.h"

namespace gputune::sim {

namespace {

void Convert(std::string& text) {
    text = FromWide(ToWide(text), CP_ACP);
}

}  // namespace

void ToAnsi(Board& board) {
    for (auto& adapter : board.amd.adapters) {
        Convert(adapter.udid);
        Convert(adapter.name);
        Convert(adapter.displayName);
    }
    Convert(board.amd.memory.type);
    for (auto& device : board.intel.devices) {
        if (device) {
            Convert(device->name);
        }
    }
    Convert(board.nvidia.version);
    for (auto& gpu : board.nvidia.gpus) {
        Convert(gpu.name);
    }
}

}  // namespace gputune::sim
