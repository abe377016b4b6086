// The simulated driver behind Intel's control library: one state and one thermal model per device of the board. It
// knows no entry point.
#pragma once

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
    ~IntelDriver() override;

    // In the board's order; null where the board says so. A handle is a number and points to nothing: of boards that
    // follow one another, the devices in the same place have the same one.
    std::vector<intel::ctl_device_adapter_handle_t> Devices() const;

    // Calls operation(IntelDeviceState&, Readings const&) for the device, at the given time in seconds, and returns its
    // result; or says that there is no such device. Settings that it changes are in force from then on.
    template <class Operation>
    int WithDevice(intel::ctl_device_adapter_handle_t handle, double now, Operation const& operation) {
        Unit* const unit = Find(handle);
        return unit ? Do(*unit, now, operation) : kCtlInvalidArgument;
    }

    // The handles of the device's fans; none for a device that is not there.
    std::vector<intel::ctl_fan_handle_t> Fans(intel::ctl_device_adapter_handle_t device) const;

    // The same with operation(IntelDeviceState&, std::size_t fan).
    template <class Operation>
    int WithFan(intel::ctl_fan_handle_t handle, double now, Operation const& operation) {
        FanPlace const place = FindFan(handle);
        return place.unit ? Do(*place.unit, now,
                               [&](IntelDeviceState& state, Readings const&) { return operation(state, place.fan); })
                          : kCtlInvalidArgument;
    }

private:
    // A null handle's is empty.
    struct Unit {
        std::unique_ptr<IntelDeviceState> state;
        std::unique_ptr<ThermalModel> model;
    };
    struct FanPlace {
        Unit* unit = nullptr;
        std::size_t fan = 0;
    };

    template <class Operation>
    static int Do(Unit& unit, double now, Operation const& operation) {
        unit.model->AdvanceTo(now);
        int const result = operation(*unit.state, unit.model->Read());
        unit.model->SetControls(unit.state->ModelControls());
        return result;
    }

    Unit* Find(intel::ctl_device_adapter_handle_t handle);
    FanPlace FindFan(intel::ctl_fan_handle_t handle);

    Board const board_;
    std::vector<Unit> units_;  // one per entry of the board's list
};

}  // namespace gputune::sim
