// The parts of a board file, one reader each; all throw BoardFileError.
#pragma once

#include "board/Board.h"
#include "board/JsonReader.h"

namespace gputune::sim {

OverdriveN ReadOverdriveN(JsonValue const& value);
Overdrive8 ReadOverdrive8(JsonValue const& value);
ModelSettings ReadModel(JsonValue const& value);
Fault ReadFault(JsonValue const& value);

}  // namespace gputune::sim
