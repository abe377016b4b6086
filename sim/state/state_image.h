// The file of a board's state: a header, and two places for the state, which are written in turn. A process that dies
// while it writes one leaves the other, so that the file always has a whole state: the newest whose checksum is right.
#pragma once

#include <cstdint>

#include "sim/state/StateArchive.h"

namespace gputune::sim {

struct BoardState {
    std::uint64_t number = 0;  // of states before it
    StateBytes bytes{};
};

// A part of the file.
struct StatePart {
    std::size_t offset = 0;
    StateBytes bytes{};
};

// The whole file of a board's first state. board: tells boards of different descriptions apart (Board::identity).
StateBytes NewStateImage(std::uint64_t board, StateBytes const& state);

// The newest state in a file of this board. Throws StateError when the file is no such file, another version's, another
// board's, or damaged.
BoardState NewestState(StateBytes const& file, std::uint64_t board);

// What to write to the file instead of the older state. The state has the size of all states of its board.
StatePart PartOf(BoardState const& state);

}  // namespace gputune::sim
