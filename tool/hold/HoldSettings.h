// What the user asks to be held.
#pragma once

#include <optional>
#include <string>

#include "gputune.h"
#include "tool/hold/FanLaw.h"
#include "tool/hold/Protocol.h"

namespace gputune::tool {

struct HoldSettings {
    FanLawSettings law{};  // without points: the fan is not held
    GputuneHwmKey sensor = GPUTUNE_HWM_GPU_TEMPERATURE;
    bool plainCurve = true;      // the user asked for nothing that the board's own curve lacks
    std::optional<int> power{};  // percent
    std::string profile{};       // "oc" or "silent"; empty: none
    double interval = 1;         // seconds between readings
    bool keep = false;           // power limit and clocks stay at the end

    bool HoldsFan() const { return !law.points.empty(); }
};

// Throws ToolError, UnsupportedError or UsageError when the board cannot do it. Sets the law's limits to the board's.
void FitToBoard(HoldSettings& settings, BoardFacts const& board);
// Whether the board can follow the curve itself. Intel boards do not tell: the answer to the order does.
bool CanUseOwnCurve(HoldSettings const& settings, BoardFacts const& board);
// "fan curve 40:30 60:50 by GPU Temperature, power limit 10 %".
std::string Describe(HoldSettings const& settings);

}  // namespace gputune::tool
