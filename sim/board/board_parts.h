// The parts of a board file, one reader each; all throw BoardFileError.
#pragma once

#include <span>
#include <string_view>

#include "board/Board.h"
#include "board/JsonReader.h"

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

// What an entry point can hand out instead of the truth.
struct GarbageFit {
    std::string_view entryPoint;
    Garbage garbage;
};

// What can be wrong with one vendor's library.
struct FaultRules {
    std::span<std::string_view const> entryPoints;
    std::span<std::string_view const> withoutResult;  // of these, those whose result is none to choose
    std::span<GarbageFit const> garbage;
};

FaultRules AmdFaultRules();
FaultRules IntelFaultRules();
FaultRules NvidiaFaultRules();

// The key "faults", which may be left out.
std::vector<Fault> ReadFaults(JsonObject& object, FaultRules const& rules);

}  // namespace gputune::sim
