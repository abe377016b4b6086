// Board files are in UTF-8; a driver tells its texts in the system's ANSI code page, and so does a stand-in.
#pragma once

#include "sim/board/Board.h"

namespace gputune::sim {

// All texts that a vendor's library hands out. A character that the code page does not have becomes what the system
// puts in its place, mostly a question mark.
void ToAnsi(Board& board);

}  // namespace gputune::sim
