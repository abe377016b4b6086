// The parts of a board file, one reader each; all throw BoardFileError.
#pragma once

#include "sim/board/Board.h"
#include "sim/board/FaultRules.h"
#include "sim/board/JsonReader.h"

namespace gputune::sim {

// Everything in the file that is the vendor's.
void ReadAmd(JsonObject& object, Board& board);
void ReadIntel(JsonObject& object, Board& board);
void ReadNvidia(JsonObject& object, Board& board);

OverdriveN ReadOverdriveN(JsonValue const& value);
Overdrive8 ReadOverdrive8(JsonValue const& value);
ModelSettings ReadModel(JsonValue const& value);
// The key "model" of an object, which may be left out.
ModelSettings ReadOwnModel(JsonObject& object, ModelSettings const& defaultModel);

// The key "faults", which may be left out.
std::vector<Fault> ReadFaults(JsonObject& object, FaultRules const& rules);

}  // namespace gputune::sim
