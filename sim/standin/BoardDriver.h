// The simulated driver behind a stand-in's entry points, made for one board.
#pragma once

namespace gputune::sim {

class BoardDriver {
public:
    BoardDriver() = default;
    virtual ~BoardDriver() = default;
    BoardDriver(BoardDriver const&) = delete;
    BoardDriver& operator=(BoardDriver const&) = delete;
};

}  // namespace gputune::sim
