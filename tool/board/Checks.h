// What is checked before anything is sent to the board. Pure: settings in, a checked request or an error out.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "gputune.h"
#include "tool/values/Errors.h"
#include "tool/values/Names.h"

namespace gputune::tool {

// Throws ToolError when `value` is outside minimum to maximum, both allowed.
void CheckRange(std::string const& what, int value, int minimum, int maximum, Unit unit);

// ---- Fan ----

// Throws ToolError when the board has no curve or a point is outside its range, UsageError when the number of points is
// not the board's. Intel fans do not report their ranges and number of points: there the driver judges.
void CheckCurve(std::vector<FanTablePoint> const& curve, FanSetting const& setting, std::uint32_t api);
UsageError WrongPointCount(int expected, std::size_t given);
// A fixed speed against the range of the curve's first point, which governs it. Nothing is checked where the board
// reports no range.
void CheckFanSpeed(int percent, FanSetting const& setting);

// ---- Clocks ----

// As asked for: MHz and mV; nothing and 0 keep the current value.
struct ClockRequest {
    std::optional<int> gpuClock{};
    std::optional<int> gpuVoltage{};
    std::optional<int> memClock{};
    std::optional<int> memVoltage{};
};

// The arguments of SetPerformanceUser.
struct ClockCommand {
    int gpuClock;
    int gpuVoltage;
    int memClock;
    int memVoltage;
    bool inEffect;  // the board runs at these clocks already; Overdrive8 then answers false
};

// Throws UsageError for a request no board of this interface takes, ToolError for a value outside the board's ranges.
ClockCommand PlanClocks(std::uint32_t api, ClockRequest const& request, ClockSetting const& gpu,
                        ClockSetting const& memory);

}  // namespace gputune::tool
