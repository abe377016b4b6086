// The simulated driver behind NVAPI: one thermal model per GPU of the board. It knows no entry point. Operations return
// the library's status.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "nvidia/nvapi_records.h"
#include "sim/board/Board.h"
#include "sim/model/ThermalModel.h"
#include "sim/nvidia/nvapi_codes.h"
#include "sim/standin/BoardDriver.h"

namespace gputune::sim {

// A text of NVAPI's, with its terminator; what does not fit is cut.
void CopyText(std::string_view text, std::span<char, sizeof(nvidia::NvShortString)> out);

class NvidiaDriver final : public BoardDriver {
public:
    explicit NvidiaDriver(Board board);
    ~NvidiaDriver() override;

    NvidiaBoard const& Description() const { return board_.nvidia; }

    // A handle is a number and points to nothing: of boards that follow one another, the GPUs in the same place have
    // the same one.
    std::vector<nvidia::NvPhysicalGpuHandle> Gpus() const;

    // Null when there is no such GPU.
    NvidiaGpu const* Find(nvidia::NvPhysicalGpuHandle handle) const;

    // At the given time in seconds. index: a sensor's, or all of them (kThermalTargetAll).
    int GetThermalSettings(nvidia::NvPhysicalGpuHandle handle, double now, std::uint32_t index,
                           nvidia::NV_GPU_THERMAL_SETTINGS& out);

private:
    Board const board_;
    std::vector<ThermalModel> models_;  // one per GPU
};

}  // namespace gputune::sim
