#include "sim/nvidia/NvidiaDriver.h"

#include <algorithm>
#include <span>
#include <utility>

#include "sim/model/rounding.h"

namespace gputune::sim {

namespace {

constexpr std::uintptr_t kGpuBase = 0x4E000100;
constexpr std::uintptr_t kGpuStep = 0x100;

nvidia::NvThermalSensor ToRecord(NvidiaSensor const& sensor, Readings const& readings) {
    return {.controller = sensor.controller,
            .defaultMinTemp = sensor.minimum,
            .defaultMaxTemp = sensor.maximum,
            .currentTemp = sensor.value.value_or(Rounded(readings.*sensor.quantity)),
            .target = sensor.target};
}

}  // namespace

NvidiaDriver::NvidiaDriver(Board board) : board_(std::move(board)) {
    for (auto const& gpu : board_.nvidia.gpus) {
        models_.emplace_back(gpu.model, Controls());
    }
}

void NvidiaDriver::SetStuck(std::size_t quantity, bool stuck, double now) {
    for (auto& model : models_) {
        model.AdvanceTo(now);
        model.SetStuck(quantity, stuck);
    }
}

std::vector<nvidia::NvPhysicalGpuHandle> NvidiaDriver::Gpus() const {
    std::vector<nvidia::NvPhysicalGpuHandle> handles;
    for (std::size_t i = 0; i < models_.size(); ++i) {
        handles.push_back(reinterpret_cast<nvidia::NvPhysicalGpuHandle>(kGpuBase + kGpuStep * i));
    }
    return handles;
}

NvidiaGpu const* NvidiaDriver::Find(nvidia::NvPhysicalGpuHandle handle) const {
    auto const handles = Gpus();
    auto const found = std::find(handles.begin(), handles.end(), handle);
    return found == handles.end() ? nullptr : &board_.nvidia.gpus[static_cast<std::size_t>(found - handles.begin())];
}

int NvidiaDriver::GetThermalSettings(nvidia::NvPhysicalGpuHandle handle, double now, std::uint32_t index,
                                     nvidia::NV_GPU_THERMAL_SETTINGS& out) {
    NvidiaGpu const* const gpu = Find(handle);
    if (gpu == nullptr) {
        return kNvapiNoGpuHandle;
    }
    if (out.version != nvidia::kThermalSettingsVersion2) {
        return kNvapiWrongVersion;
    }
    std::span<NvidiaSensor const> sensors = gpu->sensors;
    if (index != nvidia::kThermalTargetAll) {
        if (index >= sensors.size()) {
            return kNvapiInvalidArgument;
        }
        sensors = sensors.subspan(index, 1);
    }
    ThermalModel& model = models_[static_cast<std::size_t>(gpu - board_.nvidia.gpus.data())];
    model.AdvanceTo(now);
    out.count = static_cast<std::uint32_t>(sensors.size());
    std::transform(sensors.begin(), sensors.end(), out.sensor,
                   [&](NvidiaSensor const& sensor) { return ToRecord(sensor, model.Read()); });
    return nvidia::kNvapiOk;
}

}  // namespace gputune::sim
