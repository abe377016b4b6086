// Board files are in UTF-8. Drivers, and so the stand-ins, return texts in the system's ANSI code page.
#pragma once

#include "sim/board/Board.h"

namespace gputune::sim {

// Converts all texts that a vendor's library returns. The system replaces a character that the code page does not have,
// mostly by a question mark.
void ToAnsi(Board& board);

}  // namespace gputune::sim
