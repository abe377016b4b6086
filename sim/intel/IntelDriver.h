// The simulated driver behind Intel's control library: the state and the thermal model of each device of the board. It
// does not know entry points.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "intel/ctl_records.h"
#include "sim/board/Board.h"
#include "sim/intel/IntelDeviceState.h"
#include "sim/intel/ctl_codes.h"
#include "sim/model/ThermalModel.h"
#include "sim/standin/BoardDriver.h"

namespace gputune::sim {

class IntelDriver final : public BoardDriver {
public:
    explicit IntelDriver(Board board);

    void Save(StateWriter& state) override { Exchange(state); }
    void Restore(StateReader& state) override;
    void Forget(bool fansToo) override;
    void SetStuck(std::size_t quantity, bool stuck, double now) override;
    bool FansAreAutomatic() const override;

    // In the board's order, with null handles where the board has them. A handle is a number and points to nothing. The
    // devices in the same position of two boards have the same handle.
    std::vector<intel::ctl_device_adapter_handle_t> Devices() const;

    // Calls operation(IntelDeviceState&, Readings const&) for the device, at the given time in seconds, and returns its
    // result, or the one for an unknown device. Settings that it changes hold from then on.
    template <class Operation>
    int WithDevice(intel::ctl_device_adapter_handle_t handle, double now, Operation const& operation) {
        Unit const* const unit = Find(handle);
        return unit != nullptr ? Do(*unit, now, operation) : kCtlInvalidArgument;
    }

    // The handles of the device's fans; none for an unknown device.
    std::vector<intel::ctl_fan_handle_t> Fans(intel::ctl_device_adapter_handle_t device) const;

    // The same with operation(IntelDeviceState&, std::size_t fan).
    template <class Operation>
    int WithFan(intel::ctl_fan_handle_t handle, double now, Operation const& operation) {
        for (auto const device : Devices()) {
            auto const fans = Fans(device);
            auto const fan = static_cast<std::size_t>(std::find(fans.begin(), fans.end(), handle) - fans.begin());
            if (fan < fans.size()) {
                return WithDevice(device, now,
                                  [&](IntelDeviceState& state, Readings const&) { return operation(state, fan); });
            }
        }
        return kCtlInvalidArgument;
    }

private:
    // Empty for a null handle.
    struct Unit {
        std::unique_ptr<IntelDeviceState> state;
        std::unique_ptr<ThermalModel> model;
    };

    template <class Archive>
    void Exchange(Archive& archive) {
        for (auto const& unit : units_) {
            if (unit.state != nullptr) {
                archive(*unit.state, *unit.model);
            }
        }
    }

    template <class Operation>
    static int Do(Unit const& unit, double now, Operation const& operation) {
        unit.model->AdvanceTo(now);
        int const result = operation(*unit.state, unit.model->Read());
        unit.model->SetControls(unit.state->ModelControls());
        return result;
    }

    Unit const* Find(intel::ctl_device_adapter_handle_t handle) const;

    Board const board_;
    std::vector<Unit> units_;  // one per entry of the board's list
};

}  // namespace gputune::sim
