#include "sim/standin/ansi_texts.h"

#include "sim/standin/utf8.h"

namespace gputune::sim {

namespace {

void Convert(std::string& text) {
    std::wstring const wide = Utf8ToWide(text);
    int const size = static_cast<int>(wide.size());
    int const length = ::WideCharToMultiByte(CP_ACP, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    text.assign(static_cast<std::size_t>(length), '\0');
    ::WideCharToMultiByte(CP_ACP, 0, wide.data(), size, text.data(), length, nullptr, nullptr);
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
