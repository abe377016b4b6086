// The simulated driver behind the AMD stand-in: the states and the thermal model of each adapter of the board. It does
// not know entry points, and allocates nothing for the client.
#pragma once

#include <memory>
#include <tuple>
#include <vector>

#include "amd/adl_records.h"
#include "sim/amd/Overdrive8State.h"
#include "sim/amd/OverdriveNState.h"
#include "sim/amd/adl_codes.h"
#include "sim/board/Board.h"
#include "sim/model/ThermalModel.h"
#include "sim/standin/BoardDriver.h"

namespace gputune::sim {

class AmdDriver final : public BoardDriver {
public:
    explicit AmdDriver(Board board);

    void Save(StateWriter& state) override { Exchange(state); }
    void Restore(StateReader& state) override;
    void Forget(bool fansToo) override;
    void SetStuck(std::size_t quantity, bool stuck, double now) override;
    bool FansAreAutomatic() const override;

    AmdBoard const& Description() const { return board_.amd; }
    Adapter const* FindAdapter(int index) const;

    // The records of all adapters (index -1), or of those on the same bus as the given one.
    std::vector<amd::AdapterInfoX2> AdapterInfos(int index) const;

    // Calls operation(State&, Readings const&) for the adapter, at the given time in seconds, and returns its result,
    // or the one for an adapter that has no such state. Settings that it changes hold from then on. State:
    // OverdriveNState or Overdrive8State.
    template <class State, class Operation>
    int With(int index, double now, Operation const& operation) {
        Unit* const unit = Find(index);
        if (unit == nullptr) {
            return kAdlInvalidAdapterIndex;
        }
        auto const& state = std::get<std::unique_ptr<State>>(unit->states);
        if (state == nullptr) {
            return kAdlNotSupported;
        }
        int const result = operation(*state, ReadingsOf(*unit, now));
        unit->model->SetControls(state->ModelControls());
        return result;
    }

    // The same with the readings alone.
    template <class Operation>
    int WithReadings(int index, double now, Operation const& operation) {
        Unit* const unit = Find(index);
        return unit != nullptr ? operation(ReadingsOf(*unit, now)) : kAdlInvalidAdapterIndex;
    }

private:
    struct Unit {
        // Null without that part in the board file.
        std::tuple<std::unique_ptr<OverdriveNState>, std::unique_ptr<Overdrive8State>> states;
        std::unique_ptr<ThermalModel> model;
    };

    template <class Archive>
    void Exchange(Archive& archive) {
        for (auto& [states, model] : units_) {
            std::apply([&](auto const&... state) { ((state != nullptr ? archive(*state) : void()), ...); }, states);
            archive(*model);
        }
    }
    // The model takes over the settings.
    static void Control(Unit& unit);

    Unit* Find(int index);
    static Readings ReadingsOf(Unit& unit, double now);

    Board const board_;
    std::vector<Unit> units_;  // one per adapter, in the board's order
};

}  // namespace gputune::sim
