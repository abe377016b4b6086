// The simulated driver behind NVAPI: the thermal model of each GPU of the board. It does not know entry points.
// Operations return the library's status.
#pragma once

#include <cstdint>
#include <vector>

#include "nvidia/nvapi_records.h"
#include "sim/board/Board.h"
#include "sim/model/ThermalModel.h"
#include "sim/nvidia/nvapi_codes.h"
#include "sim/standin/BoardDriver.h"

namespace gputune::sim {

class NvidiaDriver final : public BoardDriver {
public:
    explicit NvidiaDriver(Board board);

    void Save(StateWriter& state) override { state(models_); }
    void Restore(StateReader& state) override { state(models_); }
    // Nothing can be set.
    void Forget(bool) override {}
    void SetStuck(std::size_t quantity, bool stuck, double now) override;
    bool FansAreAutomatic() const override { return true; }

    NvidiaBoard const& Description() const { return board_.nvidia; }

    // A handle is a number and points to nothing. The GPUs in the same position of two boards have the same handle.
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
