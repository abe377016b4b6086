#include "sim/intel/IntelDriver.h"

#include <utility>

namespace gputune::sim {

namespace {

// Handles: a base, the device's place and, for fans, the fan's.
constexpr std::uintptr_t kDeviceBase = 0x49000000;
constexpr std::uintptr_t kFanBase = 0x4A000000;
constexpr std::uintptr_t kDeviceStep = 0x100;

template <class Handle>
Handle ToHandle(std::uintptr_t number) {
    return reinterpret_cast<Handle>(number);
}

}  // namespace

IntelDriver::IntelDriver(Board board) : board_(std::move(board)) {
    for (auto const& device : board_.intel.devices) {
        Unit& unit = units_.emplace_back();
        if (!device) {
            continue;
        }
        ModelSettings settings = device->model;
        if (!device->fans.empty() && device->fans.front().maxRpm > 0) {
            settings.fanMaximum = device->fans.front().maxRpm;
        }
        if (device->overclock.powerLimit.defaultValue > 0) {
            settings.boardPower = device->overclock.powerLimit.defaultValue;
        }
        unit.state = std::make_unique<IntelDeviceState>(*device);
        unit.model = std::make_unique<ThermalModel>(settings, unit.state->ModelControls());
    }
}

IntelDriver::~IntelDriver() = default;

std::vector<intel::ctl_device_adapter_handle_t> IntelDriver::Devices() const {
    std::vector<intel::ctl_device_adapter_handle_t> handles;
    for (auto const& unit : units_) {
        std::uintptr_t const number = kDeviceBase + kDeviceStep * handles.size();
        handles.push_back(unit.state ? ToHandle<intel::ctl_device_adapter_handle_t>(number) : nullptr);
    }
    return handles;
}

IntelDriver::Unit* IntelDriver::Find(intel::ctl_device_adapter_handle_t handle) {
    auto const handles = Devices();
    for (std::size_t i = 0; i < handles.size(); ++i) {
        if (handle && handles[i] == handle) {
            return &units_[i];
        }
    }
    return nullptr;
}

std::vector<intel::ctl_fan_handle_t> IntelDriver::Fans(intel::ctl_device_adapter_handle_t device) const {
    auto const devices = Devices();
    std::vector<intel::ctl_fan_handle_t> handles;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        if (device && devices[i] == device) {
            for (std::size_t fan = 0; fan < units_[i].state->FanCount(); ++fan) {
                handles.push_back(ToHandle<intel::ctl_fan_handle_t>(kFanBase + kDeviceStep * i + fan));
            }
        }
    }
    return handles;
}

IntelDriver::FanPlace IntelDriver::FindFan(intel::ctl_fan_handle_t handle) {
    for (auto const device : Devices()) {
        auto const fans = Fans(device);
        for (std::size_t fan = 0; fan < fans.size(); ++fan) {
            if (fans[fan] == handle) {
                return {.unit = Find(device), .fan = fan};
            }
        }
    }
    return {};
}

}  // namespace gputune::sim
