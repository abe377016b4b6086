#include "sim/intel/IntelDriver.h"

#include <utility>

namespace gputune::sim {

namespace {

// A handle is a base plus the position of the device and, for a fan, of the fan.
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

void IntelDriver::Restore(StateReader& state) {
    Exchange(state);
    for (auto const& unit : units_) {
        if (unit.state != nullptr) {
            unit.model->SetControls(unit.state->ModelControls());
        }
    }
}

void IntelDriver::Forget(bool fansToo) {
    for (auto const& unit : units_) {
        if (unit.state != nullptr) {
            unit.state->Forget(fansToo);
            unit.model->SetControls(unit.state->ModelControls());
        }
    }
}

void IntelDriver::SetStuck(std::size_t quantity, bool stuck, double now) {
    for (auto const& unit : units_) {
        if (unit.model != nullptr) {
            unit.model->AdvanceTo(now);
            unit.model->SetStuck(quantity, stuck);
        }
    }
}

bool IntelDriver::FansAreAutomatic() const {
    return std::all_of(units_.begin(), units_.end(),
                       [](Unit const& unit) { return unit.state == nullptr || unit.state->FansAreAutomatic(); });
}

std::vector<intel::ctl_device_adapter_handle_t> IntelDriver::Devices() const {
    std::vector<intel::ctl_device_adapter_handle_t> handles;
    for (auto const& unit : units_) {
        std::uintptr_t const number = kDeviceBase + kDeviceStep * handles.size();
        handles.push_back(unit.state ? ToHandle<intel::ctl_device_adapter_handle_t>(number) : nullptr);
    }
    return handles;
}

IntelDriver::Unit const* IntelDriver::Find(intel::ctl_device_adapter_handle_t handle) const {
    auto const handles = Devices();
    auto const found = std::find(handles.begin(), handles.end(), handle);
    return handle == nullptr || found == handles.end() ? nullptr
                                                       : &units_[static_cast<std::size_t>(found - handles.begin())];
}

std::vector<intel::ctl_fan_handle_t> IntelDriver::Fans(intel::ctl_device_adapter_handle_t device) const {
    std::vector<intel::ctl_fan_handle_t> handles;
    if (Unit const* const unit = Find(device); unit != nullptr) {
        std::uintptr_t const first = kFanBase + kDeviceStep * static_cast<std::size_t>(unit - units_.data());
        for (std::size_t fan = 0; fan < unit->state->FanCount(); ++fan) {
            handles.push_back(ToHandle<intel::ctl_fan_handle_t>(first + fan));
        }
    }
    return handles;
}

}  // namespace gputune::sim
