// The simulated driver behind a stand-in's entry points, made for one board.
#pragma once

#include <cstddef>

#include "sim/state/StateArchive.h"

namespace gputune::sim {

class BoardDriver {
public:
    BoardDriver() = default;
    virtual ~BoardDriver() = default;
    BoardDriver(BoardDriver const&) = delete;
    BoardDriver& operator=(BoardDriver const&) = delete;

    // The present settings and the moving part of the models.
    virtual void Save(StateWriter& state) = 0;
    virtual void Restore(StateReader& state) = 0;

    // All settings go back to the defaults, as when the driver starts anew; without the fans' settings, or with them.
    virtual void Forget(bool fansToo) = 0;
    // One of kStuckQuantities keeps the value that it has at this time, in seconds; or it no longer does.
    virtual void SetStuck(std::size_t quantity, bool stuck, double now) = 0;
    // Whether the driver alone decides over all fans.
    virtual bool FansAreAutomatic() const = 0;
};

}  // namespace gputune::sim
