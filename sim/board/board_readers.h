// Readers for the parts of a board file. All throw BoardFileError.
#pragma once

#include "sim/board/Board.h"
#include "sim/board/FaultRules.h"
#include "sim/board/JsonReader.h"

namespace gputune::sim {

// All keys that belong to the vendor.
void ReadAmd(JsonObject& object, Board& board);
void ReadIntel(JsonObject& object, Board& board);
void ReadNvidia(JsonObject& object, Board& board);

OverdriveN ReadOverdriveN(JsonValue const& value);
Overdrive8 ReadOverdrive8(JsonValue const& value);
ModelSettings ReadModel(JsonValue const& value);
// The optional key "model" of an object; defaultModel without it.
ModelSettings ReadOwnModel(JsonObject& object, ModelSettings const& defaultModel);

// The optional key "faults".
std::vector<Fault> ReadFaults(JsonObject& object, FaultRules const& rules);

}  // namespace gputune::sim
