// The simulated driver behind the AMD stand-in: one state and one thermal model per adapter of the board. It allocates
// nothing for its client and knows no entry point.
#pragma once

#include <memory>
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
    ~AmdDriver() override;

    AmdBoard const& Description() const { return board_.amd; }
    Adapter const* FindAdapter(int index) const;

    // The records of all adapters (index -1), or of those on the same bus as the given one.
    std::vector<amd::AdapterInfoX2> AdapterInfos(int index) const;

    // Calls operation(OverdriveNState&, Readings const&) for the adapter, at the given time in seconds, and returns its
    // result; or says why that is not possible. Settings that it changes are in force from then on.
    template <class Operation>
    int WithOverdriveN(int index, double now, Operation const& operation) {
        Unit* const unit = Find(index);
        if (!unit) {
            return kInvalidAdapterIndex;
        }
        if (!unit->overdriveN) {
            return kNotSupported;
        }
        int const result = operation(*unit->overdriveN, ReadingsOf(*unit, now));
        unit->model->SetControls(unit->overdriveN->ModelControls());
        return result;
    }

    // The same with an Overdrive8State.
    template <class Operation>
    int WithOverdrive8(int index, double now, Operation const& operation) {
        Unit* const unit = Find(index);
        if (!unit) {
            return kInvalidAdapterIndex;
        }
        if (!unit->overdrive8) {
            return kNotSupported;
        }
        int const result = operation(*unit->overdrive8, ReadingsOf(*unit, now));
        unit->model->SetControls(unit->overdrive8->ModelControls());
        return result;
    }

    // The same with the readings alone.
    template <class Operation>
    int WithReadings(int index, double now, Operation const& operation) {
        Unit* const unit = Find(index);
        return unit ? operation(ReadingsOf(*unit, now)) : kInvalidAdapterIndex;
    }

private:
    struct Unit {
        std::unique_ptr<OverdriveNState> overdriveN;
        std::unique_ptr<Overdrive8State> overdrive8;
        std::unique_ptr<ThermalModel> model;
    };

    Unit* Find(int index);
    static Readings ReadingsOf(Unit& unit, double now);

    Board const board_;
    std::vector<Unit> units_;  // one per adapter, in the board's order
};

}  // namespace gputune::sim
